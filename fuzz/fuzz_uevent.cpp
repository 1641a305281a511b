// The uevent parser and media-change filter on arbitrary netlink messages:
// parsing stays within the message, properties stay bounded, and a verdict
// other than "ignore" always names a device under /dev.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "audio/UeventFilter.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const std::string_view message(reinterpret_cast<const char*>(data), size);
  gorvan::Uevent event;
  if (!gorvan::UeventFilter::ParseKernelMessage(message, &event)) return 0;
  if (size > gorvan::UeventFilter::kMaxMessage ||
      event.properties.size() > gorvan::UeventFilter::kMaxProperties) {
    std::abort();
  }
  for (bool fromUdev : {false, true}) {
    event.fromUdev = fromUdev;
    const gorvan::UeventFilter::Verdict v = gorvan::UeventFilter::Classify(event);
    if (v != gorvan::UeventFilter::kIgnore) {
      const std::string path = gorvan::UeventFilter::DevicePath(event);
      if (path.empty() || path.find("..") != std::string::npos) std::abort();
    }
  }
  return 0;
}
