#pragma once
// TextCodec: the catalog's text encoding. Program-internal text is UTF-8.
// Catalogs created by this program hold UTF-8 (marked in the header); older
// catalogs hold Windows-1252 bytes. Converting UTF-8 to Windows-1252 stores "?"
// for a character the code page cannot hold and counts it, so the caller can
// warn the user.

#include <cstddef>
#include <string>
#include <string_view>

namespace gorvan {

enum class TextEncoding { kWindows1252, kUtf8 };

class TextCodec {
 public:
  // Windows-1252 bytes to UTF-8. Total: every byte maps to a character.
  static void Windows1252ToUtf8(std::string_view in, std::string* out);
  // UTF-8 to Windows-1252. Characters outside the code page become "?" and are
  // counted in the result. Bytes that are not valid UTF-8 (a raw file name from
  // a legacy file system) are kept as they are: they most likely are 8-bit text
  // already.
  static size_t Utf8ToWindows1252(std::string_view in, std::string* out);
  // Text as stored in a catalog of the given encoding, converted to UTF-8.
  static void Decode(TextEncoding enc, std::string_view stored, std::string* out);
  // UTF-8 text as a catalog of the given encoding stores it; returns the number
  // of characters replaced by "?".
  static size_t Encode(TextEncoding enc, std::string_view text, std::string* out);
  // True when the bytes are well-formed UTF-8.
  static bool IsValidUtf8(std::string_view text);
  // The text with every invalid UTF-8 sequence replaced by U+FFFD, for display.
  static std::string ForDisplay(std::string_view text);
};

}  // namespace gorvan
