// frmBrowse2: layout, loading and navigation.
#include "ui/explorer/frmBrowse2.h"

#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QListView>
#include <QSplitter>
#include <QStackedWidget>
#include <QStyle>
#include <QTreeView>
#include <QVBoxLayout>
#include <cmath>

#include "app/WindowLayout.h"
#include "ui/explorer/CatalogTreeModel.h"
#include "ui/explorer/FileListModel.h"
#include "ui/explorer/ListReveal.h"
#include "ui/main/frmMenu.h"
#include "ui/session/CatalogSession.h"
#include "ui/session/UiSettings.h"
#include "ui/widgets/CatalogFont.h"
#include "ui/widgets/ThemeIcons.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

constexpr const char* kListLayoutName = "lvwFiles";

quint64 KeyOf(NodeKind kind, int32_t id) {
  return (static_cast<quint64>(kind) << 32) | static_cast<quint32>(id);
}
quint64 KeyOf(const CatalogItem& item) { return KeyOf(item.kind, item.id); }
NodeKind KindOf(quint64 key) { return static_cast<NodeKind>(key >> 32); }
int32_t IdOf(quint64 key) { return static_cast<int32_t>(key & 0xffffffffu); }

std::vector<ColumnLayout> Columns(const QHeaderView* header) {
  std::vector<ColumnLayout> out;
  for (int i = 0; i < header->count(); ++i)
    out.push_back({header->sectionSize(i), header->visualIndex(i)});
  return out;
}

}  // namespace

