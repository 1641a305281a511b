#pragma once
// Backgrounds: the nine quiet backgrounds of the document area, chosen by
// "CurrentBackground" (1 to 9) and shown when no skin is in use. Each is drawn
// from the palette's window colour, so it suits a light and a dark desktop
// alike, and tiles at any size and screen scale.
//
// Thread contract: the GUI thread.

#include <QBrush>
#include <QPalette>
#include <QPixmap>
#include <QString>

namespace gorvan::ui {

class Backgrounds {
 public:
  static constexpr int kCount = 9;
  // The name of background n (1..9); "" for another number.
  static QString Name(int n);
  // The brush of background n for palette, drawn from the colour of role
  // (the window's for the document area, the base's for a view); the first
  // background's for a number outside 1..9.
  static QBrush Brush(int n, const QPalette& palette,
                      QPalette::ColorRole ground = QPalette::Window);
  // A picture of background n at size (for choosers).
  static QPixmap Sample(int n, const QPalette& palette, QSize size);
};

}  // namespace gorvan::ui
