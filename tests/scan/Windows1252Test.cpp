#include "scan/Windows1252.h"

#include <gtest/gtest.h>

#include <string>

namespace gorvan {
namespace {

TEST(Windows1252Test, EveryByteSurvivesARoundTrip) {
  std::string all;
  for (int b = 0; b < 256; ++b) all += static_cast<char>(b);
  std::size_t misses = 99;
  EXPECT_EQ(Windows1252::FromUtf8(Windows1252::ToUtf8(all), &misses), all);
  EXPECT_EQ(misses, 0u);
}

TEST(Windows1252Test, PinnedMappings) {
  EXPECT_EQ(Windows1252::ToUtf8("abc"), "abc");
  EXPECT_EQ(Windows1252::ToUtf8("\x80"), "\u20AC");
  EXPECT_EQ(Windows1252::ToUtf8("\x9F"), "\u0178");
  EXPECT_EQ(Windows1252::ToUtf8("\xA0\xFF"), "\u00A0\u00FF");
  EXPECT_EQ(Windows1252::ToUtf8(std::string("\0", 1)), std::string("\0", 1));
  EXPECT_EQ(Windows1252::FromUtf8("\u2122"), "\x99");
}

TEST(Windows1252Test, UnmappableAndMalformedBecomeQuestionMarks) {
  std::size_t misses = 0;
  // A CJK character, an emoji (4 bytes), a lone continuation byte, a truncated
  // sequence, an overlong '/', an encoded surrogate.
  EXPECT_EQ(Windows1252::FromUtf8("a\u65E5b\U0001F600c", &misses), "a?b?c");
  EXPECT_EQ(misses, 2u);
  EXPECT_EQ(Windows1252::FromUtf8("\x80x\xC3", &misses), "?x?");
  EXPECT_EQ(misses, 2u);
  EXPECT_EQ(Windows1252::FromUtf8("\xC0\xAF", &misses), "??");
  EXPECT_EQ(Windows1252::FromUtf8("\xED\xA0\x80", &misses), "???");
  EXPECT_EQ(misses, 3u);
}

}  // namespace
}  // namespace gorvan
