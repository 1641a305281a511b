#include "cli/TerminalPrompt.h"

#include <termios.h>
#include <unistd.h>

#include <iostream>

namespace gorvan::cli {
namespace {

constexpr int kPasswordAttempts = 3;

std::string OneLineText(std::string text) {
  for (char& c : text) {
    if (c == '\n') c = ' ';
  }
  return text;
}

}  // namespace

PromptReply TerminalPrompt::Ask(const PromptRequest& request) {
  PromptReply reply;
  switch (request.buttons) {
    case PromptButtons::kOk:
      std::cerr << "gorvan-cli: " << OneLineText(request.text) << "\n";
      reply.answer = PromptAnswer::kOk;
      return reply;
    case PromptButtons::kCustom:
      // The first button is the default; a command line takes it.
      std::cerr << "gorvan-cli: " << OneLineText(request.text) << "\n";
      reply.answer = PromptAnswer::kCustom;
      reply.customIndex = 0;
      return reply;
    default:
      break;
  }
  const bool yesAnswer = request.buttons == PromptButtons::kYesNo ||
                         request.buttons == PromptButtons::kYesNoCancel;
  bool agreed = yes_;
  if (!agreed && ::isatty(STDIN_FILENO)) {
    std::cerr << OneLineText(request.text) << " [y/N] " << std::flush;
    std::string answer;
    agreed = std::getline(std::cin, answer) && !answer.empty() &&
             (answer[0] == 'y' || answer[0] == 'Y');
  }
  if (yesAnswer) {
    reply.answer = agreed ? PromptAnswer::kYes : PromptAnswer::kNo;
  } else {
    reply.answer = agreed ? PromptAnswer::kOk : PromptAnswer::kCancel;
  }
  return reply;
}

bool TerminalPrompt::AskText(const std::string& /*title*/, const std::string& label,
                             bool hidden, std::string* text) {
  if (hidden) return ReadSecret(label + ": ", text);
  if (!::isatty(STDIN_FILENO)) return false;
  std::cerr << label << ": " << std::flush;
  return static_cast<bool>(std::getline(std::cin, *text));
}

std::string TerminalPrompt::AskFile(const FileRequest& /*request*/) { return {}; }

bool TerminalPrompt::AskPassword(bool change, const PasswordJudge& judge) {
  for (int attempt = 0; attempt < kPasswordAttempts; ++attempt) {
    PasswordFields f;
    if (!ReadSecret("Password: ", &f.entered)) return false;
    if (change && (!ReadSecret("New password: ", &f.new1) ||
                   !ReadSecret("New password again: ", &f.new2))) {
      return false;
    }
    const std::string message = judge(f);
    if (message.empty()) return true;
    std::cerr << "gorvan-cli: " << message << "\n";
  }
  return false;
}

bool TerminalPrompt::ReadSecret(const std::string& prompt, std::string* out) {
  if (!::isatty(STDIN_FILENO)) return false;
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

}  // namespace gorvan::cli
