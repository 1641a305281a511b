#include "export/basExport.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <memory>
#include <unordered_set>

#include "catalog/ExtraData.h"
#include "catalog/OleDate.h"
#include "catalog/TextCodec.h"
#include "catalog/PosixIO.h"
#include "catalog/TextFormat.h"
#include "export/CsvExportWriter.h"
#include "export/HtmlExportWriter.h"
#include "export/OutputWriter.h"
#include "export/XlsxExportWriter.h"
#include "export/XmlExportWriter.h"


namespace gorvan {

void AppendXmlEscaped(std::string_view text, bool ansi, std::string* out) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  static constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD
  // Bytes that are not UTF-8 (a raw file name) would make a UTF-8 file
  // unreadable: they are written as U+FFFD, as the program shows them.
  std::string valid;
  if (!ansi && !TextCodec::IsValidUtf8(text)) {
    valid = TextCodec::ForDisplay(text);
    text = valid;
  }
  // One pass gives what the ordered replace-all steps give: no replacement
  // brings in a character that a later step would replace again.
  for (const char ch : text) {
    const auto c = static_cast<unsigned char>(ch);
    switch (c) {
      case '&': out->append("&amp;"); break;
      case '<': out->append("&lt;"); break;
      case '>': out->append("&gt;"); break;
      case '\'': out->append("&apos;"); break;
      case '"': out->append("&quote;"); break;
      case '\t':
      case '\n':
      case '\r': out->push_back(ch); break;
      default:
        if (c < 0x20) {
          // XML cannot hold other control characters, not even as references.
          if (ansi) {
            out->push_back('?');
          } else {
            out->append(kReplacement);
          }
        } else if (ansi && c >= 128) {
          const char entity[6] = {'&', '#', 'x', kHex[c >> 4], kHex[c & 15], ';'};
          out->append(entity, sizeof entity);
        } else {
          out->push_back(ch);
        }
    }
  }
}

