// Properties dialogs, launch, a damaged catalog and names of every shape in
// the explorer; the traditional view, the category list, list styles and a
// folder rename.
#include <sys/stat.h>

#include <QApplication>
#include <QLineEdit>
#include <QListView>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QTreeView>
#include <QTreeWidget>

#include "app/AppFolder.h"
#include "app/SettingsStore.h"
#include "catalog/CatalogEditor.h"
#include "catalog/Records.h"
#include "ui/ExplorerFixture.h"
#include "ui/dialogs/PropertiesDialog.h"
#include "ui/dialogs/frmCategories.h"
#include "ui/explorer/DiscTableModel.h"
#include "ui/explorer/Launcher.h"
#include "ui/explorer/TraditionalView.h"
#include "ui/session/CatalogReads.h"
#include "ui/session/CatalogSession.h"
#include "ui/widgets/UiText.h"

namespace gorvan::test {
namespace {

void Ok(QDialog* dialog) { dialog->findChild<QPushButton*>(QStringLiteral("btnOK"))->click(); }

class ItemsTest : public ExplorerTest {
 protected:
  ui::PropertiesDialog* OpenProperties(const char* name) {
    Trigger("mnuCdProperties");
    // The one just opened: those closed before go only when the loop runs.
    ui::PropertiesDialog* dialog = nullptr;
    for (QWidget* w : QApplication::topLevelWidgets()) {
      auto* d = qobject_cast<ui::PropertiesDialog*>(w);
      if (d && d->objectName() == QLatin1String(name) && d->isVisible()) dialog = d;
    }
    EXPECT_TRUE(dialog) << name;
    if (dialog) {
      EXPECT_TRUE(WaitFor([dialog] { return dialog->loaded(); }));
    }
    return dialog;
  }
};

TEST_F(ItemsTest, PropertiesShowEveryFieldAndSaveNotes) {
  const Sample s = BuildSample(dir.File("s.cd"));
  StartOn(dir.File("s.cd"));

  Choose(Holiday());
  ui::PropertiesDialog* disc = OpenProperties("frmCdProperties");
  ASSERT_TRUE(disc);
  EXPECT_EQ(disc->Value(QStringLiteral("Media type")), QStringLiteral("Fixed disk"));
  EXPECT_EQ(disc->Value(QStringLiteral("Files")), QStringLiteral("6"));
  EXPECT_EQ(disc->Value(QStringLiteral("Category")), QStringLiteral("Photos"));
  EXPECT_EQ(disc->Value(QStringLiteral("Scanned path")), QStringLiteral("/nonexistent/holiday"));
  disc->findChild<QPlainTextEdit*>(QStringLiteral("txtNotes"))
      ->setPlainText(QStringLiteral("kept in the attic"));
  Screenshot(disc, "frmCdProperties");
  Ok(disc);
  Idle();
  EXPECT_EQ(tree->Disc(s.holiday)->notes, "kept in the attic");

  // An audio CD: its audio values and tracks.
  Choose(Child(tree,
               Child(tree, Child(tree, tree->CatalogIndex(), QStringLiteral("Music")),
                     QStringLiteral("Jazz")),
               QStringLiteral("Kind of Blue - Miles")));
  ui::PropertiesDialog* audio = OpenProperties("frmCdProperties");
  ASSERT_TRUE(audio);
  EXPECT_EQ(audio->Value(QStringLiteral("Artist")), QStringLiteral("Miles"));
  EXPECT_EQ(audio->Value(QStringLiteral("Media type")), QStringLiteral("Audio CD"));
  ASSERT_EQ(audio->table()->topLevelItemCount(), 2);
  EXPECT_EQ(audio->table()->topLevelItem(1)->text(1), QStringLiteral("Freddie Freeloader"));
  audio->close();

  // A folder: notes saved and shown in the list at once.
  Choose(FolderA());
  browse->details()->setFocus();
  browse->details()->setCurrentIndex(list->index(0, 0));  // b
  ui::PropertiesDialog* folder = OpenProperties("frmItemProperties");
  ASSERT_TRUE(folder);
  EXPECT_EQ(folder->Value(QStringLiteral("Path")), QStringLiteral("/a/b"));
  folder->findChild<QPlainTextEdit*>(QStringLiteral("txtNotes"))
      ->setPlainText(QStringLiteral("scans"));
  Ok(folder);
  Idle();
  EXPECT_EQ(list->data(list->index(0, ui::FileListModel::kNotes), Qt::DisplayRole).toString(),
            QStringLiteral("scans"));

  // A file: its MP3 values; an archive: its members.
  browse->details()->setFocus();
  browse->details()->setCurrentIndex(list->index(4, 0));  // song.mp3
  ui::PropertiesDialog* song = OpenProperties("frmItemProperties");
  ASSERT_TRUE(song);
  EXPECT_EQ(song->Value(QStringLiteral("Title")), QStringLiteral("Blue in Green"));
  EXPECT_EQ(song->Value(QStringLiteral("Folder")), QStringLiteral("/a"));
  song->close();
  browse->details()->setCurrentIndex(list->index(1, 0));  // pack.zip
  ui::PropertiesDialog* zip = OpenProperties("frmItemProperties");
  ASSERT_TRUE(zip);
  EXPECT_EQ(zip->table()->topLevelItemCount(), 2);
  Screenshot(zip, "frmItemProperties");
  zip->close();

  // The catalog and a category.
  Choose(tree->CatalogIndex());
  browse->tree()->setFocus();
  ui::PropertiesDialog* catalog = OpenProperties("frmCatalogProperties");
  ASSERT_TRUE(catalog);
  EXPECT_EQ(catalog->Value(QStringLiteral("Discs")), QStringLiteral("3"));
  EXPECT_TRUE(catalog->Value(QStringLiteral("Garbage")).contains(QStringLiteral("compacting")));
  Screenshot(catalog, "frmCatalogProperties");
  catalog->close();
  Choose(Child(tree, tree->CatalogIndex(), QStringLiteral("Music")));
  ui::PropertiesDialog* music = OpenProperties("frmCategoryProperties");
  ASSERT_TRUE(music);
  EXPECT_EQ(music->Value(QStringLiteral("Discs below")), QStringLiteral("1")) << "through Jazz";
  EXPECT_EQ(music->Value(QStringLiteral("Subcategories")), QStringLiteral("1"));
  Screenshot(music, "frmCategoryProperties");
  music->close();
}

TEST_F(ItemsTest, LaunchOpensWhatIsOnTheMediumOrSaysItIsNotMounted) {
  const std::string medium = dir.File("medium");
  ::mkdir(medium.c_str(), 0755);
  ::mkdir((medium + "/a").c_str(), 0755);
  WriteFileBytes(medium + "/a/photo10.jpg", "jpg");
  BuildSample(dir.File("s.cd"), medium);
  std::vector<std::string> opened;
  ui::Launcher::SetOpener([&opened](const std::string& path) {
    opened.push_back(path);
    return true;
  });
  StartOn(dir.File("s.cd"));
  Choose(FolderA());
  browse->details()->setFocus();
  browse->details()->setCurrentIndex(list->index(3, 0));  // photo10.jpg
  emit browse->details()->activated(list->index(3, 0));
  Trigger("popExpLaunch");  // the folder chosen in the tree
  EXPECT_EQ(opened, (std::vector<std::string>{medium + "/a/photo10.jpg", medium + "/a"}));

  // The medium is gone.
  ::unlink((medium + "/a/photo10.jpg").c_str());
  ::rmdir((medium + "/a").c_str());
  ::rmdir(medium.c_str());
  Trigger("popExpLaunch");
  EXPECT_EQ(prompt.LastText(),
            "The disc \"Holiday\" is not mounted: " + medium +
                " cannot be found.\nInsert the disc or connect its drive, then try again.");
  EXPECT_EQ(opened.size(), 2u);
  ui::Launcher::SetOpener({});
}

TEST_F(ItemsTest, ADamagedFolderChainShowsWhatCanBeReadAndTellsOnce) {
  const Sample s = BuildSample(dir.File("s.cd"));
  // Folder "a" links to a record far beyond the end of the file.
  std::string bytes = ReadFileBytes(dir.File("s.cd"));
  const size_t next = static_cast<size_t>(s.folderA) - 1 + 8;
  bytes[next] = '\x00';
  bytes[next + 1] = '\x00';
  bytes[next + 2] = '\x00';
  bytes[next + 3] = '\x70';
  ASSERT_TRUE(WriteFileBytes(dir.File("s.cd"), bytes));
  StartOn(dir.File("s.cd"));
  EXPECT_EQ(Names(tree, tree->CatalogIndex()), (QStringList{"Music", "Photos", "Backup"}));
  Expand(Holiday());
  EXPECT_EQ(Names(tree, Holiday()), QStringList{"a"}) << "the folders read before the damage";
  auto failures = [this] {
    int n = 0;
    for (const std::string& t : prompt.Texts()) n += t.rfind(kDataFileErrorMessage, 0) == 0 ? 1 : 0;
    return n;
  };
  EXPECT_EQ(failures(), 1);
  Choose(Child(tree, Holiday(), QStringLiteral("a")));
  Choose(Holiday());
  EXPECT_EQ(failures(), 1) << "told once";
  EXPECT_NE(ReadFileBytes(AppFolder::File("Gorvan.err")).find("| 1001 |"), std::string::npos)
      << "logged";
  // The window stays usable.
  Choose(Child(tree, tree->CatalogIndex(), QStringLiteral("Music")));
  EXPECT_EQ(Names(list), QStringList{"Jazz"});
}

TEST_F(ItemsTest, NamesOfEveryShapeShowOnOneRowAndEdit) {
  CatalogBuilder b(dir.File("odd.cd"));
  const std::string huge(100000, 'x');
  const std::string rtl = "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D.txt";  // Hebrew "shalom"
  b.Disc({.name = "Odd",
          .rootFiles = {{huge + ".txt"},
                        {"line\nbreak\ttab.txt"},
                        {rtl},
                        {"bad\xFF\xFE.bin", 1, 45000.5, 32, huge}}});
  b.Close();
  StartOn(dir.File("odd.cd"));
  Choose(Child(tree, tree->CatalogIndex(), QStringLiteral("Odd")));
  ASSERT_EQ(list->rowCount(), 4);
  QStringList names = Names(list);
  for (const QString& n : names) EXPECT_LE(n.size(), ui::kMaxRowText + 1);
  EXPECT_TRUE(names.contains(QStringLiteral("line\u23CEbreak\u2192tab.txt")));
  EXPECT_TRUE(names.contains(QString::fromUtf8(rtl.c_str())));
  EXPECT_TRUE(names.contains(QStringLiteral("bad\uFFFD\uFFFD.bin")));
  const QModelIndex bad =
      list->index(static_cast<int>(names.indexOf(QStringLiteral("bad\uFFFD\uFFFD.bin"))), 0);
  EXPECT_EQ(
      list->data(bad.siblingAtColumn(ui::FileListModel::kNotes), Qt::DisplayRole).toString().size(),
      ui::kMaxRowText + 1);
  Screenshot(window.get(), "frmBrowse2-odd-names");

  // A note of 100,000 characters is edited and kept whole.
  browse->details()->setFocus();
  browse->details()->setCurrentIndex(bad);
  ui::PropertiesDialog* props = OpenProperties("frmItemProperties");
  ASSERT_TRUE(props);
  auto* notes = props->findChild<QPlainTextEdit*>(QStringLiteral("txtNotes"));
  EXPECT_EQ(notes->toPlainText().size(), 100000);
  notes->setPlainText(QString(100000, QLatin1Char('y')));
  Ok(props);
  Idle();
  ui::EntryRow row;
  ASSERT_TRUE(
      ui::CatalogReads::Entry(
          *session().writer(), NodeKind::kFile,
          list
              ->Item(list->index(
                  static_cast<int>(Names(list).indexOf(QStringLiteral("bad\uFFFD\uFFFD.bin"))), 0))
              .id,
          &row)
          .ok());
  EXPECT_EQ(row.notes, std::string(100000, 'y'));
}

TEST_F(ItemsTest, TraditionalViewListsEveryDiscAndBrowsesTheChosenOne) {
  const Sample s = BuildSample(dir.File("s.cd"));
  StartOn(dir.File("s.cd"));
  Trigger("mnuViewExplorer");  // off: the traditional view
  Idle();
  EXPECT_EQ(SettingsStore::GetText("Startup", "ViewModeExplorer"), "False");
  auto* view = qobject_cast<ui::TraditionalView*>(window->activeView());
  ASSERT_TRUE(view);
  ui::DiscTableModel* discs = view->discModel();
  EXPECT_EQ(Names(discs), (QStringList{"Backup", "Holiday", "Kind of Blue - Miles"}));
  EXPECT_EQ(Names(discs, {}, ui::DiscTableModel::kCategory),
            (QStringList{"", "Photos", "Music / Jazz"}));
  EXPECT_EQ(Names(discs, {}, ui::DiscTableModel::kMediaType),
            (QStringList{"Fixed disk", "Fixed disk", "Audio CD"}));
  view->discs()->setCurrentIndex(discs->IndexOf(s.holiday));
  Idle();
  ui::FileListModel* browseModel = view->browseModel();
  EXPECT_EQ(Names(browseModel), (QStringList{"a", "c", "readme.txt"}));
  view->browse()->expand(browseModel->index(0, 0));
  Idle();
  EXPECT_EQ(Names(browseModel, browseModel->index(0, 0)),
            (QStringList{"b", "pack.zip", "photo9.jpg", "photo10.jpg", "song.mp3"}));
  Screenshot(window.get(), "frmCdList");

  // F2 renames the disc in place.
  view->discs()->setFocus();
  QTest::keyClick(view->discs(), Qt::Key_F2);
  auto* editor = view->discs()->findChild<QLineEdit*>();
  ASSERT_TRUE(editor);
  editor->setText(QStringLiteral("Summer 2023"));
  QTest::keyClick(editor, Qt::Key_Return);
  Idle();
  EXPECT_EQ(discs->DiscById(s.holiday)->name, "Summer 2023");
  EXPECT_EQ(view->currentItem().id, s.holiday) << "the disc stays chosen";
  // The explorer again.
  Trigger("mnuViewExplorer");
  EXPECT_TRUE(qobject_cast<ui::frmBrowse2*>(window->activeView()));
}

TEST_F(ItemsTest, CategoryListFilesTheChosenDisc) {
  const Sample s = BuildSample(dir.File("s.cd"));
  StartOn(dir.File("s.cd"));
  Choose(Child(tree, tree->CatalogIndex(), QStringLiteral("Backup")));
  Trigger("mnuCdCategories");
  auto* dialog = Find<ui::frmCategories>("frmCategories");
  ASSERT_TRUE(dialog);
  Idle();
  QTreeWidget* cats = dialog->tree();
  ASSERT_EQ(cats->topLevelItemCount(), 1);
  QTreeWidgetItem* root = cats->topLevelItem(0);
  ASSERT_EQ(root->childCount(), 2);
  EXPECT_EQ(root->child(0)->child(0)->text(0), QStringLiteral("Jazz"));
  cats->setCurrentItem(root->child(0)->child(0));
  Screenshot(dialog, "frmCategories");
  Ok(dialog);
  Idle();
  EXPECT_EQ(tree->Disc(s.backup)->category, s.jazz);
}

TEST_F(ItemsTest, ListStylesAndAFolderRename) {
  const Sample s = BuildSample(dir.File("s.cd"));
  StartOn(dir.File("s.cd"));
  Choose(FolderA());
  Trigger("mnuViewLargeIcons");
  EXPECT_EQ(browse->list(), browse->icons());
  EXPECT_EQ(browse->icons()->viewMode(), QListView::IconMode);
  Screenshot(window.get(), "frmBrowse2-icons");
  Trigger("popExpListViewDetails");
  EXPECT_EQ(browse->list(), browse->details());
  EXPECT_TRUE(Action("mnuViewDetails")->isChecked());

  // A folder rename rewrites the paths below it: the tree still finds "b".
  browse->tree()->setFocus();
  Trigger("popExpCatRename");
  auto* editor = browse->tree()->findChild<QLineEdit*>();
  ASSERT_TRUE(editor);
  editor->setText(QStringLiteral("alpha"));
  QTest::keyClick(editor, Qt::Key_Return);
  Idle();
  const QModelIndex alpha = Child(tree, Holiday(), QStringLiteral("alpha"));
  ASSERT_TRUE(alpha.isValid()) << Names(tree, Holiday()).join(QLatin1Char(',')).toStdString();
  EXPECT_EQ(tree->Item(alpha).id, s.folderA);
  Expand(alpha);
  EXPECT_EQ(Names(tree, alpha), QStringList{"b"});
  editor = nullptr;
  // A backslash would break the paths: refused.
  Choose(alpha);
  browse->tree()->setFocus();
  Trigger("popExpCatRename");
  editor = browse->tree()->findChild<QLineEdit*>();
  ASSERT_TRUE(editor);
  editor->setText(QStringLiteral("x\\y"));
  QTest::keyClick(editor, Qt::Key_Return);
  Idle();
  EXPECT_EQ(prompt.LastText(), kFolderNameRefusal);
}

}  // namespace
}  // namespace gorvan::test
