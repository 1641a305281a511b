// The FreeDB query-answer and site-list parsers on arbitrary answers: a match
// always has a category and an id, the match list stays bounded, and a site
// line never has more than 15 fields.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "audio/FreeDbParser.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const std::string_view answer(reinterpret_cast<const char*>(data), size);
  const gorvan::QueryAnswer q = gorvan::FreeDbParser::ParseQueryAnswer(answer);
  if (q.matches.size() > gorvan::FreeDbParser::kMaxMatches) std::abort();
  if (!q.matches.empty() && q.status != 200 && q.status != 210 && q.status != 211) std::abort();
  for (const gorvan::QueryMatch& m : q.matches) {
    if (m.category.empty() || m.discId.empty()) std::abort();
  }
  for (const gorvan::FreeDbSite& s : gorvan::FreeDbParser::ParseSites(answer)) {
    if (s.fields.empty() || s.fields.size() > 15) std::abort();
    if (s.ChooserText().size() > size + 2 * 15) std::abort();
  }
  return 0;
}
