#pragma once
// NotifyPrompt: a prompt the user may switch off. Its request names an
// "lNotify*" key: while that switch is True the prompt is shown with the check
// box "Don't display this prompt again"; ticking it stores False under the key
// (the "... in this session" variant switches the prompt off until the program
// ends and stores nothing). A switched-off prompt is not shown and answers
// whenOff.
//
// Thread contract: the GUI thread.

#include "app/Prompt.h"

namespace gorvan::ui {

class NotifyPrompt {
 public:
  static PromptReply Ask(Prompt& prompt, const PromptRequest& request, PromptAnswer whenOff);
  // True while the prompt of key is shown.
  static bool IsOn(const std::string& key);
  // Forgets the prompts switched off for this session (tests).
  static void ResetSession();
};

}  // namespace gorvan::ui
