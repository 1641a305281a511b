// Texts: the writing rule and its accounting, the encodings, the extra-data list,
// and the formats of dates and numbers.
#include <gtest/gtest.h>

#include <clocale>

#include "CatalogFixture.h"
#include "catalog/Cipher.h"
#include "catalog/ExtraData.h"
#include "catalog/OleDate.h"
#include "catalog/TextCodec.h"
#include "catalog/TextFormat.h"
#include "catalog/TextUtil.h"

namespace gorvan::test {
namespace {

using TextTest = CatalogTest;

TEST_F(TextTest, WritingATextTwiceLeavesTheFirstCopyAsGarbage) {
  OpenCatalog();
  classData::PhysicalSize size;
  classCd& cd = cur_.NewDisc();
  ASSERT_TRUE(cd.SetCdNotes("first notes"));
  ASSERT_TRUE(cd.SetCdNotes("second"));
  EXPECT_EQ(cd.GetBytesUsed(), 116 + 6);
  EXPECT_EQ(cd.GetCdNotes(), "second");
  ASSERT_TRUE(cur_.CommitDisc());
  ASSERT_TRUE(data_.CalcPhysicalSize(&size).ok());
  EXPECT_EQ(size.garbage, 11);
  EXPECT_EQ(size.bytesUsed, 124 + 116 + 6);

  // The empty text stores position 0 and count 0 and appends nothing.
  const int64_t length = data_.file()->Length();
  ASSERT_TRUE(cd.SetCdNotes(""));
  EXPECT_EQ(data_.file()->Length(), length);
  EXPECT_EQ(cd.record().notes.pos, 0);
  EXPECT_EQ(cd.record().notes.count, 0);
  EXPECT_EQ(cd.GetBytesUsed(), 116);
  // A count of 0 reads empty whatever the position.
  cd.record().name = {999999, 0};
  EXPECT_EQ(cd.GetCdName(), "");
  EXPECT_TRUE(data_.ok());
}

TEST_F(TextTest, Windows1252CatalogsConvertAndCountWhatTheyCannotHold) {
  OpenCatalog("ansi.cd", TextEncoding::kWindows1252);
  classCd& cd = cur_.NewDisc();
  ASSERT_TRUE(cd.SetCdName("Caf\xC3\xA9 \xE2\x82\xAC \xE6\x97\xA5"));  // "Café € 日"
  EXPECT_EQ(cd.record().name.count, 8);
  std::string raw;
  data_.file()->ReadRawText(cd.record().name, &raw);
  EXPECT_EQ(raw, "Caf\xE9 \x80 ?");
  EXPECT_EQ(cd.GetCdName(), "Caf\xC3\xA9 \xE2\x82\xAC ?");
  EXPECT_EQ(data_.file()->TakeWarnings(), 1u);
}

TEST(TextCodecTest, EveryWindows1252ByteSurvivesARoundTrip) {
  std::string all;
  for (int b = 1; b < 256; ++b) all.push_back(static_cast<char>(b));
  std::string utf8, back;
  TextCodec::Windows1252ToUtf8(all, &utf8);
  EXPECT_TRUE(TextCodec::IsValidUtf8(utf8));
  EXPECT_EQ(TextCodec::Utf8ToWindows1252(utf8, &back), 0u);
  EXPECT_EQ(back, all);
}

TEST(TextCodecTest, InvalidUtf8IsKeptForStorageAndReplacedForDisplay) {
  const std::string raw =
      "a\xFF"
      "b\xC3";
  EXPECT_FALSE(TextCodec::IsValidUtf8(raw));
  std::string stored;
  TextCodec::Encode(TextEncoding::kUtf8, raw, &stored);
  EXPECT_EQ(stored, raw);
  EXPECT_EQ(TextCodec::ForDisplay(raw),
            "a\xEF\xBF\xBD"
            "b\xEF\xBF\xBD");
  EXPECT_FALSE(TextCodec::IsValidUtf8("\xC0\x80"));      // overlong
  EXPECT_FALSE(TextCodec::IsValidUtf8("\xED\xA0\x80"));  // surrogate
}

TEST(ExtraDataTest, SettingValues) {
  EXPECT_EQ(SetExtraValue("", kExtraAudioArtist, "Bob"), "ARBob");
  EXPECT_EQ(SetExtraValue("", kExtraAudioArtist, ""), "AR") << "appended even when empty";
  EXPECT_EQ(SetExtraValue("AAx|`|ARBob", kExtraAudioArtist, "Ann"), "AAx|`|ARAnn");
  EXPECT_EQ(SetExtraValue("AAx|`|ARBob|`|MTt", kExtraAudioArtist, ""), "AAx|`|MTt");
  // A bare key is never matched again, so a new value is appended after it.
  EXPECT_EQ(SetExtraValue("AR|`|AAx", kExtraAudioArtist, "Ann"), "AR|`|AAx|`|ARAnn");
  EXPECT_EQ(SetExtraValue("AAx", 27, "v"), "AAx") << "index outside the table";
  EXPECT_EQ(SetExtraValue("AAx", -1, "v"), "AAx");
  EXPECT_EQ(SetExtraValue("T1a|`||`|T2b", 14, "c"), "T1a|`||`|T2c") << "empty elements stay";
}

TEST(ExtraDataTest, ReadingValues) {
  EXPECT_EQ(GetExtraValue("AAx|`|ARBob", kExtraAudioArtist), "Bob");
  EXPECT_EQ(GetExtraValue("AAx|`|ARBob", kExtraMp3Title), "");
  EXPECT_EQ(GetExtraValue("AR|`|ARBob", kExtraAudioArtist), "") << "the first element wins";
  EXPECT_EQ(GetExtraValue("ARBob", 99), "");
  EXPECT_EQ(GetExtraValue("IFa|`|T9b", 26), "a");
  EXPECT_EQ(GetExtraValue("IFa|`|T9b", 21), "b");
  EXPECT_EQ(ExtraKey(13), "T1");
  EXPECT_EQ(ExtraKey(22), "IA");
}

TEST(CipherTest, ScramblesReversiblyIntoPrintableText) {
  for (std::string clear : {"", "a", "secret password", "~~~~  ",
                            "\x7F"
                            "x"}) {
    const std::string s = Cipher::Scramble(clear);
    EXPECT_EQ(s.size(), clear.size());
    EXPECT_EQ(Cipher::Unscramble(s), clear);
    if (clear.size() > 3) {
      EXPECT_NE(s, clear);
    }
  }
  EXPECT_NE(Cipher::Scramble("aa").substr(0, 1), Cipher::Scramble("aa").substr(1, 1))
      << "the shift depends on the position";
}

TEST(FormatTest, GeneralDateInTheCLocale) {
  ASSERT_TRUE(SetDateLocale("C"));
  EXPECT_EQ(FormatGeneralDate(46347.5), "11/21/2026 12:00:00 PM");
  EXPECT_EQ(FormatGeneralDate(46347.0), "11/21/2026");
  EXPECT_EQ(FormatGeneralDate(0.25), "6:00:00 AM");
  EXPECT_EQ(FormatGeneralDate(2.0), "1/1/1900");
  EXPECT_EQ(FormatGeneralDate(36526.0 + 86398.0 / 86400), "1/1/2000 11:59:58 PM");
  EXPECT_EQ(FormatGeneralDate(36526.999999), "1/2/2000") << "rounded to the second";
}

TEST(FormatTest, NumbersAreIntegersBelow1e15ElseShortestWithUpperExponent) {
  EXPECT_EQ(FormatNumber(0), "0");
  EXPECT_EQ(FormatNumber(-1234567), "-1234567");
  EXPECT_EQ(FormatNumber(999999999999999.0), "999999999999999");
  EXPECT_EQ(FormatNumber(1.5e15), "1.5E+15");
  EXPECT_EQ(FormatNumber(1e15), "1E+15");
  EXPECT_EQ(FormatNumber(0.5), "0.5");
}

TEST(FormatTest, NamesSortCaseBlindWithNumbersByValue) {
  struct Row {
    const char* a;
    const char* b;
    int order;
  } rows[] = {
      {"disc 9", "disc 10", -1},
      {"Disc 010", "disc 10", 0},
      {"track2b", "TRACK2a", 1},
      {"a", "ab", -1},
      {"B", "a", 1},
      {"x\xc3\xa9", "xz", 1},
      {"99", "100", -1},
      {"", "", 0},
  };
  const auto sign = [](int c) { return (c > 0) - (c < 0); };
  for (const Row& r : rows) {
    EXPECT_EQ(sign(NaturalCompare(r.a, r.b)), r.order) << r.a << " vs " << r.b;
    EXPECT_EQ(sign(NaturalCompare(r.b, r.a)), -r.order) << r.b << " vs " << r.a;
  }
}

TEST(OleDateTest, RoundTripsThroughLocalTime) {
  const std::time_t t = 1700000000;
  EXPECT_EQ(TimeFromOleDate(OleDateFromTime(t)), t);
}

}  // namespace
}  // namespace gorvan::test
