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
// Thread contract: the GUI thread.

#include <QAbstractTableModel>
#include <QFont>
#include <QIcon>
#include <deque>
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

  explicit SearchResultsModel(QObject* parent = nullptr);

  void Clear();
  // Adds rows found by the search (in the list's order when it is sorted).
  void Append(std::vector<SearchResult> rows);
  void Append(std::deque<SearchResult> rows);
  // The row shown at view row r / at index (null when there is none).
  const SearchResult* Row(const QModelIndex& index) const;
  const SearchResult& RowAt(int row) const { return rows_[static_cast<size_t>(order_[row])]; }
  // Every row in the order the list shows them.
  std::vector<SearchResult> RowsInOrder() const;
  // The view row of the row added last (-1 when empty).
  int LastAddedRow() const;
  void SetFont(const QFont& font);
  int sortColumn() const { return sortColumn_; }

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  void sort(int column, Qt::SortOrder order) override;

 private:
  template <typename Rows>
  void AppendRows(Rows& rows);
  bool Less(int a, int b) const;
  QIcon IconOf(const SearchResult& row) const;

  std::deque<SearchResult> rows_;  // as found (a deque: rows never move)
  std::vector<int> order_;         // view row -> rows_ index
  int sortColumn_ = -1;            // -1: the search's order
  Qt::SortOrder sortOrder_ = Qt::AscendingOrder;
  QFont font_;
  bool fontSet_ = false;
};

}  // namespace gorvan::ui
