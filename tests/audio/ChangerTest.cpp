// Media change: the filter over recorded uevent messages, and the changer's
// thread fed through a socket with the drives' states faked.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <condition_variable>
#include <map>
#include <mutex>

#include "audio/UeventFilter.h"
#include "audio/cCdChanger.h"

namespace gorvan::test {
namespace {

using namespace std::string_literals;

const std::string kSr0Path =
    "/devices/pci0000:00/0000:00:1f.2/ata2/host1/target1:0:0/1:0:0:0/block/sr0";

// Kernel messages as the uevent netlink socket delivers them.
const std::string kSr0Change = "change@" + kSr0Path + "\0ACTION=change\0DEVPATH="s + kSr0Path +
                               "\0SUBSYSTEM=block\0DISK_MEDIA_CHANGE=1\0MAJOR=11\0MINOR=0\0"
                               "DEVNAME=sr0\0DEVTYPE=disk\0SEQNUM=2345\0"s;
const std::string kSr0EjectButton = "change@" + kSr0Path + "\0ACTION=change\0DEVPATH="s + kSr0Path +
                                    "\0SUBSYSTEM=block\0DISK_EJECT_REQUEST=1\0MAJOR=11\0"
                                    "MINOR=0\0DEVNAME=sr0\0DEVTYPE=disk\0SEQNUM=2346\0"s;
const std::string kUsbStickAdd =
    "add@/devices/pci0000:00/0000:00:14.0/usb1/1-2/1-2:1.0/host6/target6:0:0/6:0:0:0/block/sdb\0"
    "ACTION=add\0DEVPATH=/devices/pci0000:00/0000:00:14.0/usb1/1-2/1-2:1.0/host6/target6:0:0/"
    "6:0:0:0/block/sdb\0SUBSYSTEM=block\0MAJOR=8\0MINOR=16\0DEVNAME=sdb\0DEVTYPE=disk\0"
    "DISKSEQ=12\0SEQNUM=3456\0"s;
const std::string kCardReaderChange =
    "change@/devices/pci0000:00/0000:00:14.0/usb1/1-4/1-4:1.0/host7/target7:0:0/7:0:0:0/block/"
    "sdc\0ACTION=change\0SUBSYSTEM=block\0DISK_MEDIA_CHANGE=1\0MAJOR=8\0MINOR=32\0"
    "DEVNAME=sdc\0DEVTYPE=disk\0SEQNUM=4000\0"s;

Uevent FromUdev(std::vector<std::pair<std::string, std::string>> properties) {
  Uevent e;
  e.fromUdev = true;
  e.properties = std::move(properties);
  return e;
}

TEST(UeventFilterTest, RecordedMessages) {
  struct Case {
    const char* what;
    std::string message;
    UeventFilter::Verdict verdict;
  };
  const Case cases[] = {
      {"disc in or out of sr0", kSr0Change, UeventFilter::kProbe},
      {"card in a card reader", kCardReaderChange, UeventFilter::kProbe},
      {"eject button", kSr0EjectButton, UeventFilter::kIgnore},
      {"USB stick plugged in", kUsbStickAdd, UeventFilter::kIgnore},
  };
  for (const Case& c : cases) {
    Uevent e;
    ASSERT_TRUE(UeventFilter::ParseKernelMessage(c.message, &e)) << c.what;
    EXPECT_EQ(UeventFilter::Classify(e), c.verdict) << c.what;
  }
  Uevent e;
  ASSERT_TRUE(UeventFilter::ParseKernelMessage(kSr0Change, &e));
  EXPECT_EQ(UeventFilter::DevicePath(e), "/dev/sr0");
  EXPECT_EQ(e.Get("SEQNUM"), "2345");

  for (const std::string& bad :
       {""s, "no header at all"s, "libudev\0\xfe\xed\xca\xfe"s, "change@/x"s, "change@/x\0\0\0"s,
        "change@/x\0"s + std::string(9000, 'A')}) {
    EXPECT_FALSE(UeventFilter::ParseKernelMessage(bad, &e)) << bad.size();
  }
  ASSERT_TRUE(UeventFilter::ParseKernelMessage(
      "change@/x\0ACTION=change\0SUBSYSTEM=block\0DEVTYPE=disk\0DISK_MEDIA_CHANGE=1\0"
      "DEVNAME=../../etc/passwd\0"s,
      &e));
  EXPECT_EQ(UeventFilter::Classify(e), UeventFilter::kIgnore) << "a name outside /dev";

  const std::vector<std::pair<std::string, std::string>> base = {
      {"ACTION", "change"},    {"SUBSYSTEM", "block"},     {"DEVTYPE", "disk"},
      {"DEVNAME", "/dev/sr0"}, {"DISK_MEDIA_CHANGE", "1"}, {"ID_CDROM", "1"}};
  auto withMedia = base;
  withMedia.emplace_back("ID_CDROM_MEDIA", "1");
  EXPECT_EQ(UeventFilter::Classify(FromUdev(withMedia)), UeventFilter::kArrived);
  EXPECT_EQ(UeventFilter::Classify(FromUdev(base)), UeventFilter::kRemoved);
}

// The changer with a socket for kernel messages and faked drive states.
class ChangerTest : public ::testing::Test {
 protected:
  ChangerTest() {
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0, fds_), 0);
    env_.ueventFd = fds_[0];
    env_.drives = [] { return std::vector<std::string>{"/dev/sr0"}; };
    env_.mediaPresent = [this](const std::string& device) {
      std::lock_guard<std::mutex> lock(mutex_);
      const auto it = present_.find(device);
      return it == present_.end() ? -1 : it->second;
    };
    env_.kernelPolls = [this](const std::string&) { return kernelPolls_; };
  }
  ~ChangerTest() override {
    ::close(fds_[0]);
    ::close(fds_[1]);
  }

