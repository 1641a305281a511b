// gorvan-cli search and translate.
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include <iostream>
#include <memory>

#include "app/SearchRequest.h"
#include "catalog/OleDate.h"
#include "cli/CliContext.h"
#include "cli/Commands.h"
#include "cli/TerminalJob.h"
#include "export/OutputWriter.h"
#include "export/SearchResultsExport.h"
#include "search/CatalogSearch.h"
#include "search/basRegExp.h"

namespace gorvan::cli {
namespace {

struct SearchCommandOptions {
  SearchOptions search;
  std::string mode = "anywhere";
  std::string format = "tsv";
  std::string output;
  bool count = false;
};

// "N of M files searched, K found".
std::string SearchLine(const JobProgress& p) {
  std::string line = std::to_string(p.value);
  if (p.maximum > 0) line += " of " + std::to_string(p.maximum);
  return line + " files searched, " + std::to_string(p.hits) + " found";
}

// Writes each row as it arrives in the chosen format.
class RowPrinter {
 public:
  RowPrinter(OutputWriter& out, const std::string& format, bool flushEachRow)
      : out_(out), flushEachRow_(flushEachRow) {
    if (format == "csv") {
      export_ = std::make_unique<SearchResultsExport>(out, SearchResultsFormat::kCsv);
    } else if (format == "xml") {
      export_ = std::make_unique<SearchResultsExport>(out, SearchResultsFormat::kXml);
    } else {
      json_ = format == "json";
      out.SetLineEnd("\n");
    }
  }

  bool Begin(const SearchOptions& options) {
    if (!export_) return true;
    return export_->Begin(SearchResultsSummary::From(options, OleDateNow())) && Flushed();
  }

  void Row(const SearchResult& row) {
    if (export_) {
      export_->Row(row);
    } else if (json_) {
      const nlohmann::json j = {{"key", row.Key()},
                                {"name", row.fileName},
                                {"cd", row.cdName},
                                {"path", row.path},
                                {"date", row.date},
                                {"size", row.size},
                                {"attributes", row.attributes},
                                {"notes", row.notes},
                                {"internalDate", row.internalDate}};
      out_.WriteLine(j.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
    } else {
      line_ = TsvEscape(row.Key());
      for (const std::string* v : {&row.fileName, &row.cdName, &row.path, &row.date, &row.size,
                                   &row.attributes, &row.notes, &row.internalDate}) {
        line_ += '\t';
        line_ += TsvEscape(*v);
      }
      out_.WriteLine(line_);
    }
    Flushed();
  }

  bool End() { return export_ ? export_->End() : out_.ok(); }

 private:
  bool Flushed() { return flushEachRow_ ? out_.Flush() : out_.ok(); }

  OutputWriter& out_;
  bool flushEachRow_;
  bool json_ = false;
  std::unique_ptr<SearchResultsExport> export_;
  std::string line_;
};

int Search(CliContext& ctx, SearchCommandOptions o) {
  SearchOptions& s = o.search;
  if (!s.inNames && !s.inPathNames && !s.inComments && !s.inExtra && !s.inFileNames) {
    s.inNames = true;
  }
  s.matchMode = o.mode == "whole"       ? MatchMode::kWholeWord
                : o.mode == "beginning" ? MatchMode::kBeginning
                                        : MatchMode::kAnywhere;
  int code = 0;
  classData* data = ctx.Open(&code);
  if (!data) return code;
  if (Status st = SearchRequest::Check(*data, s); !st.ok()) return ctx.Fail(st.message());

  OutputWriter out;
  Status opened = o.output.empty() ? out.OpenDescriptor(STDOUT_FILENO) : out.Open(o.output);
  if (!opened.ok()) return ctx.Fail(opened);
  const bool live = o.output.empty() && ::isatty(STDOUT_FILENO);

  CatalogSearch search(*data);
  RowPrinter printer(out, o.format, live);
  if (!o.count && !printer.Begin(s)) return ctx.Fail(out.error());

  Status result;
  {
    TerminalJob terminal(ctx.quiet, SearchLine);
    CatalogSearch::RowSink sink;
    if (!o.count) {
      sink = [&printer, &terminal](const SearchResult& row) {
        terminal.Clear();
        printer.Row(row);
      };
    }
    result = search.Run(s, sink, terminal.job());
  }

  // What was found stays, whether the walk ran to its end or not.
  if (o.count) {
    out.SetLineEnd("\n");
    out.WriteLine(std::to_string(search.hits()));
  } else {
    printer.End();
  }
  const Status closed = out.Close();
  if (result.IsNotFound()) return ctx.Fail(result.message());
  if (result.IsCancelled()) {
    std::cerr << "gorvan-cli: search stopped after " << search.hits() << " hit(s)\n";
    ctx.Finish();
    return kExitCancelled;
  }
  if (!result.ok()) return ctx.Fail(result);
  if (!closed.ok()) return ctx.Fail(closed);
  return ctx.Finish();
}

int Translate(const std::string& text) {
  if (!basRegExp::IsPatternSearch(text)) {
    std::cout << "plain\n";
    return kExitOk;
  }
  basRegExp regExp;
  std::cout << regExp.TranslatePattern(text) << "\n";
  return kExitOk;
}

}  // namespace

void AddSearchCommands(CLI::App& app, CliContext& ctx, int* result) {
  auto* search = app.add_subcommand("search", "Search the catalog");
  static SearchCommandOptions o;
  search->add_option("TEXT", o.search.text, "The search text (plain text or a pattern)")
      ->required();
  search->add_flag("--case", o.search.caseSensitive, "Case Sensitive");
  search->add_flag("--names", o.search.inNames, "Search CD Names: every object's name");
  search->add_flag("--paths", o.search.inPathNames, "Search Path Names: discs' scanned paths");
  search->add_flag("--comments", o.search.inComments, "Search Comments");
  search->add_flag("--extra", o.search.inExtra, "Search Additional Attributes");
  search->add_flag("--filenames", o.search.inFileNames,
                   "Search Filenames (tests nothing by itself)");
  search->add_option("--mode", o.mode, "Plain text: whole field, beginning or anywhere")
      ->check(CLI::IsMember({"whole", "beginning", "anywhere"}));
  search->add_option("--category", o.search.categoryId,
                     "Only the discs of this category and the categories below it");
  search->add_flag("--zip", o.search.inZip, "Search Within Zip Files");
  search->add_option("--format", o.format, "Output format")
      ->check(CLI::IsMember({"tsv", "csv", "xml", "json"}));
  search->add_option("--output", o.output, "Write the results to FILE");
  search->add_flag("--count", o.count, "Print only the number of hits");
  search->callback([&ctx, result] { *result = Search(ctx, o); });

  auto* translate = app.add_subcommand("translate", "Show what a search text becomes");
  static std::string text;
  translate->add_option("TEXT", text, "The search text")->required();
  translate->callback([result] { *result = Translate(text); });
}

}  // namespace gorvan::cli
