#include "audio/OpticalDrives.h"

#include <blkid/blkid.h>
#include <dirent.h>
#include <libudev.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "audio/CdDevice.h"
#include "audio/cFreeDbMCI.h"

namespace gorvan {
namespace {

struct MediaFacts {
  bool known = false;  // the source could tell
  std::string fsType;
  std::string label;
  std::string uuid;
  bool audio = false;
};

std::string Property(udev_device* dev, const char* key) {
  const char* v = udev_device_get_property_value(dev, key);
  return v ? v : "";
}

// udev's "_ENC" values escape blanks and other bytes as "\x20".
std::string DecodeUdev(const std::string& text) {
  std::string out;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && i + 3 < text.size() && text[i + 1] == 'x') {
      out += static_cast<char>(std::strtol(text.substr(i + 2, 2).c_str(), nullptr, 16));
      i += 3;
    } else {
      out += text[i];
    }
  }
  return out;
}

MediaFacts FromUdev(const std::string& device) {
  MediaFacts facts;
  const std::string name = device.substr(device.rfind('/') + 1);
  udev* u = udev_new();
  if (!u) return facts;
  if (udev_device* dev = udev_device_new_from_subsystem_sysname(u, "block", name.c_str())) {
    // Without udev's database (no daemon) the device has no properties of its own.
    if (udev_device_get_is_initialized(dev) && !Property(dev, "ID_CDROM").empty()) {
      facts.known = true;
      if (Property(dev, "ID_CDROM_MEDIA") == "1") {
        facts.fsType = Property(dev, "ID_FS_TYPE");
        facts.label = DecodeUdev(Property(dev, "ID_FS_LABEL_ENC"));
        if (facts.label.empty()) facts.label = Property(dev, "ID_FS_LABEL");
        facts.uuid = Property(dev, "ID_FS_UUID");
        facts.audio = std::atoi(Property(dev, "ID_CDROM_MEDIA_TRACK_COUNT_AUDIO").c_str()) > 0;
      }
    }
    udev_device_unref(dev);
  }
  udev_unref(u);
  return facts;
}

MediaFacts FromDevice(const std::string& device) {
  MediaFacts facts;
  std::unique_ptr<CdDevice> cd;
  std::string error;
  cd = CdDevice::Open(device, &error);
  if (!cd) return facts;
  facts.known = true;
  if (cd->DriveStatus() != CdDevice::kDiscOk) return facts;
  cd.reset();
  if (blkid_probe pr = blkid_new_probe_from_filename(device.c_str())) {
    blkid_probe_enable_superblocks(pr, 1);
    blkid_probe_set_superblocks_flags(pr,
                                      BLKID_SUBLKS_LABEL | BLKID_SUBLKS_UUID | BLKID_SUBLKS_TYPE);
    if (blkid_do_safeprobe(pr) == 0) {
      const char* v = nullptr;
      if (blkid_probe_lookup_value(pr, "TYPE", &v, nullptr) == 0) facts.fsType = v;
      if (blkid_probe_lookup_value(pr, "LABEL", &v, nullptr) == 0) facts.label = v;
      if (blkid_probe_lookup_value(pr, "UUID", &v, nullptr) == 0) facts.uuid = v;
    }
    blkid_free_probe(pr);
  }
  if (facts.fsType.empty()) {
    cFreeDbMCI reader;
    facts.audio = reader.InitMediaToc(device) && reader.toc().AudioTrackCount() > 0;
  }
  return facts;
}

MediaFacts Facts(const std::string& device) {
  MediaFacts facts = FromUdev(device);
  return facts.known ? facts : FromDevice(device);
}

}  // namespace

std::vector<std::string> OpticalDrives::List(const std::string& sysBlock) {
  std::vector<std::pair<long, std::string>> drives;
  if (DIR* dir = ::opendir(sysBlock.c_str())) {
    while (const dirent* d = ::readdir(dir)) {
      const std::string_view name = d->d_name;
      if (name.size() < 3 || name.substr(0, 2) != "sr" ||
          !std::all_of(name.begin() + 2, name.end(), [](char c) { return c >= '0' && c <= '9'; })) {
        continue;
      }
      drives.emplace_back(std::atol(d->d_name + 2), "/dev/" + std::string(name));
    }
    ::closedir(dir);
  }
  std::sort(drives.begin(), drives.end());
  std::vector<std::string> paths;
  for (auto& d : drives) paths.push_back(std::move(d.second));
  return paths;
}

std::vector<std::string> OpticalDrives::EjectList() {
  std::vector<std::string> lines;
  for (const std::string& device : List()) lines.push_back(device + ": " + Label(device));
  if (lines.empty()) lines.emplace_back(kNoDrives);
  return lines;
}

std::string OpticalDrives::Label(const std::string& device) {
  const MediaFacts facts = Facts(device);
  if (!facts.fsType.empty()) return facts.label;
  return facts.audio ? std::string(kAudioLabel) : std::string();
}

uint32_t OpticalDrives::SerialFromUuid(std::string_view uuid) {
  uint32_t serial = 0;
  int digits = 0;
  for (char c : uuid) {
    if (digits == 8) break;
    int v;
    if (c >= '0' && c <= '9') {
      v = c - '0';
    } else if ((c | 0x20) >= 'a' && (c | 0x20) <= 'f') {
      v = (c | 0x20) - 'a' + 10;
    } else {
      continue;
    }
    serial = serial << 4 | static_cast<uint32_t>(v);
    ++digits;
  }
  return serial;
}

std::string OpticalDrives::MediaId(const std::string& drive) {
  const MediaFacts facts = Facts(CdDevice::PathForDrive(drive));
  if (facts.fsType != "iso9660" && facts.fsType != "udf") return "";
  const uint32_t serial = SerialFromUuid(facts.uuid);
  if (serial == 0 && facts.uuid.empty()) return "";
  char hex[9];
  std::snprintf(hex, sizeof hex, "%X", serial);
  return hex;
}

bool OpticalDrives::Exists(const std::string& drive) {
  struct stat st;
  const std::string path = CdDevice::PathForDrive(drive);
  return !path.empty() && ::stat(path.c_str(), &st) == 0 && S_ISBLK(st.st_mode);
}

}  // namespace gorvan
