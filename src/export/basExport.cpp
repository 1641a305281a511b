#include "export/basExport.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unordered_set>

#include "catalog/ExtraData.h"
#include "catalog/OleDate.h"
#include "catalog/TextCodec.h"
#include "catalog/TextFormat.h"
#include "export/OutputWriter.h"

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
  const int in = ::open(stylesheet.c_str(), O_RDONLY | O_CLOEXEC);
  if (in < 0) return "Cannot read " + stylesheet + ": " + std::strerror(errno);
  const int out = ::open(target.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (out < 0) {
    const std::string why = "Cannot create " + target + ": " + std::strerror(errno);
    ::close(in);
    return why;
  }
  std::string problem;
  char buf[16384];
  for (;;) {
    const ssize_t n = ::read(in, buf, sizeof buf);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      if (n < 0) problem = "Cannot read " + stylesheet + ": " + std::strerror(errno);
      break;
    }
    if (::write(out, buf, static_cast<size_t>(n)) != n) {
      problem = "Cannot write " + target + ": " + std::strerror(errno);
      break;
    }
  }
  if (::close(out) != 0 && problem.empty()) problem = "Cannot write " + target;
  ::close(in);
  return problem;
}

// One export run: the walk is shared, the writers differ by type.
class Exporter {
 public:
  Exporter(classData& data, OutputWriter& out, const ExportOptions& o, const CopyHooks& hooks)
      : file_(data.file()),
        out_(out),
        o_(o),
        f_(o.fields),
        hooks_(hooks),
        ansi_(data.GetEncoding() == TextEncoding::kWindows1252),
        xml_(o.type == ExportType::kXml) {}

  Status Run(const std::vector<int32_t>& ids) {
    if (hooks_.setRange) hooks_.setRange(static_cast<int64_t>(ids.size()));
    if (xml_) {
      Line("<?xml-stylesheet type=\"text/xsl\" href=\"" + std::string(kStylesheetName) + "\"?>");
      const double when = o_.extractDate != 0 ? o_.extractDate : OleDateNow();
      Line("<Gorvan ExtractDate=\"" + Date(when) + "\" Version=\"" +
           std::to_string(GORVAN_VERSION_MAJOR) + "." + std::to_string(GORVAN_VERSION_MINOR) +
           "." + std::to_string(GORVAN_VERSION_REVISION) + "\">");
    }
    int64_t done = 0;
    for (int32_t id : ids) {
      Status s = Disc(id);
      if (!s.ok()) return s;
      if (hooks_.setValue) hooks_.setValue(++done);
    }
    if (xml_) Line("</Gorvan>");
    return Problem();
  }

 private:
  Status Problem() const {
    if (!file_->ok()) return file_->error();
    if (!out_.ok()) return out_.error();
    return Status::OK();
  }

  void Line(std::string_view text) { out_.WriteLine(text); }

  // Dates as the user's locale writes them, in the catalog's encoding.
  std::string Date(double ole) {
    std::string text = FormatGeneralDate(ole);
    if (ansi_) {
      TextCodec::Utf8ToWindows1252(text, &scratch_);
      text = scratch_;
    }
    return text;
  }

  const std::string& Raw(const TextRef& ref, std::string* buf) {
    file_->ReadRawText(ref, buf);
    return *buf;
  }

  // "<indent><Tag>value</Tag>" with the value escaped.
  void Element(std::string_view indent, std::string_view tag, std::string_view value,
               bool escape = true) {
    line_.assign(indent);
    line_ += '<';
    line_ += tag;
    line_ += '>';
    if (escape) {
      AppendXmlEscaped(value, ansi_, &line_);
    } else {
      line_ += value;
    }
    line_ += "</";
    line_ += tag;
    line_ += '>';
    Line(line_);
  }

  void Extras(std::string_view indent, const TextRef& extra) {
    const std::string& list = Raw(extra, &extra_);
    static constexpr const char* kTags[] = {"Extra1", "Extra2", "Extra3", "Extra4"};
    for (int i = 0; i < 4; ++i) {
      Element(indent, kTags[i], list.empty() ? std::string() : GetExtraValue(list, kExtraT1 + i));
    }
  }

  // A delimited line: the first fields after ", ", the rest after ",".
  void Field(std::string_view sep, std::string_view value) {
    line_ += sep;
    line_ += value;
  }

