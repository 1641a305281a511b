// Compact, back up, save as and merge: the copy's content, its layout, the
// files left beside the catalog, refusals, cancel and a full disk.
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstring>

#include "CatalogFixture.h"
#include "LiveContent.h"
#include "catalog/CatalogCheck.h"
#include "catalog/basBackup.h"
#include "support/FullDisk.h"

namespace gorvan::test {
namespace {

bool Exists(const std::string& path) { return ::access(path.c_str(), F_OK) == 0; }

class MaintenanceTest : public CatalogTest {
 protected:
  // A catalog with everything a copy must carry, and garbage it must drop: a
  // category whose parent comes later in the chain, a disc filed under a
  // category, an archive with members, replaced texts and a deleted disc.
  void Fill() {
    data_.SetDataNotes("old notes");
    data_.SetDataNotes("catalog notes");
    data_.SetDataExtra("T1x");
    data_.SetDataIconKey("books");
    data_.SetDataFont("Courier New");
    data_.SetDataPassword("secret");
    const int32_t music = AddCategory("Music");
    const int32_t jazz = AddCategory("Jazz", music);
    const int32_t films = AddCategory("Films");
    cur_.Cat(music).SetCatParentId(films);
    cur_.Cat(films).SetCatNotes("moving pictures");
    AddDisc("Disc, one", 2, 3, jazz);
    ASSERT_TRUE(data_.GetCdDelete(AddDisc("Gone", 1, 2)));

    classCd& cd = cur_.NewDisc();
    cd.SetCdName("Zips");
    cd.setCdCategory(films);
    cd.setCdTotalSize(1.5e15);
    classDir& dir = cd.GetDirAppend();
    dir.SetDirName("z");
    dir.SetDirPath("\\");
    dir.SetDirNotes("a folder note");
    dir.GetFileAppendStart();
    ClassFile& f = dir.GetFileAppend();
    f.SetFileName("a.zip");
    f.setFilePath("\\z");
    f.setFileSize(300);
    f.GetZipAppendStart();
    for (const char* name : {"inner.txt", "deeper\\x.bin"}) {
      ClassFile& m = f.GetZipAppend();
      m.SetFileName(name);
      m.setFileSize(5);
    }
    f.GetZipAppendFinish();
    ClassFile& g = dir.GetFileAppend();
    g.SetFileName("plain.txt");
    g.SetFileNotes("file note");
    dir.GetFileAppendFinish();
    cd.setCdNumOfSubdirs(1);
    cd.setCdNumOfFiles(2);
    cd.GetDirAppendFinish();
    ASSERT_TRUE(cur_.CommitDisc());

    classCd& first = cur_.FirstDisc();
    first.SetCdNotes("first notes");
    first.SetCdNotes("line one\r\nline two");
    first.SetCdExtra("T1first|`|T2second");
    ASSERT_TRUE(data_.Flush());
  }

  int64_t Garbage(classData& d) {
    classData::PhysicalSize size;
    EXPECT_TRUE(d.CalcPhysicalSize(&size).ok());
    return size.garbage;
  }

