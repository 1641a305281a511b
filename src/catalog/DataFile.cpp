#include "catalog/DataFile.h"

#include <algorithm>
#include <cstring>

namespace gorvan {

DataFile::DataFile(std::unique_ptr<FileIO> io) : io_(std::move(io)) {}

DataFile::~DataFile() {
  if (error_.ok()) (void)Flush();
}

Status DataFile::Open(const std::string& path, bool create, std::unique_ptr<DataFile>* out) {
  std::unique_ptr<FileIO> io;
  Status s = OpenPosixFile(path, create, /*lock=*/true, &io);
  if (!s.ok()) return s;
  return Wrap(std::move(io), out);
}

Status DataFile::Wrap(std::unique_ptr<FileIO> io, std::unique_ptr<DataFile>* out) {
  auto file = std::make_unique<DataFile>(std::move(io));
  Status s = file->Load();
  if (!s.ok()) return s;
  *out = std::move(file);
  return Status::OK();
}

Status DataFile::Load() {
  uint64_t size = 0;
  Status s = io_->Size(&size);
  if (!s.ok()) return s;
  if (size > static_cast<uint64_t>(INT32_MAX)) {
    // Record ids are 32-bit positions: nothing past 2 GiB can be addressed.
    return Status::Corruption("the file is larger than a catalog can be");
  }
  flushed_ = static_cast<int64_t>(size);
  return Status::OK();
}

Status DataFile::Refresh() {
  if (tailLen_ != 0) return Status::InvalidArgument("a file with buffered writes cannot refresh");
  windowStart_ = 0;
  windowLen_ = 0;
  return Load();
}

Status DataFile::ReadDisk(int64_t offset, char* dst, size_t n) {
  const auto end = offset + static_cast<int64_t>(n);
  if (offset >= windowStart_ && end <= windowStart_ + static_cast<int64_t>(windowLen_)) {
    std::memcpy(dst, window_.data() + (offset - windowStart_), n);
    return Status::OK();
  }
  if (n >= kWindowSize / 2) {
    size_t got = 0;
    Status s = io_->ReadAt(static_cast<uint64_t>(offset), dst, n, &got);
    if (!s.ok()) return s;
    return got == n ? Status::OK() : Status::Corruption("the file ended early");
  }
  Status s = FillWindow(offset);
  if (!s.ok()) return s;
  if (windowLen_ < n) return Status::Corruption("the file ended early");
  std::memcpy(dst, window_.data(), n);
  return Status::OK();
}

Status DataFile::FillWindow(int64_t offset) {
  window_.resize(kWindowSize);
  windowStart_ = offset;
  const size_t want = static_cast<size_t>(std::min<int64_t>(kWindowSize, flushed_ - offset));
  size_t got = 0;
  Status s = io_->ReadAt(static_cast<uint64_t>(offset), window_.data(), want, &got);
  windowLen_ = s.ok() ? got : 0;
  return s;
}

const uint8_t* DataFile::PeekSlow(int64_t pos, size_t n) {
  const int64_t offset = pos - 1;
  const int64_t end = offset + static_cast<int64_t>(n);
  if (pos < 1 || end > Length()) return nullptr;
  if (offset >= flushed_) {
    return reinterpret_cast<const uint8_t*>(tail_.get() + (offset - flushed_));
  }
  if (end > flushed_ || n >= kWindowSize / 2) return nullptr;
  if (offset < windowStart_ || end > windowStart_ + static_cast<int64_t>(windowLen_)) {
    if (!FillWindow(offset).ok() || windowLen_ < n) return nullptr;
  }
  return reinterpret_cast<const uint8_t*>(window_.data() + (offset - windowStart_));
}

void DataFile::PatchWindow(int64_t offset, const char* src, size_t n) {
  const int64_t lo = std::max(offset, windowStart_);
  const int64_t hi = std::min(offset + static_cast<int64_t>(n),
                              windowStart_ + static_cast<int64_t>(windowLen_));
  if (lo < hi) {
    std::memcpy(window_.data() + (lo - windowStart_), src + (lo - offset),
                static_cast<size_t>(hi - lo));
  }
}

Status DataFile::Read(int64_t pos, void* dst, size_t n) {
  if (n == 0) return Status::OK();
  const int64_t offset = pos - 1;
  if (pos < 1 || offset + static_cast<int64_t>(n) > Length()) {
    return Status::Corruption("a read outside the file at position " + std::to_string(pos));
  }
  auto* out = static_cast<char*>(dst);
  size_t done = 0;
  if (offset < flushed_) {
    done = static_cast<size_t>(std::min<int64_t>(static_cast<int64_t>(n), flushed_ - offset));
    Status s = ReadDisk(offset, out, done);
    if (!s.ok()) return s;
  }
  if (done < n) {
    const auto at = static_cast<size_t>(offset + static_cast<int64_t>(done) - flushed_);
    std::memcpy(out + done, tail_.get() + at, n - done);
  }
  return Status::OK();
}

void DataFile::ReserveTail(size_t size) {
  if (size <= tailCap_) return;
  const size_t cap = std::max({size, tailCap_ * 2, kFlushThreshold + (64u << 10)});
  auto grown = std::make_unique<char[]>(cap);
  if (tailLen_ > 0) std::memcpy(grown.get(), tail_.get(), tailLen_);
  tail_ = std::move(grown);
  tailCap_ = cap;
}

Status DataFile::WriteSlow(int64_t pos, const void* src, size_t n) {
  if (!error_.ok()) return error_;
  const int64_t offset = pos - 1;
  if (pos < 1 || offset > Length()) {
    return Status::InvalidArgument("a write outside the file at position " + std::to_string(pos));
  }
  const auto* in = static_cast<const char*>(src);
  size_t done = 0;
  if (offset < flushed_) {
    done = static_cast<size_t>(std::min<int64_t>(static_cast<int64_t>(n), flushed_ - offset));
    Status s = io_->WriteAt(static_cast<uint64_t>(offset), in, done);
    if (!s.ok()) {
      error_ = s;
      return s;
    }
    PatchWindow(offset, in, done);
  }
  if (done < n) {
    const auto at = static_cast<size_t>(offset + static_cast<int64_t>(done) - flushed_);
    if (at + (n - done) > tailLen_) {
      ReserveTail(at + (n - done));
      tailLen_ = at + (n - done);
    }
    std::memcpy(tail_.get() + at, in + done, n - done);
    if (tailLen_ >= kFlushThreshold) return Flush();
  }
  return Status::OK();
}

Status DataFile::AppendSlow(const void* src, size_t n, int64_t* pos) {
  if (!error_.ok()) return error_;
  if (Length() + static_cast<int64_t>(n) > INT32_MAX) {
    return Status::IOError("the catalog cannot grow past 2 GiB");
  }
  *pos = Length() + 1;
  ReserveTail(tailLen_ + n);
  if (n > 0) std::memcpy(tail_.get() + tailLen_, src, n);
  tailLen_ += n;
  if (tailLen_ >= kFlushThreshold) return Flush();
  return Status::OK();
}

Status DataFile::Flush() {
  if (!error_.ok()) return error_;
  if (tailLen_ == 0) return Status::OK();
  Status s = io_->WriteAt(static_cast<uint64_t>(flushed_), tail_.get(), tailLen_);
  if (!s.ok()) {
    // Keep the file as it was before this flush: a partly written tail would
    // only be garbage, and a full disk needs every byte back.
    (void)io_->Truncate(static_cast<uint64_t>(flushed_));
    tail_.reset();
    tailLen_ = tailCap_ = 0;
    error_ = s;
    return s;
  }
  flushed_ += static_cast<int64_t>(tailLen_);
  tailLen_ = 0;
  return Status::OK();
}

Status DataFile::Sync() {
  Status s = Flush();
  if (!s.ok()) return s;
  s = io_->Sync();
  if (!s.ok()) error_ = s;
  return s;
}

}  // namespace gorvan
