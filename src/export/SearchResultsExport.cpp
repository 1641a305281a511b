#include "export/SearchResultsExport.h"

#include <algorithm>

#include "catalog/TextFormat.h"
#include "search/CatalogSearch.h"

namespace gorvan {

namespace {

const char* TrueFalse(bool value) { return value ? "True" : "False"; }

void Element(std::string* line, const char* tag, std::string_view value) {
  line->append("<").append(tag).append(">");
  line->append(value);
  line->append("</").append(tag).append(">");
}

}  // namespace

SearchResultsSummary SearchResultsSummary::From(const SearchOptions& options, double time) {
  SearchResultsSummary s;
  s.text = options.text;
  s.caseSensitive = options.caseSensitive;
  s.inComments = options.inComments;
  s.inExtra = options.inExtra;
  s.inNames = options.inNames;
  s.inPathNames = options.inPathNames;
  s.time = time;
  return s;
}

std::string SearchResultsExport::CsvValue(std::string_view value) {
  std::string out(value);
  std::replace(out.begin(), out.end(), ',', ' ');
  return out;
}

bool SearchResultsExport::Begin(const SearchResultsSummary& summary) {
  switch (format_) {
    case SearchResultsFormat::kCsv:
      return out_.WriteLine(kCsvHeader);
    case SearchResultsFormat::kCsvWithoutCd:
      return out_.WriteLine(kCsvHeaderWithoutCd);
    case SearchResultsFormat::kXml:
      break;
  }
  const std::pair<const char*, std::string> criteria[] = {
      {"SearchString", summary.text},
      {"CaseSensitive", TrueFalse(summary.caseSensitive)},
      {"SearchComments", TrueFalse(summary.inComments)},
      {"SearchExtra", TrueFalse(summary.inExtra)},
      {"SearchCdName", TrueFalse(summary.inNames)},
      {"SearchPath", TrueFalse(summary.inPathNames)},
      {"time", FormatGeneralDate(summary.time)},
  };
  if (!out_.WriteLine("<SearchResults>")) return false;
  for (const auto& [tag, value] : criteria) {
    line_.clear();
    Element(&line_, tag, value);
    if (!out_.WriteLine(line_)) return false;
  }
  return out_.WriteLine("<ResultsList>");
}

bool SearchResultsExport::Row(const SearchResult& row) {
  line_.clear();
  if (format_ == SearchResultsFormat::kXml) {
    line_ = "<Result>";
    Element(&line_, "item", row.fileName);
    Element(&line_, "Cd", row.cdName);
    Element(&line_, "path", row.path);
    Element(&line_, "date", row.date);
    Element(&line_, "size", row.size);
    Element(&line_, "attribute", row.attributes);
    Element(&line_, "notes", row.notes);
    line_ += "</Result>";
    return out_.WriteLine(line_);
  }
  const bool withCd = format_ == SearchResultsFormat::kCsv;
  const std::string* values[] = {&row.fileName, withCd ? &row.cdName : nullptr, &row.path,
                                 &row.date,     &row.size,                      &row.attributes,
                                 &row.notes};
  bool first = true;
  for (const std::string* v : values) {
    if (!v) continue;
    if (!first) line_ += ',';
    first = false;
    line_ += CsvValue(*v);
  }
  return out_.WriteLine(line_);
}

bool SearchResultsExport::End() {
  if (format_ != SearchResultsFormat::kXml) return out_.ok();
  return out_.WriteLine("</ResultsList>") && out_.WriteLine("</SearchResults>");
}

Status SearchResultsExport::WriteFile(const std::string& path, SearchResultsFormat format,
                                      const SearchResultsSummary& summary,
                                      const std::vector<SearchResult>& rows,
                                      TextEncoding encoding) {
  OutputWriter out;
  if (Status s = out.Open(path, encoding); !s.ok()) return s;
  SearchResultsExport exporter(out, format);
  bool ok = exporter.Begin(summary);
  for (size_t i = 0; ok && i < rows.size(); ++i) ok = exporter.Row(rows[i]);
  ok = ok && exporter.End();
  if (!ok) {
    Status s = out.error();
    out.Abandon();
    return s;
  }
  return out.Close();
}

}  // namespace gorvan
