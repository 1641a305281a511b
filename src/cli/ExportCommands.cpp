// gorvan-cli export.
#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>

#include "app/Resources.h"
#include "cli/CliContext.h"
#include "cli/Commands.h"
#include "cli/TerminalJob.h"
#include "export/basExport.h"

namespace gorvan::cli {
namespace {

struct ExportArgs {
  std::string file;
  std::string format;
  std::vector<int32_t> discs;
};

int Export(CliContext& ctx, const ExportArgs& a) {
  int code = 0;
  classData* data = ctx.Open(&code);
  if (!data) return code;
  ExportOptions options;
  // --format names a type by its extension; without it the file's extension
  // decides, and anything else is XML.
  const std::string byName = a.format.empty() ? a.file : "." + a.format;
  options.type = ExportTypeForPath(byName).value_or(ExportType::kXml);
  options.discIds = a.discs;
  if (options.type == ExportType::kXml) options.stylesheet = Resources::File(kStylesheetName);

  ExportResult r;
  {
    TerminalJob terminal(ctx.quiet, TerminalJob::PercentLine);
    r = basExport(*data, a.file, options, terminal.job());
  }
  if (r.status.IsCancelled()) {
    std::cerr << "gorvan-cli: export cancelled; " << a.file << " was not written\n";
    return kExitCancelled;
  }
  if (!r.status.ok()) return ctx.Fail(r.status);
  if (!r.stylesheetProblem.empty()) {
    std::cerr << "gorvan-cli: warning: " << r.stylesheetProblem << "\n";
  }
  return ctx.Finish();
}

}  // namespace

void AddExportCommands(CLI::App& app, CliContext& ctx, int* result) {
  auto a = std::make_shared<ExportArgs>();
  CLI::App* exp = app.add_subcommand(
      "export", "Export discs as comma-separated lines, XML, a workbook or a web page");
  exp->add_option("FILE", a->file, "The file to write")->required();
  exp->add_option("--format", a->format,
                  "xml, csv, xlsx or html (default: from the extension, else xml)")
      ->check(CLI::IsMember({"xml", "csv", "xlsx", "html"}));
  exp->add_option("--disc", a->discs, "A disc id to export (repeat; default: every disc)");
  exp->callback([&ctx, result, a] { *result = Export(ctx, *a); });
}

}  // namespace gorvan::cli
