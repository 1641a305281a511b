// The scan dialog's rules through the main window's commands: default names
// and labels, the remembered settings, a missing path, the scanned-before
// question with each answer, and an entry without scanning.
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <filesystem>
#include <fstream>

#include "app/SettingsStore.h"
#include "ui/ScanTestSupport.h"
#include "ui/explorer/CatalogView.h"
#include "ui/explorer/frmBrowse2.h"
#include "ui/main/frmMenu.h"
#include "ui/scan/frmAnimation.h"
#include "ui/scan/frmScan.h"
#include "ui/scan/uFolderBrowser.h"
#include "ui/session/CatalogReads.h"
#include "ui/session/CatalogSession.h"

namespace gorvan::test {
namespace {

namespace fs = std::filesystem;

// A folder with a few files in two subfolders.
std::string SmallTree(const TempDir& dir, const std::string& name) {
  const std::string root = dir.File(name);
  fs::create_directories(root + "/photos/2024");
  fs::create_directories(root + "/docs");
  std::ofstream(root + "/readme.txt") << "hello";
  std::ofstream(root + "/photos/a.jpg") << "jpegdata";
  std::ofstream(root + "/photos/2024/b.jpg") << "more jpeg data";
  std::ofstream(root + "/docs/c.pdf") << "pdf";
  return root;
}

std::vector<ui::DiscRow> Discs(ui::CatalogSession& session) {
  classData* data = session.writer();
  EXPECT_TRUE(data);
  if (!data) return {};
  return ui::CatalogReads::Catalog(*data, {}).discs;
}

class ScanDialogTest : public ScanTest {
 protected:
  void SetUp() override {
    catalog = dir.File("scan.cd");
    CatalogBuilder b(catalog);
    music = b.Category("Music");
    b.Category("Jazz", music);
    b.Close();
    Start(catalog);
  }

  ui::frmScan* OpenScan(const std::string& path) {
    window->RunCommand(QStringLiteral("mnuCdAdd"), QString::fromStdString(path));
    ui::frmScan* d = ui::ScanFeature::OpenDialog();
    EXPECT_TRUE(d);
    Idle();  // the category list
    return d;
  }
  template <typename W>
  W* In(ui::frmScan* d, const char* name) {
    W* w = d->findChild<W*>(QString::fromLatin1(name));
    EXPECT_TRUE(w) << name;
    return w;
  }
  void Ok(ui::frmScan* d) { In<QPushButton>(d, "btnOK")->click(); }

