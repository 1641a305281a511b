#include "ui/explorer/CatalogTreeModel.h"

#include <algorithm>
#include <vector>

#include <QMimeData>
#include <QTimer>

#include "catalog/TextUtil.h"
#include "ui/explorer/ItemMime.h"
#include "ui/session/CatalogReads.h"
#include "ui/session/CatalogSession.h"
#include "ui/session/ViewLoader.h"
#include "ui/widgets/ThemeIcons.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {

struct CatalogTreeModel::Node {
  NodeKind kind = NodeKind::kNone;
  int32_t id = 0;
  int32_t discId = 0;
  int32_t treeNode = DiscTree::kNone;  // a folder's node in its disc's tree
  Node* parent = nullptr;
  int row = 0;
  std::vector<std::unique_ptr<Node>> children;
  bool childrenMade = false;  // a disc's or folder's folder nodes exist
};

namespace {

quint64 Key(NodeKind kind, int32_t id) {
  return (static_cast<quint64>(kind) << 32) | static_cast<quint32>(id);
}

}  // namespace

CatalogTreeModel::CatalogTreeModel(CatalogSession& session, QObject* parent)
    : QAbstractItemModel(parent), session_(session), root_(std::make_unique<Node>()) {}

CatalogTreeModel::~CatalogTreeModel() = default;

void CatalogTreeModel::Clear() {
  beginResetModel();
  root_ = std::make_unique<Node>();
  nodes_.clear();
  snapshot_ = CatalogSnapshot{};
  discAt_.clear();
  categoryAt_.clear();
  trees_.clear();
  loaded_ = false;
  endResetModel();
}

void CatalogTreeModel::Reload(bool keepTrees) {
  // The trees go when the new snapshot comes in: until then the nodes shown
  // still need their names.
  if (!keepTrees) dropTrees_ = true;
  const std::string key =
      "CatalogTreeModel.snapshot." + std::to_string(reinterpret_cast<uintptr_t>(this));
  session_.loader().Load<CatalogSnapshot>(
      this, key,
      [](classData& d, const std::stop_token& stop) { return CatalogReads::Catalog(d, stop); },
      [this](CatalogSnapshot& s) { Fill(std::move(s)); });
}

CatalogTreeModel::Node* CatalogTreeModel::AddChild(Node* parent, NodeKind kind, int32_t id,
                                                   int32_t discId) {
  auto node = std::make_unique<Node>();
  node->kind = kind;
  node->id = id;
  node->discId = discId;
  node->parent = parent;
  node->row = static_cast<int>(parent->children.size());
  Node* raw = node.get();
  parent->children.push_back(std::move(node));
  nodes_.insert(Key(kind, id), raw);
  return raw;
}

void CatalogTreeModel::Fill(CatalogSnapshot snapshot) {
  beginResetModel();
  if (dropTrees_) trees_.clear();
  dropTrees_ = false;
  root_ = std::make_unique<Node>();
  nodes_.clear();
  snapshot_ = std::move(snapshot);
  discAt_.clear();
  categoryAt_.clear();
  for (size_t i = 0; i < snapshot_.discs.size(); ++i)
    discAt_.insert(snapshot_.discs[i].id, static_cast<int>(i));
  for (size_t i = 0; i < snapshot_.categories.size(); ++i) {
    categoryAt_.insert(snapshot_.categories[i].id, static_cast<int>(i));
  }
  Node* catalog = AddChild(root_.get(), NodeKind::kCatalog, 0, 0);
  // Categories: every node first, then each under its parent. A parent that is
  // no category, or a chain of parents that loops, puts the category at the top.
  const int count = static_cast<int>(snapshot_.categories.size());
  auto parentOf = [&](const CategoryRow& c) -> int32_t {
    int32_t up = c.parent;
    for (int steps = 0; up != 0 && steps <= count; ++steps) {
      if (up == c.id || !categoryAt_.contains(up)) return 0;
      up = snapshot_.categories[static_cast<size_t>(categoryAt_.value(up))].parent;
    }
    return up == 0 ? (categoryAt_.contains(c.parent) ? c.parent : 0) : 0;
  };
  std::unordered_map<int32_t, std::vector<int32_t>> kids;
  std::vector<int32_t> top;
  for (const CategoryRow& c : snapshot_.categories) {
    const int32_t p = parentOf(c);
    (p == 0 ? top : kids[p]).push_back(c.id);
  }
  std::vector<std::pair<Node*, int32_t>> pending;
  for (auto it = top.rbegin(); it != top.rend(); ++it) pending.emplace_back(catalog, *it);
  // Depth first, children in chain order.
  while (!pending.empty()) {
    auto [parent, id] = pending.back();
    pending.pop_back();
    if (nodes_.contains(Key(NodeKind::kCategory, id))) continue;  // listed twice
    Node* node = AddChild(parent, NodeKind::kCategory, id, 0);
    const auto found = kids.find(id);
    if (found == kids.end()) continue;
    for (auto it = found->second.rbegin(); it != found->second.rend(); ++it)
      pending.emplace_back(node, *it);
  }
  for (const DiscRow& d : snapshot_.discs) {
    Node* parent = catalog;
    if (Node* cat = nodes_.value(Key(NodeKind::kCategory, d.category))) parent = cat;
    if (nodes_.contains(Key(NodeKind::kDisc, d.id))) continue;
    AddChild(parent, NodeKind::kDisc, d.id, d.id);
  }
  loaded_ = true;
  endResetModel();
  Q_EMIT reloaded();
}

