#pragma once
// frmBrowse2: the explorer view. On the left the catalog's tree (categories,
// discs, folders: CatalogTreeModel), on the right the list of what the chosen
// item holds (FileListModel) in one of four styles — large icons, small
// icons, list, details — as a file manager shows a folder. The pop-up menus
// popExp (tree) and popExpList (list) are the main window's.
//
// Every edit goes through CatalogEdits (the catalog's rules and messages);
// the view then reads the catalog again and puts back what was expanded and
// chosen. frmBrowse2.cpp holds the layout, loading and navigation;
// frmBrowse2Commands.cpp the commands on the current item.

#include <QList>
#include <QPointer>
#include <memory>

#include "ui/explorer/CatalogView.h"
#include "ui/session/CatalogEdits.h"
#include "ui/session/CatalogJob.h"

class QLabel;
class QListView;
class QMenu;
class QModelIndex;
class QSplitter;
class QStackedWidget;
class QTreeView;
class QAbstractItemView;

namespace gorvan::ui {

class CatalogSession;
class CatalogTreeModel;
class FileListModel;
class frmMenu;

class frmBrowse2 : public CatalogView {
  Q_OBJECT

 public:
  explicit frmBrowse2(frmMenu& menu);
  ~frmBrowse2() override;

  CatalogItem currentItem() const override;
  void SetListStyle(ListStyle style) override;
  void RenameCurrent() override;
  void DeleteCurrent() override;
  void PropertiesOfCurrent() override;
  void LaunchCurrent() override;
  void NewCategory() override;
  void Reveal(const RevealTarget& target) override;

  QTreeView* tree() const { return tree_; }
  QTreeView* details() const { return details_; }
  QListView* icons() const { return icons_; }
  CatalogTreeModel* treeModel() const { return treeModel_; }
  FileListModel* listModel() const { return listModel_; }
  // The list widget of the current style.
  QAbstractItemView* list() const;
  // Chooses an item in the tree (expanding what leads to it) and shows what
  // it holds in the list; false when it is not in the tree.
  bool Navigate(const CatalogItem& item);

 private:
  // frmBrowse2.cpp
  void Load();
  void Changed(CatalogChange change);
  void ShowContents(const QModelIndex& index);
  void ShowPath(const QModelIndex& index);
  void SaveState();
  void RestoreState();
  void ListActivated(const QModelIndex& index);
  void TreeActivated(const QModelIndex& index);
  void ListSelectionChanged();
  void ApplyFont();
  bool ListHasFocus() const;
  // Takes the next step towards reveal_ that the rows read so far allow.
  void AdvanceReveal();

  // frmBrowse2Commands.cpp
  void ConnectCommands();
  void ShowPopup(QAbstractItemView* view, const QPoint& pos, bool list);
  void Rename(const CatalogItem& item, const QString& name);
  void Move(const CatalogItem& dragged, const CatalogItem& target);

  frmMenu& menu_;
  CatalogSession& session_;
  CatalogEdits edits_;
  CatalogTreeModel* treeModel_;
  FileListModel* listModel_;
  QTreeView* tree_;
  QTreeView* details_;
  QListView* icons_;
  QStackedWidget* stack_;
  QLabel* path_;
  QSplitter* splitter_;
  ListStyle style_ = ListStyle::kDetails;
  bool listFocus_ = false;  // the list, not the tree, was used last
  // What to put back after the catalog was read again: (kind, id) keys.
  QList<quint64> expand_;
  quint64 current_ = 0;
  quint64 listCurrent_ = 0;
  int32_t editCategory_ = 0;  // a new category to rename in place once shown
  int32_t showDisc_ = 0;      // a disc whose list waits for its tree
  RevealTarget reveal_;       // what Reveal was asked to show (kNone: nothing)
};

}  // namespace gorvan::ui
