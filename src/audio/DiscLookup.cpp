#include "audio/DiscLookup.h"

#include "audio/AudioText.h"
#include "audio/MusicBrainzLookup.h"
#include "audio/uFreeDb.h"

namespace gorvan {

DiscLookupResult DiscLookup::Run(const FreeDbSettings& settings, const DiscToc& toc,
                                 const HttpFetch& fetch, std::stop_token stop,
                                 const StatusFn& status) {
  DiscLookupResult result;
  std::string error;
  if (!uFreeDb::BaseRecord(toc, &result.info, &error)) {
    result.errors.emplace_back(uFreeDb::kErrToc, error);
    return result;
  }
  if (!settings.enabled) return result;
  auto say = [&status](const std::string& line) {
    if (status) status(line);
  };
  uFreeDb db;
  db.Configure(settings);
  db.SetHttpFetch(fetch);
  db.SetErrorEvent(
      [&result](int number, const std::string& text) { result.errors.emplace_back(number, text); });
  if (settings.useDatabase && !stop.stop_requested()) {
    say("Querying Local FreeDb Database");
    db.SetQueryLocalDatabase(true);
    result.found = db.LookupMediaByToc(toc, stop);
  }
  if (settings.useUrl && !result.found && !stop.stop_requested()) {
    const std::string_view server = AudioText::Trim(settings.url);
    say("Contacting " + std::string(server.empty() ? FreeDbSettings::kDefaultServer : server) +
        " Server");
    db.SetQueryLocalDatabase(false);
    result.found = db.LookupMediaByToc(toc, stop);
  }
  if (result.found) {
    result.info = db.Info();
    result.matches = db.Matches();
  } else if (settings.musicBrainz && !stop.stop_requested()) {
    say("Contacting MusicBrainz Server");
    DiscInfo info = result.info;
    switch (MusicBrainzLookup::Lookup(toc, settings.musicBrainzServer,
                                      AudioText::Trim(settings.email), fetch, stop, &info,
                                      &error)) {
      case MusicBrainzLookup::Outcome::kFound:
        result.found = true;
        result.info = std::move(info);
        break;
      case MusicBrainzLookup::Outcome::kFailed:
        result.errors.emplace_back(kErrMusicBrainz, error);
        break;
      case MusicBrainzLookup::Outcome::kNothing:
      case MusicBrainzLookup::Outcome::kCancelled:
        break;
    }
  }
  result.cancelled = stop.stop_requested();
  return result;
}

}  // namespace gorvan
