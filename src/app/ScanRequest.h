#pragma once
// ScanRequest: what both front ends do before a scan starts — read the
// volume that holds the path, propose the volume label and the disc name,
// fill a rescan's defaults from the disc it replaces, and find a disc that
// holds a scan of the same place already. The front ends ask the user; this
// only works out the answers.
//
// Thread contract: runs on the thread that owns the catalog.

#include <cstdint>
#include <string>

#include "catalog/Status.h"
#include "catalog/classData.h"
#include "scan/ScanSettings.h"
#include "scan/VolumeInfo.h"

namespace gorvan {

struct ScanProposal {
  VolumeInfo volume;     // the volume holding the path
  ScanVolume facts;      // what the scan records of it
  std::string label;     // the volume label ("(no label)", "..Disk Not Ready..")
  std::string discName;  // the proposed disc name
};

class ScanRequest {
 public:
  // The path must name an existing folder: NotFound with "Folder or
  // Directory Does Not Exist!!" and "Please Try Again" otherwise.
  static Status CheckPath(const std::string& path);
  // Reads the volume of path and proposes the label and disc name.
  static ScanProposal Propose(const std::string& path);
  // A rescan starts from the disc it replaces: its name, notes and category
  // fill the settings' fields that the caller left unset (name, notes,
  // category flags false). NotFound for an id that is not a disc.
  static Status RescanDefaults(classData& data, bool keepName, bool keepNotes,
                               bool keepCategory, ScanSettings* settings);
  // The id of a disc that holds a scan of the same place, or 0 (see
  // ScanChecks::FindScannedBefore).
  static int32_t ScannedBefore(classData& data, const ScanSettings& settings,
                               const ScanVolume& facts);
};

}  // namespace gorvan
