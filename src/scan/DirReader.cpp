#include "scan/DirReader.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

namespace gorvan {

namespace {

// The kernel's record layout for getdents64 (glibc before 2.30 has no wrapper).
struct LinuxDirent64 {
  uint64_t ino;
  int64_t off;
  unsigned short reclen;
  unsigned char type;
  char name[1];
};

}  // namespace

int DirReader::Next(Entry* out) {
  while (true) {
    if (pos_ < end_) {
      // The kernel aligns every record to 8 bytes inside the buffer; memcpy of
      // the fixed part keeps the reads well-defined whatever the buffer's
      // alignment.
      const char* rec = buf_ + pos_;
      unsigned short reclen;
      std::memcpy(&reclen, rec + offsetof(LinuxDirent64, reclen), sizeof reclen);
      if (reclen == 0 || pos_ + reclen > end_) return -EIO;
      pos_ += reclen;
      const char* name = rec + offsetof(LinuxDirent64, name);
      const size_t room = reclen - offsetof(LinuxDirent64, name);
      const size_t len = strnlen(name, room);
      if (len == room) return -EIO;  // no terminating NUL inside the record
      out->name = std::string_view(name, len);
      out->type = static_cast<unsigned char>(rec[offsetof(LinuxDirent64, type)]);
      return 1;
    }
    if (done_) return 0;
    const long got = ::syscall(SYS_getdents64, fd_, buf_, size_);
    if (got < 0) {
      if (errno == EINTR) continue;
      done_ = true;
      return -errno;
    }
    if (got == 0) {
      done_ = true;
      return 0;
    }
    pos_ = 0;
    end_ = static_cast<size_t>(got);
  }
}

int DirReader::OpenFolder(int parentFd, const char* name) {
  int fd;
  do {
    fd = ::openat(parentFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
  } while (fd < 0 && errno == EINTR);
  return fd < 0 ? -errno : fd;
}

}  // namespace gorvan
