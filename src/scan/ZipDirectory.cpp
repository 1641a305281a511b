#include "scan/ZipDirectory.h"

#include <algorithm>
#include <climits>

#include "catalog/PosixIO.h"

namespace gorvan {
namespace {

uint64_t Le(const std::string& b, size_t at, int width) {
  uint64_t v = 0;
  for (int i = width - 1; i >= 0; --i) v = (v << 8) | static_cast<unsigned char>(b[at + i]);
  return v;
}

}  // namespace

bool ArchiveBytes::Read(int64_t offset, size_t len, std::string* out) const {
  if (offset < 0 || offset > size_ || static_cast<int64_t>(len) > size_ - offset) return false;
  if (fd_ < 0) {
    out->assign(memory_.substr(static_cast<size_t>(offset), len));
    return true;
  }
  out->resize(len);
  size_t got = 0;
  return ReadFully(fd_, out->data(), len, static_cast<off_t>(offset), &got).ok() && got == len;
}

ZipDirectory ZipDirectory::Read(const ArchiveBytes& raw) {
  ZipDirectory index;
  std::vector<Record>& records = index.records_;
  constexpr int64_t kEocdSize = 22;
  if (raw.size() < kEocdSize) return index;
  const int64_t tailStart = std::max<int64_t>(0, raw.size() - (kEocdSize + 0xFFFF));
  std::string tail;
  if (!raw.Read(tailStart, static_cast<size_t>(raw.size() - tailStart), &tail)) return index;
  const size_t eocd = tail.rfind(std::string_view("PK\x05\x06", 4));
  if (eocd == std::string::npos || tail.size() - eocd < kEocdSize) return index;
  uint64_t count = Le(tail, eocd + 10, 2);
  uint64_t dirSize = Le(tail, eocd + 12, 4);
  uint64_t dirOffset = Le(tail, eocd + 16, 4);
  if ((count == 0xFFFF || dirSize == 0xFFFFFFFF || dirOffset == 0xFFFFFFFF) && eocd >= 20 &&
      tail.compare(eocd - 20, 4, "PK\x06\x07", 4) == 0) {
    // Zip64: the locator points at the larger end record.
    std::string z64;
    if (!raw.Read(static_cast<int64_t>(Le(tail, eocd - 20 + 8, 8) & INT64_MAX), 56, &z64) ||
        z64.compare(0, 4, "PK\x06\x06", 4) != 0) {
      return index;
    }
    count = Le(z64, 32, 8);
    dirSize = Le(z64, 40, 8);
    dirOffset = Le(z64, 48, 8);
  }
  constexpr uint64_t kRecordSize = 46;
  if (dirOffset > static_cast<uint64_t>(raw.size()) ||
      dirSize > static_cast<uint64_t>(raw.size()) - dirOffset || count > dirSize / kRecordSize) {
    return index;
  }
  std::string dir;
  if (!raw.Read(static_cast<int64_t>(dirOffset), static_cast<size_t>(dirSize), &dir)) return index;
  records.reserve(static_cast<size_t>(count));
  size_t at = 0;
  for (uint64_t i = 0; i < count; ++i) {
    if (dir.size() - at < kRecordSize || dir.compare(at, 4, "PK\x01\x02", 4) != 0) break;
    Record r{Le(dir, at + 42, 4), Le(dir, at + 20, 4), Le(dir, at + 24, 4)};
    const size_t nameLen = Le(dir, at + 28, 2);
    const size_t extraLen = Le(dir, at + 30, 2);
    const size_t commentLen = Le(dir, at + 32, 2);
    const size_t total = kRecordSize + nameLen + extraLen + commentLen;
    if (dir.size() - at < total) break;
    // The Zip64 extra field holds, in this order, whichever of size, packed
    // size and offset did not fit in 32 bits.
    size_t x = at + kRecordSize + nameLen;
    const size_t xEnd = x + extraLen;
    while (xEnd - x >= 4) {
      const uint64_t id = Le(dir, x, 2);
      const size_t len = Le(dir, x + 2, 2);
      if (xEnd - x - 4 < len) break;
      if (id == 0x0001) {
        size_t f = x + 4;
        const size_t fEnd = f + len;
        for (uint64_t* v : {&r.size, &r.packed, &r.localOffset}) {
          if (*v != 0xFFFFFFFF) continue;
          if (fEnd - f < 8) break;
          *v = Le(dir, f, 8);
          f += 8;
        }
      }
      x += 4 + len;
    }
    records.push_back(r);
    at += total;
  }
  std::sort(records.begin(), records.end(),
            [](const Record& a, const Record& b) { return a.localOffset < b.localOffset; });
  return index;
}

int64_t ZipDirectory::PackedSize(int64_t position, int64_t size) const {
  constexpr int64_t kLocalHeaderSize = 30;
  if (position < kLocalHeaderSize) return -1;
  const uint64_t limit = static_cast<uint64_t>(position - kLocalHeaderSize);
  auto it = std::upper_bound(records_.begin(), records_.end(), limit,
                             [](uint64_t v, const Record& r) { return v < r.localOffset; });
  if (it == records_.begin()) return -1;
  --it;
  if (size >= 0 && it->size != static_cast<uint64_t>(size)) return -1;
  if (it->packed > static_cast<uint64_t>(INT64_MAX)) return -1;
  return static_cast<int64_t>(it->packed);
}

}  // namespace gorvan
