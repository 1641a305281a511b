// Remote lookups against the local HTTP test server: the FreeDB exchange of a
// recorded transcript, the server's errors and bad answers, MusicBrainz as the
// fallback, and the values a scan records.
#include <gtest/gtest.h>

#include <thread>

#include "audio/AudioScanValues.h"
#include "audio/AudioTestData.h"
#include "audio/AudioText.h"
#include "audio/DiscId.h"
#include "audio/DiscLookup.h"
#include "audio/MusicBrainzLookup.h"
#include "audio/uFreeDb.h"
#include "support/TestHttpServer.h"

namespace gorvan::test {
namespace {

constexpr const char* kCgi = "/~cddb/cddb.cgi";
constexpr const char* kQuery =
    "/~cddb/cddb.cgi?cmd=cddb+query+a80efa0d+13+150+20398+35018+51204+70562+88773+107150+"
    "121419+139002+158387+174993+192091+220888+3836&hello=ann+example.org+Gorvan+1.0.1&proto=6";
constexpr const char* kRead =
    "/~cddb/cddb.cgi?cmd=cddb+read+rock+a80efa0d&hello=ann+example.org+Gorvan+1.0.1&proto=6";

std::string WithCrLf(std::string_view text) {
  std::string out;
  for (std::string_view line : AudioText::SplitLines(text)) out += std::string(line) + "\r\n";
  return out;
}

// A section of the HTTP transcript ("----- response 1 -----" up to the next
// marker), as bytes on the wire: lines end in CR LF.
std::string TranscriptSection(const std::string& transcript, const std::string& marker) {
  size_t start = transcript.find(marker);
  if (start == std::string::npos) return "";
  start = transcript.find('\n', start) + 1;
  const size_t end = transcript.find("----- ", start);
  return WithCrLf(std::string_view(transcript).substr(start, end - start));
}

class LookupTest : public ::testing::Test {
 protected:
  LookupTest() {
    db_.SetCDDBServer("127.0.0.1:" + std::to_string(server_.port()));
    db_.SetEmailAddress("ann@example.org");
    db_.SetErrorEvent([this](int n, const std::string& t) { events_.emplace_back(n, t); });
  }

