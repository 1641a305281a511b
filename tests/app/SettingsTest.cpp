// The INI store, the settings record (load and save order, the product's
// reading rules, damaged stores) and the window-layout keys.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "app/AppFolder.h"
#include "app/AppTestSupport.h"
#include "app/SettingsRecord.h"
#include "app/SettingsStore.h"
#include "app/ShellIntegration.h"
#include "app/WindowLayout.h"
#include "app/basIniFiles.h"
#include "support/TempDir.h"

namespace gorvan {
namespace {

using test::ReadFileBytes;
using test::WriteFileBytes;

std::string StoreFile() { return SettingsStore::FilePath(); }

TEST(IniTest, ReadsValuesAsAProfileBufferWould) {
  test::TempDir dir;
  const std::string ini = dir.File("t.ini");
  const std::string longValue = std::string(125, 'x') + "  yyy";
  ASSERT_TRUE(WriteFileBytes(
      ini,
      "; comment\n[Other]\nKey=other\n[ switches ]\r\n  dragdrop = False  \r\nQuoted=\"a b \"\n"
      "Long=" +
          longValue + "\nNul=ab" + std::string(1, '\0') + "cd\n[Switches]\nLate=1\n"));
  const struct {
    const char* section;
    const char* key;
    const char* defaultValue;
    std::string expected;
  } cases[] = {
      {"Switches", "DragDrop", "", "False"},            // names ignore case, blanks trimmed
      {"SWITCHES", "Quoted", "", "a b"},                // quotes dropped, then trailing blank
      {"Switches", "Long", "", std::string(125, 'x')},  // 127 characters, trailing blanks cut
      {"Switches", "Nul", "", "ab"},                    // cut at the NUL
      {"Switches", "Key", "none", "none"},              // a key of another section
      {"Switches", "Late", "d", "d"},                   // only the first section counts
      {"Missing", "Key", "dflt  ", "dflt"},             // the default goes through the buffer too
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ReadIniString(c.section, c.key, c.defaultValue, ini), c.expected) << c.key;
  }
  EXPECT_EQ(ReadIniString("Switches", "DragDrop", "d", dir.File("none.ini")), "d");
}

TEST(IniTest, WritesKeysInPlaceAndLogsAFailedWrite) {
  test::FreshUser user;
  // No file named: "Default.ini" in the application folder.
  ASSERT_TRUE(WriteIniString("Switches", "A", "1"));
  ASSERT_TRUE(WriteIniString("Other", "B", "two\nlines"));
  ASSERT_TRUE(WriteIniString("switches", "C", "3"));
  ASSERT_TRUE(WriteIniString("Switches", "a", "one"));
  EXPECT_EQ(ReadFileBytes(AppFolder::File(kDefaultIniName)),
            "[Switches]\na=one\nC=3\n\n[Other]\nB=two lines\n");
  EXPECT_EQ(ReadIniString("Switches", "A", ""), "one");

  test::TempDir dir;
  ASSERT_TRUE(WriteFileBytes(dir.File("file"), "x"));
  EXPECT_FALSE(WriteIniString("S", "K", "V", dir.File("file") + "/sub.ini"));
  const std::string big = dir.File("big.ini");
  ASSERT_TRUE(
      WriteFileBytes(big, "[S]\nK=early\n" + std::string(kMaxIniFileBytes, ';') + "\nL=x\n"));
  EXPECT_FALSE(WriteIniString("S", "K", "V", big)) << "a file too large to read whole";
  EXPECT_EQ(ReadIniString("S", "K", "", big), "early");
  EXPECT_EQ(ReadIniString("S", "L", "beyond", big), "beyond");
  const std::string log = ReadFileBytes(AppFolder::File("Gorvan.err"));
  EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 2) << log;
  EXPECT_NE(log.find("| basIniFiles.WriteIniString | 20 |"), std::string::npos) << log;
}