CatalogTreeModel::Node* CatalogTreeModel::NodeOf(const QModelIndex& index) const {
  return index.isValid() ? static_cast<Node*>(index.internalPointer()) : root_.get();
}

QModelIndex CatalogTreeModel::IndexOfNode(const Node* node) const {
  if (!node || node == root_.get()) return {};
  return createIndex(node->row, 0, const_cast<Node*>(node));
}

QModelIndex CatalogTreeModel::index(int row, int column, const QModelIndex& parent) const {
  const Node* p = NodeOf(parent);
  if (column != 0 || row < 0 || row >= static_cast<int>(p->children.size())) return {};
  return createIndex(row, 0, p->children[static_cast<size_t>(row)].get());
}

QModelIndex CatalogTreeModel::parent(const QModelIndex& child) const {
  if (!child.isValid()) return {};
  return IndexOfNode(NodeOf(child)->parent);
}

int CatalogTreeModel::rowCount(const QModelIndex& parent) const {
  if (parent.column() > 0) return 0;
  return static_cast<int>(NodeOf(parent)->children.size());
}

int CatalogTreeModel::columnCount(const QModelIndex&) const { return 1; }

bool CatalogTreeModel::hasChildren(const QModelIndex& parent) const {
  const Node* n = NodeOf(parent);
  if (!n->children.empty()) return true;
  switch (n->kind) {
    case NodeKind::kDisc: {
      if (n->childrenMade) return false;
      if (auto tree = Tree(n->id)) return !tree->empty() && tree->hasChildren(tree->root());
      const DiscRow* d = Disc(n->id);
      return d && d->folders > 0;
    }
    case NodeKind::kFolder: {
      if (n->childrenMade) return false;
      auto tree = Tree(n->discId);
      return tree && tree->hasChildren(n->treeNode);
    }
    default:
      return false;
  }
}

bool CatalogTreeModel::canFetchMore(const QModelIndex& parent) const {
  const Node* n = NodeOf(parent);
  return (n->kind == NodeKind::kDisc || n->kind == NodeKind::kFolder) && !n->childrenMade &&
         hasChildren(parent);
}

void CatalogTreeModel::fetchMore(const QModelIndex& parent) {
  Node* n = NodeOf(parent);
  if (n->childrenMade) return;
  if (Tree(n->discId)) {
    MakeFolders(n);
  } else if (n->kind == NodeKind::kDisc) {
    LoadTree(n->id);
  }
}

std::shared_ptr<const DiscTree> CatalogTreeModel::Tree(int32_t discId) const {
  const auto it = trees_.find(discId);
  return it == trees_.end() ? nullptr : it->second;
}

void CatalogTreeModel::LoadTree(int32_t discId) {
  if (Tree(discId)) {
    TreeArrived(discId, Tree(discId));
    return;
  }
  using Result = std::shared_ptr<const DiscTree>;
  const std::string key = "CatalogTreeModel.tree." +
                          std::to_string(reinterpret_cast<uintptr_t>(this)) + "." +
                          std::to_string(discId);
  session_.loader().Load<Result>(
      this, key,
      [discId](classData& d, const std::stop_token&) {
        auto tree = std::make_shared<DiscTree>();
        // A damaged chain gives the folders read before it; the loader tells
        // the user about the failure.
        (void)tree->Build(d.file(), discId);
        return Result(std::move(tree));
      },
      [this, discId](Result& tree) { TreeArrived(discId, tree); });
}

void CatalogTreeModel::TreeArrived(int32_t discId, std::shared_ptr<const DiscTree> tree) {
  if (!discAt_.contains(discId)) return;
  trees_[discId] = std::move(tree);
  if (Node* disc = nodes_.value(Key(NodeKind::kDisc, discId)); disc && !disc->childrenMade) {
    MakeFolders(disc);
  }
  Q_EMIT treeLoaded(discId);
}

