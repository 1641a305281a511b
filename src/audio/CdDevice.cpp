#include "audio/CdDevice.h"

#include <fcntl.h>
#include <linux/cdrom.h>
#include <scsi/sg.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "audio/AudioText.h"

namespace gorvan {
namespace {

std::string SystemError(const char* what) {
  return std::string(what) + ": " + std::strerror(errno);
}

class LinuxCdDevice : public CdDevice {
 public:
  explicit LinuxCdDevice(int fd) : fd_(fd) {}
  ~LinuxCdDevice() override { ::close(fd_); }

  bool ScsiRead(std::span<const uint8_t> cdb, std::span<uint8_t> data, unsigned timeoutMs,
                size_t* received, std::string* error) override {
    unsigned char sense[32] = {};
    sg_io_hdr_t io{};
    io.interface_id = 'S';
    io.cmd_len = static_cast<unsigned char>(cdb.size());
    io.cmdp = const_cast<unsigned char*>(cdb.data());
    io.dxfer_direction = SG_DXFER_FROM_DEV;
    io.dxferp = data.data();
    io.dxfer_len = static_cast<unsigned>(data.size());
    io.sbp = sense;
    io.mx_sb_len = sizeof sense;
    io.timeout = timeoutMs;
    if (::ioctl(fd_, SG_IO, &io) < 0) {
      *error = SystemError("SG_IO");
      return false;
    }
    if ((io.info & SG_INFO_OK_MASK) != SG_INFO_OK) {
      char text[96];
      std::snprintf(text, sizeof text,
                    "the drive refused READ TOC (status %d, host %d, driver %d, sense key %d)",
                    io.status, io.host_status, io.driver_status,
                    io.sb_len_wr > 2 ? sense[2] & 15 : 0);
      *error = text;
      return false;
    }
    const int resid = io.resid > 0 ? io.resid : 0;
    *received =
        data.size() > static_cast<size_t>(resid) ? data.size() - static_cast<size_t>(resid) : 0;
    return true;
  }

  bool ReadTocHeader(uint8_t* first, uint8_t* last, std::string* error) override {
    cdrom_tochdr hdr{};
    if (::ioctl(fd_, CDROMREADTOCHDR, &hdr) < 0) {
      *error = SystemError("CDROMREADTOCHDR");
      return false;
    }
    *first = hdr.cdth_trk0;
    *last = hdr.cdth_trk1;
    return true;
  }

  bool ReadTocEntry(CdTocEntry* entry, std::string* error) override {
    cdrom_tocentry e{};
    e.cdte_track = entry->track;
    e.cdte_format = CDROM_MSF;
    if (::ioctl(fd_, CDROMREADTOCENTRY, &e) < 0) {
      *error = SystemError("CDROMREADTOCENTRY");
      return false;
    }
    entry->control = e.cdte_ctrl;
    entry->minute = e.cdte_addr.msf.minute;
    entry->second = e.cdte_addr.msf.second;
    entry->frame = e.cdte_addr.msf.frame;
    return true;
  }

  int DriveStatus() override {
    const int status = ::ioctl(fd_, CDROM_DRIVE_STATUS, CDSL_CURRENT);
    return status < 0 ? -1 : status;
  }

  bool UnlockDoor() override { return ::ioctl(fd_, CDROM_LOCKDOOR, 0) == 0; }
  bool Eject() override { return ::ioctl(fd_, CDROMEJECT, 0) == 0; }

 private:
  int fd_;
};

static_assert(CdDevice::kNoDisc == CDS_NO_DISC && CdDevice::kTrayOpen == CDS_TRAY_OPEN &&
              CdDevice::kNotReady == CDS_DRIVE_NOT_READY && CdDevice::kDiscOk == CDS_DISC_OK);

}  // namespace

std::string CdDevice::PathForDrive(std::string_view drive) {
  const std::string_view name = AudioText::Trim(drive);
  if (name.empty() || name.front() == '/') return std::string(name);
  return "/dev/" + std::string(name);
}

std::unique_ptr<CdDevice> CdDevice::Open(const std::string& path, std::string* error) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) {
    *error = path + ": " + std::strerror(errno);
    return nullptr;
  }
  return std::make_unique<LinuxCdDevice>(fd);
}

}  // namespace gorvan
