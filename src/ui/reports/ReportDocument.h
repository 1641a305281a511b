#pragma once
// ReportDocument: the lines of a printed list — the catalog report, a disc's
// report, search results — gathered on a worker thread and laid out on pages
// later (ReportPages). A line is a heading (one text across the page), a
// row (one text per column) or a total (a row set off by a rule).

#include <QString>
#include <QStringList>
#include <vector>

namespace gorvan::ui {

struct ReportColumn {
  QString title;
  int weight = 1;      // the column's share of the page's width
  bool right = false;  // numbers: aligned to the right
};

enum class ReportLineKind : unsigned char { kHeading, kRow, kTotal };

struct ReportLine {
  ReportLineKind kind = ReportLineKind::kRow;
  QStringList cells;  // a heading: one text
};

struct ReportDocument {
  QString title;      // the first page's title and every page's running head
  QStringList intro;  // lines under the title on the first page
  std::vector<ReportColumn> columns;
  std::vector<ReportLine> lines;

  void Heading(const QString& text) { lines.push_back({ReportLineKind::kHeading, {text}}); }
  void Row(QStringList cells) { lines.push_back({ReportLineKind::kRow, std::move(cells)}); }
  void Total(QStringList cells) { lines.push_back({ReportLineKind::kTotal, std::move(cells)}); }
};

}  // namespace gorvan::ui
