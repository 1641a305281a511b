#pragma once
// ExtraData: the keyed list of extra values of a disc, folder or file. Elements
// are joined by "|`|"; each is a two-letter key followed by its value. Keys are
// known by a 0-based index into a fixed table ("AA" = 0 ... "IF" = 26).

#include <string>
#include <string_view>

namespace gorvan {

inline constexpr std::string_view kExtraSeparator = "|`|";

enum ExtraIndex : int {
  kExtraAudioAlbum = 0,      // "AA"
  kExtraTrackNumber = 1,     // "AN"
  kExtraTrackLength = 2,     // "AL"
  kExtraAudioArtist = 3,     // "AR"
  kExtraAudioCategory = 4,   // "AC"
  kExtraAudioTime = 5,       // "AM"
  kExtraAudioYear = 6,       // "AY"
  kExtraMp3Album = 7,        // "MA"
  kExtraMp3Artist = 8,       // "MR"
  kExtraMp3Year = 9,         // "MY"
  kExtraMp3Title = 10,       // "MT"
  kExtraMp3Comment = 11,     // "MC"
  kExtraT1 = 13,             // "T1"; "T2".."T9" follow
  kExtraCount = 27,
};

// The key of an index, or "" for an index outside the table.
std::string_view ExtraKey(int index);

// The list with the value of index set, following the catalog's rules: bare
// keys are never matched again, an empty value drops the element, a missing
// key is appended even with an empty value, an unknown index changes nothing.
std::string SetExtraValue(std::string_view list, int index, std::string_view value);

// The value of index: the rest of the first element that begins with its key;
// "" when the key is missing or the index is outside the table.
std::string GetExtraValue(std::string_view list, int index);

}  // namespace gorvan