  std::string catalog;
  int32_t music = 0;
};

TEST_F(ScanDialogTest, NameFollowsTheFolderBelowItsVolumeElseTheLabel) {
  const std::string tree = SmallTree(dir, "Holiday");
  sources->Volume(tree, "DATA", dir.path());
  sources->Volume(dir.path(), "STICK", dir.path(), kMediaRemovable);
  ui::frmScan* d = OpenScan(tree);
  ASSERT_TRUE(d);
  EXPECT_TRUE(d->isVisible());
  EXPECT_EQ(In<QLineEdit>(d, "txtLabelInternal")->text(), QStringLiteral("DATA"));
  EXPECT_EQ(In<QLineEdit>(d, "fldDataLabel")->text(), QStringLiteral("Holiday"));
  // The volume's root is named after its label.
  d->folderBrowser()->SetPath(QString::fromStdString(dir.path()));
  EXPECT_EQ(In<QLineEdit>(d, "txtLabelInternal")->text(), QStringLiteral("STICK"));
  EXPECT_EQ(In<QLineEdit>(d, "fldDataLabel")->text(), QStringLiteral("STICK"));
  // A name the user typed stays when the path changes.
  In<QLineEdit>(d, "fldDataLabel")->setText(QStringLiteral("Mine"));
  emit In<QLineEdit>(d, "fldDataLabel")->textEdited(QStringLiteral("Mine"));
  d->folderBrowser()->SetPath(QString::fromStdString(tree));
  EXPECT_EQ(In<QLineEdit>(d, "fldDataLabel")->text(), QStringLiteral("Mine"));

  // The tabs and the category tree, indented under their parents.
  auto* tabs = In<QTabWidget>(d, "uTabStrip1");
  EXPECT_EQ(tabs->tabText(0), QStringLiteral("General Information"));
  EXPECT_EQ(tabs->tabText(1), QStringLiteral("Advanced"));
  EXPECT_FALSE(tabs->isTabVisible(2));
  auto* categories = In<QComboBox>(d, "uComboCategory1");
  ASSERT_EQ(categories->count(), 3);
  EXPECT_EQ(categories->itemText(1), QStringLiteral("Music"));
  EXPECT_EQ(categories->itemText(2).trimmed(), QStringLiteral("Jazz"));
  EXPECT_TRUE(categories->itemText(2).startsWith(QLatin1Char(' ')));
  d->reject();

  // A category chosen in the explorer is the new disc's category.
  ui::CatalogItem jazz;
  jazz.kind = NodeKind::kCategory;
  jazz.id = categories->itemData(2).toInt();
  auto* explorer = qobject_cast<ui::frmBrowse2*>(window->activeView());
  ASSERT_TRUE(explorer);
  ASSERT_TRUE(explorer->Navigate(jazz));
  ASSERT_EQ(window->activeView()->currentItem().id, jazz.id);
  Trigger("mnuCdAdd");
  ASSERT_TRUE(ui::ScanFeature::OpenDialog());
  Idle();
  EXPECT_EQ(In<QComboBox>(ui::ScanFeature::OpenDialog(), "uComboCategory1")->currentData().toInt(),
            jazz.id);
}

TEST_F(ScanDialogTest, StartupDriveSelectChoosesWhereTheDialogStarts) {
  sources->places.push_back({dir.path(), "HOME", kMediaFixed, 1e9, false});
  sources->Drive("/dev/sr0", "", DiscToc());
  sources->Drive("/dev/sr1", "BACKUP", DiscToc());
  struct Case {
    const char* mode;
    QString path;
  };
  const Case cases[] = {
      {"2", QStringLiteral("/dev/sr1")},  // the default: the first drive holding a disc
      {"1", QStringLiteral("/dev/sr0")},  // the first drive
      {"0", QString()},                   // nothing chosen
  };
  for (const Case& c : cases) {
    SettingsStore::PutText("Switches", "StartupDriveSelect", c.mode);
    Trigger("mnuCdAdd");
    ui::frmScan* d = ui::ScanFeature::OpenDialog();
    ASSERT_TRUE(d);
    EXPECT_EQ(d->folderBrowser()->path(), c.path) << c.mode;
    d->reject();
  }
  // Without a drive holding a disc, the first place listed.
  sources->places.erase(sources->places.begin() + 2);
  SettingsStore::PutText("Switches", "StartupDriveSelect", "2");
  Trigger("mnuCdAdd");
  ASSERT_TRUE(ui::ScanFeature::OpenDialog());
  EXPECT_EQ(ui::ScanFeature::OpenDialog()->folderBrowser()->path(),
            QString::fromStdString(dir.path()));
}

TEST_F(ScanDialogTest, CommandLineScanOpensTheDialogOnceTheCatalogIsOpen) {
  const std::string tree = SmallTree(dir, "From the file manager");
  window.reset();
  session_ = std::make_unique<ui::CatalogSession>(prompt);
  window = std::make_unique<ui::frmMenu>(*session_, hooks);
  window->MenuStart(catalog, QString::fromStdString(tree));
  ui::frmScan* d = ui::ScanFeature::OpenDialog();
  ASSERT_TRUE(d);
  EXPECT_EQ(d->folderBrowser()->path(), QString::fromStdString(tree));
  EXPECT_EQ(In<QLineEdit>(d, "fldDataLabel")->text(), QStringLiteral("From the file manager"));
}

TEST_F(ScanDialogTest, MissingPathIsRefusedAndTheDialogStays) {
  ui::frmScan* d = OpenScan(dir.File("gone"));
  ASSERT_TRUE(d);
  Ok(d);
  EXPECT_EQ(prompt.LastText(), "Folder or Directory Does Not Exist!!\nPlease Try Again");
  EXPECT_TRUE(d->isVisible());
  EXPECT_EQ(ui::ScanFeature::OpenDialog(), d);
  EXPECT_FALSE(session().busy());
  EXPECT_TRUE(Discs(session()).empty());

  // A path typed and confirmed at once is read before the scan starts.
  const std::string typed = SmallTree(dir, "Typed");
  d->folderBrowser()->combo()->setEditText(QString::fromStdString(typed));
  Ok(d);
  Idle();
  ASSERT_EQ(Discs(session()).size(), 1u);
  EXPECT_EQ(Discs(session())[0].name, "Typed");
  d = OpenScan(dir.File("gone"));

  // A folder that vanishes while the dialog is open: the same message.
  const std::string tree = SmallTree(dir, "Vanishing");
  d->folderBrowser()->SetPath(QString::fromStdString(tree));
  fs::remove_all(tree);
  Ok(d);
  EXPECT_EQ(prompt.asked.size(), 2u);
  EXPECT_EQ(prompt.LastText(), "Folder or Directory Does Not Exist!!\nPlease Try Again");
  EXPECT_EQ(Discs(session()).size(), 1u);
}

TEST_F(ScanDialogTest, OptionsAreRememberedAndTheScanTakesThem) {
  const std::string tree = SmallTree(dir, "Work");
  ui::frmScan* d = OpenScan(tree);
  ASSERT_TRUE(d);
  // First run: the defaults.
  EXPECT_EQ(In<QLineEdit>(d, "fldFilesInclude")->text(), QStringLiteral("*.*"));
  EXPECT_EQ(In<QLineEdit>(d, "fldFilesExclude")->text(), QString());
  EXPECT_FALSE(In<QCheckBox>(d, "chkScanZip")->isChecked());
  In<QLineEdit>(d, "fldFilesInclude")->setText(QStringLiteral("*.jpg ;*.txt"));
  In<QLineEdit>(d, "fldFilesExclude")->setText(QStringLiteral("*.pdf"));
  In<QCheckBox>(d, "chkScanMp3")->setChecked(true);
  In<QCheckBox>(d, "chkScanDirectoriesOnly")->setChecked(false);
  In<QComboBox>(d, "uComboCategory1")->setCurrentIndex(1);
  In<QPlainTextEdit>(d, "fldDataNotes")->setPlainText(QStringLiteral("Office files"));
  Ok(d);
  Idle();
  EXPECT_EQ(SettingsStore::GetText("Defaults", "scan_chkScanMp3"), "True");
  EXPECT_EQ(SettingsStore::GetText("Defaults", "scan_chkScanZip"), "False");
  EXPECT_EQ(SettingsStore::GetText("Defaults", "scan_chkScanDirectoriesOnly"), "False");
  // The field is stored cleaned of the blank before ";"; this scan took it as typed.
  EXPECT_EQ(SettingsStore::GetText("Defaults", "scan_fldFilesInclude"), "*.jpg;*.txt");
  EXPECT_EQ(SettingsStore::GetText("Defaults", "scan_fldFilesExclude"), "*.pdf");

  const std::vector<ui::DiscRow> discs = Discs(session());
  ASSERT_EQ(discs.size(), 1u);
  EXPECT_EQ(discs[0].name, "Work");
  EXPECT_EQ(discs[0].notes, "Office files");
  EXPECT_EQ(discs[0].category, music);
  EXPECT_EQ(discs[0].files, 4);  // every file counts, written or not
  EXPECT_EQ(discs[0].folders, 3);
  // "*.jpg " never matched: only the text file was written.
  classData* data = session().writer();
  ASSERT_TRUE(data);
  const DiscContents contents = ContentsOf(*data, discs[0].id);
  ASSERT_EQ(contents.files.size(), 1u);
  EXPECT_EQ(contents.files[0].first, "readme.txt");

  // The next dialog starts from what was chosen, at the size it was left.
  Trigger("mnuCdAdd");
  ui::frmScan* again = ui::ScanFeature::OpenDialog();
  ASSERT_TRUE(again);
  const QSize size = again->size() + QSize(40, 30);
  again->resize(size);
  again->reject();
  EXPECT_EQ(SettingsStore::GetText("Defaults", "scan_width"), std::to_string(size.width()));
  EXPECT_EQ(SettingsStore::GetText("Defaults", "scan_height"), std::to_string(size.height()));
  Trigger("mnuCdAdd");
  again = ui::ScanFeature::OpenDialog();
  ASSERT_TRUE(again);
  EXPECT_EQ(again->size(), size);
  EXPECT_TRUE(In<QCheckBox>(again, "chkScanMp3")->isChecked());
  EXPECT_EQ(In<QLineEdit>(again, "fldFilesInclude")->text(), QStringLiteral("*.jpg;*.txt"));
  EXPECT_EQ(In<QLineEdit>(again, "fldFilesExclude")->text(), QStringLiteral("*.pdf"));
}

TEST_F(ScanDialogTest, ScannedBeforeProceedsShowsTheDiscOrStays) {
  const std::string tree = SmallTree(dir, "Photos");
  sources->Volume(tree, "DATA", dir.path());
  ui::frmScan* d = OpenScan(tree);
  Ok(d);
  Idle();
  std::vector<ui::DiscRow> discs = Discs(session());
  ASSERT_EQ(discs.size(), 1u);
  const int32_t first = discs[0].id;
  EXPECT_EQ(window->activeView()->currentItem().id, first);

  // Cancel: nothing scanned, the dialog stays for another choice.
  d = OpenScan(tree);
  prompt.answers.push_back({PromptAnswer::kCustom, 2, false});
  Ok(d);
  ASSERT_FALSE(prompt.asked.empty());
  EXPECT_EQ(prompt.asked.back().text, "CD or Folder Scanned Before!!\nProceed ??");
  EXPECT_EQ(prompt.asked.back().customButtons.size(), 3u);
  EXPECT_TRUE(d->isVisible());
  Idle();
  EXPECT_EQ(Discs(session()).size(), 1u);

  // Show: the dialog closes and the explorer shows the disc already there.
  prompt.answers.push_back({PromptAnswer::kCustom, 1, false});
  Ok(d);
  Idle();
  EXPECT_EQ(ui::ScanFeature::OpenDialog(), nullptr);
  EXPECT_EQ(Discs(session()).size(), 1u);
  EXPECT_EQ(window->activeView()->currentItem().kind, NodeKind::kDisc);
  EXPECT_EQ(window->activeView()->currentItem().id, first);

  // Proceed: a second disc of the same place.
  d = OpenScan(tree);
  prompt.answers.push_back({PromptAnswer::kCustom, 0, false});
  Ok(d);
  Idle();
  discs = Discs(session());
  ASSERT_EQ(discs.size(), 2u);
  EXPECT_NE(discs[1].id, first);
  EXPECT_EQ(window->activeView()->currentItem().id, discs[1].id);
}

TEST_F(ScanDialogTest, EntryWithoutScanningIsMadeFromTheDialogAlone) {
  sources->places.push_back({"/dev/sr7", "MOVIES", kMediaOptical, -1, true});
  Trigger("mnuCdAddNoScan");
  ui::frmScan* d = ui::ScanFeature::OpenDialog();
  ASSERT_TRUE(d);
  Idle();
  EXPECT_TRUE(d->noScan());
  EXPECT_FALSE(In<QLineEdit>(d, "txtLabelInternal")->isReadOnly());
  d->folderBrowser()->SetPath(QStringLiteral("/dev/sr7"));
  In<QLineEdit>(d, "fldDataLabel")->setText(QStringLiteral("Films 2023"));
  In<QLineEdit>(d, "txtLabelInternal")->setText(QStringLiteral("MOVIES"));
  In<QComboBox>(d, "uComboCategory1")->setCurrentIndex(2);
  Ok(d);
  Idle();
  std::vector<ui::DiscRow> discs = Discs(session());
  ASSERT_EQ(discs.size(), 1u);
  EXPECT_EQ(discs[0].name, "Films 2023");
  EXPECT_EQ(discs[0].label, "MOVIES");
  EXPECT_EQ(discs[0].basePath, "/dev/sr7");
  EXPECT_EQ(discs[0].mediaType, kMediaOptical);
  EXPECT_NE(discs[0].category, 0);
  EXPECT_EQ(discs[0].files, 0);
  EXPECT_EQ(window->activeView()->currentItem().id, discs[0].id);

  // The same dialog edits the entry later: "Edit..." of the traditional view.
  Trigger("mnuViewExplorer");
  Idle();
  ASSERT_EQ(window->activeView()->currentItem().id, discs[0].id);
  Trigger("popCdEdit");
  d = ui::ScanFeature::OpenDialog();
  ASSERT_TRUE(d);
  EXPECT_TRUE(d->noScan());
  Idle();
  EXPECT_EQ(In<QLineEdit>(d, "fldDataLabel")->text(), QStringLiteral("Films 2023"));
  In<QPlainTextEdit>(d, "fldDataNotes")->setPlainText(QStringLiteral("Box 4"));
  In<QComboBox>(d, "uComboCategory1")->setCurrentIndex(0);
  Ok(d);
  Idle();
  discs = Discs(session());
  ASSERT_EQ(discs.size(), 1u);
  EXPECT_EQ(discs[0].notes, "Box 4");
  EXPECT_EQ(discs[0].category, 0);
}

}  // namespace
}  // namespace gorvan::test
