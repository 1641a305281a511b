#include "scan/ArchiveLister.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <memory>
#include <vector>

#include "scan/LibArchive.h"

namespace gorvan {

namespace {

constexpr std::size_t kReadBlock = 64 * 1024;

// Only called once a reader exists, which needs the library to be loaded.
const LibArchive& Lib() { return *LibArchive::Get(); }

struct ArchiveDeleter {
  void operator()(struct archive* a) const { Lib().archive_read_free(a); }
};
using ArchivePtr = std::unique_ptr<struct archive, ArchiveDeleter>;

// Only the formats and filters the product lists are enabled. Formats that read
// other files named inside them (mtree) and filters that run an outside
// program (lrzip, lzop, grzip) are deliberately left out: an archive on a
// scanned disc is outside input.
ArchivePtr NewReader() {
  if (LibArchive::Get() == nullptr) return ArchivePtr();
  ArchivePtr a(Lib().archive_read_new());
  if (!a) return a;
  struct archive* r = a.get();
  Lib().archive_read_support_format_zip(r);
  Lib().archive_read_support_format_7zip(r);
  Lib().archive_read_support_format_rar(r);
  Lib().archive_read_support_format_rar5(r);
  Lib().archive_read_support_format_tar(r);
  Lib().archive_read_support_format_iso9660(r);
  Lib().archive_read_support_format_cab(r);
  Lib().archive_read_support_filter_gzip(r);
  Lib().archive_read_support_filter_bzip2(r);
  Lib().archive_read_support_filter_xz(r);
  Lib().archive_read_support_filter_lzma(r);
  Lib().archive_read_support_filter_lzip(r);
  Lib().archive_read_support_filter_zstd(r);
  Lib().archive_read_support_filter_lz4(r);
  Lib().archive_read_support_filter_compress(r);
  return a;
}

// A reader cannot be made without the library, or without memory.
Status NoReader() {
  if (LibArchive::Get() == nullptr) {
    return Status::IOError("archives cannot be listed: the archive library (libarchive) is missing");
  }
  return Status::IOError("Out of memory");
}

std::string ErrorText(struct archive* a, const char* fallback) {
  const char* msg = Lib().archive_error_string(a);
  return (msg && *msg) ? msg : fallback;
}

// Random access to the archive's raw bytes, for the ZIP central directory.
class RawBytes {
 public:
  RawBytes(int fd, int64_t size) : fd_(fd), size_(size) {}
  explicit RawBytes(std::string_view memory)
      : memory_(memory), size_(static_cast<int64_t>(memory.size())) {}
  int64_t size() const { return size_; }
  // `len` bytes at `offset`; false when they are not all there.
  bool Read(int64_t offset, std::size_t len, std::string* out) const {
    if (offset < 0 || offset > size_ || static_cast<int64_t>(len) > size_ - offset) return false;
    if (fd_ < 0) {
      out->assign(memory_.substr(static_cast<std::size_t>(offset), len));
      return true;
    }
    out->resize(len);
    std::size_t done = 0;
    while (done < len) {
      ssize_t n = ::pread(fd_, out->data() + done, len - done, offset + done);
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) return false;
      done += static_cast<std::size_t>(n);
    }
    return true;
  }

