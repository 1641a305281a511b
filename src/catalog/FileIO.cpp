#include "catalog/FileIO.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace gorvan {
namespace {

Status ErrnoStatus(const char* what, int err) {
  std::string msg = std::string(what) + ": " + std::strerror(err);
  return err == ENOENT ? Status::NotFound(msg) : Status::IOError(msg);
}

class PosixFileIO final : public FileIO {
 public:
  explicit PosixFileIO(int fd) : fd_(fd) {}
  ~PosixFileIO() override { ::close(fd_); }

  Status ReadAt(uint64_t offset, void* dst, size_t n, size_t* got) override {
    auto* p = static_cast<char*>(dst);
    size_t done = 0;
    while (done < n) {
      const ssize_t r = ::pread(fd_, p + done, n - done, static_cast<off_t>(offset + done));
      if (r < 0) {
        if (errno == EINTR) continue;
        *got = done;
        return ErrnoStatus("read", errno);
      }
      if (r == 0) break;
      done += static_cast<size_t>(r);
    }
    *got = done;
    return Status::OK();
  }

  Status WriteAt(uint64_t offset, const void* src, size_t n) override {
    const auto* p = static_cast<const char*>(src);
    size_t done = 0;
    while (done < n) {
      const ssize_t w = ::pwrite(fd_, p + done, n - done, static_cast<off_t>(offset + done));
      if (w < 0) {
        if (errno == EINTR) continue;
        return ErrnoStatus("write", errno);
      }
      done += static_cast<size_t>(w);
    }
    return Status::OK();
  }

  Status Truncate(uint64_t length) override {
    if (::ftruncate(fd_, static_cast<off_t>(length)) != 0) return ErrnoStatus("truncate", errno);
    return Status::OK();
  }

  Status Sync() override {
    if (::fsync(fd_) != 0) return ErrnoStatus("fsync", errno);
    return Status::OK();
  }

  Status Size(uint64_t* size) override {
    struct stat st;
    if (::fstat(fd_, &st) != 0) return ErrnoStatus("stat", errno);
    *size = static_cast<uint64_t>(st.st_size);
    return Status::OK();
  }

 private:
  int fd_;
};

}  // namespace

Status OpenPosixFile(const std::string& path, bool create, bool lock,
                     std::unique_ptr<FileIO>* out) {
  int flags = O_RDWR | O_CLOEXEC;
  if (create) flags |= O_CREAT;
  const int fd = ::open(path.c_str(), flags, 0666);
  if (fd < 0) return ErrnoStatus(path.c_str(), errno);
  struct stat st;
  if (::fstat(fd, &st) == 0 && !S_ISREG(st.st_mode)) {
    ::close(fd);
    return Status::InvalidArgument(path + " is not a regular file");
  }
  if (lock && ::flock(fd, LOCK_EX | LOCK_NB) != 0) {
    const int err = errno;
    ::close(fd);
    if (err == EWOULDBLOCK) return Status::IOError(path + " is in use by another program");
    return ErrnoStatus(path.c_str(), err);
  }
  *out = std::make_unique<PosixFileIO>(fd);
  return Status::OK();
}

}  // namespace gorvan