TEST(SettingsRecordTest, FirstRunAsksTheSkinQuestionOnceAndTakesDefaults) {
  test::FreshUser user;
  test::ScriptedPrompt prompt;
  prompt.replies.push_back({PromptAnswer::kNo, -1, false});
  const ShellIntegration shell("/usr/bin/gorvan");
  SettingsRecord r;
  r.Load(prompt, shell);
  ASSERT_EQ(prompt.Texts(), std::vector<std::string>{kSkinQuestion});
  EXPECT_FALSE(r.skinSupportEnabled);
  EXPECT_EQ(r.skinName, "____2222____");
  EXPECT_EQ(SettingsStore::GetText("Switches", "SkinSupportEnabled"), "False");
  EXPECT_TRUE(r.dragDrop && r.backgroundDetails && r.lNotifyErrorSend && r.lShellIntegration);
  EXPECT_FALSE(r.lNotifyNewVersion || r.lNotifyPackGarbage || r.musicBrainzEnabled);
  EXPECT_EQ(r.htmlColor3, 16711680);
  EXPECT_EQ(r.defaultFont, "Arial");
  EXPECT_EQ(r.freeDbProtocolLevel, 6);
  EXPECT_EQ(r.BackgroundPicture(), 1) << "skins off, background 1";
  // lShellIntegration True: loading installed the folder actions.
  for (const ShellIntegration::Item& item : shell.Status()) {
    if (item.folderAction) {
      EXPECT_EQ(item.state, ShellIntegration::State::kInstalled) << item.name;
    }
  }

  SettingsRecord again;
  again.Load(prompt, shell);
  EXPECT_EQ(prompt.asked.size(), 1u);
  EXPECT_FALSE(again.skinSupportEnabled);
}

TEST(SettingsRecordTest, LoadAppliesTheReadingRulesInOrder) {
  test::FreshUser user;
  ASSERT_TRUE(WriteIniString("Switches", "DragDrop", "False", AppFolder::File("Gorvan.ini")));
  ASSERT_TRUE(WriteIniString("Switches", "Background", "false", AppFolder::File("Gorvan.ini")));
  ASSERT_TRUE(WriteIniString("Switches", "NoSubclass", "no", AppFolder::File("Gorvan.ini")));
  const std::pair<const char*, const char*> stored[] = {{"CurrentBackground", "-3"},
                                                        {"lNotifyBackup", "TRUE"},
                                                        {"lNotifyCompact", "yes"},
                                                        {"lNotifyNewVersion", " true"},
                                                        {"htmlColor1", "4294967295"},
                                                        {"htmlColor2", "red"},
                                                        {"StartupDriveSelect", "2.5"},
                                                        {"lShellIntegration", "False"},
                                                        {"SkinName", "Blue"},
                                                        {"SkinSupportEnabled", "False"},
                                                        {"FreeDbProtocolLevel", "99999999999"}};
  for (const auto& [key, value] : stored) SettingsStore::PutText("Switches", key, value);
  const ShellIntegration shell("/usr/bin/gorvan");
  shell.InstallFolderActions();

  test::ScriptedPrompt prompt;
  SettingsRecord r;
  r.Load(prompt, shell);
  EXPECT_TRUE(prompt.asked.empty());
  EXPECT_TRUE(r.dragDrop) << "lDragDrop (default True) overwrites the INI DragDrop";
  EXPECT_FALSE(r.noSubclass);
  EXPECT_FALSE(r.backgroundList || r.backgroundTree || r.backgroundDetails);
  EXPECT_EQ(r.currentBackground, 1);
  EXPECT_TRUE(r.lNotifyBackup);
  EXPECT_FALSE(r.lNotifyCompact);
  EXPECT_FALSE(r.lNotifyNewVersion);
  EXPECT_EQ(r.htmlColor1, -1);
  EXPECT_EQ(r.htmlColor2, 255);
  EXPECT_EQ(r.startupDriveSelect, 2);
  EXPECT_EQ(r.freeDbProtocolLevel, 6);
  EXPECT_EQ(r.skinName, "Blue");
  EXPECT_EQ(r.BackgroundPicture(), 1);
  for (const ShellIntegration::Item& item : shell.Status()) {
    if (item.folderAction) {
      EXPECT_EQ(item.state, ShellIntegration::State::kMissing) << item.name;
    }
  }
  SettingsStore::PutText("Switches", "lDragDrop", "False");
  r.Load(prompt, shell);
  EXPECT_FALSE(r.dragDrop);
}

