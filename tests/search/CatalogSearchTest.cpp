// The catalog search walk over catalogs built through the object model.
#include "search/CatalogSearch.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "catalog/CatalogFixture.h"
#include "catalog/ExtraData.h"

namespace gorvan::test {
namespace {

// 5 March 2004 13:47:09 as an OLE date.
constexpr double kDate = 38051 + (13 * 3600 + 47 * 60 + 9) / 86400.0;

struct FileSpec {
  std::string name{};
  std::string notes{};
  std::string extra{};
  std::vector<std::pair<std::string, std::string>> members{};  // name, inner path
};

struct FolderSpec {
  std::string name{};
  std::string path{};
  std::string notes{};
  std::string extra{};
  std::vector<FileSpec> files{};
};

struct DiscSpec {
  std::string name{};
  std::string basePath{};
  std::string notes{};
  std::string extra{};
  int32_t mediaType = 3;
  int32_t category = 0;
  std::vector<FolderSpec> folders{};
};

class CatalogSearchTest : public CatalogTest {
 protected:
  void SetUp() override { OpenCatalog(); }

  int32_t Add(const DiscSpec& spec) {
    classCd& cd = data_.GetCdAppend();
    cd.SetCdName(spec.name);
    cd.SetCdBasepath(spec.basePath);
    cd.SetCdNotes(spec.notes);
    cd.SetCdExtra(spec.extra);
    cd.setCdMediaType(spec.mediaType);
    cd.setCdCategory(spec.category);
    cd.setCdTotalSize(123456789.0);
    cd.setCdLastScanned(kDate);
    for (const FolderSpec& fs : spec.folders) {
      classDir& dir = cd.GetDirAppend();
      dir.SetDirName(fs.name);
      dir.SetDirPath(fs.path);
      dir.SetDirNotes(fs.notes);
      dir.SetDirExtra(fs.extra);
      dir.setDirDate(kDate + 1);
      dir.setDirSize(4096);
      dir.setDirAttr(16);
      dir.GetFileAppendStart();
      for (const FileSpec& f : fs.files) {
        ClassFile& file = dir.GetFileAppend();
        file.SetFileName(f.name);
        file.SetFileNotes(f.notes);
        file.SetFileExtra(f.extra);
        file.setFileSize(1000);
        file.setFileDate(kDate + 2);
        file.setFileAttr(32);
        if (!f.members.empty()) {
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
      }
      dir.GetFileAppendFinish();
    }
    cd.GetDirAppendFinish();
    const int32_t id = cd.GetCdId();
    EXPECT_TRUE(data_.GetCdCommit());
    return id;
  }

  // Runs a search and returns its rows; the status lands in status_.
  std::vector<SearchResult> Find(const SearchOptions& options) {
    std::vector<SearchResult> rows;
    CatalogSearch search(data_);
    status_ = search.Run(options, [&rows](const SearchResult& r) { rows.push_back(r); });
    return rows;
  }
  std::vector<std::string> Keys(const SearchOptions& options) {
    std::vector<std::string> keys;
    for (const SearchResult& r : Find(options)) keys.push_back(r.Key());
    return keys;
  }
  static SearchOptions Names(const std::string& text) {
    SearchOptions o;
    o.text = text;
    o.inNames = true;
    return o;
  }

  Status status_;
};

TEST_F(CatalogSearchTest, RefusalsComeInTheFormsOrder) {
  Add({.name = "Disc"});
  SearchOptions o;
  EXPECT_EQ(CatalogSearch::Check(o).message(), kNothingToSearchFor) << "empty text, no field";
  o.text = "x";
  EXPECT_EQ(CatalogSearch::Check(o).message(), kSelectSomethingToSearchWithin);
  EXPECT_TRUE(Find(o).empty());
  EXPECT_TRUE(status_.IsInvalidArgument());

  // "Search Filenames" alone passes the check and tests nothing.
  o.text = "Disc";
  o.inFileNames = true;
  EXPECT_TRUE(CatalogSearch::Check(o).ok());
  EXPECT_TRUE(Find(o).empty());
  EXPECT_TRUE(status_.ok());
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
  classCd& cd = data_.GetCdGoto(disc);
  std::vector<int32_t> folderIds, fileIds;
  int32_t inner = 0, top = 0;
  for (classDir& d = cd.GetDirFirst(); !d.isEof(); cd.GetDirNext()) {
    folderIds.push_back(d.GetDirId());
    for (ClassFile& f = d.GetFileFirst(); !f.isEof(); d.GetFileNext()) {
      fileIds.push_back(f.GetFileId());
      if (f.IsArchive()) {
        inner = f.GetZipFirst().GetFileId();
        top = f.GetZipNext().GetFileId();
      }
    }
  }
  ASSERT_EQ(folderIds.size(), 2u);
  ASSERT_EQ(fileIds.size(), 3u);
  const std::string c = "T:" + std::to_string(cat) + "\\C:" + std::to_string(disc);
  const std::string d0 = c + "\\D:" + std::to_string(folderIds[0]);
  const std::string d1 = c + "\\D:" + std::to_string(folderIds[1]);
  const std::string zip = d1 + "\\F:" + std::to_string(fileIds[1]);

  SearchOptions o = Names("x-");
  o.inZip = true;
  const std::vector<SearchResult> rows = Find(o);
  ASSERT_TRUE(status_.ok()) << status_.message();
  std::vector<std::string> keys;
  for (const SearchResult& r : rows) keys.push_back(r.Key());
  EXPECT_EQ(keys, (std::vector<std::string>{c, d0, d0 + "\\F:" + std::to_string(fileIds[0]), d1,
                                            zip, zip + "\\Z:" + std::to_string(inner),
                                            zip + "\\Z:" + std::to_string(top),
                                            d1 + "\\F:" + std::to_string(fileIds[2])}));

  // The disc: its name, base path, last scan, total size, no attributes.
  const SearchResult& r0 = rows[0];
  EXPECT_EQ(r0.kind, SearchResult::Kind::kDisc);
  EXPECT_EQ(r0.fileName, "x-disc, one");
  EXPECT_EQ(r0.cdName, "x-disc, one");
  EXPECT_EQ(r0.path, "/media/usb");
  EXPECT_EQ(r0.date, "3/5/2004 1:47:09 PM");
  EXPECT_EQ(r0.size, "123456789");
  EXPECT_EQ(r0.attributes, "");
  EXPECT_EQ(r0.notes, "disc notes");
  EXPECT_EQ(r0.internalDate, "200403051309");

  // A folder: its own full path, date, size and attribute bits.
  const SearchResult& r3 = rows[3];
  EXPECT_EQ(r3.kind, SearchResult::Kind::kFolder);
  EXPECT_EQ(r3.fileName, "x-sub");
  EXPECT_EQ(r3.path, "x-root/deep/x-sub");
  EXPECT_EQ(r3.date, "3/6/2004 1:47:09 PM");
  EXPECT_EQ(r3.size, "4096");
  EXPECT_EQ(r3.attributes, "16");
  EXPECT_EQ(r3.notes, "folder notes");
  EXPECT_EQ(r3.internalDate, "200403061309");

  // A file: the folder's full path.
  const SearchResult& r2 = rows[2];
  EXPECT_EQ(r2.kind, SearchResult::Kind::kFile);
  EXPECT_EQ(r2.path, "/x-root");
  EXPECT_EQ(r2.cdName, "x-disc, one");
  EXPECT_EQ(r2.size, "1000");
  EXPECT_EQ(r2.attributes, "32");
  EXPECT_EQ(r2.notes, "n1");
  EXPECT_EQ(r2.internalDate, "200403071309");

  // Archive entries: inside the archive, in the archive's own folders.
  EXPECT_EQ(rows[5].kind, SearchResult::Kind::kArchiveEntry);
  EXPECT_EQ(rows[5].path, "x-root/deep/x-sub/x-b.zip/docs/old");
  EXPECT_EQ(rows[6].path, "x-root/deep/x-sub/x-b.zip");
  EXPECT_EQ(rows[6].attributes, "1");
  EXPECT_EQ(rows[6].internalDate, "200403081309");

  // Without "Search Within Zip Files" the entries are not visited at all.
  o.inZip = false;
  EXPECT_EQ(Find(o).size(), rows.size() - 2);
  // A disc without category has no "T:" part.
  Add({.name = "x-plain"});
  EXPECT_EQ(Keys(o).back().substr(0, 2), "C:");
}

TEST_F(CatalogSearchTest, EachKindGivesTheFieldTestItsOwnTexts) {
  const std::string audioExtra =
      SetExtraValue(SetExtraValue(SetExtraValue(SetExtraValue("", kExtraAudioAlbum, "Blue"),
                                                kExtraAudioArtist, "Miles"),
                                  kExtraAudioCategory, "jazz"),
                    kExtraT1, "t-one");
  const std::string trackExtra = SetExtraValue("", kExtraTrackLength, "5:37");
  const std::string folderExtra = SetExtraValue(SetExtraValue("", kExtraT1, "a"), kExtraT1 + 2, "c");
  const int32_t audio = Add({.name = "Kind of Blue disc",
                             .basePath = "/dev/sr0",
                             .extra = audioExtra,
                             .mediaType = 105,
                             .folders = {{.name = "", .path = "\\",
                                          .files = {{.name = "Track 01.cda", .extra = trackExtra}}}}});
  const int32_t plain = Add({.name = "Photos",
                             .basePath = "/home/ann/Photos",
                             .notes = "holiday pictures",
                             .folders = {{.name = "2004",
                                          .path = "\\",
                                          .notes = "holiday folder",
                                          .extra = folderExtra,
                                          .files = {{.name = "beach.jpg", .notes = "holiday file"}}}}});
  const std::string audioKey = "C:" + std::to_string(audio);
  const std::string plainKey = "C:" + std::to_string(plain);

  SearchOptions o = Names("Blue|Miles|jazz");
  o.matchMode = MatchMode::kWholeWord;
  EXPECT_EQ(Keys(o), std::vector<std::string>{audioKey}) << "album|artist|genre is the name";
  o.text = "Kind of Blue disc";
  EXPECT_TRUE(Keys(o).empty()) << "an audio disc is not found by its own name";

  // The audio track's size column is its length.
  o = Names("Track 01");
  std::vector<SearchResult> rows = Find(o);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].size, "5:37 Min");

