#include "audio/cFreeDbMCI.h"

namespace gorvan {
namespace {

int32_t Frames(const CdTocEntry& e) {
  return (e.minute * 60 + e.second) * DiscToc::kFramesPerSecond + e.frame;
}

}  // namespace

cFreeDbMCI::cFreeDbMCI(CdDeviceOpener opener) : TocReader(std::move(opener)) {}

bool cFreeDbMCI::InitMediaToc(const std::string& drive) {
  std::unique_ptr<CdDevice> device = OpenDrive(drive);
  if (!device) return false;
  uint8_t first = 0;
  uint8_t last = 0;
  std::string error;
  if (!device->ReadTocHeader(&first, &last, &error)) return Fail(error);
  if (first < 1 || last > DiscToc::kMaxTracks || first > last) {
    return Fail("The drive reports tracks " + std::to_string(first) + " to " +
                std::to_string(last));
  }
  DiscToc toc;
  for (int track = first; track <= last; ++track) {
    CdTocEntry e;
    e.track = static_cast<uint8_t>(track);
    if (!device->ReadTocEntry(&e, &error)) return Fail(error);
    toc.tracks.push_back({track, Frames(e), static_cast<uint8_t>(e.control & 0x0F)});
  }
  CdTocEntry leadOut;
  leadOut.track = CdDevice::kLeadOutTrack;
  if (!device->ReadTocEntry(&leadOut, &error)) return Fail(error);
  toc.leadOut = Frames(leadOut);
  const Status s = toc.Check();
  if (!s.ok()) return Fail(s.message());
  toc_ = std::move(toc);
  return true;
}

}  // namespace gorvan
