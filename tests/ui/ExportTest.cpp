// The export window: its choices (type, discs by category or one by one,
// option boxes) reach the file it writes; the file dialog, the settings it
// keeps, the end message, a cancelled export and a target that cannot be
// written.
#include <sys/stat.h>

#include <QCheckBox>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeWidget>
#include <chrono>
#include <fstream>
#include <sstream>
#include <thread>

#include "app/SettingsStore.h"
#include "ui/UiTestSupport.h"
#include "ui/export/frmExport.h"
#include "ui/main/frmMenu.h"
#include "ui/session/CatalogSession.h"
#include "ui/widgets/JobProgressDialog.h"

namespace gorvan::test {
namespace {

std::string Slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

bool Exists(const std::string& path) {
  struct stat st {};
  return ::stat(path.c_str(), &st) == 0;
}

// The lines of a comma-separated export that begin with kind ("C", "D", "F").
std::vector<std::string> Lines(const std::string& text, char kind) {
  std::vector<std::string> out;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!line.empty() && line[0] == kind) out.push_back(line);
  }
  return out;
}

class ExportTest : public UiTest {
 protected:
  // Two categories: "Music" with "Jazz" and "Rock", "Photos" with "Summer";
  // "Loose" in none.
  void SetUp() override {
    const std::string path = dir.File("export.cd");
    CatalogBuilder b(path);
    const int32_t music = b.Category("Music");
    const int32_t photos = b.Category("Photos");
    jazz_ = b.Disc({.name = "Jazz",
                    .category = music,
                    .rootFiles = {{"take, five.mp3", 4000, 45000.5, 32, "a note"}},
                    .folders = {{"live", {{"blue.mp3", 5000}}}}});
    rock_ = b.Disc({.name = "Rock", .category = music, .rootFiles = {{"riff.mp3", 3000}}});
    summer_ = b.Disc({.name = "Summer", .category = photos, .rootFiles = {{"beach.jpg", 700}}});
    loose_ = b.Disc({.name = "Loose", .rootFiles = {{"x.txt", 1}}});
    b.Close();
    RegisterFeatures(hooks);
    Start(path);
  }

  ui::frmExport* Open() {
    Trigger("mnuFileExport");
    auto* w = Find<ui::frmExport>("frmExport");
    if (!w) return nullptr;
    EXPECT_TRUE(WaitFor([w] { return w->loaded(); }));
    return w;
  }

  // Clicks "&Export..." with the file dialog answering path; waits for the end.
  Status RunExport(ui::frmExport* w, const std::string& path) {
    prompt.files.push_back(path);
    Status result = Status::Refused("not ended");
    QObject::connect(w, &ui::frmExport::exportEnded, w, [&result](const Status& s) { result = s; });
    w->findChild<QPushButton*>(QStringLiteral("btnOK"))->click();
    EXPECT_TRUE(WaitFor([&] { return !result.IsRefused(); }));
    return result;
  }

  QTreeWidgetItem* ItemNamed(ui::frmExport* w, const QString& name) {
    auto* tree = w->findChild<QTreeWidget*>(QStringLiteral("tvwWhatToExport"));
    const auto found = tree->findItems(name, Qt::MatchExactly | Qt::MatchRecursive);
    return found.isEmpty() ? nullptr : found.front();
  }

  int32_t jazz_ = 0, rock_ = 0, summer_ = 0, loose_ = 0;
};

