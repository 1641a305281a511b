#include "ui/explorer/DiscTableModel.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "ui/session/CatalogReads.h"
#include "ui/session/CatalogSession.h"
#include "ui/session/ViewLoader.h"
#include "ui/widgets/ThemeIcons.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {

DiscTableModel::DiscTableModel(CatalogSession& session, QObject* parent)
    : QAbstractTableModel(parent), session_(session) {}

void DiscTableModel::Reload() {
  session_.loader().Load<CatalogSnapshot>(
      this, "DiscTableModel." + std::to_string(reinterpret_cast<uintptr_t>(this)),
      [](classData& d, const std::stop_token& stop) { return CatalogReads::Catalog(d, stop); },
      [this](CatalogSnapshot& s) { Fill(std::move(s)); });
}

void DiscTableModel::Clear() {
  beginResetModel();
  rows_.clear();
  order_.clear();
  loaded_ = false;
  endResetModel();
}

void DiscTableModel::Fill(CatalogSnapshot snapshot) {
  std::unordered_map<int32_t, const CategoryRow*> byId;
  for (const CategoryRow& c : snapshot.categories) byId.emplace(c.id, &c);
  beginResetModel();
  rows_.clear();
  rows_.reserve(snapshot.discs.size());
  for (DiscRow& d : snapshot.discs) {
    Row row;
    // The category's path; a loop of parents ends it.
    std::unordered_set<int32_t> seen;
    for (int32_t up = d.category; up != 0 && seen.insert(up).second;) {
      const auto it = byId.find(up);
      if (it == byId.end()) break;
      row.category =
          row.category.empty() ? it->second->name : it->second->name + " / " + row.category;
      up = it->second->parent;
    }
    row.disc = std::move(d);
    rows_.push_back(std::move(row));
  }
  SortRows();
  loaded_ = true;
  endResetModel();
  Q_EMIT reloaded();
}

void DiscTableModel::SortRows() {
  order_.resize(rows_.size());
  for (size_t i = 0; i < order_.size(); ++i) order_[i] = static_cast<int32_t>(i);
  const int column = sortColumn_;
  auto cmp = [this, column](int32_t ia, int32_t ib) {
    const Row& a = rows_[static_cast<size_t>(ia)];
    const Row& b = rows_[static_cast<size_t>(ib)];
    auto three = [](auto x, auto y) { return x < y ? -1 : y < x ? 1 : 0; };
    int c = 0;
    switch (column) {
      case kCategory:
        c = QString::localeAwareCompare(Qs(a.category), Qs(b.category));
        break;
      case kLabel:
        c = QString::localeAwareCompare(Qs(a.disc.label), Qs(b.disc.label));
        break;
      case kMediaType:
        c = three(a.disc.mediaType, b.disc.mediaType);
        break;
      case kFolders:
        c = three(a.disc.folders, b.disc.folders);
        break;
      case kFiles:
        c = three(a.disc.files, b.disc.files);
        break;
      case kTotalSize:
        c = three(a.disc.totalSize, b.disc.totalSize);
        break;
      case kFreeSpace:
        c = three(a.disc.freeSpace, b.disc.freeSpace);
        break;
      case kLastScanned:
        c = three(a.disc.lastScanned, b.disc.lastScanned);
        break;
      case kNotes:
        c = QString::localeAwareCompare(Qs(a.disc.notes), Qs(b.disc.notes));
        break;
      default:
        break;
    }
    if (c == 0) c = QString::localeAwareCompare(Qs(a.disc.DisplayName()), Qs(b.disc.DisplayName()));
    return sortOrder_ == Qt::DescendingOrder ? c > 0 : c < 0;
  };
  std::stable_sort(order_.begin(), order_.end(), cmp);
}

