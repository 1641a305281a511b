#include "audio/TocReader.h"

#include "audio/cFreeDbMCI.h"
#include "audio/cFreeDbSPTI.h"

namespace gorvan {

TocReader::TocReader(CdDeviceOpener opener) : opener_(std::move(opener)) {}

std::unique_ptr<CdDevice> TocReader::OpenDrive(const std::string& drive) {
  toc_ = DiscToc();
  error_.clear();
  const std::string path = CdDevice::PathForDrive(drive);
  if (path.empty()) {
    error_ = "No drive given";
    return nullptr;
  }
  std::unique_ptr<CdDevice> device = opener_(path, &error_);
  if (!device && error_.empty()) error_ = path + ": the drive could not be opened";
  return device;
}

bool TocReader::Fail(std::string reason) {
  toc_ = DiscToc();
  error_ = std::move(reason);
  return false;
}

bool TocReader::ReadWithMode(int mode, const std::string& drive, const CdDeviceOpener& opener,
                             DiscToc* toc, std::string* error) {
  *toc = DiscToc();
  if (mode != kAutomatic && mode != kPassThrough && mode != kIoctl) {
    *error = "Unknown reader selection " + std::to_string(mode);
    return false;
  }
  if (mode != kIoctl) {
    cFreeDbSPTI spti(opener);
    if (spti.InitMediaToc(drive)) {
      *toc = spti.toc();
      return true;
    }
    *error = spti.error();
    if (mode == kPassThrough) return false;
  }
  cFreeDbMCI mci(opener);
  if (mci.InitMediaToc(drive)) {
    *toc = mci.toc();
    return true;
  }
  *error = mci.error();
  return false;
}

}  // namespace gorvan