TEST_F(ExportTest, EachTypeWritesItsFormatThroughTheProductsFileDialog) {
  struct Case {
    const char* option;
    const char* file;
    int type;
    const char* begins;  // the file's first bytes
  };
  const Case cases[] = {
      {"optCSV", "all.csv", 0, "C, Jazz, "},
      {"optXML", "all.xml", 1, "<?xml-stylesheet type=\"text/xsl\" href=\"Gorvan.xsl\"?>\r\n"},
      {"optXLS", "all.xlsx", 2, "PK\x03\x04"},
      {"optHTML", "all.html", 3, "<!DOCTYPE html>"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.option);
    ui::frmExport* w = Open();
    ASSERT_TRUE(w);
    w->findChild<QRadioButton*>(QLatin1String(c.option))->click();
    EXPECT_EQ(static_cast<int>(w->type()), c.type);
    prompt.asked.clear();
    const std::string path = dir.File(c.file);
    ASSERT_TRUE(RunExport(w, path).ok());
    const FileRequest& r = prompt.fileRequests.back();
    EXPECT_EQ(r.title, "Select the name of the file to export");
    EXPECT_EQ(r.filter,
              "Comma Delimited (*.csv)|*.csv|XML File (*.xml)|*.xml|Excel Sheet (*.xlsx)|*.xlsx|"
              "html (Single html Page) (*.html)|*.html");
    EXPECT_EQ(r.filterIndex, c.type);
    EXPECT_EQ(r.defaultExtension, ExportTypeInfoOf(static_cast<ExportType>(c.type)).extension);
    EXPECT_TRUE(r.save);
    const std::string text = Slurp(path);
    EXPECT_EQ(text.substr(0, std::strlen(c.begins)), c.begins);
    EXPECT_FALSE(Exists(path + ".part"));
    // Every disc, in the catalog's order.
    if (c.type == 0) {
      const auto discs = Lines(text, 'C');
      ASSERT_EQ(discs.size(), 4u);
      EXPECT_EQ(discs[3].substr(0, 9), "C, Loose,");
    }
    if (c.type == 3) {
      EXPECT_NE(text.find("Summer"), std::string::npos);
    }
    // The end is told with its switch; the window closes; the choices stay.
    EXPECT_EQ(prompt.LastText(), "Export Complete!!");
    EXPECT_EQ(prompt.asked.back().notifyKey, "lNotifyExport");
    EXPECT_TRUE(WaitFor([this] { return Find<ui::frmExport>("frmExport") == nullptr; }));
    EXPECT_EQ(SettingsStore::GetText("Export", "export_type"), std::to_string(c.type));
    EXPECT_EQ(SettingsStore::GetText("Export", "export_last"), path);
  }
  // The next export starts at the last file, with the type's extension.
  ui::frmExport* w = Open();
  ASSERT_TRUE(w);
  EXPECT_TRUE(w->findChild<QRadioButton*>(QStringLiteral("optHTML"))->isChecked());
  w->findChild<QRadioButton*>(QStringLiteral("optCSV"))->click();
  prompt.files.push_back("");  // the file dialog cancelled: nothing happens
  w->findChild<QPushButton*>(QStringLiteral("btnOK"))->click();
  EXPECT_EQ(prompt.fileRequests.back().startPath, dir.File("all.csv"));
  EXPECT_FALSE(w->exporting());
  // A name whose extension names another type gets that type.
  ASSERT_TRUE(RunExport(w, dir.File("by-name.xml")).ok());
  EXPECT_EQ(Slurp(dir.File("by-name.xml")).substr(0, 5), "<?xml");
  EXPECT_EQ(SettingsStore::GetText("Export", "export_type"), "1");
}