  TestHttpServer server_;
  uFreeDb db_;
  std::vector<std::pair<int, std::string>> events_;
};

TEST_F(LookupTest, RecordedExchange) {
  const std::string transcript = ReadShared("http_transcript_a80efa0d_2015.txt");
  const std::string entry = ReadShared("entries/a80efa0d.rock.read_response.txt");
  if (transcript.empty() || entry.empty()) GTEST_SKIP() << "no shared CDDB test data";
  // The query answer replayed byte for byte (chunked, as the server sent it);
  // the read answer with the same headers around the recorded entry.
  server_.Answer(kQuery, CannedAnswer::Raw(TranscriptSection(transcript, "----- response 1")));
  CannedAnswer read = CannedAnswer::Ok(WithCrLf(entry), "text/plain; charset=ISO-8859-1");
  read.chunked = true;
  server_.Answer(kRead, read);

  ASSERT_TRUE(db_.LookupMediaByToc(InExtremoDisc())) << db_.errDesc();
  EXPECT_EQ(db_.GetMediaID(), "a80efa0d");
  EXPECT_EQ(db_.GetAlbumCategory(), "rock");
  EXPECT_EQ(db_.GetArtistName(), "In Extremo");
  EXPECT_EQ(db_.GetAlbumName(), "Sterneneisen");
  EXPECT_EQ(db_.GetAlbumTracks(), 13);
  EXPECT_EQ(db_.GetTrackName(6), "Hol die Sterne (feat. Der Graf)");
  EXPECT_EQ(db_.Info().source, "freedb");
  const auto seen = server_.Requests();
  ASSERT_EQ(seen.size(), 2u);
  EXPECT_EQ(seen[0].target, kQuery);
  EXPECT_EQ(seen[1].target, kRead);
  EXPECT_TRUE(events_.empty());
}

TEST_F(LookupTest, HelloTexts) {
  db_.SetAppName(" My Disc App ");
  db_.SetAppVersion("2.0 beta");
  db_.SetProtocolLevel(5);
  db_.SetEmailAddress("a+b@host&x");
  std::string hello;
  ASSERT_TRUE(db_.HelloSuffix(&hello));
  EXPECT_EQ(hello, "&hello=a%2Bb+host%26x+My_Disc_App+2.0_beta&proto=5");
  db_.SetEmailAddress("");
  ASSERT_TRUE(db_.HelloSuffix(&hello));
  EXPECT_EQ(hello, "&hello=anonymous+localhost+My_Disc_App+2.0_beta&proto=5");

  for (const char* bad : {"annexample.org", "a@b@c"}) {
    db_.SetEmailAddress(bad);
    EXPECT_FALSE(db_.LookupMediaByToc(InExtremoDisc())) << bad;
    ASSERT_FALSE(events_.empty());
    EXPECT_EQ(events_.back(),
              std::make_pair(8881, std::string("Missing or Malformed Email address")));
  }
  EXPECT_TRUE(server_.Requests().empty()) << "nothing is sent with a malformed address";

  struct Case {
    std::string server, base;
  };
  const Case cases[] = {
      {"", "http://gnudb.gnudb.org/~cddb/cddb.cgi?cmd="},
      {"freedb.example:8080", "http://freedb.example:8080/~cddb/cddb.cgi?cmd="},
      {"https://freedb.example/", "https://freedb.example/~cddb/cddb.cgi?cmd="},
      {"host/mirror/cddb.cgi", "http://host/mirror/cddb.cgi?cmd="},
  };
  for (const Case& c : cases) {
    db_.SetCDDBServer(c.server);
    EXPECT_EQ(db_.BaseUrl(), c.base) << c.server;
  }
}

TEST_F(LookupTest, SeveralMatchesReadTheChosenOne) {
  server_.Answer(kQuery, CannedAnswer::Ok("211 Found inexact matches, list follows\r\n"
                                          "rock a80efa0d In Extremo / Sterneneisen\r\n"
                                          "folk a80efa0e Other Band / Other Album\r\n"
                                          ".\r\n"));
  const std::string folkRead =
      "/~cddb/cddb.cgi?cmd=cddb+read+folk+a80efa0e&hello=ann+example.org+Gorvan+1.0.1&proto=6";
  server_.Answer(folkRead, CannedAnswer::Ok("210 folk a80efa0e\r\n"
                                            "DTITLE=Other Band / Other Album\r\n"
                                            "TTITLE0=First\r\n"
                                            ".\r\n"));
  // The second match read, as the desktop program asks once the user chose it.
  db_.SetMatchChoice(1);
  ASSERT_TRUE(db_.LookupMediaByToc(InExtremoDisc())) << db_.errDesc();
  EXPECT_EQ(db_.GetArtistName(), "Other Band");
  EXPECT_EQ(db_.GetAlbumCategory(), "folk");
  EXPECT_EQ(db_.GetTrackName(1), "First");
  ASSERT_EQ(db_.Matches().size(), 2u);
  EXPECT_EQ(db_.Matches()[0].category, "rock");
  EXPECT_EQ(db_.Matches()[1].title, "Other Band / Other Album");
  ASSERT_EQ(server_.Requests().size(), 2u);
  EXPECT_EQ(server_.Requests()[1].target, folkRead);

  // A choice past the list reads the last match; the lookup hands the list on.
  FreeDbSettings settings;
  settings.enabled = true;
  settings.useUrl = true;
  settings.url = "127.0.0.1:" + std::to_string(server_.port());
  settings.email = "ann@example.org";
  settings.match = 5;
  const DiscLookupResult r = DiscLookup::Run(settings, InExtremoDisc(), DefaultHttpFetch(), {});
  ASSERT_TRUE(r.found);
  EXPECT_EQ(r.info.album, "Other Album");
  EXPECT_EQ(r.matches.size(), 2u);
}

TEST_F(LookupTest, ServerAnswersThatFindNothing) {
  struct Case {
    const char* what;
    CannedAnswer query;
    int event;  // 0: nothing raised
    std::string text;
  };
  const Case cases[] = {
      {"no match", CannedAnswer::Ok("202 No match for disc ID a80efa0d.\r\n"), 0, ""},
      {"empty list", CannedAnswer::Ok("211 Found inexact matches\r\n.\r\n"), 0, ""},
      {"unregistered client", CannedAnswer::Ok("500 Unknown developer email\r\n"), 8883,
       "500 Unknown developer email"},
      {"HTML page", CannedAnswer::Ok("<html><body>Moved</body></html>", "text/html"), 8884,
       "The server gave an unexpected answer: <html><body>Moved</body></html>"},
      {"HTTP error", CannedAnswer::WithStatus(503, "<html>busy</html>"), 8883,
       "The server answered HTTP 503"},
      {"cut short", CannedAnswer::CutShort("200 rock a80e", 400), 8882, ""},
      {"garbage", CannedAnswer::Raw("\x01\x02 not http at all\r\n\r\n"), 8882, ""},
  };
  for (const Case& c : cases) {
    server_.Answer(kCgi, c.query);
    events_.clear();
    EXPECT_FALSE(db_.LookupMediaByToc(InExtremoDisc())) << c.what;
    if (c.event == 0) {
      EXPECT_TRUE(events_.empty()) << c.what;
      continue;
    }
    ASSERT_EQ(events_.size(), 1u) << c.what;
    EXPECT_EQ(events_[0].first, c.event) << c.what;
    if (!c.text.empty()) {
      EXPECT_EQ(events_[0].second, c.text) << c.what;
    }
    EXPECT_FALSE(events_[0].second.empty()) << c.what;
  }
}

TEST_F(LookupTest, FirstMatchReadAndEntryGone) {
  server_.Answer(kCgi, CannedAnswer::Ok("211 Found inexact matches\r\n"
                                        "jazz a80efa0d First / Match\r\n"
                                        "rock a80efa0d Second / Match\r\n.\r\n"));
  server_.Answer(
      "/~cddb/cddb.cgi?cmd=cddb+read+jazz+a80efa0d&hello=ann+example.org+Gorvan+"
      "1.0.1&proto=6",
      CannedAnswer::Ok("401 jazz a80efa0d No such CD entry in database.\r\n"));
  EXPECT_FALSE(db_.LookupMediaByToc(InExtremoDisc()));
  EXPECT_TRUE(events_.empty());
  EXPECT_EQ(server_.Requests().back().target.find("cddb+read+jazz"), 20u);
}

TEST_F(LookupTest, RefusedStalledAndCancelled) {
  db_.SetCDDBServer("127.0.0.1:" + std::to_string(server_.refusedPort()));
  EXPECT_FALSE(db_.LookupMediaByToc(InExtremoDisc()));
  ASSERT_EQ(events_.size(), 1u);
  EXPECT_EQ(events_[0].first, 8882);
  EXPECT_NE(events_[0].second.find("127.0.0.1"), std::string::npos) << events_[0].second;

  db_.SetCDDBServer("127.0.0.1:" + std::to_string(server_.port()));
  server_.Answer(kCgi, CannedAnswer::Stall());
  std::stop_source stop;
  std::thread stopper([&stop] {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    stop.request_stop();
  });
  events_.clear();
  EXPECT_FALSE(db_.LookupMediaByToc(InExtremoDisc(), stop.get_token()));
  stopper.join();
  EXPECT_TRUE(events_.empty()) << "a cancel is no error";
  const size_t asked = server_.Requests().size();
  EXPECT_FALSE(db_.LookupMediaByToc(InExtremoDisc(), stop.get_token()));
  EXPECT_EQ(server_.Requests().size(), asked) << "a stop asked before the lookup sends nothing";
}

// A discid answer as the web service gives it (JSON, inc=artist-credits+recordings).
std::string MusicBrainzAnswer(const std::string& discId, int media) {
  std::string tracks;
  for (int i = 1; i <= 10; ++i) {
    tracks += std::string(i > 1 ? "," : "") + R"({"position":)" + std::to_string(i) +
              R"(,"number":")" + std::to_string(i) + R"(","title":"Song )" + std::to_string(i) +
              R"(","length":200000})";
  }
  std::string medium = R"({"position":1,"format":"CD","track-count":10,"discs":[{"id":")" + discId +
                       R"(","sectors":206535}],"tracks":[)" + tracks + "]}";
  std::string other = R"({"position":1,"format":"CD","track-count":4,"discs":[],"tracks":[]})";
  return R"({"releases":[{"id":"r1","title":"Wrong Release","date":"2001","media":[)" + other +
         R"(]},{"id":"r2","title":"Right Release","date":"1994-03-01","artist-credit":[)"
         R"({"name":"First","joinphrase":" & "},{"name":"Second","joinphrase":""}],"media":[)" +
         (media == 2 ? other + "," : "") + medium + "]}]}";
}

