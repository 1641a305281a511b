#pragma once
// Helpers of the app tests: FreshUser, a new user for one test (the scripted
// prompt is tests/support/ScriptedPrompt.h).

#include <unistd.h>

#include <cstdlib>
#include <string>

#include "app/ErrorLog.h"
#include "app/SettingsStore.h"
#include "support/ScriptedPrompt.h"
#include "support/TempDir.h"

namespace gorvan::test {

// A new application folder and data folder, and an empty settings store, for
// as long as the object lives (so tests also pass when run in one process);
// errors the code reports go to the new folder's log.
class FreshUser {
 public:
  FreshUser() {
    setenv("GORVAN_HOME", dir_.File("home").c_str(), 1);
    setenv("XDG_DATA_HOME", dir_.File("data").c_str(), 1);
    ::unlink(SettingsStore::FilePath().c_str());
    ErrorLog::InstallAsErrorSink();
  }
  const TempDir& dir() const { return dir_; }

 private:
  TempDir dir_;
};

}  // namespace gorvan::test