TEST(SettingsRecordTest, SaveWritesItsOrderAndNeverCarriesTheSkinSwitch) {
  test::FreshUser user;
  const std::vector<std::string> expected = {"FreeDbEnabled",
                                             "FreeDbUseDatabase",
                                             "FreeDbUseUrl",
                                             "FreedbDatabasePath",
                                             "FreeDbUrl",
                                             "FreeDbArtistAfterIf",
                                             "FreeDbArtistBeforeIf",
                                             "CurrentBackground",
                                             "DefaultFont",
                                             "htmlColor1",
                                             "htmlColor2",
                                             "htmlColor3",
                                             "htmlColor4",
                                             "lDragDrop",
                                             "lNotifyNoInternet",
                                             "lNotifyConnectFreedb",
                                             "lNotifyConnectFreedbAction",
                                             "lNotifyBackup",
                                             "lNotifySaveAs",
                                             "lNotifyCdChange",
                                             "lNotifyCompact",
                                             "lNotifyUpgrade",
                                             "lNotifyErrorSend",
                                             "lNotifyExport",
                                             "lNotifyExport_Search",
                                             "lNotifyNewVersion",
                                             "lNotifyPackGarbage",
                                             "lShellIntegration",
                                             "lEnableSkinSupport ",
                                             "RetainSize",
                                             "UnicodeEnabled",
                                             "StartupDriveSelect",
                                             "lEnableAutoInsert",
                                             "lNotifyEnhancedCd",
                                             "lAssumeEnhancedCd",
                                             "lInteractiveSearch",
                                             "SkinSupportEnabled",
                                             "SkinName",
                                             "SupportServer",
                                             "SupportWebAddress",
                                             "SupportEmail",
                                             "FreeDbProtocolLevel",
                                             "MusicBrainzEnabled"};
  SettingsRecord r;
  r.lEnableSkinSupport = false;
  r.currentBackground = 4;
  r.lShellIntegration = false;
  std::vector<std::string> written;
  const ShellIntegration shell("/usr/bin/gorvan");
  r.Save(shell, [&](const std::string& section, const std::string& key, const std::string& v) {
    EXPECT_EQ(section, "Switches");
    written.push_back(key);
    if (key == "lEnableSkinSupport ") {
      EXPECT_EQ(v, "False");
    }
    if (key == "CurrentBackground") {
      EXPECT_EQ(v, "4");
    }
    return true;
  });
  EXPECT_EQ(written, expected);

  r.Save(shell);
  EXPECT_EQ(SettingsStore::GetText("Switches", "lEnableSkinSupport "), "False");
  test::ScriptedPrompt prompt;
  SettingsRecord loaded;
  loaded.Load(prompt, shell);
  EXPECT_TRUE(loaded.lEnableSkinSupport) << "the saved key has a trailing blank";
  EXPECT_EQ(loaded.currentBackground, 4);
  EXPECT_FALSE(loaded.lShellIntegration);
}

TEST(SettingsRecordTest, KeysReadAndWriteTheirFieldsAsStoredText) {
  SettingsRecord r;
  // Every key reads back what it was given, in its stored form.
  for (const SettingKey& k : SettingsRecord::Keys()) {
    const std::string value = k.type == SettingType::kBool     ? "False"
                              : k.type == SettingType::kText   ? "some " + k.key
                              : k.type == SettingType::kColour ? "4294967295"
                                                               : "-7";
    ASSERT_TRUE(r.SetText(k.key, value)) << k.key;
    EXPECT_EQ(r.Text(k.key), k.type == SettingType::kColour ? "-1" : value) << k.key;
  }
  EXPECT_EQ(r.lNotifyBackup, false);
  EXPECT_EQ(r.freeDbUrl, "some FreeDbUrl");
  EXPECT_EQ(r.startupDriveSelect, -7);
  // The save routine's spelling of the skin switch names the same field.
  EXPECT_EQ(r.Text("lEnableSkinSupport "), "False");
  // A number that does not parse, or a key the record does not know, changes nothing.
  EXPECT_FALSE(r.SetText("CurrentBackground", "7a"));
  EXPECT_EQ(r.currentBackground, -7);
  EXPECT_FALSE(r.SetText("NoSuchKey", "True"));
  EXPECT_EQ(r.Text("NoSuchKey"), "");
}

