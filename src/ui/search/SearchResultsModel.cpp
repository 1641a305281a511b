#include "ui/search/SearchResultsModel.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "catalog/TextUtil.h"
#include "ui/widgets/ThemeIcons.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

const std::string& Field(const SearchResult& r, int column) {
  switch (column) {
    case SearchResultsModel::kFileName:
      return r.fileName;
    case SearchResultsModel::kCdName:
      return r.cdName;
    case SearchResultsModel::kPath:
      return r.path;
    case SearchResultsModel::kDate:
      return r.date;
    case SearchResultsModel::kSize:
      return r.size;
    case SearchResultsModel::kAttributes:
      return r.attributes;
    case SearchResultsModel::kNotes:
      return r.notes;
    default:
      return r.internalDate;
  }
}

// A size as a number; false for text that is none (an audio track's "3:45 Min").
bool Number(const std::string& text, double* out) {
  if (text.empty()) return false;
  char* end = nullptr;
  errno = 0;
  *out = std::strtod(text.c_str(), &end);
  return errno == 0 && end && *end == '\0';
}

}  // namespace

SearchResultsModel::SearchResultsModel(QObject* parent) : QAbstractTableModel(parent) {}

void SearchResultsModel::Clear() {
  beginResetModel();
  rows_.clear();
  order_.clear();
  endResetModel();
}

template <typename Rows>
void SearchResultsModel::AppendRows(Rows& rows) {
  if (rows.empty()) return;
  const int first = static_cast<int>(rows_.size());
  const int count = static_cast<int>(rows.size());
  for (SearchResult& r : rows) rows_.push_back(std::move(r));
  if (sortColumn_ < 0) {
    beginInsertRows({}, first, first + count - 1);
    for (int i = 0; i < count; ++i) order_.push_back(first + i);
    endInsertRows();
    return;
  }
  // Sorted: the batch is sorted on its own and merged into the list, one
  // pass over the rows however many batches come.
  std::vector<int> batch(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) batch[static_cast<size_t>(i)] = first + i;
  const auto less = [this](int a, int b) { return Less(a, b); };
  std::stable_sort(batch.begin(), batch.end(), less);
  Q_EMIT layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
  const QModelIndexList before = persistentIndexList();
  std::vector<int> merged;
  merged.reserve(order_.size() + batch.size());
  std::vector<int> moved(order_.size());  // old view row -> new view row
  size_t i = 0, j = 0;
  while (i < order_.size() || j < batch.size()) {
    if (j == batch.size() || (i < order_.size() && !less(batch[j], order_[i]))) {
      moved[i] = static_cast<int>(merged.size());
      merged.push_back(order_[i++]);
    } else {
      merged.push_back(batch[j++]);
    }
  }
  order_ = std::move(merged);
  QModelIndexList after;
  after.reserve(before.size());
  for (const QModelIndex& at : before)
    after.append(index(moved[static_cast<size_t>(at.row())], at.column()));
  changePersistentIndexList(before, after);
  Q_EMIT layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

void SearchResultsModel::Append(std::vector<SearchResult> rows) { AppendRows(rows); }
void SearchResultsModel::Append(std::deque<SearchResult> rows) { AppendRows(rows); }

const SearchResult* SearchResultsModel::Row(const QModelIndex& index) const {
  if (!index.isValid() || index.row() < 0 || index.row() >= static_cast<int>(order_.size()))
    return nullptr;
  return &RowAt(index.row());
}

std::vector<SearchResult> SearchResultsModel::RowsInOrder() const {
  std::vector<SearchResult> out;
  out.reserve(order_.size());
  for (int i : order_) out.push_back(rows_[static_cast<size_t>(i)]);
  return out;
}

int SearchResultsModel::LastAddedRow() const {
  if (rows_.empty()) return -1;
  if (sortColumn_ < 0) return static_cast<int>(rows_.size()) - 1;
  const int last = static_cast<int>(rows_.size()) - 1;
  const auto it = std::find(order_.begin(), order_.end(), last);
  return it == order_.end() ? -1 : static_cast<int>(it - order_.begin());
}

void SearchResultsModel::SetFont(const QFont& font) {
  font_ = font;
  fontSet_ = true;
  if (!order_.empty()) Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, kColumnCount - 1));
}

int SearchResultsModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(order_.size());
}

int SearchResultsModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : kColumnCount;
}

QIcon SearchResultsModel::IconOf(const SearchResult& row) const {
  switch (row.kind) {
    case SearchResult::Kind::kDisc:
      return ThemeIcons::Named("media-optical|drive-optical");
    case SearchResult::Kind::kFolder:
      return ThemeIcons::Folder();
    case SearchResult::Kind::kFile:
      return ThemeIcons::File(row.fileName);
    case SearchResult::Kind::kArchiveEntry:
      // An archive's members show the archive type's icon.
      return ThemeIcons::File("*.zip");
  }
  return {};
}

QVariant SearchResultsModel::data(const QModelIndex& index, int role) const {
  const SearchResult* row = Row(index);
  if (!row) return {};
  switch (role) {
    case Qt::DisplayRole:
      return RowText(Field(*row, index.column()));
    case Qt::ToolTipRole:
      return index.column() == kPath || index.column() == kNotes
                 ? QVariant(Qs(Field(*row, index.column())))
                 : QVariant();
    case Qt::DecorationRole:
      return index.column() == kFileName ? QVariant(IconOf(*row)) : QVariant();
    case Qt::TextAlignmentRole:
      return index.column() == kSize ? QVariant(Qt::AlignRight | Qt::AlignVCenter) : QVariant();
    case Qt::FontRole:
      return fontSet_ ? QVariant(font_) : QVariant();
    case kKeyRole:
      return Qs(row->Key());
    default:
      return {};
  }
}

QVariant SearchResultsModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section < 0 || section >= kColumnCount) return {};
  if (role == Qt::DisplayRole) return Qs(SearchResult::kColumns[section]);
  if (role == kTagRole) {
    if (section == kDate) return QStringLiteral("dt_visible");
    if (section == kInternalDate) return QStringLiteral("dt_internal");
    return QString();
  }
  if (role == Qt::TextAlignmentRole && section == kSize)
    return QVariant(Qt::AlignRight | Qt::AlignVCenter);
  return {};
}

bool SearchResultsModel::Less(int a, int b) const {
  const SearchResult& x = rows_[static_cast<size_t>(a)];
  const SearchResult& y = rows_[static_cast<size_t>(b)];
  int c = 0;
  switch (sortColumn_) {
    case kDate:
    case kInternalDate:
      // "Date" sorts by its internal key, as the list always has.
      c = x.internalDate.compare(y.internalDate);
      break;
    case kSize: {
      double p = 0, q = 0;
      const bool np = Number(x.size, &p), nq = Number(y.size, &q);
      if (np && nq) {
        c = p < q ? -1 : p > q ? 1 : 0;
      } else if (np != nq) {
        c = np ? -1 : 1;  // numbers before other text
      } else {
        c = NaturalCompare(x.size, y.size);
      }
      break;
    }
    default:
      c = NaturalCompare(Field(x, sortColumn_), Field(y, sortColumn_));
  }
  return sortOrder_ == Qt::AscendingOrder ? c < 0 : c > 0;
}

void SearchResultsModel::sort(int column, Qt::SortOrder order) {
  if (column < 0 || column >= kColumnCount) return;
  Q_EMIT layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
  const QModelIndexList before = persistentIndexList();
  std::vector<int> rowsBefore;
  rowsBefore.reserve(static_cast<size_t>(before.size()));
  for (const QModelIndex& at : before) rowsBefore.push_back(order_[static_cast<size_t>(at.row())]);
  sortColumn_ = column;
  sortOrder_ = order;
  std::stable_sort(order_.begin(), order_.end(), [this](int a, int b) { return Less(a, b); });
  std::vector<int> viewRow(rows_.size());
  for (size_t r = 0; r < order_.size(); ++r)
    viewRow[static_cast<size_t>(order_[r])] = static_cast<int>(r);
  QModelIndexList after;
  after.reserve(before.size());
  for (qsizetype i = 0; i < before.size(); ++i)
    after.append(index(viewRow[static_cast<size_t>(rowsBefore[static_cast<size_t>(i)])],
                       before[i].column()));
  changePersistentIndexList(before, after);
  Q_EMIT layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

}  // namespace gorvan::ui
