#include "catalog/FileIO.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "catalog/PosixIO.h"

namespace gorvan {
namespace {

Status ErrnoStatus(const char* what, int err) {
  std::string msg = std::string(what) + ": " + std::strerror(err);
  return err == ENOENT ? Status::NotFound(msg) : Status::IOError(msg);
}

class PosixFileIO final : public FileIO {
 public:
  PosixFileIO(int fd, bool readOnly) : fd_(fd), readOnly_(readOnly) {}
  ~PosixFileIO() override { ::close(fd_); }

  Status ReadAt(uint64_t offset, void* dst, size_t n, size_t* got) override {
    return ReadFully(fd_, dst, n, static_cast<off_t>(offset), got);
  }

  Status WriteAt(uint64_t offset, const void* src, size_t n) override {
    if (readOnly_) return ReadOnlyError();
    return WriteFully(fd_, src, n, static_cast<off_t>(offset));
  }

  Status Truncate(uint64_t length) override {
    if (readOnly_) return ReadOnlyError();
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
  static Status ReadOnlyError() {
    return Status::InvalidArgument("the catalog is open for reading only");
  }

  int fd_;
  bool readOnly_;
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
  *out = std::make_unique<PosixFileIO>(fd, false);
  return Status::OK();
}

Status OpenPosixFileForReading(const std::string& path, std::unique_ptr<FileIO>* out) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return ErrnoStatus(path.c_str(), errno);
  *out = std::make_unique<PosixFileIO>(fd, true);
  return Status::OK();
}

}  // namespace gorvan
