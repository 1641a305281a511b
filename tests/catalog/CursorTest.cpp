// Walking and building chains through the cursor objects.
#include <gtest/gtest.h>

#include "CatalogFixture.h"
#include "catalog/CatalogCheck.h"
#include "catalog/ChainOps.h"

namespace gorvan::test {
namespace {

using CursorTest = CatalogTest;

TEST_F(CursorTest, ALongDiscWalksInAppendOrderWithAllLinksSet) {
  OpenCatalog();
  EXPECT_TRUE(cur_.FirstDisc().isEof());
  EXPECT_TRUE(cur_.FirstCat().isEof());
  const int32_t id = AddDisc("big", 30, 40);
  classCd& cd = cur_.Disc(id);
  EXPECT_EQ(cd.GetBytesUsed(), 116 + 3 + 5 + 30 * (92 + 1) + (10 * 4 + 20 * 5) + 30 * (40 * 80) +
                                   30 * (10 * 9 + 30 * 10));
  int dirs = 0;
  int32_t prevDir = 0;
  for (classDir& dir = cd.GetDirFirst(); !dir.isEof(); cd.GetDirNext(), ++dirs) {
    EXPECT_EQ(dir.GetDirName(), "dir" + std::to_string(dirs));
    EXPECT_EQ(dir.GetDirPrevId(), prevDir);
    EXPECT_EQ(dir.GetDirCdId(), id);
    prevDir = dir.GetDirId();
    int files = 0;
    int32_t prevFile = 0;
    for (ClassFile& f = dir.GetFileFirst(); !f.isEof(); dir.GetFileNext(), ++files) {
      EXPECT_EQ(f.GetFilePrevId(), prevFile);
      EXPECT_EQ(f.GetFileDirId(), dir.GetDirId());
      prevFile = f.GetFileId();
    }
    EXPECT_EQ(files, 40);
  }
  EXPECT_EQ(dirs, 30);
  EXPECT_EQ(cd.record().lastDir, prevDir);
  CatalogCheck check(data_.file());
  EXPECT_TRUE(check.Run().empty());
  EXPECT_EQ(check.garbage(), 0);
}

TEST_F(CursorTest, ReCalculateLinksRepairsPreviousLinks) {
  OpenCatalog();
  const int32_t id = AddDisc("d", 4, 0);
  classDir& dir = cur_.Disc(id).GetDirFirst();
  std::vector<int32_t> ids;
  for (; !dir.isEof(); dir.MoveNext()) ids.push_back(dir.GetDirId());
  for (int32_t d : ids) {
    dir.recordGet(d);
    dir.record().prev = 12345;
    dir.recordWrite();
  }
  cur_.Disc(id).SetDefaultCdRec();
  ASSERT_TRUE(cur_.Disc(id).dirs().ReCalculateLinks());
  for (size_t i = 0; i < ids.size(); ++i) {
    dir.recordGet(ids[i]);
    EXPECT_EQ(dir.GetDirPrevId(), i == 0 ? 0 : ids[i - 1]);
  }
}

TEST_F(CursorTest, ArchiveMembersChainUnderTheirFileAndCountForTheDisc) {
  OpenCatalog();
  classCd& cd = cur_.NewDisc();
  classDir& dir = cd.GetDirAppend();
  dir.GetFileAppendStart();
  ClassFile& zip = dir.GetFileAppend();
  zip.SetFileName("a.zip");
  zip.GetZipAppendStart();
  zip.GetZipAppend().SetFileName("x");
  zip.GetZipAppend().SetFileName("yy");
  ASSERT_TRUE(zip.GetZipAppendFinish());
  dir.GetFileAppend().SetFileName("b");
  ASSERT_TRUE(dir.GetFileAppendFinish());
  ASSERT_TRUE(cd.GetDirAppendFinish());
  ASSERT_TRUE(cur_.CommitDisc());
  EXPECT_EQ(cd.GetBytesUsed(), 116 + 92 + 4 * 80 + 5 + 1 + 2 + 1);

  ClassFile& f = cur_.FirstDisc().GetDirFirst().GetFileFirst();
  ASSERT_TRUE(f.IsArchive());
  std::vector<std::string> names;
  for (ClassFile& m = f.GetZipFirst(); !m.isEof(); f.GetZipNext()) names.push_back(m.GetFileName());
  EXPECT_EQ(names, (std::vector<std::string>{"x", "yy"}));
  EXPECT_TRUE(CatalogCheck(data_.file()).Run().empty());

  // Removing a member takes its bytes off the disc and keeps the chain sound.
  const int32_t second = f.GetZipFirst().GetFileNextId();
  ASSERT_TRUE(f.GetZipRemove(second));
  EXPECT_EQ(cur_.FirstDisc().GetBytesUsed(), 116 + 92 + 3 * 80 + 5 + 1 + 1);
  EXPECT_TRUE(CatalogCheck(data_.file()).Run().empty());
}

TEST_F(CursorTest, UnlinkingDiscsAndCategoriesKeepsTheHeaderChainsSound) {
  OpenCatalog();
  const int32_t a = AddDisc("a", 1, 1);
  const int32_t b = AddDisc("b", 1, 1);
  const int32_t c = AddDisc("c", 1, 1);
  ASSERT_TRUE(data_.GetCdDelete(b));
  std::vector<int32_t> ids;
  for (classCd& cd = cur_.FirstDisc(); !cd.isEof(); cur_.NextDisc()) ids.push_back(cd.GetCdId());
  EXPECT_EQ(ids, (std::vector<int32_t>{a, c}));
  EXPECT_EQ(cur_.Disc(c).CdGetPrevRecord(), a);
  ASSERT_TRUE(data_.GetCdDelete(a));
  ASSERT_TRUE(data_.GetCdDelete(c));
  ASSERT_TRUE(data_.GetCatDelete(AddCategory("only")));
  const HeaderRecord& h = data_.GetTableHeader();
  EXPECT_EQ(std::vector<int32_t>({h.firstCd, h.lastCd, h.firstCat, h.lastCat}),
            std::vector<int32_t>(4, 0));
  EXPECT_EQ(data_.GetCdCount() + data_.GetCatCount(), 0);
  classData::PhysicalSize size;
  ASSERT_TRUE(data_.CalcPhysicalSize(&size).ok());
  EXPECT_EQ(size.bytesUsed, 124);
  EXPECT_TRUE(CatalogCheck(data_.file()).Run().empty());
  // Empty chains are at their end at once.
  classCd& cd = cur_.NewDisc();
  EXPECT_TRUE(cd.GetDirFirst().isEof());
  EXPECT_TRUE(cd.GetDirAppend().GetFileFirst().isEof());
  EXPECT_TRUE(data_.ok());
}

TEST_F(CursorTest, FolderAndFileEditsAfterTheScanKeepTheDiscSound) {
  OpenCatalog();
  const int32_t id = AddDisc("d", 2, 2);
  // Notes count in the disc's bytes used.
  const int32_t scanned = cur_.Disc(id).GetBytesUsed();
  classDir& edited = cur_.Disc(id).GetDirFirst();
  ASSERT_TRUE(edited.SetDirNotes("ten chars!"));
  ASSERT_TRUE(edited.GetFileFirst().SetFileNotes("abc"));
  EXPECT_EQ(cur_.Disc(id).GetBytesUsed(), scanned + 13);

  classCd& cd = cur_.Disc(id);
  const int32_t first = cd.record().firstDir;
  ASSERT_TRUE(cd.GetDirRemove(first));
  EXPECT_NE(cd.record().firstDir, first);
  const int32_t before = cur_.Disc(id).GetBytesUsed();
  classDir& dir = cur_.Disc(id).GetDirFirst();
  dir.GetFileFirst();  // binds the folder's chain
  FileRecord fields;
  fields.size = 5;
  ASSERT_NE(dir.files().AppendFile(fields, {.name = "late.txt"}), 0);
  ASSERT_TRUE(dir.GetFileAppendFinish());
  EXPECT_EQ(cur_.Disc(id).GetBytesUsed(), before + 80 + 8);
  std::vector<std::string> names;
  classDir& again = cur_.Disc(id).GetDirFirst();
  for (ClassFile& f = again.GetFileFirst(); !f.isEof(); again.GetFileNext())
    names.push_back(f.GetFileName());
  EXPECT_EQ(names, (std::vector<std::string>{"file0.txt", "file1.txt", "late.txt"}));
  const std::vector<std::string> problems = CatalogCheck(data_.file()).Run();
  EXPECT_TRUE(problems.empty()) << problems.front();
}

TEST_F(CursorTest, NamesAndIconKeysForDisplay) {
  OpenCatalog();
  classCd& cd = cur_.NewDisc();
  cd.SetCdName("Album");
  EXPECT_EQ(cd.GetCdName(true), "Album") << "no artist: the plain name";
  cd.SetCdExtra("AAKind of Blue|`|AR");
  EXPECT_EQ(cd.GetCdName(true), "Album");
  cd.SetCdExtra("AAKind of Blue|`|ARMiles Davis");
  EXPECT_EQ(cd.GetCdName(true), "Album - Miles Davis");
  EXPECT_EQ(cd.GetCdName(false), "Album");

  classDir& dir = cd.GetDirAppend();
  dir.SetDirName("Music");
  dir.SetDirPath("\\");
  EXPECT_EQ(dir.GetDirFullName(), "\\Music") << "no doubled backslash at the root";
  dir.SetDirPath("home\\ann");
  dir.SetDirName("My Music");
  EXPECT_EQ(dir.GetDirFullName(), "home\\ann\\My Music");
  EXPECT_EQ(dir.GetDirFullName(true), "home/ann/My_Music");

  // Icon keys fall back to the media type's.
  cd.setCdMediaType(5);
  cd.setCdIconKey("no such icon");
  EXPECT_EQ(cd.GetCdIconKey(), "cdrom");
  cd.setCdIconKey("removable");
  EXPECT_EQ(cd.GetCdIconKey(), "removable");
  cd.setCdMediaType(130);
  cd.setCdIconKey("");
  EXPECT_EQ(cd.GetCdIconKey(), "audiocd");
  EXPECT_EQ(classCd::TypeExt(1), 0);
  EXPECT_EQ(classCd::TypeExt(7), 0);
  EXPECT_EQ(classCd::TypeExt(100), 0);
  EXPECT_EQ(classCd::TypeExt(101), 105);
  EXPECT_EQ(classCd::TypeExt(6), 6);
}

TEST_F(CursorTest, CategoryPathsAndPushPop) {
  OpenCatalog();
  // The child is linked before its parent, as after a move.
  const int32_t top = AddCategory("Music");
  const int32_t mid = AddCategory("Jazz", top);
  const int32_t leaf = AddCategory("Bop", mid);
  classCat& cat = cur_.Cat(leaf);
  EXPECT_EQ(cat.GetCategoryPath(), "Music\\Jazz");
  EXPECT_EQ(cat.GetCategoryPathIncludingMine(), "Music\\Jazz\\Bop");
  EXPECT_EQ(cat.GetCatId(), leaf) << "the walk up returns to where it began";
  EXPECT_EQ(cur_.Cat(top).GetCategoryPath(), "");
  // A loop in the parents does not hang.
  cur_.Cat(top).SetCatParentId(leaf);
  EXPECT_FALSE(cur_.Cat(leaf).GetCategoryPath().empty());
}

}  // namespace
}  // namespace gorvan::test
