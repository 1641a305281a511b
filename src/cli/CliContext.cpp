#include "cli/CliContext.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>

#include "app/AppFolder.h"
#include "app/CatalogHistory.h"

namespace gorvan::cli {
std::string CliContext::CatalogPath() const {
  if (!catalogOption.empty()) return catalogOption;
  if (const char* env = std::getenv("GORVAN_CATALOG"); env && *env) return env;
  if (std::string recent = CatalogHistory::Newest(); !recent.empty() && ::access(recent.c_str(), F_OK) == 0) {
    return recent;
  }
  return AppFolder::File("Gorvan.cd");
}

int CliContext::Fail(const std::string& message, int code) const {
  std::cerr << "gorvan-cli: " << message << "\n";
  return code;
}

int CliContext::Fail(const Status& s) const {
  if (s.IsCancelled()) return Fail(s.message(), kExitCancelled);
  if (s.IsCorruption()) {
    return Fail(std::string(kDataFileErrorMessage) + "\n(" + s.message() + ")", kExitFailure);
  }
  return Fail(s.message(), kExitFailure);
}

int CliContext::Finish() {
  if (!data_) return kExitOk;
  if (!data_->ok()) return Fail(data_->status());
  if (!data_->Flush()) return Fail(data_->status());
  if (const size_t n = data_->file()->TakeWarnings(); n > 0) {
    std::cerr << "gorvan-cli: warning: " << n
              << " character(s) could not be stored in this catalog's encoding and were "
                 "written as \"?\"\n";
  }
  return kExitOk;
}

OpenOptions CliContext::openOptions(bool mustExist) const {
  OpenOptions o;
  o.mustExist = mustExist;
  o.password = password;
  if (o.password.empty()) {
    if (const char* env = std::getenv("GORVAN_PASSWORD"); env && *env) o.password = env;
  }
  o.passwordGiven = !o.password.empty();
  return o;
}

classData* CliContext::Open(int* exitCode, bool mustExist) {
  prompt_ = TerminalPrompt(yes);
  const std::string path = CatalogPath();
  if (mustExist && ::access(path.c_str(), F_OK) != 0) {
    *exitCode = Fail("no catalog at " + path + " (create one with: gorvan-cli create FILE)");
    return nullptr;
  }
  OpenOutcome out = CatalogOpener::Open(path, prompt_, openOptions(mustExist));
  if (!out.data) {
    const bool refused = out.status.IsRefused() || out.status.IsCorruption() ||
                         out.error == classData::kWrongVersion;
    *exitCode = Fail(out.message, refused ? kExitRefused : kExitFailure);
    return nullptr;
  }
  data_ = std::move(out.data);
  *exitCode = kExitOk;
  return data_.get();
}

std::string TsvEscape(std::string_view value) {
  std::string out;
  out.reserve(value.size());
  for (char c : value) {
    switch (c) {
      case '\t': out += "\\t"; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      case '\\': out += "\\\\"; break;
      default: out += c;
    }
  }
  return out;
}

}  // namespace gorvan::cli
