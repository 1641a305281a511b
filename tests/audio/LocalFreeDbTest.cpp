// The local FreeDB folder: both layouts found in the wild, built by the test
// in a temporary folder, the category order, and damaged files.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "audio/AudioTestData.h"
#include "audio/LocalFreeDb.h"
#include "audio/uFreeDb.h"

namespace gorvan::test {
namespace {

std::string Entry(const std::string& ids, const std::string& title, const std::string& eol) {
  return "# xmcd" + eol + "#" + eol + "# Revision: 1" + eol + "DISCID=" + ids + eol +
         "DTITLE=" + title + eol + "DYEAR=2001" + eol + "TTITLE0=First" + eol + "TTITLE1=Second" +
         eol + "EXTD=" + eol + "PLAYORDER=" + eol;
}

class LocalFreeDbTest : public ::testing::Test {
 protected:
  void Put(const std::string& category, const std::string& name, const std::string& text) {
    ::mkdir(dir_.File(category).c_str(), 0755);
    ASSERT_TRUE(WriteFileBytes(dir_.File(category + "/" + name), text));
  }

  // Looks `toc` up in the test's folder with a uFreeDb, as the scan does.
  bool Lookup(const DiscToc& toc, uFreeDb* db) {
    db->SetQueryLocalDatabase(true);
    db->SetCDDBFilePath(dir_.path());
    db->SetHttpFetch(nullptr);
    return db->LookupMediaByToc(toc);
  }