namespace {

bool Exists(const std::string& path) {
  struct stat st;
  return ::stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

std::string FolderOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

// Replaces "Gorvan.xsl" in the folder of output with the application's copy.
std::string PlaceStylesheet(const std::string& stylesheet, const std::string& output) {
  if (stylesheet.empty() || !Exists(stylesheet)) return "the program's Gorvan.xsl was not found";
  const std::string target = FolderOf(output) + "/" + kStylesheetName;
  struct stat a, b;
  if (::stat(stylesheet.c_str(), &a) == 0 && ::stat(target.c_str(), &b) == 0 &&
      a.st_dev == b.st_dev && a.st_ino == b.st_ino) {
    return {};  // exported into the program's own folder: it is there already
  }
  if (::unlink(target.c_str()) != 0 && errno != ENOENT) {
    return "Cannot replace " + target + ": " + std::strerror(errno);
  }
  const Status s = CopyFileContents(stylesheet, target);
  return s.ok() ? std::string() : s.message();
}

// One export run: the walk over the chosen discs, shared by every format.
class Exporter {
 public:
  Exporter(classData& data, ExportWriter& writer, const ExportOptions& o, JobControl& job)
      : data_(data),
        file_(data.file()),
        writer_(writer),
        o_(o),
        job_(job),
        ansi_(data.GetEncoding() == TextEncoding::kWindows1252) {}

  Status Run(const std::vector<int32_t>& ids) {
    progress_.maximum = static_cast<int64_t>(ids.size());
    job_.Report(progress_);
    const std::string catalogName = data_.GetDataName();
    ExportStart start;
    start.extractDate = o_.extractDate != 0 ? o_.extractDate : OleDateNow();
    start.ansi = ansi_;
    start.catalogName = catalogName;
    writer_.Begin(start);
    for (int32_t id : ids) {
      if (job_.StopRequested()) return Status::Cancelled();
      Status s = Disc(id);
      if (!s.ok()) return s;
      ++progress_.value;
      if (job_.Due()) job_.Report(progress_);
    }
    job_.Final(progress_);
    Status s = writer_.End();
    return s.ok() ? Problem() : s;
  }

 private:
  Status Problem() const {
    if (!file_->ok()) return file_->error();
    return Status::OK();
  }

  std::string_view Raw(const TextRef& ref, std::string* buf) {
    file_->ReadRawText(ref, buf);
    return *buf;
  }

  // parent, a backslash unless parent already ends in one, and name: the rule
  // of a folder's full name, which a file's full name follows too.
  static void Join(std::string_view parent, std::string_view name, std::string* out) {
    out->assign(parent);
    if (out->empty() || out->back() != '\\') *out += '\\';
    *out += name;
  }

  Status Disc(int32_t id) {
    classCd cd(file_);
    if (!cd.recordGet(id)) return Problem();
    const CdRecord& r = cd.record();
    ExportDisc d;
    d.id = r.id;
    d.name = Raw(r.name, &name_);
    d.notes = Raw(r.notes, &notes_);
    d.extra = Raw(r.extra, &extra_);
    d.lastScanned = r.lastScanned;
    d.totalSize = r.totalSize;
    d.freeSpace = r.freeSpace;
    d.countOfDirs = r.numOfSubdirs;
    d.countOfFiles = r.numOfFiles;
    d.mediaType = r.mediaType;
    d.category = r.category;
    progress_.caption.assign(kExportingCaption);
    TextCodec::Decode(ansi_ ? TextEncoding::kWindows1252 : TextEncoding::kUtf8, d.name, &shown_);
    progress_.caption += shown_;
    if (job_.Due()) job_.Report(progress_);
    writer_.Disc(d);
    for (classDir& dir = cd.GetDirFirst(); !dir.isEof(); cd.GetDirNext()) {
      Folder(dir);
      if (job_.StopRequested()) return Status::Cancelled();
      if (!writer_.ok()) return writer_.End();
      if (job_.Due()) job_.Report(progress_);
    }
    writer_.EndDisc();
    return Problem();
  }

  void Folder(classDir& dir) {
    const DirRecord& r = dir.record();
    ExportFolder f;
    f.id = r.id;
    f.name = Raw(r.name, &name_);
    f.path = Raw(r.path, &path_);
    Join(f.path, f.name, &dirFull_);
    f.fullName = dirFull_;
    f.notes = Raw(r.notes, &notes_);
    f.extra = Raw(r.extra, &extra_);
    f.date = r.date;
    f.attr = r.attr;
    // A scan stores a folder's size negated; the exports give the bytes.
    f.size = std::fabs(r.size);
    f.countOfDirs = r.countOfDirs;
    f.countOfFiles = r.countOfFiles;
    f.countOfFilesDirect = r.countOfFilesDirect;
    writer_.Folder(f);
    ++progress_.folders;
    if (o_.fields.dirFiles) {
      for (ClassFile& file = dir.GetFileFirst(); !file.isEof(); dir.GetFileNext()) {
        File(file);
        if (job_.StopRequested() || !writer_.ok()) break;
      }
    }
    writer_.EndFolder();
  }

  void File(ClassFile& file) {
    const FileRecord& r = file.record();
    ExportFile f;
    f.id = r.id;
    f.name = Raw(r.name, &name_);
    // A scanned file's own path text is empty: its place is its folder's.
    Join(dirFull_, f.name, &fileFull_);
    f.fullName = fileFull_;
    f.notes = Raw(r.notes, &notes_);
    f.extra = Raw(r.extra, &extra_);
    f.date = r.date;
    f.attr = r.attr;
    f.size = r.size;
    writer_.File(f);
    ++progress_.files;
  }

  classData& data_;
  CatalogFile* file_;
  ExportWriter& writer_;
  const ExportOptions& o_;
  JobControl& job_;
  const bool ansi_;
  JobProgress progress_;
  std::string name_, path_, dirFull_, fileFull_, notes_, extra_, shown_;
};

// The writer of options.type, with its target opened: text formats through
// out, the workbook through its own file.
Status MakeExportWriter(const ExportOptions& options, const std::string& path, OutputWriter& out,
                        std::unique_ptr<ExportWriter>* writer) {
  switch (options.type) {
    case ExportType::kSpreadsheet: {
      auto xlsx = std::make_unique<XlsxExportWriter>(path, options.fields, options.sheetRows);
      Status s = xlsx->Open();
      if (s.ok()) *writer = std::move(xlsx);
      return s;
    }
    case ExportType::kDelimited:
      *writer = std::make_unique<CsvExportWriter>(out, options.fields);
      break;
    case ExportType::kXml:
      *writer = std::make_unique<XmlExportWriter>(out, options.fields);
      break;
    case ExportType::kHtml:
      *writer = std::make_unique<HtmlExportWriter>(out, options.fields);
      break;
    default:
      return Status::InvalidArgument("Unknown export type " +
                                     std::to_string(static_cast<int>(options.type)));
  }
  // The texts are already in the catalog's encoding (or, for an XML file of a
  // Windows-1252 catalog, plain ASCII), or converted to UTF-8 by the writer:
  // the output passes them through.
  return out.Open(path, TextEncoding::kUtf8);
}

}  // namespace

std::string ExportDateText(double ole, bool ansi) {
  std::string text = FormatGeneralDate(ole);
  if (!ansi) return text;
  std::string out;
  TextCodec::Utf8ToWindows1252(text, &out);
  return out;
}

std::string ExportExtraValue(std::string_view extra, int index) {
  return extra.empty() ? std::string() : GetExtraValue(extra, kExtraT1 + index);
}

void ExportTextToUtf8(std::string_view stored, bool ansi, std::string* out) {
  if (ansi) {
    TextCodec::Windows1252ToUtf8(stored, out);
  } else if (TextCodec::IsValidUtf8(stored)) {
    out->assign(stored);
  } else {
    *out = TextCodec::ForDisplay(stored);
  }
}

std::optional<ExportType> ExportTypeForPath(std::string_view path) {
  const size_t dot = path.rfind('.');
  if (dot == std::string_view::npos || path.find('/', dot) != std::string_view::npos) return {};
  std::string ext(path.substr(dot + 1));
  for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  if (ext == "htm") return ExportType::kHtml;
  for (int i = 0; i < kExportTypeCount; ++i) {
    if (ext == kExportTypes[i].extension) return static_cast<ExportType>(i);
  }
  return {};
}

ExportResult basExport(classData& data, const std::string& path, const ExportOptions& options,
                       JobControl& job) {
  // The catalog is this thread's for the export's length.
  classData::ThreadHandover handover(data);
  ExportResult result;
  if (!data.IsOpen()) {
    result.status = Status::InvalidArgument("no catalog is open");
    return result;
  }
  // The discs to write, checked against the chain before anything is read
  // from an id the caller gave.
  std::vector<int32_t> chain;
  {
    classCd cd(data.file());
    for (cd.MoveFirst(); !cd.isEof(); cd.MoveNext()) chain.push_back(cd.GetCdId());
  }
  if (!data.ok()) {
    result.status = data.status();
    return result;
  }
  std::vector<int32_t> ids = options.discIds.empty() ? chain : options.discIds;
  if (!options.discIds.empty()) {
    const std::unordered_set<int32_t> known(chain.begin(), chain.end());
    for (int32_t id : ids) {
      if (!known.count(id)) {
        result.status = Status::InvalidArgument("There is no disc " + std::to_string(id));
        return result;
      }
    }
  }

  OutputWriter out;
  std::unique_ptr<ExportWriter> writer;
  result.status = MakeExportWriter(options, path, out, &writer);
  if (!result.status.ok()) return result;
  if (options.type == ExportType::kXml) {
    result.stylesheetProblem = PlaceStylesheet(options.stylesheet, path);
  }
  Exporter exporter(data, *writer, options, job);
  result.status = exporter.Run(ids);
  if (!result.status.ok()) {
    out.Abandon();
    writer.reset();  // a workbook removes its own partial file
    return result;
  }
  // Text formats are renamed into place here; the workbook did it in End().
  result.status = out.Close();
  return result;
}

}  // namespace gorvan
