#pragma once
// Skins: the program's looks as Qt style sheets (.qss). The skins we ship
// ("Light", "Dark", "High Contrast") are in the resource folder's "skins",
// the user's own (the skin designer's) in the application folder's "skins";
// a user's skin of the same name comes first. A skin's name is its file name
// without ".qss"; "____2222____", the name stored at the first start, is the
// default skin: "Dark" on a dark desktop, "Light" otherwise.
//
// A skin file may begin with a comment that names its main colours and font,
//   /* Gorvan skin
//   window: #f4f4f4
//   ...
//   font: DejaVu Sans, 10
//   */
// from which the program's palette is made (and which the skin designer
// reads and writes); a style sheet without it keeps the desktop's colours.
//
// Thread contract: the GUI thread.

#include <QColor>
#include <QIcon>
#include <QList>
#include <QPalette>
#include <QString>

class QFont;

namespace gorvan::ui {

// The main colours and font of a skin.
struct SkinColours {
  QColor window, windowText, base, alternateBase, text, button, buttonText, highlight,
      highlightedText;
  QString fontFamily;     // "" keeps the program's font
  int fontPointSize = 0;  // 0 keeps its size

  // The keys of the header, in order, with the colour each names.
  static const QList<std::pair<const char*, QColor SkinColours::*>>& Keys();
  // A palette of these colours (the disabled and mid tones derived).
  QPalette Palette() const;
  static SkinColours FromPalette(const QPalette& palette);
  bool operator==(const SkinColours&) const = default;
};

class Skins {
 public:
  struct Skin {
    QString name;
    QString path;
    bool shipped = false;
  };
  static constexpr qint64 kMaxFileBytes = 1 << 20;

  // Every skin, the user's first, then the shipped ones not overridden, each
  // group in name order.
  static QList<Skin> List();
  // The file of the skin called name; "" when there is none.
  static QString PathOf(const QString& name);
  // What the user sees for a name ("____2222____" reads "Default").
  static QString DisplayName(const QString& name);
  // The skin the default name stands for on a desktop of this palette.
  static QString DefaultSkin(const QPalette& desktop);

  // Reads a skin file. On success: true, the style sheet and, when the file
  // has its header, the colours (*hasColours). On failure (unreadable, larger
  // than kMaxFileBytes, not UTF-8 text, or a style sheet Qt cannot parse):
  // false and *error says why.
  static bool Read(const QString& path, QString* sheet, SkinColours* colours, bool* hasColours,
                   QString* error);
  // The colours of a header; false when text has none.
  static bool ParseHeader(const QString& text, SkinColours* colours);
  // A complete skin of these colours: the header and the rules that give the
  // program its look (views, tabs, menus, buttons, inputs).
  static QString Write(const SkinColours& colours);
  // True when Qt parses the style sheet.
  static bool IsValidSheet(const QString& sheet);
  // A file name for a skin name: the characters a file name cannot hold
  // become "_"; "" for a name that is empty after trimming.
  static QString FileNameOf(const QString& name);
  // A square of the colour, size pixels wide, framed in grey: the face of a
  // colour button.
  static QIcon Swatch(const QColor& colour, int size);
};

}  // namespace gorvan::ui
