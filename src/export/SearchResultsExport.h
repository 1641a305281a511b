#pragma once
// SearchResultsExport: the search results as a file, in one of two forms.
//
// Comma-separated text: the header "Text,Cd,Path,Time,Size,Attr,Notes", then
// one line per row: the columns "FileName", "CD Name", "Path", "Date", "Size",
// "Attributes" and "Notes" joined by ",", with every comma inside a value
// replaced by one blank and nothing else changed (no quoting: a line break in
// a note stays a line break). The short variant leaves the disc out: header
// "Text,Path,Time,Size,Attr,Notes"; it is written when the results list does
// not show its "CD Name" column (the export gives what the list shows).
//
// XML: no declaration and no stylesheet. "<SearchResults>", the criteria one
// element a line ("<SearchString>", "<CaseSensitive>", "<SearchComments>",
// "<SearchExtra>", "<SearchCdName>", "<SearchPath>" with "True" or "False",
// "<time>" with the export's date and time in the general date format), then
// "<ResultsList>", one line per row
//   <Result><item>..</item><Cd>..</Cd><path>..</path><date>..</date>
//   <size>..</size><attribute>..</attribute><notes>..</notes></Result>
// (on one line), "</ResultsList>" and "</SearchResults>". Values are written
// as they are, not escaped: the file is meant for the user's own tools, and
// readers of it have always had to cope with that.
//
// Both write through an OutputWriter (CR LF lines) and can stream: Begin(),
// Row() as each hit arrives, End().

#include <string>
#include <vector>

#include "catalog/Status.h"
#include "catalog/TextCodec.h"
#include "export/OutputWriter.h"
#include "search/SearchResult.h"

namespace gorvan {

struct SearchOptions;

enum class SearchResultsFormat {
  kCsv,           // "Text,Cd,Path,Time,Size,Attr,Notes"
  kCsvWithoutCd,  // "Text,Path,Time,Size,Attr,Notes"
  kXml,
};

// What the search window says when there are no rows to export.
inline constexpr const char* kNothingToExport = "Nothing to Export!!";
// The search-results window's file dialog: the two forms it writes, type 0
// comma-separated text and type 1 XML (the number "export_search_type"
// stores), with their default extensions.
inline constexpr const char* kSearchResultsFileFilter =
    "Comma Delimited (*.csv)|*.csv|XML File (*.xml)|*.xml";
inline constexpr const char* kSearchResultsExtensions[] = {"csv", "xml"};

// The form for the window's type (0 text, 1 XML) and whether its list shows
// the "CD Name" column.
constexpr SearchResultsFormat SearchResultsFormatFor(int type, bool cdNameShown) {
  if (type == 1) return SearchResultsFormat::kXml;
  return cdNameShown ? SearchResultsFormat::kCsv : SearchResultsFormat::kCsvWithoutCd;
}

// The criteria the XML names.
struct SearchResultsSummary {
  std::string text;
  bool caseSensitive = false;
  bool inComments = false;
  bool inExtra = false;
  bool inNames = false;
  bool inPathNames = false;
  double time = 0;  // OLE date of the export

  static SearchResultsSummary From(const SearchOptions& options, double time);
};

class SearchResultsExport {
 public:
  static constexpr const char* kCsvHeader = "Text,Cd,Path,Time,Size,Attr,Notes";
  static constexpr const char* kCsvHeaderWithoutCd = "Text,Path,Time,Size,Attr,Notes";

  SearchResultsExport(OutputWriter& out, SearchResultsFormat format)
      : out_(out), format_(format) {}

  // The header (text) or the document start with the criteria (XML).
  bool Begin(const SearchResultsSummary& summary);
  bool Row(const SearchResult& row);
  // The document end (XML); nothing for text.
  bool End();

  // A finished list into the file at path: Begin, every row, End, Close.
  static Status WriteFile(const std::string& path, SearchResultsFormat format,
                          const SearchResultsSummary& summary,
                          const std::vector<SearchResult>& rows,
                          TextEncoding encoding = TextEncoding::kUtf8);

  // A value for the comma-separated text: every "," becomes " ".
  static std::string CsvValue(std::string_view value);

 private:
  OutputWriter& out_;
  SearchResultsFormat format_;
  std::string line_;
};

}  // namespace gorvan
