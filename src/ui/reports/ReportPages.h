#pragma once
// ReportPages: a ReportDocument laid out on pages of one paper layout. All
// lines have one height, so the layout is one pass over the lines that only
// counts (no text is measured): the first page holds the title, the intro
// and the column header; later pages a running head and the column header;
// every page a footer "Page n of m". A heading is never the last line of a
// page (it moves to the next with its rows). A 100,000-line report lays out
// in a few milliseconds and paints one page at a time, on demand.
//
// Texts wider than their column are cut with "…" when painted.

#include <memory>
#include <vector>

#include "ui/reports/PagedReport.h"
#include "ui/reports/ReportDocument.h"

namespace gorvan::ui {

class ReportPages final : public PagedReport {
 public:
  // The text's size in points; line heights follow from it.
  static constexpr double kFontPoints = 9.0;

  ReportPages(std::shared_ptr<const ReportDocument> document, const QPageLayout& layout);

  QPageLayout layout() const override { return layout_; }
  int pageCount() const override { return static_cast<int>(starts_.size()); }
  void paintPage(QPainter& painter, int page) const override;

  const ReportDocument& document() const { return *doc_; }
  // The lines of page: [first, end) indexes into document().lines.
  size_t firstLine(int page) const { return starts_[page]; }
  size_t endLine(int page) const;
  // How many lines fit on the first page and on the others.
  int firstPageLines() const { return firstCapacity_; }
  int pageLines() const { return capacity_; }

 private:
  std::shared_ptr<const ReportDocument> doc_;
  QPageLayout layout_;
  std::vector<size_t> starts_;
  int firstCapacity_ = 1;
  int capacity_ = 1;
};

}  // namespace gorvan::ui