void CatalogTreeModel::MakeFolders(Node* node) {
  auto tree = Tree(node->discId);
  if (!tree || node->childrenMade) return;
  node->childrenMade = true;
  const int32_t from = node->kind == NodeKind::kDisc ? tree->root() : node->treeNode;
  if (from == DiscTree::kNone) return;
  // Folders show in name order, as in a file manager; the chain keeps them
  // in the order the scan met them.
  const std::span<const int32_t> stored = tree->children(from);
  std::vector<int32_t> kids(stored.begin(), stored.end());
  std::sort(kids.begin(), kids.end(), [&](int32_t a, int32_t b) {
    return NaturalCompare(tree->name(a), tree->name(b)) < 0;
  });
  if (kids.empty()) {
    // The arrow of an item that turned out empty goes.
    const QModelIndex at = IndexOfNode(node);
    Q_EMIT dataChanged(at, at);
    return;
  }
  beginInsertRows(IndexOfNode(node), 0, static_cast<int>(kids.size()) - 1);
  node->children.reserve(kids.size());
  for (int32_t k : kids)
    AddChild(node, NodeKind::kFolder, tree->folderId(k), node->discId)->treeNode = k;
  endInsertRows();
}

QModelIndex CatalogTreeModel::RevealFolder(int32_t discId, int32_t folderId) {
  auto tree = Tree(discId);
  Node* disc = nodes_.value(Key(NodeKind::kDisc, discId));
  if (!tree || !disc) return {};
  const int32_t target = tree->Find(folderId);
  if (target == DiscTree::kNone) return {};
  std::vector<int32_t> chain;
  for (int32_t n = target; n != DiscTree::kNone && n != tree->root(); n = tree->parent(n))
    chain.push_back(n);
  MakeFolders(disc);
  for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
    Node* node = nodes_.value(Key(NodeKind::kFolder, tree->folderId(*it)));
    if (!node) return {};
    if (std::next(it) != chain.rend()) MakeFolders(node);
  }
  return IndexOf(NodeKind::kFolder, folderId);
}

const DiscRow* CatalogTreeModel::Disc(int32_t id) const {
  const auto it = discAt_.constFind(id);
  return it == discAt_.constEnd() ? nullptr : &snapshot_.discs[static_cast<size_t>(*it)];
}

const CategoryRow* CatalogTreeModel::Category(int32_t id) const {
  const auto it = categoryAt_.constFind(id);
  return it == categoryAt_.constEnd() ? nullptr : &snapshot_.categories[static_cast<size_t>(*it)];
}

std::string CatalogTreeModel::CategoryPath(int32_t id) const {
  std::vector<std::string> names;
  const Node* n = nodes_.value(Key(NodeKind::kCategory, id));
  for (; n && n->kind == NodeKind::kCategory; n = n->parent) {
    if (const CategoryRow* c = Category(n->id)) names.push_back(c->name);
  }
  std::string path;
  for (auto it = names.rbegin(); it != names.rend(); ++it) {
    if (!path.empty()) path += '\\';
    path += *it;
  }
  return path;
}

CatalogItem CatalogTreeModel::Item(const QModelIndex& index) const {
  CatalogItem item;
  const Node* n = NodeOf(index);
  if (n == root_.get()) return item;
  item.kind = n->kind;
  item.id = n->id;
  item.discId = n->discId;
  item.hasChildren = !n->children.empty();
  switch (n->kind) {
    case NodeKind::kCatalog:
      item.name = Qs(snapshot_.name);
      break;
    case NodeKind::kCategory:
      if (const CategoryRow* c = Category(n->id)) item.name = Qs(c->name);
      break;
    case NodeKind::kDisc:
      if (const DiscRow* d = Disc(n->id)) item.name = Qs(d->name);
      break;
    case NodeKind::kFolder:
      if (auto tree = Tree(n->discId)) item.name = Qs(tree->name(n->treeNode));
      break;
    default:
      break;
  }
  return item;
}

int32_t CatalogTreeModel::FolderNode(const QModelIndex& index) const {
  const Node* n = NodeOf(index);
  return n->kind == NodeKind::kFolder ? n->treeNode : DiscTree::kNone;
}

QModelIndex CatalogTreeModel::IndexOf(NodeKind kind, int32_t id) const {
  return IndexOfNode(nodes_.value(Key(kind, kind == NodeKind::kCatalog ? 0 : id)));
}

QModelIndex CatalogTreeModel::CatalogIndex() const { return IndexOf(NodeKind::kCatalog, 0); }

