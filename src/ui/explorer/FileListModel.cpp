#include "ui/explorer/FileListModel.h"

#include <algorithm>
#include <cmath>

#include "catalog/ExtraData.h"
#include "catalog/TextUtil.h"
#include "ui/explorer/ItemMime.h"
#include "ui/session/CatalogReads.h"
#include "ui/session/CatalogSession.h"
#include "ui/session/ViewLoader.h"
#include "ui/widgets/ThemeIcons.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {

struct FileListModel::Entry {
  EntryRow row;
  Entry* owner = nullptr;  // the entry this one is under; null at the top
  int pos = 0;             // its row in the sorted order
  std::unique_ptr<Level> kids;
  bool loading = false;
};

struct FileListModel::Level {
  std::vector<Entry> entries;
  std::vector<int32_t> order;  // row -> entry
};

namespace {

// The extra-data value each column shows.
int ExtraIndexOf(int column, NodeKind kind) {
  const bool disc = kind == NodeKind::kDisc;
  switch (column) {
    case FileListModel::kTitle:
      return kExtraMp3Title;
    case FileListModel::kArtist:
      return disc ? kExtraAudioArtist : kExtraMp3Artist;
    case FileListModel::kAlbum:
      return disc ? kExtraAudioAlbum : kExtraMp3Album;
    case FileListModel::kYear:
      return disc ? kExtraAudioYear : kExtraMp3Year;
    case FileListModel::kComment:
      return kExtraMp3Comment;
    case FileListModel::kTrack:
      return kExtraTrackNumber;
    case FileListModel::kLength:
      return kExtraTrackLength;
    default:
      return -1;
  }
}

int KindRank(NodeKind k) {
  switch (k) {
    case NodeKind::kCategory:
      return 0;
    case NodeKind::kDisc:
      return 1;
    case NodeKind::kFolder:
      return 2;
    default:
      return 3;
  }
}

template <typename T>
int Compare(T a, T b) {
  return a < b ? -1 : b < a ? 1 : 0;
}

}  // namespace

FileListModel::FileListModel(CatalogSession& session, QObject* parent)
    : QAbstractItemModel(parent), session_(session), top_(std::make_unique<Level>()) {}

FileListModel::~FileListModel() = default;

std::string FileListModel::Key(const std::string& base) const {
  return "FileListModel." + std::to_string(reinterpret_cast<uintptr_t>(this)) + "." + base;
}

std::unique_ptr<FileListModel::Level> FileListModel::MakeLevel(std::vector<EntryRow> rows,
                                                               Entry* owner, int column,
                                                               Qt::SortOrder order) {
  auto level = std::make_unique<Level>();
  level->entries.resize(rows.size());
  level->order.resize(rows.size());
  for (size_t i = 0; i < rows.size(); ++i) {
    Entry& e = level->entries[i];
    e.row = std::move(rows[i]);
    e.owner = owner;
    level->order[i] = static_cast<int32_t>(i);
  }
  SortLevel(*level, column, order);
  return level;
}

void FileListModel::SortLevel(Level& level, int column, Qt::SortOrder order) {
  const bool descending = order == Qt::DescendingOrder;
  const std::vector<Entry>& e = level.entries;
  std::stable_sort(level.order.begin(), level.order.end(), [&](int32_t ia, int32_t ib) {
    const Entry& a = e[static_cast<size_t>(ia)];
    const Entry& b = e[static_cast<size_t>(ib)];
    // Containers stay before files whichever way the list is sorted.
    if (int c = Compare(KindRank(a.row.kind), KindRank(b.row.kind)); c != 0) return c < 0;
    int c = 0;
    switch (column) {
      case kSize:
        c = Compare(std::fabs(a.row.size), std::fabs(b.row.size));
        break;
      case kDate:
        c = Compare(a.row.date, b.row.date);
        break;
      case kAttributes:
        c = Compare(a.row.attr, b.row.attr);
        break;
      case kNotes:
        c = a.row.notes.compare(b.row.notes);
        break;
      case kName:
        break;
      default: {
        const int index = ExtraIndexOf(column, a.row.kind);
        c = NaturalCompare(GetExtraValue(a.row.extra, index),
                           GetExtraValue(b.row.extra, ExtraIndexOf(column, b.row.kind)));
      }
    }
    if (c == 0) c = NaturalCompare(a.row.name, b.row.name);
    return descending ? c > 0 : c < 0;
  });
  for (size_t r = 0; r < level.order.size(); ++r) {
    level.entries[static_cast<size_t>(level.order[r])].pos = static_cast<int>(r);
  }
}

