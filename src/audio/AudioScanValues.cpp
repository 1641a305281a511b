#include "audio/AudioScanValues.h"

#include <cstdio>

#include "audio/AudioText.h"

namespace gorvan {

AudioScanValues AudioScanValues::From(const DiscToc& toc, const DiscInfo* found) {
  AudioScanValues v;
  if (found) {
    v.album = found->album;
    v.artist = found->artist;
    v.category = found->category;
    v.year = found->year;
  }
  if (!toc.Check().ok()) return v;
  v.time = SecondsToTimeString(toc.AlbumSeconds());
  for (int i = 0; i < toc.TrackCount(); ++i) {
    Track t;
    if (found && static_cast<size_t>(i) < found->tracks.size()) {
      t.title = std::string(AudioText::Trim(found->tracks[static_cast<size_t>(i)].title));
    }
    if (t.title.empty()) {
      char name[24];
      std::snprintf(name, sizeof name, "Track %02d", i + 1);
      t.title = name;
    }
    t.length = SecondsToTimeString(toc.TrackSeconds(i));
    v.tracks.push_back(std::move(t));
  }
  return v;
}

}  // namespace gorvan
