// The catalog search walk over catalogs built through the object model.
#include "search/CatalogSearch.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "catalog/CatalogFixture.h"
#include "catalog/ExtraData.h"

namespace gorvan::test {
namespace {

// 5 March 2004 13:47:09 as an OLE date.
constexpr double kDate = 38051 + (13 * 3600 + 47 * 60 + 9) / 86400.0;

struct FileDef {
  std::string name{}, notes{}, extra{};
  std::vector<std::pair<std::string, std::string>> members{};  // name, inner path
};
struct FolderDef {
  std::string name{}, path{}, notes{}, extra{};
  std::vector<FileDef> files{};
};
struct DiscDef {
  std::string name{}, basePath{}, notes{}, extra{};
  int32_t mediaType = 3;
  int32_t category = 0;
  std::vector<FolderDef> folders{};
};

using Strings = std::vector<std::string>;

class CatalogSearchTest : public CatalogTest {
 protected:
  void SetUp() override { OpenCatalog(); }

  // Folders are dated a day after the disc's scan, files two days, entries three.
  int32_t Add(const DiscDef& def) {
    classCd& cd = cur_.NewDisc();
    cd.SetCdName(def.name);
    cd.SetCdBasepath(def.basePath);
    cd.SetCdNotes(def.notes);
    cd.SetCdExtra(def.extra);
    cd.setCdMediaType(def.mediaType);
    cd.setCdCategory(def.category);
    cd.setCdTotalSize(123456789.0);
    cd.setCdLastScanned(kDate);
    for (const FolderDef& fs : def.folders) {
      classDir& dir = cd.GetDirAppend();
      dir.SetDirName(fs.name);
      dir.SetDirPath(fs.path);
      dir.SetDirNotes(fs.notes);
      dir.SetDirExtra(fs.extra);
      dir.setDirDate(kDate + 1);
      dir.setDirSize(4096);
      dir.setDirAttr(16);
      dir.GetFileAppendStart();
      for (const FileDef& f : fs.files) {
        ClassFile& file = dir.GetFileAppend();
        file.SetFileName(f.name);
        file.SetFileNotes(f.notes);
        file.SetFileExtra(f.extra);
        file.setFileSize(1000);
        file.setFileDate(kDate + 2);
        file.setFileAttr(32);
        if (f.members.empty()) continue;
        file.GetZipAppendStart();
        for (const auto& [name, inner] : f.members) {
          ClassFile& m = file.GetZipAppend();
          m.SetFileName(name);
          m.setFilePath(inner);
          m.setFileSize(10);
          m.setFileDate(kDate + 3);
          m.setFileAttr(1);
        }
        file.GetZipAppendFinish();
      }
      dir.GetFileAppendFinish();
    }
    cd.GetDirAppendFinish();
    const int32_t id = cd.GetCdId();
    EXPECT_TRUE(cur_.CommitDisc());
    return id;
  }

  // Runs a search and returns its rows; the status lands in status_.
  std::vector<SearchResult> Find(const SearchOptions& options) {
    std::vector<SearchResult> rows;
    CatalogSearch search(data_);
    JobControl job;
    status_ = search.Run(options, [&rows](const SearchResult& r) { rows.push_back(r); }, job);
    steps_ = search.steps();
    return rows;
  }
  Strings Keys(const SearchOptions& options) {
    Strings keys;
    for (const SearchResult& r : Find(options)) keys.push_back(r.Key());
    return keys;
  }
  static SearchOptions Names(const std::string& text) {
    return SearchOptions{.text = text, .inNames = true};
  }