TEST(MusicBrainzTest, AnswersAndMediumChoice) {
  const DiscToc toc = TenTrackDisc();
  const std::string id = "Wn8eRBtfLDfM0qjYPdxrz.Zjs_U-";
  struct Case {
    const char* what;
    std::string json;
    std::string mbId;
    MusicBrainzLookup::Outcome outcome;
  };
  const Case cases[] = {
      {"by disc id", MusicBrainzAnswer(id, 2), id, MusicBrainzLookup::Outcome::kFound},
      {"by track count", MusicBrainzAnswer("other", 2), id, MusicBrainzLookup::Outcome::kFound},
      {"no releases", R"({"release-count":0,"releases":[]})", id,
       MusicBrainzLookup::Outcome::kNothing},
      {"not JSON", "<html>", id, MusicBrainzLookup::Outcome::kFailed},
      {"wrong types", R"({"releases":[{"title":5,"media":[{"tracks":[{"position":"1"}]}]}]})", id,
       MusicBrainzLookup::Outcome::kFound},
      {"too deep", std::string(100, '[') + std::string(100, ']'), id,
       MusicBrainzLookup::Outcome::kFailed},
  };
  for (const Case& c : cases) {
    DiscInfo info;
    info.tracks.resize(10);
    std::string error;
    EXPECT_EQ(MusicBrainzLookup::ParseAnswer(c.json, c.mbId, 10, &info, &error), c.outcome)
        << c.what << ": " << error;
    if (c.outcome == MusicBrainzLookup::Outcome::kFound &&
        c.json.find("Right") != std::string::npos) {
      EXPECT_EQ(info.album, "Right Release") << c.what;
      EXPECT_EQ(info.artist, "First & Second") << c.what;
      EXPECT_EQ(info.year, "1994") << c.what;
      EXPECT_EQ(info.tracks[9].title, "Song 10") << c.what;
    }
  }
  EXPECT_EQ(MusicBrainzLookup::LookupUrl("https://mb.example/", MakeToc({150, 1000}, 5000)),
            "https://mb.example/ws/2/discid/" + DiscId::MusicBrainz(MakeToc({150, 1000}, 5000)) +
                "?toc=1+2+5000+150+1000&cdstubs=no&fmt=json&inc=artist-credits+recordings");

  // The spacer hands out one slot at once; the next waits, unless stopped.
  MusicBrainzLookup::Spacer spacer(std::chrono::hours(1));
  EXPECT_TRUE(spacer.Wait({}));
  std::stop_source stop;
  stop.request_stop();
  EXPECT_FALSE(spacer.Wait(stop.get_token()));
}

