#include "ui/search/SearchResultsModel.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <utility>

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

SearchResultsModel::SearchResultsModel(QObject* parent)
    : QAbstractTableModel(parent), rows_(std::make_shared<Rows>()) {}

SearchResultsModel::~SearchResultsModel() {
  // Its result, posted to this model, goes with the model.
  if (sorter_.joinable()) sorter_.join();
}

std::shared_ptr<void> SearchResultsModel::Clear() {
  beginResetModel();
  // A running sort keeps the old rows alive until it ends; its order is not shown.
  ++sortGeneration_;
  sorting_ = false;
  std::shared_ptr<void> old = std::exchange(rows_, std::make_shared<Rows>());
  order_.clear();
  endResetModel();
  return old;
}

void SearchResultsModel::AppendRows(std::vector<std::vector<SearchResult>>& blocks) {
  const int first = static_cast<int>(rows_->size());
  int count = 0;
  for (std::vector<SearchResult>& block : blocks) {
    count += static_cast<int>(block.size());
    rows_->Add(std::move(block));
  }
  if (count == 0) return;
  if (sortColumn_ < 0 || sorting_) {
    // In the search's order, or waiting for a sort that takes them in.
    beginInsertRows({}, static_cast<int>(order_.size()),
                    static_cast<int>(order_.size()) + count - 1);
    for (int i = 0; i < count; ++i) order_.push_back(first + i);
    endInsertRows();
    return;
  }
  ShowOrder(Merged(order_, first));
}

std::vector<int> SearchResultsModel::Merged(const std::vector<int>& sorted, int first) const {
  // The new rows are sorted on their own and merged into the sorted ones: one
  // pass over the list however many batches come.
  const int total = static_cast<int>(rows_->size());
  std::vector<int> batch;
  batch.reserve(static_cast<size_t>(total - first));
  for (int i = first; i < total; ++i) batch.push_back(i);
  const auto less = [this](int a, int b) { return Less(a, b); };
  std::stable_sort(batch.begin(), batch.end(), less);
  std::vector<int> merged;
  merged.reserve(sorted.size() + batch.size());
  std::merge(sorted.begin(), sorted.end(), batch.begin(), batch.end(), std::back_inserter(merged),
             less);
  return merged;
}

