#pragma once
// ErrorRoutine: where every trapped error ends. It appends the entry to the
// error log and, by the caller's mode, offers to send the log to the support
// server:
//   mode 1  log, then offer to send;
//   mode 2  log, offer to send, then return to the main window (hook);
//   mode 3  log only (no empty line after the entry).
// The offer is the message box "An Error Has Occured!!" with the buttons
// "Send Error Log" and "Do Not Send Log" and the check box "Don't display
// this prompt again" (switch "lNotifyErrorSend": ticked, it stores False and
// no offer is made again). Sending asks for the user's e-mail address
// (kept in "Defaults"/"UserEmail") and shows the server's reply.
//
// Thread contract: Report may be called on any thread (it is the sink of the
// core layers, which run walks on worker threads). Only the thread that made
// the routine asks the user; an error reported elsewhere is logged and its
// offer waits until that thread calls OfferPending.

#include <atomic>
#include <functional>
#include <string>
#include <string_view>
#include <thread>

namespace gorvan {

class Prompt;
class SettingsRecord;

inline constexpr const char* kErrorPromptTitle = "An Error Has Occured!!";
inline constexpr const char* kErrorPromptText =
    "Do you want to inform the Gorvan Support about this problem";
inline constexpr const char* kSendErrorLog = "Send Error Log";
inline constexpr const char* kDoNotSendLog = "Do Not Send Log";
inline constexpr const char* kOutOfMemoryMessage =
    "System is running is out of memory!! Quitting!!";

class ErrorRoutine {
 public:
  // prompt and settings must outlive the routine.
  ErrorRoutine(Prompt& prompt, SettingsRecord& settings);
  ~ErrorRoutine();

  // Called after the offer of a mode 2 error: back to the main window.
  void SetReturnToMainWindow(std::function<void()> hook) { returnToMain_ = std::move(hook); }

  void Report(std::string_view routine, int number, std::string_view description, int mode);
  // Makes this routine the sink of every error the core layers report.
  // The sink is cleared again when the routine goes.
  void InstallAsErrorSink();
  // Makes an offer that an error on another thread left waiting. True when
  // one was waiting.
  bool OfferPending();

  // The help menu's send command (and the offer's "Send Error Log"): asks
  // for the e-mail address, sends the log, shows the reply. False when the
  // user cancelled or the log was not sent.
  bool SendErrorLog();

  // Shows kOutOfMemoryMessage through prompt and ends the process (exit
  // status 1): the one failure nothing can carry on from.
  [[noreturn]] static void OutOfMemory(Prompt& prompt);
  // Makes a failed allocation anywhere call OutOfMemory(*prompt): a reserve
  // of memory is set aside now and given back first, so that the message can
  // still be shown. prompt must live until the process ends.
  static void InstallOutOfMemoryHandler(Prompt* prompt);

 private:
  void Offer(int mode);

  Prompt& prompt_;
  SettingsRecord& settings_;
  std::function<void()> returnToMain_;
  std::thread::id owner_;
  std::atomic<int> pendingMode_{0};
  bool installed_ = false;
};

}  // namespace gorvan
