#include "catalog/MemoryFile.h"

#include <algorithm>
#include <cstring>

namespace gorvan {

Status MemoryFile::ReadAt(uint64_t offset, void* dst, size_t n, size_t* got) {
  *got = offset >= bytes_->size() ? 0 : std::min<size_t>(n, bytes_->size() - offset);
  if (*got > 0) std::memcpy(dst, bytes_->data() + offset, *got);
  return Status::OK();
}

Status MemoryFile::WriteAt(uint64_t offset, const void* src, size_t n) {
  if (offset + n > bytes_->size()) bytes_->resize(offset + n);
  std::memcpy(bytes_->data() + offset, src, n);
  return Status::OK();
}

Status MemoryFile::Truncate(uint64_t length) {
  bytes_->resize(length);
  return Status::OK();
}

Status MemoryFile::Size(uint64_t* size) {
  *size = bytes_->size();
  return Status::OK();
}

}  // namespace gorvan