void SearchResultsModel::ShowOrder(std::vector<int> order) {
  if (static_cast<int>(order.size()) >= kBackgroundSortRows) {
    // A long list is shown anew: a layout change would move a persistent
    // index for every row of the view's header, which costs the window
    // longer than the sort. The window puts its chosen row back.
    Q_EMIT orderChanging();
    beginResetModel();
    order_ = std::move(order);
    endResetModel();
    Q_EMIT orderChanged();
    return;
  }
  const bool grows = order.size() > order_.size();
  const int before = static_cast<int>(order_.size());
  if (grows) {
    // The rows not shown yet (the last ones found) come in first, at the
    // end; the layout change then puts every row in its place.
    beginInsertRows({}, before, static_cast<int>(order.size()) - 1);
    for (int i = before; i < static_cast<int>(order.size()); ++i) order_.push_back(i);
    endInsertRows();
  }
  Q_EMIT layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
  const QModelIndexList from = persistentIndexList();
  std::vector<int> rowsBefore;
  rowsBefore.reserve(static_cast<size_t>(from.size()));
  for (const QModelIndex& at : from) rowsBefore.push_back(order_[static_cast<size_t>(at.row())]);
  order_ = std::move(order);
  std::vector<int> viewRow(rows_->size(), 0);
  for (size_t r = 0; r < order_.size(); ++r)
    viewRow[static_cast<size_t>(order_[r])] = static_cast<int>(r);
  QModelIndexList to;
  to.reserve(from.size());
  for (qsizetype i = 0; i < from.size(); ++i)
    to.append(
        index(viewRow[static_cast<size_t>(rowsBefore[static_cast<size_t>(i)])], from[i].column()));
  changePersistentIndexList(from, to);
  Q_EMIT layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

void SearchResultsModel::Append(std::vector<SearchResult> rows) {
  std::vector<std::vector<SearchResult>> blocks;
  blocks.push_back(std::move(rows));
  AppendRows(blocks);
}
void SearchResultsModel::Append(std::vector<std::vector<SearchResult>> blocks) {
  AppendRows(blocks);
}

const SearchResult* SearchResultsModel::Row(const QModelIndex& index) const {
  if (!index.isValid() || index.row() < 0 || index.row() >= static_cast<int>(order_.size()))
    return nullptr;
  return &RowAt(index.row());
}

std::vector<SearchResult> SearchResultsModel::RowsInOrder() const {
  std::vector<SearchResult> out;
  out.reserve(order_.size());
  for (int i : order_) out.push_back((*rows_)[static_cast<size_t>(i)]);
  return out;
}

std::vector<const SearchResult*> SearchResultsModel::RowsInOrder(
    std::shared_ptr<const void>* keep) const {
  *keep = rows_;
  std::vector<const SearchResult*> out;
  out.reserve(order_.size());
  for (int i : order_) out.push_back(&(*rows_)[static_cast<size_t>(i)]);
  return out;
}

int SearchResultsModel::RowIndex(int viewRow) const {
  if (viewRow < 0 || viewRow >= static_cast<int>(order_.size())) return -1;
  return order_[static_cast<size_t>(viewRow)];
}

int SearchResultsModel::ViewRow(int rowIndex) const {
  const auto it = std::find(order_.begin(), order_.end(), rowIndex);
  return it == order_.end() ? -1 : static_cast<int>(it - order_.begin());
}

int SearchResultsModel::LastAddedRow() const {
  if (rows_->empty()) return -1;
  if (sortColumn_ < 0 || sorting_) return static_cast<int>(order_.size()) - 1;
  const int last = static_cast<int>(rows_->size()) - 1;
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
  return Less((*rows_)[static_cast<size_t>(a)], (*rows_)[static_cast<size_t>(b)], sortColumn_,
              sortOrder_);
}

bool SearchResultsModel::Less(const SearchResult& x, const SearchResult& y, int column,
                              Qt::SortOrder order) {
  int c = 0;
  switch (column) {
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
      c = NaturalCompare(Field(x, column), Field(y, column));
  }
  return order == Qt::AscendingOrder ? c < 0 : c > 0;
}

void SearchResultsModel::sort(int column, Qt::SortOrder order) {
  if (column < 0 || column >= kColumnCount) return;
  // A view asks twice for one click (the header's indicator, then the view
  // itself): the sort that runs already answers both.
  if (sorting_ && column == sortColumn_ && order == sortOrder_) return;
  sortColumn_ = column;
  sortOrder_ = order;
  const int generation = ++sortGeneration_;
  std::vector<int> all(rows_->size());
  for (size_t i = 0; i < all.size(); ++i) all[i] = static_cast<int>(i);
  if (static_cast<int>(all.size()) < kBackgroundSortRows) {
    sorting_ = false;
    std::stable_sort(all.begin(), all.end(), [this](int a, int b) { return Less(a, b); });
    ShowOrder(std::move(all));
    return;
  }
  // The rows are read through pointers that stay valid while rows are added
  // (kept in their blocks) and while the list is emptied (the sort holds the rows).
  if (sorter_.joinable()) sorter_.join();
  sorting_ = true;
  auto rows = rows_;
  std::vector<const SearchResult*> items(all.size());
  for (size_t i = 0; i < items.size(); ++i) items[i] = &(*rows)[i];
  sorter_ = std::thread([this, rows, items = std::move(items), all = std::move(all), column, order,
                         generation]() mutable {
    std::stable_sort(all.begin(), all.end(), [&](int a, int b) {
      return Less(*items[static_cast<size_t>(a)], *items[static_cast<size_t>(b)], column, order);
    });
    QMetaObject::invokeMethod(
        this,
        [this, all = std::move(all), generation]() mutable {
          if (generation != sortGeneration_) return;
          sorting_ = false;
          // Rows added while the sort ran join the new order in their places.
          const int sortedRows = static_cast<int>(all.size());
          ShowOrder(Merged(all, sortedRows));
          Q_EMIT sortDone();
        },
        Qt::QueuedConnection);
  });
}

}  // namespace gorvan::ui