  JobControl job_;
  FileOpener open_;
};

TEST_F(MaintenanceTest, BackupAndCompactionKeepTheLiveContentWithoutGarbage) {
  OpenCatalog();
  Fill();
  ASSERT_GT(Garbage(data_), 0);
  const std::string before = LiveContent(data_);
  std::vector<std::string> captions;
  int64_t range = 0, last = 0;
  std::stop_source never;
  job_ = JobControl(never.get_token(), [&](const JobProgress& p) {
    range = p.maximum;
    last = p.value;
    if (!p.caption.empty() && (captions.empty() || captions.back() != p.caption)) {
      captions.push_back(p.caption);
    }
  }, JobControl::kEveryStep);

  const MaintenanceResult r = BackupDataFiles(data_, Path("copy.cd"), job_);
  ASSERT_TRUE(r.status.ok()) << r.message;
  EXPECT_EQ(r.message, "Data Backup Successful");
  EXPECT_EQ(data_.GetDataFileName(), Path()) << "a backup leaves the open catalog open";
  EXPECT_FALSE(Exists(Path(kTempCatalogName)));
  EXPECT_EQ(range, 8) << "3 categories, 2 discs, 3 folders";
  EXPECT_EQ(last, 8);
  EXPECT_EQ(captions, (std::vector<std::string>{"Processing : Disc, one", "Processing : Zips"}));

  // Live content holds the password and the parents' names, translated although
  // Films comes after Music in the chain.
  classData copy;
  ASSERT_TRUE(copy.OpenFiles(Path("copy.cd"), false, false)) << copy.GetErrorText();
  EXPECT_EQ(LiveContent(copy), before);
  EXPECT_EQ(Garbage(copy), 0);
  EXPECT_TRUE(CatalogCheck(copy.file()).Run().empty());
  EXPECT_EQ(copy.GetDataFont(), "") << "the font is not carried over";
  EXPECT_EQ(copy.GetEncoding(), TextEncoding::kUtf8);
  // The header's texts follow the header: extra, icon key, name, notes, password.
  const HeaderRecord& h = copy.GetTableHeader();
  EXPECT_EQ(h.extra.pos, static_cast<int32_t>(HeaderRecord::kSize) + 1);
  const int32_t order[] = {h.extra.pos, h.iconKey.pos, h.name.pos, h.notes.pos, h.password.pos};
  for (int i = 1; i < 5; ++i) EXPECT_LT(order[i - 1], order[i]) << i;

  // A compaction keeps the content in place, the old catalog becoming test.bak.
  const std::string original = ReadFileBytes(Path());
  ASSERT_EQ(::chmod(Path().c_str(), 0600), 0);
  const MaintenanceResult c = CompactDataFiles(data_, job_);
  ASSERT_TRUE(c.status.ok()) << c.message;
  EXPECT_EQ(c.message, "Data Compaction Successful");
  ASSERT_TRUE(data_.IsOpen());
  EXPECT_EQ(LiveContent(data_), before);
  EXPECT_EQ(Garbage(data_), 0);
  EXPECT_EQ(ReadFileBytes(Path("test.bak")), original);
  EXPECT_FALSE(Exists(Path(kTempCatalogName)));
  struct stat st;
  ASSERT_EQ(::stat(Path().c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0600u) << "the compacted catalog keeps its permissions";

  // The reopened catalog takes edits, and a second compaction replaces the bak.
  AddDisc("Later", 1, 1);
  ASSERT_TRUE(data_.Flush());
  const std::string second = ReadFileBytes(Path());
  ASSERT_TRUE(CompactDataFiles(data_, job_).status.ok());
  EXPECT_EQ(ReadFileBytes(Path("test.bak")), second);
  EXPECT_EQ(data_.GetCdCount(), 3);
}

TEST_F(MaintenanceTest, AnEmptyCatalogCompactsToItsTextsAndIsRefusedAsItsOwnTarget) {
  OpenCatalog();
  data_.SetDataName("Empty one");
  data_.SetDataNotes("n");
  ASSERT_TRUE(CompactDataFiles(data_, job_).status.ok());
  const std::string compacted = ReadFileBytes(Path());
  EXPECT_EQ(compacted.size(), HeaderRecord::kSize + 9 + 1);
  EXPECT_EQ(data_.GetDataName(), "Empty one");

  MaintenanceResult r = BackupDataFiles(data_, Path(), job_);
  EXPECT_TRUE(r.status.IsInvalidArgument());
  EXPECT_EQ(r.message, "Cannot backup to the current data file!!");
  // Another name for the same file is the same file.
  ASSERT_EQ(::link(Path().c_str(), Path("alias.cd").c_str()), 0);
  r = SaveAsDataFiles(data_, Path("alias.cd"), job_);
  EXPECT_EQ(r.message, "Cannot save to the current data file!!");
  r = MergeExistingCatalog(data_, Path("alias.cd"), job_);
  EXPECT_EQ(r.message, "Cannot merge the current data file into itself!!");
  EXPECT_EQ(ReadFileBytes(Path()), compacted);
  EXPECT_EQ(data_.GetDataFileName(), Path());
}

TEST_F(MaintenanceTest, MergeTranslatesIdsAndEncodingsAndSaveAsKeepsTheCodePage) {
  // A Windows-1252 catalog whose category's parent comes later in the chain.
  OpenCatalog("other.cd", TextEncoding::kWindows1252);
  const int32_t child = AddCategory("R\xC3\xA9sum\xC3\xA9s");
  const int32_t papers = AddCategory("Papers");
  cur_.Cat(child).SetCatParentId(papers);
  AddDisc("Caf\xC3\xA9 \xE2\x82\xAC", 0, 0, child);  // "Café €": 0xE9 and 0x80 there
  data_.CloseFiles();
  const std::string otherBytes = ReadFileBytes(Path("other.cd"));
  OpenCatalog();
  AddCategory("Mine");
  AddDisc("Existing", 1, 1);
  MaintenanceResult r = MergeExistingCatalog(data_, Path("other.cd"), job_);
  ASSERT_TRUE(r.status.ok()) << r.message;
  EXPECT_EQ(r.message, "Data Merge Successful");
  EXPECT_EQ(r.warnings, 0u);
  EXPECT_EQ(data_.GetCatCount(), 3);
  EXPECT_EQ(data_.GetCdCount(), 2);
  EXPECT_EQ(cur_.FirstDisc().GetCdName(), "Existing");
  classCd& merged = cur_.NextDisc();
  std::string raw;
  ASSERT_TRUE(data_.file()->ReadRawText(merged.record().name, &raw));
  EXPECT_EQ(raw, "Caf\xC3\xA9 \xE2\x82\xAC") << "converted to the open catalog's UTF-8";
  classCat& cat = cur_.Cat(merged.GetCdCategory());
  EXPECT_EQ(cat.GetCatName(), "R\xC3\xA9sum\xC3\xA9s");
  EXPECT_EQ(cur_.Cat(cat.GetCatParentId()).GetCatName(), "Papers");
  EXPECT_TRUE(CatalogCheck(data_.file()).Run().empty());
  EXPECT_EQ(ReadFileBytes(Path("other.cd")).size(), otherBytes.size()) << "merge only reads it";

  // Back into Windows-1252: what the code page cannot hold is counted.
  AddDisc("\xE6\x97\xA5\xE6\x9C\xAC caf\xC3\xA9", 0, 0);  // two CJK characters
  data_.CloseFiles();
  OpenCatalog("ansi.cd", TextEncoding::kWindows1252);
  r = MergeExistingCatalog(data_, Path(), job_);
  ASSERT_TRUE(r.status.ok()) << r.message;
  EXPECT_EQ(r.warnings, 2u);
  EXPECT_NE(LiveContent(data_).find("\nC|?? caf\xC3\xA9|"), std::string::npos);

  // Save as goes on with the new file, byte for byte in the same code page.
  const std::string before = LiveContent(data_);
  ASSERT_TRUE(SaveAsDataFiles(data_, Path("ansi2.cd"), job_).status.ok());
  EXPECT_EQ(data_.GetDataFileName(), Path("ansi2.cd"));
  EXPECT_EQ(data_.GetEncoding(), TextEncoding::kWindows1252);
  EXPECT_EQ(LiveContent(data_), before);
  cur_.FirstDisc();
  ASSERT_TRUE(data_.file()->ReadRawText(cur_.NextDisc().record().name, &raw));
  EXPECT_EQ(raw, "Caf\xE9 \x80");
}

TEST_F(MaintenanceTest, AFullDiskOrCancelLeavesEveryCatalogAsItWas) {
  OpenCatalog();
  Fill();
  const std::string original = ReadFileBytes(Path());
  const std::string content = LiveContent(data_);
  auto unchanged = [&] {
    EXPECT_EQ(ReadFileBytes(Path()), original);
    EXPECT_FALSE(Exists(Path(kTempCatalogName))) << "no copy is left behind";
    EXPECT_FALSE(Exists(Path("test.bak")));
    ASSERT_TRUE(data_.IsOpen());
    EXPECT_EQ(LiveContent(data_), content);
  };
  std::string copy;  // where the compaction writes its copy
  for (size_t room : {size_t{0}, size_t{200}, size_t{1000}}) {
    open_ = [room, &copy](const std::string&, std::unique_ptr<FileIO>* out) {
      copy.clear();
      *out = std::make_unique<FullDisk>(&copy, room);
      return Status::OK();
    };
    const MaintenanceResult r = CompactDataFiles(data_, job_, open_);
    EXPECT_TRUE(r.status.IsIOError()) << room;
    EXPECT_NE(r.message.find("Data Compaction Failed!!"), std::string::npos);
    EXPECT_NE(r.message.find("No space left on device"), std::string::npos) << r.message;
    unchanged();
  }

  // Cancel in the middle of the first disc's folders.
  std::optional<std::stop_source> stop;
  auto cancelAt4 = [&] {
    stop.emplace();
    job_ = JobControl(stop->get_token(), [&](const JobProgress& p) {
      if (p.value == 4) stop->request_stop();
    }, JobControl::kEveryStep);
  };
  const std::pair<std::string, std::function<MaintenanceResult()>> runs[] = {
      {"Data Compaction Cancelled", [&] { return CompactDataFiles(data_, job_); }},
      {"Data Backup Cancelled", [&] { return BackupDataFiles(data_, Path("b.cd"), job_); }},
      {"Data SaveAs Cancelled", [&] { return SaveAsDataFiles(data_, Path("s.cd"), job_); }}};
  for (const auto& [message, run] : runs) {
    cancelAt4();
    const MaintenanceResult r = run();
    EXPECT_TRUE(r.status.IsCancelled()) << message;
    EXPECT_EQ(r.message, message);
    unchanged();
  }
  EXPECT_FALSE(Exists(Path("b.cd")) || Exists(Path("s.cd")));
  EXPECT_EQ(data_.GetDataFileName(), Path());

  // A cancelled merge takes back what it had added, once the source's password
  // ("secret", carried by the backup) is given.
  JobControl plain;
  ASSERT_TRUE(BackupDataFiles(data_, Path("src.cd"), plain).status.ok());
  auto merge = [&](const std::string& password) {
    cancelAt4();
    return MergeExistingCatalog(data_, Path("src.cd"), job_,
                                [&](const std::string& current) { return current == password; });
  };
  EXPECT_TRUE(merge("wrong").status.IsRefused());
  EXPECT_EQ(merge("wrong").message, "Invalid or Wrong Password !!");
  EXPECT_EQ(merge("secret").message, "Data Merge Cancelled");
  EXPECT_EQ(LiveContent(data_), content);
  EXPECT_TRUE(CatalogCheck(data_.file()).Run().empty());
  // The catalog still takes writes afterwards.
  AddDisc("after", 1, 1);
  EXPECT_TRUE(data_.ok());
}

TEST_F(MaintenanceTest, ADamagedSourceIsNeverPutInPlace) {
  OpenCatalog();
  Fill();
  const int32_t dirId = cur_.FirstDisc().record().firstDir;
  data_.CloseFiles();
  // Break the next link of the first folder of the first disc.
  std::string bytes = ReadFileBytes(Path());
  const int32_t bad = 0x7fffff00;
  std::memcpy(&bytes[dirId - 1 + 8], &bad, 4);  // DirRecord.next (little-endian host)
  ASSERT_TRUE(WriteFileBytes(Path(), bytes));
  ASSERT_TRUE(data_.OpenFiles(Path(), false, false));
  const std::string before = ReadFileBytes(Path());
  const MaintenanceResult r = CompactDataFiles(data_, job_);
  EXPECT_TRUE(r.status.IsCorruption()) << r.message;
  EXPECT_EQ(ReadFileBytes(Path()), before);
  EXPECT_FALSE(Exists(Path(kTempCatalogName)));
}

TEST(BackupNamesTest, BakAndTempBesideTheCatalog) {
  EXPECT_EQ(BackupFileName("/a/b/Gorvan.cd"), "/a/b/Gorvan.bak");
  EXPECT_EQ(BackupFileName("/a/b.d/catalog"), "/a/b.d/catalog.bak");
  EXPECT_EQ(BackupFileName("/a/.hidden"), "/a/.hidden.bak");
  EXPECT_EQ(BackupFileName("x.y.cd"), "x.y.bak");
  EXPECT_EQ(TempFileName("/a/b/Gorvan.cd"), "/a/b/~Temp_cd.~~~");
  EXPECT_EQ(TempFileName("Gorvan.cd"), "~Temp_cd.~~~");
}

}  // namespace
}  // namespace gorvan::test
