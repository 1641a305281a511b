#include "export/HtmlExportWriter.h"

#include <charconv>
#include <cmath>

#include "catalog/TextFormat.h"
#include "export/OutputWriter.h"

namespace gorvan {

namespace {

// 1 January 1970 as an OLE date.
constexpr double kUnixEpoch = 25569;

}  // namespace

void HtmlExportWriter::AppendJsonString(std::string_view utf8, std::string* out) {
  static constexpr char kHex[] = "0123456789abcdef";
  out->push_back('"');
  for (const char ch : utf8) {
    const auto c = static_cast<unsigned char>(ch);
    switch (c) {
      case '"':
        out->append("\\\"");
        break;
      case '\\':
        out->append("\\\\");
        break;
      case '\n':
        out->append("\\n");
        break;
      case '\r':
        out->append("\\r");
        break;
      case '\t':
        out->append("\\t");
        break;
      default:
        // Control characters as JSON wants them; "<", ">" and "&" too, so
        // nothing in the data can close the <script> block or start markup.
        if (c < 0x20 || c == '<' || c == '>' || c == '&') {
          const char esc[6] = {'\\', 'u', '0', '0', kHex[c >> 4], kHex[c & 15]};
          out->append(esc, sizeof esc);
        } else {
          out->push_back(ch);
        }
    }
  }
  out->push_back('"');
}

void HtmlExportWriter::AppendHtmlEscaped(std::string_view text, std::string* out) {
  for (const char ch : text) {
    switch (ch) {
      case '&':
        out->append("&amp;");
        break;
      case '<':
        out->append("&lt;");
        break;
      case '>':
        out->append("&gt;");
        break;
      case '"':
        out->append("&quot;");
        break;
      case '\'':
        out->append("&#39;");
        break;
      default:
        out->push_back(ch);
    }
  }
}

void HtmlExportWriter::String(std::string_view stored, std::string* out) {
  ExportTextToUtf8(stored, ansi_, &text_);
  AppendJsonString(text_, out);
}

void HtmlExportWriter::Number(double value, std::string* out) {
  if (!std::isfinite(value)) {
    out->append("null");
    return;
  }
  char buf[32];
  const auto r = std::to_chars(buf, buf + sizeof buf, value);
  out->append(buf, r.ptr);
}

void HtmlExportWriter::Seconds(double ole, std::string* out) {
  if (ole == 0 || !std::isfinite(ole) || std::fabs(ole) > 1e7) {
    out->append("null");
    return;
  }
  char buf[24];
  const auto r = std::to_chars(buf, buf + sizeof buf, std::llround((ole - kUnixEpoch) * 86400));
  out->append(buf, r.ptr);
}

void HtmlExportWriter::Begin(const ExportStart& start) {
  ansi_ = start.ansi;
  const std::string_view page = ExportPageTemplate();
  const size_t title = page.find(kTitleMarker);
  const size_t data = page.find(kDataMarker);
  if (title == std::string_view::npos || data == std::string_view::npos || data < title) {
    // Only a broken build gets here: ok() stays false and End() fails,
    // instead of writing a page without its data.
    tail_ = {};
    return;
  }
  const std::string name = TextCodec::ForDisplay(start.catalogName);
  const std::string date = FormatGeneralDate(start.extractDate);
  std::string head(page.substr(0, title));
  AppendHtmlEscaped(name + " - " + date, &head);
  head.append(page.substr(title + kTitleMarker.size(), data - title - kTitleMarker.size()));
  head.append("{\"name\":");
  AppendJsonString(name, &head);
  head.append(",\"date\":");
  AppendJsonString(date, &head);
  head.append(",\"discs\":[");
  out_.Write(head);
  tail_ = page.substr(data + kDataMarker.size());
}

void HtmlExportWriter::Disc(const ExportDisc& d) {
  folder_.assign(firstDisc_ ? "{\"n\":" : ",{\"n\":");
  firstDisc_ = false;
  String(d.name, &folder_);
  folder_.append(",\"t\":");
  Seconds(d.lastScanned, &folder_);
  folder_.append(",\"s\":");
  Number(d.totalSize, &folder_);
  folder_.append(",\"f\":");
  Number(d.freeSpace, &folder_);
  folder_.append(",\"m\":");
  Number(d.mediaType, &folder_);
  folder_.append(",\"o\":");
  String(d.notes, &folder_);
  folder_.append(",\"d\":[");
  out_.Write(folder_);
  folders_ = 0;
  index_.clear();
}

void HtmlExportWriter::Folder(const ExportFolder& f) {
  // The folder holding this one was written before it (a disc's folders come
  // parent first); one that is not found is shown at the top with its full name.
  const auto parent = index_.find(std::string(f.path));
  const int32_t parentIndex = parent != index_.end() ? parent->second : -1;
  index_.insert_or_assign(std::string(f.fullName), folders_);
  folder_.assign(folders_ == 0 ? "[" : ",[");
  ++folders_;
  folder_.append(std::to_string(parentIndex)).push_back(',');
  String(parentIndex < 0 ? f.fullName : f.name, &folder_);
  folder_.push_back(',');
  if (fields_.dirDate) {
    Seconds(f.date, &folder_);
  } else {
    folder_.append("null");
  }
  folder_.push_back(',');
  Number(fields_.dirSize ? f.size : NAN, &folder_);
  folder_.push_back(',');
  String(fields_.dirNotes ? f.notes : std::string_view(), &folder_);
  files_ = 0;
  names_.clear();
  sizes_.clear();
  dates_.clear();
  notes_.clear();
}

void HtmlExportWriter::File(const ExportFile& f) {
  if (files_ > 0) {
    names_.push_back(',');
    if (fields_.fileSizes) sizes_.push_back(',');
    if (fields_.fileDates) dates_.push_back(',');
  }
  String(f.name, &names_);
  if (fields_.fileSizes) Number(f.size, &sizes_);
  if (fields_.fileDates) Seconds(f.date, &dates_);
  if (fields_.fileNotes && !f.notes.empty()) {
    notes_.append(notes_.empty() ? "[" : ",[").append(std::to_string(files_)).push_back(',');
    String(f.notes, &notes_);
    notes_.push_back(']');
  }
  ++files_;
}

void HtmlExportWriter::EndFolder() {
  folder_.append(",[").append(names_).append("],[").append(sizes_).append("],[");
  folder_.append(dates_).push_back(']');
  if (!notes_.empty()) folder_.append(",[").append(notes_).push_back(']');
  folder_.push_back(']');
  out_.Write(folder_);
}

void HtmlExportWriter::EndDisc() { out_.Write("]}"); }

Status HtmlExportWriter::End() {
  if (tail_.empty()) {
    return out_.ok() ? Status::Corruption("the web page template is damaged") : out_.error();
  }
  out_.Write("]}");
  out_.Write(tail_);
  return out_.error();
}

bool HtmlExportWriter::ok() const { return out_.ok() && !tail_.empty(); }

}  // namespace gorvan
