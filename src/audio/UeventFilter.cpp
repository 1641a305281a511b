#include "audio/UeventFilter.h"

namespace gorvan {

std::string_view Uevent::Get(std::string_view key) const {
  for (const auto& [k, v] : properties) {
    if (k == key) return v;
  }
  return {};
}

bool UeventFilter::ParseKernelMessage(std::string_view message, Uevent* event) {
  *event = Uevent();
  if (message.size() > kMaxMessage || message.substr(0, 7) == "libudev") return false;
  const size_t headerEnd = message.find('\0');
  const std::string_view header = message.substr(0, headerEnd);
  if (header.find('@') == std::string_view::npos || headerEnd == std::string_view::npos) {
    return false;
  }
  std::string_view rest = message.substr(headerEnd + 1);
  while (!rest.empty() && event->properties.size() < kMaxProperties) {
    size_t end = rest.find('\0');
    if (end == std::string_view::npos) end = rest.size();
    const std::string_view item = rest.substr(0, end);
    const size_t eq = item.find('=');
    if (eq != std::string_view::npos && eq > 0) {
      event->properties.emplace_back(item.substr(0, eq), item.substr(eq + 1));
    }
    rest.remove_prefix(end < rest.size() ? end + 1 : end);
  }
  return !event->properties.empty();
}

UeventFilter::Verdict UeventFilter::Classify(const Uevent& event) {
  if (event.Get("ACTION") != "change" || event.Get("SUBSYSTEM") != "block" ||
      event.Get("DEVTYPE") != "disk" || event.Get("DISK_MEDIA_CHANGE") != "1" ||
      DevicePath(event).empty()) {
    return kIgnore;
  }
  if (event.fromUdev && event.Get("ID_CDROM") == "1") {
    return event.Get("ID_CDROM_MEDIA") == "1" ? kArrived : kRemoved;
  }
  return kProbe;
}

std::string UeventFilter::DevicePath(const Uevent& event) {
  const std::string_view name = event.Get("DEVNAME");
  if (name.empty() || name.find("..") != std::string_view::npos) return "";
  if (name.front() == '/') return std::string(name);
  return "/dev/" + std::string(name);
}

}  // namespace gorvan
