#pragma once
// cFreeDbSPTI: reads the table of contents by SCSI pass-through — one READ TOC
// command (0x43) asking for MSF addresses with an allocation length of 804
// bytes, enough for 99 tracks and the lead-out.

#include <cstdint>
#include <span>
#include <string>

#include "audio/TocReader.h"

namespace gorvan {

class cFreeDbSPTI : public TocReader {
 public:
  static constexpr size_t kAllocationLength = 804;
  static constexpr unsigned kTimeoutMs = 5000;

  explicit cFreeDbSPTI(CdDeviceOpener opener = &CdDevice::Open);
  bool InitMediaToc(const std::string& drive) override;

  // The READ TOC command the reader sends.
  static std::span<const uint8_t> ReadTocCommand();

  // Parses a READ TOC reply in MSF form: bytes 2 and 3 are the first and last
  // track numbers; 8-byte descriptors follow from byte 4, one per track and
  // then the lead-out (track 0xAA), with the control bits in the low nibble of
  // byte 1, the track number in byte 2 and minute, second and frame in bytes
  // 5, 6 and 7. Only the bytes the reply's length field and `reply` both cover
  // are read.
  // On success: true and *toc holds a table that passes DiscToc::Check().
  // On failure: false and *error says why.
  static bool ParseReply(std::span<const uint8_t> reply, DiscToc* toc, std::string* error);
};

}  // namespace gorvan
