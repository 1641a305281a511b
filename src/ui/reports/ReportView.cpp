#include "ui/reports/ReportView.h"

#include <QKeyEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>
#include <algorithm>
#include <climits>
#include <cmath>

#include "ui/reports/PagedReport.h"

namespace gorvan::ui {

ReportView::ReportView(QWidget* parent) : QAbstractScrollArea(parent) {
  setObjectName(QStringLiteral("vwPages"));
  setFocusPolicy(Qt::StrongFocus);
  viewport()->setBackgroundRole(QPalette::Mid);
  viewport()->setAutoFillBackground(true);
}

void ReportView::SetReport(std::shared_ptr<const PagedReport> report) {
  report_ = std::move(report);
  cache_.clear();
  lastPage_ = -1;
  if (fitWidth_) FitWidth();
  UpdateScrollBars();
  verticalScrollBar()->setValue(0);
  viewport()->update();
  Q_EMIT currentPageChanged(currentPage());
}

void ReportView::SetMessage(const QString& text) {
  message_ = text;
  if (!report_) viewport()->update();
}

void ReportView::SetZoom(double zoom) {
  fitWidth_ = false;
  const int page = currentPage();
  zoom_ = std::clamp(zoom, 0.1, 8.0);
  cache_.clear();
  UpdateScrollBars();
  ShowPage(page);
  viewport()->update();
}

void ReportView::FitWidth() {
  if (!report_) return;
  const double paper = report_->layout().fullRectPoints().width() * logicalDpiX() / 72.0;
  const double room = viewport()->width() - 2 * Spacing();
  if (paper <= 0 || room <= 0) return;
  const int page = currentPage();
  zoom_ = std::clamp(room / paper, 0.1, 8.0);
  fitWidth_ = true;
  cache_.clear();
  UpdateScrollBars();
  ShowPage(page);
}

QSizeF ReportView::PageSize() const {
  if (!report_) return {};
  const QSizeF points = report_->layout().fullRectPoints().size();
  return QSizeF(points.width() * logicalDpiX() / 72.0 * zoom_,
                points.height() * logicalDpiY() / 72.0 * zoom_);
}

double ReportView::Spacing() const { return fontMetrics().height(); }

int ReportView::currentPage() const {
  if (!report_ || report_->pageCount() == 0) return 0;
  const double step = PageSize().height() + Spacing();
  const double middle = verticalScrollBar()->value() + viewport()->height() / 2.0;
  return std::clamp(static_cast<int>(middle / step), 0, report_->pageCount() - 1);
}

void ReportView::ShowPage(int page) {
  if (!report_) return;
  const double step = PageSize().height() + Spacing();
  verticalScrollBar()->setValue(static_cast<int>(std::lround(page * step)));
}

void ReportView::UpdateScrollBars() {
  const QSizeF page = PageSize();
  const int pages = report_ ? report_->pageCount() : 0;
  const double height = pages * (page.height() + Spacing()) + Spacing();
  const double width = page.width() + 2 * Spacing();
  // A scroll bar's range is an int: pages of a very long report at a large
  // zoom stay within it (2^31 pixels is some 400,000 A4 pages at true size).
  verticalScrollBar()->setRange(0, static_cast<int>(std::min<double>(
                                       INT_MAX / 2, std::max(0.0, height - viewport()->height()))));
  verticalScrollBar()->setPageStep(viewport()->height());
  verticalScrollBar()->setSingleStep(std::max(1, fontMetrics().height() * 3));
  horizontalScrollBar()->setRange(0, static_cast<int>(std::max(0.0, width - viewport()->width())));
  horizontalScrollBar()->setPageStep(viewport()->width());
}

const QImage& ReportView::PageImage(int page, const QSize& pixels) {
  if (QImage* cached = cache_.object(page); cached && cached->size() == pixels) return *cached;
  auto* image = new QImage(pixels, QImage::Format_RGB32);
  // The image's resolution makes the report paint at the zoom: its points
  // and millimetres become this many pixels.
  const double dpi = pixels.width() * 72.0 / report_->layout().fullRectPoints().width();
  image->setDotsPerMeterX(static_cast<int>(std::lround(dpi / 0.0254)));
  image->setDotsPerMeterY(static_cast<int>(std::lround(dpi / 0.0254)));
  image->fill(Qt::white);
  {
    QPainter p(image);
    report_->paintPage(p, page);
  }
  cache_.insert(page, image);
  return *cache_.object(page);
}

void ReportView::paintEvent(QPaintEvent* event) {
  QPainter p(viewport());
  if (!report_) {
    p.setPen(palette().color(QPalette::WindowText));
    p.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap, message_);
    return;
  }
  const QSizeF page = PageSize();
  const double step = page.height() + Spacing();
  const double x0 = std::max(Spacing(), (viewport()->width() - page.width()) / 2.0) -
                    horizontalScrollBar()->value();
  const double top = verticalScrollBar()->value();
  const int first = std::max(0, static_cast<int>((top + event->rect().top()) / step));
  const int last =
      std::min(report_->pageCount() - 1, static_cast<int>((top + event->rect().bottom()) / step));
  const qreal dpr = devicePixelRatioF();
  const QSize pixels(static_cast<int>(std::ceil(page.width() * dpr)),
                     static_cast<int>(std::ceil(page.height() * dpr)));
  for (int i = first; i <= last; ++i) {
    const QRectF target(x0, Spacing() + i * step - top, page.width(), page.height());
    p.fillRect(target.translated(2, 2), palette().color(QPalette::Shadow));
    p.drawImage(target, PageImage(i, pixels));
  }
  const int current = currentPage();
  if (current != lastPage_) {
    lastPage_ = current;
    Q_EMIT currentPageChanged(current);
  }
}

void ReportView::resizeEvent(QResizeEvent* event) {
  QAbstractScrollArea::resizeEvent(event);
  if (fitWidth_) {
    FitWidth();
  } else {
    UpdateScrollBars();
  }
}

void ReportView::scrollContentsBy(int, int) { viewport()->update(); }

void ReportView::wheelEvent(QWheelEvent* event) {
  if (event->modifiers() & Qt::ControlModifier) {
    if (event->angleDelta().y() > 0) ZoomIn();
    if (event->angleDelta().y() < 0) ZoomOut();
    event->accept();
    return;
  }
  QAbstractScrollArea::wheelEvent(event);
}

void ReportView::keyPressEvent(QKeyEvent* event) {
  if (event->modifiers() & Qt::ControlModifier) {
    if (event->key() == Qt::Key_Plus || event->key() == Qt::Key_Equal) {
      ZoomIn();
      return;
    }
    if (event->key() == Qt::Key_Minus) {
      ZoomOut();
      return;
    }
  }
  switch (event->key()) {
    case Qt::Key_Home:
      ShowPage(0);
      return;
    case Qt::Key_End:
      if (report_) ShowPage(report_->pageCount() - 1);
      return;
    default:
      break;
  }
  QAbstractScrollArea::keyPressEvent(event);
}

}  // namespace gorvan::ui
