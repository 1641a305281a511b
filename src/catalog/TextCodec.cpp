#include "catalog/TextCodec.h"

#include <array>
#include <cstdint>

namespace gorvan {
namespace {

// Code points of bytes 0x80..0x9F in Windows-1252. The five bytes the code page
// leaves undefined map to the C1 control of the same value, as the system's
// own conversion does, so that every byte survives a round trip.
constexpr std::array<uint16_t, 32> kHigh = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

void AppendUtf8(uint32_t cp, std::string* out) {
  if (cp < 0x80) {
    out->push_back(static_cast<char>(cp));
  } else if (cp < 0x800) {
    out->push_back(static_cast<char>(0xC0 | (cp >> 6)));
    out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else if (cp < 0x10000) {
    out->push_back(static_cast<char>(0xE0 | (cp >> 12)));
    out->push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else {
    out->push_back(static_cast<char>(0xF0 | (cp >> 18)));
    out->push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  }
}

// Decodes one UTF-8 sequence at text[i]. Returns its length, or 0 when the
// bytes there are not well-formed UTF-8 (overlong forms and surrogates too).
size_t DecodeUtf8(std::string_view text, size_t i, uint32_t* cp) {
  const auto b0 = static_cast<uint8_t>(text[i]);
  if (b0 < 0x80) {
    *cp = b0;
    return 1;
  }
  size_t len;
  uint32_t min;
  if ((b0 & 0xE0) == 0xC0) {
    len = 2, min = 0x80, *cp = b0 & 0x1F;
  } else if ((b0 & 0xF0) == 0xE0) {
    len = 3, min = 0x800, *cp = b0 & 0x0F;
  } else if ((b0 & 0xF8) == 0xF0) {
    len = 4, min = 0x10000, *cp = b0 & 0x07;
  } else {
    return 0;
  }
  if (i + len > text.size()) return 0;
  for (size_t k = 1; k < len; ++k) {
    const auto b = static_cast<uint8_t>(text[i + k]);
    if ((b & 0xC0) != 0x80) return 0;
    *cp = (*cp << 6) | (b & 0x3F);
  }
  if (*cp < min || *cp > 0x10FFFF || (*cp >= 0xD800 && *cp <= 0xDFFF)) return 0;
  return len;
}

int Windows1252Byte(uint32_t cp) {
  if (cp < 0x80 || (cp >= 0xA0 && cp <= 0xFF)) return static_cast<int>(cp);
  for (size_t k = 0; k < kHigh.size(); ++k) {
    if (kHigh[k] == cp) return static_cast<int>(0x80 + k);
  }
  return -1;
}

}  // namespace

void TextCodec::Windows1252ToUtf8(std::string_view in, std::string* out) {
  out->clear();
  out->reserve(in.size());
  for (char ch : in) {
    const auto b = static_cast<uint8_t>(ch);
    if (b < 0x80) {
      out->push_back(ch);
    } else if (b < 0xA0) {
      AppendUtf8(kHigh[b - 0x80], out);
    } else {
      AppendUtf8(b, out);
    }
  }
}

size_t TextCodec::Utf8ToWindows1252(std::string_view in, std::string* out) {
  out->clear();
  out->reserve(in.size());
  size_t replaced = 0;
  for (size_t i = 0; i < in.size();) {
    uint32_t cp = 0;
    const size_t len = DecodeUtf8(in, i, &cp);
    if (len == 0) {
      out->push_back(in[i]);
      ++i;
      continue;
    }
    const int b = Windows1252Byte(cp);
    if (b < 0) {
      out->push_back('?');
      ++replaced;
    } else {
      out->push_back(static_cast<char>(b));
    }
    i += len;
  }
  return replaced;
}

void TextCodec::Decode(TextEncoding enc, std::string_view stored, std::string* out) {
  if (enc == TextEncoding::kUtf8) {
    out->assign(stored);
  } else {
    Windows1252ToUtf8(stored, out);
  }
}

size_t TextCodec::Encode(TextEncoding enc, std::string_view text, std::string* out) {
  if (enc == TextEncoding::kUtf8) {
    out->assign(text);
    return 0;
  }
  return Utf8ToWindows1252(text, out);
}

bool TextCodec::IsValidUtf8(std::string_view text) {
  for (size_t i = 0; i < text.size();) {
    uint32_t cp;
    const size_t len = DecodeUtf8(text, i, &cp);
    if (len == 0) return false;
    i += len;
  }
  return true;
}

std::string TextCodec::ForDisplay(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size();) {
    uint32_t cp;
    const size_t len = DecodeUtf8(text, i, &cp);
    if (len == 0) {
      AppendUtf8(0xFFFD, &out);
      ++i;
    } else {
      out.append(text.substr(i, len));
      i += len;
    }
  }
  return out;
}

}  // namespace gorvan
