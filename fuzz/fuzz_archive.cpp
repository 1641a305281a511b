// The archive lister on arbitrary bytes: it must return a status for every
// input, never crash or hang, and hand out only members with a name.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "scan/ArchiveLister.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  std::size_t members = 0;
  gorvan::Status status = gorvan::ArchiveLister::ListMemory(
      bytes, [&](const gorvan::ArchiveMember& m) {
        if (m.name.empty() || m.IsDirectory()) std::abort();
        if (m.name.find('/') != std::string_view::npos) std::abort();
        // Stop early on archives that claim endless members.
        return ++members < 100000;
      });
  static_cast<void>(status);
  return 0;
}
