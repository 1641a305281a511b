#include "ui/looks/Backgrounds.h"

#include <QCoreApplication>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <cmath>

namespace gorvan::ui {
namespace {

// A shade of c moved towards its contrast by amount (0..1): darker on a
// light window, lighter on a dark one.
QColor Shade(const QColor& c, double amount) {
  const bool dark = c.lightnessF() < 0.5;
  const QColor target = dark ? QColor(Qt::white) : QColor(Qt::black);
  return QColor::fromRgbF(static_cast<float>(c.redF() + (target.redF() - c.redF()) * amount),
                          static_cast<float>(c.greenF() + (target.greenF() - c.greenF()) * amount),
                          static_cast<float>(c.blueF() + (target.blueF() - c.blueF()) * amount));
}

QColor Tint(const QColor& base, const QColor& tint, double amount) {
  return QColor::fromRgbF(
      static_cast<float>(base.redF() + (tint.redF() - base.redF()) * amount),
      static_cast<float>(base.greenF() + (tint.greenF() - base.greenF()) * amount),
      static_cast<float>(base.blueF() + (tint.blueF() - base.blueF()) * amount));
}

// A square tile of a repeating pattern; the side is in device-independent
// pixels of the pattern's own, small enough to stay quiet.
QPixmap Tile(int side, const QColor& ground, const std::function<void(QPainter&)>& draw) {
  QPixmap tile(side, side);
  tile.fill(ground);
  QPainter p(&tile);
  p.setRenderHint(QPainter::Antialiasing);
  draw(p);
  return tile;
}

}  // namespace

QString Backgrounds::Name(int n) {
  static const char* const kNames[] = {QT_TRANSLATE_NOOP("Backgrounds", "Plain"),
                                       QT_TRANSLATE_NOOP("Backgrounds", "Dawn"),
                                       QT_TRANSLATE_NOOP("Backgrounds", "Slate"),
                                       QT_TRANSLATE_NOOP("Backgrounds", "Spotlight"),
                                       QT_TRANSLATE_NOOP("Backgrounds", "Dots"),
                                       QT_TRANSLATE_NOOP("Backgrounds", "Pinstripe"),
                                       QT_TRANSLATE_NOOP("Backgrounds", "Graph paper"),
                                       QT_TRANSLATE_NOOP("Backgrounds", "Weave"),
                                       QT_TRANSLATE_NOOP("Backgrounds", "Ripples")};
  if (n < 1 || n > kCount) return {};
  return QCoreApplication::translate("Backgrounds", kNames[n - 1]);
}

QBrush Backgrounds::Brush(int n, const QPalette& palette, QPalette::ColorRole role) {
  const QColor window = palette.color(role);
  const QColor ground = Shade(window, 0.06);
  const QColor line = Shade(window, 0.13);
  const QColor accent = palette.color(QPalette::Highlight);
  switch (n) {
    case 1:
      return ground;
    case 2: {
      // Gradients are drawn in the area's own size.
      QLinearGradient g(0, 0, 0, 1);
      g.setCoordinateMode(QGradient::ObjectMode);
      g.setColorAt(0, Tint(ground, accent, 0.10));
      g.setColorAt(1, ground);
      return g;
    }
    case 3: {
      QLinearGradient g(0, 0, 1, 1);
      g.setCoordinateMode(QGradient::ObjectMode);
      g.setColorAt(0, ground);
      g.setColorAt(1, Shade(window, 0.16));
      return g;
    }
    case 4: {
      QRadialGradient g(0.5, 0.45, 0.75);
      g.setCoordinateMode(QGradient::ObjectMode);
      g.setColorAt(0, Shade(window, 0.02));
      g.setColorAt(1, Shade(window, 0.14));
      return g;
    }
    case 5:
      return Tile(16, ground, [&](QPainter& p) {
        p.setPen(Qt::NoPen);
        p.setBrush(line);
        p.drawEllipse(QPointF(8, 8), 1.2, 1.2);
      });
    case 6:
      return Tile(12, ground, [&](QPainter& p) {
        p.setPen(QPen(line, 1));
        p.drawLine(QPointF(-1, 13), QPointF(13, -1));
        p.drawLine(QPointF(-1, 1), QPointF(1, -1));
        p.drawLine(QPointF(11, 13), QPointF(13, 11));
      });
    case 7:
      return Tile(24, ground, [&](QPainter& p) {
        p.setPen(QPen(Shade(window, 0.10), 1));
        p.drawLine(QPointF(0.5, 0), QPointF(0.5, 24));
        p.drawLine(QPointF(0, 0.5), QPointF(24, 0.5));
        p.setPen(QPen(Shade(window, 0.08), 1, Qt::DotLine));
        p.drawLine(QPointF(12.5, 0), QPointF(12.5, 24));
        p.drawLine(QPointF(0, 12.5), QPointF(24, 12.5));
      });
    case 8:
      return Tile(16, ground, [&](QPainter& p) {
        p.setPen(Qt::NoPen);
        p.setBrush(Shade(window, 0.10));
        p.drawRect(QRectF(0, 0, 8, 3));
        p.drawRect(QRectF(8, 8, 8, 3));
        p.drawRect(QRectF(13, 0, 3, 8));
        p.drawRect(QRectF(5, 8, 3, 8));
      });
    case 9:
      return Tile(48, ground, [&](QPainter& p) {
        p.setPen(QPen(line, 1));
        p.setBrush(Qt::NoBrush);
        for (int y = 6; y < 48; y += 12) {
          QPainterPath wave;
          wave.moveTo(0, y);
          for (int x = 0; x <= 48; x += 2) wave.lineTo(x, y + 2.5 * std::sin(x * M_PI / 24.0));
          p.drawPath(wave);
        }
      });
    default:
      return ground;
  }
}

QPixmap Backgrounds::Sample(int n, const QPalette& palette, QSize size) {
  QPixmap pixmap(size);
  QPainter p(&pixmap);
  p.fillRect(pixmap.rect(), Brush(n, palette));
  p.setPen(palette.color(QPalette::Mid));
  p.drawRect(pixmap.rect().adjusted(0, 0, -1, -1));
  return pixmap;
}

}  // namespace gorvan::ui
