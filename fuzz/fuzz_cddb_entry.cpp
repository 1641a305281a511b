// The FreeDB entry parser on arbitrary answers: whatever the bytes, parsing
// keeps the track list at the size the table gave, and no text grows beyond
// the answer it came from.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "audio/AudioText.h"
#include "audio/FreeDbParser.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const std::string answer =
      gorvan::AudioText::ToUtf8(std::string_view(reinterpret_cast<const char*>(data), size));
  gorvan::DiscInfo info;
  info.tracks.resize(size % 100);
  const bool parsed = gorvan::FreeDbParser::ParseEntry(answer, {" - ", " by "}, &info);
  if (parsed != (gorvan::FreeDbParser::StatusOf(answer) == 210)) std::abort();
  if (info.tracks.size() != size % 100) std::abort();
  // "\n" becomes two bytes, so notes may double; nothing else may grow.
  const size_t bound = answer.size();
  if (info.artist.size() > bound || info.album.size() > bound || info.genre.size() > bound ||
      info.notes.size() > 2 * bound) {
    std::abort();
  }
  for (const gorvan::DiscTrack& t : info.tracks) {
    if (t.title.size() > bound) std::abort();
  }
  return 0;
}
