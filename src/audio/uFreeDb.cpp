#include "audio/uFreeDb.h"

#include <algorithm>

#include "audio/AudioText.h"
#include "audio/DiscId.h"
#include "audio/LocalFreeDb.h"
#include "audio/OpticalDrives.h"
#include "audio/TocReader.h"

namespace gorvan {
namespace {

#define GORVAN_STR2(x) #x
#define GORVAN_STR(x) GORVAN_STR2(x)
constexpr const char* kVersion = GORVAN_STR(GORVAN_VERSION_MAJOR) "." GORVAN_STR(
    GORVAN_VERSION_MINOR) "." GORVAN_STR(GORVAN_VERSION_REVISION);

// A word of a CDDB command: "+" separates the words, so everything but
// letters, digits and "-._~" is escaped.
std::string Escape(std::string_view word) {
  static const char kHex[] = "0123456789ABCDEF";
  std::string out;
  for (unsigned char c : word) {
    if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
        c == '.' || c == '_' || c == '~') {
      out += static_cast<char>(c);
    } else {
      out += '%';
      out += kHex[c >> 4];
      out += kHex[c & 15];
    }
  }
  return out;
}

std::string BlanksToUnderscores(std::string_view text) {
  std::string out(AudioText::Trim(text));
  for (char& c : out) {
    if (c == ' ') c = '_';
  }
  return out;
}

// The first line of a text, cut to a length that fits a message.
std::string FirstLine(std::string_view text) {
  std::string line(AudioText::Trim(text.substr(0, text.find('\n'))));
  if (line.size() > 120) line = line.substr(0, 117) + "...";
  return line;
}

}  // namespace

uFreeDb::uFreeDb() : appVersion_(kVersion), fetch_(DefaultHttpFetch()), opener_(&CdDevice::Open) {}

void uFreeDb::Configure(const FreeDbSettings& settings) {
  cddbServer_ = settings.url;
  emailAddress_ = settings.email;
  cddbFilePath_ = settings.databasePath;
  protocolLevel_ = settings.protocolLevel;
  rules_.artistBeforeIf = settings.artistBeforeIf;
  rules_.artistAfterIf = settings.artistAfterIf;
  matchChoice_ = settings.match;
}

std::string uFreeDb::GetMediaTOC(const std::string& drive) {
  std::string error;
  if (!TocReader::ReadWithMode(cddbInterface_, drive, opener_, &lastToc_, &error)) return "";
  return lastToc_.Contents();
}

std::string uFreeDb::CalMediaID(std::string_view contents) { return DiscId::FreeDb(contents); }

std::string uFreeDb::GetMediaID(const std::string& drive) { return OpticalDrives::MediaId(drive); }

std::string uFreeDb::GetTrackName(int track) const {
  if (track < 1 || track > GetAlbumTracks()) return "";
  return info_.tracks[static_cast<size_t>(track - 1)].title;
}

int32_t uFreeDb::GetTrackTime(int track) const {
  if (track < 1 || track > GetAlbumTracks()) return 0;
  return info_.tracks[static_cast<size_t>(track - 1)].seconds;
}

void uFreeDb::Raise(int number, std::string text) {
  errNumber_ = number;
  errDesc_ = std::move(text);
  if (errorEvent_) errorEvent_(errNumber_, errDesc_);
}

bool uFreeDb::LookupMediaByToc(std::string_view contents, std::stop_token stop) {
  info_ = DiscInfo();
  const std::string_view trimmed = AudioText::Trim(contents);
  if (trimmed.find(' ') == std::string_view::npos) return false;
  DiscToc toc;
  std::string error;
  if (!DiscToc::FromContents(trimmed, &toc, &error)) {
    Raise(kErrToc, error);
    return false;
  }
  return LookupMediaByToc(toc, stop);
}

bool uFreeDb::LookupMediaByToc(const DiscToc& toc, std::stop_token stop) {
  info_ = DiscInfo();
  matches_.clear();
  errNumber_ = 0;
  errDesc_.clear();
  if (toc.tracks.empty()) return false;
  std::string error;
  if (!BaseRecord(toc, &info_, &error)) {
    Raise(kErrToc, error);
    return false;
  }
  if (stop.stop_requested()) return false;
  return queryLocalDatabase_ ? LookupLocal(stop) : LookupRemote(toc, stop);
}

bool uFreeDb::BaseRecord(const DiscToc& toc, DiscInfo* info, std::string* error) {
  *info = DiscInfo();
  if (const Status s = toc.Check(); !s.ok()) {
    *error = s.message();
    return false;
  }
  info->discId = DiscId::FreeDb(toc);
  info->albumSeconds = toc.AlbumSeconds();
  info->tracks.resize(toc.tracks.size());
  for (int i = 0; i < toc.TrackCount(); ++i) {
    info->tracks[static_cast<size_t>(i)].seconds = toc.TrackSeconds(i);
  }
  return true;
}

bool uFreeDb::LookupLocal(std::stop_token stop) {
  std::vector<LocalFreeDb::Match> matches;
  const Status s = LocalFreeDb::Find(cddbFilePath_, info_.discId, stop, &matches);
  if (s.IsNotFound()) Raise(kErrLocalFolder, s.message());
  if (!s.ok()) return false;
  const QueryAnswer query =
      FreeDbParser::ParseQueryAnswer(LocalFreeDb::QueryAnswerFor(matches, info_.discId));
  if (query.matches.empty()) return false;
  matches_ = query.matches;
  const std::string& category = ChosenMatch().category;
  for (const LocalFreeDb::Match& m : matches) {
    if (m.category != category) continue;
    if (!ReadEntry(LocalFreeDb::ReadAnswerFor(m, info_.discId), category)) return false;
    info_.source = "local";
    return true;
  }
  return false;
}

