#include "audio/cCdChanger.h"

#include <libudev.h>
#include <linux/netlink.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>

#include "audio/CdDevice.h"
#include "audio/OpticalDrives.h"
#include "audio/UeventFilter.h"

namespace gorvan {
namespace {

long ReadNumber(const std::string& path, long fallback) {
  std::ifstream in(path);
  long v = fallback;
  if (!(in >> v)) return fallback;
  return v;
}

std::string BaseName(const std::string& device) { return device.substr(device.rfind('/') + 1); }

int SystemMediaPresent(const std::string& device) {
  const std::string name = BaseName(device);
  if (name.compare(0, 2, "sr") == 0) {
    std::string error;
    std::unique_ptr<CdDevice> cd = CdDevice::Open(device, &error);
    if (!cd) return -1;
    const int status = cd->DriveStatus();
    if (status < 0 || status == CdDevice::kNoInfo) return -1;
    return status == CdDevice::kDiscOk ? 1 : 0;
  }
  // A card reader: the disk has a size only while a card is in.
  const long sectors = ReadNumber("/sys/class/block/" + name + "/size", -1);
  return sectors < 0 ? -1 : (sectors > 0 ? 1 : 0);
}

bool SystemKernelPolls(const std::string& device) {
  long ms = ReadNumber("/sys/block/" + BaseName(device) + "/events_poll_msecs", -1);
  if (ms < 0) ms = ReadNumber("/sys/module/block/parameters/events_dfl_poll_msecs", 0);
  return ms > 0;
}

}  // namespace

cCdChanger::Env cCdChanger::Env::System() {
  Env env;
  env.mediaPresent = &SystemMediaPresent;
  env.drives = [] { return OpticalDrives::List(); };
  env.kernelPolls = &SystemKernelPolls;
  return env;
}

cCdChanger::cCdChanger(CDROMChanged callback, Env env)
    : callback_(std::move(callback)), env_(std::move(env)) {}

cCdChanger::~cCdChanger() { Stop(); }

void cCdChanger::OpenSource() {
  if (env_.ueventFd >= 0) {
    sourceFd_ = env_.ueventFd;
    source_ = Source::kUevent;
    return;
  }
  if (env_.useUdev && ::access("/run/udev/control", F_OK) == 0) {
    udev* u = udev_new();
    udev_monitor* mon = u ? udev_monitor_new_from_netlink(u, "udev") : nullptr;
    if (mon && udev_monitor_filter_add_match_subsystem_devtype(mon, "block", "disk") >= 0 &&
        udev_monitor_enable_receiving(mon) >= 0) {
      udev_ = u;
      monitor_ = mon;
      sourceFd_ = udev_monitor_get_fd(mon);
      source_ = Source::kUdev;
      return;
    }
    if (mon) udev_monitor_unref(mon);
    if (u) udev_unref(u);
  }
  const int fd =
      ::socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_KOBJECT_UEVENT);
  if (fd >= 0) {
    sockaddr_nl addr{};
    addr.nl_family = AF_NETLINK;
    addr.nl_groups = 1;  // the kernel's own messages
    if (::bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0) {
      sourceFd_ = fd;
      source_ = Source::kUevent;
      return;
    }
    ::close(fd);
  }
  source_ = Source::kPoll;
}

void cCdChanger::CloseSource() {
  if (monitor_) {
    udev_monitor_unref(static_cast<udev_monitor*>(monitor_));
    udev_unref(static_cast<udev*>(udev_));
    monitor_ = udev_ = nullptr;
  } else if (sourceFd_ >= 0 && sourceFd_ != env_.ueventFd) {
    ::close(sourceFd_);
  }
  sourceFd_ = -1;
}

bool cCdChanger::Start() {
  if (thread_.joinable()) return true;
  wakeFd_ = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (wakeFd_ < 0) return false;
  OpenSource();
  present_.clear();
  if (env_.drives && env_.mediaPresent) {
    for (const std::string& device : env_.drives()) {
      const int p = env_.mediaPresent(device);
      if (p >= 0) present_[device] = p == 1;
    }
  }
  try {
    thread_ = std::jthread([this](std::stop_token stop) { Run(stop); });
  } catch (const std::system_error&) {
    CloseSource();
    ::close(wakeFd_);
    wakeFd_ = -1;
    source_ = Source::kNone;
    return false;
  }
  return true;
}

