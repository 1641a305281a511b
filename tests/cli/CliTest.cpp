// gorvan-cli end to end: exit codes, output formats and the product's messages.
#include <gtest/gtest.h>

#include "catalog/classData.h"
#include "support/RunCommand.h"
#include "support/TempDir.h"

namespace gorvan::test {
namespace {

class CliTest : public ::testing::Test {
 protected:
  // Runs gorvan-cli with args (shell words) on the test's catalog; stderr goes to err_.
  CommandResult Cli(const std::string& args) {
    return RunCommand("GORVAN_HOME='" + dir_.path() + "' '" GORVAN_CLI_PATH "' -c '" +
                      dir_.File("c.cd") + "' " + args + " 2>'" + dir_.File("err") + "' </dev/null");
  }
  std::string Err() { return ReadFileBytes(dir_.File("err")); }

  TempDir dir_;
};

TEST_F(CliTest, CreateInfoAndCategories) {
  ASSERT_EQ(Cli("create '" + dir_.File("c.cd") + "'").code, 0);
  EXPECT_EQ(Cli("create '" + dir_.File("c.cd") + "'").code, 1) << "never overwrites";
  CommandResult info = Cli("info");
  ASSERT_EQ(info.code, 0);
  EXPECT_NE(info.out.find("name: Gorvan\n"), std::string::npos);
  EXPECT_NE(info.out.find("discs: 0\n"), std::string::npos);
  EXPECT_NE(info.out.find("garbage: 0\n"), std::string::npos);

  const CommandResult music = Cli("category add Music");
  ASSERT_EQ(music.code, 0);
  const std::string id = music.out.substr(0, music.out.find('\n'));
  const CommandResult jazz = Cli("category add Jazz --parent " + id);
  const std::string child = jazz.out.substr(0, jazz.out.find('\n'));
  EXPECT_EQ(Cli("category move " + id + " " + child).code, 1);
  EXPECT_NE(Err().find("A node can't be made a child of its own children."), std::string::npos);
  EXPECT_EQ(Cli("category rm " + id).code, 1);
  EXPECT_NE(Err().find("Cannot delete category because it contains children!!"), std::string::npos);
  EXPECT_EQ(Cli("category rename " + child + " 'Cool\tJazz'").code, 0);
  const CommandResult dump = Cli("dump");
  EXPECT_NE(dump.out.find("\"name\":\"Cool\\tJazz\""), std::string::npos) << dump.out;
  EXPECT_EQ(Cli("check").code, 0);
  EXPECT_EQ(Cli("category nonsense").code, 2);
}

TEST_F(CliTest, RefusalsExitWith3AndLeaveTheFileAlone) {
  WriteFileBytes(dir_.File("c.cd"), "not a catalog at all, just text");
  EXPECT_EQ(Cli("info").code, 3);
  EXPECT_NE(Err().find("Wrong Version of the Data File"), std::string::npos);
  EXPECT_EQ(ReadFileBytes(dir_.File("c.cd")), "not a catalog at all, just text");

  std::remove(dir_.File("c.cd").c_str());
  ASSERT_EQ(Cli("create '" + dir_.File("c.cd") + "'").code, 0);
  ASSERT_EQ(Cli("password set --new 'pa ss'").code, 0);
  EXPECT_EQ(Cli("info").code, 3) << "no terminal to ask on";
  EXPECT_EQ(Cli("--password wrong info").code, 3);
  EXPECT_EQ(Cli("--password 'pa ss' info").code, 0);
  EXPECT_EQ(Cli("--password 'pa ss' password clear").code, 0);
  EXPECT_EQ(Cli("info").code, 0);
  EXPECT_EQ(Cli("password set --new 'caf\xC3\xA9'").code, 1);
  EXPECT_NE(Err().find("Invalid Characters !!"), std::string::npos);
}

TEST_F(CliTest, DamagedCatalogsGiveTheDataFileError) {
  ASSERT_EQ(Cli("create '" + dir_.File("c.cd") + "'").code, 0);
  ASSERT_EQ(Cli("category add A").code, 0);
  std::string bytes = ReadFileBytes(dir_.File("c.cd"));
  bytes[26 + 1] = 0x7F;  // the first category link now points far past the end
  WriteFileBytes(dir_.File("c.cd"), bytes);
  const CommandResult r = Cli("dump");
  EXPECT_EQ(r.code, 3);
  EXPECT_NE(Err().find("Data File Error (1001)"), std::string::npos);
  EXPECT_NE(ReadFileBytes(dir_.File("Gorvan.err")).find("| 1001 |"), std::string::npos)
      << "the error is logged";
}

TEST_F(CliTest, AWrongIdIsNotFoundAndLeavesTheCatalogWorking) {
  TempDir tree;
  WriteFileBytes(tree.File("a.txt"), "a");
  ASSERT_EQ(Cli("create '" + dir_.File("c.cd") + "'").code, 0);
  const CommandResult scan = Cli("scan '" + tree.path() + "' --quiet");
  ASSERT_EQ(scan.code, 0);
  const std::string disc = scan.out.substr(0, scan.out.find('\n'));
  // An id inside the disc's block: a record of no kind at all.
  const std::string bad = std::to_string(std::stoi(disc) + 4);
  const std::string commands[] = {"ls " + bad,
                                  "ls " + disc + " " + bad,
                                  "disc rm " + bad,
                                  "disc rename " + bad + " x",
                                  "disc notes " + bad + " x",
                                  "disc move " + bad + " 0",
                                  "folder notes " + bad + " x",
                                  "file notes " + bad + " x",
                                  "category rm " + bad,
                                  "category rename " + bad + " x",
                                  "category move " + bad + " 0",
                                  "scan '" + tree.path() + "' --rescan " + bad,
                                  "export '" + dir_.File("x.xml") + "' --disc " + bad,
                                  "search a --category " + bad};
  for (const std::string& command : commands) {
    const CommandResult r = Cli(command);
    EXPECT_EQ(r.code, 1) << command;
    EXPECT_NE(Err().find("There is no"), std::string::npos) << command << ": " << Err();
    EXPECT_EQ(Err().find("1001"), std::string::npos) << command;
  }
  EXPECT_EQ(Cli("check").code, 0);
  EXPECT_EQ(Cli("ls " + disc).code, 0);
  EXPECT_EQ(Cli("disc notes " + disc + " fine").code, 0);
}

TEST_F(CliTest, LsTreePrintsTheFolderTreeDepthFirst) {
  std::vector<int32_t> ids;
  int32_t disc = 0;
  {
    classData data;
    ASSERT_TRUE(data.OpenFiles(dir_.File("c.cd"), false, true));
    classCd cd = data.CdCursor();
    data.GetCdAppend(cd);
    for (const auto& [path, name] : std::vector<std::pair<std::string, std::string>>{
             {"\\", ""}, {"\\", "a\tb"}, {"\\", "c"}, {"a\tb", "x\\y"}}) {
      classDir& d = cd.GetDirAppend();
      d.SetDirPath(path);
      d.SetDirName(name);
      ids.push_back(d.GetDirId());
    }
    cd.GetDirAppendFinish();
    disc = cd.GetCdId();
    ASSERT_TRUE(data.GetCdCommit(cd));
  }
  const auto id = [&](size_t i) { return std::to_string(ids[i]); };
  const CommandResult r = Cli("ls " + std::to_string(disc) + " --tree");
  EXPECT_EQ(r.code, 0) << Err();
  EXPECT_EQ(r.out,
            id(0) + "\t/\n" + id(1) + "\t  a\\tb\n" + id(3) + "\t    x\\\\y\n" + id(2) + "\t  c\n");
  EXPECT_EQ(Cli("ls 3 --tree").code, 1);
  EXPECT_NE(Err().find("There is no disc 3"), std::string::npos);
  EXPECT_EQ(Cli("ls --tree").code, 2);
}

}  // namespace
}  // namespace gorvan::test
