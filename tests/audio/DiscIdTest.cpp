// Disc ids: the FreeDB id of a contents string and of a table, the MusicBrainz
// id, and the table's own rules (lengths, checks, the audio session).
#include <gtest/gtest.h>

#include <random>

#include "audio/AudioTestData.h"
#include "audio/DiscId.h"
#include "audio/DiscInfo.h"

#ifdef GORVAN_HAVE_LIBDISCID
#include <discid/discid.h>
#endif

namespace gorvan::test {
namespace {

std::string Contents(const std::vector<int32_t>& offsets, int32_t leadOut) {
  return MakeToc(offsets, leadOut).Contents();
}

TEST(DiscIdTest, FreeDbIdsOfPublishedDiscs) {
  struct Case {
    std::string contents;
    std::string id;
  };
  // Offsets from published query lines; the lead-out is the disc length in
  // seconds times 75, which gives the same id as the exact frame.
  const Case cases[] = {
      {"150 18265 250912", "0b0d0f02"},
      {TenTrackDisc().Contents(), "830abf0a"},
      {InExtremoDisc().Contents(), "a80efa0d"},
      {Contents({150, 21052, 43715, 58057, 71430, 92865, 117600, 131987, 150625, 163292, 181490,
                 195685, 210197, 233230, 249257},
                3541 * 75),
       "d50dd30f"},
      {Contents({182, 29035, 58502, 82970, 108465, 134520, 150455, 165772, 189987, 223380},
                3705 * 75),
       "820e770a"},
      {Contents({150, 21834, 43363, 63436, 89772, 115596, 138570, 167224, 190210}, 211486),
       "820b0109"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(DiscId::FreeDb(c.contents), c.id) << c.contents;
    DiscToc toc;
    std::string error;
    ASSERT_TRUE(DiscToc::FromContents(c.contents, &toc, &error)) << error;
    EXPECT_EQ(DiscId::FreeDb(toc), c.id);
  }
}

TEST(DiscIdTest, FreeDbIdEdgeCases) {
  EXPECT_EQ(DiscId::FreeDb(""), "");
  EXPECT_EQ(DiscId::FreeDb("   "), "");
  EXPECT_EQ(DiscId::FreeDb("150"), "") << "one value is no table";
  EXPECT_EQ(DiscId::FreeDb("  150   18265  250912 "), "0b0d0f02") << "blanks around and between";
  EXPECT_EQ(DiscId::FreeDb("150 18x65 250912"), "");
  EXPECT_EQ(DiscId::FreeDb("150 -5 250912"), "");
  EXPECT_EQ(DiscId::FreeDb("15000 150"), "") << "lead-out before the first track";
  // Seconds are truncated before the subtraction: t = 225/75 - 149/75 = 3 - 1,
  // not (225 - 149) / 75 = 1.
  EXPECT_EQ(DiscId::FreeDb("149 225").substr(2, 4), "0002");
  // At most 100 pieces: 150 values count as 99 tracks.
  std::string many;
  for (int i = 0; i < 150; ++i) many += std::to_string(150 + i * 1000) + " ";
  EXPECT_EQ(DiscId::FreeDb(many).substr(6), "63");
}

TEST(DiscIdTest, MusicBrainzIdsOfPublishedDiscs) {
  EXPECT_EQ(DiscId::MusicBrainz(TenTrackDisc()), "Wn8eRBtfLDfM0qjYPdxrz.Zjs_U-");
  // A disc reported with both ids by a ripper's log (lead-out 211486 fits both).
  EXPECT_EQ(DiscId::MusicBrainz(
                MakeToc({150, 21834, 43363, 63436, 89772, 115596, 138570, 167224, 190210}, 211486)),
            "CI48e688R9wk8DpjajsY..UYYhM-");
  EXPECT_EQ(DiscId::MusicBrainz(MakeToc({150, 100}, 300)), "") << "a table no disc can have";
}

#ifdef GORVAN_HAVE_LIBDISCID
// Both ids against libdiscid for many tables with random lengths.
TEST(DiscIdTest, AgreesWithLibdiscid) {
  std::mt19937 rng(12345);
  auto* oracle = discid_new();
  for (int round = 0; round < 300; ++round) {
    const int first = 1 + static_cast<int>(rng() % 3);
    const int count = 1 + static_cast<int>(rng() % 99);
    const int last = std::min(99, first + count - 1);
    DiscToc toc;
    int32_t at = 150 + static_cast<int32_t>(rng() % 5000);
    int offsets[100] = {};
    for (int t = first; t <= last; ++t) {
      toc.tracks.push_back({t, at, 0});
      offsets[t] = at;
      // libdiscid takes discs of up to about 90 minutes.
      at += 300 + static_cast<int32_t>(rng() % static_cast<unsigned>(380000 / count));
    }
    toc.leadOut = offsets[0] = at;
    ASSERT_TRUE(discid_put(oracle, first, last, offsets));
    EXPECT_EQ(DiscId::MusicBrainz(toc), discid_get_id(oracle)) << toc.Contents();
    // libdiscid counts FreeDB tracks from 1 whatever the first track is.
    if (first == 1) {
      EXPECT_EQ(DiscId::FreeDb(toc), discid_get_freedb_id(oracle)) << toc.Contents();
    }
  }
  discid_free(oracle);
}
#endif

TEST(DiscTocTest, ChecksRefuseTablesNoDiscHas) {
  struct Case {
    const char* what;
    DiscToc toc;
  };
  DiscToc tooMany;
  for (int i = 0; i < 100; ++i) tooMany.tracks.push_back({i + 1, 150 + i * 100, 0});
  tooMany.leadOut = 150000;
  DiscToc gap = MakeToc({150, 1000, 2000}, 3000);
  gap.tracks[2].number = 5;
  DiscToc negative = MakeToc({-10, 1000}, 3000);
  const Case cases[] = {
      {"no tracks", MakeToc({}, 3000)},
      {"100 tracks", tooMany},
      {"offsets backwards", MakeToc({150, 9000, 8000}, 20000)},
      {"two tracks at one offset", MakeToc({150, 9000, 9000}, 20000)},
      {"lead-out before the last track", MakeToc({150, 9000}, 8000)},
      {"track numbers with a gap", gap},
      {"a start before the disc", negative},
  };
  for (const Case& c : cases) EXPECT_FALSE(c.toc.Check().ok()) << c.what;
  EXPECT_TRUE(TenTrackDisc().Check().ok());

  DiscToc toc;
  std::string error;
  EXPECT_FALSE(DiscToc::FromContents("", &toc, &error));
  EXPECT_FALSE(DiscToc::FromContents("150 abc", &toc, &error));
  EXPECT_NE(error.find("abc"), std::string::npos) << error;
  EXPECT_FALSE(DiscToc::FromContents("150 1234567890", &toc, &error)) << "ten digits";
}

TEST(DiscTocTest, LengthsAndAudioSession) {
  const DiscToc toc = TenTrackDisc();
  EXPECT_EQ(toc.TrackSeconds(0), (18901 - 150) / 75);
  EXPECT_EQ(toc.TrackSeconds(9), (206535 - 182560) / 75) << "the last track ends at the lead-out";
  EXPECT_EQ(toc.TrackSeconds(10), 0);
  EXPECT_EQ(toc.AlbumSeconds(), 206535 / 75 - 2);
  EXPECT_EQ(SecondsToTimeString(toc.AlbumSeconds()), "45:51");
  EXPECT_EQ(SecondsToTimeString(65), "1:05");

  // An enhanced CD: the data track of the second session is left out and the
  // audio session ends 11400 frames before it.
  DiscToc enhanced = MakeToc({150, 20000, 40000, 90000}, 120000);
  enhanced.tracks[3].control = 0x04;
  EXPECT_TRUE(enhanced.HasDataTrack());
  EXPECT_EQ(enhanced.AudioTrackCount(), 3);
  const DiscToc session = enhanced.AudioSession();
  ASSERT_EQ(session.TrackCount(), 3);
  EXPECT_EQ(session.leadOut, 90000 - 11400);
  EXPECT_EQ(toc.AudioSession().Contents(), toc.Contents()) << "an audio disc stays as it is";
}

}  // namespace
}  // namespace gorvan::test