std::vector<EntryRow> CatalogTreeModel::ContainerRows(const QModelIndex& index) const {
  std::vector<EntryRow> rows;
  const Node* n = NodeOf(index);
  if (n->kind != NodeKind::kCatalog && n->kind != NodeKind::kCategory) return rows;
  rows.reserve(n->children.size());
  for (const auto& child : n->children) {
    EntryRow& e = rows.emplace_back();
    e.kind = child->kind;
    e.id = child->id;
    if (child->kind == NodeKind::kCategory) {
      if (const CategoryRow* c = Category(child->id)) {
        e.name = c->name;
        e.notes = c->notes;
        e.date = c->created;
      }
      e.folders = static_cast<int32_t>(child->children.size());
    } else if (const DiscRow* d = Disc(child->id)) {
      e.discId = d->id;
      e.name = d->DisplayName();
      e.notes = d->notes;
      e.extra = d->extra;
      e.size = d->totalSize;
      e.date = d->lastScanned;
      e.files = d->files;
      e.folders = d->folders;
      e.path = d->iconKey;  // the list shows a disc by its icon key
    }
  }
  return rows;
}

QVariant CatalogTreeModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const Node* n = NodeOf(index);
  switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole: {
      std::string_view name;
      std::string owned;
      switch (n->kind) {
        case NodeKind::kCatalog:
          name = snapshot_.name;
          break;
        case NodeKind::kCategory:
          if (const CategoryRow* c = Category(n->id)) name = c->name;
          break;
        case NodeKind::kDisc:
          if (const DiscRow* d = Disc(n->id)) {
            if (role == Qt::EditRole) {
              name = d->name;
            } else {
              owned = d->DisplayName();
              name = owned;
            }
          }
          break;
        case NodeKind::kFolder:
          if (auto tree = Tree(n->discId)) {
            owned = tree->name(n->treeNode);
            name = owned;
          }
          break;
        default:
          break;
      }
      return role == Qt::EditRole ? QVariant(Qs(name)) : QVariant(RowText(name));
    }
    case Qt::DecorationRole:
      switch (n->kind) {
        case NodeKind::kCatalog:
          return ThemeIcons::Catalog();
        case NodeKind::kCategory:
          return ThemeIcons::Category();
        case NodeKind::kDisc:
          if (const DiscRow* d = Disc(n->id)) return ThemeIcons::Disc(d->iconKey);
          return ThemeIcons::Disc({});
        default:
          return ThemeIcons::Folder();
      }
    case Qt::ToolTipRole: {
      const std::string* notes = nullptr;
      if (n->kind == NodeKind::kCategory) {
        if (const CategoryRow* c = Category(n->id)) notes = &c->notes;
      } else if (n->kind == NodeKind::kDisc) {
        if (const DiscRow* d = Disc(n->id)) notes = &d->notes;
      }
      if (notes && !notes->empty()) return RowText(*notes);
      return {};
    }
    case Qt::FontRole:
      return fontSet_ ? QVariant(font_) : QVariant();
    default:
      return {};
  }
}

bool CatalogTreeModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (!index.isValid() || role != Qt::EditRole) return false;
  // The catalog is changed first; the model follows when it reads it again.
  Q_EMIT renameRequested(Item(index), value.toString());
  return false;
}

Qt::ItemFlags CatalogTreeModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::NoItemFlags;
  Qt::ItemFlags f = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable;
  if (dragDrop_) {
    // Folders may be dragged so that the rule that refuses them can say so.
    if (NodeOf(index)->kind != NodeKind::kCatalog) f |= Qt::ItemIsDragEnabled;
    f |= Qt::ItemIsDropEnabled;
  }
  return f;
}

QStringList CatalogTreeModel::mimeTypes() const { return {QLatin1String(kItemMimeType)}; }

QMimeData* CatalogTreeModel::mimeData(const QModelIndexList& indexes) const {
  return indexes.isEmpty() ? nullptr : ItemMime::Encode(Item(indexes.front()));
}

bool CatalogTreeModel::canDropMimeData(const QMimeData* data, Qt::DropAction, int, int,
                                       const QModelIndex& parent) const {
  // Only items of this catalog; whatever other programs drop is refused.
  return dragDrop_ && parent.isValid() && data && data->hasFormat(QLatin1String(kItemMimeType));
}

bool CatalogTreeModel::dropMimeData(const QMimeData* data, Qt::DropAction action, int row,
                                    int column, const QModelIndex& parent) {
  CatalogItem dragged;
  if (!canDropMimeData(data, action, row, column, parent) || !ItemMime::Decode(data, &dragged)) {
    return false;
  }
  const CatalogItem target = Item(parent);
  // The drop ends first; the move (which may show a message) follows.
  QTimer::singleShot(0, this, [this, dragged, target] { Q_EMIT moveRequested(dragged, target); });
  // The catalog is changed, not this model: the view removes nothing.
  return false;
}

void CatalogTreeModel::SetFont(const QFont& font) {
  font_ = font;
  fontSet_ = true;
  if (!root_->children.empty()) Q_EMIT layoutChanged();
}

}  // namespace gorvan::ui
