#include "catalog/CatalogEditor.h"

#include <string_view>
#include <utility>
#include <vector>

#include "catalog/CatalogRules.h"

namespace gorvan {

Status CatalogEditor::Done() {
  if (!data_->ok()) return data_->status();
  return data_->Flush() ? Status::OK() : data_->status();
}

bool CatalogEditor::IsSameOrAncestor(int32_t id, int32_t of) {
  classCat cat(data_->file());
  int64_t guard = data_->GetCatCount() + 1;
  for (int32_t up = of; up != 0 && guard-- > 0;) {
    if (up == id) return true;
    if (!cat.recordGet(up)) return false;
    up = cat.GetCatParentId();
  }
  return false;
}

bool CatalogEditor::CategoryHasChildren(int32_t id) {
  classCat cat(data_->file());
  for (cat.MoveFirst(); !cat.isEof(); cat.MoveNext()) {
    if (cat.GetCatParentId() == id) return true;
  }
  classCd cd(data_->file());
  for (cd.MoveFirst(); !cd.isEof(); cd.MoveNext()) {
    if (cd.GetCdCategory() == id) return true;
  }
  return false;
}

Status CatalogEditor::AddCategory(const std::string& name, int32_t parent, int32_t* newId) {
  classCat cat = data_->CatCursor();
  if (parent != 0) {
    Status s = data_->FindCat(parent, &cat);
    if (!s.ok()) return s;
  }
  data_->GetCatAppend(cat);
  cat.SetCatName(name.empty() ? kNewCategoryName : name);
  cat.SetCatParentId(parent);
  if (!data_->ok() || !data_->GetCatCommit(cat)) return data_->status();
  *newId = cat.GetCatId();
  return Done();
}

Status CatalogEditor::RenameCategory(int32_t id, const std::string& name) {
  classCat cat = data_->CatCursor();
  Status s = data_->FindCat(id, &cat);
  if (!s.ok()) return s;
  cat.SetCatName(name);
  return Done();
}

Status CatalogEditor::MoveCategory(int32_t id, int32_t newParent) {
  classCat cat = data_->CatCursor();
  Status s = newParent != 0 ? data_->FindCat(newParent, &cat) : Status::OK();
  if (s.ok()) s = data_->FindCat(id, &cat);
  if (!s.ok()) return s;
  const std::string refusal = CatalogRules::CheckMove(
      NodeKind::kCategory, newParent ? NodeKind::kCategory : NodeKind::kCatalog,
      newParent != 0 && IsSameOrAncestor(id, newParent));
  if (!refusal.empty()) return Status::InvalidArgument(refusal);
  cat.SetCatParentId(newParent);
  return Done();
}

Status CatalogEditor::DeleteCategory(int32_t id) {
  classCat cat = data_->CatCursor();
  Status s = data_->FindCat(id, &cat);
  if (!s.ok()) return s;
  const std::string refusal =
      CatalogRules::CheckDelete(NodeKind::kCategory, CategoryHasChildren(id));
  if (!refusal.empty()) return Status::InvalidArgument(refusal);
  if (!data_->GetCatDelete(id)) return data_->status();
  return Done();
}

Status CatalogEditor::SetCategoryNotes(int32_t id, const std::string& notes) {
  classCat cat = data_->CatCursor();
  Status s = data_->FindCat(id, &cat);
  if (!s.ok()) return s;
  cat.SetCatNotes(notes);
  return Done();
}

Status CatalogEditor::DeleteDisc(int32_t id) {
  classCd cd = data_->CdCursor();
  Status s = data_->FindCd(id, &cd);
  if (!s.ok()) return s;
  if (!data_->GetCdDelete(id)) return data_->status();
  return Done();
}

Status CatalogEditor::RenameDisc(int32_t id, const std::string& name) {
  classCd cd = data_->CdCursor();
  Status s = data_->FindCd(id, &cd);
  if (!s.ok()) return s;
  cd.SetCdName(name);
  return Done();
}

Status CatalogEditor::SetDiscNotes(int32_t id, const std::string& notes) {
  classCd cd = data_->CdCursor();
  Status s = data_->FindCd(id, &cd);
  if (!s.ok()) return s;
  cd.SetCdNotes(notes);
  return Done();
}

Status CatalogEditor::MoveDisc(int32_t id, int32_t category) {
  classCat cat = data_->CatCursor();
  Status s = category != 0 ? data_->FindCat(category, &cat) : Status::OK();
  classCd cd = data_->CdCursor();
  if (s.ok()) s = data_->FindCd(id, &cd);
  if (!s.ok()) return s;
  const std::string refusal = CatalogRules::CheckMove(
      NodeKind::kDisc, category ? NodeKind::kCategory : NodeKind::kCatalog, false);
  if (!refusal.empty()) return Status::InvalidArgument(refusal);
  cd.setCdCategory(category);
  return Done();
}

namespace {

// A folder's place as the tree reads it: its parent path without leading and
// trailing "\", then "\" and its name.
std::string_view TrimSeparators(std::string_view path) {
  while (!path.empty() && path.front() == '\\') path.remove_prefix(1);
  while (!path.empty() && path.back() == '\\') path.remove_suffix(1);
  return path;
}

std::string FullPath(std::string_view path, std::string_view name) {
  const std::string_view parent = TrimSeparators(path);
  return parent.empty() ? std::string(name) : std::string(parent) + "\\" + std::string(name);
}

}  // namespace

Status CatalogEditor::RenameFolder(int32_t id, const std::string& name, JobControl& job) {
  if (name.empty() || name.find('\\') != std::string::npos) {
    return Status::InvalidArgument(kFolderNameRefusal);
  }
  classCd cd = data_->CdCursor();
  Status s = data_->FindDir(id, &cd);
  if (!s.ok()) return s;
  classDir& dir = cd.dirs();
  const std::string oldName = dir.GetDirName();
  if (oldName.empty()) return Status::InvalidArgument(kFolderNameRefusal);
  if (oldName == name) return Status::OK();
  const std::string oldFull = FullPath(dir.GetDirPath(), oldName);
  const std::string newFull = FullPath(dir.GetDirPath(), name);

  // First every folder below, with its new path; then the writes, so that
  // the walk never reads a chain that is being rewritten.
  std::vector<std::pair<int32_t, std::string>> below;
  JobProgress p;
  p.maximum = cd.GetCdNumOfSubdirs();
  std::string path;
  for (classDir& d = cd.GetDirFirst(); !d.isEof(); d.MoveNext()) {
    ++p.value;
    if (job.Due()) job.Report(p);
    path = d.GetDirPath();
    const std::string_view trimmed = TrimSeparators(path);
    if (trimmed.size() < oldFull.size() || trimmed.compare(0, oldFull.size(), oldFull) != 0)
      continue;
    if (trimmed.size() > oldFull.size() && trimmed[oldFull.size()] != '\\') continue;
    below.emplace_back(d.GetDirId(), newFull + std::string(trimmed.substr(oldFull.size())));
  }
  if (!data_->ok()) return data_->status();
  // A stop is taken only before the first write.
  if (job.StopRequested()) return Status::Cancelled();
  for (const auto& [dirId, newPath] : below) {
    if (!dir.MoveAbsolute(dirId) || !dir.SetDirPath(newPath)) return data_->status();
  }
  if (!dir.MoveAbsolute(id) || !dir.SetDirName(name)) return data_->status();
  job.Final(p);
  return Done();
}

Status CatalogEditor::SetFolderNotes(int32_t id, const std::string& notes) {
  classCd cd = data_->CdCursor();
  Status s = data_->FindDir(id, &cd);
  if (!s.ok()) return s;
  cd.dirs().SetDirNotes(notes);
  return Done();
}

Status CatalogEditor::SetFileNotes(int32_t id, const std::string& notes) {
  classCd cd = data_->CdCursor();
  ClassFile file(data_->file());
  Status s = data_->FindFile(id, &cd, &file);
  if (!s.ok()) return s;
  file.SetFileNotes(notes);
  return Done();
}

}  // namespace gorvan
