#pragma once
// cCdChanger: tells its owner that a medium arrived in a drive (kind 1) or was
// removed (kind 2) — a disc in an optical drive or a card in a card reader. It
// watches, on a thread of its own:
//   - udev's monitor, when a udev daemon runs (/run/udev/control);
//   - else the kernel's uevent netlink socket;
//   - and, every two seconds, the status (CDROM_DRIVE_STATUS) of each optical
//     drive whose kernel does not poll it for media changes — all of them when
//     neither event source can be opened.
// Each drive's last known state is kept, so a repeated event, or an event and
// a poll seeing the same change, raises it once. A USB stick plugged in raises
// nothing.
//
// Threads: CDROMChanged is called on the changer's thread, one call at a time;
// the receiver hands the event to its own thread (the desktop program posts
// it to the GUI). Stop() (and the destructor) return after the thread ended;
// they must not be called from inside the callback.

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace gorvan {

struct Uevent;

class cCdChanger {
 public:
  static constexpr int kArrived = 1;
  static constexpr int kRemoved = 2;

  // kind: kArrived or kRemoved; device: the drive's path ("/dev/sr0").
  using CDROMChanged = std::function<void(int kind, const std::string& device)>;

  enum class Source { kNone, kUdev, kUevent, kPoll };

  // What the changer asks of the system; tests replace it.
  struct Env {
    // 1 when a medium is in `device`, 0 when not, -1 when it cannot be told.
    std::function<int(const std::string& device)> mediaPresent;
    // The optical drives to watch.
    std::function<std::vector<std::string>()> drives;
    // True when the kernel polls `device` for media changes itself.
    std::function<bool(const std::string& device)> kernelPolls;
    std::chrono::milliseconds pollInterval{2000};
    // A socket delivering kernel uevent messages, read instead of the netlink
    // socket (tests); the changer does not close it.
    int ueventFd = -1;
    bool useUdev = true;

    static Env System();
  };

  explicit cCdChanger(CDROMChanged callback, Env env = Env::System());
  ~cCdChanger();
  cCdChanger(const cCdChanger&) = delete;
  cCdChanger& operator=(const cCdChanger&) = delete;

  // Starts watching. Returns false (and starts nothing) only when the thread
  // cannot be started; source() then says kNone.
  bool Start();
  void Stop();
  Source source() const { return source_.load(); }

 private:
  void Run(std::stop_token stop);
  void OnEvent(const Uevent& event);
  void PollDrives(bool all);
  void Update(const std::string& device, bool present);
  void OpenSource();
  void CloseSource();

  CDROMChanged callback_;
  Env env_;
  std::atomic<Source> source_{Source::kNone};
  int sourceFd_ = -1;
  int wakeFd_ = -1;
  void* udev_ = nullptr;
  void* monitor_ = nullptr;
  std::map<std::string, bool> present_;
  std::jthread thread_;
};

}  // namespace gorvan
