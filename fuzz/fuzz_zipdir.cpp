// The ZIP central-directory reader on arbitrary bytes: it must give an index
// (empty for anything it cannot read) without crashing, hanging or reading
// outside the input, and answer every position query with a size or -1.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "scan/ZipDirectory.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const gorvan::ZipDirectory index = gorvan::ZipDirectory::Read(gorvan::ArchiveBytes(bytes));
  if (index.count() > size / 46) std::abort();  // a record takes 46 bytes at least
  for (int64_t position : {int64_t{0}, int64_t{30}, static_cast<int64_t>(size), INT64_MAX}) {
    if (index.PackedSize(position, -1) < -1) std::abort();
  }
  return 0;
}
