#pragma once
// The full read and write loops over a file descriptor that every layer
// shares: they go on after short transfers and EINTR, and stop at the end of
// the file or the first real error.

#include <sys/types.h>

#include <cstddef>
#include <string>

#include "catalog/Status.h"

namespace gorvan {

// Reads up to n bytes at offset (or from the current position when offset is
// negative); *got receives the count, short only at the end of the file.
Status ReadFully(int fd, void* dst, size_t n, off_t offset, size_t* got);
// Writes all n bytes at offset (or at the current position when offset is
// negative), or fails.
Status WriteFully(int fd, const void* src, size_t n, off_t offset);
// The first maxBytes bytes of the file at path (all of it when shorter).
Status ReadFileHead(const std::string& path, size_t maxBytes, std::string* out);
// Copies the file at from over to (created or truncated, mode 0666 & umask).
Status CopyFileContents(const std::string& from, const std::string& to);

}  // namespace gorvan
