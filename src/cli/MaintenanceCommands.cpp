// gorvan-cli compact, backup, saveas and merge.
#include <CLI/CLI.hpp>

#include <cstdlib>
#include <iostream>
#include <memory>

#include "catalog/basBackup.h"
#include "cli/CliContext.h"
#include "cli/Commands.h"
#include "cli/TerminalJob.h"

namespace gorvan::cli {
namespace {

enum class Command { kCompact, kBackup, kSaveAs, kMerge };

// The command line asks nothing before it starts: naming the command is the
// answer to "Compact Data Files ??".
int Run(CliContext& ctx, Command command, const std::string& file,
        const std::string& otherPassword) {
  int code = 0;
  classData* data = ctx.Open(&code);
  if (!data) return code;
  MaintenanceResult r;
  {
    TerminalJob terminal(ctx.quiet, TerminalJob::PercentLine);
    JobControl& job = terminal.job();
    switch (command) {
      case Command::kCompact:
        r = CompactDataFiles(*data, job);
        break;
      case Command::kBackup:
        r = BackupDataFiles(*data, file, job);
        break;
      case Command::kSaveAs:
        r = SaveAsDataFiles(*data, file, job);
        break;
      case Command::kMerge: {
        // The other catalog's password goes through the same rules as opening.
        OpenOptions given;
        given.password = otherPassword;
        if (given.password.empty()) {
          if (const char* env = std::getenv("GORVAN_MERGE_PASSWORD")) given.password = env;
        }
        given.passwordGiven = !given.password.empty();
        r = MergeExistingCatalog(*data, file, job,
                                 CatalogOpener::PasswordPromptFor(ctx.prompt(), given));
        break;
      }
    }
  }
  if (r.status.IsCancelled()) {
    if (!ctx.quiet) std::cerr << r.message << "\n";
    return kExitCancelled;
  }
  if (r.status.IsRefused()) return ctx.Fail(r.message, kExitRefused);
  if (!r.status.ok()) return ctx.Fail(r.message);
  if (r.warnings > 0) {
    std::cerr << "gorvan-cli: warning: " << r.warnings
              << " character(s) could not be stored in this catalog's encoding and were "
                 "written as \"?\"\n";
  }
  if (!ctx.quiet) std::cerr << r.message << "\n";
  return data->IsOpen() ? ctx.Finish() : kExitOk;
}

}  // namespace

void AddMaintenanceCommands(CLI::App& app, CliContext& ctx, int* result) {
  CLI::App* compact = app.add_subcommand("compact", "Rewrite the catalog without garbage");
  compact->callback([&ctx, result] { *result = Run(ctx, Command::kCompact, {}, {}); });

  struct Args {
    std::string file;
    std::string password;
  };
  auto backup = std::make_shared<Args>();
  CLI::App* b = app.add_subcommand("backup", "Copy the catalog to FILE");
  b->add_option("FILE", backup->file, "The copy")->required();
  b->callback([&ctx, result, backup] { *result = Run(ctx, Command::kBackup, backup->file, {}); });

  auto saveas = std::make_shared<Args>();
  CLI::App* s = app.add_subcommand("saveas", "Copy the catalog to FILE and go on with FILE");
  s->add_option("FILE", saveas->file, "The new catalog")->required();
  s->callback([&ctx, result, saveas] { *result = Run(ctx, Command::kSaveAs, saveas->file, {}); });

  auto merge = std::make_shared<Args>();
  CLI::App* m = app.add_subcommand("merge", "Add the categories and discs of the catalog FILE");
  m->add_option("FILE", merge->file, "The catalog to merge")->required();
  m->add_option("--merge-password", merge->password,
                "The password of FILE (else $GORVAN_MERGE_PASSWORD, else asked)");
  m->callback([&ctx, result, merge] {
    *result = Run(ctx, Command::kMerge, merge->file, merge->password);
  });
}

}  // namespace gorvan::cli
