#include "audio/cFreeDbSPTI.h"

#include <array>
#include <vector>

namespace gorvan {
namespace {

// READ TOC, MSF addresses (byte 1 = 2), format 0, allocation length 0x0324.
constexpr std::array<uint8_t, 10> kReadToc = {0x43, 0x02, 0, 0, 0, 0, 0, 0x03, 0x24, 0};

int32_t MsfToFrames(uint8_t minute, uint8_t second, uint8_t frame) {
  return (minute * 60 + second) * DiscToc::kFramesPerSecond + frame;
}

}  // namespace

cFreeDbSPTI::cFreeDbSPTI(CdDeviceOpener opener) : TocReader(std::move(opener)) {}

std::span<const uint8_t> cFreeDbSPTI::ReadTocCommand() { return kReadToc; }

bool cFreeDbSPTI::InitMediaToc(const std::string& drive) {
  std::unique_ptr<CdDevice> device = OpenDrive(drive);
  if (!device) return false;
  std::vector<uint8_t> reply(kAllocationLength, 0);
  size_t received = 0;
  std::string error;
  if (!device->ScsiRead(kReadToc, reply, kTimeoutMs, &received, &error)) return Fail(error);
  DiscToc toc;
  if (!ParseReply(std::span<const uint8_t>(reply).first(std::min(received, reply.size())), &toc,
                  &error)) {
    return Fail(error);
  }
  toc_ = std::move(toc);
  return true;
}

bool cFreeDbSPTI::ParseReply(std::span<const uint8_t> reply, DiscToc* toc, std::string* error) {
  *toc = DiscToc();
  if (reply.size() < 4) {
    *error = "The drive's table of contents is too short";
    return false;
  }
  // The length field counts the bytes after itself.
  const size_t length = std::min(reply.size(), static_cast<size_t>(reply[0] << 8 | reply[1]) + 2);
  const uint8_t first = reply[2];
  const uint8_t last = reply[3];
  bool leadOut = false;
  for (size_t pos = 4; pos + 8 <= length && !leadOut; pos += 8) {
    const uint8_t* d = reply.data() + pos;
    const uint8_t track = d[2];
    const int32_t offset = MsfToFrames(d[5], d[6], d[7]);
    if (track == CdDevice::kLeadOutTrack) {
      toc->leadOut = offset;
      leadOut = true;
    } else if (track >= first && track <= last) {
      toc->tracks.push_back({track, offset, static_cast<uint8_t>(d[1] & 0x0F)});
    }
  }
  if (!leadOut) {
    *error = "The drive's table of contents has no lead-out";
    *toc = DiscToc();
    return false;
  }
  const Status s = toc->Check();
  if (!s.ok()) {
    *error = s.message();
    *toc = DiscToc();
    return false;
  }
  return true;
}

}  // namespace gorvan
