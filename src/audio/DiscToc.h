#pragma once
// DiscToc: the table of contents of an audio CD — where each track starts,
// whether it holds audio or data, and where the lead-out begins. Offsets are
// absolute frames (75 a second) counted from the start of the disc, the
// two-second lead-in included, so a first track normally starts at 150.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "catalog/Status.h"

namespace gorvan {

struct TocTrack {
  int number = 0;       // 1..99
  int32_t offset = 0;   // absolute start frame
  uint8_t control = 0;  // Q sub-channel control bits; 0x04 marks a data track
  bool IsAudio() const { return (control & 0x04) == 0; }
};

struct DiscToc {
  static constexpr int kFramesPerSecond = 75;
  static constexpr int kMaxTracks = 99;
  static constexpr int32_t kLeadIn = 150;
  // The gap a multi-session disc leaves between its audio session's lead-out
  // and the data track of the next session.
  static constexpr int32_t kSessionGap = 11400;

  std::vector<TocTrack> tracks;
  int32_t leadOut = 0;

  // A contents string "150 18265 250912" (track starts, then the lead-out,
  // separated by blanks): tracks numbered from 1, all audio.
  // On success: true. On failure (no value, a value that is not a decimal
  // number of at most nine digits): false and *error says why. The order of the
  // values is not checked here; Check() does that.
  static bool FromContents(std::string_view contents, DiscToc* toc, std::string* error);

  // OK for a table a disc can have: 1 to 99 tracks numbered consecutively, the
  // first offset not negative, offsets strictly increasing and the lead-out
  // after the last track. Otherwise InvalidArgument with the reason.
  Status Check() const;

  // The contents string: every track start in track order and the lead-out,
  // separated by single blanks. "" for a table without tracks.
  std::string Contents() const;

  int TrackCount() const { return static_cast<int>(tracks.size()); }
  int FirstTrack() const { return tracks.empty() ? 0 : tracks.front().number; }
  int LastTrack() const { return tracks.empty() ? 0 : tracks.back().number; }
  int AudioTrackCount() const;
  bool HasDataTrack() const { return AudioTrackCount() != TrackCount(); }

  // Length of the track at index i (0-based) in whole seconds: the frames to
  // the next track's start (the lead-out after the last one) divided by 75,
  // truncated. 0 for an index outside the table or a gap that goes backwards.
  int32_t TrackSeconds(int i) const;
  // The disc's playing time in whole seconds: lead-out seconds minus first
  // track seconds, each truncated before the subtraction.
  int32_t AlbumSeconds() const;

  // The table as MusicBrainz sees the disc: an enhanced CD's trailing data
  // tracks are left out and its audio session ends 11400 frames before the
  // first of them. Other tables are returned as they are.
  DiscToc AudioSession() const;
};

}  // namespace gorvan