frmBrowse2::frmBrowse2(frmMenu& menu)
    : menu_(menu), session_(menu.session()), edits_(menu.session()) {
  setObjectName(QStringLiteral("frmBrowse2"));
  setWindowIcon(ThemeIcons::Catalog());
  const bool dragDrop = UiSettings::Switch("lDragDrop");

  treeModel_ = new CatalogTreeModel(session_, this);
  treeModel_->SetDragDrop(dragDrop);
  tree_ = new QTreeView;
  tree_->setObjectName(QStringLiteral("tvwCatalog"));
  tree_->setModel(treeModel_);
  tree_->setHeaderHidden(true);
  tree_->setUniformRowHeights(true);
  tree_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  tree_->setExpandsOnDoubleClick(false);
  tree_->setContextMenuPolicy(Qt::CustomContextMenu);
  tree_->setDragEnabled(dragDrop);
  tree_->setAcceptDrops(dragDrop);
  tree_->setDropIndicatorShown(true);
  tree_->setDragDropMode(dragDrop ? QAbstractItemView::DragDrop : QAbstractItemView::NoDragDrop);
  tree_->setDefaultDropAction(Qt::MoveAction);

  listModel_ = new FileListModel(session_, this);
  listModel_->SetDragDrop(dragDrop);
  details_ = new QTreeView;
  details_->setObjectName(QStringLiteral("lvwFiles"));
  details_->setModel(listModel_);
  details_->setUniformRowHeights(true);
  details_->setRootIsDecorated(true);
  details_->setItemsExpandable(true);
  details_->setSortingEnabled(true);
  details_->sortByColumn(FileListModel::kName, Qt::AscendingOrder);
  details_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  details_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  details_->setExpandsOnDoubleClick(false);
  details_->setAllColumnsShowFocus(true);
  details_->setContextMenuPolicy(Qt::CustomContextMenu);
  details_->setDragEnabled(dragDrop);
  details_->setDragDropMode(dragDrop ? QAbstractItemView::DragOnly : QAbstractItemView::NoDragDrop);
  QHeaderView* header = details_->header();
  header->setStretchLastSection(false);
  header->setSectionsMovable(true);
  const int ch = fontMetrics().averageCharWidth();
  const std::vector<int> widths = FileListModel::DefaultWidths(fontMetrics());
  for (int c = 0; c < FileListModel::kColumnCount; ++c)
    header->resizeSection(c, widths[static_cast<size_t>(c)]);
  {
    const std::vector<ColumnLayout> restored =
        WindowLayout::RestoreColumns(kListLayoutName, Columns(header));
    for (int c = 0; c < static_cast<int>(restored.size()); ++c) {
      if (restored[static_cast<size_t>(c)].width > 0)
        header->resizeSection(c, restored[static_cast<size_t>(c)].width);
    }
    for (int c = 0; c < static_cast<int>(restored.size()); ++c) {
      const int to = restored[static_cast<size_t>(c)].order;
      if (to >= 0 && to < header->count() && header->visualIndex(c) != to)
        header->moveSection(header->visualIndex(c), to);
    }
  }

  icons_ = new QListView;
  icons_->setObjectName(QStringLiteral("lvwFilesIcons"));
  icons_->setModel(listModel_);
  icons_->setSelectionModel(details_->selectionModel());
  icons_->setUniformItemSizes(true);
  icons_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  icons_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  icons_->setContextMenuPolicy(Qt::CustomContextMenu);
  icons_->setResizeMode(QListView::Adjust);
  icons_->setDragEnabled(dragDrop);
  icons_->setDragDropMode(dragDrop ? QAbstractItemView::DragOnly : QAbstractItemView::NoDragDrop);

  stack_ = new QStackedWidget;
  stack_->addWidget(details_);
  stack_->addWidget(icons_);
  path_ = new QLabel;
  path_->setObjectName(QStringLiteral("lblPath"));
  path_->setTextFormat(Qt::PlainText);
  path_->setContentsMargins(ch / 2, ch / 4, ch / 2, ch / 4);
  auto* right = new QWidget;
  auto* rightLayout = new QVBoxLayout(right);
  rightLayout->setContentsMargins(0, 0, 0, 0);
  rightLayout->setSpacing(0);
  rightLayout->addWidget(path_);
  rightLayout->addWidget(stack_, 1);

  splitter_ = new QSplitter(Qt::Horizontal);
  splitter_->setObjectName(QStringLiteral("splBrowse"));
  splitter_->addWidget(tree_);
  splitter_->addWidget(right);
  splitter_->setStretchFactor(0, 1);
  splitter_->setStretchFactor(1, 3);
  splitter_->setSizes({ch * 40, ch * 120});
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(splitter_);

  connect(treeModel_, &CatalogTreeModel::reloaded, this, [this] {
    RestoreState();
    AdvanceReveal();
  });
  connect(treeModel_, &CatalogTreeModel::treeLoaded, this, [this](int32_t disc) {
    RestoreState();
    if (showDisc_ == disc) {
      showDisc_ = 0;
      ShowContents(tree_->currentIndex());
    }
    AdvanceReveal();
  });
  // An archive's members arrive after the archive's row was opened.
  connect(listModel_, &FileListModel::rowsInserted, this, &frmBrowse2::AdvanceReveal,
          Qt::QueuedConnection);
  connect(tree_->selectionModel(), &QItemSelectionModel::currentChanged, this,
          [this](const QModelIndex& current) {
            listFocus_ = false;
            ShowContents(current);
          });
  connect(tree_, &QTreeView::activated, this, &frmBrowse2::TreeActivated);
  connect(details_, &QTreeView::activated, this, &frmBrowse2::ListActivated);
  connect(icons_, &QListView::activated, this, &frmBrowse2::ListActivated);
  connect(listModel_, &FileListModel::folderLoaded, this, [this] {
    if (listCurrent_ != 0) {
      const QModelIndex at = listModel_->IndexOf(KindOf(listCurrent_), IdOf(listCurrent_));
      // Put back, not chosen by the user: the commands still act where they did.
      const bool focus = listFocus_;
      if (at.isValid()) details_->setCurrentIndex(at);
      listFocus_ = focus;
      listCurrent_ = 0;
    }
    ListSelectionChanged();
    AdvanceReveal();
  });
  // The view used last is the one the commands act on.
  connect(details_->selectionModel(), &QItemSelectionModel::currentChanged, this,
          [this](const QModelIndex& at) {
            if (at.isValid()) listFocus_ = true;
          });
  connect(details_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
          &frmBrowse2::ListSelectionChanged);
  connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
    if (now == tree_) listFocus_ = false;
    if (now == details_ || now == icons_) listFocus_ = true;
  });
  connect(&session_, &CatalogSession::opened, this, &frmBrowse2::Load);
  connect(&session_, &CatalogSession::closed, this, [this] {
    treeModel_->Clear();
    listModel_->Clear();
    path_->clear();
  });
  connect(&session_, &CatalogSession::changed, this, &frmBrowse2::Changed);
  ConnectCommands();
  if (session_.isOpen()) Load();
}

frmBrowse2::~frmBrowse2() {
  WindowLayout::SaveColumns(
      kListLayoutName, Columns(details_->header()),
      WindowLayout::RestoreColumns(kListLayoutName, Columns(details_->header())));
}

void frmBrowse2::Load() {
  expand_.clear();
  current_ = KeyOf(NodeKind::kCatalog, 0);
  expand_.append(current_);
  ApplyFont();
  treeModel_->Reload(false);
}

void frmBrowse2::ApplyFont() {
  const QFont font = CatalogFont::For(session_.fontText());
  treeModel_->SetFont(font);
  listModel_->SetFont(font);
}

