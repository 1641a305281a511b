// frmBrowse2: the commands on the current item — the pop-up menus, rename in
// place, delete, new category, drag and drop, properties and launch.
#include <QListView>
#include <QMenu>
#include <QShortcut>
#include <QTreeView>

#include "catalog/CatalogRules.h"
#include "ui/dialogs/PropertiesDialog.h"
#include "ui/explorer/CatalogTreeModel.h"
#include "ui/explorer/FileListModel.h"
#include "ui/explorer/Launcher.h"
#include "ui/explorer/frmBrowse2.h"
#include "ui/main/frmMenu.h"
#include "ui/session/CatalogSession.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {

void frmBrowse2::ConnectCommands() {
  auto on = [this](const char* name, bool list, auto handler) {
    QAction* a = menu_.command(QLatin1String(name));
    connect(a, &QAction::triggered, this, [this, list, handler] {
      listFocus_ = list;
      (this->*handler)();
    });
    return a;
  };
  for (bool list : {false, true}) {
    const QString prefix = list ? QStringLiteral("popExpList") : QStringLiteral("popExp");
    auto name = [&prefix](const char* rest) { return (prefix + QLatin1String(rest)).toLatin1(); };
    const QByteArray launch = name("Launch"), add = name("CatAdd"), remove = name("CatRemove"),
                     rename = name("CatRename"), properties = name("CatProperties");
    on(launch.constData(), list, &frmBrowse2::LaunchCurrent);
    QAction* newCategory = on(add.constData(), list, &frmBrowse2::NewCategory);
    on(remove.constData(), list, &frmBrowse2::DeleteCurrent);
    QAction* renameAction = on(rename.constData(), list, &frmBrowse2::RenameCurrent);
    on(properties.constData(), list, &frmBrowse2::PropertiesOfCurrent);
    // F2 and Insert work where the pop-up's items apply.
    for (QWidget* w : list ? QList<QWidget*>{details_, icons_} : QList<QWidget*>{tree_}) {
      w->addAction(renameAction);
      w->addAction(newCategory);
    }
  }
  connect(tree_, &QWidget::customContextMenuRequested, this,
          [this](const QPoint& pos) { ShowPopup(tree_, pos, false); });
  for (QAbstractItemView* v :
       {static_cast<QAbstractItemView*>(details_), static_cast<QAbstractItemView*>(icons_)}) {
    connect(v, &QWidget::customContextMenuRequested, this,
            [this, v](const QPoint& pos) { ShowPopup(v, pos, true); });
  }
  // Shift+F10 opens the pop-up at the current item.
  for (QAbstractItemView* v :
       {static_cast<QAbstractItemView*>(tree_), static_cast<QAbstractItemView*>(details_),
        static_cast<QAbstractItemView*>(icons_)}) {
    auto* key = new QShortcut(QKeySequence(Qt::SHIFT | Qt::Key_F10), v, nullptr, nullptr,
                              Qt::WidgetShortcut);
    connect(key, &QShortcut::activated, this,
            [this, v] { ShowPopup(v, v->visualRect(v->currentIndex()).center(), v != tree_); });
  }
  connect(treeModel_, &CatalogTreeModel::renameRequested, this, &frmBrowse2::Rename);
  connect(listModel_, &FileListModel::renameRequested, this, &frmBrowse2::Rename);
  connect(treeModel_, &CatalogTreeModel::moveRequested, this, &frmBrowse2::Move);
}

void frmBrowse2::ShowPopup(QAbstractItemView* view, const QPoint& pos, bool list) {
  const QModelIndex at = view->indexAt(pos);
  if (at.isValid()) view->setCurrentIndex(at);
  listFocus_ = list;
  if (QMenu* popup = menu_.popup(list ? QStringLiteral("popExpList") : QStringLiteral("popExp"))) {
    popup->popup(view->viewport()->mapToGlobal(pos));
  }
}

void frmBrowse2::Rename(const CatalogItem& item, const QString& name) { edits_.Rename(item, name); }

void frmBrowse2::Move(const CatalogItem& dragged, const CatalogItem& target) {
  if (session_.writer()) edits_.Move(dragged, target);
}

void frmBrowse2::RenameCurrent() {
  const CatalogItem item = currentItem();
  const std::string refusal = CatalogRules::CheckRename(item.kind);
  if (!refusal.empty()) {
    session_.prompt().Message(refusal, PromptIcon::kWarning);
    return;
  }
  if (!session_.writer()) return;
  QAbstractItemView* view = ListHasFocus() ? list() : static_cast<QAbstractItemView*>(tree_);
  const QModelIndex at = view->currentIndex().siblingAtColumn(0);
  view->setFocus();
  view->edit(at);
}

void frmBrowse2::DeleteCurrent() {
  if (session_.writer()) edits_.Delete(currentItem());
}

void frmBrowse2::NewCategory() {
  if (!session_.writer()) return;
  const CatalogItem at = treeModel_->Item(tree_->currentIndex());
  const int32_t parent = at.kind == NodeKind::kCategory ? at.id : 0;
  const int32_t id = edits_.NewCategory(parent);
  if (id == 0) return;
  // The catalog is read again: the new category is then chosen and its name
  // edited in place.
  expand_.append(parent == 0 ? (static_cast<quint64>(NodeKind::kCatalog) << 32)
                             : (static_cast<quint64>(NodeKind::kCategory) << 32) |
                                   static_cast<quint32>(parent));
  current_ = (static_cast<quint64>(NodeKind::kCategory) << 32) | static_cast<quint32>(id);
  editCategory_ = id;
  listFocus_ = false;
}

void frmBrowse2::PropertiesOfCurrent() {
  const CatalogItem item = currentItem();
  if (item.kind == NodeKind::kNone) return;
  PropertiesDialog::Open(session_, item, this);
}

void frmBrowse2::LaunchCurrent() {
  const CatalogItem item = currentItem();
  if (item.kind == NodeKind::kNone) return;
  const DiscRow* disc = treeModel_->Disc(item.discId);
  std::shared_ptr<const DiscTree> tree = treeModel_->Tree(item.discId);
  if (!disc) {
    // A category or the catalog: nothing on a disc to open.
    session_.prompt().Message(Std(tr("Only a disc, a folder or a file can be launched.")),
                              PromptIcon::kInformation);
    return;
  }
  int32_t folderNode = DiscTree::kNone;
  std::string file;
  if (item.kind == NodeKind::kDisc) {
    folderNode = tree ? tree->root() : DiscTree::kNone;
  } else if (item.kind == NodeKind::kFolder && tree) {
    folderNode = tree->Find(item.id);
  } else if (tree && (item.kind == NodeKind::kFile || item.kind == NodeKind::kArchiveMember)) {
    // A file of the folder the list shows; a member opens its archive.
    folderNode = tree->Find(listModel_->folderId());
    QModelIndex at = list()->currentIndex().siblingAtColumn(0);
    if (item.kind == NodeKind::kArchiveMember) at = at.parent();
    if (const EntryRow* r = listModel_->Row(at)) file = r->name;
  }
  Launcher::Launch(session_, *disc, tree.get(), folderNode, file);
}

}  // namespace gorvan::ui
