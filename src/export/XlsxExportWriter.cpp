#include "export/XlsxExportWriter.h"

#include <fcntl.h>
#include <unistd.h>
#include <xlsxwriter.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "catalog/TextFormat.h"

namespace gorvan {

namespace {

// A cell holds at most this many characters.
constexpr size_t kMaxCellChars = 32767;
// Sheet data a sheet takes before the table goes on in the next one: each
// sheet is one part of the workbook's zip file, which holds at most 4 GiB a
// part. Rows of long notes could reach that before the row limit.
constexpr uint64_t kMaxSheetBytes = uint64_t{3} << 30;
// What the markup of a cell adds to its value, about.
constexpr uint64_t kCellBytes = 32;
// Column widths, in characters.
constexpr uint16_t kMinWidth = 6;
constexpr uint16_t kMaxWidth = 60;
constexpr uint16_t kDateWidth = 19;
// OLE dates the spreadsheet shows as the same day: from 1 March 1900 (before
// it, its calendar counts a 29 February 1900) to the end of 9999.
constexpr double kFirstSheetDate = 61;
constexpr double kLastSheetDate = 2958466;

Status SystemError(const std::string& what, const std::string& path) {
  return Status::IOError(what + " " + path + ": " + std::strerror(errno));
}

std::string FolderOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

size_t CodePoints(std::string_view utf8) {
  size_t n = 0;
  for (const char c : utf8) n += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  return n;
}

uint16_t Width(size_t chars) { return static_cast<uint16_t>(std::min<size_t>(chars, kMaxWidth)); }

bool IsHex(char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; }

// The spreadsheet reads "_xHHHH_" in a text as the character HHHH; a name that
// holds such a sequence keeps it by writing its underscore as "_x005F_".
void KeepEscapesLiteral(std::string* text) {
  if (text->find("_x") == std::string::npos) return;
  std::string out;
  out.reserve(text->size() + 14);
  for (size_t i = 0; i < text->size(); ++i) {
    const std::string_view rest = std::string_view(*text).substr(i);
    if (rest.size() >= 7 && rest[0] == '_' && rest[1] == 'x' && IsHex(rest[2]) && IsHex(rest[3]) &&
        IsHex(rest[4]) && IsHex(rest[5]) && rest[6] == '_') {
      out += "_x005F";
    }
    out += (*text)[i];
  }
  *text = std::move(out);
}

void CutToCellLimit(std::string* text) {
  if (text->size() <= kMaxCellChars) return;
  size_t chars = 0;
  for (size_t i = 0; i < text->size(); ++i) {
    if ((static_cast<unsigned char>((*text)[i]) & 0xC0) != 0x80 && chars++ == kMaxCellChars) {
      text->resize(i);
      return;
    }
  }
}

}  // namespace

// One row's values; each table's columns pick theirs.
struct XlsxExportWriter::Values {
  std::string_view name, notes, extra;  // stored bytes
  double date = 0, size = 0, freeSpace = 0;
  int32_t attr = 0, folders = 0, files = 0, directFiles = 0, mediaType = 0;
};

XlsxExportWriter::XlsxExportWriter(std::string path, const ExportFields& fields, int32_t sheetRows)
    : path_(std::move(path)),
      partPath_(path_ + ".part"),
      tmpDir_(FolderOf(path_)),
      fields_(fields),
      sheetRows_(sheetRows <= 1 || sheetRows > kMaxSheetRows ? kMaxSheetRows : sheetRows) {
  using F = Field;
  // The columns whose condition holds, then the extra values.
  const auto columns = [](std::initializer_list<std::pair<bool, Column>> wanted) {
    static constexpr Column kExtras[] = {{"Extra 1", F::kExtra1},
                                         {"Extra 2", F::kExtra2},
                                         {"Extra 3", F::kExtra3},
                                         {"Extra 4", F::kExtra4}};
    std::vector<Column> out;
    out.reserve(wanted.size() + std::size(kExtras));
    for (const auto& [on, column] : wanted) {
      if (on) out.push_back(column);
    }
    for (const Column& column : kExtras) out.push_back(column);
    return out;
  };
  tables_.reserve(3);
  tables_.emplace_back("Discs", columns({{true, {"Disc", F::kDisc}},
                                         {true, {"Last Scanned", F::kDate}},
                                         {true, {"Total Size", F::kSize}},
                                         {true, {"Free Space", F::kFreeSpace}},
                                         {true, {"Folders", F::kFolders}},
                                         {true, {"Files", F::kFiles}},
                                         {true, {"Media Type", F::kMediaType}},
                                         {true, {"Notes", F::kNotes}}}));
  tables_.emplace_back("Folders", columns({{true, {"Disc", F::kDisc}},
                                           {true, {"Folder", F::kFolder}},
                                           {true, {"Name", F::kName}},
                                           {fields_.dirDate, {"Date", F::kDate}},
                                           {fields_.dirSize, {"Size", F::kSize}},
                                           {true, {"Attributes", F::kAttr}},
                                           {true, {"Subfolders", F::kFolders}},
                                           {true, {"Files", F::kFiles}},
                                           {true, {"Direct Files", F::kDirectFiles}},
                                           {fields_.dirNotes, {"Notes", F::kNotes}}}));
  if (fields_.dirFiles) {
    tables_.emplace_back("Files", columns({{true, {"Disc", F::kDisc}},
                                           {true, {"Folder", F::kFolder}},
                                           {true, {"Name", F::kName}},
                                           {fields_.fileDates, {"Date", F::kDate}},
                                           {fields_.fileSizes, {"Size", F::kSize}},
                                           {true, {"Attributes", F::kAttr}},
                                           {fields_.fileNotes, {"Notes", F::kNotes}}}));
  }
}

XlsxExportWriter::~XlsxExportWriter() { Abandon(); }

Status XlsxExportWriter::Open() {
  const int fd = ::open(partPath_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (fd < 0) return status_ = SystemError("Cannot create", partPath_);
  ::close(fd);
  partCreated_ = true;
  lxw_workbook_options options{};
  options.constant_memory = LXW_TRUE;
  options.tmpdir = tmpDir_.data();
  workbook_ = workbook_new_opt(partPath_.c_str(), &options);
  if (!workbook_) return status_ = Status::IOError("Cannot create the workbook " + partPath_);
  header_ = workbook_add_format(workbook_);
  date_ = workbook_add_format(workbook_);
  size_ = workbook_add_format(workbook_);
  if (!header_ || !date_ || !size_) return status_ = Status::IOError("Out of memory");
  format_set_bold(header_);
  format_set_num_format(date_, "yyyy-mm-dd hh:mm:ss");
  format_set_num_format(size_, "#,##0");
  return status_;
}

void XlsxExportWriter::Check(int error) {
  if (error != LXW_NO_ERROR && status_.ok()) {
    status_ = Status::IOError("Cannot write " + partPath_ + ": " +
                              lxw_strerror(static_cast<lxw_error>(error)));
  }
}

void XlsxExportWriter::Begin(const ExportStart& start) {
  ansi_ = start.ansi;
  if (!workbook_ || !status_.ok()) return;
  title_ = TextCodec::ForDisplay(start.catalogName);
  lxw_doc_properties properties{};
  properties.title = title_.data();
  properties.comments = const_cast<char*>("Exported from Gorvan");
  Check(workbook_set_properties(workbook_, &properties));
  // Every table gets its first sheet now: the tabs keep their order and an
  // export without discs still shows the headers.
  for (Table& t : tables_) AddSheet(t);
}

void XlsxExportWriter::AddSheet(Table& t) {
  if (t.sheet) FinishSheet(t);
  if (!status_.ok()) return;
  ++t.sheets;
  const std::string name = t.sheets == 1 ? t.name : t.name + " (" + std::to_string(t.sheets) + ")";
  t.sheet = workbook_add_worksheet(workbook_, name.c_str());
  if (!t.sheet) {
    status_ = Status::IOError("Cannot add the sheet " + name + " to " + partPath_);
    return;
  }
  worksheets_.push_back(t.sheet);
  t.widths.assign(t.columns.size(), 0);
  for (size_t c = 0; c < t.columns.size(); ++c) {
    const char* title = t.columns[c].title;
    Check(worksheet_write_string(t.sheet, 0, static_cast<lxw_col_t>(c), title, header_));
    // Room for the title and the filter's drop-down button.
    t.widths[c] = static_cast<uint16_t>(std::strlen(title) + 3);
  }
  worksheet_freeze_panes(t.sheet, 1, 0);
  t.row = 1;
  t.bytes = 0;
}

void XlsxExportWriter::FinishSheet(Table& t) {
  if (!t.sheet || t.columns.empty()) return;
  const auto lastCol = static_cast<lxw_col_t>(t.columns.size() - 1);
  Check(worksheet_autofilter(t.sheet, 0, 0, static_cast<lxw_row_t>(t.row - 1), lastCol));
  for (size_t c = 0; c < t.columns.size(); ++c) {
    const double width = std::clamp<uint16_t>(t.widths[c], kMinWidth, kMaxWidth) + 1;
    Check(worksheet_set_column(t.sheet, static_cast<lxw_col_t>(c), static_cast<lxw_col_t>(c), width,
                               nullptr));
  }
}

void XlsxExportWriter::SheetText(std::string_view stored, bool ansi, std::string* out) const {
  ExportTextToUtf8(stored, ansi, out);
  // A line break in a cell is a line feed; a carriage return would show as a
  // stray character.
  if (out->find('\r') != std::string::npos) {
    std::string lf;
    for (size_t i = 0; i < out->size(); ++i) {
      if ((*out)[i] != '\r') {
        lf += (*out)[i];
      } else if (i + 1 == out->size() || (*out)[i + 1] != '\n') {
        lf += '\n';
      }
    }
    *out = std::move(lf);
  }
  KeepEscapesLiteral(out);
  CutToCellLimit(out);
}

void XlsxExportWriter::Utf8(Table& t, const std::string& text) {
  if (!text.empty()) {
    t.bytes += kCellBytes + text.size();
    Check(worksheet_write_string(t.sheet, static_cast<lxw_row_t>(t.row), col_, text.c_str(),
                                 nullptr));
    t.widths[col_] = std::max(t.widths[col_], Width(CodePoints(text)));
  }
  ++col_;
}

void XlsxExportWriter::Text(Table& t, std::string_view stored) {
  if (stored.empty()) {
    ++col_;
    return;
  }
  SheetText(stored, ansi_, &text_);
  Utf8(t, text_);
}

void XlsxExportWriter::Number(Table& t, double value, lxw_format* format, uint16_t width) {
  if (std::isfinite(value)) {
    t.bytes += kCellBytes;
    Check(worksheet_write_number(t.sheet, static_cast<lxw_row_t>(t.row), col_, value, format));
    t.widths[col_] = std::max(t.widths[col_], width);
  }
  ++col_;
}

void XlsxExportWriter::Date(Table& t, double ole) {
  if (ole >= kFirstSheetDate && ole < kLastSheetDate) {
    Number(t, ole, date_, kDateWidth);
  } else if (ole != 0 && std::isfinite(ole)) {
    Utf8(t, FormatGeneralDate(ole));
  } else {
    ++col_;
  }
}

void XlsxExportWriter::WriteRow(Table& t, const Values& v) {
  if (!status_.ok()) return;
  if (t.row >= sheetRows_ || t.bytes >= kMaxSheetBytes) AddSheet(t);
  if (!status_.ok()) return;
  col_ = 0;
  // Digits of a size with its thousands separators.
  const auto sizeWidth = [](double size) {
    const int digits = size >= 10 ? static_cast<int>(std::log10(size)) + 1 : 1;
    return static_cast<uint16_t>(digits + (digits - 1) / 3);
  };
  const auto countWidth = [](int32_t n) { return static_cast<uint16_t>(std::to_string(n).size()); };
  for (const Column& c : t.columns) {
    switch (c.field) {
      case Field::kDisc:
        Utf8(t, disc_);
        break;
      case Field::kFolder:
        Utf8(t, folder_);
        break;
      case Field::kName:
        Text(t, v.name);
        break;
      case Field::kDate:
        Date(t, v.date);
        break;
      case Field::kSize:
        Number(t, v.size, size_, sizeWidth(std::fabs(v.size)));
        break;
      case Field::kFreeSpace:
        Number(t, v.freeSpace, size_, sizeWidth(std::fabs(v.freeSpace)));
        break;
      case Field::kAttr:
        Number(t, v.attr, nullptr, countWidth(v.attr));
        break;
      case Field::kFolders:
        Number(t, v.folders, nullptr, countWidth(v.folders));
        break;
      case Field::kFiles:
        Number(t, v.files, nullptr, countWidth(v.files));
        break;
      case Field::kDirectFiles:
        Number(t, v.directFiles, nullptr, countWidth(v.directFiles));
        break;
      case Field::kMediaType:
        Number(t, v.mediaType, nullptr, countWidth(v.mediaType));
        break;
      case Field::kNotes:
        Text(t, v.notes);
        break;
      case Field::kExtra1:
      case Field::kExtra2:
      case Field::kExtra3:
      case Field::kExtra4: {
        const int index = static_cast<int>(c.field) - static_cast<int>(Field::kExtra1);
        Text(t, ExportExtraValue(v.extra, index));
        break;
      }
    }
  }
  ++t.row;
}

void XlsxExportWriter::Disc(const ExportDisc& d) {
  SheetText(d.name, ansi_, &disc_);
  Values v;
  v.notes = d.notes;
  v.extra = d.extra;
  v.date = d.lastScanned;
  v.size = d.totalSize;
  v.freeSpace = d.freeSpace;
  v.folders = d.countOfDirs;
  v.files = d.countOfFiles;
  v.mediaType = d.mediaType;
  WriteRow(tables_[0], v);
}

void XlsxExportWriter::Folder(const ExportFolder& f) {
  SheetText(f.fullName, ansi_, &folder_);
  Values v;
  v.name = f.name;
  v.notes = f.notes;
  v.extra = f.extra;
  v.date = f.date;
  v.size = f.size;
  v.attr = f.attr;
  v.folders = f.countOfDirs;
  v.files = f.countOfFiles;
  v.directFiles = f.countOfFilesDirect;
  WriteRow(tables_[1], v);
}

void XlsxExportWriter::File(const ExportFile& f) {
  if (tables_.size() < 3) return;
  Values v;
  v.name = f.name;
  v.notes = f.notes;
  v.extra = f.extra;
  v.date = f.date;
  v.size = f.size;
  v.attr = f.attr;
  WriteRow(tables_[2], v);
}

Status XlsxExportWriter::End() {
  if (!status_.ok()) return status_;
  if (!workbook_) return status_ = Status::InvalidArgument("the workbook is not open");
  for (Table& t : tables_) FinishSheet(t);
  if (!status_.ok()) return status_;
  // workbook_close writes the file and frees the workbook, also on failure.
  const lxw_error closed = workbook_close(workbook_);
  workbook_ = nullptr;
  worksheets_.clear();
  if (closed != LXW_NO_ERROR) {
    return status_ = Status::IOError("Cannot write " + partPath_ + ": " + lxw_strerror(closed));
  }
  const int fd = ::open(partPath_.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0 || ::fsync(fd) != 0) status_ = SystemError("Cannot write", partPath_);
  if (fd >= 0) ::close(fd);
  if (status_.ok() && std::rename(partPath_.c_str(), path_.c_str()) != 0) {
    status_ = SystemError("Cannot replace", path_);
  }
  if (status_.ok()) partCreated_ = false;
  return status_;
}

void XlsxExportWriter::Abandon() {
  if (workbook_) {
    // Freeing an unwritten workbook leaves its sheets' row files open.
    for (lxw_worksheet* ws : worksheets_) {
      if (ws->optimize_tmpfile) {
        std::fclose(ws->optimize_tmpfile);
        ws->optimize_tmpfile = nullptr;
      }
    }
    lxw_workbook_free(workbook_);
    workbook_ = nullptr;
    worksheets_.clear();
  }
  if (partCreated_) {
    ::unlink(partPath_.c_str());
    partCreated_ = false;
  }
}

}  // namespace gorvan
