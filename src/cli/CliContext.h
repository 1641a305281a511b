#pragma once
// CliContext: what every gorvan-cli command shares — the global options, which
// catalog to use, opening it (the read-only question and the password asked on
// the terminal, or taken from --yes and --password), exit codes and output.

#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>

#include "app/CatalogOpener.h"
#include "catalog/Status.h"
#include "catalog/classData.h"
#include "cli/TerminalPrompt.h"

namespace gorvan::cli {

enum ExitCode : int {
  kExitOk = 0,
  kExitFailure = 1,
  kExitUsage = 2,
  kExitRefused = 3,
  kExitCancelled = 130,
};

class CliContext {
 public:
  // Global options, filled by the parser.
  std::string catalogOption;  // -c FILE
  std::string password;       // --password
  bool yes = false;           // --yes: answer Yes to questions
  bool quiet = false;         // --quiet: no progress lines

  // The catalog: -c, else $GORVAN_CATALOG, else the most recent catalog of the
  // history, else "Gorvan.cd" in the application folder.
  std::string CatalogPath() const;

  // Opens the catalog for a command through the shared open workflow. On
  // failure prints the message and returns the exit code in *exitCode (3 when
  // the catalog is refused).
  classData* Open(int* exitCode, bool mustExist = true);
  // The prompt the workflows ask through (--yes answers Yes).
  Prompt& prompt() { return prompt_; }
  // The options for opening: the password of --password or $GORVAN_PASSWORD.
  OpenOptions openOptions(bool mustExist) const;

  // Prints "gorvan-cli: <message>" on stderr and returns code.
  int Fail(const std::string& message, int code = kExitFailure) const;
  // The exit for a failed Status: its message, or the data-file error for a
  // damaged catalog.
  int Fail(const Status& s) const;
  // After a command that walked or wrote the catalog: the data-file error when
  // anything failed on the way, else 0; warns about "?" replacements.
  int Finish();

  classData& data() { return *data_; }

 private:
  std::unique_ptr<classData> data_;
  TerminalPrompt prompt_{false};
};

// A value for a tab-separated line: tab, line feed, carriage return and
// backslash written as \t, \n, \r and \\.
std::string TsvEscape(std::string_view value);

}  // namespace gorvan::cli
