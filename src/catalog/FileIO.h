#pragma once
// FileIO: the few positional file operations the catalog needs, behind a small
// interface so that tests can run the catalog over a file that fails on
// purpose (a short write, a full disk, an I/O error).

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "catalog/Status.h"

namespace gorvan {

class FileIO {
 public:
  virtual ~FileIO() = default;
  // Reads up to n bytes at offset (0-based); *got receives the count read,
  // which is short only at the end of the file.
  virtual Status ReadAt(uint64_t offset, void* dst, size_t n, size_t* got) = 0;
  // Writes all n bytes at offset, or fails.
  virtual Status WriteAt(uint64_t offset, const void* src, size_t n) = 0;
  virtual Status Truncate(uint64_t length) = 0;
  virtual Status Sync() = 0;
  virtual Status Size(uint64_t* size) = 0;
};

// Opens a file for reading and writing, creating it when create is true.
// With lock set, takes an exclusive advisory lock so that two programs never
// write one catalog at once.
Status OpenPosixFile(const std::string& path, bool create, bool lock,
                     std::unique_ptr<FileIO>* out);
// Opens a file for reading only, without a lock (a second reader of a catalog
// that its writer holds locked). Writes fail with InvalidArgument.
Status OpenPosixFileForReading(const std::string& path, std::unique_ptr<FileIO>* out);

}  // namespace gorvan
