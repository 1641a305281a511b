// The buffered data file: reads see unflushed writes, and a disk that fills up
// leaves the catalog as it was on disk.
#include <gtest/gtest.h>

#include <cstring>

#include "CatalogFixture.h"
#include "catalog/CatalogCheck.h"
#include "catalog/DataFile.h"

namespace gorvan::test {
namespace {

// A file in memory that accepts at most `room` bytes before it reports a full disk.
class FullDiskFile final : public FileIO {
 public:
  FullDiskFile(std::string* bytes, size_t room) : bytes_(bytes), room_(room) {}
  Status ReadAt(uint64_t off, void* dst, size_t n, size_t* got) override {
    ++calls;
    *got = off >= bytes_->size() ? 0 : std::min(n, bytes_->size() - static_cast<size_t>(off));
    std::memcpy(dst, bytes_->data() + off, *got);
    return Status::OK();
  }
  Status WriteAt(uint64_t off, const void* src, size_t n) override {
    ++calls;
    if (off + n > room_) {
      // A partial write, as a real full disk gives.
      if (off < room_) bytes_->resize(std::max<size_t>(bytes_->size(), room_));
      return Status::IOError("No space left on device");
    }
    if (off + n > bytes_->size()) bytes_->resize(off + n);
    std::memcpy(bytes_->data() + off, src, n);
    return Status::OK();
  }
  Status Truncate(uint64_t length) override {
    bytes_->resize(length);
    return Status::OK();
  }
  Status Sync() override { return Status::OK(); }
  Status Size(uint64_t* size) override {
    *size = bytes_->size();
    return Status::OK();
  }
  int calls = 0;

 private:
  std::string* bytes_;
  size_t room_;
};

TEST(DataFileTest, ReadsSeeBufferedWritesAndWritesAreBatched) {
  std::string disk = "0123456789";
  auto io = std::make_unique<FullDiskFile>(&disk, 1 << 30);
  FullDiskFile* raw = io.get();
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
  auto io = std::make_unique<FullDiskFile>(&disk, 300);
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
    ASSERT_TRUE(data.OpenWith(std::make_unique<FullDiskFile>(&disk, 1 << 30), "mem", false, false,
                              true));
  }
  const std::string before = disk;
  classData data;
  ASSERT_TRUE(data.OpenWith(std::make_unique<FullDiskFile>(&disk, before.size() + 3000), "mem",
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
  ASSERT_TRUE(again.OpenWith(std::make_unique<FullDiskFile>(&disk, 1 << 30), "mem", true, false,
                             true));
  EXPECT_EQ(again.GetCdCount(), 0);
  EXPECT_TRUE(CatalogCheck(again.file()).Run().empty());
  EXPECT_EQ(disk.size(), before.size());
}

}  // namespace
}  // namespace gorvan::test
