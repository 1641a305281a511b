#include "audio/DiscInfo.h"

#include <cstdio>

namespace gorvan {

std::string SecondsToTimeString(int64_t seconds) {
  if (seconds < 0) seconds = 0;
  char text[32];
  std::snprintf(text, sizeof text, "%lld:%02d", static_cast<long long>(seconds / 60),
                static_cast<int>(seconds % 60));
  return text;
}

}  // namespace gorvan