void FileListModel::Replace(std::unique_ptr<Level> level) {
  beginResetModel();
  ++generation_;
  top_ = std::move(level);
  endResetModel();
}

void FileListModel::Clear() {
  session_.loader().Cancel(Key("rows"));
  tree_.reset();
  folderId_ = 0;
  loaded_ = true;
  Replace(std::make_unique<Level>());
}

void FileListModel::ShowRows(std::vector<EntryRow> rows) {
  session_.loader().Cancel(Key("rows"));
  tree_.reset();
  folderId_ = 0;
  loaded_ = true;
  Replace(MakeLevel(std::move(rows), nullptr, sortColumn_, sortOrder_));
}

std::vector<std::pair<int32_t, int32_t>> FileListModel::Subfolders(int32_t treeNode) const {
  std::vector<std::pair<int32_t, int32_t>> out;
  if (!tree_ || treeNode < 0 || treeNode >= tree_->size()) return out;
  const std::span<const int32_t> kids = tree_->children(treeNode);
  out.reserve(kids.size());
  for (int32_t k : kids) out.emplace_back(tree_->folderId(k), k);
  return out;
}

void FileListModel::ShowFolder(std::shared_ptr<const DiscTree> tree, int32_t treeNode) {
  tree_ = std::move(tree);
  folderId_ = tree_ && treeNode >= 0 ? tree_->folderId(treeNode) : 0;
  loaded_ = false;
  Replace(std::make_unique<Level>());
  const int generation = generation_;
  const int32_t folder = folderId_;
  std::vector<std::pair<int32_t, int32_t>> subfolders = Subfolders(treeNode);
  // The rows are read and sorted on the loader's thread: a folder of 100,000
  // files never holds up the window.
  const int column = sortColumn_;
  const Qt::SortOrder order = sortOrder_;
  using Result = std::unique_ptr<Level>;
  session_.loader().Load<Result>(
      this, Key("rows"),
      [folder, subfolders = std::move(subfolders), column, order](classData& d,
                                                                  const std::stop_token& stop) {
        EntryRows rows = CatalogReads::Folder(d, folder, subfolders, stop);
        return MakeLevel(std::move(rows.rows), nullptr, column, order);
      },
      [this, generation](Result& level) {
        if (generation != generation_) return;
        Replace(std::move(level));
        loaded_ = true;
        Q_EMIT folderLoaded();
      });
}

FileListModel::Level* FileListModel::LevelOf(const QModelIndex& parent) const {
  if (!parent.isValid()) return top_.get();
  Entry* e = EntryOf(parent);
  return e ? e->kids.get() : nullptr;
}

FileListModel::Entry* FileListModel::EntryOf(const QModelIndex& index) const {
  if (!index.isValid()) return nullptr;
  auto* owner = static_cast<Entry*>(index.internalPointer());
  Level* level = owner ? owner->kids.get() : top_.get();
  if (!level || index.row() < 0 || index.row() >= static_cast<int>(level->order.size()))
    return nullptr;
  return &level->entries[static_cast<size_t>(level->order[static_cast<size_t>(index.row())])];
}

QModelIndex FileListModel::IndexOfEntry(const Entry* entry) const {
  if (!entry) return {};
  return createIndex(entry->pos, 0, entry->owner);
}

QModelIndex FileListModel::index(int row, int column, const QModelIndex& parent) const {
  const Level* level = LevelOf(parent);
  if (!level || row < 0 || row >= static_cast<int>(level->order.size()) || column < 0 ||
      column >= kColumnCount) {
    return {};
  }
  return createIndex(row, column, parent.isValid() ? EntryOf(parent) : nullptr);
}

QModelIndex FileListModel::parent(const QModelIndex& child) const {
  if (!child.isValid()) return {};
  return IndexOfEntry(static_cast<Entry*>(child.internalPointer()));
}

int FileListModel::rowCount(const QModelIndex& parent) const {
  if (parent.column() > 0) return 0;
  const Level* level = LevelOf(parent);
  return level ? static_cast<int>(level->order.size()) : 0;
}

int FileListModel::columnCount(const QModelIndex&) const { return kColumnCount; }

bool FileListModel::hasChildren(const QModelIndex& parent) const {
  if (!parent.isValid()) return !top_->order.empty();
  if (parent.column() > 0) return false;
  const Entry* e = EntryOf(parent);
  if (!e) return false;
  if (e->kids) return !e->kids->order.empty();
  if (e->row.kind == NodeKind::kFile) return e->row.archive;
  if (e->row.kind == NodeKind::kFolder && expandFolders_) {
    return (tree_ && e->row.treeNode >= 0 && tree_->hasChildren(e->row.treeNode)) ||
           e->row.files > 0;
  }
  return false;
}