  // Path names find discs only, by the base path scanned.
  o = SearchOptions{.text = "home/ann", .inPathNames = true};
  EXPECT_EQ(Keys(o), std::vector<std::string>{plainKey});

  // Comments: the notes of every kind.
  o = SearchOptions{.text = "holiday", .inComments = true};
  EXPECT_EQ(Keys(o).size(), 3u);

  // Extra: "T1".."T6" joined by CR LF, in full.
  o = SearchOptions{.text = "a\r\n\r\nc\r\n\r\n\r\n", .inExtra = true,
                    .matchMode = MatchMode::kWholeWord};
  ASSERT_EQ(Keys(o).size(), 1u);
  EXPECT_NE(Keys(o)[0].find("\\D:"), std::string::npos);
  o.text = "t-one\r\n";
  o.matchMode = MatchMode::kBeginning;
  EXPECT_EQ(Keys(o), std::vector<std::string>{audioKey});
  // A disc without extra data gives an empty extra text; a folder or file
  // without it still gives the five separators.
  o = SearchOptions{.text = "@@^$", .inExtra = true};
  EXPECT_TRUE(Keys(o).empty()) << "\"@@^$\" is plain text";
  o.text = "@@^(?:\\r\\n){5}$|^$";
  const std::vector<std::string> keys = Keys(o);
  ASSERT_EQ(keys.size(), 4u) << "the audio disc's folder and track, the plain disc, beach.jpg";
  EXPECT_EQ(keys[2], plainKey);
  EXPECT_NE(keys[3].find("\\F:"), std::string::npos);
}

TEST_F(CatalogSearchTest, NamesFieldFindsEveryKindAndPlainModesApply) {
  Add({.name = "report",
       .folders = {{.name = "report", .path = "\\", .files = {{.name = "report"}, {.name = "Report 2004.doc"}}}}});
  SearchOptions o = Names("report");
  EXPECT_EQ(Keys(o).size(), 4u);
  o.matchMode = MatchMode::kWholeWord;
  EXPECT_EQ(Keys(o).size(), 3u);
  o.caseSensitive = true;
  o.matchMode = MatchMode::kBeginning;
  EXPECT_EQ(Keys(o).size(), 3u);
  o = Names("report 2004*");
  EXPECT_EQ(Keys(o).size(), 1u) << "pattern mode ignores case unless asked";
  o.caseSensitive = true;
  EXPECT_TRUE(Keys(o).empty());
}

TEST_F(CatalogSearchTest, CategoryTakesItsSubCategoriesAtEveryDepth) {
  const int32_t music = AddCategory("Music");
  const int32_t jazz = AddCategory("Jazz", music);
  const int32_t bebop = AddCategory("Bebop", jazz);
  const int32_t films = AddCategory("Films");
  const int32_t a = Add({.name = "d bebop", .category = bebop});
  Add({.name = "d films", .category = films});
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
}

TEST_F(CatalogSearchTest, StopEndsTheWalkAtTheNextObjectAndKeepsTheRows) {
  Add({.name = "s disc",
       .folders = {{.name = "s1", .path = "\\", .files = {{.name = "s-a"}, {.name = "s-b"}}},
                   {.name = "s2", .path = "\\", .files = {{.name = "s-c"}}}}});
  CatalogSearch search(data_);
  std::vector<std::string> names;
  Status s = search.Run(Names("s"), [&](const SearchResult& r) {
    names.push_back(r.fileName);
    if (names.size() == 3) search.RequestStop();
  });
  EXPECT_TRUE(s.IsCancelled());
  EXPECT_EQ(names, (std::vector<std::string>{"s disc", "s1", "s-a"}));
  EXPECT_EQ(search.hits(), 3);
  EXPECT_EQ(search.steps(), 1) << "the flag is checked before the next file is stepped";

  // Stopping from the progress step: the file stepped is still tested.
  names.clear();
  search.SetProgress([&](const SearchProgress& p) {
    EXPECT_EQ(p.planned, 0) << "the disc says it holds no files";
    if (p.steps == 2) search.RequestStop();
  });
  s = search.Run(Names("s"), [&](const SearchResult& r) { names.push_back(r.fileName); });
  EXPECT_TRUE(s.IsCancelled());
  EXPECT_EQ(names, (std::vector<std::string>{"s disc", "s1", "s-a", "s-b"}));

  // A new run clears the flag; without a sink only the hits are counted.
  search.SetProgress(nullptr);
  EXPECT_TRUE(search.Run(Names("s"), nullptr).ok());
  EXPECT_EQ(search.hits(), 6);
  EXPECT_EQ(search.steps(), 3);
}

TEST_F(CatalogSearchTest, ProgressStepsOnceForEachFileAndArchiveEntry) {
  Add({.name = "p", .folders = {{.name = "f", .path = "\\",
                                .files = {{.name = "a.zip", .members = {{"m1", ""}, {"m2", ""}}},
                                          {.name = "b"}}}}});
  CatalogSearch search(data_);
  std::vector<int64_t> steps;
  search.SetProgress([&](const SearchProgress& p) { steps.push_back(p.steps); });
  SearchOptions o = Names("nothing matches this");
  o.inZip = true;
  ASSERT_TRUE(search.Run(o, nullptr).ok());
  EXPECT_EQ(steps, (std::vector<int64_t>{1, 2, 3, 4}));
  o.inZip = false;
  ASSERT_TRUE(search.Run(o, nullptr).ok());
  EXPECT_EQ(search.steps(), 2);
}

TEST_F(CatalogSearchTest, InternalDateKeyLeavesTheMinutesOut) {
  EXPECT_EQ(InternalDateKey(kDate), "200403051309");
  // Same second, different minutes of one hour: the same key.
  const double other = 38051 + (13 * 3600 + 12 * 60 + 9) / 86400.0;
  EXPECT_EQ(InternalDateKey(other), InternalDateKey(kDate));
  EXPECT_EQ(InternalDateKey(38051), "200403050000");
  EXPECT_EQ(InternalDateKey(1e300), "");
}

TEST_F(CatalogSearchTest, DamagedChainEndsTheWalkWithTheDataFileErrorAndKeepsEarlierRows) {
  const int32_t disc = Add({.name = "dmg",
                            .folders = {{.name = "dmg-1", .path = "\\",
                                         .files = {{.name = "dmg-a"}, {.name = "dmg-b"}}}}});
  classCd& cd = data_.GetCdGoto(disc);
  ClassFile& f = cd.GetDirFirst().GetFileFirst();
  f.record().next = 0x7ffffff0;  // far beyond the end of the file
  ASSERT_TRUE(f.recordWrite());

  const std::vector<SearchResult> rows = Find(Names("dmg"));
  EXPECT_TRUE(status_.IsCorruption()) << status_.message();
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[2].fileName, "dmg-a");
}

TEST_F(CatalogSearchTest, HostileSearchTextsNeitherHangNorCrash) {
  Add({.name = "h", .folders = {{.name = std::string(5000, 'a') + "b", .path = "\\"}}});
  using Clock = std::chrono::steady_clock;
  const Clock::time_point start = Clock::now();
  // Catastrophic backtracking: the match limit ends it, and it counts as no match.
  EXPECT_TRUE(Find(Names("@@(a+)+$x")).empty());
  EXPECT_TRUE(status_.ok());
  // An expression that does not compile matches nothing, without a message.
  EXPECT_TRUE(Find(Names("@@(unclosed")).empty());
  // Unbalanced brackets match everything tested.
  EXPECT_EQ(Find(Names(")x(")).size(), 2u);
  // 10,000-character texts, plain and pattern.
  EXPECT_TRUE(Find(Names(std::string(10000, 'q'))).empty());
  std::string chain;
  for (int i = 0; i < 1000; ++i) chain += "a and ";
  chain += "b";
  EXPECT_TRUE(Find(Names(chain)).empty()) << "an overflowing chain matches nothing";
  EXPECT_LT(std::chrono::duration<double>(Clock::now() - start).count(), 60.0);
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
