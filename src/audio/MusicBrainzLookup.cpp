#include "audio/MusicBrainzLookup.h"

#include <algorithm>
#include <condition_variable>
#include <nlohmann/json.hpp>

#include "audio/DiscId.h"
#include "net/HttpClient.h"

namespace gorvan {
namespace {

using nlohmann::json;

constexpr int kMaxDepth = 64;
constexpr size_t kMaxReleases = 100;

// nlohmann's parser is iterative but deep documents still cost stack when
// they are copied or destroyed; no MusicBrainz answer nests that deep.
bool NestingWithin(std::string_view text, int limit) {
  int depth = 0;
  bool inString = false;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (inString) {
      if (c == '\\')
        ++i;
      else if (c == '"')
        inString = false;
    } else if (c == '"') {
      inString = true;
    } else if (c == '[' || c == '{') {
      if (++depth > limit) return false;
    } else if (c == ']' || c == '}') {
      --depth;
    }
  }
  return true;
}

std::string Text(const json& object, const char* key) {
  if (!object.is_object()) return "";
  const auto it = object.find(key);
  return it != object.end() && it->is_string() ? it->get<std::string>() : "";
}

const json* Array(const json& object, const char* key) {
  if (!object.is_object()) return nullptr;
  const auto it = object.find(key);
  return it != object.end() && it->is_array() ? &*it : nullptr;
}

bool HasDisc(const json& medium, std::string_view mbId) {
  const json* discs = Array(medium, "discs");
  if (!discs || mbId.empty()) return false;
  for (const json& d : *discs) {
    if (Text(d, "id") == mbId) return true;
  }
  return false;
}

size_t TrackCount(const json& medium) {
  if (medium.is_object()) {
    const auto it = medium.find("track-count");
    if (it != medium.end() && it->is_number_unsigned()) return it->get<size_t>();
  }
  const json* tracks = Array(medium, "tracks");
  return tracks ? tracks->size() : 0;
}

}  // namespace

bool MusicBrainzLookup::Spacer::Wait(std::stop_token stop) {
  std::chrono::steady_clock::time_point slot;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    slot = std::max(std::chrono::steady_clock::now(), next_);
    next_ = slot + gap_;
  }
  std::mutex m;
  std::condition_variable_any cv;
  std::unique_lock<std::mutex> lock(m);
  cv.wait_until(lock, stop, slot, [] { return false; });
  return !stop.stop_requested();
}

MusicBrainzLookup::Spacer& MusicBrainzLookup::SharedSpacer() {
  static Spacer spacer(std::chrono::milliseconds(1000));
  return spacer;
}

std::string MusicBrainzLookup::LookupUrl(std::string_view server, const DiscToc& toc) {
  std::string url(server);
  while (!url.empty() && url.back() == '/') url.pop_back();
  url += "/ws/2/discid/" + DiscId::MusicBrainz(toc) + "?toc=" + std::to_string(toc.FirstTrack()) +
         "+" + std::to_string(toc.LastTrack()) + "+" + std::to_string(toc.leadOut);
  for (const TocTrack& t : toc.tracks) url += "+" + std::to_string(t.offset);
  url += "&cdstubs=no&fmt=json&inc=artist-credits+recordings";
  return url;
}

MusicBrainzLookup::Outcome MusicBrainzLookup::ParseAnswer(std::string_view text,
                                                          std::string_view mbId, size_t audioTracks,
                                                          DiscInfo* info, std::string* error) {
  if (!NestingWithin(text, kMaxDepth)) {
    *error = "MusicBrainz's answer nests too deep";
    return Outcome::kFailed;
  }
  const json doc = json::parse(text.begin(), text.end(), nullptr, false);
  if (doc.is_discarded() || !doc.is_object()) {
    *error = "MusicBrainz's answer is not JSON";
    return Outcome::kFailed;
  }
  const json* releases = Array(doc, "releases");
  if (!releases || releases->empty()) return Outcome::kNothing;
  const json* release = nullptr;
  const json* medium = nullptr;
  // Three passes, best match first: the disc id itself, then the track count.
  for (int pass = 0; pass < 3 && !medium; ++pass) {
    for (size_t r = 0; r < releases->size() && r < kMaxReleases && !medium; ++r) {
      const json* media = Array((*releases)[r], "media");
      if (!media) continue;
      for (const json& m : *media) {
        const bool fits = pass == 0   ? HasDisc(m, mbId)
                          : pass == 1 ? TrackCount(m) == audioTracks
                                      : true;
        if (fits) {
          release = &(*releases)[r];
          medium = &m;
          break;
        }
      }
    }
  }
  if (!medium) return Outcome::kNothing;
  info->album = Text(*release, "title");
  info->artist.clear();
  if (const json* credits = Array(*release, "artist-credit")) {
    for (const json& c : *credits) info->artist += Text(c, "name") + Text(c, "joinphrase");
  }
  const std::string date = Text(*release, "date");
  info->year = date.size() >= 4 && std::all_of(date.begin(), date.begin() + 4,
                                               [](char c) { return c >= '0' && c <= '9'; })
                   ? date.substr(0, 4)
                   : "";
  if (const json* tracks = Array(*medium, "tracks")) {
    for (const json& t : *tracks) {
      if (!t.is_object()) continue;
      const auto pos = t.find("position");
      if (pos == t.end() || !pos->is_number_integer()) continue;
      const int64_t p = pos->get<int64_t>();
      if (p < 1 || p > static_cast<int64_t>(info->tracks.size())) continue;
      info->tracks[static_cast<size_t>(p - 1)].title = Text(t, "title");
    }
  }
  return Outcome::kFound;
}

MusicBrainzLookup::Outcome MusicBrainzLookup::Lookup(const DiscToc& toc, std::string_view server,
                                                     std::string_view contact,
                                                     const HttpFetch& fetch, std::stop_token stop,
                                                     DiscInfo* info, std::string* error) {
  const DiscToc session = toc.AudioSession();
  if (!session.Check().ok() || !fetch) {
    *error = "The disc has no table MusicBrainz can look up";
    return Outcome::kFailed;
  }
  if (!SharedSpacer().Wait(stop)) return Outcome::kCancelled;
  HttpRequest request;
  request.url = LookupUrl(server, session);
  request.headers = {"Accept: application/json"};
  request.userAgent = HttpClient::DefaultUserAgent();
  if (!contact.empty()) request.userAgent += " ( " + std::string(contact) + " )";
  const HttpResponse answer = fetch(request, stop);
  if (answer.error == HttpError::kCancelled || stop.stop_requested()) return Outcome::kCancelled;
  if (answer.error != HttpError::kNone) {
    *error = answer.message.empty() ? "UnKnown Error" : answer.message;
    return Outcome::kFailed;
  }
  if (answer.status == 404) return Outcome::kNothing;
  if (answer.status != 200) {
    *error = "MusicBrainz answered HTTP " + std::to_string(answer.status);
    return Outcome::kFailed;
  }
  DiscInfo found = *info;
  const Outcome outcome =
      ParseAnswer(answer.body, DiscId::MusicBrainz(session), session.tracks.size(), &found, error);
  if (outcome != Outcome::kFound) return outcome;
  *info = std::move(found);
  info->source = "musicbrainz";
  return Outcome::kFound;
}

}  // namespace gorvan