bool FileListModel::canFetchMore(const QModelIndex& parent) const {
  if (!parent.isValid()) return false;
  const Entry* e = EntryOf(parent);
  return e && !e->kids && !e->loading && hasChildren(parent);
}

void FileListModel::fetchMore(const QModelIndex& parent) {
  if (Entry* e = EntryOf(parent); e && !e->kids && !e->loading) LoadChildren(e);
}

void FileListModel::LoadChildren(Entry* entry) {
  entry->loading = true;
  const int generation = generation_;
  const EntryRow row = entry->row;
  std::vector<std::pair<int32_t, int32_t>> subfolders;
  if (row.kind == NodeKind::kFolder) subfolders = Subfolders(row.treeNode);
  const std::string key = Key("kids." + std::to_string(row.id));
  session_.loader().Load<EntryRows>(
      this, key,
      [row, subfolders = std::move(subfolders)](classData& d, const std::stop_token& stop) {
        return row.kind == NodeKind::kFolder ? CatalogReads::Folder(d, row.id, subfolders, stop)
                                             : CatalogReads::Members(d, row.id, stop);
      },
      [this, entry, generation](EntryRows& rows) {
        if (generation != generation_) return;
        entry->loading = false;
        std::unique_ptr<Level> level =
            MakeLevel(std::move(rows.rows), entry, sortColumn_, sortOrder_);
        if (level->order.empty()) {
          entry->kids = std::move(level);
          return;
        }
        beginInsertRows(IndexOfEntry(entry), 0, static_cast<int>(level->order.size()) - 1);
        entry->kids = std::move(level);
        endInsertRows();
      });
}

const EntryRow* FileListModel::Row(const QModelIndex& index) const {
  const Entry* e = EntryOf(index);
  return e ? &e->row : nullptr;
}

CatalogItem FileListModel::Item(const QModelIndex& index) const {
  CatalogItem item;
  if (const EntryRow* r = Row(index)) {
    item.kind = r->kind;
    item.id = r->id;
    item.discId = r->discId;
    item.name = Qs(r->name);
    item.hasChildren = r->folders > 0;
  }
  return item;
}

QModelIndex FileListModel::IndexOf(NodeKind kind, int32_t id) const {
  for (const Entry& e : top_->entries) {
    if (e.row.kind == kind && e.row.id == id) return createIndex(e.pos, 0, nullptr);
  }
  return {};
}

void FileListModel::SetNotes(NodeKind kind, int32_t id, const std::string& notes) {
  // Only loaded rows can show the item.
  std::vector<Level*> levels{top_.get()};
  while (!levels.empty()) {
    Level* level = levels.back();
    levels.pop_back();
    for (Entry& e : level->entries) {
      if (e.kids) levels.push_back(e.kids.get());
      if (e.row.id != id || e.row.kind != kind) continue;
      e.row.notes = notes;
      const QModelIndex at = createIndex(e.pos, kNotes, e.owner);
      Q_EMIT dataChanged(at, at);
    }
  }
}

void FileListModel::SetFont(const QFont& font) {
  font_ = font;
  fontSet_ = true;
  if (!top_->order.empty())
    Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, kColumnCount - 1));
}

QVariant FileListModel::data(const QModelIndex& index, int role) const {
  const Entry* e = EntryOf(index);
  if (!e) return {};
  const EntryRow& r = e->row;
  const int column = index.column();
  const bool container = r.kind == NodeKind::kCategory || r.kind == NodeKind::kDisc;
  switch (role) {
    case Qt::DisplayRole:
      switch (column) {
        case kName:
          return RowText(r.name);
        case kSize:
          return r.kind == NodeKind::kCategory ? QVariant() : QVariant(SizeText(r.size));
        case kDate:
          return DateText(r.date);
        case kAttributes:
          return container ? QVariant() : QVariant(AttributeText(r.attr));
        case kNotes:
          return RowText(r.notes);
        default:
          return r.extra.empty()
                     ? QVariant()
                     : QVariant(RowText(GetExtraValue(r.extra, ExtraIndexOf(column, r.kind))));
      }
    case Qt::EditRole:
      return column == kName ? QVariant(Qs(r.name)) : data(index, Qt::DisplayRole);
    case kSortRole:
      switch (column) {
        case kSize:
          return std::fabs(r.size);
        case kDate:
          return r.date;
        case kAttributes:
          return r.attr;
        default:
          return data(index, Qt::EditRole);
      }
    case Qt::DecorationRole:
      if (column != kName) return {};
      switch (r.kind) {
        case NodeKind::kCategory:
          return ThemeIcons::Category();
        case NodeKind::kDisc:
          return ThemeIcons::Disc(r.path);
        case NodeKind::kFolder:
          return ThemeIcons::Folder();
        default:
          return ThemeIcons::File(r.name);
      }
    case Qt::TextAlignmentRole:
      if (column == kSize || column == kTrack || column == kLength) {
        return QVariant(Qt::AlignRight | Qt::AlignVCenter);
      }
      return {};
    case Qt::ToolTipRole:
      if (column == kName && !r.notes.empty()) return RowText(r.notes);
      return {};
    case Qt::FontRole:
      return fontSet_ ? QVariant(font_) : QVariant();
    default:
      return {};
  }
}

