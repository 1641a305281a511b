#include "ui/search/SearchReport.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QFontMetricsF>
#include <QPainter>
#include <QPointer>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <algorithm>
#include <cmath>
#include <memory>

#include "ui/search/SearchResultsModel.h"
#include "ui/widgets/JobProgressDialog.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

// Every how many milliseconds printing gives the event loop a turn.
constexpr qint64 kSliceMs = 25;
constexpr int kTitleLines = 4;  // the title (twice as high), two search lines, a gap

// Keeps a preview from being closed while its pages are painted: the printer
// being painted on is the preview's own.
class CloseGuard : public QObject {
 public:
  using QObject::QObject;
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (busy && event->type() == QEvent::Close) {
      event->ignore();
      return true;
    }
    return QObject::eventFilter(watched, event);
  }
  bool busy = false;
};

QFont ReportFont() {
  QFont font = QApplication::font();
  font.setPointSizeF(9);
  return font;
}

}  // namespace

void SearchReport::ParseColumns(const QString& format, std::vector<int>* widths,
                                std::vector<Qt::Alignment>* alignments) {
  widths->clear();
  alignments->clear();
  for (QString cell : format.split(QLatin1Char('|'))) {
    Qt::Alignment align = Qt::AlignLeft;
    if (cell.startsWith(QLatin1Char('^'))) {
      align = Qt::AlignHCenter;
    } else if (cell.startsWith(QLatin1Char('>'))) {
      align = Qt::AlignRight;
    }
    if (cell.startsWith(QLatin1Char('^')) || cell.startsWith(QLatin1Char('<')) ||
        cell.startsWith(QLatin1Char('>')))
      cell.remove(0, 1);
    bool ok = false;
    const int w = cell.trimmed().toInt(&ok);
    widths->push_back(ok && w > 0 ? w : 1000);
    alignments->push_back(align);
  }
}

SearchReport::Content SearchReport::Lines(const SearchResultsModel& model, const QString& text,
                                          const QString& category) {
  Content c;
  c.title = Qs(kSearchReportTitle);
  c.searchFor = QStringLiteral("Search For : ") + RowText(Std(text));
  c.searchWithin = QStringLiteral("Search Within : ") + RowText(Std(category));
  c.header = Qs(kSearchReportHeader).split(QLatin1Char('|'));
  ParseColumns(Qs(kSearchReportColumns), &c.widths, &c.alignments);
  const int n = model.rowCount();
  c.rows.reserve(static_cast<size_t>(n));
  for (int r = 0; r < n; ++r) {
    const SearchResult& row = model.RowAt(r);
    c.rows.push_back({RowText(row.fileName), RowText(row.cdName), RowText(row.path)});
  }
  return c;
}

SearchReport::Layout SearchReport::Paginate(const Content& content, const QRectF& page,
                                            QPaintDevice* device) {
  Layout l;
  l.page = page;
  l.font = ReportFont();
  const QFontMetricsF metrics(l.font, device);
  l.lineHeight = std::ceil(metrics.lineSpacing() * 1.25);
  // Every page: the header line, the rows, a gap and the page number.
  const int lines = std::max(3, static_cast<int>(page.height() / l.lineHeight));
  l.rowsPerPage = std::max(1, lines - 3);
  l.firstPageRows = std::max(1, l.rowsPerPage - (kTitleLines + 1));
  const int rows = static_cast<int>(content.rows.size());
  l.pages = 1;
  if (rows > l.firstPageRows)
    l.pages += (rows - l.firstPageRows + l.rowsPerPage - 1) / l.rowsPerPage;
  return l;
}

std::pair<int, int> SearchReport::PageRows(const Layout& layout, int page) {
  if (page <= 0) return {0, layout.firstPageRows};
  const int first = layout.firstPageRows + (page - 1) * layout.rowsPerPage;
  return {first, first + layout.rowsPerPage};
}

QStringList SearchReport::PageTexts(const Content& content, const Layout& layout, int page) {
  QStringList out;
  if (page == 0) out << content.title << content.searchFor << content.searchWithin;
  out << content.header;
  auto [first, last] = PageRows(layout, page);
  last = std::min(last, static_cast<int>(content.rows.size()));
  for (int r = first; r < last; ++r) {
    for (const QString& cell : content.rows[static_cast<size_t>(r)]) out << cell;
  }
  out << QStringLiteral("Page %1 of %2").arg(page + 1).arg(layout.pages);
  return out;
}

