#include "catalog/CatalogEditor.h"

#include "catalog/CatalogRules.h"

namespace gorvan {

Status CatalogEditor::Done() {
  if (!data_->ok()) return data_->status();
  return data_->Flush() ? Status::OK() : data_->status();
}

Status CatalogEditor::FindCategory(int32_t id) {
  // Only ids of the live chain count: an id into the middle of a record, or of
  // an unlinked one, is no category.
  classCat cat(data_->file());
  for (cat.MoveFirst(); !cat.isEof(); cat.MoveNext()) {
    if (cat.GetCatId() == id) return Status::OK();
  }
  if (!data_->ok()) return data_->status();
  return Status::NotFound("There is no category " + std::to_string(id));
}

Status CatalogEditor::FindDisc(int32_t id) {
  classCd cd(data_->file());
  for (cd.MoveFirst(); !cd.isEof(); cd.MoveNext()) {
    if (cd.GetCdId() == id) return Status::OK();
  }
  if (!data_->ok()) return data_->status();
  return Status::NotFound("There is no disc " + std::to_string(id));
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
  if (parent != 0) {
    Status s = FindCategory(parent);
    if (!s.ok()) return s;
  }
  classCat& cat = data_->GetCatAppend();
  cat.SetCatName(name.empty() ? kNewCategoryName : name);
  cat.SetCatParentId(parent);
  if (!data_->ok() || !data_->GetCatCommit()) return data_->status();
  *newId = cat.GetCatId();
  return Done();
}

Status CatalogEditor::RenameCategory(int32_t id, const std::string& name) {
  Status s = FindCategory(id);
  if (!s.ok()) return s;
  data_->GetCatGoto(id).SetCatName(name);
  return Done();
}

Status CatalogEditor::MoveCategory(int32_t id, int32_t newParent) {
  Status s = FindCategory(id);
  if (s.ok() && newParent != 0) s = FindCategory(newParent);
  if (!s.ok()) return s;
  const std::string refusal =
      CatalogRules::CheckMove(NodeKind::kCategory, newParent ? NodeKind::kCategory : NodeKind::kCatalog,
                              newParent != 0 && IsSameOrAncestor(id, newParent));
  if (!refusal.empty()) return Status::InvalidArgument(refusal);
  data_->GetCatGoto(id).SetCatParentId(newParent);
  return Done();
}

Status CatalogEditor::DeleteCategory(int32_t id) {
  Status s = FindCategory(id);
  if (!s.ok()) return s;
  const std::string refusal = CatalogRules::CheckDelete(NodeKind::kCategory, CategoryHasChildren(id));
  if (!refusal.empty()) return Status::InvalidArgument(refusal);
  if (!data_->GetCatDelete(id)) return data_->status();
  return Done();
}

Status CatalogEditor::DeleteDisc(int32_t id) {
  Status s = FindDisc(id);
  if (!s.ok()) return s;
  if (!data_->GetCdDelete(id)) return data_->status();
  return Done();
}

Status CatalogEditor::RenameDisc(int32_t id, const std::string& name) {
  Status s = FindDisc(id);
  if (!s.ok()) return s;
  data_->GetCdGoto(id).SetCdName(name);
  return Done();
}

Status CatalogEditor::SetDiscNotes(int32_t id, const std::string& notes) {
  Status s = FindDisc(id);
  if (!s.ok()) return s;
  data_->GetCdGoto(id).SetCdNotes(notes);
  return Done();
}

Status CatalogEditor::MoveDisc(int32_t id, int32_t category) {
  Status s = FindDisc(id);
  if (s.ok() && category != 0) s = FindCategory(category);
  if (!s.ok()) return s;
  const std::string refusal = CatalogRules::CheckMove(
      NodeKind::kDisc, category ? NodeKind::kCategory : NodeKind::kCatalog, false);
  if (!refusal.empty()) return Status::InvalidArgument(refusal);
  data_->GetCdGoto(id).setCdCategory(category);
  return Done();
}

Status CatalogEditor::SetFolderNotes(int32_t id, const std::string& notes) {
  classDir dir(data_->file());
  if (!dir.recordGet(id)) return Status::NotFound("There is no folder " + std::to_string(id));
  dir.SetDirNotes(notes);
  return Done();
}

Status CatalogEditor::SetFileNotes(int32_t id, const std::string& notes) {
  ClassFile file(data_->file());
  if (!file.recordGet(id)) return Status::NotFound("There is no file " + std::to_string(id));
  file.SetFileNotes(notes);
  return Done();
}

}  // namespace gorvan