std::string uFreeDb::BaseUrl() const {
  std::string server(AudioText::Trim(cddbServer_));
  if (server.empty()) server = FreeDbSettings::kDefaultServer;
  if (!AudioText::StartsWithNoCase(server, "http://") &&
      !AudioText::StartsWithNoCase(server, "https://")) {
    server = "http://" + server;
  }
  while (server.back() == '/') server.pop_back();
  if (server.find("cddb.cgi") == std::string::npos) server += "/~cddb/cddb.cgi";
  return server + "?cmd=";
}

bool uFreeDb::HelloSuffix(std::string* suffix) {
  std::string user = "anonymous";
  std::string host = "localhost";
  const std::string_view email = AudioText::Trim(emailAddress_);
  if (!email.empty()) {
    const size_t at = email.find('@');
    if (at == std::string_view::npos || at == 0 || at + 1 == email.size() ||
        email.find('@', at + 1) != std::string_view::npos) {
      Raise(kErrEmail, "Missing or Malformed Email address");
      return false;
    }
    user = std::string(email.substr(0, at));
    host = std::string(email.substr(at + 1));
  }
  *suffix = "&hello=" + Escape(user) + "+" + Escape(host) + "+" +
            Escape(BlanksToUnderscores(appName_)) + "+" + Escape(BlanksToUnderscores(appVersion_)) +
            "&proto=" + std::to_string(protocolLevel_);
  return true;
}

std::string uFreeDb::QueryCommand(const DiscToc& toc) const {
  std::string command =
      "cddb+query+" + DiscId::FreeDb(toc) + "+" + std::to_string(toc.TrackCount());
  for (const TocTrack& t : toc.tracks) command += "+" + std::to_string(t.offset);
  command += "+" + std::to_string(toc.leadOut / DiscToc::kFramesPerSecond);
  return command;
}

bool uFreeDb::Fetch(const std::string& command, std::stop_token stop, std::string* text) {
  std::string hello;
  if (!HelloSuffix(&hello)) return false;
  HttpRequest request;
  request.url = BaseUrl() + command + hello;
  if (!fetch_) {
    Raise(kErrNetwork, "UnKnown Error");
    return false;
  }
  const HttpResponse answer = fetch_(request, stop);
  if (answer.error == HttpError::kCancelled || stop.stop_requested()) return false;
  if (answer.error != HttpError::kNone) {
    Raise(kErrNetwork, answer.message.empty() ? "UnKnown Error" : answer.message);
    return false;
  }
  if (answer.status != 200) {
    std::string message = "The server answered HTTP " + std::to_string(answer.status);
    const std::string line = FirstLine(AudioText::ToUtf8(answer.body));
    if (FreeDbParser::StatusOf(line) != 0) message += ": " + line;
    Raise(kErrServer, message);
    return false;
  }
  *text = AudioText::ToUtf8(answer.body);
  return true;
}

void uFreeDb::RaiseForStatus(int status, const std::string& statusLine) {
  if (status >= 400) {
    Raise(kErrServer, statusLine);
  } else {
    Raise(kErrAnswer, "The server gave an unexpected answer: " + FirstLine(statusLine));
  }
}

bool uFreeDb::LookupRemote(const DiscToc& toc, std::stop_token stop) {
  std::string text;
  if (!Fetch(QueryCommand(toc), stop, &text)) return false;
  const QueryAnswer query = FreeDbParser::ParseQueryAnswer(text);
  if (query.matches.empty()) {
    // 202 and a list without a match line mean nothing found.
    if (query.status != 202 && query.status != 210 && query.status != 211 && query.status != 200) {
      RaiseForStatus(query.status, query.statusLine);
    }
    return false;
  }
  matches_ = query.matches;
  const QueryMatch& match = ChosenMatch();
  if (!Fetch("cddb+read+" + Escape(match.category) + "+" + Escape(match.discId), stop, &text)) {
    return false;
  }
  const int status = FreeDbParser::StatusOf(text);
  if (status == 401 && text.find(" No such CD entry") != std::string::npos) return false;
  if (status != 210) {
    RaiseForStatus(status, FirstLine(text));
    return false;
  }
  if (!ReadEntry(text, match.category)) return false;
  info_.source = "freedb";
  return true;
}

const QueryMatch& uFreeDb::ChosenMatch() const {
  return matches_[std::min(matchChoice_, matches_.size() - 1)];
}

bool uFreeDb::ReadEntry(const std::string& readAnswer, const std::string& category) {
  if (!FreeDbParser::ParseEntry(readAnswer, rules_, &info_)) return false;
  info_.category = category;
  return true;
}

bool uFreeDb::GetServerSites(std::stop_token stop) {
  sites_.clear();
  errNumber_ = 0;
  errDesc_.clear();
  std::string text;
  if (!Fetch("sites", stop, &text)) return false;
  const int status = FreeDbParser::StatusOf(text);
  if (status != 210) {
    RaiseForStatus(status, FirstLine(text));
    return false;
  }
  sites_ = FreeDbParser::ParseSites(text);
  return true;
}

std::string uFreeDb::GetServer(int index) const {
  if (index < 1 || index > static_cast<int>(sites_.size())) return "";
  return sites_[static_cast<size_t>(index - 1)].Site();
}

}  // namespace gorvan
