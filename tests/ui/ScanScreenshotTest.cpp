// Pictures of the scan feature's windows under <build>/screenshots, each with
// what the picture must show.
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTabWidget>
#include <QTreeWidget>
#include <filesystem>
#include <fstream>

#include "ui/ScanTestSupport.h"
#include "ui/explorer/CatalogView.h"
#include "ui/main/frmMenu.h"
#include "ui/scan/frmAnimation.h"
#include "ui/scan/frmEjectCd.h"
#include "ui/scan/frmScan.h"
#include "ui/session/CatalogSession.h"

namespace gorvan::test {
namespace {

class ScanScreenshotTest : public ScanTest {
 protected:
  void SetUp() override {
    const std::string catalog = dir.File("shots.cd");
    CatalogBuilder b(catalog);
    const int32_t music = b.Category("Music");
    b.Category("Jazz", music);
    b.Category("Photos");
    b.Close();
    Start(catalog);
    sources->places.push_back({dir.path(), "DATA", kMediaFixed, 123456789012.0, false});
    sources->places.push_back({"/media/ann/STICK", "STICK", kMediaRemovable, 3.5e9, false});
  }
};

TEST_F(ScanScreenshotTest, ScanDialogTabs) {
  std::filesystem::create_directories(dir.File("Holiday 2024"));
  sources->Volume(dir.File("Holiday 2024"), "DATA", dir.path());
  window->RunCommand(QStringLiteral("mnuCdAdd"), QString::fromStdString(dir.File("Holiday 2024")));
  ui::frmScan* d = ui::ScanFeature::OpenDialog();
  ASSERT_TRUE(d);
  Idle();
  Screenshot(d, "frmScan-general");
  EXPECT_EQ(d->findChild<QLineEdit*>(QStringLiteral("fldDataLabel"))->text(),
            QStringLiteral("Holiday 2024"));
  auto* tabs = d->findChild<QTabWidget*>(QStringLiteral("uTabStrip1"));
  tabs->setCurrentIndex(1);
  Screenshot(d, "frmScan-advanced");
  EXPECT_EQ(d->findChild<QLineEdit*>(QStringLiteral("fldFilesInclude"))->text(),
            QStringLiteral("*.*"));
  d->reject();
}

TEST_F(ScanScreenshotTest, ScanDialogAudioCd) {
  DiscToc toc;
  std::string error;
  ASSERT_TRUE(DiscToc::FromContents("150 15000 30000 45000 60000 75000", &toc, &error));
  sources->Drive("/dev/sr0", "Audio CD", toc);
  DiscInfo info;
  info.artist = "Miles Davis";
  info.album = "Kind of Blue";
  info.category = "jazz";
  info.year = "1959";
  info.tracks = {{"So What", 0},
                 {"Freddie Freeloader", 0},
                 {"Blue in Green", 0},
                 {"All Blues", 0},
                 {"Flamenco Sketches", 0}};
  sources->found = info;
  window->RunCommand(QStringLiteral("mnuCdAdd"), QStringLiteral("/dev/sr0"));
  ui::frmScan* d = ui::ScanFeature::OpenDialog();
  ASSERT_TRUE(d);
  ASSERT_TRUE(WaitFor([d] { return !d->inspecting() && !d->lookupRunning(); }));
  Idle();
  Screenshot(d, "frmScan-audio");
  EXPECT_EQ(d->findChild<QTreeWidget*>(QStringLiteral("lstAudioTracks"))->topLevelItemCount(), 5);
  d->reject();
}

TEST_F(ScanScreenshotTest, MainWindowShowsTheNewDiscSelected) {
  const std::string tree = dir.File("Holiday 2024");
  std::filesystem::create_directories(tree + "/day 1");
  std::filesystem::create_directories(tree + "/day 2");
  for (const char* f : {"/day 1/IMG_0001.jpg", "/day 1/IMG_0002.jpg", "/day 2/notes.txt"}) {
    std::ofstream(tree + f) << "picture data";
  }
  window->resize(1000, 650);
  window->RunCommand(QStringLiteral("mnuCdAdd"), QString::fromStdString(tree));
  ui::frmScan* d = ui::ScanFeature::OpenDialog();
  ASSERT_TRUE(d);
  d->findChild<QPushButton*>(QStringLiteral("btnOK"))->click();
  Idle();
  for (QWidget* w : QApplication::topLevelWidgets()) {
    if (w->objectName() == QStringLiteral("frmAnimation")) w->close();
  }
  Idle();
  Screenshot(window.get(), "frmMenu-after-scan");
  const ui::CatalogItem item = window->activeView()->currentItem();
  EXPECT_EQ(item.kind, NodeKind::kDisc);
  EXPECT_EQ(item.name, QStringLiteral("Holiday 2024"));
}

TEST_F(ScanScreenshotTest, ProgressWindowRunningAndDone) {
  ui::frmAnimation a(session(), QStringLiteral("Scanning /home/ann/Pictures"));
  a.show();
  JobProgress p;
  p.caption = "/home/ann/Pictures/2024/Holiday in the mountains/day 3 - the long walk up/raw files";
  p.detail = "DSC_0042.NEF";
  p.folders = 1234;
  p.files = 56789;
  p.bytes = 12.5e9;
  a.Report(p);
  Screenshot(&a, "frmAnimation-running");
  auto* label1 = a.findChild<QLabel*>(QStringLiteral("Label1"));
  EXPECT_TRUE(label1->text().contains(QChar(0x2026)));  // shortened in the middle
  EXPECT_TRUE(label1->text().endsWith(QStringLiteral("raw files")));
  EXPECT_EQ(label1->toolTip(), QString::fromStdString(p.caption));

  ui::ScanSummary s;
  s.discId = 7;
  s.folders = 1301;
  s.files = 60001;
  s.bytes = 13.1e9;
  s.warnings = 2;
  s.warningTexts = {QStringLiteral("/home/ann/Pictures/private: Permission denied"),
                    QStringLiteral("/home/ann/Pictures/old.zip: damaged archive")};
  a.Finish(s);
  Screenshot(&a, "frmAnimation-done");
  EXPECT_TRUE(a.findChild<QPushButton*>(QStringLiteral("btnWarnings"))->isVisible());
  EXPECT_FALSE(a.findChild<QPushButton*>(QStringLiteral("btnCancel"))->isVisible());
}

TEST_F(ScanScreenshotTest, EjectDialog) {
  sources->Drive("/dev/sr0", "Audio CD", DiscToc());
  sources->Drive("/dev/sr1", "BACKUP_2023", DiscToc());
  ui::frmEjectCd with(sources);
  with.show();
  Screenshot(&with, "frmEjectCd");
  EXPECT_EQ(with.drives()->count(), 2);
  sources->drives.clear();
  ui::frmEjectCd without(sources);
  without.show();
  Screenshot(&without, "frmEjectCd-none");
  EXPECT_EQ(without.drives()->item(0)->text(), QStringLiteral("No CDROMs Found!!"));
}

}  // namespace
}  // namespace gorvan::test
