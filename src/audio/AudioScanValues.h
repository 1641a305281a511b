#pragma once
// AudioScanValues: what the scan records for an audio CD, from a lookup's
// result or from the bare table of contents of a disc nobody knows — the
// album values of the dialog's audio tab and one title and length per track.

#include <string>
#include <vector>

#include "audio/DiscInfo.h"
#include "audio/DiscToc.h"

namespace gorvan {

struct AudioScanValues {
  struct Track {
    std::string title;   // the looked-up title, else "Track 01", "Track 02", ...
    std::string length;  // "m:ss"
  };

  std::string album;
  std::string artist;
  std::string category;
  std::string time;  // the album's length, "m:ss"
  std::string year;
  std::vector<Track> tracks;

  // The values for a disc with table `toc`; `found` is the lookup's result or
  // nullptr when nothing was found. Lengths always come from the table. A
  // found title that is blank gives the track its "Track NN" name. A table
  // that fails DiscToc::Check() gives no tracks and no time.
  static AudioScanValues From(const DiscToc& toc, const DiscInfo* found);
};

}  // namespace gorvan