bool FileListModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (role != Qt::EditRole || index.column() != kName || !Row(index)) return false;
  Q_EMIT renameRequested(Item(index), value.toString());
  return false;
}

QVariant FileListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  static const char* const kTitles[] = {
      QT_TR_NOOP("Name"),  QT_TR_NOOP("Size"),    QT_TR_NOOP("Date"),   QT_TR_NOOP("Attributes"),
      QT_TR_NOOP("Notes"), QT_TR_NOOP("Title"),   QT_TR_NOOP("Artist"), QT_TR_NOOP("Album"),
      QT_TR_NOOP("Year"),  QT_TR_NOOP("Comment"), QT_TR_NOOP("Track"),  QT_TR_NOOP("Length")};
  return section >= 0 && section < kColumnCount ? tr(kTitles[section]) : QString();
}

Qt::ItemFlags FileListModel::flags(const QModelIndex& index) const {
  const EntryRow* r = Row(index);
  if (!r) return Qt::NoItemFlags;
  Qt::ItemFlags f = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
  const bool container =
      r->kind == NodeKind::kCategory || r->kind == NodeKind::kDisc || r->kind == NodeKind::kFolder;
  if (container && index.column() == kName) f |= Qt::ItemIsEditable;
  // Files may be dragged so that the rule that refuses them can say so.
  if (dragDrop_) f |= Qt::ItemIsDragEnabled;
  return f;
}

void FileListModel::sort(int column, Qt::SortOrder order) {
  if (column < 0 || column >= kColumnCount) return;
  sortColumn_ = column;
  sortOrder_ = order;
  Q_EMIT layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
  const QModelIndexList before = persistentIndexList();
  std::vector<Entry*> entries;
  entries.reserve(static_cast<size_t>(before.size()));
  for (const QModelIndex& i : before) entries.push_back(EntryOf(i));
  std::vector<Level*> levels{top_.get()};
  while (!levels.empty()) {
    Level* level = levels.back();
    levels.pop_back();
    SortLevel(*level, sortColumn_, sortOrder_);
    for (Entry& e : level->entries) {
      if (e.kids) levels.push_back(e.kids.get());
    }
  }
  QModelIndexList after;
  after.reserve(before.size());
  for (qsizetype i = 0; i < before.size(); ++i) {
    const Entry* e = entries[static_cast<size_t>(i)];
    after << (e ? createIndex(e->pos, before[i].column(), e->owner) : QModelIndex());
  }
  changePersistentIndexList(before, after);
  Q_EMIT layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

std::vector<int> FileListModel::DefaultWidths(const QFontMetrics& m) {
  const int pad = m.averageCharWidth() * 3;
  auto w = [&m, pad](const QString& sample) { return m.horizontalAdvance(sample) + pad; };
  const int ch = m.averageCharWidth();
  return {ch * 36,
          w(QStringLiteral("999.9 MB")),
          w(DateText(45000.75) + QStringLiteral("0")),
          w(QStringLiteral("RHDA")),
          ch * 28,
          ch * 20,
          ch * 16,
          ch * 16,
          w(QStringLiteral("0000")),
          ch * 16,
          w(tr("Track")),
          w(QStringLiteral("00:00:00"))};
}

QStringList FileListModel::mimeTypes() const { return {QLatin1String(kItemMimeType)}; }

QMimeData* FileListModel::mimeData(const QModelIndexList& indexes) const {
  return indexes.isEmpty() ? nullptr : ItemMime::Encode(Item(indexes.front()));
}

}  // namespace gorvan::ui
