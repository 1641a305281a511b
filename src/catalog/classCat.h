#pragma once
// classCat: a cursor over the catalog's category chain, holding one category
// record at a time. Categories nest through their parent ids only.

#include <cstdint>
#include <string>
#include <vector>

#include "catalog/CatalogFile.h"
#include "catalog/Records.h"

namespace gorvan {

class classCat {
 public:
  // GetCategoryPath joins the category names from the top down with this.
  static constexpr const char* kPathSeparator = "\\";

  explicit classCat(CatalogFile* file = nullptr) : file_(file) {}
  void SetDefaultCatRec(CatalogFile* file) { file_ = file; }

  // Cursor operations.
  bool recordGet(int32_t id);
  bool recordWrite();
  bool RecordUpdate() { return recordWrite(); }
  int32_t recordAdd();  // a new unlinked block at the end of the file; loaded
  bool MoveFirst();
  bool MoveNext();
  bool isEof() const { return eof_; }
  bool MoveAbsolute(int32_t id) { return recordGet(id); }

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

  CatRecord& record() { return rec_; }
  const CatRecord& record() const { return rec_; }

 private:
  std::string Text(const TextRef& ref) const;
  bool SetText(TextRef* ref, const std::string& value);

  CatalogFile* file_;
  CatRecord rec_;
  bool eof_ = true;
  int64_t steps_ = 0;
  int64_t stepLimit_ = 0;  // 0 until the walk's first step
  std::vector<int32_t> stack_;
};

}  // namespace gorvan
