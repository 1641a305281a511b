#include "scan/VolumeInfo.h"

#include <blkid/blkid.h>
#include <fcntl.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace gorvan {

namespace {

// Whole contents of a small system file (mountinfo, sysfs and udev entries);
// empty when it cannot be read. Proc files report no size, so read to the end.
std::string ReadSmallFile(const std::string& path) {
  std::string out;
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
  if (fd < 0) return out;
  char buf[16384];
  for (;;) {
    ssize_t n = ::read(fd, buf, sizeof buf);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    out.append(buf, static_cast<std::size_t>(n));
  }
  ::close(fd);
  return out;
}

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool IsOctal(char c) { return c >= '0' && c <= '7'; }

// Splits at single blanks (mountinfo never writes two in a row).
std::vector<std::string_view> SplitFields(std::string_view line) {
  std::vector<std::string_view> fields;
  while (!line.empty()) {
    std::size_t blank = line.find(' ');
    if (blank != 0) fields.push_back(line.substr(0, blank));
    if (blank == std::string_view::npos) break;
    line.remove_prefix(blank + 1);
  }
  return fields;
}

bool ParseDeviceNumbers(std::string_view field, unsigned* major, unsigned* minor) {
  std::size_t colon = field.find(':');
  if (colon == std::string_view::npos || colon == 0 || colon + 1 >= field.size()) return false;
  unsigned long parts[2] = {0, 0};
  std::string_view texts[2] = {field.substr(0, colon), field.substr(colon + 1)};
  for (int i = 0; i < 2; ++i) {
    for (char c : texts[i]) {
      if (c < '0' || c > '9') return false;
      parts[i] = parts[i] * 10 + static_cast<unsigned long>(c - '0');
      if (parts[i] > UINT_MAX) return false;
    }
  }
  *major = static_cast<unsigned>(parts[0]);
  *minor = static_cast<unsigned>(parts[1]);
  return true;
}

// udev writes labels with blanks and other unsafe bytes as \xNN
// (ID_FS_LABEL_ENC); ID_FS_LABEL replaces them by '_', so the encoded form is
// the one to trust.
std::string DecodeUdevHex(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && i + 3 < text.size() && text[i + 1] == 'x' &&
        HexValue(text[i + 2]) >= 0 && HexValue(text[i + 3]) >= 0) {
      out += static_cast<char>(HexValue(text[i + 2]) * 16 + HexValue(text[i + 3]));
      i += 3;
    } else {
      out += text[i];
    }
  }
  return out;
}

struct Identity {
  std::string label;
  std::string uuid;
  std::string type;
};

// Label, UUID and type straight from the device's superblock. Needs read
// access to the device node.
bool ProbeDevice(const std::string& device, Identity* id) {
  blkid_probe pr = blkid_new_probe_from_filename(device.c_str());
  if (!pr) return false;
  blkid_probe_enable_superblocks(pr, 1);
  blkid_probe_set_superblocks_flags(pr, BLKID_SUBLKS_LABEL | BLKID_SUBLKS_UUID |
                                            BLKID_SUBLKS_TYPE);
  bool found = blkid_do_safeprobe(pr) == 0;
  if (found) {
    const char* value = nullptr;
    std::size_t len = 0;
    if (blkid_probe_lookup_value(pr, "LABEL", &value, &len) == 0 && value) id->label = value;
    if (blkid_probe_lookup_value(pr, "UUID", &value, &len) == 0 && value) id->uuid = value;
    if (blkid_probe_lookup_value(pr, "TYPE", &value, &len) == 0 && value) id->type = value;
  }
  blkid_free_probe(pr);
  return found;
}

// The same from udev's database, which any user may read.
bool ReadUdevIdentity(unsigned major, unsigned minor, Identity* id) {
  std::string text = ReadSmallFile("/run/udev/data/b" + std::to_string(major) + ":" +
                                   std::to_string(minor));
  if (text.empty()) return false;
  bool found = false;
  std::string_view rest = text;
  while (!rest.empty()) {
    std::size_t nl = rest.find('\n');
    std::string_view line = rest.substr(0, nl);
    rest.remove_prefix(nl == std::string_view::npos ? rest.size() : nl + 1);
    auto take = [&](std::string_view key, std::string* out) {
      if (line.substr(0, key.size()) != key) return;
      *out = DecodeUdevHex(line.substr(key.size()));
      found = true;
    };
    take("E:ID_FS_LABEL_ENC=", &id->label);
    take("E:ID_FS_UUID=", &id->uuid);
    take("E:ID_FS_TYPE=", &id->type);
  }
  return found;
}

