// gorvan-cli discid, cddb, drives, eject and watch end to end: output, the
// product's messages and exit codes.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdio>

#include "audio/AudioTestData.h"
#include "support/RunCommand.h"
#include "support/TestHttpServer.h"

namespace gorvan::test {
namespace {

class AudioCliTest : public ::testing::Test {
 protected:
  CommandResult Cli(const std::string& args) {
    return RunCommand("GORVAN_HOME='" + dir_.path() + "' " + args + " 2>'" + dir_.File("err") +
                      "' </dev/null");
  }
  CommandResult Run(const std::string& args) { return Cli("'" GORVAN_CLI_PATH "' " + args); }
  std::string Err() { return ReadFileBytes(dir_.File("err")); }

  TempDir dir_;
};

constexpr const char* kTwoTrackOut =
    "id: 0b0d0f02\ncategory: rock\nartist: Some Artist\nalbum: Some Album\nyear: 1999\n"
    "genre: Rock\nlength: 55:43\ntrack 1: Opening (4:01)\ntrack 2: Long One (51:41)\n";
constexpr const char* kTwoTrackEntry =
    "210 rock 0b0d0f02 CD database entry follows (until terminating `.')\r\n"
    "DISCID=0b0d0f02\r\nDTITLE=Some Artist / Some Album\r\nDYEAR=1999\r\nDGENRE=Rock\r\n"
    "TTITLE0=Opening\r\nTTITLE1=Long One\r\nPLAYORDER=\r\n.\r\n";

TEST_F(AudioCliTest, DiscIds) {
  EXPECT_EQ(Run("discid 150 18265 250912").out, "0b0d0f02\n");
  const CommandResult mb = Run(
      "discid --musicbrainz 150 18901 39738 59557 79152 100126 124833 147278 166336 182560 206535");
  EXPECT_EQ(mb.code, 0);
  EXPECT_EQ(mb.out, "830abf0a\nWn8eRBtfLDfM0qjYPdxrz.Zjs_U-\n");
  struct Case {
    const char* args;
    int code;
    const char* message;
  };
  const Case cases[] = {
      {"discid", 2, "give either --drive DEV or the track offsets"},
      {"discid --drive /dev/sr0 150 300", 2, "give either"},
      {"discid 150 x 300", 2, "\"x\" is not a frame offset"},
      {"discid 150 9000 300", 2, "lead-out comes before"},
      {"discid --drive /nonexistent/sr7", 1, "/nonexistent/sr7"},
      {"eject /nonexistent/sr7", 1, "/nonexistent/sr7: no such drive"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Run(c.args).code, c.code) << c.args;
    EXPECT_NE(Err().find(c.message), std::string::npos) << c.args << ": " << Err();
  }
}

TEST_F(AudioCliTest, LookupInALocalFolder) {
  ASSERT_EQ(::mkdir(dir_.File("db").c_str(), 0755), 0);
  ASSERT_EQ(::mkdir(dir_.File("db/rock").c_str(), 0755), 0);
  std::string entry = kTwoTrackEntry;
  entry = entry.substr(entry.find('\n') + 1);  // a database file has no status line
  ASSERT_TRUE(WriteFileBytes(dir_.File("db/rock/0b0d0f02"), entry));
  CommandResult r = Run("cddb --local '" + dir_.File("db") + "' 150 18265 250912");
  EXPECT_EQ(r.code, 0) << Err();
  EXPECT_EQ(r.out, kTwoTrackOut);

  r = Run("cddb --local '" + dir_.File("db") + "' 150 18265 250000");
  EXPECT_EQ(r.code, 1);
  EXPECT_NE(Err().find("No entry found for disc 0b0d0302"), std::string::npos) << Err();
}

TEST_F(AudioCliTest, LookupOnAServer) {
  TestHttpServer server;
  const std::string hello = "&hello=ann+example.org+Gorvan+1.0.1&proto=6";
  server.Answer("/~cddb/cddb.cgi?cmd=cddb+query+0b0d0f02+2+150+18265+3345" + hello,
                CannedAnswer::Ok("200 rock 0b0d0f02 Some Artist / Some Album\r\n"));
  server.Answer("/~cddb/cddb.cgi?cmd=cddb+read+rock+0b0d0f02" + hello,
                CannedAnswer::Ok(kTwoTrackEntry));
  const std::string host = "127.0.0.1:" + std::to_string(server.port());
  CommandResult r = Run("cddb --server " + host + " --email ann@example.org 150 18265 250912");
  EXPECT_EQ(r.code, 0) << Err();
  EXPECT_EQ(r.out, kTwoTrackOut);

  // Any other request gets the answer gnudb gives unregistered clients.
  server.Answer("/~cddb/cddb.cgi", CannedAnswer::Ok("500 Unknown developer email\r\n"));
  r = Run("cddb --server " + host + " --email ann@example.org 150 18265 250000");
  EXPECT_EQ(r.code, 1);
  EXPECT_NE(Err().find("500 Unknown developer email"), std::string::npos) << Err();
}

TEST_F(AudioCliTest, DrivesAndWatch) {
  struct stat st;
  const bool hasDrive = ::stat("/sys/class/block/sr0", &st) == 0;
  const CommandResult drives = Run("drives");
  if (hasDrive) {
    EXPECT_EQ(drives.code, 0);
    EXPECT_EQ(drives.out.rfind("/dev/sr0: ", 0), 0u) << drives.out;
  } else {
    EXPECT_EQ(drives.code, 1);
    EXPECT_NE(Err().find("No CDROMs Found!!"), std::string::npos) << Err();
  }
  // watch runs until interrupted, then ends cleanly.
  const CommandResult watch =
      Cli("timeout --preserve-status -s INT 0.5 '" GORVAN_CLI_PATH "' watch");
  EXPECT_EQ(watch.code, 0) << Err();
}

}  // namespace
}  // namespace gorvan::test
