#include "ui/explorer/TraditionalView.h"

#include <QApplication>
#include <QHeaderView>
#include <QMenu>
#include <QShortcut>
#include <QSplitter>
#include <QTreeView>
#include <QVBoxLayout>
#include <cmath>

#include "catalog/CatalogRules.h"
#include "ui/dialogs/PropertiesDialog.h"
#include "ui/explorer/DiscTableModel.h"
#include "ui/explorer/FileListModel.h"
#include "ui/explorer/Launcher.h"
#include "ui/explorer/ListReveal.h"
#include "ui/main/frmMenu.h"
#include "ui/session/CatalogSession.h"
#include "ui/session/ViewLoader.h"
#include "ui/widgets/CatalogFont.h"
#include "ui/widgets/ThemeIcons.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {

TraditionalView::TraditionalView(frmMenu& menu)
    : menu_(menu), session_(menu.session()), edits_(menu.session()) {
  setObjectName(QStringLiteral("frmCdList"));
  setWindowIcon(ThemeIcons::Named("view-list"));
  discModel_ = new DiscTableModel(session_, this);
  discs_ = new QTreeView;
  discs_->setObjectName(QStringLiteral("lvwDiscs"));
  discs_->setModel(discModel_);
  discs_->setRootIsDecorated(false);
  discs_->setUniformRowHeights(true);
  discs_->setSortingEnabled(true);
  discs_->sortByColumn(DiscTableModel::kName, Qt::AscendingOrder);
  discs_->setAllColumnsShowFocus(true);
  discs_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  discs_->setContextMenuPolicy(Qt::CustomContextMenu);
  const std::vector<int> widths = DiscTableModel::DefaultWidths(fontMetrics());
  for (int c = 0; c < DiscTableModel::kColumnCount; ++c) {
    discs_->header()->resizeSection(c, widths[static_cast<size_t>(c)]);
  }

  browseModel_ = new FileListModel(session_, this);
  browseModel_->SetExpandFolders(true);
  browseModel_->SetDragDrop(false);
  browse_ = new QTreeView;
  browse_->setObjectName(QStringLiteral("lvwBrowse"));
  browse_->setModel(browseModel_);
  browse_->setUniformRowHeights(true);
  browse_->setSortingEnabled(true);
  browse_->sortByColumn(FileListModel::kName, Qt::AscendingOrder);
  browse_->setAllColumnsShowFocus(true);
  browse_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  browse_->setContextMenuPolicy(Qt::CustomContextMenu);
  const std::vector<int> browseWidths = FileListModel::DefaultWidths(fontMetrics());
  for (int c = 0; c < FileListModel::kColumnCount; ++c) {
    browse_->header()->resizeSection(c, browseWidths[static_cast<size_t>(c)]);
  }

  auto* splitter = new QSplitter(Qt::Vertical);
  splitter->addWidget(discs_);
  splitter->addWidget(browse_);
  splitter->setStretchFactor(0, 1);
  splitter->setStretchFactor(1, 2);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(splitter);

  connect(discs_->selectionModel(), &QItemSelectionModel::currentChanged, this,
          [this](const QModelIndex& at) {
            browseFocus_ = false;
            const CatalogItem item = discModel_->Item(at);
            ShowDisc(item.id);
            const DiscRow* d = discModel_->DiscById(item.id);
            Q_EMIT selectionChanged(d ? 1 : 0, d ? d->totalSize : 0);
          });
  connect(discModel_, &DiscTableModel::reloaded, this, [this] {
    QModelIndex at = discModel_->IndexOf(keepDisc_);
    if (!at.isValid() && discModel_->rowCount() > 0) at = discModel_->index(0, 0);
    keepDisc_ = 0;
    if (at.isValid()) {
      discs_->setCurrentIndex(at);
    } else {
      ShowDisc(0);
    }
    AdvanceReveal();
  });
  connect(browseModel_, &FileListModel::folderLoaded, this, &TraditionalView::AdvanceReveal);
  // A folder's rows arrive after its row was opened.
  connect(browseModel_, &FileListModel::rowsInserted, this, &TraditionalView::AdvanceReveal,
          Qt::QueuedConnection);
  connect(discModel_, &DiscTableModel::renameRequested, this,
          [this](const CatalogItem& item, const QString& name) { edits_.Rename(item, name); });
  connect(browse_, &QTreeView::activated, this, [this](const QModelIndex& at) {
    const EntryRow* r = browseModel_->Row(at);
    if (r && (r->kind == NodeKind::kFile || r->kind == NodeKind::kArchiveMember)) {
      browseFocus_ = true;
      LaunchCurrent();
    }
  });
  connect(browse_->selectionModel(), &QItemSelectionModel::currentChanged, this,
          [this](const QModelIndex& at) {
            browseFocus_ = true;
            if (const EntryRow* r = browseModel_->Row(at))
              Q_EMIT selectionChanged(1, std::fabs(r->size));
          });
  connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
    if (now == discs_) browseFocus_ = false;
    if (now == browse_) browseFocus_ = true;
  });
  connect(discs_, &QWidget::customContextMenuRequested, this,
          [this](const QPoint& pos) { ShowPopup(discs_, pos); });
  connect(browse_, &QWidget::customContextMenuRequested, this,
          [this](const QPoint& pos) { ShowPopup(browse_, pos); });
  for (QTreeView* v : {discs_, browse_}) {
    auto* key = new QShortcut(QKeySequence(Qt::SHIFT | Qt::Key_F10), v, nullptr, nullptr,
                              Qt::WidgetShortcut);
    connect(key, &QShortcut::activated, this,
            [this, v] { ShowPopup(v, v->visualRect(v->currentIndex()).center()); });
  }

  auto on = [this](const char* name, bool browse, void (TraditionalView::*handler)()) {
    QAction* a = menu_.command(QLatin1String(name));
    connect(a, &QAction::triggered, this, [this, browse, handler] {
      browseFocus_ = browse;
      (this->*handler)();
    });
    return a;
  };
  on("popCdDelete", false, &TraditionalView::DeleteCurrent);
  // F2 renames the chosen disc in place ("Edit..." opens its whole entry).
  auto* rename =
      new QShortcut(QKeySequence(Qt::Key_F2), discs_, nullptr, nullptr, Qt::WidgetShortcut);
  connect(rename, &QShortcut::activated, this, [this] {
    browseFocus_ = false;
    RenameCurrent();
  });
  on("popCdProperties", false, &TraditionalView::PropertiesOfCurrent);
  on("popBrowse1Launch", true, &TraditionalView::LaunchCurrent);
  on("popBrowse1Properties", true, &TraditionalView::PropertiesOfCurrent);

  connect(&session_, &CatalogSession::opened, this, &TraditionalView::Load);
  connect(&session_, &CatalogSession::closed, this, [this] {
    discModel_->Clear();
    browseModel_->Clear();
    trees_.clear();
    shownDisc_ = 0;
  });
  connect(&session_, &CatalogSession::changed, this, &TraditionalView::Changed);
  if (session_.isOpen()) Load();
}

