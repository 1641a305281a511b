#include "scan/Windows1252.h"

#include <cstdint>

namespace gorvan {

namespace {

// Code points of bytes 0x80-0x9F; the rest of the code page is Latin-1.
constexpr char16_t kHigh[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,  // 80-87
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,  // 88-8F
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,  // 90-97
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,  // 98-9F
};

void AppendUtf8(std::string& out, char32_t cp) {
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}

// The byte for a code point, or -1 when Windows-1252 has none.
int ByteFor(char32_t cp) {
  if (cp < 0x80 || (cp >= 0xA0 && cp <= 0xFF)) return static_cast<int>(cp);
  for (int i = 0; i < 32; ++i) {
    if (kHigh[i] == cp) return 0x80 + i;
  }
  return -1;
}

// Decodes one UTF-8 sequence at text[i]; returns its length, or 0 when malformed
// (overlong forms, surrogates and values past U+10FFFF count as malformed).
std::size_t DecodeUtf8(std::string_view text, std::size_t i, char32_t* cp) {
  const auto b0 = static_cast<unsigned char>(text[i]);
  std::size_t len;
  char32_t value;
  char32_t min;
  if (b0 < 0x80) {
    *cp = b0;
    return 1;
  } else if ((b0 & 0xE0) == 0xC0) {
    len = 2, value = b0 & 0x1F, min = 0x80;
  } else if ((b0 & 0xF0) == 0xE0) {
    len = 3, value = b0 & 0x0F, min = 0x800;
  } else if ((b0 & 0xF8) == 0xF0) {
    len = 4, value = b0 & 0x07, min = 0x10000;
  } else {
    return 0;
  }
  if (i + len > text.size()) return 0;
  for (std::size_t k = 1; k < len; ++k) {
    const auto b = static_cast<unsigned char>(text[i + k]);
    if ((b & 0xC0) != 0x80) return 0;
    value = (value << 6) | (b & 0x3F);
  }
  if (value < min || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) return 0;
  *cp = value;
  return len;
}

}  // namespace

std::string Windows1252::ToUtf8(std::string_view bytes) {
  std::string out;
  out.reserve(bytes.size());
  for (char c : bytes) {
    const auto b = static_cast<unsigned char>(c);
    if (b < 0x80) {
      out += c;
    } else if (b < 0xA0) {
      AppendUtf8(out, kHigh[b - 0x80]);
    } else {
      AppendUtf8(out, b);
    }
  }
  return out;
}

std::string Windows1252::FromUtf8(std::string_view text, std::size_t* unmappable) {
  std::string out;
  out.reserve(text.size());
  std::size_t misses = 0;
  for (std::size_t i = 0; i < text.size();) {
    char32_t cp = 0;
    std::size_t len = DecodeUtf8(text, i, &cp);
    int byte = len ? ByteFor(cp) : -1;
    if (byte < 0) {
      out += '?';
      ++misses;
    } else {
      out += static_cast<char>(byte);
    }
    i += len ? len : 1;
  }
  if (unmappable) *unmappable = misses;
  return out;
}

}  // namespace gorvan