void frmBrowse2::Changed(CatalogChange change) {
  switch (change) {
    case CatalogChange::kNothing:
      return;
    case CatalogChange::kEntries: {
      // Notes of folders or files: the list is read again where it stands.
      const QModelIndex at = details_->currentIndex();
      if (const EntryRow* r = listModel_->Row(at)) listCurrent_ = KeyOf(r->kind, r->id);
      ShowContents(tree_->currentIndex());
      return;
    }
    case CatalogChange::kHeader:
      ApplyFont();
      SaveState();
      treeModel_->Reload(true);
      return;
    case CatalogChange::kStructure:
    case CatalogChange::kEverything:
      SaveState();
      treeModel_->Reload(false);
      return;
  }
}

void frmBrowse2::SaveState() {
  expand_.clear();
  // Depth first, so that a parent is expanded before its children.
  std::vector<QModelIndex> stack{QModelIndex()};
  while (!stack.empty()) {
    const QModelIndex at = stack.back();
    stack.pop_back();
    if (at.isValid() && !tree_->isExpanded(at)) continue;
    if (at.isValid()) expand_.append(KeyOf(treeModel_->Item(at)));
    for (int r = treeModel_->rowCount(at) - 1; r >= 0; --r)
      stack.push_back(treeModel_->index(r, 0, at));
  }
  const CatalogItem current = treeModel_->Item(tree_->currentIndex());
  current_ = current.kind == NodeKind::kNone ? 0 : KeyOf(current);
  if (const EntryRow* r = listModel_->Row(details_->currentIndex()))
    listCurrent_ = KeyOf(r->kind, r->id);
}

void frmBrowse2::RestoreState() {
  // Keys whose nodes exist now are expanded; a disc's folders come when its
  // tree is read (treeLoaded calls this again).
  for (auto it = expand_.begin(); it != expand_.end();) {
    const QModelIndex at = treeModel_->IndexOf(KindOf(*it), IdOf(*it));
    if (!at.isValid()) {
      ++it;
      continue;
    }
    tree_->expand(at);
    it = expand_.erase(it);
  }
  if (current_ != 0) {
    const QModelIndex at = treeModel_->IndexOf(KindOf(current_), IdOf(current_));
    if (at.isValid()) {
      current_ = 0;
      tree_->setCurrentIndex(at);
      tree_->scrollTo(at);
      const CatalogItem item = treeModel_->Item(at);
      if (editCategory_ != 0 && item.kind == NodeKind::kCategory && item.id == editCategory_) {
        // A new category waits in place for its name.
        editCategory_ = 0;
        tree_->edit(at);
      }
    }
  }
  if (!tree_->currentIndex().isValid() && treeModel_->loaded()) {
    const QModelIndex catalog = treeModel_->CatalogIndex();
    // An item that is gone (or a new catalog): the catalog itself.
    if (expand_.isEmpty() || current_ == 0) tree_->setCurrentIndex(catalog);
  }
}

void frmBrowse2::ShowContents(const QModelIndex& index) {
  ShowPath(index);
  const CatalogItem item = treeModel_->Item(index);
  switch (item.kind) {
    case NodeKind::kCatalog:
    case NodeKind::kCategory:
      listModel_->ShowRows(treeModel_->ContainerRows(index));
      break;
    case NodeKind::kDisc:
      if (auto tree = treeModel_->Tree(item.id)) {
        listModel_->ShowFolder(tree, tree->root());
      } else {
        listModel_->Clear();
        showDisc_ = item.id;
        treeModel_->LoadTree(item.id);
      }
      break;
    case NodeKind::kFolder:
      listModel_->ShowFolder(treeModel_->Tree(item.discId), treeModel_->FolderNode(index));
      break;
    default:
      listModel_->Clear();
  }
  // The tree's item is the selection until rows of the list are chosen.
  double bytes = -1;
  if (item.kind == NodeKind::kDisc) {
    if (const DiscRow* d = treeModel_->Disc(item.id)) bytes = d->totalSize;
  }
  Q_EMIT selectionChanged(item.kind == NodeKind::kNone ? 0 : 1, bytes);
}

void frmBrowse2::ShowPath(const QModelIndex& index) {
  QStringList parts;
  for (QModelIndex at = index; at.isValid(); at = at.parent()) {
    parts.prepend(treeModel_->data(at, Qt::DisplayRole).toString());
  }
  path_->setText(parts.join(QStringLiteral(" / ")));
}

bool frmBrowse2::Navigate(const CatalogItem& item) {
  QModelIndex at;
  if (item.kind == NodeKind::kFolder) {
    at = treeModel_->RevealFolder(item.discId, item.id);
  } else {
    at = treeModel_->IndexOf(item.kind, item.id);
  }
  if (!at.isValid()) return false;
  for (QModelIndex up = at.parent(); up.isValid(); up = up.parent()) tree_->expand(up);
  tree_->setCurrentIndex(at);
  tree_->scrollTo(at);
  return true;
}

void frmBrowse2::Reveal(const RevealTarget& target) {
  reveal_ = target;
  AdvanceReveal();
}

