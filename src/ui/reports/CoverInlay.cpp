#include "ui/reports/CoverInlay.h"

#include <QFontMetricsF>
#include <QObject>
#include <QPainter>
#include <QPen>
#include <QTextOption>
#include <algorithm>
#include <cmath>

namespace gorvan::ui {
namespace {

// mm between the two inserts and around them: both fit on A4 and on Letter.
constexpr double kGap = 12;

QFont Font(double points, bool bold = false) {
  QFont f(QStringLiteral("Sans Serif"));
  f.setStyleHint(QFont::SansSerif);
  f.setPointSizeF(points);
  f.setBold(bold);
  return f;
}

}  // namespace

CoverInlay::CoverInlay(CoverContent content, const QPageLayout& layout)
    : content_(std::move(content)), layout_(layout) {
  const QSizeF paper = layout_.fullRectPoints().size() * (25.4 / 72.0);
  const double needed = kFrontHeight + kBackHeight + 3 * kGap;
  onePage_ = paper.height() >= needed;
  const double frontTop =
      onePage_ ? (paper.height() - needed) / 2 + kGap : (paper.height() - kFrontHeight) / 2;
  front_ = QRectF((paper.width() - kFrontWidth) / 2, frontTop, kFrontWidth, kFrontHeight);
  const double backTop = onePage_ ? front_.bottom() + kGap : (paper.height() - kBackHeight) / 2;
  back_ = QRectF((paper.width() - kBackWidth) / 2, backTop, kBackWidth, kBackHeight);
}

void CoverInlay::paintPage(QPainter& painter, int page) const {
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing, true);
  painter.setRenderHint(QPainter::TextAntialiasing, true);
  if (page == frontPage()) PaintFront(painter);
  if (page == backPage()) PaintBack(painter);
  painter.restore();
}

void CoverInlay::PaintMarks(QPainter& painter, const QRectF& mm, bool spines) const {
  const double k = PixelsPerMm(painter);
  painter.setPen(QPen(Qt::black, std::max(1.0, 0.15 * k), Qt::SolidLine, Qt::FlatCap));
  const QRectF r(mm.x() * k, mm.y() * k, mm.width() * k, mm.height() * k);
  const double gap = kMarkGap * k, len = kMarkLength * k;
  std::vector<double> xs{r.left(), r.right()};
  if (spines) {
    xs.push_back(r.left() + kSpine * k);
    xs.push_back(r.right() - kSpine * k);
  }
  // Above and below the insert, in line with its upright edges (and folds).
  for (double x : xs) {
    painter.drawLine(QPointF(x, r.top() - gap), QPointF(x, r.top() - gap - len));
    painter.drawLine(QPointF(x, r.bottom() + gap), QPointF(x, r.bottom() + gap + len));
  }
  // Left and right of it, in line with its top and bottom edges.
  for (double y : {r.top(), r.bottom()}) {
    painter.drawLine(QPointF(r.left() - gap, y), QPointF(r.left() - gap - len, y));
    painter.drawLine(QPointF(r.right() + gap, y), QPointF(r.right() + gap + len, y));
  }
}

void CoverInlay::PaintFront(QPainter& painter) const {
  const double k = PixelsPerMm(painter);
  PaintMarks(painter, front_, false);
  const QRectF r(front_.x() * k, front_.y() * k, front_.width() * k, front_.height() * k);
  // A hairline frame helps the cut where the marks are far apart.
  painter.setPen(QPen(QColor(190, 190, 190), std::max(1.0, 0.1 * k)));
  painter.drawRect(r);
  painter.setPen(Qt::black);
  const QRectF inner = r.adjusted(10 * k, 12 * k, -10 * k, -10 * k);
  QTextOption wrap(Qt::AlignHCenter | Qt::AlignTop);
  wrap.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  // The name as large as fits in the upper half (down to 12 points).
  double points = 28;
  QRectF nameBox(inner.left(), inner.top(), inner.width(), inner.height() * 0.5);
  for (; points > 12; points -= 2) {
    const QFontMetricsF m(Font(points, true), painter.device());
    const QRectF need = m.boundingRect(nameBox, Qt::AlignHCenter | Qt::TextWordWrap, content_.name);
    if (need.height() <= nameBox.height() && need.width() <= nameBox.width()) break;
  }
  painter.setFont(Font(points, true));
  painter.drawText(nameBox, content_.name, wrap);
  if (!content_.artist.isEmpty()) {
    painter.setFont(Font(16));
    painter.drawText(QRectF(inner.left(), inner.top() + inner.height() * 0.55, inner.width(),
                            inner.height() * 0.25),
                     content_.artist, wrap);
  }
  painter.setFont(Font(10));
  const QFontMetricsF m(Font(10), painter.device());
  const double line = m.height();
  QStringList foot;
  if (!content_.category.isEmpty()) foot << content_.category;
  if (!content_.date.isEmpty()) foot << content_.date;
  double y = inner.bottom() - foot.size() * line;
  for (const QString& s : foot) {
    painter.drawText(QRectF(inner.left(), y, inner.width(), line), Qt::AlignHCenter,
                     m.elidedText(s, Qt::ElideRight, inner.width()));
    y += line;
  }
}

