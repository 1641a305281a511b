#include "app/ErrorRoutine.h"

#include <atomic>
#include <cstdlib>
#include <new>

#include "app/ErrorLog.h"
#include "app/Prompt.h"
#include "app/SettingsRecord.h"
#include "app/SettingsStore.h"
#include "app/SupportClient.h"
#include "catalog/ErrorReporter.h"

namespace gorvan {
namespace {

constexpr size_t kReserveBytes = size_t{1} << 20;
std::atomic<Prompt*> oomPrompt{nullptr};
std::atomic<char*> oomReserve{nullptr};

void OnAllocationFailure() {
  delete[] oomReserve.exchange(nullptr);
  std::set_new_handler(nullptr);
  if (Prompt* prompt = oomPrompt.load()) ErrorRoutine::OutOfMemory(*prompt);
  std::_Exit(1);
}

}  // namespace

ErrorRoutine::ErrorRoutine(Prompt& prompt, SettingsRecord& settings)
    : prompt_(prompt), settings_(settings), owner_(std::this_thread::get_id()) {}

ErrorRoutine::~ErrorRoutine() {
  if (installed_) SetErrorSink(nullptr);
}

void ErrorRoutine::InstallAsErrorSink() {
  installed_ = true;
  SetErrorSink([this](std::string_view routine, int number, std::string_view description,
                      int mode) { Report(routine, number, description, mode); });
}

void ErrorRoutine::Report(std::string_view routine, int number, std::string_view description,
                          int mode) {
  ErrorLog::Default().Append(routine, number, description, mode);
  if (mode != 1 && mode != 2) return;
  if (std::this_thread::get_id() != owner_) {
    // Mode 2 wins over 1: its return to the main window must not be lost.
    int expected = 0;
    if (!pendingMode_.compare_exchange_strong(expected, mode) && mode == 2) pendingMode_ = 2;
    return;
  }
  Offer(mode);
}

bool ErrorRoutine::OfferPending() {
  const int mode = pendingMode_.exchange(0);
  if (mode == 0) return false;
  Offer(mode);
  return true;
}

void ErrorRoutine::Offer(int mode) {
  if (settings_.lNotifyErrorSend) {
    const PromptReply reply = prompt_.Ask({kErrorPromptTitle,
                                           kErrorPromptText,
                                           PromptButtons::kCustom,
                                           PromptIcon::kCritical,
                                           {kSendErrorLog, kDoNotSendLog},
                                           "lNotifyErrorSend",
                                           false});
    if (reply.dontShowAgain) {
      settings_.lNotifyErrorSend = false;
      SettingsStore::PutBool(kSwitches, "lNotifyErrorSend", false);
    }
    if (reply.answer == PromptAnswer::kCustom && reply.customIndex == 0) SendErrorLog();
  }
  if (mode == 2 && returnToMain_) returnToMain_();
}

bool ErrorRoutine::SendErrorLog() {
  std::string label;
  for (const std::string& line : SupportClient::SendDialogLines(settings_.supportEmail)) {
    label += line + "\n";
  }
  label += std::string("\n") + kSendDialogPrompt;
  std::string email = SettingsStore::GetText("Defaults", "UserEmail");
  if (!prompt_.AskText(kSendErrorLog, label, false, &email)) return false;
  SettingsStore::PutText("Defaults", "UserEmail", email);
  const SupportClient::Outcome outcome =
      SupportClient(settings_).SubmitErrorLog(ErrorLog::Default().path(), email, true);
  outcome.Show(prompt_);
  return outcome.ok;
}

void ErrorRoutine::InstallOutOfMemoryHandler(Prompt* prompt) {
  oomPrompt = prompt;
  if (!oomReserve.load()) delete[] oomReserve.exchange(new char[kReserveBytes]);
  std::set_new_handler(OnAllocationFailure);
}

void ErrorRoutine::OutOfMemory(Prompt& prompt) {
  prompt.Message(kOutOfMemoryMessage, PromptIcon::kCritical);
  std::_Exit(1);
}

}  // namespace gorvan
