#pragma once
// CoverInlay: the inserts of a CD case for one disc, printed at true size
// with cut marks: the front insert (120 x 120 mm: the disc's name, artist,
// category and date) and the back insert (151 x 118 mm: two 6.5 mm spines
// that carry the name and artist, and between them the track list of an
// audio CD or the top folders with their sizes of a data disc).
//
// Both inserts go on one sheet when it is tall enough (A4 and Letter are),
// else one on each. Cut marks are short lines outside each insert's corners,
// in line with its edges; the spines' folds are marked the same way above
// and below the back insert. A list too long for the back is set smaller,
// then in two columns, and what still does not fit is counted in a last
// line.

#include <QRectF>

#include "ui/reports/PagedReport.h"
#include "ui/reports/ReportGather.h"

namespace gorvan::ui {

class CoverInlay final : public PagedReport {
 public:
  static constexpr double kFrontWidth = 120, kFrontHeight = 120;  // mm
  static constexpr double kBackWidth = 151, kBackHeight = 118;
  static constexpr double kSpine = 6.5;
  static constexpr double kMarkLength = 6, kMarkGap = 2;

  CoverInlay(CoverContent content, const QPageLayout& layout);

  QPageLayout layout() const override { return layout_; }
  int pageCount() const override { return onePage_ ? 1 : 2; }
  void paintPage(QPainter& painter, int page) const override;

  // Where each insert lies on its page, in millimetres from the paper's
  // top-left corner.
  QRectF frontRect() const { return front_; }
  QRectF backRect() const { return back_; }
  int frontPage() const { return 0; }
  int backPage() const { return onePage_ ? 0 : 1; }
  const CoverContent& content() const { return content_; }

 private:
  void PaintFront(QPainter& painter) const;
  void PaintBack(QPainter& painter) const;
  void PaintMarks(QPainter& painter, const QRectF& mm, bool spines) const;

  CoverContent content_;
  QPageLayout layout_;
  QRectF front_, back_;
  bool onePage_ = true;
};

}  // namespace gorvan::ui