  Status status_;
  int64_t steps_ = 0;
};

// A row's kind and columns, joined by "|".
std::string Columns(const SearchResult& r) {
  return std::to_string(static_cast<int>(r.kind)) + "|" + r.fileName + "|" + r.cdName + "|" +
         r.path + "|" + r.date + "|" + r.size + "|" + r.attributes + "|" + r.notes + "|" +
         r.internalDate;
}

TEST_F(CatalogSearchTest, VisitsDiscFoldersFilesAndEntriesInStoredOrderWithTheirKeysAndColumns) {
  const int32_t cat = AddCategory("Backups");
  const int32_t disc = Add(
      {.name = "x-disc, one",
       .basePath = "/media/usb",
       .notes = "disc notes",
       .category = cat,
       .folders = {{.name = "x-root", .path = "\\", .files = {{.name = "x-a.txt", .notes = "n1"}}},
                   {.name = "x-sub",
                    .path = "x-root\\deep",
                    .notes = "folder notes",
                    .files = {{.name = "x-b.zip",
                               .members = {{"x-inner.txt", "docs\\old"}, {"x-top.txt", ""}}},
                              {.name = "x-c.txt"}}}}});
  classCd& cd = cur_.Disc(disc);
  Strings folderIds, fileIds, entryIds;
  for (classDir& d = cd.GetDirFirst(); !d.isEof(); cd.GetDirNext()) {
    folderIds.push_back(std::to_string(d.GetDirId()));
    for (ClassFile& f = d.GetFileFirst(); !f.isEof(); d.GetFileNext()) {
      fileIds.push_back(std::to_string(f.GetFileId()));
      if (!f.IsArchive()) continue;
      entryIds.push_back(std::to_string(f.GetZipFirst().GetFileId()));
      entryIds.push_back(std::to_string(f.GetZipNext().GetFileId()));
    }
  }
  ASSERT_EQ(folderIds.size(), 2u);
  ASSERT_EQ(fileIds.size(), 3u);
  const std::string c = "T:" + std::to_string(cat) + "\\C:" + std::to_string(disc);
  const std::string d0 = c + "\\D:" + folderIds[0], d1 = c + "\\D:" + folderIds[1];
  const std::string zip = d1 + "\\F:" + fileIds[1];

  SearchOptions o = Names("x-");
  o.inZip = true;
  const std::vector<SearchResult> rows = Find(o);
  ASSERT_TRUE(status_.ok()) << status_.message();
  Strings keys, columns;
  for (const SearchResult& r : rows) {
    keys.push_back(r.Key());
    columns.push_back(Columns(r));
  }
  EXPECT_EQ(keys, (Strings{c, d0, d0 + "\\F:" + fileIds[0], d1, zip, zip + "\\Z:" + entryIds[0],
                           zip + "\\Z:" + entryIds[1], d1 + "\\F:" + fileIds[2]}));
  // Disc: base path, last scan, total size, no attributes. Folder: its own full
  // path. File: its folder's full path. Entry: inside the archive, in its folders.
  const std::string disc1 = "|x-disc, one|", sub = disc1 + "x-root/deep/x-sub";
  const std::string dirDay = "|3/6/2004 1:47:09 PM|4096|16|", fileDay = "|3/7/2004 1:47:09 PM|1000|32|";
  const std::string entryDay = "|3/8/2004 1:47:09 PM|10|1||200403081309";
  EXPECT_EQ(columns, (Strings{"0|x-disc, one" + disc1 + "/media/usb|3/5/2004 1:47:09 PM|123456789||"
                              "disc notes|200403051309",
                              "1|x-root" + disc1 + "/x-root" + dirDay + "|200403061309",
                              "2|x-a.txt" + disc1 + "/x-root" + fileDay + "n1|200403071309",
                              "1|x-sub" + sub + dirDay + "folder notes|200403061309",
                              "2|x-b.zip" + sub + fileDay + "|200403071309",
                              "3|x-inner.txt" + sub + "/x-b.zip/docs/old" + entryDay,
                              "3|x-top.txt" + sub + "/x-b.zip" + entryDay,
                              "2|x-c.txt" + sub + fileDay + "|200403071309"}));
  EXPECT_EQ(steps_, 5) << "one progress step for each file and archive entry";
  // The internal date leaves the minutes out (13:47:09 is "1309" above).
  EXPECT_EQ(InternalDateKey(38051) + "|" + InternalDateKey(1e300), "200403050000|");

  // Without "Search Within Zip Files" the entries are not visited at all.
  o.inZip = false;
  EXPECT_EQ(Find(o).size(), rows.size() - 2);
  EXPECT_EQ(steps_, 3);
  // A disc without category has no "T:" part.
  Add({.name = "x-plain"});
  EXPECT_EQ(Keys(o).back().substr(0, 2), "C:");
}

TEST_F(CatalogSearchTest, EachKindGivesTheFieldTestItsOwnTexts) {
  std::string audioExtra = SetExtraValue("", kExtraAudioAlbum, "Blue");
  audioExtra = SetExtraValue(audioExtra, kExtraAudioArtist, "Miles");
  audioExtra = SetExtraValue(audioExtra, kExtraAudioCategory, "jazz");
  audioExtra = SetExtraValue(audioExtra, kExtraT1, "t-one");
  const std::string trackExtra = SetExtraValue("", kExtraTrackLength, "5:37");
  const std::string folderExtra = SetExtraValue(SetExtraValue("", kExtraT1, "a"), kExtraT1 + 2, "c");
  const std::string audio = "C:" + std::to_string(Add(
      {.name = "Kind of Blue disc", .basePath = "/dev/sr0", .extra = audioExtra, .mediaType = 105,
       .folders = {{.path = "\\", .files = {{.name = "Track 01.cda", .extra = trackExtra}}}}}));
  const std::string plain = "C:" + std::to_string(Add(
      {.name = "Photos", .basePath = "/home/ann/Photos", .notes = "holiday pictures",
       .folders = {{.name = "2004", .path = "\\", .notes = "holiday folder", .extra = folderExtra,
                    .files = {{.name = "beach.jpg", .notes = "holiday file"}}}}}));

  SearchOptions o = Names("Blue|Miles|jazz");
  o.matchMode = MatchMode::kWholeWord;
  EXPECT_EQ(Keys(o), Strings{audio}) << "album|artist|genre is an audio disc's name";
  o.text = "Kind of Blue disc";
  EXPECT_TRUE(Keys(o).empty()) << "an audio disc is not found by its own name";
  const std::vector<SearchResult> track = Find(Names("Track 01"));
  ASSERT_EQ(track.size(), 1u);
  EXPECT_EQ(track[0].size, "5:37 Min") << "an audio track's size column is its length";

  // Path names find discs only, by the base path scanned; comments the notes of every kind.
  EXPECT_EQ(Keys({.text = "home/ann", .inPathNames = true}), Strings{plain});
  EXPECT_EQ(Keys({.text = "holiday", .inComments = true}).size(), 3u);

  // Extra: "T1".."T6" joined by CR LF, in full.
  o = SearchOptions{.text = "a\r\n\r\nc\r\n\r\n\r\n", .inExtra = true,
                    .matchMode = MatchMode::kWholeWord};
  const Strings folder = Keys(o);
  ASSERT_EQ(folder.size(), 1u);
  EXPECT_NE(folder[0].find("\\D:"), std::string::npos);
  o.text = "t-one\r\n";
  o.matchMode = MatchMode::kBeginning;
  EXPECT_EQ(Keys(o), Strings{audio});
  // A disc without extra data gives an empty extra text; a folder or file
  // without it still gives the five separators.
  EXPECT_TRUE(Keys({.text = "@@^$", .inExtra = true}).empty()) << "\"@@^$\" is plain text";
  const Strings keys = Keys({.text = "@@^(?:\\r\\n){5}$|^$", .inExtra = true});
  ASSERT_EQ(keys.size(), 4u) << "the audio disc's folder and track, the plain disc, beach.jpg";
  EXPECT_EQ(keys[2], plain);
  EXPECT_NE(keys[3].find("\\F:"), std::string::npos);
}

TEST_F(CatalogSearchTest, CategoryTakesItsSubCategoriesAtEveryDepthAndRefusals) {
  const int32_t music = AddCategory("Music");
  const int32_t jazz = AddCategory("Jazz", music);
  const int32_t bebop = AddCategory("Bebop", jazz);
  const int32_t a = Add({.name = "d bebop", .category = bebop});
  Add({.name = "d films", .category = AddCategory("Films")});
  const int32_t c = Add({.name = "d music", .category = music});
  Add({.name = "d loose"});
  const int32_t e = Add({.name = "d jazz", .category = jazz});

  SearchOptions o = Names("d ");
  o.categoryId = music;
  std::vector<int32_t> discs;
  for (const SearchResult& r : Find(o)) discs.push_back(r.discId);
  EXPECT_EQ(discs, (std::vector<int32_t>{a, c, e})) << "in the catalog's disc order";
  o.categoryId = bebop;
  EXPECT_EQ(Find(o).size(), 1u);
  o.categoryId = 0;
  EXPECT_EQ(Find(o).size(), 5u);
  o.categoryId = 999;
  EXPECT_TRUE(Find(o).empty());
  EXPECT_TRUE(status_.IsNotFound());

  // The form's refusals, in its order.
  o = SearchOptions{};
  EXPECT_EQ(CatalogSearch::Check(o).message(), kNothingToSearchFor) << "empty text, no field";
  o.text = "d";
  EXPECT_EQ(CatalogSearch::Check(o).message(), kSelectSomethingToSearchWithin);
  EXPECT_TRUE(Find(o).empty());
  EXPECT_TRUE(status_.IsInvalidArgument());
  // "Search Filenames" alone passes the check and tests nothing.
  o.inFileNames = true;
  EXPECT_TRUE(CatalogSearch::Check(o).ok());
  EXPECT_TRUE(Find(o).empty());
  EXPECT_TRUE(status_.ok());
}

TEST_F(CatalogSearchTest, StopEndsTheWalkAtTheNextObjectAndKeepsTheRows) {
  Add({.name = "s disc",
       .folders = {{.name = "s1", .path = "\\", .files = {{.name = "s-a"}, {.name = "s-b"}}},
                   {.name = "s2", .path = "\\", .files = {{.name = "s-c"}}}}});
  CatalogSearch search(data_);
  Strings names;
  std::stop_source stop;
  JobControl job(stop.get_token());
  Status s = search.Run(Names("s"), [&](const SearchResult& r) {
    names.push_back(r.fileName);
    if (names.size() == 3) stop.request_stop();
  }, job);
  EXPECT_TRUE(s.IsCancelled());
  EXPECT_EQ(names, (Strings{"s disc", "s1", "s-a"}));
  EXPECT_EQ(search.hits(), 3);
  EXPECT_EQ(search.steps(), 1) << "the flag is checked before the next file is stepped";

  // A stop asked before the run ends it at its first check.
  names.clear();
  s = search.Run(Names("s"), [&](const SearchResult& r) { names.push_back(r.fileName); }, job);
  EXPECT_TRUE(s.IsCancelled());
  EXPECT_TRUE(names.empty());

  // Stopping from the progress step: the file stepped is still tested.
  std::stop_source stop2;
  job = JobControl(stop2.get_token(), [&](const JobProgress& p) {
    EXPECT_EQ(p.maximum, 0) << "the disc says it holds no files";
    if (p.value == 2) stop2.request_stop();
  }, JobControl::kEveryStep);
  s = search.Run(Names("s"), [&](const SearchResult& r) { names.push_back(r.fileName); }, job);
  EXPECT_TRUE(s.IsCancelled());
  EXPECT_EQ(names, (Strings{"s disc", "s1", "s-a", "s-b"}));

  // Without a sink only the hits are counted.
  JobControl plain;
  EXPECT_TRUE(search.Run(Names("s"), nullptr, plain).ok());
  EXPECT_EQ(search.hits(), 6);
  EXPECT_EQ(search.steps(), 3);
}

TEST_F(CatalogSearchTest, DamagedChainEndsTheWalkWithTheDataFileErrorAndKeepsEarlierRows) {
  const int32_t disc = Add({.name = "dmg", .folders = {{.name = "dmg-1", .path = "\\",
                                                        .files = {{.name = "dmg-a"}, {.name = "dmg-b"}}}}});
  ClassFile& f = cur_.Disc(disc).GetDirFirst().GetFileFirst();
  f.record().next = 0x7ffffff0;  // far beyond the end of the file
  ASSERT_TRUE(f.recordWrite());

  const std::vector<SearchResult> rows = Find(Names("dmg"));
  EXPECT_TRUE(status_.IsCorruption()) << status_.message();
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[2].fileName, "dmg-a");
}

TEST_F(CatalogSearchTest, LegacyCatalogTextIsSearchedAsUnicode) {
  data_.CloseFiles();
  OpenCatalog("legacy.cd", TextEncoding::kWindows1252);
  ASSERT_EQ(data_.GetEncoding(), TextEncoding::kWindows1252);
  Add({.name = "Caf\xC3\xA9", .folders = {{.name = "\xE2\x82\xAC 100", .path = "\\"}}});
  EXPECT_EQ(Find(Names("CAF\xC3\x89")).size(), 1u);
  const std::vector<SearchResult> rows = Find(Names("*\xE2\x82\xAC*"));
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].fileName, "\xE2\x82\xAC 100");
  EXPECT_EQ(rows[0].cdName, "Caf\xC3\xA9");
}

}  // namespace
}  // namespace gorvan::test
