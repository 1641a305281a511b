#pragma once
// cFreeDbMCI: reads the table of contents through the CD-ROM ioctls — the
// header (CDROMREADTOCHDR) for the first and last track, then one
// CDROMREADTOCENTRY in MSF form per track and one for the lead-out (0xAA). The
// lead-out comes from the drive itself, so no length arithmetic is needed.

#include <string>

#include "audio/TocReader.h"

namespace gorvan {

class cFreeDbMCI : public TocReader {
 public:
  explicit cFreeDbMCI(CdDeviceOpener opener = &CdDevice::Open);
  bool InitMediaToc(const std::string& drive) override;
};

}  // namespace gorvan
