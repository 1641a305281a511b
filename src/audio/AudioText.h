#pragma once
// AudioText: the small text helpers the audio-disc code shares — trimming,
// line splitting of server answers and database files, bounded decimal
// numbers, and the reading of outside text as UTF-8 with a Latin-1 fallback.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace gorvan {

class AudioText {
 public:
  // The text without leading and trailing blanks, tabs, CR and LF.
  static std::string_view Trim(std::string_view text);

  // Lines split at LF with a trailing CR removed, so CR LF and LF files read
  // alike. A final line without a line end counts; an empty text has no lines.
  static std::vector<std::string_view> SplitLines(std::string_view text);

  // A decimal number of 1 to 9 digits and nothing else. On success: true and
  // *value set. On failure (empty, a sign, another character, too long): false.
  static bool ParseDecimal(std::string_view text, int64_t* value);

  // Outside text as UTF-8: valid UTF-8 stays as it is; anything else is read
  // as Latin-1 (with Windows-1252's printable characters in 0x80-0x9F, as
  // Windows clients wrote them) and converted.
  static std::string ToUtf8(std::string_view bytes);

  // True when `text` starts with `prefix`, ASCII letters compared without case.
  static bool StartsWithNoCase(std::string_view text, std::string_view prefix);
};

}  // namespace gorvan
