#include "cli/CliContext.h"

#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>

#include "app/AppFolder.h"
#include "app/CatalogHistory.h"
#include "catalog/PasswordCheck.h"
#include "catalog/ReadOnlyCheck.h"

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

bool CliContext::AskYesNo(const std::string& question) const {
  if (yes) return true;
  if (!isatty(STDIN_FILENO)) return false;
  std::cerr << question << " [y/N] " << std::flush;
  std::string answer;
  if (!std::getline(std::cin, answer)) return false;
  return !answer.empty() && (answer[0] == 'y' || answer[0] == 'Y');
}

bool CliContext::ReadSecret(const std::string& prompt, std::string* out) {
  if (!isatty(STDIN_FILENO)) return false;
  std::cerr << prompt << std::flush;
  termios old{};
  const bool haveTerm = tcgetattr(STDIN_FILENO, &old) == 0;
  if (haveTerm) {
    termios quiet = old;
    quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    tcsetattr(STDIN_FILENO, TCSANOW, &quiet);
  }
  const bool got = static_cast<bool>(std::getline(std::cin, *out));
  if (haveTerm) tcsetattr(STDIN_FILENO, TCSANOW, &old);
  std::cerr << "\n";
  return got;
}

classData* CliContext::Open(int* exitCode, bool mustExist) {
  const std::string path = CatalogPath();
  if (mustExist && ::access(path.c_str(), F_OK) != 0) {
    *exitCode = Fail("no catalog at " + path + " (create one with: gorvan-cli create FILE)");
    return nullptr;
  }
  std::string error;
  if (!ReadOnlyCheck::Run(path, [this](const std::string& q) { return AskYesNo(q); }, &error)) {
    *exitCode = Fail(error.empty() ? path + " is read-only and was not opened" : error,
                     kExitRefused);
    return nullptr;
  }
  data_ = std::make_unique<classData>();
  std::string given = password;
  if (given.empty()) {
    if (const char* env = std::getenv("GORVAN_PASSWORD"); env && *env) given = env;
  }
  data_->SetPasswordPrompt([given](const std::string& current) {
    std::string entered = given;
    if (entered.empty() && !ReadSecret("Password: ", &entered)) return false;
    return PasswordCheck::AskPassword(entered, current) == PasswordCheck::Result::kPassed;
  });
  if (!data_->OpenFiles(path, /*askPassword=*/true, /*setDefaults=*/true)) {
    *exitCode = Fail(data_->GetErrorText(), data_->GetError() == classData::kCannotOpen
                                                ? kExitFailure
                                                : kExitRefused);
    data_.reset();
    return nullptr;
  }
  data_->file()->ArmWalkBudget();
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
