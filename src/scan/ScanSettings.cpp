#include "scan/ScanSettings.h"

#include "scan/VolumeInfo.h"

namespace gorvan {

void CleanPatternText(std::string* text) {
  for (size_t at; (at = text->find(" ;")) != std::string::npos;) text->erase(at, 1);
}

ScanVolume ScanVolume::ForPath(const std::string& path) { return From(VolumeInfo::ForPath(path)); }

ScanVolume ScanVolume::From(const VolumeInfo& info) {
  ScanVolume v;
  if (!info.mountPoint().empty()) v.mountPoint = info.mountPoint();
  v.serial = info.serial();
  v.freeBytes = static_cast<double>(info.freeBytes());
  v.driveType = info.driveType();
  return v;
}

}  // namespace gorvan
