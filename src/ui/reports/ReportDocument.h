#pragma once
// ReportDocument: the lines of a printed list — the catalog report, a disc's
// report, search results — gathered on a worker thread and laid out on pages
// later (ReportPages). A line is a heading (one text across the page), a
// row (one text per column) or a total (a row set off by a rule).
//
// A line keeps its cells in one text, separated by tabs (texts of a report
// show on one line, with their tabs as symbols, so none holds a tab): a
// report of a million lines costs about 100 bytes a line, a third of what a
// list of texts a line would.

#include <QString>
#include <QStringList>
#include <vector>

namespace gorvan::ui {

// How a column sets its texts: numbers to the right, some lists centred.
enum class ReportAlign : unsigned char { kLeft, kCentre, kRight };

struct ReportColumn {
  QString title;
  int weight = 1;  // the column's share of the page's width
  ReportAlign align = ReportAlign::kLeft;
};

enum class ReportLineKind : unsigned char { kHeading, kRow, kTotal };

struct ReportLine {
  ReportLineKind kind = ReportLineKind::kRow;
  QString text;  // the cells joined by tabs; a heading: its one text

  QStringList cells() const { return text.split(QLatin1Char('\t')); }
  // Cell i; "" when the line has fewer.
  QString cell(int i) const { return text.section(QLatin1Char('\t'), i, i); }
};

struct ReportDocument {
  QString title;      // the first page's title and every page's running head
  QStringList intro;  // lines under the title on the first page
  std::vector<ReportColumn> columns;
  std::vector<ReportLine> lines;

  void Heading(const QString& text) { lines.push_back({ReportLineKind::kHeading, Cell(text)}); }
  void Row(const QStringList& cells) { lines.push_back({ReportLineKind::kRow, Join(cells)}); }
  void Total(const QStringList& cells) { lines.push_back({ReportLineKind::kTotal, Join(cells)}); }

 private:
  // A tab inside a text would split its cell: it shows as a blank.
  static QString Cell(QString text) {
    text.replace(QLatin1Char('\t'), QLatin1Char(' '));
    return text;
  }
  static QString Join(const QStringList& cells) {
    QString joined;
    for (qsizetype i = 0; i < cells.size(); ++i) {
      if (i > 0) joined += QLatin1Char('\t');
      joined += Cell(cells[i]);
    }
    joined.squeeze();
    return joined;
  }
};

}  // namespace gorvan::ui
