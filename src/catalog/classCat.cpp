#include "catalog/classCat.h"

#include "catalog/ChainOps.h"

namespace gorvan {

int32_t classCat::recordAdd() {
  const int32_t id = file_->AppendBlock(CatRecord::kSize);
  if (id == 0) return 0;
  rec_ = CatRecord{};
  rec_.id = id;
  rec_.bytesUsed = static_cast<int32_t>(CatRecord::kSize);
  if (!recordWrite()) return 0;
  eof_ = false;
  return id;
}

bool classCat::MoveFirst() { return WalkFrom(file_->header().firstCat); }

bool classCat::MoveNext() { return WalkNext(); }

bool classCat::SetText(TextRef* ref, const std::string& value) {
  int64_t delta = 0;
  if (!file_->WriteText(value, ref, &delta)) return false;
  rec_.bytesUsed = static_cast<int32_t>(rec_.bytesUsed + delta);
  return RecordUpdate();
}

bool classCat::RecordPop() {
  if (stack_.empty()) return false;
  const int32_t id = stack_.back();
  stack_.pop_back();
  return recordGet(id);
}

std::string classCat::GetCategoryPath() {
  std::string path;
  RecordPush();
  // A parent chain longer than the number of categories is a loop.
  int64_t guard = file_->header().catCount + 1;
  while (rec_.parent != 0 && guard-- > 0 && recordGet(rec_.parent)) {
    path.insert(0, GetCatName() + (path.empty() ? "" : kPathSeparator));
  }
  RecordPop();
  return path;
}

std::string classCat::GetCategoryPathIncludingMine() {
  const std::string parents = GetCategoryPath();
  return parents.empty() ? GetCatName() : parents + kPathSeparator + GetCatName();
}

}  // namespace gorvan
