#pragma once
// Windows1252: conversion between Windows-1252 bytes and UTF-8 text.
// ID3v1 tags hold Windows-1252 bytes; the program works in UTF-8. The five code
// points that Windows-1252 leaves undefined (0x81, 0x8D, 0x8F, 0x90, 0x9D) map to
// the C1 control characters of the same value, so every byte survives a round trip.

#include <cstddef>
#include <string>
#include <string_view>

namespace gorvan {

class Windows1252 {
 public:
  // Every byte of `bytes` as UTF-8 text. Never fails.
  static std::string ToUtf8(std::string_view bytes);

  // UTF-8 text as Windows-1252 bytes. A character Windows-1252 cannot hold, and
  // every byte of a malformed UTF-8 sequence, becomes '?'; `*unmappable` (when
  // given) receives the number of such replacements.
  static std::string FromUtf8(std::string_view text, std::size_t* unmappable = nullptr);
};

}  // namespace gorvan
