#pragma once
// The search report's texts (PreviewList): the title, the header
// "Item|Cd or Folder|Path" and its columns' format "^3000|^2000|^7900" — each
// column's share of the page's width, with "^" before it for centred texts,
// ">" for texts to the right, "<" or nothing for texts to the left.

#include <QString>
#include <QStringList>
#include <vector>

#include "ui/reports/ReportDocument.h"

namespace gorvan::ui {

inline constexpr const char* kSearchReportTitle = "Gorvan Search Report";
inline constexpr const char* kSearchReportProgress = "Creating Search Results Report";
inline constexpr const char* kSearchReportHeader = "Item|Cd or Folder|Path";
inline constexpr const char* kSearchReportColumns = "^3000|^2000|^7900";

// The columns of header ("|" between titles) in format's shares and
// alignments; a share that is not a positive number counts as 1000.
inline std::vector<ReportColumn> ReportColumns(const QString& header, const QString& format) {
  const QStringList titles = header.split(QLatin1Char('|'));
  const QStringList cells = format.split(QLatin1Char('|'));
  std::vector<ReportColumn> columns;
  for (qsizetype i = 0; i < titles.size(); ++i) {
    QString cell = i < cells.size() ? cells[i].trimmed() : QString();
    ReportColumn c{titles[i], 1000, ReportAlign::kLeft};
    if (cell.startsWith(QLatin1Char('^'))) c.align = ReportAlign::kCentre;
    if (cell.startsWith(QLatin1Char('>'))) c.align = ReportAlign::kRight;
    if (cell.startsWith(QLatin1Char('^')) || cell.startsWith(QLatin1Char('>')) ||
        cell.startsWith(QLatin1Char('<')))
      cell.remove(0, 1);
    bool ok = false;
    const int share = cell.toInt(&ok);
    if (ok && share > 0) c.weight = share;
    columns.push_back(c);
  }
  return columns;
}

}  // namespace gorvan::ui
