#pragma once
// ZipDirectory: what the central directory at the end of a ZIP archive says
// about each member's stored (packed) size, which the archive library does not
// report. The directory is outside input: every count and offset is checked
// against the archive's size before it is used, and a directory that cannot
// be found or read gives an empty index.

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace gorvan {

// Random access to an archive's raw bytes: a file descriptor or memory.
class ArchiveBytes {
 public:
  ArchiveBytes(int fd, int64_t size) : fd_(fd), size_(size) {}
  explicit ArchiveBytes(std::string_view memory)
      : memory_(memory), size_(static_cast<int64_t>(memory.size())) {}
  int64_t size() const { return size_; }
  // len bytes at offset; false when they are not all there.
  bool Read(int64_t offset, size_t len, std::string* out) const;

 private:
  int fd_ = -1;
  std::string_view memory_;
  int64_t size_ = 0;
};

class ZipDirectory {
 public:
  // Reads the central directory (Zip64 included); an empty index when there
  // is none or it is damaged.
  static ZipDirectory Read(const ArchiveBytes& raw);

  // The stored size of the member whose local header ends at position (where
  // a reader stands after the header): the record with the last local header
  // that starts at least a header's length before it. -1 when none fits or
  // its unpacked size disagrees with size (when size is known, >= 0).
  int64_t PackedSize(int64_t position, int64_t size) const;
  size_t count() const { return records_.size(); }

 private:
  struct Record {
    uint64_t localOffset;
    uint64_t packed;
    uint64_t size;
  };
  std::vector<Record> records_;  // sorted by local header offset
};

}  // namespace gorvan
