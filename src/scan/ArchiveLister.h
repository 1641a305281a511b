#pragma once
// ArchiveLister: lists the members of an archive file (ZIP, 7z, RAR, TAR plain
// or compressed with gzip/bzip2/xz/lzma/lzip/zstd/lz4/compress, ISO 9660 and
// CAB) through libarchive, one member at a time, so that a scan can append each
// member as it is read. Member data is never extracted; only headers are read.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "catalog/Attributes.h"
#include "catalog/Status.h"

namespace gorvan {

struct ArchiveMember {
  std::string name;  // last component of the member's path
  // The folders above the member inside the archive, joined with '\' as the
  // catalog stores paths; "" for a member at the archive's top level. Leading
  // "./" and "/" are dropped.
  std::string path;
  // Names are UTF-8 when the archive says how they are encoded; otherwise they
  // are the archive's raw bytes, which may not be valid UTF-8.
  int64_t size = -1;        // unpacked bytes; -1 when the archive does not say
  int64_t packedSize = -1;  // stored bytes; -1 when the format does not say
  bool hasTime = false;
  int64_t mtime = 0;  // modification time, seconds since 1970 UTC (when hasTime)
  uint32_t attributes = 0;  // the catalog's attribute bits (catalog/Attributes.h)
  bool encrypted = false;  // the member's data is encrypted (its header is not)

  bool IsDirectory() const { return (attributes & kAttrDirectory) != 0; }
};

class ArchiveLister {
 public:
  // Receives each member in archive order; returning false stops the listing.
  using Callback = std::function<bool(const ArchiveMember&)>;

  // Lists the archive at `path`.
  // On success returns OK after passing every file member to `onMember`.
  // On failure passes the members read before the fault and returns:
  // NotFound (no such file), IOError (unreadable or not a regular file),
  // Corruption (not an archive this lister knows, damaged or truncated, or
  // members it cannot read because they are encrypted) with libarchive's reason,
  // or Cancelled when `onMember` returned false. Never throws for bad input.
  //
  // Folder entries are not passed on: every member carries its folder path,
  // and whether an archive holds separate folder entries depends only on the
  // program that made it, so leaving them out gives the same listing for the
  // same contents.
  static Status List(const std::string& path, const Callback& onMember);

  // The same for an archive held in memory; `data` must stay valid during the
  // call.
  static Status ListMemory(std::string_view data, const Callback& onMember);

  // True when the name ends (in any case) in an extension of an archive type
  // listed: .zip .7z .rar .tar .tgz .taz .tbz .tbz2 .txz .tlz .tzst .tar.gz
  // .tar.bz2 .tar.xz .tar.lzma .tar.lz .tar.zst .tar.lz4 .tar.Z .iso .cab.
  static bool IsArchiveName(std::string_view name);
};

}  // namespace gorvan
