#pragma once
// DataFile: byte-addressed access to a catalog file, 1-based positions as the
// format counts them.
//
// Writes at or beyond the on-disk length (appends, and rewrites of blocks that
// were appended recently) land in a write-behind buffer over the file's tail
// and reach the file in large writes on Flush() or when the buffer passes a few
// MiB. Writes below the on-disk length go straight to the file. Reads see the
// buffer, and reads of the on-disk part go through one read-ahead window, so a
// walk costs a system call per window, not per record or field.
//
// A failed flush (a full disk, an I/O error) cuts the file back to its last
// good length, drops the buffer and leaves the DataFile in an error state in
// which every further write fails with that error; what was on disk before
// stays readable.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "catalog/FileIO.h"
#include "catalog/Status.h"

namespace gorvan {

class DataFile {
 public:
  static constexpr size_t kFlushThreshold = 4u << 20;
  static constexpr size_t kWindowSize = 256u << 10;

  explicit DataFile(std::unique_ptr<FileIO> io);
  DataFile(const DataFile&) = delete;
  DataFile& operator=(const DataFile&) = delete;
  ~DataFile();  // flushes what is buffered; errors are lost, so call Flush first

  // Opens (and with create, creates) the file at path with an exclusive lock.
  static Status Open(const std::string& path, bool create, std::unique_ptr<DataFile>* out);
  // Wraps an already opened file (tests pass a failing one).
  static Status Wrap(std::unique_ptr<FileIO> io, std::unique_ptr<DataFile>* out);

  // Logical length: what is on disk plus what is buffered.
  int64_t Length() const { return flushed_ + static_cast<int64_t>(tailLen_); }

  // Reads n bytes at 1-based position pos. Fails with Corruption when any of
  // them lies outside the file.
  Status Read(int64_t pos, void* dst, size_t n);
  // Points at the n bytes at pos when they can be had without a copy: from the
  // write buffer or the read window (refilled when needed). Null when they lie
  // outside the file or cannot be read; Read then says why. The pointer is
  // valid until the next call on this DataFile.
  const uint8_t* Peek(int64_t pos, size_t n) {
    // The common case of a walk, inline: the bytes are in the read window.
    const int64_t offset = pos - 1;
    if (offset >= windowStart_ && pos >= 1 &&
        offset + static_cast<int64_t>(n) <= windowStart_ + static_cast<int64_t>(windowLen_)) {
      return reinterpret_cast<const uint8_t*>(window_.data() + (offset - windowStart_));
    }
    return PeekSlow(pos, n);
  }
  // Writes n bytes at 1-based pos; pos may be at most Length() + 1.
  Status Write(int64_t pos, const void* src, size_t n) {
    // The common case, inline: a rewrite of a block still in the buffer.
    const int64_t at = pos - 1 - flushed_;
    if (at >= 0 && static_cast<size_t>(at) + n <= tailLen_ && error_.ok()) {
      std::memcpy(tail_.get() + at, src, n);
      return Status();
    }
    return WriteSlow(pos, src, n);
  }
  // Appends n bytes at the end; *pos receives their 1-based position.
  Status Append(const void* src, size_t n, int64_t* pos) {
    // The common case, inline: room in the buffer and no flush due.
    if (tailLen_ + n <= tailCap_ && tailLen_ + n < kFlushThreshold && error_.ok() &&
        Length() + static_cast<int64_t>(n) <= INT32_MAX) {
      *pos = Length() + 1;
      std::memcpy(tail_.get() + tailLen_, src, n);
      tailLen_ += n;
      return Status();
    }
    return AppendSlow(src, n, pos);
  }
  // Writes the buffer to the file.
  Status Flush();
  // For a reader beside the file's writer: takes the file's length again and
  // forgets what it has read, so that the next reads see what the writer has
  // flushed since. Nothing may be buffered.
  Status Refresh();
  // Flush, then fsync.
  Status Sync();

  const Status& error() const { return error_; }

 private:
  Status Load();
  Status ReadDisk(int64_t offset, char* dst, size_t n);
  Status FillWindow(int64_t offset);
  const uint8_t* PeekSlow(int64_t pos, size_t n);
  Status WriteSlow(int64_t pos, const void* src, size_t n);
  Status AppendSlow(const void* src, size_t n, int64_t* pos);
  // Makes room for size bytes in the buffer, keeping what it holds.
  void ReserveTail(size_t size);
  void PatchWindow(int64_t offset, const char* src, size_t n);

  std::unique_ptr<FileIO> io_;
  int64_t flushed_ = 0;        // bytes on disk
  std::unique_ptr<char[]> tail_;  // bytes from flushed_ on, not yet written
  size_t tailLen_ = 0;
  size_t tailCap_ = 0;
  std::vector<char> window_;   // read-ahead copy of [windowStart_, +windowLen_)
  int64_t windowStart_ = 0;
  size_t windowLen_ = 0;
  Status error_;
};

}  // namespace gorvan
