#pragma once
// SearchResultsModel: the rows of the search window's results list
// (ListView1). Rows arrive in batches while the search runs and are kept as
// the search found them; the list shows them in the search's order until a
// column is clicked, then sorted by that column — rows arriving later are
// merged into their places, so the list stays sorted while it fills.
//
// Columns, in order: "FileName", "CD Name", "Path", "Date", "Size",
// "Attributes", "Notes", "Internal Date". "Date" carries the tag "dt_visible"
// and sorts by "Internal Date" (tag "dt_internal"); "Size" sorts by number;
// the texts sort case-blind with runs of digits in number order. A row's key
// (kKeyRole) is the one SearchResult::Key builds.
//
// A list of many rows is sorted on a thread of its own (sorted() tells when
// the new order is shown), so a click on a column of 100,000 rows never holds
// the window up; rows that arrive meanwhile join the new order in their places.
//
// Thread contract: the GUI thread.

#include <QAbstractTableModel>
#include <QFont>
#include <QIcon>
#include <algorithm>
#include <memory>
#include <thread>
#include <vector>

#include "search/SearchResult.h"

namespace gorvan::ui {

class SearchResultsModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column {
    kFileName,
    kCdName,
    kPath,
    kDate,
    kSize,
    kAttributes,
    kNotes,
    kInternalDate,
    kColumnCount
  };
  // The row's key ("T:3\C:120\D:940\F:1210").
  static constexpr int kKeyRole = Qt::UserRole + 1;
  // A column's tag (header data): "dt_visible" for "Date", "dt_internal" for
  // "Internal Date", empty for the others.
  static constexpr int kTagRole = Qt::UserRole + 2;

  // Lists of at least this many rows sort on a thread of their own.
  static constexpr int kBackgroundSortRows = 20000;

  explicit SearchResultsModel(QObject* parent = nullptr);
  ~SearchResultsModel() override;

  // Empties the list. The rows that were shown are handed back: freeing
  // 100,000 rows takes a while, which the caller may spend elsewhere.
  std::shared_ptr<void> Clear();
  // Adds rows found by the search (in the list's order when it is sorted).
  void Append(std::vector<SearchResult> rows);
  // Rows in the blocks a search hands them over in, kept as they are.
  void Append(std::vector<std::vector<SearchResult>> blocks);
  // The row shown at view row r / at index (null when there is none).
  const SearchResult* Row(const QModelIndex& index) const;
  const SearchResult& RowAt(int row) const {
    return (*rows_)[static_cast<size_t>(order_[static_cast<size_t>(row)])];
  }
  // Every row in the order the list shows them.
  std::vector<SearchResult> RowsInOrder() const;
  // The same rows, to be read on another thread: a row never moves while
  // rows are added, and *keep holds the rows alive when the list is emptied.
  std::vector<const SearchResult*> RowsInOrder(std::shared_ptr<const void>* keep) const;
  // The row shown at view row viewRow, as numbered when found; the view row
  // of such a row. -1 when there is none.
  int RowIndex(int viewRow) const;
  int ViewRow(int rowIndex) const;
  // The view row of the row added last (-1 when empty).
  int LastAddedRow() const;
  void SetFont(const QFont& font);
  int sortColumn() const { return sortColumn_; }
  // False while a sort runs on its thread.
  bool sorted() const { return !sorting_; }

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  void sort(int column, Qt::SortOrder order) override;

 Q_SIGNALS:
  // A sort that ran on its thread is shown.
  void sortDone();
  // A long list is about to be shown in a new order (a reset, so a view's
  // chosen row is not kept by the model) / has been.
  void orderChanging();
  void orderChanged();

 private:
  // The rows as found, in the batches they came in: a batch is kept as it
  // was handed over, so adding one moves no row (a row's address never
  // changes, which a sort on its thread relies on).
  class Rows {
   public:
    size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    const SearchResult& operator[](size_t i) const {
      // The batch holding row i: the last that starts at or before it.
      const size_t k = static_cast<size_t>(std::upper_bound(starts_.begin(), starts_.end(), i) -
                                           starts_.begin()) -
                       1;
      return (*batches_[k])[i - starts_[k]];
    }
    void Add(std::vector<SearchResult> batch) {
      if (batch.empty()) return;
      starts_.push_back(size_);
      size_ += batch.size();
      batches_.push_back(std::make_unique<std::vector<SearchResult>>(std::move(batch)));
    }

   private:
    std::vector<std::unique_ptr<std::vector<SearchResult>>> batches_;
    std::vector<size_t> starts_;
    size_t size_ = 0;
  };
  // a before b in the order of column (ascending or not).
  static bool Less(const SearchResult& a, const SearchResult& b, int column, Qt::SortOrder order);
  // Shows order (view row -> row index) as the list's order, keeping the
  // persistent indexes on their rows.
  void ShowOrder(std::vector<int> order);
  // sorted (rows below first, in the list's order) with the rows from first
  // on merged into their places.
  std::vector<int> Merged(const std::vector<int>& sorted, int first) const;
  void AppendRows(std::vector<std::vector<SearchResult>>& blocks);
  bool Less(int a, int b) const;
  QIcon IconOf(const SearchResult& row) const;

  // As found; shared with a running sort, which reads the rows it was given
  // while new ones are added.
  std::shared_ptr<Rows> rows_;
  std::vector<int> order_;  // view row -> rows_ index
  int sortColumn_ = -1;     // -1: the search's order
  Qt::SortOrder sortOrder_ = Qt::AscendingOrder;
  QFont font_;
  bool fontSet_ = false;
  std::thread sorter_;
  bool sorting_ = false;
  int sortGeneration_ = 0;  // a sort whose generation is past is not shown
};

}  // namespace gorvan::ui
