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
#include "scan/ZipDirectory.h"

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
  m->attributes = Lib().archive_entry_filetype(entry) == AE_IFLNK ? kAttrReparsePoint
                                                            : kAttrArchive;
  if ((Lib().archive_entry_perm(entry) & 0222) == 0) m->attributes |= kAttrReadOnly;
  m->encrypted = Lib().archive_entry_is_encrypted(entry) != 0;
}

Status Walk(struct archive* a, const ArchiveBytes& raw, const ArchiveLister::Callback& onMember) {
  struct archive_entry* entry = nullptr;
  ArchiveMember m;
  bool zipIndexed = false;
  ZipDirectory zip;
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
            zip = ZipDirectory::Read(raw);
            zipIndexed = true;
          }
          if (unfiltered) m.packedSize = zip.PackedSize(Lib().archive_filter_bytes(a, -1), m.size);
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
  Status s = Walk(a.get(), ArchiveBytes(fd, st.st_size), onMember);
  if (!s.ok() && !s.IsCancelled()) return Status::Corruption(path + ": " + s.message());
  return s;
}

Status ArchiveLister::ListMemory(std::string_view data, const Callback& onMember) {
  ArchivePtr a = NewReader();
  if (!a) return NoReader();
  if (Lib().archive_read_open_memory(a.get(), data.data(), data.size()) != ARCHIVE_OK) {
    return Status::Corruption(ErrorText(a.get(), "Not an archive"));
  }
  return Walk(a.get(), ArchiveBytes(data), onMember);
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
