// The table-of-contents readers against recorded drive replies: READ TOC
// replies for the pass-through reader, ioctl results for the other, the
// selection modes, and eject.
#include <gtest/gtest.h>

#include <cstring>
#include <map>

#include "audio/AudioTestData.h"
#include "audio/OpticalDrives.h"
#include "audio/TocReader.h"
#include "audio/basEjectCd.h"
#include "audio/cFreeDbMCI.h"
#include "audio/cFreeDbSPTI.h"

namespace gorvan::test {
namespace {

struct Msf {
  uint8_t track, control, m, s, f;
};

// A READ TOC reply in MSF form as a drive returns it.
std::vector<uint8_t> ReadTocReply(uint8_t first, uint8_t last, const std::vector<Msf>& entries) {
  std::vector<uint8_t> r(4, 0);
  for (const Msf& e : entries) {
    r.insert(r.end(), {0, static_cast<uint8_t>(0x10 | e.control), e.track, 0, 0, e.m, e.s, e.f});
  }
  const size_t length = r.size() - 2;
  r[0] = static_cast<uint8_t>(length >> 8);
  r[1] = static_cast<uint8_t>(length);
  r[2] = first;
  r[3] = last;
  return r;
}

Msf At(uint8_t track, int32_t frames, uint8_t control = 0) {
  return {track, control, static_cast<uint8_t>(frames / 4500),
          static_cast<uint8_t>(frames / 75 % 60), static_cast<uint8_t>(frames % 75)};
}

// The 10-track disc as recorded entries, lead-out last.
std::vector<Msf> TenTrackEntries() {
  std::vector<Msf> e;
  const DiscToc toc = TenTrackDisc();
  for (const TocTrack& t : toc.tracks) e.push_back(At(static_cast<uint8_t>(t.number), t.offset));
  e.push_back(At(0xAA, toc.leadOut));
  return e;
}

// What a fake drive answers, and what it was asked.
struct Recording {
  bool scsiWorks = true;
  std::vector<uint8_t> reply;
  uint8_t first = 1, last = 0;
  std::map<int, Msf> entries;  // by track number, 0xAA for the lead-out
  std::vector<uint8_t> cdb;
  size_t allocation = 0;
  unsigned timeout = 0;
  std::vector<std::string> calls;
};

class FakeCdDevice : public CdDevice {
 public:
  explicit FakeCdDevice(Recording* r) : r_(r) {}
  bool ScsiRead(std::span<const uint8_t> cdb, std::span<uint8_t> data, unsigned timeoutMs,
                size_t* received, std::string* error) override {
    r_->cdb.assign(cdb.begin(), cdb.end());
    r_->allocation = data.size();
    r_->timeout = timeoutMs;
    if (!r_->scsiWorks) {
      *error = "SG_IO: Inappropriate ioctl for device";
      return false;
    }
    *received = std::min(data.size(), r_->reply.size());
    std::memcpy(data.data(), r_->reply.data(), *received);
    return true;
  }
  bool ReadTocHeader(uint8_t* first, uint8_t* last, std::string*) override {
    *first = r_->first;
    *last = r_->last;
    return true;
  }
  bool ReadTocEntry(CdTocEntry* e, std::string* error) override {
    const auto it = r_->entries.find(e->track);
    if (it == r_->entries.end()) {
      *error = "CDROMREADTOCENTRY: Input/output error";
      return false;
    }
    *e = {e->track, it->second.control, it->second.m, it->second.s, it->second.f};
    return true;
  }
  int DriveStatus() override { return kDiscOk; }
  bool UnlockDoor() override { return Note("unlock"); }
  bool Eject() override { return Note("eject"); }

