#pragma once
// TraditionalView: the traditional view of the catalog — a table of every disc
// (DiscTableModel, pop-up popCd) above a browse list of the chosen disc's
// folders and files (FileListModel with folders that open in place, pop-up
// popBrowse1).

#include <QHash>
#include <memory>

#include "catalog/DiscTree.h"
#include "ui/explorer/CatalogView.h"
#include "ui/session/CatalogEdits.h"
#include "ui/session/CatalogJob.h"

class QAbstractItemView;
class QTreeView;

namespace gorvan::ui {

class CatalogSession;
class DiscTableModel;
class FileListModel;
class frmMenu;

class TraditionalView : public CatalogView {
  Q_OBJECT

 public:
  explicit TraditionalView(frmMenu& menu);

  CatalogItem currentItem() const override;
  void RenameCurrent() override;
  void DeleteCurrent() override;
  void PropertiesOfCurrent() override;
  void LaunchCurrent() override;
  void NewCategory() override;
  void Reveal(const RevealTarget& target) override;

  QTreeView* discs() const { return discs_; }
  QTreeView* browse() const { return browse_; }
  DiscTableModel* discModel() const { return discModel_; }
  FileListModel* browseModel() const { return browseModel_; }

 private:
  void Load();
  void Changed(CatalogChange change);
  void ShowDisc(int32_t discId);
  void TreeArrived(int32_t discId, std::shared_ptr<const DiscTree> tree);
  void ShowPopup(QAbstractItemView* view, const QPoint& pos);
  bool BrowseHasFocus() const;
  // Takes the next step towards reveal_ that the rows read so far allow.
  void AdvanceReveal();

  frmMenu& menu_;
  CatalogSession& session_;
  CatalogEdits edits_;
  DiscTableModel* discModel_;
  FileListModel* browseModel_;
  QTreeView* discs_;
  QTreeView* browse_;
  QHash<int32_t, std::shared_ptr<const DiscTree>> trees_;
  int32_t shownDisc_ = 0;
  int32_t keepDisc_ = 0;  // the disc to choose again after a reload
  bool browseFocus_ = false;
  RevealTarget reveal_;  // what Reveal was asked to show (kNone: nothing)
};

}  // namespace gorvan::ui
