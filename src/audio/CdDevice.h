#pragma once
// CdDevice: the few operations the audio-disc code asks of an optical drive,
// behind an interface so that tests feed recorded drive replies instead of a
// drive. The real device (Linux) is opened with O_RDONLY | O_NONBLOCK, so that
// an open succeeds without a disc and never waits for the tray.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace gorvan {

// One entry of the drive's table of contents as the CD-ROM ioctls give it, in
// minute-second-frame form (absolute: 00:02:00 is frame 150).
struct CdTocEntry {
  uint8_t track = 0;    // 1..99, or 0xAA for the lead-out
  uint8_t control = 0;  // control bits; 0x04 marks a data track
  uint8_t minute = 0;
  uint8_t second = 0;
  uint8_t frame = 0;
};

class CdDevice {
 public:
  // Drive states as CDROM_DRIVE_STATUS reports them.
  static constexpr int kNoInfo = 0;
  static constexpr int kNoDisc = 1;
  static constexpr int kTrayOpen = 2;
  static constexpr int kNotReady = 3;
  static constexpr int kDiscOk = 4;

  static constexpr uint8_t kLeadOutTrack = 0xAA;

  virtual ~CdDevice() = default;

  // Sends one SCSI command whose data flows from the drive into `data`
  // (SG_IO), with a time-out. On success: true and *received the number of
  // bytes the drive returned. On failure: false and *error the reason.
  virtual bool ScsiRead(std::span<const uint8_t> cdb, std::span<uint8_t> data, unsigned timeoutMs,
                        size_t* received, std::string* error) = 0;
  // CDROMREADTOCHDR: the first and last track numbers.
  virtual bool ReadTocHeader(uint8_t* first, uint8_t* last, std::string* error) = 0;
  // CDROMREADTOCENTRY in MSF form for entry->track.
  virtual bool ReadTocEntry(CdTocEntry* entry, std::string* error) = 0;
  // CDROM_DRIVE_STATUS: one of the states above, or -1 when the drive cannot
  // tell.
  virtual int DriveStatus() = 0;
  // CDROM_LOCKDOOR 0, then CDROMEJECT. Each returns false on failure.
  virtual bool UnlockDoor() = 0;
  virtual bool Eject() = 0;

  // The device path of a drive name: a path ("/dev/sr0") as given, a bare name
  // ("sr0", "cdrom") under /dev. Blanks around the name are ignored.
  static std::string PathForDrive(std::string_view drive);

  // Opens the drive at `path`. On success: the device. On failure: nullptr and
  // *error the system's reason.
  static std::unique_ptr<CdDevice> Open(const std::string& path, std::string* error);
};

// How readers open a drive; tests pass one that returns a recorded device.
using CdDeviceOpener =
    std::function<std::unique_ptr<CdDevice>(const std::string& path, std::string* error)>;

}  // namespace gorvan
