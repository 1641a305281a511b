// Fuzzes the search pattern language: arbitrary bytes as the search text go
// through classification, translation, preparation and the field test on a
// few texts, in every option combination the first byte selects.
//
// Input: byte 0 = options (bit 0 case-sensitive, bits 1-2 match mode 0..3,
// bits 3-6 the four fields), the rest = the search text. The search text is
// also tested as a field.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "search/SearchCriteria.h"
#include "search/basRegExp.h"

namespace {

void Check(bool ok) {
  if (!ok) {
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) {
    return 0;
  }
  // One criteria object for the whole run, as a search walk keeps one.
  static gorvan::SearchCriteria criteria;
  static bool created = false;
  if (!created) {
    criteria.CreateMatcher();
    created = true;
  }

  const uint8_t flags = data[0];
  const std::string_view text(reinterpret_cast<const char*>(data + 1), size - 1);

  const bool isPattern = gorvan::basRegExp::IsPatternSearch(text);
  criteria.PrepareSearch(text, (flags & 1) != 0, (flags & 8) != 0, (flags & 16) != 0,
                         (flags & 32) != 0, (flags & 64) != 0,
                         static_cast<gorvan::MatchMode>((flags >> 1) & 3), "All");

  Check(criteria.UseRegExp() == isPattern);
  if (!isPattern) {
    Check(criteria.Pattern() == text);
  } else if (criteria.RegExp().TranslationError()) {
    Check(criteria.Pattern().empty());
  }

  // The empty expression (unbalanced brackets, "**") matches every field
  // tested; the expression of an oversized translation matches none, and so
  // does a search with no field chosen.
  const bool someField = (flags & 0x78) != 0;
  const bool matchesAll = isPattern && criteria.Pattern().empty() && someField;
  const bool matchesNone =
      !someField || (isPattern && criteria.Pattern() == gorvan::basRegExp::kNeverMatches);

  static const std::string_view kFields[] = {
      "",
      "cat and dog.mp3",
      "Report 2004-05 (final).pdf",
      "caf\xE9 au lait",                 // a raw Latin-1 name
      "\xC3\x84rger \xC3\xA9t\xC3\xA9",  // UTF-8
      "Genre\r\nArtist\r\nAlbum",
      "\xC3",  // a cut UTF-8 sequence
  };
  for (std::string_view field : kFields) {
    const bool match = criteria.FieldsMatch(field, field, field, field);
    if (matchesAll) Check(match);
    if (matchesNone) Check(!match);
  }
  const bool self = criteria.FieldsMatch(text, "", text, text);
  if (matchesNone) Check(!self);

  // The translation steps are public on their own too.
  gorvan::basRegExp translator;
  translator.TranslateGroups(text);
  translator.TranslateOrAnd(text);
  gorvan::basRegExp::TranslateTerm(text);
  return 0;
}
