#pragma once
// AudioDisc: what a scan records for an audio CD — no files, but one root
// folder ("\", no name) holding a file record per track (its title as the
// name, the length and number in its extra data), and the album values in the
// disc's extra data.

#include <cstdint>
#include <string>
#include <vector>

#include "catalog/JobControl.h"
#include "catalog/classCd.h"

namespace gorvan {

// One track of an audio disc's list, as the disc lookup supplies it.
struct AudioTrack {
  std::string title;
  std::string length;  // as shown, e.g. "3:45"
};

// The audio disc values the dialog collects for an audio CD.
struct AudioValues {
  std::string album;
  std::string artist;
  std::string category;
  std::string time;
  std::string year;
};

// The disc's extra text: album, artist, category, time and year by their keys.
std::string AudioDiscExtra(const AudioValues& values);

// Appends the root folder and the track files to the disc being built in cd,
// dated now, with the root's totals (size 0, counts of the tracks). Stops
// early when the job's stop is asked. *written receives the tracks written.
// False when the catalog failed (its error says why).
bool WriteAudioTracks(classCd& cd, const std::vector<AudioTrack>& tracks, JobControl& job,
                      int32_t* written);

}  // namespace gorvan