  void Set(const std::string& device, int present) {
    std::lock_guard<std::mutex> lock(mutex_);
    present_[device] = present;
  }
  void Send(const std::string& message) {
    ASSERT_EQ(::send(fds_[1], message.data(), message.size(), 0),
              static_cast<ssize_t>(message.size()));
  }
  cCdChanger::CDROMChanged Recorder() {
    return [this](int kind, const std::string& device) {
      std::lock_guard<std::mutex> lock(mutex_);
      events_.push_back(std::to_string(kind) + " " + device);
      cv_.notify_all();
    };
  }
  // The events once `count` have come (or after a generous wait).
  std::vector<std::string> WaitFor(size_t count) {
    std::unique_lock<std::mutex> lock(mutex_);
    cv_.wait_for(lock, std::chrono::seconds(20), [&] { return events_.size() >= count; });
    return events_;
  }

  int fds_[2] = {-1, -1};
  cCdChanger::Env env_;
  bool kernelPolls_ = true;
  std::mutex mutex_;
  std::condition_variable cv_;
  std::map<std::string, int> present_;
  std::vector<std::string> events_;
};

TEST_F(ChangerTest, KernelEventsRaiseEachChangeOnce) {
  Set("/dev/sr0", 0);
  cCdChanger changer(Recorder(), env_);
  ASSERT_TRUE(changer.Start());
  EXPECT_EQ(changer.source(), cCdChanger::Source::kUevent);
  // The probe answers when the message is read, so each state change waits
  // for the event before it; messages are read in order, so anything raised
  // by the noise would show up between the expected events.
  Send(kUsbStickAdd);
  Send(kSr0EjectButton);
  Set("/dev/sr0", 1);
  Send(kSr0Change);
  EXPECT_EQ(WaitFor(1), (std::vector<std::string>{"1 /dev/sr0"}));
  Send(kSr0Change);  // the same state again
  Send("garbage");
  Set("/dev/sdc", 1);
  Send(kCardReaderChange);
  EXPECT_EQ(WaitFor(2), (std::vector<std::string>{"1 /dev/sr0", "1 /dev/sdc"}));
  Set("/dev/sr0", 0);
  Send(kSr0Change);
  EXPECT_EQ(WaitFor(3), (std::vector<std::string>{"1 /dev/sr0", "1 /dev/sdc", "2 /dev/sr0"}));
  changer.Stop();
  EXPECT_EQ(changer.source(), cCdChanger::Source::kNone);
}

TEST_F(ChangerTest, PollsDrivesTheKernelDoesNotWatch) {
  kernelPolls_ = false;
  env_.pollInterval = std::chrono::milliseconds(10);
  Set("/dev/sr0", 1);  // a disc in the drive at start raises nothing
  cCdChanger changer(Recorder(), env_);
  ASSERT_TRUE(changer.Start());
  Set("/dev/sr0", 0);
  EXPECT_EQ(WaitFor(1), (std::vector<std::string>{"2 /dev/sr0"}));
  Set("/dev/sr0", 1);
  EXPECT_EQ(WaitFor(2), (std::vector<std::string>{"2 /dev/sr0", "1 /dev/sr0"}));
}

}  // namespace
}  // namespace gorvan::test
