// gorvan-cli scan and id3, run as a separate process.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "support/RunCommand.h"
#include "support/TempDir.h"

namespace {

using gorvan::test::CommandResult;
using gorvan::test::TempDir;
using gorvan::test::WriteFileBytes;

CommandResult Cli(const std::string& args) {
  return gorvan::test::RunCommand(std::string(GORVAN_CLI_PATH) + " " + args + " 2>/dev/null");
}

TEST(ScanCommandTest, ScanPrintsTheDiscIdAndRefusesARepeat) {
  TempDir tree;
  WriteFileBytes(tree.File("a.txt"), "abc");
  TempDir home;
  const std::string c = "-c '" + home.File("t.cd") + "' ";
  ASSERT_EQ(Cli("create '" + home.File("t.cd") + "'").code, 0);
  const CommandResult first = Cli(c + "scan '" + tree.path() + "' --name First --quiet");
  ASSERT_EQ(first.code, 0);
  const int id = std::stoi(first.out);
  EXPECT_GT(id, 0);
  EXPECT_NE(Cli(c + "ls").out.find(std::to_string(id) + "\tFirst\t"), std::string::npos);
  // The same folder again is refused unless --again; a rescan replaces it.
  EXPECT_EQ(Cli(c + "scan '" + tree.path() + "' --quiet").code, 1);
  const CommandResult again = Cli(c + "scan '" + tree.path() + "' --again --quiet");
  EXPECT_EQ(again.code, 0);
  const CommandResult rescan =
      Cli(c + "scan '" + tree.path() + "' --rescan " + std::to_string(id) + " --quiet");
  EXPECT_EQ(rescan.code, 0);
  const std::string discs = Cli(c + "ls").out;
  EXPECT_EQ(discs.find(std::to_string(id) + "\t"), std::string::npos);
  EXPECT_NE(discs.find(std::to_string(std::stoi(rescan.out)) + "\tFirst\t"), std::string::npos);
  EXPECT_EQ(Cli(c + "scan '" + tree.File("missing") + "'").code, 1);
}

TEST(ScanCommandTest, Id3PrintsKeyValueLines) {
  TempDir dir;
  std::string tag = "TAG";
  for (const char* f : {"Song", "Band", "Record"}) {
    std::string v = f;
    v.resize(30, '\0');
    tag += v;
  }
  tag += "2001" + std::string(30, '\0') + "\x11";
  WriteFileBytes(dir.File("s.mp3"), std::string(200, '\xff') + tag);
  const CommandResult r = Cli("id3 '" + dir.File("s.mp3") + "'");
  EXPECT_EQ(r.code, 0);
  EXPECT_EQ(r.out, "title: Song\nartist: Band\nalbum: Record\nyear: 2001\ncomment: \ngenre: 17\n");
  EXPECT_EQ(Cli("id3 '" + dir.File("missing.mp3") + "'").code, 1);
}

TEST(ScanCommandTest, InterruptCancelsWithExit130) {
  TempDir tree;
  for (int d = 0; d < 400; ++d) {
    const std::string dir = tree.File("d" + std::to_string(d));
    ::mkdir(dir.c_str(), 0755);
    for (int i = 0; i < 100; ++i) WriteFileBytes(dir + "/f" + std::to_string(i), "");
  }
  TempDir home;
  ASSERT_EQ(Cli("create '" + home.File("t.cd") + "'").code, 0);
  // A scan that receives SIGINT right away: the handler stops it at the next entry.
  const std::string cmd = "(" + std::string(GORVAN_CLI_PATH) + " -c '" + home.File("t.cd") +
                          "' scan '" + tree.path() +
                          "' --quiet & p=$!; sleep 0.02; kill -INT $p; wait $p)";
  const int status = std::system(cmd.c_str());
  const int code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  EXPECT_EQ(Cli("-c '" + home.File("t.cd") + "' check").code, 0);
  if (code == 0) GTEST_SKIP() << "the scan finished before the signal arrived";
  EXPECT_EQ(code, 130);
  // The cancelled scan's partial disc is linked, as a cancelled scan leaves it.
  const std::string discs = Cli("-c '" + home.File("t.cd") + "' ls").out;
  EXPECT_EQ(std::count(discs.begin(), discs.end(), '\n'), 1);
}

}  // namespace
