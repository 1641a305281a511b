#include "ui/session/NotifyPrompt.h"

#include <set>

#include "ui/session/UiSettings.h"

namespace gorvan::ui {
namespace {

std::set<std::string>& OffThisSession() {
  static std::set<std::string> keys;
  return keys;
}

}  // namespace

bool NotifyPrompt::IsOn(const std::string& key) {
  return key.empty() || (!OffThisSession().contains(key) && UiSettings::Switch(key));
}

PromptReply NotifyPrompt::Ask(Prompt& prompt, const PromptRequest& request, PromptAnswer whenOff) {
  if (!IsOn(request.notifyKey)) {
    PromptReply r;
    r.answer = whenOff;
    return r;
  }
  PromptReply r = prompt.Ask(request);
  if (r.dontShowAgain && !request.notifyKey.empty()) {
    if (request.sessionOnly) {
      OffThisSession().insert(request.notifyKey);
    } else {
      UiSettings::SetSwitch(request.notifyKey, false);
    }
  }
  return r;
}

void NotifyPrompt::ResetSession() { OffThisSession().clear(); }

}  // namespace gorvan::ui
