#pragma once
// MemoryFile: a FileIO over a string in memory, for checking catalogs held in
// memory (fuzzing) and for tests.

#include <string>

#include "catalog/FileIO.h"

namespace gorvan {

class MemoryFile final : public FileIO {
 public:
  // The file's bytes live in *bytes, which must outlive this object.
  explicit MemoryFile(std::string* bytes) : bytes_(bytes) {}

  Status ReadAt(uint64_t offset, void* dst, size_t n, size_t* got) override;
  Status WriteAt(uint64_t offset, const void* src, size_t n) override;
  Status Truncate(uint64_t length) override;
  Status Sync() override { return Status::OK(); }
  Status Size(uint64_t* size) override;

 private:
  std::string* bytes_;
};

}  // namespace gorvan
