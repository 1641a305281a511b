// The support server's answer: the parser and the version check never crash,
// and an accepted answer's elements hold no markup.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "app/ServerAnswer.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  gorvan::ServerAnswer answer;
  if (gorvan::ServerAnswer::Parse(text, &answer)) {
    for (const std::string* s : {&answer.currentVersion, &answer.releaseDate, &answer.extraInfo,
                                 &answer.ticket, &answer.urlStd, &answer.urlPro}) {
      if (s->find('<') != std::string::npos) std::abort();
    }
    gorvan::VersionParts parts{};
    gorvan::ParseVersion(answer.currentVersion, &parts);
  }
  gorvan::VersionParts parts{};
  if (gorvan::ParseVersion(text, &parts) && (parts[0] < 0 || parts[1] < 0 || parts[2] < 0)) {
    std::abort();
  }
  return 0;
}
