#pragma once
// HtmlExportWriter: the web-page export — one self-contained HTML page (no
// outside files, no network: its content security policy forbids any load)
// that shows the exported discs as a collapsible tree, disc → folders → files,
// with sizes and dates, and a filter box that searches every name as one
// types.
//
// The page (src/export/html/ExportPage.html, built into the program) gets two
// things: its title (the catalog's name and the export's date, HTML-escaped)
// and the data, compact JSON inside a <script type="application/json"> block
// in which every "<", ">" and "&" is written as a \u escape, so no name can
// end the block or inject markup; the page's script builds every node with
// textContent. The data:
//
//   {"name": catalog name, "date": export date (general date format),
//    "discs": [{"n": name, "t": last scanned, "s": total size,
//               "f": free space, "m": media type, "o": notes,
//               "d": [folder, ...]}, ...]}
//   folder: [parent, name, date, size, notes,
//            [file names], [file sizes], [file dates], [[i, notes], ...]?]
//
// `parent` is the index in "d" of the folder holding this one, or -1 for a
// disc's top folder, whose name is then its full name. Dates are seconds
// since 1 January 1970 of the catalog's local time (null: none); the page
// shows them as they are, without time-zone shifts. Texts are UTF-8
// (Windows-1252 converted, invalid bytes as U+FFFD). The last folder element,
// the notes of its files by index, is there only when a file has notes.
// Unticked option boxes leave their values out (null, "" or an empty list).
//
// The page draws a folder's children only when it is opened (in steps of a
// few hundred), and the filter runs over the arrays and lists at most a few
// hundred hits with their paths, so a page of a million files stays usable.
// Folders are written one at a time: memory holds one folder's files.

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "export/ExportWriter.h"
#include "export/basExport.h"

namespace gorvan {

class OutputWriter;

// The page, with its two markers, as built into the program from
// src/export/html/ExportPage.html.
std::string_view ExportPageTemplate();

class HtmlExportWriter final : public ExportWriter {
 public:
  // The places in the page that the writer fills.
  static constexpr std::string_view kTitleMarker = "@GORVAN_TITLE@";
  static constexpr std::string_view kDataMarker = "@GORVAN_DATA@";

  HtmlExportWriter(OutputWriter& out, const ExportFields& fields) : out_(out), fields_(fields) {}

  void Begin(const ExportStart& start) override;
  void Disc(const ExportDisc& disc) override;
  void Folder(const ExportFolder& folder) override;
  void File(const ExportFile& file) override;
  void EndFolder() override;
  void EndDisc() override;
  Status End() override;
  bool ok() const override;

  // text as a JSON string, quotes included, safe inside a <script> block.
  static void AppendJsonString(std::string_view utf8, std::string* out);
  // text with &, <, >, " and ' as entities.
  static void AppendHtmlEscaped(std::string_view text, std::string* out);

 private:
  void String(std::string_view stored, std::string* out);
  static void Number(double value, std::string* out);
  static void Seconds(double ole, std::string* out);

  OutputWriter& out_;
  const ExportFields& fields_;
  bool ansi_ = false;
  bool firstDisc_ = true;
  int32_t folders_ = 0;                             // folders of the current disc so far
  int32_t files_ = 0;                               // files of the current folder so far
  std::unordered_map<std::string, int32_t> index_;  // full name → folder index, per disc
  std::string_view tail_;                           // the page after the data
  std::string folder_, names_, sizes_, dates_, notes_, text_;
};

}  // namespace gorvan