  Status Disc(int32_t id) {
    classCd cd(file_);
    if (!cd.recordGet(id)) return Problem();
    const CdRecord& r = cd.record();
    const std::string& name = Raw(r.name, &name_);
    if (hooks_.setCaption) {
      std::string shown;
      TextCodec::Decode(ansi_ ? TextEncoding::kWindows1252 : TextEncoding::kUtf8, name, &shown);
      hooks_.setCaption(kExportingCaption + shown);
    }
    if (xml_) {
      Line("<Cd>");
      Element("  ", "Name", name);
      Element("  ", "LastScannedDate", Date(r.lastScanned), false);
      Element("  ", "TotalSize", FormatNumber(r.totalSize), false);
      Element("  ", "FreeSpace", FormatNumber(r.freeSpace), false);
      Element("  ", "CountOfDirs", std::to_string(r.numOfSubdirs), false);
      Element("  ", "CountOfFiles", std::to_string(r.numOfFiles), false);
      Element("  ", "MediaType", std::to_string(r.mediaType), false);
      Element("  ", "Notes", Raw(r.notes, &notes_));
      Extras("  ", r.extra);
    } else {
      line_ = "C";
      Field(", ", name);
      Field(", ", Date(r.lastScanned));
      Field(",", FormatNumber(r.totalSize));
      Field(",", FormatNumber(r.freeSpace));
      Field(",", std::to_string(r.numOfSubdirs));
      Field(",", std::to_string(r.numOfFiles));
      Field(",", std::to_string(r.mediaType));
      Field(",", Raw(r.notes, &notes_));
      Line(line_);
    }
    for (classDir& dir = cd.GetDirFirst(); !dir.isEof(); cd.GetDirNext()) {
      Folder(dir);
      if (hooks_.Cancelled()) return Status::Cancelled();
      if (!out_.ok()) return Problem();
    }
    if (xml_) Line("</Cd>");
    return Problem();
  }

  void FullName(const TextRef& path, const TextRef& name) {
    full_ = Raw(path, &path_);
    if (full_.empty() || full_.back() != '\\') full_ += '\\';
    full_ += Raw(name, &name_);
  }

  void Folder(classDir& dir) {
    const DirRecord& r = dir.record();
    FullName(r.path, r.name);
    const std::string date = f_.dirDate ? Date(r.date) : std::string();
    const std::string size = f_.dirSize ? FormatNumber(r.size) : std::string();
    const std::string& notes = f_.dirNotes ? Raw(r.notes, &notes_) : kEmpty;
    if (xml_) {
      Line("  <Directory>");
      Element("    ", "Name", name_);
      Element("    ", "FullName", full_);
      Element("    ", "Date", date, false);
      Element("    ", "Attr", std::to_string(r.attr), false);
      Element("    ", "Size", size, false);
      Element("    ", "CountOfDirs", std::to_string(r.countOfDirs), false);
      Element("    ", "CountOfFiles", std::to_string(r.countOfFiles), false);
      Element("    ", "CountOfFilesDirect", std::to_string(r.countOfFilesDirect), false);
      Element("    ", "Notes", notes);
      Extras("    ", r.extra);
    } else {
      line_ = "D";
      Field(", ", name_);
      Field(", ", full_);
      Field(", ", date);
      Field(",", std::to_string(r.attr));
      Field(",", size);
      Field(",", std::to_string(r.countOfDirs));
      Field(",", std::to_string(r.countOfFiles));
      Field(",", std::to_string(r.countOfFilesDirect));
      Field(",", notes);
      Line(line_);
    }
    if (f_.dirFiles) {
      for (ClassFile& f = dir.GetFileFirst(); !f.isEof(); dir.GetFileNext()) {
        File(f);
        if (hooks_.Cancelled() || !out_.ok()) break;
      }
    }
    if (xml_) Line("  </Directory>");
  }

  void File(ClassFile& f) {
    const FileRecord& r = f.record();
    FullName(r.path, r.name);
    const std::string date = f_.fileDates ? Date(r.date) : std::string();
    const std::string size = f_.fileSizes ? FormatNumber(r.size) : std::string();
    const std::string& notes = f_.fileNotes ? Raw(r.notes, &notes_) : kEmpty;
    if (xml_) {
      Line("    <File>");
      Element("      ", "Name", name_);
      Element("      ", "FullName", full_);
      Element("      ", "Date", date, false);
      Element("      ", "Attr", std::to_string(r.attr), false);
      Element("      ", "Size", size, false);
      Element("      ", "Notes", notes);
      Extras("      ", r.extra);
      Line("    </File>");
    } else {
      line_ = "F";
      Field(", ", name_);
      Field(", ", full_);
      Field(", ", date);
      Field(",", std::to_string(r.attr));
      Field(",", size);
      Field(",", notes);
      Line(line_);
    }
  }

  inline static const std::string kEmpty;

  CatalogFile* file_;
  OutputWriter& out_;
  const ExportOptions& o_;
  const ExportFields& f_;
  const CopyHooks& hooks_;
  const bool ansi_;
  const bool xml_;
  std::string line_, name_, path_, full_, notes_, extra_, scratch_;
};

}  // namespace

ExportResult basExport(classData& data, const std::string& path, const ExportOptions& options,
                       const CopyHooks& hooks) {
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
  Exporter exporter(data, out, options, hooks);
  result.status = exporter.Run(ids);
  if (!result.status.ok()) {
    out.Abandon();
    return result;
  }
  result.status = out.Close();
  return result;
}

}  // namespace gorvan
