#pragma once
// basExport: the catalog export — chosen discs with their folders and files,
// written in one walk with progress and cancel as comma-separated lines, XML
// (with the "Gorvan.xsl" stylesheet beside it), a spreadsheet workbook (.xlsx)
// or one self-contained web page.
//
// Texts go out in the catalog's own encoding. A Windows-1252 catalog gives an
// all-ASCII XML file: every byte from 128 to 255 is written as "&#xNN;" with its
// code-page number. A UTF-8 catalog gives UTF-8 with those characters as they
// are (an XML file without a declaration is read as UTF-8). The comma-separated
// lines carry the texts' bytes unchanged in either case. The workbook and the
// web page are always UTF-8: Windows-1252 texts are converted, and bytes that
// are not valid UTF-8 become U+FFFD.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "catalog/JobControl.h"
#include "catalog/Status.h"
#include "catalog/classData.h"

namespace gorvan {

inline constexpr const char* kStylesheetName = "Gorvan.xsl";
inline constexpr const char* kExportingCaption = "Exporting : ";

// The export window's types, in the window's order; the number is what the
// "export_type" setting stores.
enum class ExportType : int {
  kDelimited = 0,    // "CSV (Comma Delimited File)": C/D/F lines
  kXml = 1,          // "XML (Extensible Markup Language)"
  kSpreadsheet = 2,  // "XLS (Excel Normal)": an .xlsx workbook
  kHtml = 3,         // "html (Single html Page)"
};
inline constexpr int kExportTypeCount = 4;

// What the export window shows and asks for each type, indexed by ExportType.
// `filter` is one entry of a file dialog's filter ("description|pattern");
// `extension` the default extension, without the dot.
struct ExportTypeInfo {
  const char* caption;
  const char* filter;
  const char* extension;
};
inline constexpr std::array<ExportTypeInfo, kExportTypeCount> kExportTypes = {{
    {"CSV (Comma Delimited File)", "Comma Delimited (*.csv)|*.csv", "csv"},
    {"XML (Extensible Markup Language)", "XML File (*.xml)|*.xml", "xml"},
    {"XLS (Excel Normal)", "Excel Sheet (*.xlsx)|*.xlsx", "xlsx"},
    {"html (Single html Page)", "html (Single html Page) (*.html)|*.html", "html"},
}};
// REQUIRES: type is one of the four (check a number read from the settings
// against kExportTypeCount first).
inline constexpr const ExportTypeInfo& ExportTypeInfoOf(ExportType type) {
  return kExportTypes[static_cast<int>(type)];
}
// The file dialog of both export windows: its title, and the catalog export's
// whole filter (the four entries above joined by "|", so entry i is type i).
inline constexpr const char* kExportDialogTitle = "Select the name of the file to export";
inline constexpr const char* kExportFileFilter =
    "Comma Delimited (*.csv)|*.csv|XML File (*.xml)|*.xml|Excel Sheet (*.xlsx)|*.xlsx|"
    "html (Single html Page) (*.html)|*.html";

// The type a file name asks for by its extension (any case): ".csv", ".xml",
// ".xlsx", ".html" or ".htm"; none for any other name.
std::optional<ExportType> ExportTypeForPath(std::string_view path);

// The export window's option boxes. In the delimited text and the XML an
// unticked box empties its field (the column or element stays, so every line
// of a kind keeps its layout); the workbook leaves the column out, and the web
// page leaves the value out. dirFiles unticked leaves out the files
// altogether in every type. All ticked by default.
struct ExportFields {
  bool dirSize = true;     // "chkDirSize"
  bool dirDate = true;     // "chkDirDate"
  bool dirNotes = true;    // "chkDirNotes"
  bool dirFiles = true;    // "chkDirFiles": the files of each folder
  bool fileSizes = true;   // "chkFileSizes"
  bool fileDates = true;   // "chkFileDates"
  bool fileNotes = true;   // "chkFileNotes"
};

struct ExportOptions {
  ExportType type = ExportType::kXml;
  // The discs, in the order written; empty: every disc in chain order.
  std::vector<int32_t> discIds;
  ExportFields fields;
  // The application's stylesheet, copied beside an XML export; empty: none.
  std::string stylesheet;
  // The moment the export names (the XML root's ExtractDate, the web page's
  // title), an OLE date; 0: now.
  double extractDate = 0;
  // Rows of one worksheet, its header row included, before the workbook goes
  // on in a further sheet; 0: the spreadsheet's limit of 1,048,576. Only
  // tests set it.
  int32_t sheetRows = 0;
};

struct ExportResult {
  Status status;
  // The stylesheet could not be put beside the XML file (the export itself
  // is complete); the reason.
  std::string stylesheetProblem;
};

// Writes the export to path, as one job (JobControl: caption "Exporting : "
// and the disc's name; value and maximum count discs, folders and files the
// folders and files written so far). A type outside the four is refused
// (InvalidArgument). An existing file of that name is replaced only when the export
// completes: the file is written beside it ("<path>.part") and renamed into
// place, so a cancelled (Cancelled) or failed export leaves no partial file.
// A target that cannot be created fails (IOError, with the system's reason)
// before the walk. A disc id that is not in the catalog is refused
// (InvalidArgument) before anything is written. The catalog belongs to the
// calling thread for the export's length.
ExportResult basExport(classData& data, const std::string& path, const ExportOptions& options,
                       JobControl& job);

// The XML escaping, in its order: "&", "<", ">", "'", the double quote (as
// "&quote;") and, for Windows-1252 text (ansi), every byte from 128 to 255 as
// "&#xNN;". What XML cannot hold at all is replaced, so the file stays
// readable: control characters other than tab, line feed and carriage return
// become U+FFFD ("?" for ansi text), and so does each byte of UTF-8 text that
// is not part of a valid sequence. Appends to *out.
void AppendXmlEscaped(std::string_view text, bool ansi, std::string* out);

}  // namespace gorvan
