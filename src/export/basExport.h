#pragma once
// basExport: the catalog export — chosen discs with their folders and files,
// written as XML (with the "Gorvan.xsl" stylesheet beside it) or as
// comma-separated lines, in one walk with progress and cancel.
//
// Texts go out in the catalog's own encoding. A Windows-1252 catalog gives an
// all-ASCII XML file: every byte from 128 to 255 is written as "&#xNN;" with its
// code-page number. A UTF-8 catalog gives UTF-8 with those characters as they
// are (an XML file without a declaration is read as UTF-8). The comma-separated
// lines carry the texts' bytes unchanged in either case.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "catalog/JobControl.h"
#include "catalog/Status.h"
#include "catalog/classData.h"

namespace gorvan {

inline constexpr const char* kStylesheetName = "Gorvan.xsl";
inline constexpr const char* kExportingCaption = "Exporting : ";

// The export window's types: 0 delimited text, 1 XML.
enum class ExportType : int { kDelimited = 0, kXml = 1 };

// The export window's option boxes. An unticked box empties its field (the
// column or element stays, so every line of a kind keeps its layout), except
// dirFiles, which leaves out the files altogether. All ticked by default.
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
  // The ExtractDate of the XML root (OLE date); 0: now.
  double extractDate = 0;
};

struct ExportResult {
  Status status;
  // The stylesheet could not be put beside the XML file (the export itself
  // is complete); the reason.
  std::string stylesheetProblem;
};

// Writes the export to path, as one job (JobControl: caption "Exporting : "
// and the disc's name, value and maximum count discs). An existing file of
// that name is replaced only when the export completes: a cancelled
// (Cancelled) or failed export leaves no partial file. A disc id that is not
// in the catalog is refused (InvalidArgument) before anything is written.
// The catalog belongs to the calling thread for the export's length.
ExportResult basExport(classData& data, const std::string& path, const ExportOptions& options,
                       JobControl& job);

// The XML escaping, in its order: "&", "<", ">", "'", the double quote (as
// "&quote;") and, for Windows-1252 text (ansi), every byte from 128 to 255 as
// "&#xNN;". Appends to *out.
void AppendXmlEscaped(std::string_view text, bool ansi, std::string* out);

}  // namespace gorvan