  TempDir dir_;
};

// 0b0d0f02: the two-track disc 150 18265 250912.
const DiscToc kTwoTracks = MakeToc({150, 18265}, 250912);

TEST_F(LocalFreeDbTest, OneFilePerEntryAndTheCategoryOrder) {
  Put("rock", "0b0d0f02", Entry("0b0d0f02", "Rock Artist / Rock Album", "\r\n"));
  uFreeDb db;
  ASSERT_TRUE(Lookup(kTwoTracks, &db));
  EXPECT_EQ(db.GetAlbumCategory(), "rock");
  EXPECT_EQ(db.GetArtistName(), "Rock Artist");
  EXPECT_EQ(db.GetTrackName(2), "Second");
  EXPECT_EQ(db.GetAlbumYear(), "2001");
  EXPECT_EQ(db.GetTrackTime(1), (18265 - 150) / 75);
  EXPECT_EQ(db.GetAlbumLength(), 3343);

  // Present in "folk" too, which comes before "rock": a multiple-match
  // answer, whose first line wins.
  Put("folk", "0b0d0f02", Entry("0b0d0f02", "Folk Artist / Folk Album", "\n"));
  std::vector<LocalFreeDb::Match> matches;
  ASSERT_TRUE(LocalFreeDb::Find(dir_.path(), "0b0d0f02", {}, &matches).ok());
  ASSERT_EQ(matches.size(), 2u);
  const std::string answer = LocalFreeDb::QueryAnswerFor(matches, "0b0d0f02");
  EXPECT_EQ(answer.substr(0, answer.find('\r')),
            "210 Found exact matches, list follows (until terminating `.')");
  ASSERT_TRUE(Lookup(kTwoTracks, &db));
  EXPECT_EQ(db.GetAlbumCategory(), "folk");
  EXPECT_EQ(db.GetAlbumName(), "Folk Album");

  EXPECT_EQ(LocalFreeDb::QueryAnswerFor({}, "0b0d0f02"), "202 No match for disc ID 0b0d0f02.");
  EXPECT_EQ(LocalFreeDb::QueryAnswerFor({matches[1]}, "0b0d0f02"),
            "200 rock 0b0d0f02 Rock Artist / Rock Album");
}

TEST_F(LocalFreeDbTest, FilesOfManyEntriesFoundByTheirIdLines) {
  // A range file holds the entries whose ids start with 00 to 1f; the second
  // lists our id after another one, in upper case.
  Put("jazz", "00to1f",
      "#FILENAME=01020304\n" + Entry("01020304", "Wrong / Disc", "\n") + "#FILENAME=1a2b3c4d\n" +
          Entry("1a2b3c4d,0B0D0F02", "Linked / Entry", "\n"));
  Put("jazz", "20to3f", Entry("0b0d0f02", "Outside / Its Range", "\n"));
  Put("jazz", "notes.txt", Entry("0b0d0f02", "Not / A Range File", "\n"));
  uFreeDb db;
  ASSERT_TRUE(Lookup(kTwoTracks, &db));
  EXPECT_EQ(db.GetAlbumCategory(), "jazz");
  EXPECT_EQ(db.GetArtistName(), "Linked");

  // An id that is only part of another id in the list does not count.
  Put("jazz", "00to1f", Entry("10b0d0f02", "Longer / Id", "\n"));
  EXPECT_FALSE(Lookup(kTwoTracks, &db));
}

TEST_F(LocalFreeDbTest, RealEntryAndDamagedFiles) {
  const std::string real = ReadShared("entries/d50dd30f.reggae.xmcd");
  if (!real.empty()) {
    Put("reggae", "d50dd30f", real);
    uFreeDb db;
    ASSERT_TRUE(Lookup(MakeToc({150, 21052, 43715, 58057, 71430, 92865, 117600, 131987, 150625,
                                163292, 181490, 195685, 210197, 233230, 249257},
                               3541 * 75),
                       &db));
    EXPECT_EQ(db.GetAlbumName(), "Ska Island");
    EXPECT_EQ(db.GetTrackName(15), "Keep On Running");
    EXPECT_EQ(db.GetAlbumNotes(), " YEAR: 1997");
  }
  // Cut off before "PLAYORDER=": the entry still counts. Latin-1 bytes.
  Put("misc", "0b0d0f02", "DISCID=0b0d0f02\nDTITLE=Bj\xF6rk / Live\nTTITLE0=One");
  uFreeDb db;
  ASSERT_TRUE(Lookup(kTwoTracks, &db));
  EXPECT_EQ(db.GetArtistName(), "Bj\xC3\xB6rk");
  EXPECT_EQ(db.GetTrackName(1), "One");
  // A line of 3 MiB is cut to 64 KiB; an entry of more than 1 MiB is skipped.
  Put("misc", "0b0d0f02", "DISCID=0b0d0f02\nDTITLE=" + std::string(3 << 20, 'x') + "\n");
  ASSERT_TRUE(Lookup(kTwoTracks, &db));
  EXPECT_EQ(db.GetAlbumName().size(), LocalFreeDb::kMaxLineBytes - 7);
  std::string big = "DISCID=0b0d0f02\n";
  for (int i = 0; i < 40; ++i) big += "EXTD=" + std::string(60000, 'x') + "\n";
  Put("misc", "0b0d0f02", big);
  EXPECT_FALSE(Lookup(kTwoTracks, &db));
}

TEST_F(LocalFreeDbTest, MissingFolderAndCancel) {
  uFreeDb db;
  std::vector<std::pair<int, std::string>> events;
  db.SetErrorEvent([&](int n, const std::string& t) { events.emplace_back(n, t); });
  db.SetQueryLocalDatabase(true);
  db.SetCDDBFilePath(dir_.File("missing"));
  EXPECT_FALSE(db.LookupMediaByToc("150 18265 250912"));
  ASSERT_EQ(events.size(), 1u);
  EXPECT_EQ(events[0].first, 8885);
  EXPECT_EQ(events[0].second, "The folder for local database does not exist!");
  EXPECT_FALSE(db.LookupMediaByToc("150")) << "one value: no lookup";
  EXPECT_EQ(events.size(), 1u);

  Put("rock", "0b0d0f02", Entry("0b0d0f02", "A / B", "\n"));
  std::stop_source stop;
  stop.request_stop();
  std::vector<LocalFreeDb::Match> matches;
  EXPECT_TRUE(LocalFreeDb::Find(dir_.path(), "0b0d0f02", stop.get_token(), &matches).IsCancelled());
  EXPECT_TRUE(matches.empty());
}

}  // namespace
}  // namespace gorvan::test
