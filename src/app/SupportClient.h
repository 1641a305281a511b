#pragma once
// SupportClient: the two requests to the maker's support server — the error
// submission (the error log, POSTed to "support/GorvanSubmitError.asp") and
// the version check (a GET of "support/GorvanCurrentVersion.asp") — and the
// product's messages about their outcome. The server is the setting
// "SupportServer" (a host name, "host:port" or an http(s) URL), empty by
// default: then nobody is contacted and the outcome says so.
//
// Messages are returned, not shown, so the desktop program can put them in
// its message box (Outcome::Show) and gorvan-cli can print them.
//
// Thread contract: any thread; a request blocks its caller until the answer
// is in, the time-out passes or the stop token asks for a stop.

#include <chrono>
#include <stop_token>
#include <string>
#include <vector>

#include "app/Prompt.h"
#include "app/ServerAnswer.h"
#include "net/HttpRequest.h"
#include "net/HttpResponse.h"

namespace gorvan {

class SettingsRecord;

inline constexpr const char* kSubmitErrorPath = "support/GorvanSubmitError.asp";
inline constexpr const char* kCurrentVersionPath = "support/GorvanCurrentVersion.asp";
inline constexpr size_t kMaxErrorText = 20000;
inline constexpr const char* kNoSupportServer =
    "No support server is configured (setting Switches/SupportServer).";
inline constexpr const char* kConnectionFailed =
    "Internet Connection To Server Failed!!\nPlease verify you internet connection!!";
inline constexpr const char* kNoResponse =
    "Failed To Get Response Back From Server!!\nPlease Try Again Later!!";
inline constexpr const char* kBadServerAnswer =
    "Error Processing Server Information!!\nPlease try again later!!";
inline constexpr const char* kLatestVersion = "Your are using the latest version of Gorvan!!";
inline constexpr const char* kNoErrorLog = "There is no error log to send.";

class SupportClient {
 public:
  struct Outcome {
    bool ok = false;                    // the server answered as expected
    bool contacted = false;             // a request was sent
    bool newerVersion = false;          // the answer names a newer version
    std::vector<std::string> messages;  // to show, in order; empty: show nothing
    std::string detail;                 // the transfer's own error text, when it failed
    ServerAnswer answer;                // when ok

    // Shows the messages in one message box (information when ok, else a
    // warning); nothing when there are none.
    void Show(Prompt& prompt) const;
  };

  // Reads the server, the web address and the e-mail from the record.
  explicit SupportClient(const SettingsRecord& settings);

  // Limits of both requests (the defaults are the HTTP layer's).
  void SetTimeouts(std::chrono::milliseconds connect, std::chrono::milliseconds total);

  // The version check. A newer version gives a message built from the answer;
  // the current one gives kLatestVersion, and a failed request or an invalid
  // answer the failure messages — both only when interactive. Not
  // interactive, only a newer version is ever reported.
  Outcome CheckVersion(bool interactive, std::stop_token stop = {}) const;

  // Sends the error log at logPath with the e-mail address (may be empty).
  // Success: "The error log is sent to the Gorvan support!!", the ticket
  // line, the newer-version sentence when the answer names a newer version,
  // and "Thank you!!". Failures are shown only when interactive.
  Outcome SubmitErrorLog(const std::string& logPath, const std::string& email, bool interactive,
                         std::stop_token stop = {}) const;

  // The log text as it is sent: its lines joined by "||" up to and including
  // the line that makes the text longer than 20,000 characters, every blank
  // replaced by "_". false when the log cannot be read or is empty.
  static bool ErrorText(const std::string& logPath, std::string* text);
  // The form: "fldError", "fldStdPro" ("Std"), "fldVersion"
  // (major.minor.revision) and, only with an address, "fldEmail".
  static std::vector<FormField> SubmissionForm(const std::string& errorText,
                                               const std::string& email);
  // The full address of path on server; "" when server is empty.
  static std::string Url(const std::string& server, const std::string& path);
  // The send dialog's explanation, one line each, with the support e-mail
  // address in its place (left out when it is empty).
  static std::vector<std::string> SendDialogLines(const std::string& supportEmail);

 private:
  HttpRequest Request(const char* path) const;
  // Sends the request; on success parses the answer into outcome->answer.
  // Otherwise fills in the failure messages (interactive only) and returns false.
  bool Exchange(const HttpRequest& request, bool interactive, std::stop_token stop,
                Outcome* outcome) const;

  std::string server_;
  std::string webAddress_;
  std::chrono::milliseconds connectTimeout_ = HttpRequest::kDefaultConnectTimeout;
  std::chrono::milliseconds timeout_ = HttpRequest::kDefaultTimeout;
};

inline constexpr const char* kSendDialogPrompt = "please enter your eMail (optional)";

}  // namespace gorvan