void frmBrowse2::AdvanceReveal() {
  const RevealTarget t = reveal_;
  if (t.kind == NodeKind::kNone || !treeModel_->loaded()) return;
  const auto finish = [this] { reveal_ = RevealTarget{}; };
  const CatalogItem disc{NodeKind::kDisc, t.discId, t.discId, {}, false};
  if (!treeModel_->Disc(t.discId)) {
    // A disc a job has just made: a reload on its way makes it current once
    // its node exists.
    if (t.kind == NodeKind::kDisc) current_ = KeyOf(disc);
    return finish();
  }
  if (t.kind == NodeKind::kDisc) {
    finish();
    Navigate(disc);
    tree_->setFocus();
    return;
  }
  const std::shared_ptr<const DiscTree> discTree = treeModel_->Tree(t.discId);
  if (!discTree) {
    // treeLoaded brings the next step.
    treeModel_->LoadTree(t.discId);
    return;
  }
  const int32_t node = discTree->Find(t.folderId);
  if (node == DiscTree::kNone) {
    finish();
    Navigate(disc);
    return;
  }
  // A disc stands for its top folder in the tree.
  const CatalogItem folder = node == discTree->root()
                                 ? disc
                                 : CatalogItem{NodeKind::kFolder, t.folderId, t.discId, {}, false};
  const CatalogItem shown = treeModel_->Item(tree_->currentIndex());
  if (shown.kind != folder.kind || shown.id != folder.id) {
    if (!Navigate(folder)) return finish();
  }
  if (t.kind == NodeKind::kFolder) {
    finish();
    tree_->setFocus();
    return;
  }
  if (listModel_->folderId() != t.folderId) return;
  std::vector<ListReveal::Step> steps{{NodeKind::kFile, t.fileId}};
  if (t.kind == NodeKind::kArchiveMember) steps.emplace_back(NodeKind::kArchiveMember, t.memberId);
  const ListReveal::Result r = ListReveal::Advance(details_, listModel_, steps);
  if (r == ListReveal::Result::kWaiting) return;
  finish();
  if (r == ListReveal::Result::kDone) {
    list()->scrollTo(details_->currentIndex());
    list()->setFocus();
    listFocus_ = true;
  }
}

void frmBrowse2::TreeActivated(const QModelIndex& index) {
  tree_->setExpanded(index, !tree_->isExpanded(index));
}

void frmBrowse2::ListActivated(const QModelIndex& index) {
  const CatalogItem item = listModel_->Item(index);
  switch (item.kind) {
    case NodeKind::kCategory:
    case NodeKind::kDisc:
    case NodeKind::kFolder:
      Navigate(item);
      break;
    case NodeKind::kFile:
    case NodeKind::kArchiveMember:
      LaunchCurrent();
      break;
    default:
      break;
  }
}

void frmBrowse2::ListSelectionChanged() {
  const QModelIndexList rows = details_->selectionModel()->selectedRows();
  if (rows.isEmpty()) return;
  double bytes = 0;
  for (const QModelIndex& i : rows) {
    if (const EntryRow* r = listModel_->Row(i)) bytes += std::fabs(r->size);
  }
  Q_EMIT selectionChanged(static_cast<int>(rows.size()), bytes);
}

QAbstractItemView* frmBrowse2::list() const {
  return style_ == ListStyle::kDetails ? static_cast<QAbstractItemView*>(details_) : icons_;
}

bool frmBrowse2::ListHasFocus() const { return listFocus_ && list()->currentIndex().isValid(); }

CatalogItem frmBrowse2::currentItem() const {
  if (ListHasFocus()) return listModel_->Item(list()->currentIndex());
  return treeModel_->Item(tree_->currentIndex());
}

void frmBrowse2::SetListStyle(ListStyle style) {
  style_ = style;
  if (style == ListStyle::kDetails) {
    stack_->setCurrentWidget(details_);
    return;
  }
  const int small = style_ == ListStyle::kLargeIcons
                        ? icons_->style()->pixelMetric(QStyle::PM_LargeIconSize) * 3 / 2
                        : icons_->style()->pixelMetric(QStyle::PM_SmallIconSize);
  icons_->setIconSize(QSize(small, small));
  icons_->setViewMode(style == ListStyle::kLargeIcons ? QListView::IconMode : QListView::ListMode);
  icons_->setFlow(style == ListStyle::kList ? QListView::TopToBottom : QListView::LeftToRight);
  icons_->setWrapping(true);
  icons_->setWordWrap(style == ListStyle::kLargeIcons);
  if (style == ListStyle::kLargeIcons) {
    const int w = fontMetrics().averageCharWidth() * 16;
    icons_->setGridSize(QSize(w, small + fontMetrics().height() * 3));
  } else {
    icons_->setGridSize({});
  }
  stack_->setCurrentWidget(icons_);
}

}  // namespace gorvan::ui
