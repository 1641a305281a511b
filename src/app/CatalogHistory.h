#pragma once
// CatalogHistory: the five most recent catalogs, newest first, kept in the
// settings store as "History"/"HistoryMenu1" .. "HistoryMenu5" — the list the
// desktop program's File menu shows and the catalog gorvan-cli opens when none
// is named.
//
// Thread contract: any thread (the store is re-read on every call).

#include <string>
#include <vector>

namespace gorvan {

class CatalogHistory {
 public:
  static constexpr int kSize = 5;

  // The stored entries, newest first; empty slots are left out.
  static std::vector<std::string> Entries();
  // "HistoryMenu1", or "" when the history is empty.
  static std::string Newest();
  // Puts path first; an entry for the same path further down is dropped, and
  // the list keeps its five newest entries.
  static void Push(const std::string& path);
  // Takes path out of the list (a catalog that no longer exists).
  static void Remove(const std::string& path);

 private:
  static void Store(const std::vector<std::string>& entries);
};

}  // namespace gorvan