void CoverInlay::PaintBack(QPainter& painter) const {
  const double k = PixelsPerMm(painter);
  PaintMarks(painter, back_, true);
  const QRectF r(back_.x() * k, back_.y() * k, back_.width() * k, back_.height() * k);
  painter.setPen(QPen(QColor(190, 190, 190), std::max(1.0, 0.1 * k)));
  painter.drawRect(r);
  const double spine = kSpine * k;
  // The folds, dotted, so the spines show where they bend.
  painter.setPen(QPen(QColor(170, 170, 170), std::max(1.0, 0.1 * k), Qt::DotLine));
  painter.drawLine(QPointF(r.left() + spine, r.top()), QPointF(r.left() + spine, r.bottom()));
  painter.drawLine(QPointF(r.right() - spine, r.top()), QPointF(r.right() - spine, r.bottom()));
  painter.setPen(Qt::black);

  // The spines: the name and artist read from bottom to top on the left, top
  // to bottom on the right, as a case on a shelf shows them.
  QString spineText = content_.name;
  if (!content_.artist.isEmpty()) spineText += QStringLiteral("  \u2022  ") + content_.artist;
  const QFont spineFont = Font(8, true);
  const QFontMetricsF sm(spineFont, painter.device());
  const QString shown = sm.elidedText(spineText, Qt::ElideRight, r.height() - 6 * k);
  painter.setFont(spineFont);
  for (int side = 0; side < 2; ++side) {
    painter.save();
    if (side == 0) {
      painter.translate(r.left() + spine / 2, r.bottom());
      painter.rotate(-90);
    } else {
      painter.translate(r.right() - spine / 2, r.top());
      painter.rotate(90);
    }
    painter.drawText(QRectF(0, -spine / 2, r.height(), spine), Qt::AlignCenter, shown);
    painter.restore();
  }

  // The list between the spines.
  const QRectF inner = r.adjusted(spine + 6 * k, 6 * k, -spine - 6 * k, -6 * k);
  const QFont head = Font(11, true);
  const QFontMetricsF hm(head, painter.device());
  painter.setFont(head);
  painter.drawText(QRectF(inner.left(), inner.top(), inner.width(), hm.height()), Qt::AlignHCenter,
                   hm.elidedText(spineText, Qt::ElideRight, inner.width()));
  const QFont foot = Font(8);
  const QFontMetricsF fm(foot, painter.device());
  painter.setFont(foot);
  painter.drawText(QRectF(inner.left(), inner.bottom() - fm.height(), inner.width(), fm.height()),
                   Qt::AlignHCenter, fm.elidedText(content_.totals, Qt::ElideRight, inner.width()));
  const QRectF list(inner.left(), inner.top() + hm.height() * 1.6, inner.width(),
                    inner.height() - hm.height() * 1.6 - fm.height() * 1.6);

  // The largest size (9 down to 6 points) at which the list fits in one
  // column, else in two; at the smallest size in two columns, the rest is
  // counted in the last line.
  const int count = static_cast<int>(content_.entries.size());
  double points = 9;
  int columns = 1;
  for (;;) {
    const double lineHeight = QFontMetricsF(Font(points), painter.device()).height();
    const int rows = std::max(1, static_cast<int>(list.height() / lineHeight));
    if (count <= rows * columns) break;
    if (points > 6) {
      points -= 0.5;
    } else if (columns == 1) {
      columns = 2;
      points = 8;
    } else {
      break;
    }
  }
  const QFont font = Font(points);
  const QFontMetricsF m(font, painter.device());
  const double lineHeight = m.height();
  const int rows = std::max(1, static_cast<int>(list.height() / lineHeight));
  const int capacity = rows * columns;
  const bool cut = count > capacity;
  const int shownCount = cut ? capacity - 1 : count;
  const double gap = 4 * k;
  const double columnWidth = (list.width() - gap * (columns - 1)) / columns;
  painter.setFont(font);
  for (int i = 0; i <= shownCount && i < capacity; ++i) {
    const int col = i / rows, row = i % rows;
    const double x = list.left() + col * (columnWidth + gap);
    const double y = list.top() + row * lineHeight;
    if (i == shownCount) {
      if (cut) {
        painter.drawText(QRectF(x, y, columnWidth, lineHeight), Qt::AlignLeft,
                         QObject::tr("... and %1 more").arg(count - shownCount));
      }
      break;
    }
    const CoverContent::Entry& e = content_.entries[static_cast<size_t>(i)];
    const double valueWidth = m.horizontalAdvance(e.value) + (e.value.isEmpty() ? 0 : 2 * k);
    painter.drawText(QRectF(x, y, columnWidth - valueWidth, lineHeight), Qt::AlignLeft,
                     m.elidedText(e.text, Qt::ElideRight, columnWidth - valueWidth));
    painter.drawText(QRectF(x, y, columnWidth, lineHeight), Qt::AlignRight, e.value);
  }
}

}  // namespace gorvan::ui
