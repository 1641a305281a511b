// Optical drives from the desktop program: an audio CD looked up and scanned
// as its tracks, the enhanced-CD questions with their settings, a lookup that
// never answers, an inserted disc with each setting, and the eject dialog.
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTabWidget>
#include <QTreeWidget>
#include <filesystem>

#include "app/SettingsRecord.h"
#include "app/SettingsStore.h"
#include "app/ShellIntegration.h"
#include "ui/ScanTestSupport.h"
#include "ui/explorer/CatalogView.h"
#include "ui/main/frmMenu.h"
#include "ui/options/frmOptions.h"
#include "ui/scan/MediaChangeListener.h"
#include "ui/scan/frmEjectCd.h"
#include "ui/scan/frmFreeDbServers.h"
#include "ui/scan/frmScan.h"
#include "ui/scan/uFolderBrowser.h"
#include "ui/session/CatalogReads.h"
#include "ui/session/CatalogSession.h"

namespace gorvan::test {
namespace {

DiscToc Toc(const std::string& contents) {
  DiscToc toc;
  std::string error;
  EXPECT_TRUE(DiscToc::FromContents(contents, &toc, &error)) << error;
  return toc;
}

// Three audio tracks, then a data track in a second session.
DiscToc EnhancedToc() {
  DiscToc toc = Toc("150 15000 30000 60000 90000");
  toc.tracks.back().control = 0x04;
  return toc;
}

DiscInfo BlueTrain() {
  DiscInfo info;
  info.discId = "1a02b503";
  info.artist = "John Coltrane";
  info.album = "Blue Train";
  info.category = "jazz";
  info.year = "1957";
  info.tracks = {{"Blue Train", 0}, {"Moment's Notice", 0}, {"Locomotion", 0}};
  return info;
}

class ScanMediaTest : public ScanTest {
 protected:
  void SetUp() override {
    catalog = dir.File("media.cd");
    CatalogBuilder(catalog).Close();
    Start(catalog);
  }
  ui::frmScan* OpenOn(const std::string& path) {
    window->RunCommand(QStringLiteral("mnuCdAdd"), QString::fromStdString(path));
    ui::frmScan* d = ui::ScanFeature::OpenDialog();
    EXPECT_TRUE(d);
    return d;
  }
  // Waits for the table of contents and, when one starts, the lookup.
  void Settle(ui::frmScan* d) {
    EXPECT_TRUE(WaitFor([d] { return !d->inspecting() && !d->lookupRunning(); }));
    Idle();
  }
  template <typename W>
  W* In(QWidget* d, const char* name) {
    W* w = d->findChild<W*>(QString::fromLatin1(name));
    EXPECT_TRUE(w) << name;
    return w;
  }
  ui::MediaChangeListener* Listener() {
    return window->findChild<ui::MediaChangeListener*>(QStringLiteral("oCdChanger"));
  }

