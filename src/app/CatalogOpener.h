#pragma once
// CatalogOpener: how both front ends open a catalog — the read-only check
// (its question asked through the Prompt), the catalog itself with its
// password asked through the password dialog under its rules, and the walk
// budget armed — with the product's messages for every refusal.
//
// Thread contract: runs on the thread that will own the catalog (the GUI
// thread in the desktop program); the Prompt is called on it.

#include <memory>
#include <string>

#include "app/Prompt.h"
#include "catalog/Status.h"
#include "catalog/classData.h"

namespace gorvan {

inline constexpr const char* kLogonDenied = "Logon Denied!!";

struct OpenOptions {
  // A catalog that does not exist is created (a new catalog, "Gorvan" by
  // name) unless this is set; then the path must name a file.
  bool mustExist = false;
  // A password given in advance (a command line): tried once instead of
  // asking; a wrong one is refused with the dialog's message.
  std::string password;
  bool passwordGiven = false;
  // The encoding of a catalog created here.
  TextEncoding newEncoding = TextEncoding::kUtf8;
};

struct OpenOutcome {
  std::unique_ptr<classData> data;  // the open catalog; null when refused
  // OK; Refused (the read-only question answered No, the format or version,
  // the password: classData's error state in error); NotFound (mustExist and
  // no such file); IOError (the system would not open it); Corruption (the
  // data-file error).
  Status status;
  int error = classData::kNoError;
  // What to tell the user: the product's words ("Logon Denied!!" for a
  // refused password, the wrong-version and data-file messages).
  std::string message;
};

class CatalogOpener {
 public:
  static OpenOutcome Open(const std::string& path, Prompt& prompt, const OpenOptions& options = {});

  // The password prompt of classData under the password dialog's rules:
  // the given password when there is one, else the dialog through prompt.
  static classData::PasswordPrompt PasswordPromptFor(Prompt& prompt, const OpenOptions& options);
};

}  // namespace gorvan
