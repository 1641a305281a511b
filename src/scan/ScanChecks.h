#pragma once
// ScanChecks: what the scan dialog checks when the user confirms it, as
// functions that the desktop dialog and gorvan-cli share: the path must exist,
// a disc scanned before is pointed out, and a disc name is proposed.

#include <cstdint>
#include <string>

#include "catalog/Status.h"
#include "catalog/classData.h"
#include "scan/ScanEngine.h"

namespace gorvan {

class ScanChecks {
 public:
  static constexpr const char* kPathMissing =
      "Folder or Directory Does Not Exist!!\nPlease Try Again";
  static constexpr const char* kScannedBefore = "CD or Folder Scanned Before!!";
  static constexpr const char* kProceed = "Proceed ??";

  // OK when `path` names an existing folder; otherwise NotFound with
  // kPathMissing.
  static Status CheckPath(const std::string& path);

  // The id of a linked disc that holds a scan of the same place, or 0.
  // The same place means: the same volume label (as the scan would record
  // it) and the same volume serial, and a root folder with the same name and
  // parent path inside its volume; for a volume without a serial (serial 0)
  // also the same scanned base path. So the same stick mounted somewhere else
  // is recognised, while another disc in the same drive is not.
  // REQUIRES: `path` exists; `volume` is the volume holding it.
  static int32_t FindScannedBefore(classData& data, const std::string& path,
                                   const std::string& volumeLabel, const ScanVolume& volume);

  // The disc name proposed for `path`: its last folder name when it lies below
  // its volume's root, else the volume label.
  static std::string DefaultDiscName(const std::string& path, const std::string& volumeLabel,
                                     const ScanVolume& volume);
};

}  // namespace gorvan
