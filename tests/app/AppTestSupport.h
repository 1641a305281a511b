#pragma once
// Helpers of the app tests: FreshUser, a new user for one test, and
// ScriptedPrompt, a Prompt that records every question and gives scripted
// replies, so workflows that ask the user run unattended.

#include <unistd.h>

#include <cstdlib>
#include <deque>
#include <string>
#include <vector>

#include "app/ErrorLog.h"
#include "app/Prompt.h"
#include "app/SettingsStore.h"
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

class ScriptedPrompt : public Prompt {
 public:
  std::vector<PromptRequest> asked;
  std::deque<PromptReply> replies;  // used in order; when none is left: No
  std::vector<std::string> textLabels;
  std::string textAnswer;
  bool textOk = true;

  PromptReply Ask(const PromptRequest& request) override {
    asked.push_back(request);
    if (replies.empty()) return {PromptAnswer::kNo, -1, false};
    PromptReply r = replies.front();
    replies.pop_front();
    return r;
  }
  bool AskText(const std::string&, const std::string& label, bool, std::string* text) override {
    textLabels.push_back(label);
    *text = textAnswer;
    return textOk;
  }
  std::string AskFile(const FileRequest&) override { return {}; }

  // The texts asked so far.
  std::vector<std::string> Texts() const {
    std::vector<std::string> out;
    for (const PromptRequest& r : asked) out.push_back(r.text);
    return out;
  }
};

}  // namespace gorvan::test
