#pragma once
// basEjectCd: opens the tray of an optical drive — the door is unlocked
// first (a player may have locked it), then the drive is told to eject.
// Failures are not reported: a drive without a disc, or one that refuses,
// simply stays as it is. Callers that must tell a missing drive apart ask
// OpticalDrives::Exists first.

#include <string>

#include "audio/CdDevice.h"

namespace gorvan {

// Ejects the disc of `drive` (CdDevice::PathForDrive). Returns true.
bool basEjectCd(const std::string& drive, const CdDeviceOpener& opener = &CdDevice::Open);

}  // namespace gorvan
