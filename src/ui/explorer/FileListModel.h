#pragma once
// FileListModel: the rows of a file list — the explorer's list of what the
// chosen tree item holds (categories and discs of a category; the folders and
// files of a folder) and the traditional view's browse list of a disc.
//
// Rows are plain values (EntryRow) read on the view loader's thread. An
// archive file's members are rows under it, read when it is first expanded;
// in the browse list a folder's rows are under it likewise. Sorting is the
// model's: containers (categories, discs, folders) before files, then by the
// column; names compare case-blind with numbers in number order.
//
// Columns: name, size, date, attributes, notes, and the MP3 and audio values
// of the extra data (title, artist, album, year, comment, track, length).
//
// Thread contract: the GUI thread.

#include <QAbstractItemModel>
#include <QFont>
#include <QFontMetrics>
#include <memory>
#include <string>
#include <vector>

#include "catalog/DiscTree.h"
#include "ui/session/CatalogItem.h"
#include "ui/session/CatalogRows.h"

namespace gorvan::ui {

class CatalogSession;

class FileListModel : public QAbstractItemModel {
  Q_OBJECT

 public:
  enum Column {
    kName,
    kSize,
    kDate,
    kAttributes,
    kNotes,
    kTitle,
    kArtist,
    kAlbum,
    kYear,
    kComment,
    kTrack,
    kLength,
    kColumnCount
  };
  // The value a column sorts by and tests read: the size as a number, the date
  // as its OLE value.
  static constexpr int kSortRole = Qt::UserRole + 1;

  explicit FileListModel(CatalogSession& session, QObject* parent = nullptr);
  ~FileListModel() override;

  // In the browse list a folder's rows are under it; in the explorer's list a
  // folder is opened instead.
  void SetExpandFolders(bool on) { expandFolders_ = on; }
  // Shows rows at once (a category's subcategories and discs).
  void ShowRows(std::vector<EntryRow> rows);
  // Shows the folder treeNode of tree: its subfolders and files, read on the
  // loader's thread. loaded() is false until they are in.
  void ShowFolder(std::shared_ptr<const DiscTree> tree, int32_t treeNode);
  void Clear();
  bool loaded() const { return loaded_; }
  // The folder shown (0 when the rows are not a folder's).
  int32_t folderId() const { return folderId_; }
  const DiscTree* tree() const { return tree_.get(); }

  const EntryRow* Row(const QModelIndex& index) const;
  CatalogItem Item(const QModelIndex& index) const;
  // The top-level row of an item, invalid when it is not shown.
  QModelIndex IndexOf(NodeKind kind, int32_t id) const;
  // Puts new notes on the rows of an item (the catalog was changed already).
  void SetNotes(NodeKind kind, int32_t id, const std::string& notes);
  void SetFont(const QFont& font);

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
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  void sort(int column, Qt::SortOrder order) override;
  QStringList mimeTypes() const override;
  QMimeData* mimeData(const QModelIndexList& indexes) const override;
  Qt::DropActions supportedDragActions() const override { return Qt::MoveAction; }

  void SetDragDrop(bool on) { dragDrop_ = on; }
  // Column widths that fit typical values in the given font (no measuring of
  // the rows: a list may hold 100,000 of them).
  static std::vector<int> DefaultWidths(const QFontMetrics& metrics);

 Q_SIGNALS:
  // The rows of ShowFolder are in.
  void folderLoaded();
  void renameRequested(const gorvan::ui::CatalogItem& item, const QString& name);

 private:
  struct Level;
  struct Entry;
  Entry* EntryOf(const QModelIndex& index) const;
  Level* LevelOf(const QModelIndex& parent) const;
  QModelIndex IndexOfEntry(const Entry* entry) const;
  // The rows as a sorted level; runs on the loader's thread too.
  static std::unique_ptr<Level> MakeLevel(std::vector<EntryRow> rows, Entry* owner, int column,
                                          Qt::SortOrder order);
  static void SortLevel(Level& level, int column, Qt::SortOrder order);
  void Replace(std::unique_ptr<Level> level);
  void LoadChildren(Entry* entry);
  std::vector<std::pair<int32_t, int32_t>> Subfolders(int32_t treeNode) const;
  std::string Key(const std::string& base) const;

  CatalogSession& session_;
  std::unique_ptr<Level> top_;
  std::shared_ptr<const DiscTree> tree_;
  int32_t folderId_ = 0;
  int sortColumn_ = kName;
  Qt::SortOrder sortOrder_ = Qt::AscendingOrder;
  QFont font_;
  bool fontSet_ = false;
  bool expandFolders_ = false;
  bool loaded_ = true;
  bool dragDrop_ = true;
  int generation_ = 0;  // bumped whenever the rows are replaced
};

}  // namespace gorvan::ui
