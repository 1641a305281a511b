#pragma once
// XlsxExportWriter: the spreadsheet export — a real .xlsx workbook, written
// with libxlsxwriter.
//
// Layout: three tables, each a sheet whose first column is "Disc", so that
// one auto-filter picks a disc out of thousands:
//   "Discs"    a row per disc: Disc, Last Scanned, Total Size, Free Space,
//              Folders, Files, Media Type, Notes, Extra 1..4
//   "Folders"  a row per folder: Disc, Folder (its full name), Name, Date,
//              Size, Attributes, Subfolders, Files, Direct Files, Notes,
//              Extra 1..4
//   "Files"    a row per file: Disc, Folder (the folder's full name), Name,
//              Date, Size, Attributes, Notes, Extra 1..4
// Sizes and counts are numbers (sizes shown with thousands separators), dates
// are spreadsheet dates shown as "yyyy-mm-dd hh:mm:ss" (a date the spreadsheet
// cannot hold, before 1 March 1900, is written as text; no date at all as an
// empty cell), texts are UTF-8 strings (Windows-1252 converted, invalid bytes
// as U+FFFD, line breaks as line feeds, at most 32,767 characters). Every
// sheet has a bold header row, the panes frozen below it, an auto-filter over
// all its rows, and columns as wide as their contents within limits. A table
// longer than a sheet (its header and 1,048,575 rows, or about 3 GiB of
// sheet data, which keeps each sheet within the 4 GiB a part of the workbook
// may take) goes on in "Files (2)", "Files (3)", ..., each with its own
// header. Unticked option boxes leave their columns out; chkDirFiles
// unticked leaves out the "Files" sheet.
//
// Memory: the workbook is built in libxlsxwriter's constant-memory mode, so
// only the current row of each sheet is held; the rows go to temporary files
// in the target's folder, which are deleted as soon as they are created (they
// live only as open descriptors) and so can never be left behind.
//
// Atomic: End() writes the workbook to "<target>.part", forces it to the disk
// and renames it over the target. A writer destroyed before a successful
// End() (a cancel, a failure) removes its ".part" file and releases its
// temporary files; the target stays as it was.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "export/ExportWriter.h"
#include "export/basExport.h"

struct lxw_workbook;
struct lxw_worksheet;
struct lxw_format;

namespace gorvan {

class XlsxExportWriter final : public ExportWriter {
 public:
  // Rows of a sheet, header included: the spreadsheet's limit.
  static constexpr int32_t kMaxSheetRows = 1048576;

  // sheetRows: rows of one sheet with its header before the table goes on in
  // a further sheet; 0 (or more than kMaxSheetRows): kMaxSheetRows.
  XlsxExportWriter(std::string path, const ExportFields& fields, int32_t sheetRows = 0);
  ~XlsxExportWriter() override;
  XlsxExportWriter(const XlsxExportWriter&) = delete;
  XlsxExportWriter& operator=(const XlsxExportWriter&) = delete;

  // Creates "<path>.part" (so an unwritable target fails before any work)
  // and the workbook. On failure IOError with the system's reason.
  [[nodiscard]] Status Open();

  void Begin(const ExportStart& start) override;
  void Disc(const ExportDisc& disc) override;
  void Folder(const ExportFolder& folder) override;
  void File(const ExportFile& file) override;
  // Writes the workbook and renames it into place; the first failure, if any
  // (nothing is renamed then).
  Status End() override;
  bool ok() const override { return status_.ok(); }

 private:
  // What a column holds.
  enum class Field : uint8_t {
    kDisc,
    kFolder,
    kName,
    kDate,
    kSize,
    kAttr,
    kFreeSpace,
    kFolders,
    kFiles,
    kDirectFiles,
    kMediaType,
    kNotes,
    kExtra1,
    kExtra2,
    kExtra3,
    kExtra4,
  };
  struct Column {
    const char* title;
    Field field;
  };
  struct Values;  // one row's values
  // One table: its sheets so far, the row to write next and, for the column
  // widths, the widest value of each column on the current sheet.
  struct Table {
    Table(std::string n, std::vector<Column> c) : name(std::move(n)), columns(std::move(c)) {}
    std::string name;
    std::vector<Column> columns;
    lxw_worksheet* sheet = nullptr;
    int sheets = 0;
    int32_t row = 0;
    uint64_t bytes = 0;  // about what the current sheet's XML takes so far
    std::vector<uint16_t> widths;
  };

  void AddSheet(Table& t);
  void FinishSheet(Table& t);
  void WriteRow(Table& t, const Values& v);
  // Cells of the current row; col_ moves on by one with each.
  void Text(Table& t, std::string_view stored);
  void Utf8(Table& t, const std::string& text);
  void Number(Table& t, double value, lxw_format* format, uint16_t width);
  void Date(Table& t, double ole);
  void Check(int error);
  // A stored text as the sheet takes it: UTF-8, escapes kept literal, cut to
  // the cell limit. Replaces *out.
  void SheetText(std::string_view stored, bool ansi, std::string* out) const;
  void Abandon();

  std::string path_, partPath_, tmpDir_;
  const ExportFields& fields_;
  int32_t sheetRows_;
  bool ansi_ = false;
  bool partCreated_ = false;
  lxw_workbook* workbook_ = nullptr;
  lxw_format* header_ = nullptr;
  lxw_format* date_ = nullptr;
  lxw_format* size_ = nullptr;
  std::vector<lxw_worksheet*> worksheets_;
  std::vector<Table> tables_;  // discs, folders, and files when they are written
  uint16_t col_ = 0;
  std::string disc_, folder_, text_, title_;
  Status status_;
};

}  // namespace gorvan