void TraditionalView::Load() {
  const QFont font = CatalogFont::For(session_.fontText());
  discModel_->SetFont(font);
  browseModel_->SetFont(font);
  trees_.clear();
  discModel_->Reload();
}

void TraditionalView::Changed(CatalogChange change) {
  switch (change) {
    case CatalogChange::kNothing:
      return;
    case CatalogChange::kEntries:
      ShowDisc(shownDisc_);
      return;
    case CatalogChange::kStructure:
    case CatalogChange::kEverything:
      trees_.clear();
      [[fallthrough]];
    case CatalogChange::kHeader:
      keepDisc_ = shownDisc_;
      shownDisc_ = 0;
      Load();
      return;
  }
}

void TraditionalView::ShowDisc(int32_t discId) {
  shownDisc_ = discId;
  if (discId == 0) {
    browseModel_->Clear();
    return;
  }
  if (auto tree = trees_.value(discId)) {
    browseModel_->ShowFolder(tree, tree->root());
    return;
  }
  browseModel_->Clear();
  using Result = std::shared_ptr<const DiscTree>;
  session_.loader().Load<Result>(
      this, "TraditionalView.tree." + std::to_string(reinterpret_cast<uintptr_t>(this)),
      [discId](classData& d, const std::stop_token&) {
        auto tree = std::make_shared<DiscTree>();
        (void)tree->Build(d.file(), discId);
        return Result(std::move(tree));
      },
      [this, discId](Result& tree) { TreeArrived(discId, tree); });
}

void TraditionalView::TreeArrived(int32_t discId, std::shared_ptr<const DiscTree> tree) {
  trees_.insert(discId, tree);
  if (discId == shownDisc_) browseModel_->ShowFolder(tree, tree->root());
  AdvanceReveal();
}

void TraditionalView::Reveal(const RevealTarget& target) {
  reveal_ = target;
  AdvanceReveal();
}