TEST(DiscLookupTest, FreeDbFindsNothingThenMusicBrainz) {
  TestHttpServer server;
  server.Answer(kCgi, CannedAnswer::Ok("202 No match for disc ID 830abf0a.\r\n"));
  server.Answer(
      "/ws/2/discid/Wn8eRBtfLDfM0qjYPdxrz.Zjs_U-",
      CannedAnswer::Ok(MusicBrainzAnswer("Wn8eRBtfLDfM0qjYPdxrz.Zjs_U-", 1), "application/json"));
  FreeDbSettings settings;
  settings.enabled = true;
  settings.useUrl = true;
  settings.url = "127.0.0.1:" + std::to_string(server.port());
  settings.email = "ann@example.org";
  settings.musicBrainz = true;
  settings.musicBrainzServer = server.Url("");
  std::vector<std::string> lines;
  const DiscLookupResult r = DiscLookup::Run(settings, TenTrackDisc(), DefaultHttpFetch(), {},
                                             [&](const std::string& l) { lines.push_back(l); });
  ASSERT_TRUE(r.found);
  EXPECT_TRUE(r.errors.empty());
  EXPECT_EQ(r.info.source, "musicbrainz");
  EXPECT_EQ(r.info.discId, "830abf0a");
  EXPECT_EQ(r.info.album, "Right Release");
  EXPECT_EQ(r.info.tracks[0].seconds, (18901 - 150) / 75) << "lengths from the table";
  EXPECT_EQ(lines, (std::vector<std::string>{"Contacting " + settings.url + " Server",
                                             "Contacting MusicBrainz Server"}));
  const auto seen = server.Requests();
  ASSERT_EQ(seen.size(), 2u);
  EXPECT_EQ(seen[1].target.rfind(
                "/ws/2/discid/Wn8eRBtfLDfM0qjYPdxrz.Zjs_U-?toc=1+10+206535+150+18901+", 0),
            0u)
      << seen[1].target;
  EXPECT_EQ(seen[1].Header("Accept"), "application/json");
  EXPECT_NE(seen[1].Header("User-Agent").find("( ann@example.org )"), std::string::npos);

  // Switched off: nobody is asked, yet the id and lengths are there.
  settings.enabled = false;
  const DiscLookupResult off = DiscLookup::Run(settings, TenTrackDisc(), DefaultHttpFetch(), {});
  EXPECT_FALSE(off.found);
  EXPECT_EQ(off.info.discId, "830abf0a");
  EXPECT_EQ(off.info.tracks.size(), 10u);
  EXPECT_EQ(server.Requests().size(), 2u);

  const DiscLookupResult bad = DiscLookup::Run(settings, MakeToc({150, 100}, 50), {}, {});
  ASSERT_EQ(bad.errors.size(), 1u);
  EXPECT_EQ(bad.errors[0].first, uFreeDb::kErrToc);
}

TEST(AudioScanValuesTest, FoundAndUnknownDiscs) {
  const DiscToc toc = MakeToc({150, 18265}, 250912);
  const AudioScanValues unknown = AudioScanValues::From(toc, nullptr);
  ASSERT_EQ(unknown.tracks.size(), 2u);
  EXPECT_EQ(unknown.tracks[1].title + " " + unknown.tracks[1].length, "Track 02 51:41");
  EXPECT_EQ(unknown.time, "55:43");
  EXPECT_EQ(unknown.album, "");

  DiscInfo found;
  found.album = "Album";
  found.category = "rock";
  found.tracks = {{"Opening", 241}, {"  ", 3099}};
  const AudioScanValues known = AudioScanValues::From(toc, &found);
  EXPECT_EQ(known.album + " " + known.category, "Album rock");
  EXPECT_EQ(known.tracks[0].title, "Opening");
  EXPECT_EQ(known.tracks[1].title, "Track 02") << "a blank title is named";
  EXPECT_TRUE(AudioScanValues::From(MakeToc({}, 0), &found).tracks.empty());
}

}  // namespace
}  // namespace gorvan::test
