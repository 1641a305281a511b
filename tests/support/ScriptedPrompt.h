#pragma once
// ScriptedPrompt: the Prompt of the shared workflows with answers given by the
// test in advance; it records every question and message it was shown.

#include <deque>
#include <string>
#include <vector>

#include "app/Prompt.h"

namespace gorvan::test {

class ScriptedPrompt : public Prompt {
 public:
  // Answers, used in order; when one runs out the default is Cancel/No/"".
  std::deque<PromptReply> replies;
  std::deque<PasswordFields> passwords;
  std::deque<std::string> files;
  std::deque<std::string> texts;
  // What was shown: each request's text, each password dialog's messages.
  std::vector<std::string> shown;
  std::vector<std::string> passwordMessages;

  void Answer(PromptAnswer answer, bool dontShowAgain = false) {
    replies.push_back({answer, -1, dontShowAgain});
  }

  PromptReply Ask(const PromptRequest& request) override {
    shown.push_back(request.text);
    if (replies.empty()) {
      return {request.buttons == PromptButtons::kOk ? PromptAnswer::kOk : PromptAnswer::kCancel,
              -1, false};
    }
    const PromptReply r = replies.front();
    replies.pop_front();
    return r;
  }
  bool AskText(const std::string&, const std::string& label, bool, std::string* text) override {
    shown.push_back(label);
    if (texts.empty()) return false;
    *text = texts.front();
    texts.pop_front();
    return true;
  }
  std::string AskFile(const FileRequest& request) override {
    shown.push_back(request.title);
    if (files.empty()) return {};
    const std::string f = files.front();
    files.pop_front();
    return f;
  }
  // Offers the scripted passwords one after the other until the judge passes
  // one; the messages it gave are kept. False when they run out (Cancel).
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
};

}  // namespace gorvan::test
