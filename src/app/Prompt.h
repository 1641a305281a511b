#pragma once
// Prompt: every question, message and file choice the shared workflows put to
// the user goes through this one interface. gorvan-cli answers on the
// terminal, the desktop program with its message box and dialogs, and the
// tests with scripted answers, so no workflow ever blocks a test.
//
// A prompt that the user may switch off names its "lNotify*" setting in
// notifyKey: the message box then carries the check box "Don't display this
// prompt again" (or "... in this session" when sessionOnly is set), and the
// reply says whether it was ticked. Storing False under the key is the
// caller's business (see NotifyPrompt), so an implementation stays free of
// the settings store.
//
// Thread contract: called on the thread that runs the workflow (the GUI
// thread in the desktop program), never from inside a catalog walk.

#include <functional>
#include <string>
#include <vector>

namespace gorvan {

inline constexpr const char* kDontDisplayAgain = "Don't display this prompt again";
inline constexpr const char* kDontDisplayAgainSession =
    "Don't display this prompt again in this session";

enum class PromptIcon { kNone, kInformation, kQuestion, kWarning, kCritical };

// The buttons of a message; kCustom shows PromptRequest::customButtons.
enum class PromptButtons { kOk, kOkCancel, kYesNo, kYesNoCancel, kCustom };

enum class PromptAnswer { kOk, kCancel, kYes, kNo, kCustom };

struct PromptRequest {
  std::string title;  // "" for the program's name
  std::string text;   // lines separated by "\n"
  PromptButtons buttons = PromptButtons::kOk;
  PromptIcon icon = PromptIcon::kInformation;
  std::vector<std::string> customButtons;  // captions, first is the default
  std::string notifyKey;                   // "lNotify*" key: shows the check box
  bool sessionOnly = false;                // the "... in this session" caption
};

struct PromptReply {
  PromptAnswer answer = PromptAnswer::kCancel;
  int customIndex = -1;        // the custom button chosen, for kCustom
  bool dontShowAgain = false;  // the check box was ticked
};

// A file to choose, in the form of the product's dialogs: filter entries
// "Description (*.ext)|*.ext" joined by "|".
struct FileRequest {
  std::string title;
  std::string filter;
  std::string defaultExtension;  // without the dot
  std::string startPath;         // folder or file the dialog opens at
  bool save = false;             // a file to write (asks before replacing one)
  int filterIndex = 0;           // the filter entry chosen when the dialog opens
};

// The fields of the password dialog, as typed.
struct PasswordFields {
  std::string entered;  // the catalog's password
  std::string new1;     // the new password (a change only)
  std::string new2;     // the new password again
};
// Judges the dialog's fields when OK is pressed: "" closes the dialog
// (passed); any other text is shown in the dialog, which stays open.
using PasswordJudge = std::function<std::string(const PasswordFields&)>;

class Prompt {
 public:
  virtual ~Prompt() = default;

  virtual PromptReply Ask(const PromptRequest& request) = 0;
  // A line of text; hidden echoes "*" (passwords). False when the user cancels.
  virtual bool AskText(const std::string& title, const std::string& label, bool hidden,
                       std::string* text) = 0;
  // A file name; "" when the user cancels.
  virtual std::string AskFile(const FileRequest& request) = 0;
  // The password dialog; with change set it asks for the new password twice
  // as well. False when the user cancels.
  virtual bool AskPassword(bool change, const PasswordJudge& judge) = 0;

  // Shorthands.
  void Message(const std::string& text, PromptIcon icon = PromptIcon::kInformation,
               const std::string& title = {}) {
    Ask({title, text, PromptButtons::kOk, icon, {}, {}, false});
  }
  bool YesNo(const std::string& text, const std::string& title = {}) {
    return Ask({title, text, PromptButtons::kYesNo, PromptIcon::kQuestion, {}, {}, false})
               .answer == PromptAnswer::kYes;
  }
};

}  // namespace gorvan
