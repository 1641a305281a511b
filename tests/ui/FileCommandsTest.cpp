// The File menu's catalog commands through their actions: new, close,
// password, compact (with its progress window and its cancel), backup, save
// as and merge, with the product's prompts, switches and messages.
#include <sys/stat.h>

#include <QCheckBox>
#include <QFontComboBox>
#include <QPushButton>

#include "app/CatalogHistory.h"
#include "app/SettingsStore.h"
#include "catalog/basBackup.h"
#include "ui/UiTestSupport.h"
#include "ui/dialogs/frmDataOptions.h"
#include "ui/main/frmMenu.h"
#include "ui/session/CatalogSession.h"
#include "ui/widgets/JobProgressDialog.h"

namespace gorvan::test {
namespace {

off_t FileSize(const std::string& path) {
  struct stat st {};
  return ::stat(path.c_str(), &st) == 0 ? st.st_size : -1;
}

// A catalog whose disc was renamed a few times: garbage to compact.
std::string CatalogWithGarbage(const TempDir& dir, int files = 20) {
  const std::string path = dir.File("garbage.cd");
  CatalogBuilder b(path);
  FolderSpec folder{"docs", {}};
  for (int i = 0; i < files; ++i)
    folder.files.push_back({"file" + std::to_string(i) + ".txt", 10.0 * i});
  const int32_t id = b.Disc({.name = "Disc", .folders = {folder}});
  classCd cd = b.data().CdCursor();
  EXPECT_TRUE(b.data().FindCd(id, &cd).ok());
  for (int i = 0; i < 5; ++i) cd.SetCdNotes(std::string(1000, static_cast<char>('a' + i)));
  return path;
}

TEST_F(UiTest, NewCreatesAndOpensACatalogAndCloseEmptiesTheWindow) {
  Start("");
  EXPECT_FALSE(Action("mnuFileClose")->isEnabled());
  EXPECT_FALSE(Action("mnuFileCompact")->isEnabled());
  prompt.files = {dir.File("fresh.cd")};
  Trigger("mnuFileNew");
  ASSERT_EQ(prompt.fileRequests.size(), 1u);
  EXPECT_EQ(prompt.fileRequests[0].title, "Create a new Gorvan database");
  EXPECT_EQ(prompt.fileRequests[0].filter, "Gorvan Databases (*.cd)|*.cd");
  EXPECT_EQ(prompt.fileRequests[0].defaultExtension, "cd");
  ASSERT_TRUE(session().isOpen());
  EXPECT_EQ(window->windowTitle(), QStringLiteral("Gorvan - Gorvan"));
  EXPECT_EQ(CatalogHistory::Newest(), dir.File("fresh.cd"));
  EXPECT_TRUE(Action("mnuFileCompact")->isEnabled());

  Trigger("mnuFileClose");
  EXPECT_FALSE(session().isOpen());
  EXPECT_EQ(window->windowTitle(), QStringLiteral("Gorvan"));
  EXPECT_FALSE(Action("mnuFilePassword")->isEnabled());
  // The file dialog cancelled: nothing happens.
  prompt.files = {""};
  Trigger("mnuFileNew");
  EXPECT_FALSE(session().isOpen());

  // New catalogs hold UTF-8, or Windows-1252 with "UnicodeEnabled" off.
  prompt.files = {dir.File("ansi.cd")};
  SettingsStore::PutBool("Switches", "UnicodeEnabled", false);
  Trigger("mnuFileNew");
  ASSERT_TRUE(session().isOpen());
  EXPECT_EQ(session().writer()->GetEncoding(), TextEncoding::kWindows1252);
  Trigger("mnuFileClose");
  prompt.files = {dir.File("utf8.cd")};
  SettingsStore::PutBool("Switches", "UnicodeEnabled", true);
  Trigger("mnuFileNew");
  ASSERT_TRUE(session().isOpen());
  EXPECT_EQ(session().writer()->GetEncoding(), TextEncoding::kUtf8);
}

TEST_F(UiTest, PasswordIsSetChangedAndClearedUnderTheDialogsRules) {
  CatalogBuilder(dir.File("p.cd"));
  Start(dir.File("p.cd"));
  prompt.passwords = {{"", "new pw", "new pw"}};
  Trigger("mnuFilePassword");
  EXPECT_EQ(session().writer()->GetDataPassword(), "new pw");

  // Each refusal is shown in the dialog, which stays open for the next try.
  prompt.passwords = {{"wrong", "x", "x"},
                      {"new pw", "a", "b"},
                      {"new pw", "\xC3\xA9", "\xC3\xA9"},
                      {" new pw ", " second ", "second"}};
  Trigger("mnuFilePassword");
  EXPECT_EQ(prompt.judged, (std::vector<std::string>{"Invalid or Wrong Password !!",
                                                     "The new passwords are not identical !!",
                                                     "Invalid Characters !!"}));
  EXPECT_EQ(session().writer()->GetDataPassword(), "second");

  prompt.passwords = {{"second", "", ""}};
  Trigger("mnuFilePassword");
  EXPECT_EQ(session().writer()->GetDataPassword(), "");
  // Cancel changes nothing.
  Trigger("mnuFilePassword");
  EXPECT_EQ(session().writer()->GetDataPassword(), "");
}

TEST_F(UiTest, CompactAsksUnlessSwitchedOffAndRedrawsTheCatalog) {
  const std::string path = CatalogWithGarbage(dir);
  Start(path);
  const off_t before = FileSize(path);

  prompt.Answer(PromptAnswer::kNo);
  Trigger("mnuFileCompact");
  Idle();
  EXPECT_EQ(prompt.LastText(), "Compact Data Files ??");
  EXPECT_EQ(prompt.asked.back().notifyKey, "lNotifyCompact");
  EXPECT_EQ(FileSize(path), before);

  prompt.Answer(PromptAnswer::kYes, /*dontShowAgain=*/true);
  Trigger("mnuFileCompact");
  Idle();
  EXPECT_EQ(prompt.LastText(), "Data Compaction Successful");
  EXPECT_EQ(FileSize(path), before - 4000) << "the replaced notes are gone";
  EXPECT_GE(FileSize(BackupFileName(path)), before);
  EXPECT_EQ(SettingsStore::GetText("Switches", "lNotifyCompact"), "False");

  // Switched off: no question the next time.
  const size_t asked = prompt.asked.size();
  Trigger("mnuFileCompact");
  Idle();
  EXPECT_EQ(prompt.asked.size(), asked + 1);
  EXPECT_EQ(prompt.LastText(), "Data Compaction Successful");
  EXPECT_TRUE(session().isOpen());
  EXPECT_EQ(session().header().cdCount, 1);
}

TEST_F(UiTest, CompactionIsCancelledFromItsProgressWindow) {
  // Large enough that the copy is still running when Cancel is pressed.
  const std::string path = CatalogWithGarbage(dir, 200000);
  Start(path);
  const std::string bytes = ReadFileBytes(path);
  prompt.Answer(PromptAnswer::kYes);
  Trigger("mnuFileCompact");
  auto* progress = Find<ui::JobProgressDialog>("frmProgress");
  ASSERT_TRUE(progress);
  EXPECT_EQ(progress->windowTitle(), QStringLiteral("Compacting Data File"));
  EXPECT_EQ(progress->cancelButton()->text(), QStringLiteral("Cancel Data Compaction"));
  // While the job holds the catalog, the commands that write wait.
  EXPECT_TRUE(session().busy());
  EXPECT_FALSE(Action("mnuFileCompact")->isEnabled());
  EXPECT_FALSE(Action("mnuFileOpen")->isEnabled());
  EXPECT_EQ(session().writer(), nullptr);
  QTest::mouseClick(progress->cancelButton(), Qt::LeftButton);
  Idle();
  EXPECT_EQ(prompt.LastText(), "Data Compaction Cancelled");
  EXPECT_EQ(ReadFileBytes(path), bytes) << "the catalog is as it was";
  EXPECT_EQ(FileSize(TempFileName(path)), -1) << "no temporary file is left";
  EXPECT_TRUE(Action("mnuFileCompact")->isEnabled());
  EXPECT_TRUE(WaitFor([] { return !QApplication::activeModalWidget(); }));
}

TEST_F(UiTest, BackupRefusesTheOpenCatalogAndItsSuccessPromptCanBeSwitchedOff) {
  const std::string path = CatalogWithGarbage(dir);
  Start(path);
  prompt.files = {path};
  Trigger("mnuFileBackup");
  Idle();
  EXPECT_EQ(prompt.LastText(), "Cannot backup to the current data file!!");
  EXPECT_EQ(prompt.fileRequests.back().filter, "Gorvan Data Files (*.cd)|*.cd");

  prompt.files = {dir.File("copy.cd")};
  prompt.Answer(PromptAnswer::kOk, /*dontShowAgain=*/true);
  Trigger("mnuFileBackup");
  Idle();
  EXPECT_EQ(prompt.LastText(), "Data Backup Successful");
  EXPECT_EQ(prompt.asked.back().notifyKey, "lNotifyBackup");
  EXPECT_EQ(SettingsStore::GetText("Switches", "lNotifyBackup"), "False");
  EXPECT_GT(FileSize(dir.File("copy.cd")), 118);
  EXPECT_EQ(session().path(), path) << "a backup leaves the open catalog open";

  const size_t asked = prompt.asked.size();
  prompt.files = {dir.File("copy2.cd")};
  Trigger("mnuFileBackup");
  Idle();
  EXPECT_EQ(prompt.asked.size(), asked) << "switched off";
  EXPECT_GT(FileSize(dir.File("copy2.cd")), 118);
}

TEST_F(UiTest, SaveAsGoesOnWithTheNewFile) {
  const std::string path = CatalogWithGarbage(dir);
  Start(path);
  prompt.files = {dir.File("renamed.cd")};
  Trigger("mnuFileSaveAs");
  Idle();
  EXPECT_EQ(prompt.LastText(), "Data SaveAs Successful");
  EXPECT_EQ(prompt.asked.back().notifyKey, "lNotifySaveAs");
  EXPECT_EQ(session().path(), dir.File("renamed.cd"));
  EXPECT_EQ(CatalogHistory::Newest(), dir.File("renamed.cd"));
  EXPECT_EQ(session().header().cdCount, 1);
  EXPECT_LT(FileSize(dir.File("renamed.cd")), FileSize(path));
}

TEST_F(UiTest, MergeAsksTheOtherCatalogsPasswordUnderTheSameRules) {
  {
    CatalogBuilder other(dir.File("other.cd"));
    const int32_t cat = other.Category("Music");
    other.Disc({.name = "Album", .category = cat});
    other.Disc({.name = "Photos"});
    other.data().SetDataPassword("pw");
  }
  CatalogBuilder(dir.File("main.cd")).Disc({.name = "Mine"});
  Start(dir.File("main.cd"));

  prompt.files = {dir.File("other.cd")};
  Trigger("mnuFileMerge");  // the password dialog is cancelled
  Idle();
  EXPECT_EQ(prompt.fileRequests.back().title,
            "Select a Gorvan database to merge into the currently open Gorvan catalog");
  EXPECT_EQ(prompt.LastText(), "Logon Denied!!");
  EXPECT_EQ(session().header().cdCount, 1);

  prompt.files = {dir.File("other.cd")};
  prompt.passwords = {{"nope", "", ""}, {"pw", "", ""}};
  Trigger("mnuFileMerge");
  Idle();
  EXPECT_EQ(prompt.judged, std::vector<std::string>{"Invalid or Wrong Password !!"});
  EXPECT_EQ(prompt.LastText(), "Data Merge Successful");
  EXPECT_EQ(session().header().cdCount, 3);
  EXPECT_EQ(session().header().catCount, 1);

  prompt.files = {dir.File("main.cd")};
  Trigger("mnuFileMerge");
  EXPECT_EQ(prompt.LastText(), "Cannot merge the current data file into itself!!");
}

TEST_F(UiTest, DataOptionsStoreTheDisplayFontInTheCatalog) {
  CatalogBuilder(dir.File("f.cd"));
  Start(dir.File("f.cd"));
  Trigger("mnuViewDataOptions");
  auto* dialog = Find<ui::frmDataOptions>("frmDataOptions");
  ASSERT_TRUE(dialog);
  auto* useDefault = dialog->findChild<QCheckBox*>(QStringLiteral("chkDefaultFont"));
  EXPECT_TRUE(useDefault->isChecked()) << "a new catalog has no font of its own";
  useDefault->setChecked(false);
  auto* font = dialog->findChild<QFontComboBox*>(QStringLiteral("cboFont"));
  font->setCurrentFont(QFont(QStringLiteral("DejaVu Sans")));
  Screenshot(dialog, "frmDataOptions");
  dialog->findChild<QPushButton*>(QStringLiteral("btnOK"))->click();
  EXPECT_EQ(session().writer()->GetDataFont(), font->currentFont().family().toStdString());
  EXPECT_FALSE(session().writer()->GetDataFont().empty());
}

}  // namespace
}  // namespace gorvan::test
