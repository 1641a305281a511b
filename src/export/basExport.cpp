#include "export/basExport.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <unordered_set>

#include "catalog/ExtraData.h"
#include "catalog/OleDate.h"
#include "catalog/TextCodec.h"
#include "catalog/TextFormat.h"
#include "catalog/PosixIO.h"
#include "export/CsvExportWriter.h"
#include "export/OutputWriter.h"
#include "export/XmlExportWriter.h"

#ifndef GORVAN_INSTALL_SHARE_DIR
#define GORVAN_INSTALL_SHARE_DIR ""
#endif
#ifndef GORVAN_SOURCE_SHARE_DIR
#define GORVAN_SOURCE_SHARE_DIR ""
#endif

namespace gorvan {

void AppendXmlEscaped(std::string_view text, bool ansi, std::string* out) {
  static constexpr char kHex[] = "0123456789ABCDEF";
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
      default:
        if (ansi && c >= 128) {
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
      : file_(data.file()),
        writer_(writer),
        o_(o),
        job_(job),
        ansi_(data.GetEncoding() == TextEncoding::kWindows1252) {}

  Status Run(const std::vector<int32_t>& ids) {
    progress_.maximum = static_cast<int64_t>(ids.size());
    job_.Report(progress_);
    writer_.Begin(o_.extractDate != 0 ? o_.extractDate : OleDateNow(), ansi_);
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

  void FullName(const TextRef& path, std::string_view name) {
    full_.assign(Raw(path, &path_));
    if (full_.empty() || full_.back() != '\\') full_ += '\\';
    full_ += name;
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
    }
    writer_.EndDisc();
    return Problem();
  }

  void Folder(classDir& dir) {
    const DirRecord& r = dir.record();
    ExportFolder f;
    f.id = r.id;
    f.name = Raw(r.name, &name_);
    FullName(r.path, f.name);
    f.fullName = full_;
    f.notes = Raw(r.notes, &notes_);
    f.extra = Raw(r.extra, &extra_);
    f.date = r.date;
    f.attr = r.attr;
    f.size = r.size;
    f.countOfDirs = r.countOfDirs;
    f.countOfFiles = r.countOfFiles;
    f.countOfFilesDirect = r.countOfFilesDirect;
    writer_.Folder(f);
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
    FullName(r.path, f.name);
    f.fullName = full_;
    f.notes = Raw(r.notes, &notes_);
    f.extra = Raw(r.extra, &extra_);
    f.date = r.date;
    f.attr = r.attr;
    f.size = r.size;
    writer_.File(f);
  }

  CatalogFile* file_;
  ExportWriter& writer_;
  const ExportOptions& o_;
  JobControl& job_;
  const bool ansi_;
  JobProgress progress_;
  std::string name_, path_, full_, notes_, extra_, shown_;
};

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

std::unique_ptr<ExportWriter> MakeExportWriter(ExportType type, OutputWriter& out,
                                               const ExportFields& fields) {
  switch (type) {
    case ExportType::kDelimited:
      return std::make_unique<CsvExportWriter>(out, fields);
    case ExportType::kXml:
      return std::make_unique<XmlExportWriter>(out, fields);
  }
  return nullptr;
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

  // The texts are already in the catalog's encoding (or, for an XML file of a
  // Windows-1252 catalog, plain ASCII): the writer passes them through.
  OutputWriter out;
  result.status = out.Open(path, TextEncoding::kUtf8);
  if (!result.status.ok()) return result;
  if (options.type == ExportType::kXml) {
    result.stylesheetProblem = PlaceStylesheet(options.stylesheet, path);
  }
  const std::unique_ptr<ExportWriter> writer = MakeExportWriter(options.type, out, options.fields);
  Exporter exporter(data, *writer, options, job);
  result.status = exporter.Run(ids);
  if (!result.status.ok()) {
    out.Abandon();
    return result;
  }
  result.status = out.Close();
  return result;
}

}  // namespace gorvan