 private:
  int fd_ = -1;
  std::string_view memory_;
  int64_t size_ = 0;
};

uint64_t Le(const std::string& b, std::size_t at, int width) {
  uint64_t v = 0;
  for (int i = width - 1; i >= 0; --i) v = (v << 8) | static_cast<unsigned char>(b[at + i]);
  return v;
}

// What the ZIP central directory says about one member. libarchive does not
// report stored sizes, so they are read from the directory, which lies at the
// end of the archive.
struct ZipRecord {
  uint64_t localOffset;
  uint64_t packed;
  uint64_t size;
};

// The central directory's records sorted by local header offset; empty when
// the directory cannot be found or read. Every count and offset is checked
// against the archive's size before it is used.
std::vector<ZipRecord> ReadZipDirectory(const RawBytes& raw) {
  std::vector<ZipRecord> records;
  constexpr int64_t kEocdSize = 22;
  if (raw.size() < kEocdSize) return records;
  const int64_t tailStart = std::max<int64_t>(0, raw.size() - (kEocdSize + 0xFFFF));
  std::string tail;
  if (!raw.Read(tailStart, static_cast<std::size_t>(raw.size() - tailStart), &tail)) {
    return records;
  }
  std::size_t eocd = tail.rfind(std::string_view("PK\x05\x06", 4));
  if (eocd == std::string::npos || tail.size() - eocd < kEocdSize) return records;
  uint64_t count = Le(tail, eocd + 10, 2);
  uint64_t dirSize = Le(tail, eocd + 12, 4);
  uint64_t dirOffset = Le(tail, eocd + 16, 4);
  if ((count == 0xFFFF || dirSize == 0xFFFFFFFF || dirOffset == 0xFFFFFFFF) && eocd >= 20 &&
      tail.compare(eocd - 20, 4, "PK\x06\x07", 4) == 0) {
    // Zip64: the locator points at the larger end record.
    std::string z64;
    if (!raw.Read(static_cast<int64_t>(Le(tail, eocd - 20 + 8, 8) & INT64_MAX), 56, &z64) ||
        z64.compare(0, 4, "PK\x06\x06", 4) != 0) {
      return records;
    }
    count = Le(z64, 32, 8);
    dirSize = Le(z64, 40, 8);
    dirOffset = Le(z64, 48, 8);
  }
  constexpr uint64_t kRecordSize = 46;
  if (dirOffset > static_cast<uint64_t>(raw.size()) ||
      dirSize > static_cast<uint64_t>(raw.size()) - dirOffset || count > dirSize / kRecordSize) {
    return records;
  }
  std::string dir;
  if (!raw.Read(static_cast<int64_t>(dirOffset), static_cast<std::size_t>(dirSize), &dir)) {
    return records;
  }
  records.reserve(static_cast<std::size_t>(count));
  std::size_t at = 0;
  for (uint64_t i = 0; i < count; ++i) {
    if (dir.size() - at < kRecordSize || dir.compare(at, 4, "PK\x01\x02", 4) != 0) break;
    ZipRecord r{Le(dir, at + 42, 4), Le(dir, at + 20, 4), Le(dir, at + 24, 4)};
    const std::size_t nameLen = Le(dir, at + 28, 2);
    const std::size_t extraLen = Le(dir, at + 30, 2);
    const std::size_t commentLen = Le(dir, at + 32, 2);
    const std::size_t total = kRecordSize + nameLen + extraLen + commentLen;
    if (dir.size() - at < total) break;
    // The Zip64 extra field holds, in this order, whichever of size, packed
    // size and offset did not fit in 32 bits.
    std::size_t x = at + kRecordSize + nameLen;
    const std::size_t xEnd = x + extraLen;
    while (xEnd - x >= 4) {
      const uint64_t id = Le(dir, x, 2);
      const std::size_t len = Le(dir, x + 2, 2);
      if (xEnd - x - 4 < len) break;
      if (id == 0x0001) {
        std::size_t f = x + 4;
        const std::size_t fEnd = f + len;
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
            [](const ZipRecord& a, const ZipRecord& b) { return a.localOffset < b.localOffset; });
  return records;
}

// The stored size of the ZIP member whose local header ends at `position`
// (where libarchive stands after reading the header): the record with the
// last local header that starts at least a header's length before it. -1 when
// none fits or its unpacked size disagrees with the header's.
int64_t ZipPackedSize(const std::vector<ZipRecord>& records, int64_t position, int64_t size) {
  constexpr int64_t kLocalHeaderSize = 30;
  if (position < kLocalHeaderSize) return -1;
  const uint64_t limit = static_cast<uint64_t>(position - kLocalHeaderSize);
  auto it = std::upper_bound(records.begin(), records.end(), limit,
                             [](uint64_t v, const ZipRecord& r) { return v < r.localOffset; });
  if (it == records.begin()) return -1;
  --it;
  if (size >= 0 && it->size != static_cast<uint64_t>(size)) return -1;
  if (it->packed > static_cast<uint64_t>(INT64_MAX)) return -1;
  return static_cast<int64_t>(it->packed);
}

// Splits a member's path into folder (joined with '\') and last component.
void SplitPath(std::string_view full, ArchiveMember* m) {
  while (full.substr(0, 2) == "./") full.remove_prefix(2);
  while (!full.empty() && full.front() == '/') full.remove_prefix(1);
  while (!full.empty() && full.back() == '/') full.remove_suffix(1);
  std::size_t slash = full.rfind('/');
  if (slash == std::string_view::npos) {
    m->name.assign(full);
    m->path.clear();
    return;
  }
  m->name.assign(full.substr(slash + 1));
  m->path.clear();
  // Empty components ("a//b") and "." components are dropped.
  std::string_view rest = full.substr(0, slash);
  while (!rest.empty()) {
    std::size_t next = rest.find('/');
    std::string_view part = rest.substr(0, next);
    if (!part.empty() && part != ".") {
      if (!m->path.empty()) m->path += '\\';
      m->path.append(part);
    }
    if (next == std::string_view::npos) break;
    rest.remove_prefix(next + 1);
  }
}

// Copies what the header says about one member; the packed size is set later.
void FillMember(struct archive_entry* entry, const char* fullName, ArchiveMember* m) {
  SplitPath(fullName, m);
  m->size = Lib().archive_entry_size_is_set(entry) ? Lib().archive_entry_size(entry) : -1;
  m->packedSize = -1;
  m->hasTime = Lib().archive_entry_mtime_is_set(entry) != 0;
  m->mtime = m->hasTime ? static_cast<int64_t>(Lib().archive_entry_mtime(entry)) : 0;
  m->attributes = Lib().archive_entry_filetype(entry) == AE_IFLNK ? ArchiveMember::kReparsePoint
                                                            : ArchiveMember::kArchive;
  if ((Lib().archive_entry_perm(entry) & 0222) == 0) m->attributes |= ArchiveMember::kReadOnly;
  m->encrypted = Lib().archive_entry_is_encrypted(entry) != 0;
}

Status Walk(struct archive* a, const RawBytes& raw, const ArchiveLister::Callback& onMember) {
  struct archive_entry* entry = nullptr;
  ArchiveMember m;
  bool zipIndexed = false;
  std::vector<ZipRecord> zipRecords;
  for (;;) {
    int rc = Lib().archive_read_next_header(a, &entry);
    if (rc == ARCHIVE_EOF) return Status::OK();
    // ARCHIVE_WARN: the header was read but something in it was off, such as a
    // name that could not be converted; the member is still listed.
    if (rc != ARCHIVE_OK && rc != ARCHIVE_WARN) {
      return Status::Corruption(ErrorText(a, "Damaged archive"));
    }
    const char* name = Lib().archive_entry_pathname_utf8(entry);
    if (!name) name = Lib().archive_entry_pathname(entry);
    bool listed = Lib().archive_entry_filetype(entry) != AE_IFDIR && name != nullptr;
    if (listed) {
      FillMember(entry, name, &m);
      // A member without a name ("/" or "./") cannot be catalogued.
      listed = !m.name.empty();
    }
    if (listed) {
      // Stored sizes: a ZIP's central directory has them; tar and ISO 9660
      // store members as they are, unless the whole tar is compressed. In
      // solid 7z and RAR blocks and in CAB folders no member has bytes of its
      // own, so the size stays unknown.
      const bool unfiltered = Lib().archive_filter_count(a) <= 1;
      switch (Lib().archive_format(a) & ARCHIVE_FORMAT_BASE_MASK) {
        case ARCHIVE_FORMAT_ZIP:
          if (!zipIndexed) {
            zipRecords = ReadZipDirectory(raw);
            zipIndexed = true;
          }
          if (unfiltered) m.packedSize = ZipPackedSize(zipRecords, Lib().archive_filter_bytes(a, -1), m.size);
          break;
        case ARCHIVE_FORMAT_TAR:
        case ARCHIVE_FORMAT_ISO9660:
          if (unfiltered) m.packedSize = m.size;
          break;
        default:
          break;
      }
    }

    rc = Lib().archive_read_data_skip(a);
    if (rc != ARCHIVE_OK && rc != ARCHIVE_WARN) {
      // The header was whole, so its member is listed before the fault is
      // reported.
      if (listed && !onMember(m)) return Status::Cancelled();
      return Status::Corruption(ErrorText(a, "Damaged archive"));
    }
    if (listed && !onMember(m)) return Status::Cancelled();
  }
}

}  // namespace

Status ArchiveLister::List(const std::string& path, const Callback& onMember) {
  // O_NONBLOCK keeps a FIFO from blocking the open; it is cleared again for a
  // regular file.
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
  if (fd < 0) {
    int err = errno;
    if (err == ENOENT || err == ENOTDIR) return Status::NotFound(path + ": " + std::strerror(err));
    return Status::IOError(path + ": " + std::strerror(err));
  }
  struct FdCloser {
    int fd;
    ~FdCloser() { ::close(fd); }
  } closer{fd};
  struct stat st;
  if (::fstat(fd, &st) != 0) return Status::IOError(path + ": " + std::strerror(errno));
  if (!S_ISREG(st.st_mode)) return Status::IOError(path + ": not a regular file");
  ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);

  ArchivePtr a = NewReader();
  if (!a) return NoReader();
  if (Lib().archive_read_open_fd(a.get(), fd, kReadBlock) != ARCHIVE_OK) {
    return Status::Corruption(path + ": " + ErrorText(a.get(), "Not an archive"));
  }
  Status s = Walk(a.get(), RawBytes(fd, st.st_size), onMember);
  if (!s.ok() && !s.IsCancelled()) return Status::Corruption(path + ": " + s.message());
  return s;
}

Status ArchiveLister::ListMemory(std::string_view data, const Callback& onMember) {
  ArchivePtr a = NewReader();
  if (!a) return NoReader();
  if (Lib().archive_read_open_memory(a.get(), data.data(), data.size()) != ARCHIVE_OK) {
    return Status::Corruption(ErrorText(a.get(), "Not an archive"));
  }
  return Walk(a.get(), RawBytes(data), onMember);
}

bool ArchiveLister::IsArchiveName(std::string_view name) {
  static constexpr std::string_view kExtensions[] = {
      ".zip",     ".7z",     ".rar",    ".tar",    ".tgz",    ".taz",      ".tbz",
      ".tbz2",    ".txz",    ".tlz",    ".tzst",   ".tar.gz", ".tar.bz2",  ".tar.xz",
      ".tar.lzma", ".tar.lz", ".tar.zst", ".tar.lz4", ".tar.z", ".iso",     ".cab",
  };
  for (std::string_view ext : kExtensions) {
    if (name.size() <= ext.size()) continue;  // a bare ".zip" is a hidden name, not an archive
    std::string_view tail = name.substr(name.size() - ext.size());
    bool same = true;
    for (std::size_t i = 0; i < ext.size() && same; ++i) {
      char c = tail[i];
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
      same = c == ext[i];
    }
    if (same) return true;
  }
  return false;
}

}  // namespace gorvan
