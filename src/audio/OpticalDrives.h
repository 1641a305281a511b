#pragma once
// OpticalDrives: the machine's optical drives (/dev/srN) and what is in them —
// the list the eject dialog shows, the volume label of a drive ("Audio CD" for
// a disc of audio tracks without a file system) and the media id of a data
// disc. Facts come from udev's database when it has the drive, else from a
// libblkid probe of the device and its table of contents.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace gorvan {

class OpticalDrives {
 public:
  static constexpr std::string_view kNoDrives = "No CDROMs Found!!";
  static constexpr std::string_view kAudioLabel = "Audio CD";

  // Device paths of the optical drives under `sysBlock` (the sysfs block
  // class), "/dev/sr0" before "/dev/sr1" before "/dev/sr10".
  static std::vector<std::string> List(const std::string& sysBlock = "/sys/class/block");

  // The eject dialog's lines: "<device>: <label>" for every drive, or the one
  // line kNoDrives.
  static std::vector<std::string> EjectList();

  // The volume label of the disc in `device`: the file system's label; "Audio
  // CD" for audio tracks without a file system; "" without a disc or when
  // nothing can be read.
  static std::string Label(const std::string& device);

  // The media id of a data disc: for an ISO 9660 or UDF volume, its serial
  // (SerialFromUuid) in upper-case hex without leading zeros; "" otherwise.
  static std::string MediaId(const std::string& drive);

  // The 32-bit serial of a volume UUID, as the catalog records serials: the
  // first eight hex digits, dashes skipped ("2011-05-23-12-..." -> 0x20110523).
  // 0 when the UUID holds no hex digit.
  static uint32_t SerialFromUuid(std::string_view uuid);

  // True when `drive` (CdDevice::PathForDrive) names a block device.
  static bool Exists(const std::string& drive);
};

}  // namespace gorvan
