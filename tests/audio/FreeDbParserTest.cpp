// The FreeDB parsers: query answers, database entries (real ones from the
// shared test data and the continuation cases), the title rules, the site
// list, and bad input.
#include <gtest/gtest.h>

#include "audio/AudioTestData.h"
#include "audio/AudioText.h"
#include "audio/FreeDbParser.h"

namespace gorvan::test {
namespace {

DiscInfo WithTracks(size_t n) {
  DiscInfo info;
  info.tracks.resize(n);
  return info;
}

TEST(FreeDbParserTest, QueryAnswers) {
  struct Case {
    const char* what;
    std::string answer;
    int status;
    size_t matches;
    std::string category, id;
  };
  const Case cases[] = {
      {"exact", "200 rock a80efa0d In Extremo / Sterneneisen\r\n", 200, 1, "rock", "a80efa0d"},
      {"inexact list, first taken",
       "211 Found inexact matches, list follows (until terminating `.')\r\n"
       "reggae d50dd30f Various / Ska Island\r\nmisc d50dd30f Various / Ska Island\r\n.\r\n",
       211, 2, "reggae", "d50dd30f"},
      {"exact list with LF only", "210 Found exact matches\nfolk 8309a80a X / Y\n.\n", 210, 1,
       "folk", "8309a80a"},
      {"list without a match line", "210 Found exact matches\r\n.\r\n", 210, 0, "", ""},
      {"list cut short", "211 Found inexact matches", 211, 0, "", ""},
      {"no match", "202 No match for disc ID 0b0d0f02.\r\n", 202, 0, "", ""},
      {"200 without an id", "200 rock\r\n", 200, 0, "", ""},
      {"server error", "500 Unknown developer email\r\n", 500, 0, "", ""},
      {"HTML page", "<!DOCTYPE html><html>...</html>", 0, 0, "", ""},
      {"empty", "", 0, 0, "", ""},
  };
  for (const Case& c : cases) {
    const QueryAnswer a = FreeDbParser::ParseQueryAnswer(c.answer);
    EXPECT_EQ(a.status, c.status) << c.what;
    ASSERT_EQ(a.matches.size(), c.matches) << c.what;
    if (c.matches > 0) {
      EXPECT_EQ(a.matches[0].category, c.category) << c.what;
      EXPECT_EQ(a.matches[0].discId, c.id) << c.what;
    }
  }
  EXPECT_EQ(FreeDbParser::ParseQueryAnswer("500 Unknown developer email\r\n").statusLine,
            "500 Unknown developer email");
}

TEST(FreeDbParserTest, RealEntries) {
  const std::string rock = ReadShared("entries/a80efa0d.rock.read_response.txt");
  const std::string folk = ReadShared("entries/8309a80a.folk.read_response.txt");
  if (rock.empty() || folk.empty()) GTEST_SKIP() << "no shared CDDB test data";
  DiscInfo info = WithTracks(13);
  ASSERT_TRUE(FreeDbParser::ParseEntry(rock, {}, &info));
  EXPECT_EQ(info.artist, "In Extremo");
  EXPECT_EQ(info.album, "Sterneneisen");
  EXPECT_EQ(info.year, "2011");
  EXPECT_EQ(info.genre, "Mittelalterrock");
  EXPECT_EQ(info.revision, "5");
  EXPECT_EQ(info.tracks[0].title, "Zigeunerskat");
  EXPECT_EQ(info.tracks[12].title, "Daten-CD");
  EXPECT_EQ(info.notes, "");

  info = WithTracks(10);
  ASSERT_TRUE(FreeDbParser::ParseEntry(folk, {}, &info));
  EXPECT_EQ(info.album, "Elemental (Limited Edition with Bonus DVD)");
  EXPECT_EQ(info.notes,
            "Bonus DVD\r\nQuinlan Road Limited  QRCD101Dred: 2004\r\nLimited Edition with");
  EXPECT_EQ(info.tracks[9].title, "Enhanced CD Data");
}

// libcddb's synthetic entry: every way a field continues on the next line.
TEST(FreeDbParserTest, ContinuationLines) {
  const std::string entry = ReadShared("entries/libcddb-testcache/misc/12345678");
  if (entry.empty()) GTEST_SKIP() << "no shared CDDB test data";
  DiscInfo info = WithTracks(13);
  ASSERT_TRUE(FreeDbParser::ParseEntry("210 misc 12345678 entry follows\n" + entry, {}, &info));
  EXPECT_EQ(info.artist, "DiscArtist");
  EXPECT_EQ(info.album, "DiscTitle");
  EXPECT_EQ(info.genre, "Test data");
  EXPECT_EQ(info.tracks[2].title, "TrackArtist3 cntd. / TrackTitle3");
  EXPECT_EQ(info.tracks[3].title, "TrackArtist4 cntd. / TrackTitle4");
  EXPECT_EQ(info.tracks[4].title, "TrackArtist5 / TrackTitle5");
  EXPECT_EQ(info.tracks[5].title, "TrackArtist6 / TrackTitle6 cntd.");
  EXPECT_EQ(info.tracks[12].title, "TrackArtist10 / Track /Title13");
}

TEST(FreeDbParserTest, EntryRules) {
  const std::string entry =
      "210 rock 0b0d0f02 CD database entry follows (until terminating `.')\r\n"
      "# Revision: 12\r\n"
      "DTITLE=Some Artist / First Part\r\n"
      "DTITLE= of the Album\r\n"
      "DYEAR=1999\r\n"
      "DGENRE=Progressive \r\n"
      "DGENRE=Rock\r\n"
      "TTITLE0=One\r\n"
      "TTITLE1=Two\r\n"
      "TTITLE1= and a half\r\n"
      "TTITLE2=out of range\r\n"
      "TTITLE-1=negative\r\n"
      "TTITLEx=not a number\r\n"
      "TTITLE199=far out\r\n"
      "TTITLE0\r\n"
      "EXTD=Line one\\nLine two\r\n"
      "EXTD=\\n and more\r\n"
      ".\r\n"
      "TTITLE0=after the end\r\n";
  DiscInfo info = WithTracks(2);
  ASSERT_TRUE(FreeDbParser::ParseEntry(entry, {}, &info));
  EXPECT_EQ(info.revision, "12");
  EXPECT_EQ(info.artist, "Some Artist");
  EXPECT_EQ(info.album, "First Part of the Album");
  EXPECT_EQ(info.year, "1999");
  EXPECT_EQ(info.genre, "Progressive Rock");
  EXPECT_EQ(info.tracks[0].title, "One");
  EXPECT_EQ(info.tracks[1].title, "Two and a half");
  EXPECT_EQ(info.notes, "Line one\r\nLine two\r\n and more");

  DiscInfo untouched = WithTracks(2);
  EXPECT_FALSE(FreeDbParser::ParseEntry("401 rock 0b0d0f02 No such CD entry in database.\r\n", {},
                                        &untouched));
  EXPECT_FALSE(FreeDbParser::ParseEntry("", {}, &untouched));
  EXPECT_EQ(untouched.tracks[0].title, "");
}

TEST(FreeDbParserTest, TitleRules) {
  struct Case {
    std::string title, before, after, artist, album;
  };
  const Case cases[] = {
      {"Artist / Album", "", "", "Artist", "Album"},
      {"Album Only", "", "", "", "Album Only"},
      {"AC/DC / Back in Black", "", "", "AC/DC", "Back in Black"},
      {"Artist - Album", " - ", "", "Artist", "Album"},
      {"Album by Artist", "", " by ", "Artist", "Album"},
      {"Artist / Album - Live", " - ", "", "Artist", "Album - Live"},  // " / " comes first
      {"Plain", " - ", " by ", "", "Plain"},
  };
  for (const Case& c : cases) {
    std::string artist = "x", album = "x";
    FreeDbParser::SplitTitle(c.title, {c.before, c.after}, &artist, &album);
    EXPECT_EQ(artist, c.artist) << c.title;
    EXPECT_EQ(album, c.album) << c.title;
  }
}

TEST(FreeDbParserTest, BadEntriesStayBounded) {
  std::string huge = "210 rock 0b0d0f02 x\r\nDTITLE=" + std::string(10000, 'a') + "\r\n";
  for (int i = 0; i < 200; ++i) huge += "TTITLE" + std::to_string(i) + "=t\r\n";
  huge += "EXTD=no final dot and no line end";
  DiscInfo info = WithTracks(3);
  ASSERT_TRUE(FreeDbParser::ParseEntry(huge, {}, &info));
  EXPECT_EQ(info.album.size(), 10000u);
  EXPECT_EQ(info.tracks.size(), 3u);
  EXPECT_EQ(info.tracks[2].title, "t");
  EXPECT_EQ(info.notes, "no final dot and no line end");

  // Latin-1 bytes are read as Latin-1; UTF-8 stays UTF-8.
  EXPECT_EQ(AudioText::ToUtf8("Bj\xF6rk"), "Bj\xC3\xB6rk");
  EXPECT_EQ(AudioText::ToUtf8("Bj\xC3\xB6rk"), "Bj\xC3\xB6rk");
}

TEST(FreeDbParserTest, Sites) {
  const std::string answer =
      "210 OK, site information follows (until terminating `.')\r\n"
      "gnudb.gnudb.org http 80 /~cddb/cddb.cgi N000.00 W000.00 Random gnudb server\r\n"
      "a b c d e f 1 2 3 4 5 6 7 8 9 10 11\r\n"
      ".\r\n"
      "after.example http 80 / N0 W0 ignored\r\n";
  const std::vector<FreeDbSite> sites = FreeDbParser::ParseSites(answer);
  ASSERT_EQ(sites.size(), 2u);
  EXPECT_EQ(sites[0].Site(), "gnudb.gnudb.org");
  EXPECT_EQ(sites[0].ChooserText(), "gnudb.gnudb.org\tN000.00\tW000.00 Random gnudb server");
  ASSERT_EQ(sites[1].fields.size(), 15u);
  EXPECT_EQ(sites[1].fields[14], "9 10 11") << "the 15th field holds the rest";
  EXPECT_TRUE(FreeDbParser::ParseSites("500 Command syntax error\r\n").empty());
}

}  // namespace
}  // namespace gorvan::test
