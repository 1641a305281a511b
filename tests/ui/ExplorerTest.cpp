// The explorer view against the catalog it shows: the tree of categories,
// discs and folders, the file list with its columns, sorting and archive
// members, the edits under the catalog's rules (rename in place, delete, new
// category, drag and drop), properties, launch, a damaged catalog and names
// of every shape.
#include <QDesktopServices>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTreeView>
#include <QTreeWidget>
#include <QUrl>

#include "ui/ExplorerFixture.h"
#include "ui/dialogs/PropertiesDialog.h"
#include "ui/explorer/CatalogTreeModel.h"
#include "ui/explorer/FileListModel.h"
#include "ui/explorer/frmBrowse2.h"
#include "ui/main/StatusPanels.h"
#include "ui/main/frmMenu.h"
#include "ui/session/CatalogSession.h"
#include "ui/widgets/UiText.h"

namespace gorvan::test {
namespace {

TEST_F(ExplorerTest, TreeShowsCategoriesDiscsAndFoldersAsTheCatalogHoldsThem) {
  BuildSample(dir.File("s.cd"));
  StartOn(dir.File("s.cd"));
  const QModelIndex catalog = tree->CatalogIndex();
  EXPECT_EQ(tree->data(catalog, Qt::DisplayRole).toString(), QStringLiteral("Gorvan"));
  EXPECT_EQ(Names(tree, catalog), (QStringList{"Music", "Photos", "Backup"}));
  const QModelIndex music = Child(tree, catalog, QStringLiteral("Music"));
  EXPECT_EQ(Names(tree, music), QStringList{"Jazz"});
  EXPECT_EQ(Names(tree, Child(tree, music, QStringLiteral("Jazz"))),
            QStringList{"Kind of Blue - Miles"});

  // A disc's folders are read when it is first expanded.
  const QModelIndex holiday = Holiday();
  EXPECT_TRUE(tree->hasChildren(holiday));
  EXPECT_EQ(tree->rowCount(holiday), 0);
  Expand(holiday);
  EXPECT_EQ(Names(tree, holiday), (QStringList{"a", "c"}));
  const QModelIndex a = Child(tree, holiday, QStringLiteral("a"));
  EXPECT_TRUE(tree->hasChildren(a));
  EXPECT_FALSE(tree->hasChildren(Child(tree, holiday, QStringLiteral("c"))));
  Expand(a);
  EXPECT_EQ(Names(tree, a), QStringList{"b"});
  EXPECT_FALSE(tree->hasChildren(Child(tree, tree->CatalogIndex(), QStringLiteral("Backup"))));

  // The catalog chosen: its categories and uncategorised discs in the list.
  Choose(catalog);
  EXPECT_EQ(Names(list), (QStringList{"Music", "Photos", "Backup"}));
  EXPECT_EQ(window->panels().totalsText(), QStringLiteral("3 discs, 8 files"));
  Screenshot(window.get(), "frmBrowse2-catalog");
}

TEST_F(ExplorerTest, ListShowsAFoldersSubfoldersAndFilesWithTheirValues) {
  const Sample s = BuildSample(dir.File("s.cd"));
  StartOn(dir.File("s.cd"));
  Choose(FolderA());
  ASSERT_TRUE(list->loaded());
  EXPECT_EQ(list->folderId(), s.folderA);
  // Folders first, then files by name with numbers in number order.
  EXPECT_EQ(Names(list), (QStringList{"b", "pack.zip", "photo9.jpg", "photo10.jpg", "song.mp3"}));
  const QModelIndex photo10 = list->index(3, 0);
  auto cell = [&](int row, int column) {
    return list->data(list->index(row, column), Qt::DisplayRole).toString();
  };
  EXPECT_EQ(cell(3, ui::FileListModel::kNotes), QStringLiteral("the beach"));
  EXPECT_EQ(cell(3, ui::FileListModel::kAttributes), QStringLiteral("RA"));
  EXPECT_EQ(cell(3, ui::FileListModel::kDate), QStringLiteral("3/16/2023 12:00:00 PM"));
  EXPECT_EQ(
      list->data(list->index(3, ui::FileListModel::kSize), ui::FileListModel::kSortRole).toDouble(),
      3000);
  EXPECT_EQ(cell(4, ui::FileListModel::kTitle), QStringLiteral("Blue in Green"));
  EXPECT_EQ(cell(4, ui::FileListModel::kArtist), QStringLiteral("Bill"));
  // A folder's size is shown as an absolute value.
  EXPECT_EQ(
      list->data(list->index(0, ui::FileListModel::kSize), ui::FileListModel::kSortRole).toDouble(),
      1);
  EXPECT_EQ(list->Item(photo10).kind, NodeKind::kFile);

  // An archive's members are under it, read when it is expanded.
  const QModelIndex zip = list->index(1, 0);
  EXPECT_TRUE(list->hasChildren(zip));
  browse->details()->expand(zip);
  Idle();
  EXPECT_EQ(Names(list, zip), (QStringList{"deep.doc", "inner.txt"}));
  EXPECT_EQ(list->Item(list->index(0, 0, zip)).kind, NodeKind::kArchiveMember);

  // Sorting is the model's; containers stay first.
  browse->details()->sortByColumn(ui::FileListModel::kSize, Qt::DescendingOrder);
  EXPECT_EQ(Names(list), (QStringList{"b", "song.mp3", "photo10.jpg", "photo9.jpg", "pack.zip"}));
  EXPECT_EQ(Names(list, list->index(4, 0)), (QStringList{"deep.doc", "inner.txt"}))
      << "members follow their archive";

  // Choosing a folder in the list opens it, as a file manager does.
  emit browse->details()->activated(list->index(0, 0));
  Idle();
  EXPECT_EQ(list->folderId(), s.folderAB);
  EXPECT_EQ(Names(list), QStringList{"x.txt"});
  Screenshot(window.get(), "frmBrowse2-folder");
}

TEST_F(ExplorerTest, EditsFollowTheCatalogsRulesAndMessages) {
  const Sample s = BuildSample(dir.File("s.cd"));
  StartOn(dir.File("s.cd"));
  QTreeView* view = browse->tree();

  // Rename a category in place (F2).
  Choose(Child(tree, tree->CatalogIndex(), QStringLiteral("Music")));
  view->setFocus();
  Trigger("popExpCatRename");
  auto* editor = view->findChild<QLineEdit*>();
  ASSERT_TRUE(editor);
  editor->setText(QStringLiteral("Sounds"));
  QTest::keyClick(editor, Qt::Key_Return);
  Idle();
  EXPECT_EQ(Names(tree, tree->CatalogIndex()), (QStringList{"Sounds", "Photos", "Backup"}));
  EXPECT_EQ(tree->Item(view->currentIndex()).id, s.music) << "the renamed item stays chosen";

  // A file cannot be renamed; a category with children cannot be deleted.
  Choose(FolderA());
  browse->details()->setFocus();
  browse->details()->setCurrentIndex(list->index(2, 0));
  Trigger("popExpListCatRename");
  EXPECT_EQ(prompt.LastText(),
            "You can only edit container names, cd names, folder names or the data name");
  Trigger("popExpListCatRemove");
  EXPECT_EQ(prompt.LastText(), "You can only delete either a Category or a Folder Container");
  Choose(Child(tree, tree->CatalogIndex(), QStringLiteral("Sounds")));
  view->setFocus();
  Trigger("popExpCatRemove");
  EXPECT_EQ(
      prompt.LastText(),
      "Cannot delete category because it contains children!! remove all children and try again");

  // Delete a disc, with the user's agreement.
  Choose(Child(tree, tree->CatalogIndex(), QStringLiteral("Backup")));
  prompt.Answer(PromptAnswer::kNo);
  Trigger("mnuCdDelete");
  EXPECT_EQ(session().header().cdCount, 3);
  prompt.Answer(PromptAnswer::kYes);
  Trigger("mnuCdDelete");
  Idle();
  EXPECT_EQ(prompt.asked.back().text,
            "Delete \"Backup\" from the catalog, with its folders and files?");
  EXPECT_EQ(session().header().cdCount, 2);
  EXPECT_EQ(Names(tree, tree->CatalogIndex()), (QStringList{"Sounds", "Photos"}));

  // A new category waits in place for its name.
  Choose(Child(tree, tree->CatalogIndex(), QStringLiteral("Photos")));
  Trigger("popExpCatAdd");
  Idle();
  const QModelIndex fresh = view->currentIndex();
  EXPECT_EQ(tree->data(fresh, Qt::DisplayRole).toString(), QStringLiteral("New Category"));
  EXPECT_EQ(tree->Item(fresh.parent()).id, s.photos);
  editor = view->findChild<QLineEdit*>();
  ASSERT_TRUE(editor) << "the new category is being renamed";
  editor->setText(QStringLiteral("Summer"));
  QTest::keyClick(editor, Qt::Key_Return);
  Idle();
  EXPECT_EQ(Names(tree, Child(tree, tree->CatalogIndex(), QStringLiteral("Photos"))),
            (QStringList{"Summer", "Holiday"}));
  // Deleting an empty category asks under its own title.
  prompt.Answer(PromptAnswer::kYes);
  Trigger("popExpCatRemove");
  Idle();
  EXPECT_EQ(prompt.asked.back().title, "Remove category");
  EXPECT_EQ(session().header().catCount, 3);
}

TEST_F(ExplorerTest, DragAndDropMovesDiscsAndCategoriesAndRefusesEverythingElse) {
  const Sample s = BuildSample(dir.File("s.cd"));
  StartOn(dir.File("s.cd"));
  auto drop = [&](const QModelIndex& from, const QModelIndex& onto) {
    std::unique_ptr<QMimeData> data(tree->mimeData({from}));
    EXPECT_TRUE(tree->canDropMimeData(data.get(), Qt::MoveAction, -1, -1, onto));
    tree->dropMimeData(data.get(), Qt::MoveAction, -1, -1, onto);
    Idle();
  };
  auto top = [&](const char* name) {
    return Child(tree, tree->CatalogIndex(), QLatin1String(name));
  };
  drop(top("Backup"), top("Photos"));
  EXPECT_EQ(Names(tree, top("Photos")), (QStringList{"Holiday", "Backup"}));
  drop(top("Music"), top("Photos"));
  EXPECT_EQ(Names(tree, tree->CatalogIndex()), QStringList{"Photos"});

  const QModelIndex photos = Child(tree, tree->CatalogIndex(), QStringLiteral("Photos"));
  drop(photos, Child(tree, Child(tree, photos, QStringLiteral("Music")), QStringLiteral("Jazz")));
  EXPECT_EQ(prompt.LastText(), "A node can't be made a child of its own children.");
  drop(FolderA(), Child(tree, tree->CatalogIndex(), QStringLiteral("Photos")));
  EXPECT_EQ(prompt.LastText(),
            "Drag && Drop is only avaiable for the containers, and not the individual files or "
            "directories");
  drop(Child(tree, Child(tree, tree->CatalogIndex(), QStringLiteral("Photos")),
             QStringLiteral("Backup")),
       Holiday());
  EXPECT_EQ(prompt.LastText(), "You can only move a CD or folder between categories");
  // Back to the top level: onto the catalog itself.
  drop(Child(tree, Child(tree, tree->CatalogIndex(), QStringLiteral("Photos")),
             QStringLiteral("Music")),
       tree->CatalogIndex());
  EXPECT_EQ(Names(tree, tree->CatalogIndex()), (QStringList{"Music", "Photos"})) << "chain order";
  EXPECT_EQ(s.music, tree->Item(Child(tree, tree->CatalogIndex(), QStringLiteral("Music"))).id);

  // What other programs drop is refused without a word.
  QMimeData foreign;
  foreign.setUrls({QUrl::fromLocalFile(QString::fromStdString(dir.File("s.cd")))});
  const size_t asked = prompt.asked.size();
  EXPECT_FALSE(tree->canDropMimeData(&foreign, Qt::MoveAction, -1, -1, tree->CatalogIndex()));
  EXPECT_FALSE(tree->dropMimeData(&foreign, Qt::MoveAction, -1, -1, tree->CatalogIndex()));
  Idle();
  EXPECT_EQ(prompt.asked.size(), asked);
}

}  // namespace
}  // namespace gorvan::test
