// A scan and a rescan through the progress window, the cancel question with
// each answer, and the window's summary.
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <filesystem>
#include <fstream>

#include "ui/ScanTestSupport.h"
#include "ui/explorer/CatalogView.h"
#include "ui/main/frmMenu.h"
#include "ui/scan/frmAnimation.h"
#include "ui/scan/frmScan.h"
#include "ui/session/CatalogReads.h"
#include "ui/session/CatalogSession.h"

namespace gorvan::test {
namespace {

namespace fs = std::filesystem;

std::string Tree(const TempDir& dir, const std::string& name, int folders, int files) {
  const std::string root = dir.File(name);
  for (int d = 0; d < folders; ++d) {
    const std::string folder = root + "/f" + std::to_string(d);
    fs::create_directories(folder);
    for (int f = 0; f < files; ++f) std::ofstream(folder + "/" + std::to_string(f) + ".dat") << d;
  }
  return root;
}

class ScanProgressTest : public ScanTest {
 protected:
  void SetUp() override {
    catalog = dir.File("progress.cd");
    CatalogBuilder(catalog).Close();
    Start(catalog);
  }
  // Opens the dialog on path and presses OK; the progress window that opens.
  ui::frmAnimation* Scan(const std::string& path) {
    // The window of an earlier scan goes first, so that the new one is found.
    while (auto* old = Find<ui::frmAnimation>("frmAnimation")) {
      old->close();
      QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    window->RunCommand(QStringLiteral("mnuCdAdd"), QString::fromStdString(path));
    ui::frmScan* d = ui::ScanFeature::OpenDialog();
    EXPECT_TRUE(d);
    if (!d) return nullptr;
    d->findChild<QPushButton*>(QStringLiteral("btnOK"))->click();
    return Find<ui::frmAnimation>("frmAnimation");
  }
  std::vector<ui::DiscRow> Discs() {
    classData* data = session().writer();
    return data ? ui::CatalogReads::Catalog(*data, {}).discs : std::vector<ui::DiscRow>{};
  }
  QString Summary(ui::frmAnimation* a) {
    return a->findChild<QLabel*>(QStringLiteral("lblSummary"))->text();
  }

  std::string catalog;
};

TEST_F(ScanProgressTest, ScanShowsItsCountsAndSelectsTheNewDisc) {
  const std::string tree = Tree(dir, "Archive", 3, 4);
  fs::create_directories(tree + "/locked");
  fs::permissions(tree + "/locked", fs::perms::none);
  ui::frmAnimation* a = Scan(tree);
  ASSERT_TRUE(a);
  EXPECT_TRUE(a->isVisible());
  EXPECT_TRUE(a->running());
  EXPECT_TRUE(a->animating());
  Idle();
  fs::permissions(tree + "/locked", fs::perms::owner_all);
  EXPECT_FALSE(a->running());
  EXPECT_FALSE(a->animating());
  EXPECT_TRUE(Summary(a).startsWith(QStringLiteral("Scan complete.")));
  EXPECT_EQ(a->findChild<QLabel*>(QStringLiteral("lblFiles"))->text(), QStringLiteral("12"));
  EXPECT_EQ(a->findChild<QLabel*>(QStringLiteral("lblFolders"))->text(), QStringLiteral("5"));
  // The unreadable folder is a warning whose text the window lists.
  auto* warnings = a->findChild<QPushButton*>(QStringLiteral("btnWarnings"));
  if (::geteuid() != 0) {
    ASSERT_TRUE(warnings->isVisible());
    warnings->click();
    auto* text = Find<QPlainTextEdit>("txtWarnings");
    ASSERT_TRUE(text);
    EXPECT_TRUE(text->toPlainText().contains(QStringLiteral("locked")));
  }
  const std::vector<ui::DiscRow> discs = Discs();
  ASSERT_EQ(discs.size(), 1u);
  EXPECT_EQ(discs[0].files, 12);
  EXPECT_EQ(discs[0].basePath, tree);
  EXPECT_EQ(window->activeView()->currentItem().kind, NodeKind::kDisc);
  EXPECT_EQ(window->activeView()->currentItem().id, discs[0].id);
  // Once ended the window closes without a question.
  a->findChild<QPushButton*>(QStringLiteral("btnClose"))->click();
  EXPECT_FALSE(a->isVisible());
}

TEST_F(ScanProgressTest, TraditionalViewShowsTheNewDiscSelectedToo) {
  Scan(Tree(dir, "First", 1, 1));
  Idle();
  Trigger("mnuViewExplorer");  // the traditional view instead
  Idle();
  ASSERT_FALSE(window->explorerMode());
  Scan(Tree(dir, "Second", 1, 1));
  Idle();
  const std::vector<ui::DiscRow> discs = Discs();
  ASSERT_EQ(discs.size(), 2u);
  EXPECT_FALSE(window->explorerMode());
  const ui::CatalogItem current = window->activeView()->currentItem();
  EXPECT_EQ(current.kind, NodeKind::kDisc);
  EXPECT_EQ(current.id, discs[1].id);
}

TEST_F(ScanProgressTest, RescanKeepsTheNotesAndReplacesTheDisc) {
  const std::string tree = Tree(dir, "Projects", 2, 2);
  Scan(tree);
  Idle();
  std::vector<ui::DiscRow> discs = Discs();
  ASSERT_EQ(discs.size(), 1u);
  const int32_t old = discs[0].id;
  // Notes on the disc, a folder and a file.
  ASSERT_TRUE(session()
                  .Edit(ui::CatalogChange::kEntries,
                        [old](classData& data) {
                          classCd cd = data.CdCursor();
                          EXPECT_TRUE(data.FindCd(old, &cd).ok());
                          cd.SetCdNotes("shelf 2");
                          for (classDir* dir = &cd.GetDirFirst(); !cd.GetDirEof();
                               dir = &cd.GetDirNext()) {
                            if (dir->GetDirName() != "f1") continue;
                            dir->SetDirNotes("second folder");
                            dir->GetFileFirst().SetFileNotes("first file");
                          }
                          return data.Flush() ? Status::OK() : data.status();
                        })
                  .ok());
  Idle();
  // A file more, outside the folder whose notes are looked for (the notes'
  // search goes forward only, in the order the folder lists its files).
  std::ofstream(tree + "/new.dat") << "new";

  ASSERT_EQ(window->activeView()->currentItem().id, old);
  Trigger("mnuCdRescan");
  ui::frmScan* d = ui::ScanFeature::OpenDialog();
  ASSERT_TRUE(d);
  Idle();
  EXPECT_EQ(d->findChild<QLineEdit*>(QStringLiteral("fldDataLabel"))->text(),
            QStringLiteral("Projects"));
  EXPECT_EQ(d->findChild<QPlainTextEdit*>(QStringLiteral("fldDataNotes"))->toPlainText(),
            QStringLiteral("shelf 2"));
  d->findChild<QPushButton*>(QStringLiteral("btnOK"))->click();
  Idle();
  // No scanned-before question on a rescan (an unexpected one fails the test).
  discs = Discs();
  ASSERT_EQ(discs.size(), 1u);
  EXPECT_NE(discs[0].id, old);
  EXPECT_EQ(discs[0].notes, "shelf 2");
  EXPECT_EQ(discs[0].files, 5);
  EXPECT_EQ(window->activeView()->currentItem().id, discs[0].id);
  const DiscContents c = ContentsOf(*session().writer(), discs[0].id);
  bool folderNotes = false, fileNotes = false;
  for (const auto& [path, notes] : c.folders) folderNotes |= notes == "second folder";
  for (const auto& [name, notes] : c.files) fileNotes |= notes == "first file";
  EXPECT_TRUE(folderNotes);
  EXPECT_TRUE(fileNotes);
}

TEST_F(ScanProgressTest, FullDiskEndsTheScanAndKeepsTheCatalog) {
  const std::string before = Tree(dir, "Before", 1, 3);
  Scan(before);
  Idle();
  ASSERT_EQ(Discs().size(), 1u);
  const std::string tree = Tree(dir, "Large", 20, 200);
  // The catalog may grow by 16 KiB at most: its writes fail as on a full disk.
  struct stat st {};
  ASSERT_EQ(::stat(catalog.c_str(), &st), 0);
  struct rlimit old {};
  ::getrlimit(RLIMIT_FSIZE, &old);
  struct rlimit small = old;
  small.rlim_cur = static_cast<rlim_t>(st.st_size) + 16384;
  auto oldSignal = ::signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  ui::frmAnimation* a = Scan(tree);
  ASSERT_TRUE(a);
  EXPECT_TRUE(WaitFor([this] { return !session().busy(); }));
  ::setrlimit(RLIMIT_FSIZE, &old);
  ::signal(SIGXFSZ, oldSignal);
  Idle();
  EXPECT_TRUE(Summary(a).startsWith(QStringLiteral("The scan failed:")))
      << Summary(a).toStdString();
  // The failure was told (the data-file error) and logged; the window is usable.
  EXPECT_FALSE(prompt.asked.empty());
  EXPECT_FALSE(session().busy());
  EXPECT_TRUE(a->findChild<QPushButton*>(QStringLiteral("btnClose"))->isVisible());
  // What the catalog held before is still there, opened afresh.
  a->close();
  ASSERT_TRUE(session().Close());
  classData reader;
  ASSERT_TRUE(reader.OpenFiles(catalog, false, false));
  EXPECT_EQ(ui::CatalogReads::Catalog(reader, {}).discs.size(), 1u);
}

TEST_F(ScanProgressTest, RescanNeedsADisc) {
  Trigger("mnuCdRescan");
  EXPECT_EQ(prompt.LastText(), ui::kChooseDiscToRescan);
  EXPECT_EQ(ui::ScanFeature::OpenDialog(), nullptr);
}

TEST_F(ScanProgressTest, CancelAsksAndNoLetsTheScanGoOn) {
  const std::string tree = Tree(dir, "Big", 40, 50);
  ui::frmAnimation* a = Scan(tree);
  ASSERT_TRUE(a);
  prompt.Answer(PromptAnswer::kNo);
  a->findChild<QPushButton*>(QStringLiteral("btnCancel"))->click();
  EXPECT_EQ(prompt.LastText(), "Are You Sure You Want To Cancel !!");
  // Closing the window asks the same.
  prompt.Answer(PromptAnswer::kNo);
  a->close();
  EXPECT_EQ(prompt.asked.size(), 2u);
  EXPECT_TRUE(a->isVisible());
  if (a->running()) {
    EXPECT_TRUE(a->animating());
  }
  Idle();
  EXPECT_TRUE(Summary(a).startsWith(QStringLiteral("Scan complete.")));
  const std::vector<ui::DiscRow> discs = Discs();
  ASSERT_EQ(discs.size(), 1u);
  EXPECT_EQ(discs[0].files, 2000);
}

TEST_F(ScanProgressTest, CancelYesStopsTheScanAndKeepsWhatTheCatalogHeld) {
  const std::string tree = Tree(dir, "Big", 40, 50);
  ui::frmAnimation* a = Scan(tree);
  ASSERT_TRUE(a);
  prompt.Answer(PromptAnswer::kYes);
  auto* cancel = a->findChild<QPushButton*>(QStringLiteral("btnCancel"));
  cancel->click();
  EXPECT_FALSE(cancel->isEnabled());
  Idle();
  EXPECT_FALSE(a->running());
  EXPECT_TRUE(Summary(a).contains(QStringLiteral("cancelled")));
  EXPECT_GE(a->cancelLatencyMs(), 0);
  // A partial disc keeps the values it was appended with: no totals.
  for (const ui::DiscRow& d : Discs()) EXPECT_EQ(d.files, 0);
  EXPECT_FALSE(session().busy());
  EXPECT_TRUE(Action("mnuCdAdd")->isEnabled());
}

}  // namespace
}  // namespace gorvan::test
