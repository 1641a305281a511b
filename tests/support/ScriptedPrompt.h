#pragma once
// ScriptedPrompt: a Prompt that records every question and gives replies the
// test scripted in advance, so workflows that ask the user run unattended.

#include <deque>
#include <string>
#include <vector>

#include "app/Prompt.h"

namespace gorvan::test {

class ScriptedPrompt : public Prompt {
 public:
  std::vector<PromptRequest> asked;
  // Used in order; when none is left a message is acknowledged (OK) and a
  // question answered No.
  std::deque<PromptReply> replies;
  std::vector<std::string> textLabels;
  std::string textAnswer;
  bool textOk = true;
  std::deque<std::string> files;          // file choices, in order; then ""
  std::deque<PasswordFields> passwords;   // typed into the password dialog, in order
  std::vector<std::string> passwordMessages;  // what the dialog showed

  void Answer(PromptAnswer answer, bool dontShowAgain = false) {
    replies.push_back({answer, -1, dontShowAgain});
  }

  PromptReply Ask(const PromptRequest& request) override {
    asked.push_back(request);
    if (replies.empty()) {
      return {request.buttons == PromptButtons::kOk ? PromptAnswer::kOk : PromptAnswer::kNo, -1,
              false};
    }
    PromptReply r = replies.front();
    replies.pop_front();
    return r;
  }
  bool AskText(const std::string&, const std::string& label, bool, std::string* text) override {
    textLabels.push_back(label);
    *text = textAnswer;
    return textOk;
  }
  std::string AskFile(const FileRequest&) override {
    if (files.empty()) return {};
    std::string f = files.front();
    files.pop_front();
    return f;
  }
  // Offers the scripted passwords one after the other until the judge passes
  // one; false (Cancel) when they run out.
  bool AskPassword(bool, const PasswordJudge& judge) override {
    while (!passwords.empty()) {
      const PasswordFields f = passwords.front();
      passwords.pop_front();
      const std::string message = judge(f);
      if (message.empty()) return true;
      passwordMessages.push_back(message);
    }
    return false;
  }

  // The texts asked so far.
  std::vector<std::string> Texts() const {
    std::vector<std::string> out;
    for (const PromptRequest& r : asked) out.push_back(r.text);
    return out;
  }
};

}  // namespace gorvan::test