void cCdChanger::Stop() {
  if (!thread_.joinable()) return;
  thread_.request_stop();
  const uint64_t one = 1;
  [[maybe_unused]] const ssize_t n = ::write(wakeFd_, &one, sizeof one);
  thread_.join();
  CloseSource();
  ::close(wakeFd_);
  wakeFd_ = -1;
  source_ = Source::kNone;
}

void cCdChanger::Run(std::stop_token stop) {
  using Clock = std::chrono::steady_clock;
  Clock::time_point nextPoll = Clock::now() + env_.pollInterval;
  std::vector<char> buffer(UeventFilter::kMaxMessage + 1);
  while (!stop.stop_requested()) {
    pollfd fds[2] = {{wakeFd_, POLLIN, 0}, {sourceFd_, POLLIN, 0}};
    const auto wait =
        std::chrono::duration_cast<std::chrono::milliseconds>(nextPoll - Clock::now());
    const int ready =
        ::poll(fds, sourceFd_ >= 0 ? 2 : 1, static_cast<int>(std::max<int64_t>(0, wait.count())));
    if (stop.stop_requested()) break;
    if (ready < 0 && errno != EINTR) break;
    if (ready > 0 && (fds[1].revents & POLLIN)) {
      if (source_ == Source::kUdev) {
        if (udev_device* dev = udev_monitor_receive_device(static_cast<udev_monitor*>(monitor_))) {
          Uevent event;
          event.fromUdev = true;
          udev_list_entry* entry = udev_device_get_properties_list_entry(dev);
          for (; entry; entry = udev_list_entry_get_next(entry)) {
            const char* value = udev_list_entry_get_value(entry);
            event.properties.emplace_back(udev_list_entry_get_name(entry), value ? value : "");
          }
          udev_device_unref(dev);
          OnEvent(event);
        }
      } else {
        const ssize_t n = ::recv(sourceFd_, buffer.data(), buffer.size(), MSG_DONTWAIT);
        Uevent event;
        if (n > 0 && UeventFilter::ParseKernelMessage(
                         std::string_view(buffer.data(), static_cast<size_t>(n)), &event)) {
          OnEvent(event);
        }
      }
    } else if (ready > 0 && (fds[1].revents & (POLLERR | POLLHUP | POLLNVAL))) {
      // The event source broke: go on by polling every drive.
      CloseSource();
      source_ = Source::kPoll;
    }
    if (Clock::now() >= nextPoll) {
      PollDrives(source_ == Source::kPoll);
      nextPoll = Clock::now() + env_.pollInterval;
    }
  }
}

void cCdChanger::OnEvent(const Uevent& event) {
  const UeventFilter::Verdict verdict = UeventFilter::Classify(event);
  if (verdict == UeventFilter::kIgnore) return;
  const std::string device = UeventFilter::DevicePath(event);
  if (verdict == UeventFilter::kProbe) {
    const int p = env_.mediaPresent ? env_.mediaPresent(device) : -1;
    if (p >= 0) Update(device, p == 1);
    return;
  }
  Update(device, verdict == UeventFilter::kArrived);
}

void cCdChanger::PollDrives(bool all) {
  if (!env_.drives || !env_.mediaPresent) return;
  for (const std::string& device : env_.drives()) {
    if (!all && env_.kernelPolls && env_.kernelPolls(device)) continue;
    const int p = env_.mediaPresent(device);
    if (p >= 0) Update(device, p == 1);
  }
}

void cCdChanger::Update(const std::string& device, bool present) {
  const auto it = present_.find(device);
  if (it != present_.end() && it->second == present) return;
  present_[device] = present;
  if (callback_) callback_(present ? kArrived : kRemoved, device);
}

}  // namespace gorvan
