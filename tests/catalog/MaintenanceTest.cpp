// Compact, back up, save as and merge: the copy's content, its layout, the
// files left beside the catalog, refusals, cancel and a full disk.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstring>

#include "CatalogFixture.h"
#include "LiveContent.h"
#include "catalog/CatalogCheck.h"
#include "catalog/basBackup.h"

namespace gorvan::test {
namespace {

bool Exists(const std::string& path) {
  struct stat st;
  return ::stat(path.c_str(), &st) == 0;
}

// A file that takes room bytes and then fails as a full disk does.
class FullDiskFile final : public FileIO {
 public:
  explicit FullDiskFile(size_t room) : room_(room) {}
  Status ReadAt(uint64_t off, void* dst, size_t n, size_t* got) override {
    *got = off >= bytes_.size() ? 0 : std::min(n, bytes_.size() - static_cast<size_t>(off));
    if (*got) std::memcpy(dst, bytes_.data() + off, *got);
    return Status::OK();
  }
  Status WriteAt(uint64_t off, const void* src, size_t n) override {
    if (off + n > room_) return Status::IOError("write: No space left on device");
    if (off + n > bytes_.size()) bytes_.resize(off + n);
    std::memcpy(bytes_.data() + off, src, n);
    return Status::OK();
  }
  Status Truncate(uint64_t length) override {
    bytes_.resize(length);
    return Status::OK();
  }
  Status Sync() override { return Status::OK(); }
  Status Size(uint64_t* size) override {
    *size = bytes_.size();
    return Status::OK();
  }

 private:
  std::string bytes_;
  size_t room_;
};

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
    music_ = AddCategory("Music");
    jazz_ = AddCategory("Jazz", music_);
    films_ = AddCategory("Films");
    data_.GetCatGoto(music_).SetCatParentId(films_);
    data_.GetCatGoto(films_).SetCatNotes("moving pictures");
    AddDisc("Disc, one", 2, 3, jazz_);
    const int32_t gone = AddDisc("Gone", 1, 2);
    ASSERT_TRUE(data_.GetCdDelete(gone));
    AddArchiveDisc();
    classCd& cd = data_.GetCdFirst();
    cd.SetCdNotes("first notes");
    cd.SetCdNotes("line one\r\nline two");
    cd.SetCdExtra("T1first|`|T2second");
    ASSERT_TRUE(data_.Flush());
  }

  void AddArchiveDisc() {
    classCd& cd = data_.GetCdAppend();
    cd.SetCdName("Zips");
    cd.setCdCategory(films_);
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
    ASSERT_TRUE(data_.GetCdCommit());
  }

  int64_t Garbage(classData& d) {
    classData::PhysicalSize size;
    EXPECT_TRUE(d.CalcPhysicalSize(&size));
    return size.garbage;
  }

  int32_t music_ = 0, jazz_ = 0, films_ = 0;
  CopyHooks hooks_;
};

TEST_F(MaintenanceTest, ABackupHoldsTheLiveContentWithoutGarbageOrFont) {
  OpenCatalog();
  Fill();
  ASSERT_GT(Garbage(data_), 0);
  const std::string before = LiveContent(data_);
  std::vector<std::string> captions;
  int64_t range = 0, last = 0;
  hooks_.setRange = [&](int64_t r) { range = r; };
  hooks_.setValue = [&](int64_t v) { last = v; };
  hooks_.setCaption = [&](const std::string& c) { captions.push_back(c); };

  const MaintenanceResult r = BackupDataFiles(data_, Path("copy.cd"), hooks_);
  ASSERT_TRUE(r.status.ok()) << r.message;
  EXPECT_EQ(r.message, "Data Backup Successful");
  EXPECT_EQ(data_.GetDataFileName(), Path()) << "a backup leaves the open catalog open";
  EXPECT_FALSE(Exists(Path(kTempCatalogName)));
  // 3 categories, 2 discs, 3 folders.
  EXPECT_EQ(range, 8);
  EXPECT_EQ(last, 8);
  EXPECT_EQ(captions, (std::vector<std::string>{"Processing : Disc, one", "Processing : Zips"}));

  classData copy;
  ASSERT_TRUE(copy.OpenFiles(Path("copy.cd"), false, false)) << copy.GetErrorText();
  EXPECT_EQ(LiveContent(copy), before);
  EXPECT_EQ(Garbage(copy), 0);
  EXPECT_TRUE(CatalogCheck(copy.file()).Run().empty());
  EXPECT_EQ(copy.GetDataFont(), "") << "the font is not carried over";
  EXPECT_EQ(copy.GetDataPassword(), "secret");
  EXPECT_EQ(copy.GetEncoding(), TextEncoding::kUtf8);
  // Parents were translated although Films comes after Music in the chain.
  classCat& music = copy.GetCatFirst();
  EXPECT_EQ(music.GetCatName(), "Music");
  EXPECT_EQ(copy.GetCatGoto(music.GetCatParentId()).GetCatName(), "Films");
  // The header's texts follow the header in the order extra, icon key, name,
  // notes, password.
  const HeaderRecord& h = copy.GetTableHeader();
  EXPECT_EQ(h.extra.pos, static_cast<int32_t>(HeaderRecord::kSize) + 1);
  EXPECT_LT(h.extra.pos, h.iconKey.pos);
  EXPECT_LT(h.iconKey.pos, h.name.pos);
  EXPECT_LT(h.name.pos, h.notes.pos);
  EXPECT_LT(h.notes.pos, h.password.pos);
}