  std::string catalog;
};

TEST_F(ScanMediaTest, AudioCdIsLookedUpAndScannedAsItsTracks) {
  sources->Drive("/dev/sr0", "Audio CD", Toc("150 15000 30000 60000"));
  sources->found = BlueTrain();
  ui::frmScan* d = OpenOn("/dev/sr0");
  ASSERT_TRUE(d);
  Settle(d);
  auto* tabs = In<QTabWidget>(d, "uTabStrip1");
  EXPECT_TRUE(tabs->isTabVisible(2));
  EXPECT_EQ(tabs->tabText(2), QStringLiteral("Audio CD Information"));
  EXPECT_EQ(tabs->currentWidget()->objectName(), QStringLiteral("tab3"));
  EXPECT_EQ(In<QLineEdit>(d, "fldAudioAlbum")->text(), QStringLiteral("Blue Train"));
  EXPECT_EQ(In<QLineEdit>(d, "fldAudioArtist")->text(), QStringLiteral("John Coltrane"));
  EXPECT_EQ(In<QLineEdit>(d, "fldAudioCategory")->text(), QStringLiteral("jazz"));
  EXPECT_EQ(In<QLineEdit>(d, "fldAudioYear")->text(), QStringLiteral("1957"));
  EXPECT_FALSE(In<QLineEdit>(d, "fldAudioTime")->text().isEmpty());
  auto* tracks = In<QTreeWidget>(d, "lstAudioTracks");
  ASSERT_EQ(tracks->topLevelItemCount(), 3);
  EXPECT_EQ(tracks->topLevelItem(1)->text(1), QStringLiteral("Moment's Notice"));
  EXPECT_EQ(tracks->topLevelItem(0)->text(2), QStringLiteral("3:18"));
  EXPECT_TRUE(In<QPushButton>(d, "btnOK")->isEnabled());
  // A title corrected by hand is what the scan records.
  tracks->topLevelItem(2)->setText(1, QStringLiteral("Locomotion (take 2)"));

  In<QPushButton>(d, "btnOK")->click();
  Idle();
  classData* data = session().writer();
  ASSERT_TRUE(data);
  const std::vector<ui::DiscRow> discs = ui::CatalogReads::Catalog(*data, {}).discs;
  ASSERT_EQ(discs.size(), 1u);
  EXPECT_EQ(discs[0].name, "Blue Train");
  EXPECT_EQ(discs[0].artist, "John Coltrane");
  EXPECT_EQ(discs[0].mediaType, kMediaAudioCd);
  EXPECT_EQ(discs[0].files, 3);
  const DiscContents c = ContentsOf(*data, discs[0].id);
  ASSERT_EQ(c.files.size(), 3u);
  EXPECT_EQ(c.files[2].first, "Locomotion (take 2)");
  EXPECT_EQ(window->activeView()->currentItem().id, discs[0].id);
}

TEST_F(ScanMediaTest, SeveralFreeDbMatchesLetTheUserReadAnother) {
  sources->Drive("/dev/sr0", "Audio CD", Toc("150 15000 30000 60000"));
  sources->found = BlueTrain();
  DiscInfo other;
  other.category = "misc";
  other.discId = "1a02b503";
  other.artist = "Tribute Band";
  other.album = "Blue Train Again";
  other.tracks = {{"One", 0}, {"Two", 0}, {"Three", 0}};
  sources->others = {other};
  ui::frmScan* d = OpenOn("/dev/sr0");
  Settle(d);
  // The first match is read and stays the default.
  auto* matches = In<QComboBox>(d, "cboFreeDbMatch");
  ASSERT_TRUE(matches->isVisible());
  ASSERT_EQ(matches->count(), 2);
  EXPECT_EQ(matches->currentIndex(), 0);
  EXPECT_EQ(matches->itemText(1), QStringLiteral("misc: Tribute Band / Blue Train Again"));
  EXPECT_EQ(In<QLineEdit>(d, "fldAudioAlbum")->text(), QStringLiteral("Blue Train"));
  matches->setCurrentIndex(1);
  Q_EMIT matches->activated(1);
  Settle(d);
  EXPECT_EQ(In<QLineEdit>(d, "fldAudioAlbum")->text(), QStringLiteral("Blue Train Again"));
  EXPECT_EQ(In<QTreeWidget>(d, "lstAudioTracks")->topLevelItem(0)->text(1), QStringLiteral("One"));
  EXPECT_EQ(matches->count(), 2);
  EXPECT_EQ(sources->matchesAsked, (std::vector<size_t>{0, 1}));
  EXPECT_EQ(In<QLineEdit>(d, "fldDataLabel")->text(), QStringLiteral("Blue Train Again"));
}

TEST_F(ScanMediaTest, ConnectingToTheServerIsAskedAndAFailedConnectionTold) {
  sources->Drive("/dev/sr0", "Audio CD", Toc("150 15000 30000"));
  sources->found = BlueTrain();
  sources->online = true;
  // No: the server is not asked, the tracks keep their numbers.
  prompt.Answer(PromptAnswer::kNo);
  ui::frmScan* d = OpenOn("/dev/sr0");
  Settle(d);
  ASSERT_EQ(prompt.asked.size(), 1u);
  EXPECT_EQ(prompt.asked[0].notifyKey, "lNotifyConnectFreedb");
  EXPECT_NE(prompt.asked[0].text.find("freedb.example"), std::string::npos);
  EXPECT_EQ(sources->onlineAsked, std::vector<bool>{false});
  EXPECT_EQ(In<QTreeWidget>(d, "lstAudioTracks")->topLevelItem(0)->text(1),
            QStringLiteral("Track 01"));
  d->reject();

  // Yes with the box ticked: asked, and the answer kept for the next discs.
  prompt.Answer(PromptAnswer::kYes, true);
  d = OpenOn("/dev/sr0");
  Settle(d);
  EXPECT_EQ(prompt.asked.size(), 2u);
  EXPECT_EQ(In<QLineEdit>(d, "fldAudioAlbum")->text(), QStringLiteral("Blue Train"));
  EXPECT_EQ(SettingsStore::GetText("Switches", "lNotifyConnectFreedb"), "False");
  EXPECT_EQ(SettingsStore::GetText("Switches", "lNotifyConnectFreedbAction"), "True");
  d->reject();

  // A server out of reach: the product's message, once per switch.
  sources->offline = true;
  d = OpenOn("/dev/sr0");
  Settle(d);
  ASSERT_EQ(prompt.asked.size(), 3u);
  EXPECT_EQ(prompt.asked[2].text, ui::kNoInternet);
  EXPECT_EQ(prompt.asked[2].notifyKey, "lNotifyNoInternet");
  EXPECT_EQ(d->lookupStatus(), QStringLiteral("Could not resolve host: freedb.example"));
  EXPECT_EQ(sources->onlineAsked, (std::vector<bool>{false, true, true}));
  d->reject();
}

TEST_F(ScanMediaTest, UnknownAudioCdKeepsNumberedTracks) {
  sources->Drive("/dev/sr0", "Audio CD", Toc("150 15000 30000"));
  ui::frmScan* d = OpenOn("/dev/sr0");
  Settle(d);
  auto* tracks = In<QTreeWidget>(d, "lstAudioTracks");
  ASSERT_EQ(tracks->topLevelItemCount(), 2);
  EXPECT_EQ(tracks->topLevelItem(0)->text(1), QStringLiteral("Track 01"));
  EXPECT_FALSE(d->lookupStatus().isEmpty());
}

TEST_F(ScanMediaTest, DriveWithoutADiscIsRefusedWithAMessage) {
  sources->Drive("/dev/sr0", "", DiscToc());
  ui::frmScan* d = OpenOn("/dev/sr0");
  Settle(d);
  EXPECT_FALSE(In<QTabWidget>(d, "uTabStrip1")->isTabVisible(2));
  In<QPushButton>(d, "btnOK")->click();
  EXPECT_EQ(prompt.LastText().rfind("There is no disc to read in /dev/sr0.", 0), 0u);
  EXPECT_TRUE(d->isVisible());
  EXPECT_FALSE(session().busy());
}

TEST_F(ScanMediaTest, LookupThatNeverAnswersCanBeStopped) {
  sources->Drive("/dev/sr0", "Audio CD", Toc("150 15000 30000"));
  sources->hang = true;
  ui::frmScan* d = OpenOn("/dev/sr0");
  ASSERT_TRUE(WaitFor([d] { return d->lookupRunning(); }));
  // The status lines arrive while the lookup waits, and the dialog is usable.
  ASSERT_TRUE(WaitFor([d] { return d->lookupStatus().startsWith(QStringLiteral("Contacting")); }));
  EXPECT_EQ(d->lookupStatus(), QStringLiteral("Contacting freedb.example Server"));
  EXPECT_FALSE(In<QPushButton>(d, "btnOK")->isEnabled());
  In<QLineEdit>(d, "fldDataLabel")->setText(QStringLiteral("typed while waiting"));
  auto* stop = In<QPushButton>(d, "btnStopLookup");
  ASSERT_TRUE(stop->isVisible());
  stop->click();
  EXPECT_FALSE(d->lookupRunning());
  EXPECT_TRUE(In<QPushButton>(d, "btnOK")->isEnabled());
  EXPECT_EQ(In<QTreeWidget>(d, "lstAudioTracks")->topLevelItem(1)->text(1),
            QStringLiteral("Track 02"));
  // Cancel closes at once, whatever the server does.
  sources->hang = true;
  In<QPushButton>(d, "btnCancel")->click();
  EXPECT_EQ(ui::ScanFeature::OpenDialog(), nullptr);
}

TEST_F(ScanMediaTest, EnhancedCdQuestionsFollowTheirSettings) {
  sources->Drive("/dev/sr0", "SESSIONS", EnhancedToc());
  sources->found = BlueTrain();

  // Detection off (the default): nothing asked, a data disc.
  ui::frmScan* d = OpenOn("/dev/sr0");
  Settle(d);
  EXPECT_TRUE(In<QCheckBox>(d, "chkEnhancedCd")->isVisible());
  EXPECT_TRUE(In<QLabel>(d, "lblEnhancedCd")->isVisible());
  EXPECT_FALSE(In<QCheckBox>(d, "chkEnhancedCd")->isChecked());
  EXPECT_FALSE(In<QTabWidget>(d, "uTabStrip1")->isTabVisible(2));
  EXPECT_TRUE(prompt.asked.empty());
  d->reject();

  // Detection and notification on: asked; Yes with the box ticked treats it
  // as audio and stops asking.
  SettingsStore::PutBool("Switches", "lAssumeEnhancedCd", true);
  prompt.Answer(PromptAnswer::kYes, true);
  d = OpenOn("/dev/sr0");
  Settle(d);
  ASSERT_EQ(prompt.asked.size(), 1u);
  EXPECT_EQ(prompt.asked[0].text, ui::kEnhancedQuestion);
  EXPECT_EQ(prompt.asked[0].notifyKey, "lNotifyEnhancedCd");
  EXPECT_TRUE(In<QCheckBox>(d, "chkEnhancedCd")->isChecked());
  EXPECT_TRUE(In<QTabWidget>(d, "uTabStrip1")->isTabVisible(2));
  EXPECT_EQ(In<QLineEdit>(d, "fldAudioAlbum")->text(), QStringLiteral("Blue Train"));
  EXPECT_EQ(SettingsStore::GetText("Switches", "lNotifyEnhancedCd"), "False");
  EXPECT_EQ(SettingsStore::GetText("Switches", "lAssumeEnhancedCd"), "True");
  d->reject();

  // Notification off: ticked without asking.
  d = OpenOn("/dev/sr0");
  Settle(d);
  EXPECT_EQ(prompt.asked.size(), 1u);
  EXPECT_TRUE(In<QCheckBox>(d, "chkEnhancedCd")->isChecked());
  d->reject();

  // No with the box ticked asks whether to turn detection off; Yes does.
  SettingsStore::PutBool("Switches", "lNotifyEnhancedCd", true);
  prompt.Answer(PromptAnswer::kNo, true);
  prompt.Answer(PromptAnswer::kYes);
  d = OpenOn("/dev/sr0");
  Settle(d);
  ASSERT_EQ(prompt.asked.size(), 3u);
  EXPECT_EQ(prompt.asked[2].title, ui::kEnhancedOffTitle);
  EXPECT_EQ(prompt.asked[2].text, ui::kEnhancedOffText);
  EXPECT_FALSE(In<QCheckBox>(d, "chkEnhancedCd")->isChecked());
  EXPECT_EQ(SettingsStore::GetText("Switches", "lNotifyEnhancedCd"), "False");
  EXPECT_EQ(SettingsStore::GetText("Switches", "lAssumeEnhancedCd"), "False");
  d->reject();
}

TEST_F(ScanMediaTest, InsertedDiscFollowsTheSettings) {
  ui::MediaChangeListener* listener = Listener();
  ASSERT_TRUE(listener);
  sources->driveFolders["/dev/sr1"] = dir.path();

  // Switched off: nothing at all.
  SettingsStore::PutBool("Switches", "lEnableAutoInsert", false);
  listener->oCdChanger_CDROMChanged(1, QStringLiteral("/dev/sr1"));
  EXPECT_TRUE(prompt.asked.empty());
  EXPECT_EQ(ui::ScanFeature::OpenDialog(), nullptr);

  // On: announced and offered; No leaves it.
  SettingsStore::PutBool("Switches", "lEnableAutoInsert", true);
  prompt.Answer(PromptAnswer::kNo);
  listener->oCdChanger_CDROMChanged(1, QStringLiteral("/dev/sr1"));
  ASSERT_EQ(prompt.asked.size(), 1u);
  EXPECT_EQ(prompt.asked[0].text.rfind("CD Inserted!!\n", 0), 0u);
  EXPECT_EQ(prompt.asked[0].notifyKey, "lNotifyCdChange");
  EXPECT_EQ(ui::ScanFeature::OpenDialog(), nullptr);

  // Yes opens the scan dialog on the drive's mounted folder.
  prompt.Answer(PromptAnswer::kYes);
  listener->oCdChanger_CDROMChanged(1, QStringLiteral("/dev/sr1"));
  ui::frmScan* d = ui::ScanFeature::OpenDialog();
  ASSERT_TRUE(d);
  EXPECT_EQ(d->folderBrowser()->path(), QString::fromStdString(dir.path()));
  // While the dialog is open another disc changes nothing.
  listener->oCdChanger_CDROMChanged(1, QStringLiteral("/dev/sr1"));
  listener->oCdChanger_CDROMChanged(2, QStringLiteral("/dev/sr1"));
  EXPECT_EQ(prompt.asked.size(), 2u);
  d->reject();

  // A removal is announced while notification is on.
  listener->oCdChanger_CDROMChanged(2, QStringLiteral("/dev/sr1"));
  ASSERT_EQ(prompt.asked.size(), 3u);
  EXPECT_EQ(prompt.asked[2].text, "CD Removed!!");

  // While a scan runs nothing happens.
  for (int i = 0; i < 400; ++i)
    std::filesystem::create_directories(dir.File("big/f" + std::to_string(i)));
  ui::frmScan* scan = OpenOn(dir.File("big"));
  In<QPushButton>(scan, "btnOK")->click();
  ASSERT_TRUE(session().busy());
  listener->oCdChanger_CDROMChanged(1, QStringLiteral("/dev/sr1"));
  listener->oCdChanger_CDROMChanged(2, QStringLiteral("/dev/sr1"));
  EXPECT_EQ(prompt.asked.size(), 3u);
  EXPECT_EQ(ui::ScanFeature::OpenDialog(), nullptr);
  Idle();

  // Notification off: the dialog opens without a question; a removal is quiet.
  SettingsStore::PutBool("Switches", "lNotifyCdChange", false);
  listener->oCdChanger_CDROMChanged(2, QStringLiteral("/dev/sr1"));
  listener->oCdChanger_CDROMChanged(1, QStringLiteral("/dev/sr1"));
  EXPECT_EQ(prompt.asked.size(), 3u);
  ASSERT_TRUE(ui::ScanFeature::OpenDialog());
  ui::ScanFeature::OpenDialog()->reject();
}

TEST_F(ScanMediaTest, ServerChooserListsTheSitesAndHandsOverTheChosenOne) {
  sources->sites = {{{"gnudb.gnudb.org", "http", "80", "/~cddb/cddb.cgi", "N000.00", "W000.00",
                      "Random", "gnudb", "server"}},
                    {{"eu.example.org", "http", "8080", "/~cddb/cddb.cgi", "N051.30", "E000.07",
                      "London,", "UK"}}};
  // Opened from the options dialog's server row.
  SettingsRecord settings;
  const ShellIntegration shell;
  auto* options = new ui::frmOptions(settings, shell, window.get());
  options->open();
  qobject_cast<QCheckBox*>(options->control(QStringLiteral("FreeDbUseUrl")))->setChecked(true);
  In<QPushButton>(options, "btnFreeDbSites")->click();
  auto* chooser = options->findChild<ui::frmFreeDbServers*>();
  ASSERT_TRUE(chooser);
  ASSERT_TRUE(WaitFor([chooser] { return !chooser->loading(); }));
  QTreeWidget* list = chooser->sites();
  ASSERT_EQ(list->topLevelItemCount(), 2);
  EXPECT_EQ(list->topLevelItem(1)->text(0), QStringLiteral("eu.example.org"));
  EXPECT_EQ(list->topLevelItem(1)->text(1), QStringLiteral("N051.30"));
  EXPECT_EQ(list->topLevelItem(1)->text(2), QStringLiteral("E000.07"));
  EXPECT_EQ(list->topLevelItem(1)->text(3), QStringLiteral("London, UK"));
  Screenshot(chooser, "frmFreeDbServers");
  QString chosen;
  QObject::connect(chooser, &ui::frmFreeDbServers::siteChosen,
                   [&chosen](const QString& s) { chosen = s; });
  list->setCurrentItem(list->topLevelItem(1));
  In<QPushButton>(chooser, "btnOK")->click();
  EXPECT_EQ(chosen, QStringLiteral("eu.example.org"));
  EXPECT_EQ(qobject_cast<QLineEdit*>(options->control(QStringLiteral("FreeDbUrl")))->text(),
            QStringLiteral("eu.example.org"));
  options->reject();

  // A server that refuses the command: its own text, nothing to choose.
  sources->sites.clear();
  auto* refused = new ui::frmFreeDbServers(sources, window.get());
  refused->open();
  ASSERT_TRUE(WaitFor([refused] { return !refused->loading(); }));
  EXPECT_EQ(In<QLabel>(refused, "lblStatus")->text(), QStringLiteral("500 Command unimplemented"));
  EXPECT_FALSE(In<QPushButton>(refused, "btnOK")->isEnabled());
  refused->reject();
}

TEST_F(ScanMediaTest, EjectDialogListsTheDrivesAndEjectsTheChosenOne) {
  Trigger("mnuCdEject");
  auto* none = Find<ui::frmEjectCd>("frmEjectCd");
  ASSERT_TRUE(none);
  ASSERT_EQ(none->drives()->count(), 1);
  EXPECT_EQ(none->drives()->item(0)->text(), QStringLiteral("No CDROMs Found!!"));
  EXPECT_FALSE(In<QPushButton>(none, "btnEject")->isEnabled());
  none->accept();
  EXPECT_TRUE(sources->ejected.empty());
  none->reject();
  QApplication::processEvents();

  sources->Drive("/dev/sr0", "Audio CD", Toc("150 15000"));
  sources->Drive("/dev/sr1", "", DiscToc());
  Trigger("mnuCdEject");
  auto* eject = Find<ui::frmEjectCd>("frmEjectCd");
  ASSERT_TRUE(eject);
  ASSERT_EQ(eject->drives()->count(), 2);
  EXPECT_EQ(eject->drives()->item(0)->text(), QStringLiteral("/dev/sr0: Audio CD"));
  EXPECT_EQ(eject->drives()->item(1)->text(), QStringLiteral("/dev/sr1: (no disc)"));
  eject->drives()->setCurrentRow(1);
  In<QPushButton>(eject, "btnEject")->click();
  ASSERT_EQ(sources->ejected.size(), 1u);
  EXPECT_EQ(sources->ejected[0], "/dev/sr1");
  EXPECT_FALSE(eject->isVisible());
}

}  // namespace
}  // namespace gorvan::test