void TraditionalView::AdvanceReveal() {
  const RevealTarget t = reveal_;
  if (t.kind == NodeKind::kNone || !discModel_->loaded()) return;
  const auto finish = [this] { reveal_ = RevealTarget{}; };
  const QModelIndex disc = discModel_->IndexOf(t.discId);
  if (!disc.isValid()) {
    // A disc a job has just made: chosen when the table has read the catalog
    // again.
    if (t.kind == NodeKind::kDisc) keepDisc_ = t.discId;
    return finish();
  }
  browseFocus_ = false;
  if (shownDisc_ != t.discId || discs_->currentIndex().row() != disc.row()) {
    discs_->setCurrentIndex(disc);
    discs_->scrollTo(disc);
  }
  if (t.kind == NodeKind::kDisc) {
    finish();
    discs_->setFocus();
    return;
  }
  const std::shared_ptr<const DiscTree> tree = trees_.value(t.discId);
  if (!tree) return;  // TreeArrived brings the next step
  // The browse list holds the disc's top folder's rows, each folder's rows under it.
  std::vector<ListReveal::Step> steps;
  const int32_t node = tree->Find(t.folderId);
  if (node == DiscTree::kNone) return finish();
  for (int32_t n = node; n != DiscTree::kNone && n != tree->root(); n = tree->parent(n))
    steps.emplace(steps.begin(), NodeKind::kFolder, tree->folderId(n));
  if (t.kind == NodeKind::kFile || t.kind == NodeKind::kArchiveMember)
    steps.emplace_back(NodeKind::kFile, t.fileId);
  if (t.kind == NodeKind::kArchiveMember) steps.emplace_back(NodeKind::kArchiveMember, t.memberId);
  if (steps.empty()) {
    // The disc's top folder: the disc is its row.
    finish();
    discs_->setFocus();
    return;
  }
  if (browseModel_->folderId() != tree->folderId(tree->root())) return;
  const ListReveal::Result r = ListReveal::Advance(browse_, browseModel_, steps);
  if (r == ListReveal::Result::kWaiting) return;
  finish();
  if (r == ListReveal::Result::kDone) browseFocus_ = true;
}

void TraditionalView::ShowPopup(QAbstractItemView* view, const QPoint& pos) {
  const QModelIndex at = view->indexAt(pos);
  if (at.isValid()) view->setCurrentIndex(at);
  browseFocus_ = view == browse_;
  if (QMenu* popup =
          menu_.popup(view == browse_ ? QStringLiteral("popBrowse1") : QStringLiteral("popCd"))) {
    popup->popup(view->viewport()->mapToGlobal(pos));
  }
}

bool TraditionalView::BrowseHasFocus() const {
  return browseFocus_ && browse_->currentIndex().isValid();
}

CatalogItem TraditionalView::currentItem() const {
  if (BrowseHasFocus()) return browseModel_->Item(browse_->currentIndex());
  return discModel_->Item(discs_->currentIndex());
}

void TraditionalView::RenameCurrent() {
  const CatalogItem item = currentItem();
  // The disc list edits disc names; the browse list holds no name to edit here.
  const std::string refusal = CatalogRules::CheckEdit(item.kind);
  if (!refusal.empty() || BrowseHasFocus()) {
    session_.prompt().Message(
        refusal.empty() ? CatalogRules::CheckRename(NodeKind::kFile) : refusal,
        PromptIcon::kWarning);
    return;
  }
  if (!session_.writer()) return;
  discs_->setFocus();
  discs_->edit(discs_->currentIndex().siblingAtColumn(DiscTableModel::kName));
}

void TraditionalView::DeleteCurrent() {
  if (session_.writer()) edits_.Delete(currentItem());
}

void TraditionalView::PropertiesOfCurrent() {
  const CatalogItem item = currentItem();
  if (item.kind != NodeKind::kNone) PropertiesDialog::Open(session_, item, this);
}

void TraditionalView::LaunchCurrent() {
  const CatalogItem item = currentItem();
  const DiscRow* disc = discModel_->DiscById(item.kind == NodeKind::kNone ? 0 : item.discId);
  if (!disc) return;
  const std::shared_ptr<const DiscTree> tree = trees_.value(disc->id);
  int32_t folderNode = tree ? tree->root() : DiscTree::kNone;
  std::string file;
  if (BrowseHasFocus() && tree) {
    QModelIndex at = browse_->currentIndex().siblingAtColumn(0);
    if (item.kind == NodeKind::kArchiveMember) at = at.parent();
    const EntryRow* r = browseModel_->Row(at);
    if (r && r->kind == NodeKind::kFolder) {
      folderNode = tree->Find(r->id);
    } else if (r) {
      file = r->name;
      const EntryRow* folder = browseModel_->Row(at.parent());
      if (folder && folder->kind == NodeKind::kFolder) folderNode = tree->Find(folder->id);
    }
  }
  Launcher::Launch(session_, *disc, tree.get(), folderNode, file);
}

void TraditionalView::NewCategory() {
  if (session_.writer()) edits_.NewCategory(0);
}

}  // namespace gorvan::ui
