#include "audio/basEjectCd.h"

namespace gorvan {

bool basEjectCd(const std::string& drive, const CdDeviceOpener& opener) {
  std::string error;
  const std::string path = CdDevice::PathForDrive(drive);
  if (path.empty()) return true;
  if (std::unique_ptr<CdDevice> device = opener(path, &error)) {
    device->UnlockDoor();
    device->Eject();
  }
  return true;
}

}  // namespace gorvan
