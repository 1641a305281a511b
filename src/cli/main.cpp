// gorvan-cli: the scriptable command line over a Gorvan catalog.
#include <CLI/CLI.hpp>

#include <iostream>

#include "app/AppFolder.h"
#include "app/ErrorLog.h"
#include "catalog/TextFormat.h"
#include "cli/CliContext.h"
#include "cli/Commands.h"

int main(int argc, char** argv) {
  using namespace gorvan::cli;
  gorvan::ErrorLog::InstallAsErrorSink();
  gorvan::SetDateLocaleFromEnvironment();

  CliContext ctx;
  int result = kExitOk;
  CLI::App app{"gorvan-cli: catalog discs and folders, then browse, search and export the catalog"};
  app.require_subcommand(1);
  app.add_option("-c,--catalog", ctx.catalogOption, "The catalog file");
  app.add_option("--password", ctx.password, "The catalog's password");
  app.add_flag("-y,--yes", ctx.yes, "Answer Yes to every question");
  app.add_flag("-q,--quiet", ctx.quiet, "No progress lines");
  app.set_version_flag("--version", "gorvan-cli " + gorvan::VersionString());
  AddCatalogCommands(app, ctx, &result);
  AddEditCommands(app, ctx, &result);
  AddScanCommands(app, ctx, &result);
  AddExportCommands(app, ctx, &result);
  AddMaintenanceCommands(app, ctx, &result);
  AddSearchCommands(app, ctx, &result);
  AddAppCommands(app, ctx, &result);
  AddAudioCommands(app, ctx, &result);

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    const int code = app.exit(e);
    return code == 0 ? kExitOk : kExitUsage;
  }
  return result;
}
