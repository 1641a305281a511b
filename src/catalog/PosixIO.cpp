#include "catalog/PosixIO.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace gorvan {
namespace {

Status Errno(const std::string& what, int err) {
  std::string msg = what + ": " + std::strerror(err);
  return err == ENOENT ? Status::NotFound(std::move(msg)) : Status::IOError(std::move(msg));
}

}  // namespace

Status ReadFully(int fd, void* dst, size_t n, off_t offset, size_t* got) {
  auto* p = static_cast<char*>(dst);
  size_t done = 0;
  while (done < n) {
    const ssize_t r = offset < 0 ? ::read(fd, p + done, n - done)
                                 : ::pread(fd, p + done, n - done, offset + static_cast<off_t>(done));
    if (r < 0) {
      if (errno == EINTR) continue;
      *got = done;
      return Errno("read", errno);
    }
    if (r == 0) break;
    done += static_cast<size_t>(r);
  }
  *got = done;
  return Status::OK();
}

Status WriteFully(int fd, const void* src, size_t n, off_t offset) {
  const auto* p = static_cast<const char*>(src);
  size_t done = 0;
  while (done < n) {
    const ssize_t w = offset < 0
                          ? ::write(fd, p + done, n - done)
                          : ::pwrite(fd, p + done, n - done, offset + static_cast<off_t>(done));
    if (w < 0) {
      if (errno == EINTR) continue;
      return Errno("write", errno);
    }
    done += static_cast<size_t>(w);
  }
  return Status::OK();
}

Status ReadFileHead(const std::string& path, size_t maxBytes, std::string* out) {
  out->clear();
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return Errno(path, errno);
  std::string buf(maxBytes, '\0');
  size_t got = 0;
  const Status s = ReadFully(fd, buf.data(), buf.size(), -1, &got);
  ::close(fd);
  if (!s.ok()) return Status::IOError(path + ": " + s.message());
  buf.resize(got);
  *out = std::move(buf);
  return Status::OK();
}

Status CopyFileContents(const std::string& from, const std::string& to) {
  const int in = ::open(from.c_str(), O_RDONLY | O_CLOEXEC);
  if (in < 0) return Errno("Cannot read " + from, errno);
  const int out = ::open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (out < 0) {
    const Status s = Errno("Cannot create " + to, errno);
    ::close(in);
    return s;
  }
  Status s;
  char buf[65536];
  for (;;) {
    size_t got = 0;
    s = ReadFully(in, buf, sizeof buf, -1, &got);
    if (!s.ok()) {
      s = Status::IOError("Cannot read " + from + ": " + s.message());
      break;
    }
    if (got == 0) break;
    s = WriteFully(out, buf, got, -1);
    if (!s.ok()) {
      s = Status::IOError("Cannot write " + to + ": " + s.message());
      break;
    }
  }
  if (::close(out) != 0 && s.ok()) s = Errno("Cannot write " + to, errno);
  ::close(in);
  return s;
}

}  // namespace gorvan
