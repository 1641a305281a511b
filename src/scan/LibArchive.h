#pragma once
// LibArchive: the archive library, loaded when an archive is first listed.
//
// libarchive brings libxml2 and ICU with it, whose loading and relocation cost
// every start of the program a few milliseconds; most commands (search, ls,
// info) never open an archive. So the library is opened with dlopen on first
// use and its functions are called through this table. Without the library,
// archives are simply not listed (the scan says so once per archive).

#include <archive.h>
#include <archive_entry.h>

namespace gorvan {

#define GORVAN_LIBARCHIVE_FUNCTIONS(X)                                          \
  X(archive_read_new) X(archive_read_free) X(archive_error_string)             \
  X(archive_read_support_format_zip) X(archive_read_support_format_7zip)       \
  X(archive_read_support_format_rar) X(archive_read_support_format_rar5)       \
  X(archive_read_support_format_tar) X(archive_read_support_format_iso9660)    \
  X(archive_read_support_format_cab) X(archive_read_support_filter_gzip)       \
  X(archive_read_support_filter_bzip2) X(archive_read_support_filter_xz)       \
  X(archive_read_support_filter_lzma) X(archive_read_support_filter_lzip)      \
  X(archive_read_support_filter_zstd) X(archive_read_support_filter_lz4)       \
  X(archive_read_support_filter_compress) X(archive_read_open_fd)              \
  X(archive_read_open_memory) X(archive_read_next_header)                      \
  X(archive_read_data_skip) X(archive_filter_count) X(archive_filter_bytes)    \
  X(archive_format) X(archive_entry_filetype) X(archive_entry_is_encrypted)    \
  X(archive_entry_mtime) X(archive_entry_mtime_is_set)                         \
  X(archive_entry_pathname) X(archive_entry_pathname_utf8)                     \
  X(archive_entry_perm) X(archive_entry_size) X(archive_entry_size_is_set)

struct LibArchive {
#define GORVAN_LIBARCHIVE_POINTER(name) decltype(&::name) name = nullptr;
  GORVAN_LIBARCHIVE_FUNCTIONS(GORVAN_LIBARCHIVE_POINTER)
#undef GORVAN_LIBARCHIVE_POINTER

  // The loaded library, or null when it (or one of its functions) is missing.
  static const LibArchive* Get();
};

}  // namespace gorvan
