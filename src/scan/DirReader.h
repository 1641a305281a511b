#pragma once
// DirReader: reads the entries of one open folder with getdents64, many entries
// per system call, into a buffer the caller owns. Entries come in the order
// the file system returns them; "." and ".." are passed on like any other name.
// A scan reads each folder to its end before it opens the folder's children,
// so one buffer serves the whole walk.

#include <cstddef>
#include <string_view>

namespace gorvan {

class DirReader {
 public:
  // A buffer this size holds a few hundred entries.
  static constexpr size_t kBufferSize = 64 * 1024;

  struct Entry {
    // The entry's name, NUL-terminated inside the buffer (name.data() may be
    // passed to the *at() calls). Valid until the next call of Next().
    std::string_view name;
    unsigned char type;  // DT_DIR, DT_REG, DT_LNK, ..., DT_UNKNOWN
  };

  // Reads the folder open at fd (the caller keeps ownership of fd).
  // REQUIRES: buffer holds size bytes, size >= 4096, and stays valid.
  DirReader(int fd, char* buffer, size_t size) : fd_(fd), buf_(buffer), size_(size) {}

  // On success returns 1 and fills *out, or 0 after the last entry.
  // On failure returns -errno (EIO on a damaged folder, ENOENT when the folder
  // was removed while being read); entries read before stay valid results.
  int Next(Entry* out);

  // Opens the folder `name` below the folder open at parentFd (AT_FDCWD for a
  // name relative to the working folder or an absolute one) for reading,
  // without following a symbolic link. Returns the descriptor or -errno.
  static int OpenFolder(int parentFd, const char* name);

 private:
  int fd_;
  char* buf_;
  size_t size_;
  size_t pos_ = 0;
  size_t end_ = 0;
  bool done_ = false;
};

}  // namespace gorvan
