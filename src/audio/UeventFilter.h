#pragma once
// UeventFilter: which device events mean that a medium arrived in a drive or
// left it. Only a "change" of a whole block disk with DISK_MEDIA_CHANGE=1
// counts — what the kernel sends when a disc goes into an optical drive or a
// card into a card reader. A USB stick plugged in is a new disk ("add") and
// counts not.
//
// Events come from udev (properties after udev's rules ran: ID_CDROM_MEDIA
// says whether a disc is in) or straight from the kernel's uevent netlink
// socket, whose messages say only that something changed; then the drive is
// asked (kProbe).

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace gorvan {

struct Uevent {
  bool fromUdev = false;
  std::vector<std::pair<std::string, std::string>> properties;
  // The value of a property, "" when it is missing.
  std::string_view Get(std::string_view key) const;
};

class UeventFilter {
 public:
  enum Verdict { kIgnore = 0, kArrived = 1, kRemoved = 2, kProbe = 3 };

  // Kernel messages are at most a few KiB; longer input is refused.
  static constexpr size_t kMaxMessage = 8192;
  static constexpr size_t kMaxProperties = 128;

  // Parses one kernel uevent message: a header "<action>@<devpath>", then
  // NUL-separated KEY=VALUE properties. On success: true and *event filled
  // (fromUdev false). On failure (no "@" header, a message of udev's own
  // netlink group, which starts "libudev", too long, no properties): false.
  static bool ParseKernelMessage(std::string_view message, Uevent* event);

  static Verdict Classify(const Uevent& event);

  // The device path of the event's DEVNAME ("sr0" or "/dev/sr0" -> "/dev/sr0");
  // "" without one.
  static std::string DevicePath(const Uevent& event);
};

}  // namespace gorvan