TEST_F(ExportTest, DiscsChosenByCategoryOrOneByOneAreTheOnesWritten) {
  ui::frmExport* w = Open();
  ASSERT_TRUE(w);
  Screenshot(w, "frmExport");
  EXPECT_EQ(w->chosenDiscs(), (std::vector<int32_t>{jazz_, rock_, summer_, loose_}));
  // All ticked: every disc, which the export takes as "all".
  EXPECT_TRUE(w->options().discIds.empty());
  auto* ok = w->findChild<QPushButton*>(QStringLiteral("btnOK"));
  w->findChild<QPushButton*>(QStringLiteral("btnUnselectAll"))->click();
  EXPECT_TRUE(WaitFor([ok] { return !ok->isEnabled(); }));
  EXPECT_TRUE(w->chosenDiscs().empty());

  // A category ticks its discs; a disc is ticked on its own.
  ItemNamed(w, QStringLiteral("Music"))->setCheckState(0, Qt::Checked);
  ItemNamed(w, QStringLiteral("Loose"))->setCheckState(0, Qt::Checked);
  EXPECT_TRUE(WaitFor([ok] { return ok->isEnabled(); }));
  EXPECT_EQ(w->chosenDiscs(), (std::vector<int32_t>{jazz_, rock_, loose_}));
  EXPECT_EQ(ItemNamed(w, QStringLiteral("Photos"))->checkState(0), Qt::Unchecked);
  // One disc of a category off leaves the category partly ticked.
  ItemNamed(w, QStringLiteral("Jazz"))->setCheckState(0, Qt::Unchecked);
  EXPECT_EQ(ItemNamed(w, QStringLiteral("Music"))->checkState(0), Qt::PartiallyChecked);
  EXPECT_EQ(w->chosenDiscs(), (std::vector<int32_t>{rock_, loose_}));
  EXPECT_EQ(w->options().discIds, (std::vector<int32_t>{rock_, loose_}));

  // A change to the catalog reloads the tree and keeps what was unticked.
  ASSERT_TRUE(session()
                  .Edit(ui::CatalogChange::kStructure,
                        [this](classData& d) {
                          classCd cd = d.CdCursor();
                          Status s = d.FindCd(summer_, &cd);
                          if (s.ok()) cd.SetCdName("Summer, renamed");
                          return s;
                        })
                  .ok());
  ASSERT_TRUE(WaitFor([&] { return ItemNamed(w, QStringLiteral("Summer, renamed")) != nullptr; }));
  EXPECT_EQ(ItemNamed(w, QStringLiteral("Summer, renamed"))->checkState(0), Qt::Unchecked);
  EXPECT_EQ(w->chosenDiscs(), (std::vector<int32_t>{rock_, loose_}));

  w->findChild<QRadioButton*>(QStringLiteral("optCSV"))->click();
  ASSERT_TRUE(RunExport(w, dir.File("some.csv")).ok());
  const auto discs = Lines(Slurp(dir.File("some.csv")), 'C');
  ASSERT_EQ(discs.size(), 2u);
  EXPECT_EQ(discs[0].substr(0, 8), "C, Rock,");
  EXPECT_EQ(discs[1].substr(0, 9), "C, Loose,");
}

TEST_F(ExportTest, OptionBoxesDropTheirFieldsAndAreKept) {
  ui::frmExport* w = Open();
  ASSERT_TRUE(w);
  w->findChild<QRadioButton*>(QStringLiteral("optCSV"))->click();
  w->findChild<QCheckBox*>(QStringLiteral("chkFileSizes"))->setChecked(false);
  w->findChild<QCheckBox*>(QStringLiteral("chkFileNotes"))->setChecked(false);
  ASSERT_TRUE(RunExport(w, dir.File("fields.csv")).ok());
  const std::string text = Slurp(dir.File("fields.csv"));
  // "F, name, full name, date,attr,size,notes": size and notes empty.
  const auto files = Lines(text, 'F');
  ASSERT_FALSE(files.empty());
  for (const std::string& f : files) EXPECT_EQ(f.substr(f.size() - 2), ",,") << f;
  EXPECT_EQ(text.find("a note"), std::string::npos);
  EXPECT_EQ(SettingsStore::GetText("Export", "chkFileSizes"), "False");
  EXPECT_EQ(SettingsStore::GetText("Export", "chkDirSize"), "True");

  // The boxes come back as left; the files left out leave no file line.
  w = Open();
  ASSERT_TRUE(w);
  EXPECT_FALSE(w->findChild<QCheckBox*>(QStringLiteral("chkFileSizes"))->isChecked());
  EXPECT_TRUE(w->findChild<QCheckBox*>(QStringLiteral("chkFileDates"))->isChecked());
  w->findChild<QCheckBox*>(QStringLiteral("chkDirFiles"))->setChecked(false);
  EXPECT_FALSE(w->findChild<QCheckBox*>(QStringLiteral("chkFileDates"))->isEnabled());
  EXPECT_FALSE(w->options().fields.dirFiles);
  ASSERT_TRUE(RunExport(w, dir.File("nofiles.csv")).ok());
  const std::string nofiles = Slurp(dir.File("nofiles.csv"));
  EXPECT_TRUE(Lines(nofiles, 'F').empty());
  EXPECT_EQ(Lines(nofiles, 'D').size(), Lines(text, 'D').size());
}

