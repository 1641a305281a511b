// The search window's pop-up commands: showing a hit in each view, launch,
// properties, an archive's members and the column chooser.
#include <sys/stat.h>

#include <QDialog>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QTreeWidget>

#include "ui/SearchFixture.h"
#include "ui/dialogs/PropertiesDialog.h"
#include "ui/explorer/DiscTableModel.h"
#include "ui/explorer/Launcher.h"
#include "ui/explorer/TraditionalView.h"
#include "ui/search/FieldChooser.h"

namespace gorvan::test {
namespace {

using Model = ui::SearchResultsModel;

class SearchCommandsTest : public SearchTest {
 protected:
  // Searches and makes the row named name the current one.
  void Pick(ui::frmSearch* form, const std::string& text, const std::string& name) {
    Search(form, text);
    for (int r = 0; r < form->model()->rowCount(); ++r) {
      if (form->model()->RowAt(r).fileName == name) {
        form->list()->setCurrentIndex(form->model()->index(r, 0));
        return;
      }
    }
    ADD_FAILURE() << name << " not found by " << text;
  }
  // The explorer's chosen list row's name and the tree's current item.
  std::string ListName() {
    const ui::EntryRow* r = list->Row(browse->details()->currentIndex());
    return r ? r->name : std::string();
  }
};

TEST_F(SearchCommandsTest, AHitIsShownChosenInTheExplorer) {
  const Sample s = BuildSample(dir.File("s.cd"));
  StartOn(dir.File("s.cd"));
  ui::frmSearch* form = Open();
  ASSERT_TRUE(form);
  Check(form, "chkZip", true);

  // A file: its folder in the tree, the file in the list.
  Pick(form, "photo10", "photo10.jpg");
  Popup(form, "popSearchSyncDefault")->trigger();
  ASSERT_TRUE(WaitFor([&] { return ListName() == "photo10.jpg"; }));
  EXPECT_EQ(window->documents()->activeSubWindow()->widget(), browse);
  ui::CatalogItem item = tree->Item(browse->tree()->currentIndex());
  EXPECT_EQ(item.kind, NodeKind::kFolder);
  EXPECT_EQ(item.id, s.folderA);
  EXPECT_EQ(browse->currentItem().kind, NodeKind::kFile);

  // An archive member: under its archive, opened.
  window->documents()->setActiveSubWindow(qobject_cast<QMdiSubWindow*>(form->parentWidget()));
  Pick(form, "inner", "inner.txt");
  Popup(form, "popSearchSyncExplorer")->trigger();
  ASSERT_TRUE(WaitFor([&] { return ListName() == "inner.txt"; }));
  const QModelIndex member = browse->details()->currentIndex();
  EXPECT_EQ(list->Row(member.parent())->name, "pack.zip");
  EXPECT_EQ(browse->currentItem().kind, NodeKind::kArchiveMember);

  // A folder in a folder: chosen in the tree; a disc likewise.
  Pick(form, "b", "b");
  Popup(form, "popSearchSyncExplorer")->trigger();
  ASSERT_TRUE(WaitFor([&] { return tree->Item(browse->tree()->currentIndex()).id == s.folderAB; }));
  Pick(form, "Backup", "Backup");
  Popup(form, "popSearchSyncExplorer")->trigger();
  ASSERT_TRUE(WaitFor([&] { return tree->Item(browse->tree()->currentIndex()).id == s.backup; }));
  EXPECT_EQ(browse->currentItem().kind, NodeKind::kDisc);
  // Enter on a row does what popSearchSyncDefault does.
  Pick(form, "x.txt", "x.txt");
  emit form->list()->activated(form->list()->currentIndex());
  ASSERT_TRUE(WaitFor([&] { return ListName() == "x.txt"; }));
  EXPECT_EQ(tree->Item(browse->tree()->currentIndex()).id, s.folderAB);
}

TEST_F(SearchCommandsTest, AHitIsShownChosenInTheTraditionalView) {
  const Sample s = BuildSample(dir.File("s.cd"));
  StartOn(dir.File("s.cd"));
  ui::frmSearch* form = Open();
  ASSERT_TRUE(form);
  Check(form, "chkZip", true);
  Pick(form, "x.txt", "x.txt");
  Popup(form, "popSearchSyncTraditional")->trigger();
  ui::TraditionalView* view = Find<ui::TraditionalView>("frmCdList");
  ASSERT_TRUE(view);
  auto browseName = [view] {
    const ui::EntryRow* r = view->browseModel()->Row(view->browse()->currentIndex());
    return r ? r->name : std::string();
  };
  ASSERT_TRUE(WaitFor([&] { return browseName() == "x.txt"; }));
  EXPECT_EQ(view->discModel()->Item(view->discs()->currentIndex()).id, s.holiday);
  // x.txt lies in a\b: both folders were opened on the way.
  const QModelIndex at = view->browse()->currentIndex();
  EXPECT_EQ(view->browseModel()->Row(at.parent())->id, s.folderAB);
  EXPECT_EQ(view->browseModel()->Row(at.parent().parent())->id, s.folderA);
  EXPECT_EQ(view->currentItem().kind, NodeKind::kFile);
  // The explorer view mode stays as it was; both views are open.
  EXPECT_TRUE(window->explorerMode());

  window->documents()->setActiveSubWindow(qobject_cast<QMdiSubWindow*>(form->parentWidget()));
  Pick(form, "deep", "deep.doc");
  Popup(form, "popSearchSyncTraditional")->trigger();
  ASSERT_TRUE(WaitFor([&] { return browseName() == "deep.doc"; }));
  EXPECT_EQ(view->browseModel()->Row(view->browse()->currentIndex().parent())->name, "pack.zip");

  Pick(form, "KOB", "Kind of Blue");  // an audio disc is found by its album
  Popup(form, "popSearchSyncTraditional")->trigger();
  ASSERT_TRUE(WaitFor(
      [&] { return view->discModel()->Item(view->discs()->currentIndex()).id == s.album; }));
}

TEST_F(SearchCommandsTest, LaunchPropertiesArchiveMembersAndColumns) {
  const std::string medium = dir.File("medium");
  ASSERT_EQ(mkdir(medium.c_str(), 0755), 0);
  ASSERT_EQ(mkdir((medium + "/a").c_str(), 0755), 0);
  ASSERT_EQ(mkdir((medium + "/a/b").c_str(), 0755), 0);
  WriteFileBytes(medium + "/a/photo10.jpg", "jpg");
  WriteFileBytes(medium + "/a/pack.zip", "zip");
  BuildSample(dir.File("s.cd"), medium);
  std::vector<std::string> opened;
  ui::Launcher::SetOpener([&opened](const std::string& path) {
    opened.push_back(path);
    return true;
  });
  StartOn(dir.File("s.cd"));
  ui::frmSearch* form = Open();
  ASSERT_TRUE(form);
  Check(form, "chkZip", true);

  Pick(form, "photo10", "photo10.jpg");
  Popup(form, "popSearchLaunch")->trigger();
  Idle();
  Pick(form, "inner", "inner.txt");  // a member opens its archive
  Popup(form, "popSearchLaunch")->trigger();
  Idle();
  Pick(form, "b", "b");
  Popup(form, "popSearchLaunch")->trigger();
  Idle();
  EXPECT_EQ(opened, (std::vector<std::string>{medium + "/a/photo10.jpg", medium + "/a/pack.zip",
                                              medium + "/a/b"}));
  ui::Launcher::SetOpener({});

  Pick(form, "photo10", "photo10.jpg");
  EXPECT_TRUE(Popup(form, "popSearchViewZip")->isEnabled());
  // Alt+Return in the list: the row's properties, not the hidden view's item;
  // Delete does nothing here.
  form->list()->setFocus();
  const size_t asked = prompt.asked.size();
  QTest::keyClick(form->list(), Qt::Key_Delete);
  QTest::keyClick(form->list(), Qt::Key_F2);
  Trigger("mnuCdDelete");  // the menu's Delete neither: the view behind keeps its item
  Idle();
  EXPECT_EQ(prompt.asked.size(), asked);
  QTest::keyClick(form->list(), Qt::Key_Return, Qt::AltModifier);
  auto* props = Find<ui::PropertiesDialog>("frmItemProperties");
  ASSERT_TRUE(props);
  ASSERT_TRUE(WaitFor([props] { return props->loaded(); }));
  EXPECT_TRUE(props->windowTitle().contains(QStringLiteral("photo10.jpg")));
  props->close();
  Idle();

  // An archive's members, from the archive or from one of them.
  Pick(form, "inner", "inner.txt");
  Popup(form, "popSearchViewZip")->trigger();
  Idle();
  props = Find<ui::PropertiesDialog>("frmItemProperties");
  ASSERT_TRUE(props);
  ASSERT_TRUE(WaitFor([props] { return props->loaded(); }));
  ASSERT_TRUE(props->table());
  EXPECT_EQ(props->table()->topLevelItemCount(), 2);
  props->close();
  Idle();
  Pick(form, "photo9", "photo9.jpg");
  Popup(form, "popSearchViewZip")->trigger();
  Idle();
  EXPECT_EQ(prompt.LastText(), "\"photo9.jpg\" holds no catalogued archive members.");
  // A disc or folder has no members to view.
  Pick(form, "Holiday", "Holiday");
  EXPECT_FALSE(Popup(form, "popSearchViewZip")->isEnabled());

  // The column chooser hides and shows columns.
  Popup(form, "popSearchFieldChooser")->trigger();
  auto* chooser = Find<ui::FieldChooser>("frmFieldChooser");
  ASSERT_TRUE(chooser);
  chooser->box(Model::kCdName)->setChecked(false);
  chooser->box(Model::kInternalDate)->setChecked(true);
  Screenshot(chooser, "frmFieldChooser");
  chooser->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click();
  EXPECT_TRUE(form->list()->horizontalHeader()->isSectionHidden(Model::kCdName));
  EXPECT_FALSE(form->list()->horizontalHeader()->isSectionHidden(Model::kInternalDate));
  EXPECT_GT(form->list()->horizontalHeader()->sectionSize(Model::kInternalDate), 0);
  // Every box cleared: nothing to show, OK refuses.
  Idle();
  Popup(form, "popSearchFieldChooser")->trigger();
  chooser = Find<ui::FieldChooser>("frmFieldChooser");
  ASSERT_TRUE(chooser);
  for (int c = 0; c < Model::kColumnCount; ++c) chooser->box(c)->setChecked(false);
  EXPECT_FALSE(chooser->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->isEnabled());
  chooser->reject();
}

}  // namespace
}  // namespace gorvan::test
