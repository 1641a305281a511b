#include "export/OutputWriter.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "catalog/PosixIO.h"

namespace gorvan {

namespace {
Status SystemError(const std::string& what, const std::string& path) {
  return Status::IOError(what + " " + path + ": " + std::strerror(errno));
}
}  // namespace

OutputWriter::~OutputWriter() {
  if (ownsFd_) {
    Abandon();
  } else {
    Flush();
  }
}

Status OutputWriter::Open(const std::string& path, TextEncoding encoding) {
  Abandon();
  error_ = Status::OK();
  replacements_ = 0;
  encoding_ = encoding;
  target_ = path;
  partPath_ = path + ".part";
  fd_ = ::open(partPath_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (fd_ < 0) {
    error_ = SystemError("Cannot create", partPath_);
    return error_;
  }
  ownsFd_ = true;
  return Status::OK();
}

Status OutputWriter::OpenDescriptor(int fd, TextEncoding encoding) {
  Abandon();
  error_ = Status::OK();
  replacements_ = 0;
  encoding_ = encoding;
  fd_ = fd;
  ownsFd_ = false;
  return Status::OK();
}

bool OutputWriter::Write(std::string_view text) {
  if (!error_.ok()) return false;
  if (fd_ < 0) {
    error_ = Status::InvalidArgument("the output is not open");
    return false;
  }
  if (encoding_ == TextEncoding::kWindows1252) {
    replacements_ += TextCodec::Utf8ToWindows1252(text, &scratch_);
    buffer_ += scratch_;
  } else {
    buffer_ += text;
  }
  if (buffer_.size() >= kBufferSize) return Flush();
  return true;
}

bool OutputWriter::WriteLine(std::string_view text) {
  return Write(text) && Write(lineEnd_);
}

bool OutputWriter::WriteAll(const char* data, size_t n) {
  if (WriteFully(fd_, data, n, -1).ok()) return true;
  error_ = SystemError("Cannot write", ownsFd_ ? partPath_ : std::string("the output"));
  return false;
}

bool OutputWriter::Flush() {
  if (!error_.ok() || fd_ < 0) return error_.ok();
  const bool done = WriteAll(buffer_.data(), buffer_.size());
  buffer_.clear();
  return done;
}

Status OutputWriter::Close() {
  if (fd_ < 0) return error_;
  Flush();
  if (!ownsFd_) {
    fd_ = -1;
    return error_;
  }
  if (error_.ok() && ::fsync(fd_) != 0) error_ = SystemError("Cannot write", partPath_);
  if (::close(fd_) != 0 && error_.ok()) error_ = SystemError("Cannot write", partPath_);
  fd_ = -1;
  ownsFd_ = false;
  if (error_.ok() && std::rename(partPath_.c_str(), target_.c_str()) != 0) {
    error_ = SystemError("Cannot replace", target_);
  }
  if (!error_.ok()) ::unlink(partPath_.c_str());
  return error_;
}

void OutputWriter::Abandon() {
  buffer_.clear();
  if (fd_ >= 0 && ownsFd_) {
    ::close(fd_);
    ::unlink(partPath_.c_str());
  }
  fd_ = -1;
  ownsFd_ = false;
}

}  // namespace gorvan
