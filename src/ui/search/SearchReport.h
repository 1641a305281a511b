#pragma once
// SearchReport: the printed search results (PreviewList) — the title "Gorvan
// Search Report", the lines "Search For : " and "Search Within : " with the
// search text and category, then a table of the rows with the header
// "Item|Cd or Folder|Path" in columns of the proportions "^3000|^2000|^7900"
// ("^": centred), one row a line, each page numbered.
//
// Pages are laid out by arithmetic, not by a document: every row is one line
// of the same height, so a page's rows are known without measuring the rows
// before it, and printing paints page after page, giving the event loop a
// turn between slices. A report of 100,000 rows thus never holds the window
// up, whether it goes to the preview, a printer or a PDF file.
//
// Thread contract: the GUI thread.

#include <QFont>
#include <QRectF>
#include <QString>
#include <QStringList>
#include <array>
#include <functional>
#include <vector>

class QPainter;
class QPaintDevice;
class QPrinter;
class QPrintPreviewDialog;
class QWidget;

namespace gorvan::ui {

class SearchResultsModel;

inline constexpr const char* kSearchReportTitle = "Gorvan Search Report";
inline constexpr const char* kSearchReportProgress = "Creating Search Results Report";
inline constexpr const char* kSearchReportHeader = "Item|Cd or Folder|Path";
inline constexpr const char* kSearchReportColumns = "^3000|^2000|^7900";

class SearchReport {
 public:
  // What the report prints.
  struct Content {
    QString title;
    QString searchFor;     // "Search For : " and the text
    QString searchWithin;  // "Search Within : " and the category
    QStringList header;
    std::vector<int> widths;                // the columns' proportions
    std::vector<Qt::Alignment> alignments;  // the columns' alignments
    std::vector<std::array<QString, 3>> rows;
  };
  // How the rows fall on pages of one size.
  struct Layout {
    QRectF page;  // the printable area, in the device's pixels
    double lineHeight = 0;
    int firstPageRows = 0;  // the first page holds the title block too
    int rowsPerPage = 0;
    int pages = 0;
    QFont font;
  };

  // The report of the search window's rows, in the list's order: each row's
  // "FileName", "CD Name" and "Path".
  static Content Lines(const SearchResultsModel& model, const QString& text,
                       const QString& category);
  // "^3000|^2000|^7900" as proportions and alignments ("^" centre, "<"
  // left, ">" right, none: left).
  static void ParseColumns(const QString& format, std::vector<int>* widths,
                           std::vector<Qt::Alignment>* alignments);

  static Layout Paginate(const Content& content, const QRectF& page, QPaintDevice* device);
  // The rows [first, last) of page p.
  static std::pair<int, int> PageRows(const Layout& layout, int page);
  // The texts page p shows, top to bottom: the title block (first page), the
  // header cells, each row's cells, the page number.
  static QStringList PageTexts(const Content& content, const Layout& layout, int page);
  static void PaintPage(QPainter& painter, const Content& content, const Layout& layout, int page);

  // Paints every page to printer. progress(page, pages) is called between
  // slices, after the event loop had a turn; it returns false to stop. False
  // when stopped (a printer's job is then aborted) or when the printer could
  // not be painted on.
  static bool Print(QPrinter* printer, const Content& content,
                    const std::function<bool(int page, int pages)>& progress = {});
  // The print preview of content (not modal), with printing to any printer
  // or to a PDF file; a progress window "Creating Search Results Report"
  // with Cancel shows while long reports are laid out.
  static QPrintPreviewDialog* Preview(Content content, QWidget* parent);
};

}  // namespace gorvan::ui
