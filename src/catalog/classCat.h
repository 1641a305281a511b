#pragma once
// classCat: a cursor over the catalog's category chain, holding one category
// record at a time. Categories nest through their parent ids only.

#include <cstdint>
#include <string>
#include <vector>

#include "catalog/CatalogFile.h"
#include "catalog/ChainCursor.h"
#include "catalog/Records.h"

namespace gorvan {

class classCat : public ChainCursor<CatRecord> {
 public:
  // GetCategoryPath joins the category names from the top down with this.
  static constexpr const char* kPathSeparator = "\\";

  explicit classCat(CatalogFile* file = nullptr) : ChainCursor(file, "category") {}
  void SetDefaultCatRec(CatalogFile* file) { file_ = file; }

  // Cursor operations.
  int32_t recordAdd();  // a new unlinked block at the end of the file; loaded
  bool MoveFirst();
  bool MoveNext();

  int32_t GetCatId() const { return rec_.id; }
  std::string GetCatName() const { return Text(rec_.name); }
  std::string GetCatNotes() const { return Text(rec_.notes); }
  std::string GetCatExtra() const { return Text(rec_.extra); }
  std::string GetCatIconKey() const { return Text(rec_.iconKey); }
  int32_t GetCatParentId() const { return rec_.parent; }
  int32_t GetCatBytesUsed() const { return rec_.bytesUsed; }
  double GetCatCreated() const { return rec_.created; }
  bool SetCatName(const std::string& v) { return SetText(&rec_.name, v); }
  bool SetCatNotes(const std::string& v) { return SetText(&rec_.notes, v); }
  bool SetCatExtra(const std::string& v) { return SetText(&rec_.extra, v); }
  bool SetCatIconKey(const std::string& v) { return SetText(&rec_.iconKey, v); }
  bool SetCatParentId(int32_t id) { return rec_.parent = id, RecordUpdate(); }
  bool SetCatCreated(double d) { return rec_.created = d, RecordUpdate(); }

  int32_t GetNextRecord() const { return rec_.next; }
  int32_t GetPrevRecord() const { return rec_.prev; }
  bool SetNextRecord(int32_t id) { return rec_.next = id, RecordUpdate(); }
  bool SetPrevRecord(int32_t id) { return rec_.prev = id, RecordUpdate(); }
  // Bytes the category's block and texts occupy.
  int32_t GetSpaceUsed() const { return rec_.bytesUsed; }

  // Names of the ancestors, top-down, joined by kPathSeparator (not this one's).
  std::string GetCategoryPath();
  // The same with this category's own name last.
  std::string GetCategoryPathIncludingMine();

  // Save the loaded category's id / load it again.
  void RecordPush() { stack_.push_back(rec_.id); }
  bool RecordPop();


 private:
  bool SetText(TextRef* ref, const std::string& value);

  std::vector<int32_t> stack_;
};

}  // namespace gorvan
