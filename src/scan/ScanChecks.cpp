#include "scan/ScanChecks.h"

#include "scan/ScanPath.h"

namespace gorvan {

Status ScanChecks::CheckPath(const std::string& path) {
  if (!ScanPath::FolderExists(path)) return Status::NotFound(kPathMissing);
  return Status::OK();
}

int32_t ScanChecks::FindScannedBefore(classData& data, const std::string& path,
                                      const std::string& volumeLabel, const ScanVolume& volume) {
  const std::string root = ScanPath::Normalise(path);
  if (root.empty()) return 0;
  std::string parent, name;
  ScanPath::FolderTexts(volume.mountPoint, root, &parent, &name);
  classCd cd(data.file());
  for (cd.MoveFirst(); !cd.isEof(); cd.MoveNext()) {
    if (static_cast<uint32_t>(cd.GetCdDiskId()) != volume.serial) continue;
    if (cd.GetCdLabel() != volumeLabel) continue;
    if (volume.serial == 0 && cd.GetCdBasepath() != root) continue;
    classDir& dir = cd.GetDirFirst();
    if (dir.isEof()) continue;
    if (dir.GetDirPath() == parent && dir.GetDirName() == name) return cd.GetCdId();
  }
  return 0;
}

std::string ScanChecks::DefaultDiscName(const std::string& path, const std::string& volumeLabel,
                                        const ScanVolume& volume) {
  const std::string root = ScanPath::Normalise(path);
  return ScanPath::DefaultDiscName(volume.mountPoint, root.empty() ? path : root, volumeLabel);
}

}  // namespace gorvan
