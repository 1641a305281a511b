// The buffered data file: reads see unflushed writes, and a disk that fills up
// leaves the catalog as it was on disk.
#include <gtest/gtest.h>

#include "CatalogFixture.h"
#include "catalog/CatalogCheck.h"
#include "catalog/DataFile.h"
#include "support/FullDisk.h"

namespace gorvan::test {
namespace {

TEST(DataFileTest, ReadsSeeBufferedWritesAndWritesAreBatched) {
  std::string disk = "0123456789";
  auto io = std::make_unique<FullDisk>(&disk, 1 << 30);
  FullDisk* raw = io.get();
  std::unique_ptr<DataFile> file;
  ASSERT_TRUE(DataFile::Wrap(std::move(io), &file).ok());
  int64_t pos = 0;
  for (int i = 0; i < 1000; ++i) ASSERT_TRUE(file->Append("abcd", 4, &pos).ok());
  EXPECT_EQ(pos, 10 + 999 * 4 + 1);
  ASSERT_TRUE(file->Write(9, "XYZ", 3).ok());  // spans the disk part and the buffer
  char buf[6];
  ASSERT_TRUE(file->Read(8, buf, 6).ok());
  EXPECT_EQ(std::string(buf, 6), "7XYZbc");
  EXPECT_LE(raw->calls, 2) << "appends stay in memory until flushed";
  EXPECT_TRUE(file->Read(file->Length(), buf, 2).IsCorruption()) << "past the end";
  ASSERT_TRUE(file->Flush().ok());
  EXPECT_EQ(disk.size(), 4010u);
  EXPECT_EQ(disk.substr(7, 6), "7XYZbc");
}

TEST(DataFileTest, AFailedFlushCutsTheFileBackAndRefusesFurtherWrites) {
  std::string disk(200, 'h');
  auto io = std::make_unique<FullDisk>(&disk, 300);
  std::unique_ptr<DataFile> file;
  ASSERT_TRUE(DataFile::Wrap(std::move(io), &file).ok());
  int64_t pos = 0;
  ASSERT_TRUE(file->Append(std::string(500, 'n').data(), 500, &pos).ok());
  EXPECT_TRUE(file->Flush().IsIOError());
  EXPECT_EQ(disk, std::string(200, 'h'));
  EXPECT_TRUE(file->Append("x", 1, &pos).IsIOError());
  char c;
  EXPECT_TRUE(file->Read(1, &c, 1).ok()) << "what was on disk stays readable";
}

TEST(DataFileTest, AFullDiskDuringADiscLeavesItUnlinkedAndTheCatalogSound) {
  TempDir dir;
  std::string disk;
  {
    classData data;
    ASSERT_TRUE(data.OpenWith(std::make_unique<FullDisk>(&disk, 1 << 30), "mem", false, false,
                              true));
  }
  const std::string before = disk;
  classData data;
  ASSERT_TRUE(data.OpenWith(std::make_unique<FullDisk>(&disk, before.size() + 3000), "mem",
                            true, false, true));
  classCd cd = data.CdCursor();
  data.GetCdAppend(cd);
  cd.SetCdName("too big");
  classDir& d = cd.GetDirAppend();
  d.GetFileAppendStart();
  for (int i = 0; i < 100; ++i) d.GetFileAppend().SetFileName("file");
  d.GetFileAppendFinish();
  cd.GetDirAppendFinish();
  EXPECT_FALSE(data.GetCdCommit(cd));
  EXPECT_TRUE(data.status().IsIOError());
  data.CloseFiles();

  classData again;
  ASSERT_TRUE(again.OpenWith(std::make_unique<FullDisk>(&disk, 1 << 30), "mem", true, false,
                             true));
  EXPECT_EQ(again.GetCdCount(), 0);
  EXPECT_TRUE(CatalogCheck(again.file()).Run().empty());
  EXPECT_EQ(disk.size(), before.size());
}

}  // namespace
}  // namespace gorvan::test
