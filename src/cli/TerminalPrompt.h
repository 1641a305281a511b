#pragma once
// TerminalPrompt: the shared workflows' questions on a terminal. Yes/No
// questions are answered by --yes or on the terminal (no terminal: No);
// messages go to stderr; passwords are read without echo; a command line
// never picks files interactively.

#include <string>

#include "app/Prompt.h"

namespace gorvan::cli {

class TerminalPrompt final : public Prompt {
 public:
  explicit TerminalPrompt(bool yes) : yes_(yes) {}

  PromptReply Ask(const PromptRequest& request) override;
  bool AskText(const std::string& title, const std::string& label, bool hidden,
               std::string* text) override;
  std::string AskFile(const FileRequest& request) override;
  bool AskPassword(bool change, const PasswordJudge& judge) override;

  // Reads a line from the terminal without echo; false without a terminal.
  static bool ReadSecret(const std::string& prompt, std::string* out);

 private:
  bool yes_;
};

}  // namespace gorvan::cli
