#pragma once
// DiscInfo: what a lookup found about an audio disc — the record the FreeDB
// lookup (local or remote) and the MusicBrainz lookup both fill, and the scan
// dialog shows.

#include <cstdint>
#include <string>
#include <vector>

namespace gorvan {

struct DiscTrack {
  std::string title;
  int32_t seconds = 0;  // from the table of contents
};

struct DiscInfo {
  std::string discId;    // FreeDB id, 8 lower-case hex digits
  std::string category;  // FreeDB category ("rock", ...); "" for MusicBrainz
  std::string artist;
  std::string album;
  std::string genre;
  std::string year;
  std::string notes;  // line breaks as CR LF
  std::string revision;
  std::string source;  // "local", "freedb" or "musicbrainz"
  int32_t albumSeconds = 0;
  std::vector<DiscTrack> tracks;
};

// Seconds as minutes, ":" and two-digit seconds: 225 -> "3:45", 3836 ->
// "63:56". Negative values read as 0.
std::string SecondsToTimeString(int64_t seconds);

}  // namespace gorvan
