#pragma once
// ReportView: the pages of a report on the screen, one under the other, at a
// zoom. Only the pages in sight are painted, each into an image kept for a
// while, so a report of thousands of pages scrolls as fast as one of three.
// Until a report is set it shows a line of text ("Creating Catalog Report").
//
// Keys: Page Up/Down and the arrows scroll, Ctrl and + or - (or the wheel
// with Ctrl) zoom.
//
// Thread contract: the GUI thread.

#include <QAbstractScrollArea>
#include <QCache>
#include <QImage>
#include <memory>

namespace gorvan::ui {

class PagedReport;

class ReportView : public QAbstractScrollArea {
  Q_OBJECT

 public:
  explicit ReportView(QWidget* parent = nullptr);

  void SetReport(std::shared_ptr<const PagedReport> report);
  const PagedReport* report() const { return report_.get(); }
  void SetMessage(const QString& text);
  // 1.0 is the paper's true size on this screen.
  void SetZoom(double zoom);
  double zoom() const { return zoom_; }
  void ZoomIn() { SetZoom(zoom_ * 1.25); }
  void ZoomOut() { SetZoom(zoom_ / 1.25); }
  // The zoom at which a page fills the view's width.
  void FitWidth();
  // The page at the middle of the view (0 when none).
  int currentPage() const;
  void ShowPage(int page);

 Q_SIGNALS:
  void currentPageChanged(int page);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  QSizeF PageSize() const;  // one page on the screen, in pixels
  double Spacing() const;
  void UpdateScrollBars();
  const QImage& PageImage(int page, const QSize& pixels);

  std::shared_ptr<const PagedReport> report_;
  QString message_;
  double zoom_ = 1.0;
  bool fitWidth_ = true;
  int lastPage_ = -1;
  QCache<int, QImage> cache_{24};
};

}  // namespace gorvan::ui
