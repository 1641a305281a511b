#include "app/SupportClient.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "app/AppFolder.h"
#include "app/SettingsRecord.h"
#include "net/HttpClient.h"

namespace gorvan {
namespace {

// A line that long (a log that is not ours) is cut there: the text never
// needs more than one such line past the 20,000 characters.
constexpr size_t kMaxLine = size_t{1} << 20;

bool Newer(const VersionParts& offered) { return offered > RunningVersion(); }

std::string Trimmed(std::string text) {
  const size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

}  // namespace

void SupportClient::Outcome::Show(Prompt& prompt) const {
  if (messages.empty()) return;
  std::string text;
  for (const std::string& m : messages) text += (text.empty() ? "" : "\n\n") + m;
  prompt.Message(text, ok ? PromptIcon::kInformation : PromptIcon::kWarning);
}

SupportClient::SupportClient(const SettingsRecord& settings)
    : server_(Trimmed(settings.supportServer)), webAddress_(Trimmed(settings.supportWebAddress)) {}

void SupportClient::SetTimeouts(std::chrono::milliseconds connect,
                                std::chrono::milliseconds total) {
  connectTimeout_ = connect;
  timeout_ = total;
}

std::string SupportClient::Url(const std::string& server, const std::string& path) {
  std::string base = Trimmed(server);
  if (base.empty()) return {};
  if (base.find("://") == std::string::npos) base = "http://" + base;
  while (!base.empty() && base.back() == '/') base.pop_back();
  return base + "/" + path;
}

HttpRequest SupportClient::Request(const char* path) const {
  HttpRequest request;
  request.url = Url(server_, path);
  request.connectTimeout = connectTimeout_;
  request.timeout = timeout_;
  return request;
}

bool SupportClient::Exchange(const HttpRequest& request, bool interactive, std::stop_token stop,
                             Outcome* outcome) const {
  outcome->contacted = true;
  const HttpResponse response = HttpClient::Perform(request, stop);
  if (response.ok() && !response.body.empty() &&
      ServerAnswer::Parse(response.body, &outcome->answer)) {
    return true;
  }
  if (!interactive) return false;
  if (!response.ok()) {
    outcome->detail = response.message;
    // No connection at all, or a connection that brought no answer.
    const bool connect = response.error == HttpError::kConnectFailed ||
                         response.error == HttpError::kBadUrl ||
                         response.error == HttpError::kProtocolRefused;
    outcome->messages.push_back(connect ? kConnectionFailed : kNoResponse);
  } else if (response.body.empty()) {
    outcome->messages.push_back(kNoResponse);
  }
  outcome->messages.push_back(kBadServerAnswer);
  return false;
}

SupportClient::Outcome SupportClient::CheckVersion(bool interactive, std::stop_token stop) const {
  Outcome outcome;
  if (server_.empty()) {
    if (interactive) outcome.messages.push_back(kNoSupportServer);
    return outcome;
  }
  if (!Exchange(Request(kCurrentVersionPath), interactive, stop, &outcome)) return outcome;
  VersionParts offered{};
  if (!ParseVersion(outcome.answer.currentVersion, &offered)) {
    if (interactive) outcome.messages.push_back(kBadServerAnswer);
    return outcome;
  }
  outcome.ok = true;
  const ServerAnswer& a = outcome.answer;
  if (Newer(offered)) {
    outcome.newerVersion = true;
    std::string text = "A newer version of Gorvan (" + a.currentVersion + ") is available!!";
    if (!a.releaseDate.empty()) text += "\nReleased: " + a.releaseDate;
    if (!a.extraInfo.empty()) text += "\n" + a.extraInfo;
    const std::string& where = !a.urlStd.empty() ? a.urlStd : webAddress_;
    if (!where.empty()) text += "\nDownload it from " + where;
    outcome.messages.push_back(text);
  } else if (interactive) {
    outcome.messages.push_back(kLatestVersion);
  }
  return outcome;
}

bool SupportClient::ErrorText(const std::string& logPath, std::string* text) {
  text->clear();
  const int fd = ::open(logPath.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  // The text never needs more than the limit plus one line past it.
  std::string bytes;
  char buffer[16384];
  while (bytes.size() <= kMaxErrorText + kMaxLine) {
    const ssize_t n = ::read(fd, buffer, sizeof buffer);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    bytes.append(buffer, static_cast<size_t>(n));
  }
  ::close(fd);
  if (bytes.empty()) return false;

  size_t pos = 0;
  bool first = true;
  while (pos < bytes.size() && text->size() <= kMaxErrorText) {
    size_t end = bytes.find('\n', pos);
    if (end == std::string::npos) end = bytes.size();
    std::string_view line(bytes.data() + pos, std::min(end - pos, kMaxLine));
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (!first) text->append("||");
    text->append(line);
    first = false;
    pos = end + 1;
  }
  for (char& c : *text) {
    if (c == ' ') c = '_';
  }
  return true;
}

std::vector<FormField> SupportClient::SubmissionForm(const std::string& errorText,
                                                     const std::string& email) {
  std::vector<FormField> form = {
      {"fldError", errorText}, {"fldStdPro", "Std"}, {"fldVersion", VersionNumber()}};
  if (!email.empty()) form.emplace_back("fldEmail", email);
  return form;
}

SupportClient::Outcome SupportClient::SubmitErrorLog(const std::string& logPath,
                                                     const std::string& email, bool interactive,
                                                     std::stop_token stop) const {
  Outcome outcome;
  if (server_.empty()) {
    if (interactive) outcome.messages.push_back(kNoSupportServer);
    return outcome;
  }
  std::string text;
  if (!ErrorText(logPath, &text)) {
    if (interactive) outcome.messages.push_back(kNoErrorLog);
    return outcome;
  }
  HttpRequest request = Request(kSubmitErrorPath);
  request.method = HttpRequest::Method::kPost;
  request.form = SubmissionForm(text, Trimmed(email));
  if (!Exchange(request, interactive, stop, &outcome)) return outcome;

  outcome.ok = true;
  std::string reply = "The error log is sent to the Gorvan support!!\n";
  reply += "Your follow-up ticket number is [" + outcome.answer.ticket + "]\n";
  VersionParts offered{};
  if (ParseVersion(outcome.answer.currentVersion, &offered) && Newer(offered)) {
    outcome.newerVersion = true;
    const std::string& where = !webAddress_.empty() ? webAddress_ : outcome.answer.urlStd;
    reply += "Please note that a newer version (" + outcome.answer.currentVersion +
             ") of Gorvan is avilable for download from our " + where + "\n";
  }
  reply += "Thank you!!";
  outcome.messages.push_back(reply);
  return outcome;
}

std::vector<std::string> SupportClient::SendDialogLines(const std::string& supportEmail) {
  std::vector<std::string> lines = {
      "You can help assisting fix the bugs in Gorvan by sending the ",
      "error report to the Gorvan developers.",
      "This operation will ONLY send error related information. ",
      "If you are uncomfortable sending the error information this way, ",
      "you can copy the contents of the Gorvan.err file and send it via "};
  if (!Trimmed(supportEmail).empty()) lines.push_back(Trimmed(supportEmail));
  lines.insert(lines.end(),
               {"Optionally you can supply your email below to receive a notification ",
                "when this bug is fixed! The email will conform to our privacy policy and ",
                "will be used for the sole purpose of bug fix notification"});
  return lines;
}

}  // namespace gorvan
