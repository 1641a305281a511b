// The search window: its controls and refusals, results against gorvan-cli's,
// sorting, stopping, the follow switch and the remembered layout.
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QRadioButton>
#include <QSettings>

#include "app/SettingsStore.h"
#include "catalog/TextUtil.h"
#include "ui/SearchFixture.h"
#include "ui/session/CatalogSession.h"

namespace gorvan::test {
namespace {

using Model = ui::SearchResultsModel;

TEST_F(SearchTest, TheFormHasItsControlsAndItsLabelsToggleTheirBoxes) {
  BuildSample(dir.File("s.cd"));
  StartOn(dir.File("s.cd"));
  ui::frmSearch* form = Open();
  ASSERT_TRUE(form);
  EXPECT_EQ(Control<QLabel>(form, "lblSearchFor")->text(), QStringLiteral("Search &For"));
  EXPECT_EQ(Control<QLabel>(form, "lblCategory")->text(), QStringLiteral("Search &Category"));
  const std::pair<const char*, const char*> labels[] = {
      {"lblFileNames", "Search Filenames"},
      {"lblPathNames", "Search Path Names"},
      {"lblCDNames", "Search CD Names"},
      {"lblComments", "Search Comments"},
      {"lblExtra", "Search Additional Attributes"},
      {"lblCaseSensitive", "Case Sensitive"},
      {"lblZip", "Search Within Zip Files"},
      {"lblOptWholeWord", " Whole Word"},
      {"lblOptBeginning", " Beginning"},
      {"lblOptAnywhere", " Anywhere"}};
  for (const auto& [name, text] : labels)
    EXPECT_EQ(Control<QLabel>(form, name)->text(), QString::fromLatin1(text)) << name;
  EXPECT_EQ(Control<QPushButton>(form, "btnOK")->text(), QStringLiteral("&Search"));
  EXPECT_EQ(Control<QPushButton>(form, "btnStop")->text(), QStringLiteral("&Stop"));
  EXPECT_EQ(Control<QPushButton>(form, "btnCancel")->text(), QStringLiteral("&Close"));
  QStringList hint;
  for (const char* line : ui::kSearchHint) hint << QString::fromLatin1(line);
  EXPECT_EQ(Control<QLabel>(form, "lblHint")->text(), hint.join(QLatin1Char('\n')));
  EXPECT_TRUE(hint.contains(QStringLiteral("    eg: Game* AND *Car* AND *Fast")));

  // The combo offers "All" and the category tree, children under parents.
  auto* combo = Control<QComboBox>(form, "cboCategory");
  QStringList entries;
  for (int i = 0; i < combo->count(); ++i) entries << combo->itemText(i);
  EXPECT_EQ(entries, (QStringList{QStringLiteral("All"), QStringLiteral("Music"),
                                  QStringLiteral("    Jazz"), QStringLiteral("Photos")}));

  // A click on a label toggles its box or chooses its option.
  auto* zip = Control<QCheckBox>(form, "chkZip");
  const bool before = zip->isChecked();
  QTest::mouseClick(Control<QLabel>(form, "lblZip"), Qt::LeftButton);
  EXPECT_NE(zip->isChecked(), before);
  QList<QRadioButton*> options = form->findChildren<QRadioButton*>(QStringLiteral("Option1"));
  ASSERT_EQ(options.size(), 3);
  QTest::mouseClick(Control<QLabel>(form, "lblOptBeginning"), Qt::LeftButton);
  for (QRadioButton* o : options) EXPECT_EQ(o->isChecked(), o->property("index").toInt() == 1);
  EXPECT_EQ(form->Options().matchMode, MatchMode::kBeginning);

  // The list's columns and their tags.
  Model* m = form->model();
  QStringList columns;
  for (int c = 0; c < m->columnCount(); ++c)
    columns << m->headerData(c, Qt::Horizontal, Qt::DisplayRole).toString();
  EXPECT_EQ(columns, (QStringList{"FileName", "CD Name", "Path", "Date", "Size", "Attributes",
                                  "Notes", "Internal Date"}));
  EXPECT_EQ(m->headerData(Model::kDate, Qt::Horizontal, Model::kTagRole).toString(), "dt_visible");
  EXPECT_EQ(m->headerData(Model::kInternalDate, Qt::Horizontal, Model::kTagRole).toString(),
            "dt_internal");
}

TEST_F(SearchTest, RefusalsComeInTheFormsOrder) {
  CatalogBuilder(dir.File("empty.cd")).Close();
  BuildSample(dir.File("s.cd"));
  StartOn(dir.File("empty.cd"));
  Trigger("mnuCdSearch");
  EXPECT_EQ(prompt.LastText(),
            "You need at least one CD or folder scanned before you can search for something!!");
  EXPECT_EQ(window->documents()->subWindowList().size(), 1);  // the explorer only

  ASSERT_TRUE(session().Open(dir.File("s.cd")));
  Idle();
  ui::frmSearch* form = Open();
  ASSERT_TRUE(form);
  Search(form, "");
  EXPECT_EQ(prompt.LastText(), "Nothing To Search For");
  Check(form, "chkFileNames", false);
  Check(form, "chkCDNames", false);
  Search(form, "photo");
  EXPECT_EQ(prompt.LastText(), "You have to select something to search within");
  const size_t asked = prompt.asked.size();
  // "Search Filenames" alone passes the check and tests nothing.
  Check(form, "chkFileNames", true);
  Search(form, "photo");
  EXPECT_EQ(prompt.asked.size(), asked);
  EXPECT_EQ(form->model()->rowCount(), 0);
  EXPECT_EQ(Control<QLabel>(form, "lblCount")->text(), QStringLiteral("0 items found"));
}

TEST_F(SearchTest, HostileTextsEndAndLeaveTheWindowUsable) {
  BuildSample(dir.File("s.cd"));
  StartOn(dir.File("s.cd"));
  ui::frmSearch* form = Open();
  ASSERT_TRUE(form);
  Check(form, "chkComments", true);
  Check(form, "chkExtra", true);
  for (const std::string& text :
       {std::string(10000, 'x'), std::string(5000, '(') + "a", std::string("((a) or b"),
        std::string("@@(a+)+$ ()"), std::string("@@[ ()"),
        std::string("a and b and c and d and e "
                    "and f and g and h and i "
                    "and j and k and l and m "
                    "and n and o and p and q "
                    "and r and s and t")}) {
    SCOPED_TRACE(text.substr(0, 40));
    Search(form, text);
    EXPECT_FALSE(form->searching());
    EXPECT_TRUE(Control<QPushButton>(form, "btnOK")->isEnabled());
  }
  Search(form, "photo9");
  EXPECT_EQ(form->model()->rowCount(), 1);

  // Closing the catalog drops the rows: they would lead into another one.
  Trigger("mnuFileClose");
  Idle();
  EXPECT_EQ(form->model()->rowCount(), 0);
  EXPECT_FALSE(Control<QPushButton>(form, "btnOK")->isEnabled());
}

TEST_F(SearchTest, ResultsAreTheCommandLinesForTheSameSearch) {
  const Sample s = BuildSample(dir.File("s.cd"));
  struct Case {
    std::string text;
    std::vector<std::pair<const char*, bool>> boxes;
    int option;  // Option1 index
    int32_t category;
    QStringList cli;
    size_t rows;
  };
  const QString photos = QString::number(s.photos);
  const std::vector<Case> cases = {
      {"photo", {}, 2, 0, {"photo", "--names"}, 2},
      {"*.txt", {{"chkZip", true}}, 2, 0, {"*.txt", "--names", "--zip"}, 3},
      {"beach", {{"chkCDNames", false}, {"chkComments", true}}, 2, 0, {"beach", "--comments"}, 1},
      {"holiday", {{"chkCDNames", false}, {"chkPathNames", true}}, 2, 0, {"holiday", "--paths"}, 1},
      {"photo9.jpg", {}, 0, 0, {"photo9.jpg", "--names", "--mode", "whole"}, 1},
      {"photo", {}, 1, 0, {"photo", "--names", "--mode", "beginning"}, 2},
      {"a", {}, 2, s.photos, {"a", "--names", "--category", photos}, 0},
      {"README", {{"chkCaseSensitive", true}}, 2, 0, {"README", "--names", "--case"}, 0},
      {"@@^photo([0-9]+)\\.jpg$", {}, 2, 0, {"@@^photo([0-9]+)\\.jpg$", "--names"}, 2},
      {"so what or inner*", {{"chkZip", true}}, 2, 0, {"so what or inner*", "--names", "--zip"}, 0},
  };
  // The command line answers first: the window then holds the catalog.
  std::vector<std::vector<std::vector<std::string>>> expected;
  for (const Case& c : cases) expected.push_back(Cli(dir.File("s.cd"), c.cli));
  StartOn(dir.File("s.cd"));
  ui::frmSearch* form = Open();
  ASSERT_TRUE(form);
  for (size_t i = 0; i < cases.size(); ++i) {
    const Case& c = cases[i];
    SCOPED_TRACE(c.text);
    for (const char* name :
         {"chkPathNames", "chkComments", "chkExtra", "chkCaseSensitive", "chkZip"})
      Check(form, name, false);
    Check(form, "chkFileNames", true);
    Check(form, "chkCDNames", true);
    for (const auto& [name, on] : c.boxes) Check(form, name, on);
    form->findChildren<QRadioButton*>(QStringLiteral("Option1"))[c.option]->setChecked(true);
    form->SetStartupCategory(c.category);
    Search(form, c.text);
    const auto rows = Rows(form);
    EXPECT_EQ(rows, expected[i]);
    // Sizes are bytes: a folder's too, though a scan stores it negated.
    for (const auto& r : rows) EXPECT_NE(r[5].rfind('-', 0), 0u) << r[1];
    if (c.rows > 0) {
      EXPECT_EQ(rows.size(), c.rows);
    }
    if (c.category != 0) {
      EXPECT_FALSE(rows.empty());
      for (const auto& r : rows)
        EXPECT_EQ(r[0].rfind("T:" + std::to_string(s.photos) + "\\", 0), 0u);
    }
    EXPECT_EQ(Control<QLabel>(form, "lblCount")->text(),
              rows.size() == 1 ? QStringLiteral("1 item found")
                               : QStringLiteral("%1 items found").arg(rows.size()));
  }
}

TEST_F(SearchTest, ColumnsSortBothWaysDateByItsInternalKeySizesAsNumbers) {
  BuildSample(dir.File("s.cd"));
  StartOn(dir.File("s.cd"));
  ui::frmSearch* form = Open();
  ASSERT_TRUE(form);
  Check(form, "chkZip", true);
  Search(form, "*.*");
  Model* m = form->model();
  ASSERT_GE(m->rowCount(), 8);
  auto column = [m](int c) {
    std::vector<std::string> out;
    for (int r = 0; r < m->rowCount(); ++r) {
      const SearchResult& row = m->RowAt(r);
      out.push_back(c == Model::kSize   ? row.size
                    : c == Model::kDate ? row.internalDate
                                        : row.fileName);
    }
    return out;
  };
  QHeaderView* header = form->list()->horizontalHeader();
  QTest::mouseClick(
      header->viewport(), Qt::LeftButton, {},
      QPoint(header->sectionViewportPosition(Model::kDate) + 5, header->height() / 2));
  std::vector<std::string> dates = column(Model::kDate);
  EXPECT_TRUE(std::is_sorted(dates.begin(), dates.end()));
  EXPECT_NE(dates.front(), dates.back());
  QTest::mouseClick(
      header->viewport(), Qt::LeftButton, {},
      QPoint(header->sectionViewportPosition(Model::kDate) + 5, header->height() / 2));
  dates = column(Model::kDate);
  EXPECT_TRUE(std::is_sorted(dates.rbegin(), dates.rend()));

  form->list()->sortByColumn(Model::kSize, Qt::AscendingOrder);
  // Numbers in number order ("100" after "12"), an audio track's length after them.
  std::vector<double> sizes;
  bool text = false;
  for (const std::string& v : column(Model::kSize)) {
    char* end = nullptr;
    const double d = std::strtod(v.c_str(), &end);
    if (end && *end == '\0' && !v.empty()) {
      EXPECT_FALSE(text) << v << " after a text";
      sizes.push_back(d);
    } else {
      text = true;
    }
  }
  EXPECT_TRUE(text);
  EXPECT_GT(sizes.size(), 8u);
  EXPECT_TRUE(std::is_sorted(sizes.begin(), sizes.end()));

  // Rows that arrive while the list is sorted go to their places.
  Model model;
  SearchResult r;
  for (const char* name : {"m", "c", "x"}) {
    r.fileName = name;
    model.Append(std::vector<SearchResult>{r});
  }
  model.sort(Model::kFileName, Qt::AscendingOrder);
  std::vector<SearchResult> batch;
  for (const char* name : {"b", "z", "d10", "d9"}) {
    r.fileName = name;
    batch.push_back(r);
  }
  model.Append(std::move(batch));
  QStringList names;
  for (int i = 0; i < model.rowCount(); ++i) names << model.index(i, 0).data().toString();
  EXPECT_EQ(names, (QStringList{"b", "c", "d9", "d10", "m", "x", "z"}));
  EXPECT_EQ(model.index(model.LastAddedRow(), 0).data().toString(), QStringLiteral("d9"));

  // A long list sorts on a thread of its own; rows found meanwhile join it.
  Model large;
  std::vector<SearchResult> many;
  for (int i = 0; i < Model::kBackgroundSortRows + 5000; ++i) {
    r.fileName = "f" + std::to_string((i * 7919) % 100003);
    many.push_back(r);
  }
  large.Append(std::move(many));
  large.sort(Model::kFileName, Qt::DescendingOrder);
  r.fileName = "f99999999";
  large.Append(std::vector<SearchResult>{r});
  ASSERT_TRUE(WaitFor([&large] { return large.sorted(); }));
  ASSERT_EQ(large.rowCount(), Model::kBackgroundSortRows + 5001);
  EXPECT_EQ(large.RowAt(0).fileName, "f99999999");
  for (int i = 1; i < large.rowCount(); ++i) {
    ASSERT_GE(NaturalCompare(large.RowAt(i - 1).fileName, large.RowAt(i).fileName), 0) << i;
  }
}

// One folder of many files: a search long enough to be stopped.
std::string BuildLarge(TempDir& dir, int files) {
  CatalogBuilder b(dir.File("large.cd"));
  FolderSpec folder{"many", {}, ""};
  folder.files.reserve(static_cast<size_t>(files));
  for (int i = 0; i < files; ++i) folder.files.push_back({"file" + std::to_string(i) + ".dat", 1});
  b.Disc({.name = "Large", .folders = {folder}});
  b.Close();
  return dir.File("large.cd");
}

TEST_F(SearchTest, StopAndCloseEndTheSearchAndKeepItsRows) {
  const std::string catalog = BuildLarge(dir, 150000);
  const auto all = Cli(catalog, {"file", "--names"});
  ASSERT_EQ(all.size(), 150000u);
  StartOn(catalog);
  ui::frmSearch* form = Open();
  ASSERT_TRUE(form);
  auto* stop = Control<QPushButton>(form, "btnStop");
  auto* close = Control<QPushButton>(form, "btnCancel");
  for (QPushButton* button : {stop, close}) {
    SCOPED_TRACE(button->objectName().toStdString());
    Control<QLineEdit>(form, "fldSearchFor")->setText(QStringLiteral("file"));
    Control<QPushButton>(form, "btnOK")->click();
    ASSERT_TRUE(form->searching());
    EXPECT_TRUE(stop->isEnabled());
    EXPECT_FALSE(Control<QPushButton>(form, "btnExport")->isEnabled());
    EXPECT_FALSE(Control<QPushButton>(form, "btnPreview")->isEnabled());
    EXPECT_FALSE(Control<QPushButton>(form, "btnOK")->isEnabled());
    button->click();
    ASSERT_TRUE(WaitFor([form] { return !form->searching(); }));
    Idle();
    // The window stays, with the rows found before the stop: the first of all.
    EXPECT_TRUE(form->isVisible());
    const auto rows = Rows(form);
    EXPECT_LT(rows.size(), all.size());
    EXPECT_TRUE(std::equal(rows.begin(), rows.end(), all.begin()));
    EXPECT_TRUE(
        Control<QLabel>(form, "lblCount")->text().startsWith(QStringLiteral("Search stopped")));
    EXPECT_TRUE(Control<QPushButton>(form, "btnExport")->isEnabled());
    EXPECT_FALSE(stop->isEnabled());
  }
  // Idle, "&Close" closes the window.
  close->click();
  Idle();
  EXPECT_EQ(window->documents()->subWindowList().size(), 1);
}

TEST_F(SearchTest, ALongListSortedKeepsItsChosenRow) {
  const std::string catalog = BuildLarge(dir, Model::kBackgroundSortRows + 1000);
  StartOn(catalog);
  ui::frmSearch* form = Open();
  ASSERT_TRUE(form);
  Search(form, "file");
  Model* m = form->model();
  ASSERT_EQ(m->rowCount(), Model::kBackgroundSortRows + 1000);
  form->list()->setCurrentIndex(m->index(123, 2));
  ASSERT_EQ(m->RowAt(123).fileName, "file123.dat");
  form->list()->sortByColumn(Model::kFileName, Qt::DescendingOrder);
  ASSERT_TRUE(WaitFor([m] { return m->sorted(); }));
  const QModelIndex at = form->list()->currentIndex();
  ASSERT_TRUE(at.isValid());
  EXPECT_EQ(m->RowAt(at.row()).fileName, "file123.dat");
  EXPECT_EQ(at.column(), 2);
  EXPECT_NE(at.row(), 123);
  EXPECT_EQ(m->RowAt(0).fileName,
            "file" + std::to_string(Model::kBackgroundSortRows + 999) + ".dat");
}

TEST_F(SearchTest, TheFollowSwitchChoosesEachNewRow) {
  BuildSample(dir.File("s.cd"));
  StartOn(dir.File("s.cd"));
  ui::frmSearch* form = Open();
  ASSERT_TRUE(form);
  Search(form, "photo");
  EXPECT_FALSE(form->list()->currentIndex().isValid());
  SettingsStore::PutBool("Switches", "lInteractiveSearch", true);
  Search(form, "photo");
  ASSERT_EQ(form->model()->rowCount(), 2);
  EXPECT_EQ(form->list()->currentIndex().row(), 1);
}

TEST_F(SearchTest, ColumnWidthsOrderAndHiddenColumnsAreRemembered) {
  BuildSample(dir.File("s.cd"));
  StartOn(dir.File("s.cd"));
  ui::frmSearch* form = Open();
  ASSERT_TRUE(form);
  QHeaderView* header = form->list()->horizontalHeader();
  EXPECT_TRUE(header->isSectionHidden(Model::kInternalDate));
  header->resizeSection(Model::kPath, 333);
  header->moveSection(header->visualIndex(Model::kNotes), 0);
  header->hideSection(Model::kCdName);
  window->documents()->activeSubWindow()->close();
  Idle();
  EXPECT_EQ(SettingsStore::GetText("Defaults", "ListView1_col3_width", ""), "333");
  EXPECT_EQ(SettingsStore::GetText("Defaults", "ListView1_col7_order", ""), "0");
  EXPECT_EQ(SettingsStore::GetText("Defaults", "ListView1_col2_width", ""), "0");

  form = Open();
  ASSERT_TRUE(form);
  header = form->list()->horizontalHeader();
  EXPECT_EQ(header->sectionSize(Model::kPath), 333);
  EXPECT_EQ(header->visualIndex(Model::kNotes), 0);
  EXPECT_TRUE(header->isSectionHidden(Model::kCdName));
  EXPECT_TRUE(header->isSectionHidden(Model::kInternalDate));
}

TEST_F(SearchTest, OpenedOnACategoryItSearchesThatCategory) {
  const Sample s = BuildSample(dir.File("s.cd"));
  const auto expected =
      Cli(dir.File("s.cd"), {"*", "--names", "--category", QString::number(s.photos)});
  ASSERT_FALSE(expected.empty());
  StartOn(dir.File("s.cd"));
  Choose(Child(tree, tree->CatalogIndex(), QStringLiteral("Photos")));
  ui::frmSearch* form = Open("popExpTreeSearch");
  ASSERT_TRUE(form);
  EXPECT_EQ(form->CategoryText(), QStringLiteral("Photos"));
  EXPECT_EQ(form->Options().categoryId, s.photos);
  Search(form, "*");
  EXPECT_EQ(Rows(form), expected);
  window->resize(1100, 700);
  Screenshot(window.get(), "frmSearch");
}

}  // namespace
}  // namespace gorvan::test