// The kernel's name of the whole disk under a block device ("sda" for 8:1),
// from the /sys/dev/block link; "" when there is none.
std::string DiskNameFor(unsigned major, unsigned minor) {
  std::string link = "/sys/dev/block/" + std::to_string(major) + ":" + std::to_string(minor);
  std::unique_ptr<char, decltype(&std::free)> real(::realpath(link.c_str(), nullptr), &std::free);
  if (!real) return {};
  std::string dir = real.get();
  if (::access((dir + "/partition").c_str(), F_OK) == 0) {
    std::size_t slash = dir.rfind('/');
    if (slash == std::string::npos) return {};
    dir.resize(slash);
  }
  std::size_t slash = dir.rfind('/');
  return slash == std::string::npos ? dir : dir.substr(slash + 1);
}

}  // namespace

std::string VolumeInfo::DecodeMountEscapes(std::string_view field) {
  std::string out;
  out.reserve(field.size());
  for (std::size_t i = 0; i < field.size(); ++i) {
    if (field[i] == '\\' && i + 3 < field.size() && IsOctal(field[i + 1]) &&
        IsOctal(field[i + 2]) && IsOctal(field[i + 3])) {
      int v = (field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 + (field[i + 3] - '0');
      if (v <= 0xFF) {
        out += static_cast<char>(v);
        i += 3;
        continue;
      }
    }
    out += field[i];
  }
  return out;
}

std::vector<VolumeInfo::Mount> VolumeInfo::ParseMountInfo(std::string_view text) {
  std::vector<Mount> mounts;
  while (!text.empty()) {
    std::size_t nl = text.find('\n');
    std::string_view line = text.substr(0, nl);
    text.remove_prefix(nl == std::string_view::npos ? text.size() : nl + 1);

    // id parent major:minor root mount-point options [optional...] - type source super-options
    std::vector<std::string_view> f = SplitFields(line);
    if (f.size() < 7) continue;
    std::size_t dash = 6;
    while (dash < f.size() && f[dash] != "-") ++dash;
    if (dash + 2 >= f.size()) continue;
    Mount m;
    if (!ParseDeviceNumbers(f[2], &m.major, &m.minor)) continue;
    m.root = DecodeMountEscapes(f[3]);
    m.mountPoint = DecodeMountEscapes(f[4]);
    m.fsType = DecodeMountEscapes(f[dash + 1]);
    m.source = DecodeMountEscapes(f[dash + 2]);
    if (m.mountPoint.empty() || m.mountPoint.front() != '/') continue;
    mounts.push_back(std::move(m));
  }
  return mounts;
}

const VolumeInfo::Mount* VolumeInfo::FindMount(const std::vector<Mount>& mounts,
                                               std::string_view path) {
  const Mount* best = nullptr;
  std::size_t bestLength = 0;
  for (const Mount& m : mounts) {
    std::string_view mp = m.mountPoint;
    while (mp.size() > 1 && mp.back() == '/') mp.remove_suffix(1);
    bool holds;
    if (mp == "/") {
      holds = !path.empty() && path.front() == '/';
    } else {
      holds = path.substr(0, mp.size()) == mp &&
              (path.size() == mp.size() || path[mp.size()] == '/');
    }
    // ">=" so that of two mounts on the same point the later (upper) one wins.
    if (holds && (!best || mp.size() >= bestLength)) {
      best = &m;
      bestLength = mp.size();
    }
  }
  return best;
}

uint32_t VolumeInfo::SerialFromUuid(std::string_view fsType, std::string_view uuid) {
  std::string digits;
  for (char c : uuid) {
    if (HexValue(c) >= 0) {
      digits += c;
    } else if (c != '-') {
      break;
    }
  }
  std::string_view take = digits;
  if (fsType == "ntfs" || fsType == "ntfs3") {
    // The 64-bit NTFS serial; its low half is what Windows shows as the serial.
    if (take.size() > 8) take = take.substr(take.size() - 8);
  } else {
    // FAT and exFAT write their 32-bit serial as "ABCD-1234"; for UUIDs the
    // first 32 bits identify the volume just as well.
    take = take.substr(0, 8);
  }
  uint32_t serial = 0;
  for (char c : take) serial = (serial << 4) | static_cast<uint32_t>(HexValue(c));
  return serial;
}

int VolumeInfo::DriveTypeFor(std::string_view fsType, std::string_view diskName,
                             bool removable) {
  if (diskName.size() > 2 && diskName.substr(0, 2) == "sr" &&
      diskName.find_first_not_of("0123456789", 2) == std::string_view::npos) {
    return kMediaOptical;
  }
  if (removable) return kMediaRemovable;
  static constexpr std::string_view kRemote[] = {
      "nfs",  "nfs4", "cifs",      "smb3",           "fuse.sshfs", "9p",
      "afs",  "ceph", "glusterfs", "fuse.glusterfs", "davfs",      "fuse.davfs",
      "fuse.ceph"};
  for (std::string_view remote : kRemote) {
    if (fsType == remote) return kMediaRemote;
  }
  if (fsType == "tmpfs" || fsType == "ramfs") return kMediaRam;
  return kMediaFixed;
}

VolumeInfo VolumeInfo::ForPath(const std::string& path) {
  VolumeInfo info;
  std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
  if (!real) {
    int err = errno;
    info.status_ = err == ENOENT || err == ENOTDIR
                       ? Status::NotFound(path + ": " + std::strerror(err))
                       : Status::IOError(path + ": " + std::strerror(err));
    return info;
  }
  struct statvfs vfs;
  if (::statvfs(real.get(), &vfs) != 0) {
    info.status_ = Status::IOError(path + ": " + std::strerror(errno));
    return info;
  }
  std::vector<Mount> mounts = ParseMountInfo(ReadSmallFile("/proc/self/mountinfo"));
  const Mount* m = FindMount(mounts, real.get());
  if (!m) {
    info.status_ = Status::NotFound(path + ": no mounted volume holds this path");
    return info;
  }

  info.mountPoint_ = m->mountPoint;
  info.fsType_ = m->fsType;
  info.device_ = m->source;
  std::string disk;
  bool removable = false;
  if (m->major != 0) {
    // A block device. The mount source may be an alias such as /dev/root; the
    // kernel's own name for the device numbers is reliable.
    disk = DiskNameFor(m->major, m->minor);
    std::string link =
        "/sys/dev/block/" + std::to_string(m->major) + ":" + std::to_string(m->minor);
    std::unique_ptr<char, decltype(&std::free)> sys(::realpath(link.c_str(), nullptr),
                                                    &std::free);
    if (sys) {
      std::string node = sys.get();
      std::string dev = "/dev/" + node.substr(node.rfind('/') + 1);
      if (::access(dev.c_str(), F_OK) == 0) info.device_ = dev;
    }
    if (!disk.empty()) removable = ReadSmallFile("/sys/block/" + disk + "/removable").starts_with("1");
  }

  Identity id;
  bool identified = false;
  if (info.device_.rfind("/dev/", 0) == 0) identified = ProbeDevice(info.device_, &id);
  if (!identified && m->major != 0) ReadUdevIdentity(m->major, m->minor, &id);

  info.label_ = id.label.empty() ? std::string(kNoLabel) : id.label;
  info.uuid_ = id.uuid;
  info.serial_ = SerialFromUuid(id.type.empty() ? info.fsType_ : id.type, id.uuid);
  info.freeBytes_ = static_cast<uint64_t>(vfs.f_bavail) * vfs.f_frsize;
  info.totalBytes_ = static_cast<uint64_t>(vfs.f_blocks) * vfs.f_frsize;
  info.driveType_ = DriveTypeFor(info.fsType_, disk, removable);
  info.status_ = Status::OK();
  return info;
}

}  // namespace gorvan