void SearchReport::PaintPage(QPainter& painter, const Content& content, const Layout& layout,
                             int page) {
  const QRectF area = layout.page;
  const double h = layout.lineHeight;
  QFont font = layout.font;
  painter.setFont(font);
  const QFontMetricsF metrics(font, painter.device());
  double y = area.top();
  if (page == 0) {
    QFont big = font;
    big.setPointSizeF(font.pointSizeF() * 1.6);
    big.setBold(true);
    painter.setFont(big);
    painter.drawText(QRectF(area.left(), y, area.width(), h * 2),
                     Qt::AlignHCenter | Qt::AlignVCenter, content.title);
    painter.setFont(font);
    y += h * 2;
    painter.drawText(QRectF(area.left(), y, area.width(), h), Qt::AlignLeft | Qt::AlignVCenter,
                     content.searchFor);
    y += h;
    painter.drawText(QRectF(area.left(), y, area.width(), h), Qt::AlignLeft | Qt::AlignVCenter,
                     content.searchWithin);
    y += h * (kTitleLines - 2);
  }
  // The columns share the width in their proportions.
  double total = 0;
  for (int w : content.widths) total += w;
  std::vector<QRectF> cells;
  double x = area.left();
  const double pad = metrics.averageCharWidth() / 2;
  for (size_t c = 0; c < static_cast<size_t>(content.header.size()) && c < content.widths.size();
       ++c) {
    const double w = area.width() * content.widths[c] / total;
    cells.emplace_back(x + pad, 0, w - 2 * pad, h);
    x += w;
  }
  QFont bold = font;
  bold.setBold(true);
  painter.setFont(bold);
  for (size_t c = 0; c < cells.size(); ++c) {
    painter.drawText(cells[c].translated(0, y), Qt::AlignHCenter | Qt::AlignVCenter,
                     content.header[static_cast<qsizetype>(c)]);
  }
  painter.setFont(font);
  y += h;
  painter.drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
  auto [first, last] = PageRows(layout, page);
  last = std::min(last, static_cast<int>(content.rows.size()));
  for (int r = first; r < last; ++r) {
    const auto& row = content.rows[static_cast<size_t>(r)];
    for (size_t c = 0; c < cells.size() && c < row.size(); ++c) {
      const QRectF cell = cells[c].translated(0, y);
      painter.drawText(cell, content.alignments[c] | Qt::AlignVCenter,
                       metrics.elidedText(row[c], Qt::ElideRight, cell.width()));
    }
    y += h;
  }
  painter.drawText(QRectF(area.left(), area.bottom() - h, area.width(), h),
                   Qt::AlignHCenter | Qt::AlignVCenter,
                   QStringLiteral("Page %1 of %2").arg(page + 1).arg(layout.pages));
}

bool SearchReport::Print(QPrinter* printer, const Content& content,
                         const std::function<bool(int page, int pages)>& progress) {
  QPainter painter;
  if (!painter.begin(printer)) return false;
  const QRectF page(0, 0, printer->width(), printer->height());
  const Layout layout = Paginate(content, page, printer);
  QElapsedTimer slice;
  slice.start();
  for (int p = 0; p < layout.pages; ++p) {
    if (p > 0 && !printer->newPage()) return false;
    PaintPage(painter, content, layout, p);
    if (slice.elapsed() >= kSliceMs && p + 1 < layout.pages) {
      QCoreApplication::processEvents();
      slice.restart();
      if (progress && !progress(p + 1, layout.pages)) {
        printer->abort();
        return false;
      }
    }
  }
  return painter.end();
}

QPrintPreviewDialog* SearchReport::Preview(Content content, QWidget* parent) {
  auto* dialog = new QPrintPreviewDialog(parent);
  dialog->setObjectName(QStringLiteral("frmPreview"));
  dialog->setWindowTitle(Qs(kSearchReportTitle));
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  auto* guard = new CloseGuard(dialog);
  dialog->installEventFilter(guard);
  auto shared = std::make_shared<const Content>(std::move(content));
  QObject::connect(dialog, &QPrintPreviewDialog::paintRequested, dialog,
                   [dialog, guard, shared](QPrinter* printer) {
                     // A progress window for reports that take a moment; the
                     // preview waits, unusable, until its pages are painted.
                     // Not the preview's child: the preview is disabled meanwhile.
                     QPointer<JobProgressDialog> progress =
                         new JobProgressDialog(Qs(kSearchReportProgress), QObject::tr("Cancel"),
                                               400, dialog->parentWidget());
                     progress->setObjectName(QStringLiteral("frmReportProgress"));
                     bool cancelled = false;
                     QObject::connect(progress, &JobProgressDialog::cancelRequested, progress,
                                      [&cancelled] { cancelled = true; });
                     guard->busy = true;
                     dialog->setEnabled(false);
                     Print(printer, *shared, [&](int page, int pages) {
                       if (progress) {
                         JobProgress p;
                         p.caption = kSearchReportProgress;
                         p.value = page;
                         p.maximum = pages;
                         progress->Report(p);
                       }
                       return !cancelled;
                     });
                     dialog->setEnabled(true);
                     guard->busy = false;
                     if (progress) progress->deleteLater();
                   });
  dialog->open();
  return dialog;
}

}  // namespace gorvan::ui
