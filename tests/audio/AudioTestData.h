#pragma once
// Helpers shared by the audio tests: the real CDDB material in the shared test
// data, and tables of contents built from offsets.

#include <string>
#include <vector>

#include "audio/DiscToc.h"
#include "support/TempDir.h"

namespace gorvan::test {

inline std::string SharedCddb(const std::string& name) {
  return std::string(GORVAN_SHARED_TESTDATA) + "/cddb/" + name;
}

// The file's bytes, or "" when the shared test data is absent.
inline std::string ReadShared(const std::string& name) { return ReadFileBytes(SharedCddb(name)); }

// Tracks 1..n at `offsets`, all audio, with `leadOut`.
inline DiscToc MakeToc(const std::vector<int32_t>& offsets, int32_t leadOut) {
  DiscToc toc;
  for (size_t i = 0; i < offsets.size(); ++i) {
    toc.tracks.push_back({static_cast<int>(i + 1), offsets[i], 0});
  }
  toc.leadOut = leadOut;
  return toc;
}

// The 10-track disc with the published ids 830abf0a and Wn8eRBtfLDfM0qjYPdxrz.Zjs_U-.
inline DiscToc TenTrackDisc() {
  return MakeToc({150, 18901, 39738, 59557, 79152, 100126, 124833, 147278, 166336, 182560}, 206535);
}

// The 13-track disc a80efa0d of the 2015 HTTP transcript (3836 seconds).
inline DiscToc InExtremoDisc() {
  return MakeToc({150, 20398, 35018, 51204, 70562, 88773, 107150, 121419, 139002, 158387, 174993,
                  192091, 220888},
                 3836 * 75);
}

}  // namespace gorvan::test