TEST(SettingsRecordTest, ADamagedStoreKeepsWhatReadsAndAnUnwritableOneLogs) {
  test::FreshUser user;
  const std::string file = StoreFile();
  ASSERT_EQ(::system(("mkdir -p '" + file.substr(0, file.rfind('/')) + "'").c_str()), 0);
  std::string junk =
      "[Switches]\nlNotifyBackup=False\nhtmlColor4=@Variant(\\0\\0\\0\\x7f)\n"
      "DefaultFont=a, b, c\n\x01\xff\xfe[[[=\n";
  for (int i = 0; i < 20000; ++i) junk += "garbage line " + std::to_string(i) + " ===\n";
  ASSERT_TRUE(WriteFileBytes(file, junk + "[Switches]\nStartupDriveSelect=5\n"));
  test::ScriptedPrompt prompt;
  SettingsRecord r;
  r.Load(prompt, ShellIntegration("/usr/bin/gorvan"));
  EXPECT_FALSE(r.lNotifyBackup);
  EXPECT_EQ(r.htmlColor4, 65280);
  EXPECT_TRUE(r.lNotifyCompact);
  EXPECT_EQ(r.startupDriveSelect, 5) << "past 20,000 damaged lines";

  // The store's folder turned into a file: every write fails, is logged, and Save goes on.
  const std::string folder = file.substr(0, file.rfind('/'));
  ASSERT_EQ(::system(("rm -rf '" + folder + "' && touch '" + folder + "'").c_str()), 0);
  EXPECT_FALSE(SettingsStore::PutText("Switches", "X", "1"));
  r.Save(ShellIntegration("/usr/bin/gorvan"));
  EXPECT_NE(ReadFileBytes(AppFolder::File("Gorvan.err")).find("could not be written"),
            std::string::npos);
  ASSERT_EQ(::system(("rm -f '" + folder + "' && mkdir '" + folder + "'").c_str()), 0);
}

TEST(WindowLayoutTest, RestoresWhatIsStoredAndWritesOnlyChanges) {
  test::FreshUser user;
  SettingsStore::PutText("Defaults", "frmSearch_width", "6015.5");
  SettingsStore::PutText("Defaults", "frmSearch_height", "tall");
  const WindowSize restored = WindowLayout::RestoreSize("frmSearch", {400, 300});
  EXPECT_EQ(restored.width, 6015.5f);
  EXPECT_EQ(restored.height, 300.0f);
  WindowLayout::SaveSize("frmSearch", {6015.5f, 320.25f}, restored);
  EXPECT_EQ(SettingsStore::GetText("Defaults", "frmSearch_width"), "6015.5");
  EXPECT_EQ(SettingsStore::GetText("Defaults", "frmSearch_height"), "320.25");
  WindowLayout::SaveSize("frmOptions", {10, 20}, {10, 20});
  EXPECT_EQ(SettingsStore::GetText("Defaults", "frmOptions_width", "unset"), "unset");

  SettingsStore::PutText("Defaults", "lvwFiles_col2_width", "150");
  const std::vector<ColumnLayout> current = {{100, 0}, {80, 1}, {60, 2}};
  const std::vector<ColumnLayout> cols = WindowLayout::RestoreColumns("lvwFiles", current);
  EXPECT_EQ(cols, (std::vector<ColumnLayout>{{100, 0}, {150, 1}, {60, 2}}));
  WindowLayout::SaveColumns("lvwFiles", {{100, 0}, {150, 2}, {60, 1}}, cols);
  EXPECT_EQ(SettingsStore::GetText("Defaults", "lvwFiles_col1_width", "unset"), "unset");
  EXPECT_EQ(SettingsStore::GetText("Defaults", "lvwFiles_col2_order"), "2");
  EXPECT_EQ(SettingsStore::GetText("Defaults", "lvwFiles_col3_order"), "1");
}

}  // namespace
}  // namespace gorvan
