#pragma once
// CatalogTreeModel: the explorer's tree — the catalog at the root, its
// categories nested by parent, each disc under its category (uncategorised
// discs at the top level), and under each disc its folders.
//
// Categories and discs come from one snapshot read on the view loader's
// thread. A disc's folders come from its DiscTree, built on the loader's
// thread the first time the disc is expanded (hasChildren answers from the
// disc's folder count without loading); the folder nodes of one parent are
// made from the tree when that parent is expanded, so a disc of 50,000
// folders costs nodes only for what is shown.
//
// Thread contract: the GUI thread.

#include <QAbstractItemModel>
#include <QFont>
#include <QHash>
#include <memory>
#include <unordered_map>
#include <vector>

#include "catalog/DiscTree.h"
#include "ui/session/CatalogItem.h"
#include "ui/session/CatalogRows.h"

namespace gorvan::ui {

class CatalogSession;

class CatalogTreeModel : public QAbstractItemModel {
  Q_OBJECT

 public:
  explicit CatalogTreeModel(CatalogSession& session, QObject* parent = nullptr);
  ~CatalogTreeModel() override;

  // Reads the catalog's categories and discs again. With keepTrees the disc
  // trees read so far are kept (nothing inside a disc changed).
  void Reload(bool keepTrees);
  void Clear();
  bool loaded() const { return loaded_; }

  // The item of an index (the catalog for the root node).
  CatalogItem Item(const QModelIndex& index) const;
  // A folder's node in its disc's tree (DiscTree::kNone for other items).
  int32_t FolderNode(const QModelIndex& index) const;
  // The index of an item made so far; invalid when it is not (yet) a node.
  QModelIndex IndexOf(NodeKind kind, int32_t id) const;
  QModelIndex CatalogIndex() const;
  // Ancestors first: makes the folder nodes down to folderId (the disc's tree
  // must be loaded) and returns its index; invalid when it cannot.
  QModelIndex RevealFolder(int32_t discId, int32_t folderId);

  // The disc's tree once loaded; null before. LoadTree asks for it.
  std::shared_ptr<const DiscTree> Tree(int32_t discId) const;
  void LoadTree(int32_t discId);

  const CatalogSnapshot& snapshot() const { return snapshot_; }
  const DiscRow* Disc(int32_t id) const;
  const CategoryRow* Category(int32_t id) const;
  // The rows the explorer list shows for a catalog or category node: its
  // subcategories, then its discs.
  std::vector<EntryRow> ContainerRows(const QModelIndex& index) const;
  // A category's path from the top ("Music\Jazz").
  std::string CategoryPath(int32_t id) const;

  // QAbstractItemModel
  QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  QModelIndex parent(const QModelIndex& child) const override;
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  bool hasChildren(const QModelIndex& parent = {}) const override;
  bool canFetchMore(const QModelIndex& parent) const override;
  void fetchMore(const QModelIndex& parent) override;
  QVariant data(const QModelIndex& index, int role) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  QStringList mimeTypes() const override;
  QMimeData* mimeData(const QModelIndexList& indexes) const override;
  bool canDropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                       const QModelIndex& parent) const override;
  bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                    const QModelIndex& parent) override;
  Qt::DropActions supportedDropActions() const override { return Qt::MoveAction; }
  Qt::DropActions supportedDragActions() const override { return Qt::MoveAction; }

  void SetDragDrop(bool on) { dragDrop_ = on; }
  void SetFont(const QFont& font);

 Q_SIGNALS:
  // The snapshot was read and the nodes made again.
  void reloaded();
  // A disc's tree was read (its first level of folders is in the model).
  void treeLoaded(int32_t discId);
  // The user renamed an item in place.
  void renameRequested(const gorvan::ui::CatalogItem& item, const QString& name);
  // An item was dropped onto another.
  void moveRequested(const gorvan::ui::CatalogItem& dragged, const gorvan::ui::CatalogItem& target);

 private:
  struct Node;
  Node* NodeOf(const QModelIndex& index) const;
  QModelIndex IndexOfNode(const Node* node) const;
  void Fill(CatalogSnapshot snapshot);
  void TreeArrived(int32_t discId, std::shared_ptr<const DiscTree> tree);
  // Makes the folder nodes of node from its disc's tree.
  void MakeFolders(Node* node);
  Node* AddChild(Node* parent, NodeKind kind, int32_t id, int32_t discId);
  void Forget(Node* node);

  CatalogSession& session_;
  std::unique_ptr<Node> root_;
  QHash<quint64, Node*> nodes_;  // by kind and id
  CatalogSnapshot snapshot_;
  QHash<int32_t, int> discAt_;      // disc id -> index into snapshot_.discs
  QHash<int32_t, int> categoryAt_;  // category id -> index into snapshot_.categories
  std::unordered_map<int32_t, std::shared_ptr<const DiscTree>> trees_;
  QFont font_;
  bool fontSet_ = false;
  bool loaded_ = false;
  bool dropTrees_ = false;  // the next snapshot drops the disc trees
  bool dragDrop_ = true;
};

}  // namespace gorvan::ui