TEST_F(MaintenanceTest, AWindows1252CatalogCopiesByteForByte) {
  OpenCatalog("ansi.cd", TextEncoding::kWindows1252);
  AddDisc("Caf\xC3\xA9 \xE2\x82\xAC", 1, 1);  // "Café €": 0xE9 and 0x80 in the catalog
  const std::string before = LiveContent(data_);
  ASSERT_TRUE(SaveAsDataFiles(data_, Path("ansi2.cd"), hooks_).status.ok());
  EXPECT_EQ(data_.GetDataFileName(), Path("ansi2.cd")) << "save as goes on with the new file";
  EXPECT_EQ(data_.GetEncoding(), TextEncoding::kWindows1252);
  EXPECT_EQ(LiveContent(data_), before);
  std::string raw;
  classCd& cd = data_.GetCdFirst();
  ASSERT_TRUE(data_.file()->ReadRawText(cd.record().name, &raw));
  EXPECT_EQ(raw, "Caf\xE9 \x80");
}

TEST_F(MaintenanceTest, CompactionKeepsContentReplacesTheBakAndReopens) {
  OpenCatalog();
  Fill();
  const std::string before = LiveContent(data_);
  const std::string original = ReadFileBytes(Path());
  ASSERT_EQ(::chmod(Path().c_str(), 0600), 0);
  MaintenanceResult r = CompactDataFiles(data_, hooks_);
  ASSERT_TRUE(r.status.ok()) << r.message;
  EXPECT_EQ(r.message, "Data Compaction Successful");
  ASSERT_TRUE(data_.IsOpen());
  EXPECT_EQ(LiveContent(data_), before);
  EXPECT_EQ(Garbage(data_), 0);
  EXPECT_LT(ReadFileBytes(Path()).size(), original.size());
  EXPECT_EQ(ReadFileBytes(Path("test.bak")), original) << "the old catalog becomes test.bak";
  EXPECT_FALSE(Exists(Path(kTempCatalogName)));
  struct stat st;
  ASSERT_EQ(::stat(Path().c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0600u) << "the compacted catalog keeps its permissions";

  // The reopened catalog takes edits, and a second compaction replaces the bak.
  AddDisc("Later", 1, 1);
  ASSERT_TRUE(data_.Flush());
  const std::string second = ReadFileBytes(Path());
  r = CompactDataFiles(data_, hooks_);
  ASSERT_TRUE(r.status.ok()) << r.message;
  EXPECT_EQ(ReadFileBytes(Path("test.bak")), second);
  EXPECT_EQ(data_.GetCdCount(), 3);
}

TEST_F(MaintenanceTest, AnEmptyCatalogCompactsToItsHeaderAndTexts) {
  OpenCatalog();
  data_.SetDataName("Empty one");
  data_.SetDataNotes("n");
  ASSERT_TRUE(CompactDataFiles(data_, hooks_).status.ok());
  EXPECT_EQ(ReadFileBytes(Path()).size(), HeaderRecord::kSize + 9 + 1);
  EXPECT_EQ(data_.GetDataName(), "Empty one");
}

TEST_F(MaintenanceTest, TheOpenCatalogIsRefusedAsTarget) {
  OpenCatalog();
  AddDisc("d", 1, 1);
  const std::string before = ReadFileBytes(Path());
  MaintenanceResult r = BackupDataFiles(data_, Path(), hooks_);
  EXPECT_TRUE(r.status.IsInvalidArgument());
  EXPECT_EQ(r.message, "Cannot backup to the current data file!!");
  // Another name for the same file is the same file.
  ASSERT_EQ(::link(Path().c_str(), Path("alias.cd").c_str()), 0);
  r = SaveAsDataFiles(data_, Path("alias.cd"), hooks_);
  EXPECT_EQ(r.message, "Cannot save to the current data file!!");
  r = MergeExistingCatalog(data_, Path("alias.cd"), hooks_);
  EXPECT_EQ(r.message, "Cannot merge the current data file into itself!!");
  EXPECT_EQ(ReadFileBytes(Path()), before);
  EXPECT_EQ(data_.GetDataFileName(), Path());
}

TEST_F(MaintenanceTest, MergeAppendsCategoriesAndDiscsWithTranslatedIds) {
  // The other catalog: Windows-1252, a category whose parent comes later.
  {
    classData other;
    other.SetNewCatalogEncoding(TextEncoding::kWindows1252);
    ASSERT_TRUE(other.OpenFiles(Path("other.cd"), false, true));
    classCat& child = other.GetCatAppend();
    child.SetCatName("R\xC3\xA9sum\xC3\xA9s");
    ASSERT_TRUE(other.GetCatCommit());
    const int32_t childId = child.GetCatId();
    classCat& parent = other.GetCatAppend();
    parent.SetCatName("Papers");
    ASSERT_TRUE(other.GetCatCommit());
    const int32_t parentId = parent.GetCatId();
    other.GetCatGoto(childId).SetCatParentId(parentId);
    classCd& cd = other.GetCdAppend();
    cd.SetCdName("Caf\xC3\xA9");
    cd.setCdCategory(childId);
    cd.GetDirAppendFinish();
    ASSERT_TRUE(other.GetCdCommit());
  }
  OpenCatalog();
  AddCategory("Mine");
  AddDisc("Existing", 1, 1);
  const std::string otherBytes = ReadFileBytes(Path("other.cd"));

  const MaintenanceResult r = MergeExistingCatalog(data_, Path("other.cd"), hooks_);
  ASSERT_TRUE(r.status.ok()) << r.message;
  EXPECT_EQ(r.message, "Data Merge Successful");
  EXPECT_EQ(data_.GetCatCount(), 3);
  EXPECT_EQ(data_.GetCdCount(), 2);
  classCd& first = data_.GetCdFirst();
  EXPECT_EQ(first.GetCdName(), "Existing");
  classCd& merged = data_.GetCdNext();
  EXPECT_EQ(merged.GetCdName(), "Caf\xC3\xA9") << "converted to the open catalog's UTF-8";
  std::string raw;
  data_.file()->ReadRawText(merged.record().name, &raw);
  EXPECT_EQ(raw, "Caf\xC3\xA9");
  classCat& cat = data_.GetCatGoto(merged.GetCdCategory());
  EXPECT_EQ(cat.GetCatName(), "R\xC3\xA9sum\xC3\xA9s");
  EXPECT_EQ(data_.GetCatGoto(cat.GetCatParentId()).GetCatName(), "Papers");
  EXPECT_TRUE(CatalogCheck(data_.file()).Run().empty());
  EXPECT_EQ(ReadFileBytes(Path("other.cd")).size(), otherBytes.size()) << "merge only reads it";
}

TEST_F(MaintenanceTest, MergeIntoAWindows1252CatalogCountsWhatItCannotHold) {
  {
    classData other;
    ASSERT_TRUE(other.OpenFiles(Path("utf8.cd"), false, true));
    classCd& cd = other.GetCdAppend();
    cd.SetCdName("\xE6\x97\xA5\xE6\x9C\xAC caf\xC3\xA9");  // two CJK characters
    cd.GetDirAppendFinish();
    ASSERT_TRUE(other.GetCdCommit());
  }
  OpenCatalog("ansi.cd", TextEncoding::kWindows1252);
  const MaintenanceResult r = MergeExistingCatalog(data_, Path("utf8.cd"), hooks_);
  ASSERT_TRUE(r.status.ok()) << r.message;
  EXPECT_EQ(r.warnings, 2u);
  EXPECT_EQ(data_.GetCdFirst().GetCdName(), "?? caf\xC3\xA9");
}

TEST_F(MaintenanceTest, CancelLeavesEveryCatalogAsItWas) {
  OpenCatalog();
  Fill();
  ASSERT_TRUE(data_.Flush());
  const std::string original = ReadFileBytes(Path());
  const std::string content = LiveContent(data_);
  std::atomic<bool> cancel{false};
  hooks_.cancel = &cancel;
  // Cancel in the middle of the first disc's folders.
  hooks_.setValue = [&](int64_t v) {
    if (v == 4) cancel = true;
  };

  MaintenanceResult r = CompactDataFiles(data_, hooks_);
  EXPECT_TRUE(r.status.IsCancelled());
  EXPECT_EQ(r.message, "Data Compaction Cancelled");
  EXPECT_EQ(ReadFileBytes(Path()), original);
  EXPECT_FALSE(Exists(Path(kTempCatalogName))) << "a cancelled compaction removes its copy";
  EXPECT_FALSE(Exists(Path("test.bak")));
  EXPECT_EQ(LiveContent(data_), content);

  cancel = false;
  r = BackupDataFiles(data_, Path("b.cd"), hooks_);
  EXPECT_EQ(r.message, "Data Backup Cancelled");
  EXPECT_FALSE(Exists(Path("b.cd")));
  cancel = false;
  r = SaveAsDataFiles(data_, Path("s.cd"), hooks_);
  EXPECT_EQ(r.message, "Data SaveAs Cancelled");
  EXPECT_EQ(data_.GetDataFileName(), Path());

  // A cancelled merge takes back the categories and discs it had added.
  cancel = false;
  ASSERT_TRUE(BackupDataFiles(data_, Path("src.cd"), CopyHooks{}).status.ok());
  // Its password ("secret", carried by the backup) is asked for.
  r = MergeExistingCatalog(data_, Path("src.cd"), hooks_, [](const std::string&) { return false; });
  EXPECT_TRUE(r.status.IsRefused());
  EXPECT_EQ(r.message, "Invalid or Wrong Password !!");
  r = MergeExistingCatalog(data_, Path("src.cd"), hooks_,
                           [](const std::string& current) { return current == "secret"; });
  EXPECT_EQ(r.message, "Data Merge Cancelled");
  EXPECT_EQ(LiveContent(data_), content);
  EXPECT_TRUE(CatalogCheck(data_.file()).Run().empty());
}

TEST_F(MaintenanceTest, AFullDiskFailsClearlyAndLeavesTheCatalogUntouched) {
  OpenCatalog();
  Fill();
  ASSERT_TRUE(data_.Flush());
  const std::string original = ReadFileBytes(Path());
  const std::string content = LiveContent(data_);
  for (size_t room : {size_t{0}, size_t{200}, size_t{1000}}) {
    hooks_.openFile = [room](const std::string&, std::unique_ptr<FileIO>* out) {
      *out = std::make_unique<FullDiskFile>(room);
      return Status::OK();
    };
    const MaintenanceResult r = CompactDataFiles(data_, hooks_);
    EXPECT_TRUE(r.status.IsIOError()) << room;
    EXPECT_NE(r.message.find("Data Compaction Failed!!"), std::string::npos);
    EXPECT_NE(r.message.find("No space left on device"), std::string::npos) << r.message;
    EXPECT_EQ(ReadFileBytes(Path()), original);
    EXPECT_FALSE(Exists(Path("test.bak")));
    ASSERT_TRUE(data_.IsOpen());
    EXPECT_EQ(LiveContent(data_), content);
  }
  // The catalog still takes writes afterwards.
  AddDisc("after", 1, 1);
  EXPECT_TRUE(data_.ok());
}

TEST_F(MaintenanceTest, ADamagedSourceIsNeverPutInPlace) {
  OpenCatalog();
  Fill();
  data_.CloseFiles();
  std::string bytes = ReadFileBytes(Path());
  // Break the next link of the first folder of the first disc.
  classData probe;
  ASSERT_TRUE(probe.OpenFiles(Path(), false, false));
  const int32_t dirId = probe.GetCdFirst().record().firstDir;
  probe.CloseFiles();
  bytes = ReadFileBytes(Path());
  const int32_t bad = 0x7fffff00;
  std::memcpy(&bytes[dirId - 1 + 8], &bad, 4);  // DirRecord.next (little-endian host)
  ASSERT_TRUE(WriteFileBytes(Path(), bytes));
  ASSERT_TRUE(data_.OpenFiles(Path(), false, false));
  const std::string before = ReadFileBytes(Path());
  const MaintenanceResult r = CompactDataFiles(data_, hooks_);
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