 private:
  bool Note(const char* call) {
    r_->calls.push_back(call);
    return true;
  }
  Recording* r_;
};

CdDeviceOpener OpenerFor(Recording* r, std::string* openedPath = nullptr) {
  return [r, openedPath](const std::string& path, std::string*) -> std::unique_ptr<CdDevice> {
    if (openedPath) *openedPath = path;
    return std::make_unique<FakeCdDevice>(r);
  };
}

void RecordIoctls(Recording* r, uint8_t first, const std::vector<Msf>& entries) {
  r->first = first;
  r->last = static_cast<uint8_t>(first + entries.size() - 2);
  for (const Msf& e : entries) r->entries[e.track] = e;
}

TEST(TocReaderTest, PassThroughReadsTheRecordedReply) {
  Recording rec;
  rec.reply = ReadTocReply(1, 10, TenTrackEntries());
  rec.reply.resize(804, 0);  // the drive fills the buffer; the length field ends the table
  std::string path;
  cFreeDbSPTI reader(OpenerFor(&rec, &path));
  ASSERT_TRUE(reader.InitMediaToc(" sr0 ")) << reader.error();
  EXPECT_EQ(path, "/dev/sr0");
  EXPECT_EQ(rec.cdb, (std::vector<uint8_t>{0x43, 0x02, 0, 0, 0, 0, 0, 0x03, 0x24, 0}));
  EXPECT_EQ(rec.allocation, 804u);
  EXPECT_EQ(rec.timeout, 5000u);
  EXPECT_EQ(reader.GetTOC(), TenTrackDisc().Contents());

  // Both readers know data tracks by their control bits.
  std::vector<Msf> entries = {At(1, 150), At(2, 20000), At(3, 90000, 0x04), At(0xAA, 120000)};
  rec.reply = ReadTocReply(1, 3, entries);
  RecordIoctls(&rec, 1, entries);
  cFreeDbMCI mci(OpenerFor(&rec));
  for (TocReader* r : {static_cast<TocReader*>(&reader), static_cast<TocReader*>(&mci)}) {
    ASSERT_TRUE(r->InitMediaToc("/dev/sr1")) << r->error();
    EXPECT_EQ(r->GetTOC(), "150 20000 90000 120000");
    EXPECT_TRUE(r->toc().tracks[1].IsAudio());
    EXPECT_FALSE(r->toc().tracks[2].IsAudio());
  }
}

TEST(TocReaderTest, BadRepliesFailWithAReason) {
  struct Case {
    const char* what;
    std::vector<uint8_t> reply;
  };
  std::vector<uint8_t> longLength = ReadTocReply(1, 10, TenTrackEntries());
  longLength.resize(longLength.size() - 8);  // the lead-out descriptor cut off
  std::vector<uint8_t> garbage(804, 0xFF);
  const Case cases[] = {
      {"empty", {}},
      {"three bytes", {0, 2, 1}},
      {"no tracks", ReadTocReply(1, 0, {At(0xAA, 1000)})},
      {"no lead-out", ReadTocReply(1, 2, {At(1, 150), At(2, 900)})},
      {"cut short", longLength},
      {"backwards", ReadTocReply(1, 3, {At(1, 150), At(2, 9000), At(3, 800), At(0xAA, 20000)})},
      {"lead-out first", ReadTocReply(1, 2, {At(1, 150), At(2, 9000), At(0xAA, 5000)})},
      {"all bytes 0xFF", garbage},
  };
  for (const Case& c : cases) {
    DiscToc toc;
    std::string error;
    EXPECT_FALSE(cFreeDbSPTI::ParseReply(c.reply, &toc, &error)) << c.what;
    EXPECT_FALSE(error.empty()) << c.what;
    EXPECT_TRUE(toc.tracks.empty()) << c.what;
  }

  Recording rec;
  RecordIoctls(&rec, 1, {At(1, 150), At(2, 9000), At(0xAA, 8000)});
  cFreeDbMCI mci(OpenerFor(&rec));
  EXPECT_FALSE(mci.InitMediaToc("sr0")) << "lead-out before the last track";
  rec.entries.erase(2);
  EXPECT_FALSE(mci.InitMediaToc("sr0"));
  EXPECT_NE(mci.error().find("CDROMREADTOCENTRY"), std::string::npos) << mci.error();
  rec.first = 5;
  rec.last = 2;
  EXPECT_FALSE(mci.InitMediaToc("sr0"));
  EXPECT_EQ(mci.GetTOC(), "");
}

TEST(TocReaderTest, SelectionModes) {
  Recording rec;
  rec.scsiWorks = false;
  RecordIoctls(&rec, 1, TenTrackEntries());
  rec.reply = ReadTocReply(1, 2, {At(1, 150), At(2, 900), At(0xAA, 2000)});
  DiscToc toc;
  std::string error;
  // Automatic: the ioctls take over when pass-through fails.
  ASSERT_TRUE(TocReader::ReadWithMode(0, "sr0", OpenerFor(&rec), &toc, &error));
  EXPECT_EQ(toc.Contents(), TenTrackDisc().Contents());
  EXPECT_FALSE(TocReader::ReadWithMode(1, "sr0", OpenerFor(&rec), &toc, &error));
  EXPECT_NE(error.find("SG_IO"), std::string::npos);
  rec.scsiWorks = true;
  ASSERT_TRUE(TocReader::ReadWithMode(0, "sr0", OpenerFor(&rec), &toc, &error));
  EXPECT_EQ(toc.Contents(), "150 900 2000") << "pass-through first";
  ASSERT_TRUE(TocReader::ReadWithMode(2, "sr0", OpenerFor(&rec), &toc, &error));
  EXPECT_EQ(toc.Contents(), TenTrackDisc().Contents()) << "ioctls only";
  EXPECT_FALSE(TocReader::ReadWithMode(3, "sr0", OpenerFor(&rec), &toc, &error));
  EXPECT_TRUE(toc.tracks.empty());

  CdDeviceOpener missing = [](const std::string& path, std::string* e) {
    *e = path + ": No such file or directory";
    return std::unique_ptr<CdDevice>();
  };
  EXPECT_FALSE(TocReader::ReadWithMode(0, "sr9", missing, &toc, &error));
  EXPECT_EQ(error, "/dev/sr9: No such file or directory");
}

TEST(EjectTest, UnlocksThenEjectsAndNeverFails) {
  Recording rec;
  EXPECT_TRUE(basEjectCd("/dev/sr0", OpenerFor(&rec)));
  EXPECT_EQ(rec.calls, (std::vector<std::string>{"unlock", "eject"}));
  EXPECT_TRUE(basEjectCd("/dev/no-such-drive")) << "a missing drive is not reported";
  EXPECT_TRUE(basEjectCd(""));
}

TEST(OpticalDrivesTest, ListAndSerials) {
  TempDir sys;
  for (const char* name : {"sr10", "sda", "sr2", "sr0", "srx", "sr"}) {
    ASSERT_TRUE(WriteFileBytes(sys.File(name), ""));
  }
  EXPECT_EQ(OpticalDrives::List(sys.path()),
            (std::vector<std::string>{"/dev/sr0", "/dev/sr2", "/dev/sr10"}));
  EXPECT_TRUE(OpticalDrives::List(sys.File("missing")).empty());
  EXPECT_EQ(OpticalDrives::SerialFromUuid("2011-05-23-12-34-56-00"), 0x20110523u);
  EXPECT_EQ(OpticalDrives::SerialFromUuid("4a2b-Cd19"), 0x4A2BCD19u);
  EXPECT_EQ(OpticalDrives::SerialFromUuid(""), 0u);
}

}  // namespace
}  // namespace gorvan::test