TEST_F(ExportTest, UnwritableTargetIsToldAndLeavesNothing) {
  ui::frmExport* w = Open();
  ASSERT_TRUE(w);
  w->findChild<QRadioButton*>(QStringLiteral("optXLS"))->click();
  const std::string missing = dir.File("no such folder/out.xlsx");
  const Status s = RunExport(w, missing);
  EXPECT_TRUE(s.IsIOError()) << s.message();
  EXPECT_NE(prompt.LastText().find("The export could not be written to " + missing),
            std::string::npos)
      << prompt.LastText();
  EXPECT_FALSE(Exists(missing));
  EXPECT_FALSE(Exists(missing + ".part"));
  // The window stays for another try, and the setting keeps no failed file.
  EXPECT_EQ(Find<ui::frmExport>("frmExport"), w);
  EXPECT_TRUE(w->findChild<QPushButton*>(QStringLiteral("btnOK"))->isEnabled());
  EXPECT_NE(SettingsStore::GetText("Export", "export_last", "0"), missing);
}

TEST_F(ExportTest, WhileAJobHoldsTheCatalogTheExportWaits) {
  ui::frmExport* w = Open();
  ASSERT_TRUE(w);
  ui::JobSpec spec;
  spec.showProgress = false;
  spec.changes = ui::CatalogChange::kNothing;
  spec.work = [](classData&, JobControl& job) {
    while (!job.StopRequested()) std::this_thread::sleep_for(std::chrono::milliseconds(2));
    return ui::JobOutcome{Status::Cancelled(), "", 0, 0};
  };
  ASSERT_TRUE(session().StartJob(std::move(spec)));
  w->ExportTo(dir.File("busy.csv"));
  EXPECT_FALSE(w->exporting());
  EXPECT_EQ(prompt.LastText(), "The catalog is busy; wait until the running job ends");
  EXPECT_FALSE(Exists(dir.File("busy.csv")));
  session().CancelJob();
  Idle();
  ASSERT_TRUE(RunExport(w, dir.File("after.csv")).ok());
  EXPECT_TRUE(Exists(dir.File("after.csv")));
}

// A catalog large enough that an export takes a while: 300 folders of 100
// files each.
class LargeExportTest : public UiTest {
 protected:
  void SetUp() override {
    const std::string path = dir.File("large.cd");
    CatalogBuilder b(path);
    DiscSpec spec{.name = "Big"};
    for (int f = 0; f < 300; ++f) {
      FolderSpec folder{"folder" + std::to_string(f), {}};
      for (int i = 0; i < 100; ++i) folder.files.push_back({"file" + std::to_string(i), 1.0 * i});
      spec.folders.push_back(std::move(folder));
    }
    b.Disc(spec);
    b.Close();
    RegisterFeatures(hooks);
    Start(path);
  }
};

TEST_F(LargeExportTest, CancelLeavesNoFileAndKeepsAnOlderOne) {
  Trigger("mnuFileExport");
  auto* w = Find<ui::frmExport>("frmExport");
  ASSERT_TRUE(w);
  ASSERT_TRUE(WaitFor([w] { return w->loaded(); }));
  w->findChild<QRadioButton*>(QStringLiteral("optXML"))->click();
  const std::string target = dir.File("big.xml");
  { std::ofstream(target) << "older export"; }
  Status result = Status::Refused("not ended");
  QObject::connect(w, &ui::frmExport::exportEnded, w, [&result](const Status& s) { result = s; });
  w->ExportTo(target);
  ASSERT_TRUE(w->exporting());
  // The browse views stay usable: the session is not busy.
  EXPECT_FALSE(session().busy());
  ASSERT_TRUE(w->progressWindow());
  w->progressWindow()->findChild<QPushButton*>(QStringLiteral("btnCancel"))->click();
  ASSERT_TRUE(WaitFor([&] { return !result.IsRefused(); }));
  EXPECT_TRUE(result.IsCancelled()) << result.message();
  EXPECT_EQ(Slurp(target), "older export");
  EXPECT_FALSE(Exists(target + ".part"));
  // No end message for a cancel; the window stays.
  EXPECT_NE(prompt.LastText(), "Export Complete!!");
  EXPECT_EQ(Find<ui::frmExport>("frmExport"), w);

  // Closing the window while it exports cancels the export, then closes.
  w->ExportTo(dir.File("closed.xml"));
  w->close();
  EXPECT_TRUE(WaitFor([this] { return Find<ui::frmExport>("frmExport") == nullptr; }));
  EXPECT_FALSE(Exists(dir.File("closed.xml")));
  EXPECT_FALSE(Exists(dir.File("closed.xml.part")));
}

}  // namespace
}  // namespace gorvan::test
