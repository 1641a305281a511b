#pragma once
// MusicBrainzLookup: asks the MusicBrainz web service for a disc by its
// MusicBrainz id and table of contents ("/ws/2/discid/<id>?toc=..."). When the
// id is unknown the service matches the table of contents loosely and lists
// the releases whose track lengths fit. The answer (JSON) fills the same
// result record as a FreeDB lookup: artist, album, year and track titles; the
// track lengths stay the table's own.
//
// The service allows one request a second from a client: every lookup in the
// process waits for its turn (interrupted by the stop token).

#include <chrono>
#include <mutex>
#include <stop_token>
#include <string>
#include <string_view>

#include "audio/DiscInfo.h"
#include "audio/DiscToc.h"
#include "audio/HttpFetch.h"

namespace gorvan {

class MusicBrainzLookup {
 public:
  enum class Outcome { kFound, kNothing, kFailed, kCancelled };

  // Spaces requests at least `gap` apart: each caller reserves the next free
  // slot and sleeps until it comes.
  class Spacer {
   public:
    explicit Spacer(std::chrono::milliseconds gap) : gap_(gap) {}
    // True when the slot came; false when `stop` was requested first.
    bool Wait(std::stop_token stop);

   private:
    std::chrono::milliseconds gap_;
    std::mutex mutex_;
    std::chrono::steady_clock::time_point next_{};
  };

  // The request URL for a table (callers pass DiscToc::AudioSession()):
  // server + "/ws/2/discid/" + id + "?toc=" + first, last, lead-out and the
  // track starts joined by "+", then "&cdstubs=no&fmt=json&inc=artist-credits+recordings".
  static std::string LookupUrl(std::string_view server, const DiscToc& toc);

  // Reads a discid answer into *info (whose track list the caller sized).
  // The medium taken is the first one that carries the disc id `mbId`, else
  // the first with `audioTracks` tracks, else the first of the first release;
  // its track at position p titles info->tracks[p - 1].
  // kFound on success; kNothing for an answer without a release or medium;
  // kFailed, with *error set, for text that is not a JSON object or nests
  // deeper than 64 levels (refused unread).
  static Outcome ParseAnswer(std::string_view json, std::string_view mbId, size_t audioTracks,
                             DiscInfo* info, std::string* error);

  // The lookup of `toc` (its audio session is what is asked for), with the
  // track list of *info already sized by the caller. `contact` goes into the
  // User-Agent as the service asks ("Gorvan/1.0.1 ( ann@example.org )").
  // kFailed leaves the reason in *error; 404 is kNothing.
  static Outcome Lookup(const DiscToc& toc, std::string_view server, std::string_view contact,
                        const HttpFetch& fetch, std::stop_token stop, DiscInfo* info,
                        std::string* error);

  // The spacer every Lookup in the process shares (one second).
  static Spacer& SharedSpacer();
};

}  // namespace gorvan
