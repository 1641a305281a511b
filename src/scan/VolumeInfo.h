#pragma once
// VolumeInfo: what the catalog records about the volume that holds a path:
// label, serial number, file-system type, free and total space, drive type.
// Linux: the mount point is found in /proc/self/mountinfo (longest prefix),
// label and UUID come from libblkid (or, without read access to the device,
// from udev's database), sizes from statvfs and the drive type from sysfs.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "catalog/Attributes.h"
#include "catalog/Status.h"

namespace gorvan {

class VolumeInfo {
 public:
  // Drive types are the catalog's media type codes (catalog/Attributes.h:
  // kMediaRemovable .. kMediaRam), and this one for a path that does not
  // exist or cannot be read.
  static constexpr int kDriveNoRoot = 1;

  static constexpr std::string_view kNoLabel = "(no label)";
  static constexpr std::string_view kNotReady = "..Disk Not Ready..";

  // One line of /proc/self/mountinfo, escapes (\040 and the like) decoded.
  struct Mount {
    unsigned major = 0;
    unsigned minor = 0;
    std::string root;        // the mounted file system's folder shown here
    std::string mountPoint;  // where it is mounted
    std::string fsType;      // "ext4", "fuse.sshfs", ...
    std::string source;      // "/dev/sdb1", "server:/export", "tmpfs", ...
  };

  // Reads the volume holding `path`.
  // On success: ok() is true and every field is set; label() is kNoLabel when
  // the volume has none and serial() is 0 when it has no UUID.
  // On failure (path missing or unreadable, no mount found): the returned
  // object's status() says why, label() is kNotReady, driveType() kDriveNoRoot
  // and the numbers are 0.
  static VolumeInfo ForPath(const std::string& path);

  bool ok() const { return status_.ok(); }
  const Status& status() const { return status_; }
  const std::string& mountPoint() const { return mountPoint_; }
  const std::string& device() const { return device_; }
  const std::string& fsType() const { return fsType_; }
  const std::string& label() const { return label_; }
  const std::string& uuid() const { return uuid_; }
  uint32_t serial() const { return serial_; }
  uint64_t freeBytes() const { return freeBytes_; }
  uint64_t totalBytes() const { return totalBytes_; }
  int driveType() const { return driveType_; }

  // --- Pure helpers, exposed for tests -------------------------------------

  // Parses mountinfo text; malformed lines are skipped.
  static std::vector<Mount> ParseMountInfo(std::string_view text);

  // Decodes the octal escapes mountinfo writes for blank, tab, newline and
  // backslash ("\040" -> " "); other text is kept as it is.
  static std::string DecodeMountEscapes(std::string_view field);

  // The mount holding the absolute, symlink-free `path`: the longest mount
  // point that equals the path or is a folder above it; of equal mount points
  // the later line (the mount on top) wins. nullptr when none matches.
  static const Mount* FindMount(const std::vector<Mount>& mounts, std::string_view path);

  // The 32-bit serial for a file-system type and its blkid UUID: FAT/exFAT
  // "ABCD-1234" -> 0xABCD1234; NTFS (16 hex digits) -> its low 32 bits; any
  // other type -> the first 8 hex digits of the UUID, dashes skipped. 0 when the
  // UUID holds no hex digits.
  static uint32_t SerialFromUuid(std::string_view fsType, std::string_view uuid);

  // The drive type for a file-system type and the whole disk under it ("" for
  // a file system without a block device): optical for srN disks, removable
  // when the disk says so, remote and RAM by file-system type, else fixed.
  static int DriveTypeFor(std::string_view fsType, std::string_view diskName, bool removable);

 private:
  Status status_;
  std::string mountPoint_;
  std::string device_;
  std::string fsType_;
  std::string label_{kNotReady};
  std::string uuid_;
  uint32_t serial_ = 0;
  uint64_t freeBytes_ = 0;
  uint64_t totalBytes_ = 0;
  int driveType_ = kDriveNoRoot;
};

}  // namespace gorvan
