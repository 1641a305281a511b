// The start-up sequence: the command line, the catalog it chooses, the
// read-only check, the one-time clean-up, the reminder, the font, the view
// mode and the icon map.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>

#include "app/AppFolder.h"
#include "app/AppTestSupport.h"
#include "app/CatalogHistory.h"
#include "app/IconMap.h"
#include "app/SettingsStore.h"
#include "app/StartupSequence.h"
#include "catalog/ReadOnlyCheck.h"
#include "support/TempDir.h"

namespace gorvan {
namespace {

using namespace std::chrono;
using test::ReadFileBytes;
using test::WriteFileBytes;

class StartupTest : public ::testing::Test {
 protected:
  StartupResult Run(const std::vector<std::string>& args) {
    StartupSequence sequence(prompt_, hooks_, ShellIntegration("/usr/bin/gorvan"));
    return sequence.Run(args);
  }
  std::string App(const std::string& name) { return AppFolder::File(name); }

  test::FreshUser user_;
  test::ScriptedPrompt prompt_;
  StartupHooks hooks_{nullptr, nullptr, nullptr, sys_days(2030y / 6 / 1), sys_days(2030y / 1 / 1)};
};

TEST(CommandLineTest, CatalogPathsAndScanRequests) {
  const std::string cwd = std::filesystem::current_path().string();
  const struct {
    std::vector<std::string> args;
    std::string catalog;
    std::string scan;
  } cases[] = {
      {{}, "", ""},
      {{"  "}, "", ""},
      {{"MyDiscs.cd"}, "/app/MyDiscs.cd", ""},
      {{"My", "Discs.cd "}, "/app/My Discs.cd", ""},
      {{"/home/ann/a.cd"}, "/home/ann/a.cd", ""},
      {{"sub/a.cd"}, "sub/a.cd", ""},
      {{"--scan", "/media/usb"}, "", "/media/usb"},
      {{"/Scan", "/media/My", "Stick"}, "", "/media/My Stick"},
      {{"/SCAN", "music/"}, "", cwd + "/music/"},
      {{"--scan=/mnt/x/../y"}, "", "/mnt/y"},
      {{"--scan"}, "", ""},
      {{"/Scanner"}, "/Scanner", ""},
  };
  for (const auto& c : cases) {
    const CommandLine line = StartupSequence::ParseCommandLine(c.args, "/app");
    EXPECT_EQ(line.catalog, c.catalog) << ::testing::PrintToString(c.args);
    EXPECT_EQ(line.scanPath, c.scan) << ::testing::PrintToString(c.args);
  }
}

TEST_F(StartupTest, ChoosesTheCatalogFromHistoryCommandLineAndDefault) {
  EXPECT_EQ(Run({}).catalogPath, App("Gorvan.cd")) << "empty history";
  ASSERT_EQ(prompt_.Texts(), std::vector<std::string>{kSkinQuestion});

  test::TempDir dir;
  CatalogHistory::Push(dir.File("gone.cd"));
  EXPECT_EQ(Run({}).catalogPath, App("Gorvan.cd")) << "the last catalog no longer exists";
  WriteFileBytes(dir.File("last.cd"), "x");
  WriteFileBytes(App("MyDiscs.cd"), "x");
  CatalogHistory::Push(dir.File("last.cd"));
  EXPECT_EQ(Run({}).catalogPath, dir.File("last.cd"));
  EXPECT_EQ(Run({"MyDiscs.cd"}).catalogPath, App("MyDiscs.cd"));
  EXPECT_EQ(Run({"Missing.cd"}).catalogPath, dir.File("last.cd"));
  const StartupResult scan = Run({"/Scan", dir.path()});
  EXPECT_EQ(scan.catalogPath, dir.File("last.cd")) << "the folder action names no catalog";
  EXPECT_EQ(scan.scanPath, dir.path());
  EXPECT_EQ(prompt_.asked.size(), 1u) << "nothing else was asked";

  ::chmod(dir.File("last.cd").c_str(), 0444);
  prompt_.replies.push_back({PromptAnswer::kNo, -1, false});
  EXPECT_EQ(Run({}).catalogPath, "") << "left read-only: start with nothing open";
  EXPECT_EQ(prompt_.asked.back().text, kReadOnlyQuestion);
  prompt_.replies.push_back({PromptAnswer::kYes, -1, false});
  EXPECT_EQ(Run({}).catalogPath, dir.File("last.cd"));
  EXPECT_EQ(::access(dir.File("last.cd").c_str(), W_OK), 0);
}

TEST_F(StartupTest, CleansTheLogOnceCreatesTheMapAndRegistersTheFileType) {
  WriteFileBytes(App("Gorvan.err"), "old errors\n");
  const StartupResult r = Run({});
  EXPECT_NE(::access(App("Gorvan.err").c_str(), F_OK), 0);
  EXPECT_EQ(SettingsStore::GetText("Maintenance", "CleanUp1"), "2030/06/01");
  EXPECT_EQ(ReadFileBytes(App("Gorvan.map")), "zip,i_0143\ndoc,i_0144\nxls,i_0100\ncda,i_0027\n");
  EXPECT_EQ(r.files.mapFile, App("Gorvan.map"));
  EXPECT_EQ(r.versionString, "1.0.1.Std");
  EXPECT_EQ(r.appFolderProblem, "");
  EXPECT_EQ(ShellIntegration("/usr/bin/gorvan").Status().front().state,
            ShellIntegration::State::kInstalled);

  WriteFileBytes(App("Gorvan.err"), "new errors\n");
  hooks_.today = sys_days(2031y / 1 / 1);
  Run({});
  EXPECT_EQ(ReadFileBytes(App("Gorvan.err")), "new errors\n");
  EXPECT_EQ(SettingsStore::GetText("Maintenance", "CleanUp1"), "2030/06/01");
}

TEST_F(StartupTest, OldVersionReminderAfterTwoYearsUntilTicked) {
  SettingsStore::PutText("Switches", "SkinName", "x");
  SettingsStore::PutText("Switches", "SupportWebAddress", "https://gorvan.example/");
  hooks_.today = sys_days(2032y / 1 / 1);
  Run({});
  EXPECT_TRUE(prompt_.asked.empty()) << "two years to the day is not yet old";

  hooks_.today = sys_days(2032y / 1 / 2);
  prompt_.replies.push_back({PromptAnswer::kOk, -1, false});
  Run({});
  ASSERT_EQ(prompt_.asked.size(), 1u);
  EXPECT_EQ(prompt_.asked[0].text,
            "Version (1.0.1.Std) is very old!!\nPlease download a newer version from our "
            "website\nhttps://gorvan.example/");
  EXPECT_EQ(prompt_.asked[0].notifyKey, "Gorvan1.0.1.Std");
  prompt_.replies.push_back({PromptAnswer::kOk, -1, true});
  Run({});
  Run({});
  EXPECT_EQ(prompt_.asked.size(), 2u);
  EXPECT_EQ(SettingsStore::GetText("Switches", "Gorvan1.0.1.Std"), "False");
}

TEST_F(StartupTest, VersionCheckFontViewModeAndAnUnwritableFolder) {
  int checks = 0;
  hooks_.versionCheck = [&] { ++checks; };
  hooks_.fontInstalled = [](const std::string& f) { return f == "Tahoma" || f == "Courier"; };
  SettingsStore::PutText("Switches", "SkinName", "x");
  SettingsStore::PutText("Startup", "ViewModeExplorer", "FALSE");
  StartupResult r = Run({});
  EXPECT_EQ(checks, 0);
  EXPECT_EQ(r.interfaceFont, "Tahoma");
  EXPECT_FALSE(r.viewModeExplorer);

  SettingsStore::PutText("Switches", "lNotifyNewVersion", "True");
  SettingsStore::PutText("Fonts", "Default", "Courier");
  SettingsStore::PutText("Startup", "ViewModeExplorer", "no");
  r = Run({});
  EXPECT_EQ(checks, 1);
  EXPECT_EQ(r.interfaceFont, "Courier");
  EXPECT_TRUE(r.viewModeExplorer) << "only \"false\" turns the explorer view off";
  EXPECT_EQ(StartupSequence::ChooseFont([](const std::string&) { return false; }), "");

  test::TempDir dir;
  WriteFileBytes(dir.File("file"), "x");
  const std::string home = std::getenv("GORVAN_HOME");
  setenv("GORVAN_HOME", dir.File("file/app").c_str(), 1);
  r = Run({});
  setenv("GORVAN_HOME", home.c_str(), 1);
  ASSERT_EQ(prompt_.asked.size(), 1u);
  EXPECT_NE(r.appFolderProblem.find("cannot write to its folder"), std::string::npos);
  EXPECT_EQ(prompt_.asked[0].text, r.appFolderProblem);
}

TEST(IconMapTest, SkipsMalformedLinesAndWritesBack) {
  test::TempDir dir;
  const std::string map = dir.File("Gorvan.map");
  WriteFileBytes(map, "mp3,i_0001\r\nbad\na,b,c\n\n,i_0002\nMP3,i_0003\nlast,i_0004");
  IconMap icons;
  ASSERT_TRUE(icons.Load(map));
  EXPECT_EQ(icons.entries(),
            (std::vector<IconMap::Entry>{
                {"mp3", "i_0001"}, {"", "i_0002"}, {"MP3", "i_0003"}, {"last", "i_0004"}}));
  EXPECT_EQ(icons.KeyOf(".Mp3"), "i_0001");
  icons.Set("mp3", "i_0009");
  icons.Set(".ogg", "i_0010");
  icons.Remove("last");
  ASSERT_TRUE(icons.Save(map));
  EXPECT_EQ(ReadFileBytes(map), "mp3,i_0009\n,i_0002\nMP3,i_0003\nogg,i_0010\n");
  EXPECT_FALSE(icons.Load(dir.File("map/in/no/folder")));
  EXPECT_EQ(icons.entries(), IconMap::DefaultEntries());
}

}  // namespace
}  // namespace gorvan