void DiscTableModel::sort(int column, Qt::SortOrder order) {
  if (column < 0 || column >= kColumnCount) return;
  sortColumn_ = column;
  sortOrder_ = order;
  Q_EMIT layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
  const QModelIndexList before = persistentIndexList();
  std::vector<int32_t> discs;
  for (const QModelIndex& i : before) discs.push_back(Disc(i.row()) ? Disc(i.row())->id : 0);
  SortRows();
  QModelIndexList after;
  for (qsizetype i = 0; i < before.size(); ++i) {
    const QModelIndex at = IndexOf(discs[static_cast<size_t>(i)]);
    after << (at.isValid() ? index(at.row(), before[i].column()) : QModelIndex());
  }
  changePersistentIndexList(before, after);
  Q_EMIT layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

const DiscRow* DiscTableModel::Disc(int row) const {
  if (row < 0 || row >= static_cast<int>(order_.size())) return nullptr;
  return &rows_[static_cast<size_t>(order_[static_cast<size_t>(row)])].disc;
}

const DiscRow* DiscTableModel::DiscById(int32_t id) const {
  for (const Row& r : rows_) {
    if (r.disc.id == id) return &r.disc;
  }
  return nullptr;
}

QModelIndex DiscTableModel::IndexOf(int32_t discId) const {
  for (size_t r = 0; r < order_.size(); ++r) {
    if (rows_[static_cast<size_t>(order_[r])].disc.id == discId)
      return index(static_cast<int>(r), 0);
  }
  return {};
}

CatalogItem DiscTableModel::Item(const QModelIndex& index) const {
  CatalogItem item;
  if (const DiscRow* d = Disc(index.row()); d && index.isValid()) {
    item.kind = NodeKind::kDisc;
    item.id = d->id;
    item.discId = d->id;
    item.name = Qs(d->name);
  }
  return item;
}

void DiscTableModel::SetFont(const QFont& font) {
  font_ = font;
  fontSet_ = true;
  if (!rows_.empty()) Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, kColumnCount - 1));
}

std::vector<int> DiscTableModel::DefaultWidths(const QFontMetrics& m) {
  const int pad = m.averageCharWidth() * 3;
  auto w = [&m, pad](const QString& sample) { return m.horizontalAdvance(sample) + pad; };
  const int ch = m.averageCharWidth();
  return {ch * 30,
          ch * 20,
          ch * 14,
          w(tr("Removable disk")),
          w(tr("Folders")),
          w(tr("Files") + QStringLiteral("000")),
          w(QStringLiteral("999.9 MB")),
          w(QStringLiteral("999.9 MB")),
          w(DateText(45000.75) + QStringLiteral("0")),
          ch * 30};
}

int DiscTableModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(order_.size());
}

int DiscTableModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : kColumnCount;
}

QVariant DiscTableModel::data(const QModelIndex& index, int role) const {
  const DiscRow* d = Disc(index.row());
  if (!d || !index.isValid()) return {};
  const Row& row = rows_[static_cast<size_t>(order_[static_cast<size_t>(index.row())])];
  switch (role) {
    case Qt::DisplayRole:
      switch (index.column()) {
        case kName:
          return RowText(d->DisplayName());
        case kCategory:
          return RowText(row.category);
        case kLabel:
          return RowText(d->label);
        case kMediaType:
          return MediaTypeText(d->mediaType);
        case kFolders:
          return d->folders;
        case kFiles:
          return d->files;
        case kTotalSize:
          return SizeText(d->totalSize);
        case kFreeSpace:
          return SizeText(d->freeSpace);
        case kLastScanned:
          return DateText(d->lastScanned);
        case kNotes:
          return RowText(d->notes);
        default:
          return {};
      }
    case Qt::EditRole:
      return index.column() == kName ? QVariant(Qs(d->name)) : data(index, Qt::DisplayRole);
    case Qt::DecorationRole:
      return index.column() == kName ? QVariant(ThemeIcons::Disc(d->iconKey)) : QVariant();
    case Qt::TextAlignmentRole:
      if (index.column() >= kFolders && index.column() <= kFreeSpace) {
        return QVariant(Qt::AlignRight | Qt::AlignVCenter);
      }
      return {};
    case Qt::FontRole:
      return fontSet_ ? QVariant(font_) : QVariant();
    default:
      return {};
  }
}

bool DiscTableModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (role != Qt::EditRole || index.column() != kName || !Disc(index.row())) return false;
  Q_EMIT renameRequested(Item(index), value.toString());
  return false;
}

QVariant DiscTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  static const char* const kTitles[] = {QT_TR_NOOP("Name"),         QT_TR_NOOP("Category"),
                                        QT_TR_NOOP("Label"),        QT_TR_NOOP("Media Type"),
                                        QT_TR_NOOP("Folders"),      QT_TR_NOOP("Files"),
                                        QT_TR_NOOP("Total Size"),   QT_TR_NOOP("Free Space"),
                                        QT_TR_NOOP("Last Scanned"), QT_TR_NOOP("Notes")};
  return section >= 0 && section < kColumnCount ? tr(kTitles[section]) : QString();
}

Qt::ItemFlags DiscTableModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::NoItemFlags;
  Qt::ItemFlags f = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
  if (index.column() == kName) f |= Qt::ItemIsEditable;
  return f;
}

}  // namespace gorvan::ui
