#pragma once
// Looks: how the program looks, applied from the settings record. With skins
// on ("SkinSupportEnabled") the chosen skin ("SkinName") gives the style
// sheet, and, when it names them, the palette and font, on the Fusion style;
// with skins off the program follows the desktop's own style and palette
// (a dark desktop palette made right for our views: alternate rows, lines,
// tool-tips and links that contrast with a dark base) and the document area
// shows background "CurrentBackground". A skin that cannot be used falls
// back to the desktop's look, and the user is told once per skin.
//
// Thread contract: the GUI thread.

#include <QPalette>
#include <QString>

class QMdiArea;

namespace gorvan {
class Prompt;
class SettingsRecord;
}  // namespace gorvan

namespace gorvan::ui {

class Looks {
 public:
  // Keeps the desktop's own style, palette and font before a skin changes
  // them. Called at start; the first apply calls it when nobody did.
  static void RememberDesktop();
  static QPalette DesktopPalette();

  // Applies the skin or the desktop look to the application, and the
  // interface font. Returns "" or why the chosen skin could not be used.
  static QString ApplySkin(const SettingsRecord& settings);
  // The document area's background: the record's when skins are off, else
  // the skin's. The views of its documents show the same background behind
  // their rows — the tree ("BackgroundTree"), the lists with columns
  // ("BackgroundDetails") and the icon list ("BackgroundList") — when skins
  // are off and a background other than the plain first one is chosen;
  // documents opened later get it as they come.
  static void ApplyBackground(QMdiArea* area, const SettingsRecord& settings);
  // Both; a skin's problem is shown through prompt, once per skin and run.
  static void Apply(QMdiArea* area, const SettingsRecord& settings, Prompt& prompt);

  // The skin in use; "" when the desktop's look is.
  static QString CurrentSkin();

  // The style factory's key of the application's style ("Fusion").
  static QString StyleName();

  static bool IsDark(const QPalette& palette);
  // palette with the roles our views draw with made to contrast on a dark
  // base; a light palette is returned as it is.
  static QPalette FollowDark(QPalette palette);
};

}  // namespace gorvan::ui
