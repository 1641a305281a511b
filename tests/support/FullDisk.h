#pragma once
// FullDisk: a FileIO that passes every call on to another one until a write
// would make the file longer than `room` bytes. That write stores the part
// that fits, as a real full disk does, and fails with "No space left on device".

#include <memory>
#include <string>

#include "catalog/FileIO.h"
#include "catalog/MemoryFile.h"

namespace gorvan::test {

class FullDisk final : public FileIO {
 public:
  FullDisk(std::unique_ptr<FileIO> inner, uint64_t room) : inner_(std::move(inner)), room_(room) {}
  // Over bytes in memory, which must outlive it.
  FullDisk(std::string* bytes, uint64_t room)
      : FullDisk(std::make_unique<MemoryFile>(bytes), room) {}

  Status ReadAt(uint64_t off, void* dst, size_t n, size_t* got) override {
    ++calls;
    return inner_->ReadAt(off, dst, n, got);
  }
  Status WriteAt(uint64_t off, const void* src, size_t n) override {
    ++calls;
    if (off + n <= room_) return inner_->WriteAt(off, src, n);
    if (off < room_) (void)inner_->WriteAt(off, src, static_cast<size_t>(room_ - off));
    return Status::IOError("No space left on device");
  }
  Status Truncate(uint64_t length) override { return inner_->Truncate(length); }
  Status Sync() override { return inner_->Sync(); }
  Status Size(uint64_t* size) override { return inner_->Size(size); }

  int calls = 0;  // reads and writes passed on or refused

 private:
  std::unique_ptr<FileIO> inner_;
  uint64_t room_;
};

}  // namespace gorvan::test
