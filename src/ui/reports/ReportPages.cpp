#include "ui/reports/ReportPages.h"

#include <QFontMetricsF>
#include <QObject>
#include <QPaintDevice>
#include <QPainter>
#include <QPen>
#include <algorithm>
#include <cmath>

namespace gorvan::ui {
namespace {

// Heights in lines of the parts of a page.
constexpr double kLine = ReportPages::kFontPoints * 1.45;  // points
constexpr double kTitleLines = 2.5;
constexpr double kRunningHeadLines = 1.8;
constexpr double kColumnHeadLines = 1.6;
constexpr double kFooterLines = 1.8;

}  // namespace

double PixelsPerPoint(const QPainter& painter) {
  const QPaintDevice* device = painter.device();
  return device ? device->logicalDpiY() / 72.0 : 1.0;
}

ReportPages::ReportPages(std::shared_ptr<const ReportDocument> document, const QPageLayout& layout)
    : doc_(std::move(document)), layout_(layout) {
  const double height = layout_.paintRectPoints().height();
  const double introLines = doc_->intro.isEmpty() ? 0 : doc_->intro.size() + 0.6;
  auto fit = [height](double head) {
    return std::max(1, static_cast<int>(std::floor((height - head * kLine) / kLine)));
  };
  firstCapacity_ = fit(kTitleLines + introLines + kColumnHeadLines + kFooterLines);
  capacity_ = fit(kRunningHeadLines + kColumnHeadLines + kFooterLines);

  const auto& lines = doc_->lines;
  size_t at = 0;
  int cap = firstCapacity_;
  do {
    starts_.push_back(at);
    size_t end = std::min(lines.size(), at + static_cast<size_t>(cap));
    // A heading does not end a page: it goes over with its rows (unless it
    // is alone on the page, or the report ends with it).
    if (end < lines.size() && end - at > 1 && lines[end - 1].kind == ReportLineKind::kHeading)
      --end;
    at = end;
    cap = capacity_;
  } while (at < lines.size());
}

size_t ReportPages::endLine(int page) const {
  return page + 1 < pageCount() ? starts_[page + 1] : doc_->lines.size();
}

void ReportPages::paintPage(QPainter& painter, int page) const {
  const double px = PixelsPerPoint(painter);
  const QRectF area(layout_.paintRectPoints().x() * px, layout_.paintRectPoints().y() * px,
                    layout_.paintRectPoints().width() * px,
                    layout_.paintRectPoints().height() * px);
  const double line = kLine * px;
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing, false);
  painter.setPen(Qt::black);

  QFont text(QStringLiteral("Sans Serif"));
  text.setStyleHint(QFont::SansSerif);
  text.setPointSizeF(kFontPoints);
  QFont bold = text;
  bold.setBold(true);
  QFont title = bold;
  title.setPointSizeF(kFontPoints * 1.8);
  QFont small = text;
  small.setPointSizeF(kFontPoints * 0.85);

  double y = area.top();
  auto textLine = [&](const QFont& font, const QString& s, double x, double w, Qt::Alignment align,
                      double h) {
    painter.setFont(font);
    const QFontMetricsF m(font, painter.device());
    painter.drawText(QRectF(x, y, w, h), align | Qt::AlignVCenter | Qt::TextSingleLine,
                     m.elidedText(s, Qt::ElideRight, w));
  };

  if (page == 0) {
    textLine(title, doc_->title, area.left(), area.width(), Qt::AlignLeft, kTitleLines * line);
    y += kTitleLines * line;
    for (const QString& s : doc_->intro) {
      textLine(text, s, area.left(), area.width(), Qt::AlignLeft, line);
      y += line;
    }
    if (!doc_->intro.isEmpty()) y += 0.6 * line;
  } else {
    textLine(small, doc_->title, area.left(), area.width(), Qt::AlignLeft, line);
    y += kRunningHeadLines * line;
  }

  // The columns: their shares of the width, a little gap between them.
  int total = 0;
  for (const ReportColumn& c : doc_->columns) total += std::max(1, c.weight);
  std::vector<double> x(doc_->columns.size() + 1, area.left());
  for (size_t i = 0; i < doc_->columns.size(); ++i) {
    x[i + 1] = x[i] + area.width() * std::max(1, doc_->columns[i].weight) / std::max(1, total);
  }
  const double gap = 8 * px;
  auto row = [&](const QFont& font, const QStringList& cells) {
    for (size_t i = 0; i < doc_->columns.size() && i < static_cast<size_t>(cells.size()); ++i) {
      // Each cell keeps a gap to the next column, whichever way it aligns; a
      // centred one keeps half of it on either side, so it centres under
      // its column's middle.
      const double after = i + 1 == doc_->columns.size() ? 0 : gap;
      double left = x[i], right = x[i + 1] - after;
      Qt::Alignment align = Qt::AlignLeft;
      switch (doc_->columns[i].align) {
        case ReportAlign::kLeft:
          break;
        case ReportAlign::kCentre:
          align = Qt::AlignHCenter;
          left += after / 2;
          right += after / 2;
          break;
        case ReportAlign::kRight:
          align = Qt::AlignRight;
          break;
      }
      textLine(font, cells[static_cast<qsizetype>(i)], left, right - left, align, line);
    }
  };
  QStringList heads;
  for (const ReportColumn& c : doc_->columns) heads << c.title;
  row(bold, heads);
  y += line;
  painter.setPen(QPen(Qt::black, 0.8 * px));
  painter.drawLine(QPointF(area.left(), y + 0.15 * line), QPointF(area.right(), y + 0.15 * line));
  painter.setPen(Qt::black);
  y += (kColumnHeadLines - 1) * line;

  const auto& lines = doc_->lines;
  for (size_t i = firstLine(page), end = endLine(page); i < end; ++i) {
    const ReportLine& l = lines[i];
    switch (l.kind) {
      case ReportLineKind::kHeading:
        textLine(bold, l.text, area.left(), area.width(), Qt::AlignLeft, line);
        break;
      case ReportLineKind::kRow:
        row(text, l.cells());
        break;
      case ReportLineKind::kTotal:
        painter.setPen(QPen(Qt::black, 0.5 * px));
        painter.drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
        painter.setPen(Qt::black);
        row(bold, l.cells());
        break;
    }
    y += line;
  }

  // The footer: the page's number, at the foot of the printable area.
  y = area.bottom() - line;
  textLine(small, QObject::tr("Page %1 of %2").arg(page + 1).arg(pageCount()), area.left(),
           area.width(), Qt::AlignHCenter, line);
  painter.restore();
}

}  // namespace gorvan::ui
