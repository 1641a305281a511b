#pragma once
// TocReader: the interface both table-of-contents readers share.
// cFreeDbSPTI asks the drive by SCSI pass-through (READ TOC), cFreeDbMCI by
// the CD-ROM ioctls. The selection mode ("CDDBIfc") picks one or both.

#include <string>

#include "audio/CdDevice.h"
#include "audio/DiscToc.h"

namespace gorvan {

class TocReader {
 public:
  // Reader selection modes.
  static constexpr int kAutomatic = 0;    // pass-through first, then the ioctls
  static constexpr int kPassThrough = 1;  // cFreeDbSPTI only
  static constexpr int kIoctl = 2;        // cFreeDbMCI only

  virtual ~TocReader() = default;

  // Opens `drive` (a device path or a name under /dev, CdDevice::PathForDrive)
  // and reads its table of contents.
  // On success: true; GetTOC() and toc() give the table.
  // On failure (no drive, no disc, a refused request, a table that breaks
  // DiscToc::Check()): false and error() says why; the previous table is gone.
  virtual bool InitMediaToc(const std::string& drive) = 0;

  // The contents string of the last successful InitMediaToc, "" otherwise.
  std::string GetTOC() const { return toc_.Contents(); }
  const DiscToc& toc() const { return toc_; }
  const std::string& error() const { return error_; }

  // The selection mode applied to `drive`: on success true and *toc set; on
  // failure false and *error the last reader's reason. A mode other than 0, 1
  // and 2 reads nothing ("Unknown reader selection").
  static bool ReadWithMode(int mode, const std::string& drive, const CdDeviceOpener& opener,
                           DiscToc* toc, std::string* error);

 protected:
  explicit TocReader(CdDeviceOpener opener);
  // Opens the drive for InitMediaToc, clearing the last result first.
  std::unique_ptr<CdDevice> OpenDrive(const std::string& drive);
  bool Fail(std::string reason);

  CdDeviceOpener opener_;
  DiscToc toc_;
  std::string error_;
};

}  // namespace gorvan
