#pragma once
// DiscId: the two disc ids an audio CD is looked up by.
//
// FreeDB/CDDB id: eight lower-case hex digits, (n mod 255) << 24 | t << 8 |
// tracks, where every offset is first truncated to whole seconds, n is the sum
// of the decimal digit sums of the track starts' seconds and t the lead-out's
// seconds minus the first track's.
//
// MusicBrainz id: the SHA-1 of the first and last track numbers ("%02X"), the
// lead-out and the starts of tracks 1 to 99 ("%08X", 0 where there is no
// track), in base64 with "+", "/" and "=" written as ".", "_" and "-".

#include <string>
#include <string_view>

namespace gorvan {

struct DiscToc;

class DiscId {
 public:
  // The FreeDB id of a contents string ("150 18265 250912" -> "0b0d0f02").
  // The string is trimmed and split at blanks into at most 100 pieces, so at
  // most 99 tracks count; the 100th piece is then the lead-out.
  // "" when the string is empty or holds a single value, when a piece is not a
  // decimal number, or when the lead-out's seconds lie before the first
  // track's or more than 0xFFFF seconds after it.
  static std::string FreeDb(std::string_view contents);

  // The FreeDB id of a table (every track counts, data tracks too); "" for a
  // table without tracks.
  static std::string FreeDb(const DiscToc& toc);

  // The 28-character MusicBrainz id of a table, as given (callers pass
  // DiscToc::AudioSession() for a disc that may be an enhanced CD). "" for a
  // table that fails DiscToc::Check().
  static std::string MusicBrainz(const DiscToc& toc);
};

}  // namespace gorvan
