#pragma once
// DiscLookup: the lookup of an audio disc as the settings ask for it — the
// local FreeDB folder first ("FreeDbUseDatabase"), then the FreeDB server
// ("FreeDbUseUrl"), then MusicBrainz ("MusicBrainzEnabled") while nothing is
// found; nothing at all unless "FreeDbEnabled". This is what the scan dialog
// and `gorvan-cli cddb` run, on a worker thread in the desktop program.

#include <functional>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

#include "audio/DiscInfo.h"
#include "audio/DiscToc.h"
#include "audio/FreeDbParser.h"
#include "audio/FreeDbSettings.h"
#include "audio/HttpFetch.h"

namespace gorvan {

struct DiscLookupResult {
  bool found = false;
  bool cancelled = false;
  // Always the disc id, album length and track lengths of a valid table; the
  // texts when found.
  DiscInfo info;
  // Every error raised on the way (number, text), in order; a later source may
  // still have found the disc.
  std::vector<std::pair<int, std::string>> errors;
  // The FreeDB matches of the query that found the disc (the one read is
  // settings.match); empty when FreeDB found nothing.
  std::vector<QueryMatch> matches;
};

class DiscLookup {
 public:
  static constexpr int kErrMusicBrainz = 8887;

  // Status lines for the dialog: "Querying Local FreeDb Database",
  // "Contacting <server> Server", "Contacting MusicBrainz Server".
  using StatusFn = std::function<void(const std::string& line)>;

  static DiscLookupResult Run(const FreeDbSettings& settings, const DiscToc& toc,
                              const HttpFetch& fetch, std::stop_token stop,
                              const StatusFn& status = {});
};

}  // namespace gorvan
