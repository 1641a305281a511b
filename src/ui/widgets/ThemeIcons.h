#pragma once
// ThemeIcons: every picture the desktop program shows comes from the
// freedesktop icon theme (the desktop's own, Adwaita as the fallback): command
// icons, the icons of media types and catalog items, and file-type icons found
// through the MIME database by file name only (never by content), cached per
// extension.
//
// Thread contract: the GUI thread.

#include <QHash>
#include <QIcon>
#include <string_view>

namespace gorvan::ui {

class ThemeIcons {
 public:
  // Makes the fallback theme known; call once after the application exists.
  static void Setup();
  // A theme icon by name ("a|b": the first the theme has); the "-symbolic"
  // variant when the theme has only that, drawn in the palette's text colour.
  static QIcon Named(const char* name);
  // The icon of a disc: its icon key ("cdrom", "audiocd", "removable", ...).
  static QIcon Disc(std::string_view iconKey);
  static QIcon Category();
  static QIcon Catalog();
  static QIcon Folder();
  // The icon of a file's type, by its name's extension: the one the user
  // gave the extension (SetFileTypeIcons) before the type's own.
  static QIcon File(std::string_view name);
  // The icons the user gave extensions (the icon map), by lower-case
  // extension without the dot; replaces the previous ones.
  static void SetFileTypeIcons(const QHash<QString, QIcon>& icons);
};

}  // namespace gorvan::ui
