#include "catalog/CatalogEditor.h"

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
  const std::string refusal =
      CatalogRules::CheckMove(NodeKind::kCategory, newParent ? NodeKind::kCategory : NodeKind::kCatalog,
                              newParent != 0 && IsSameOrAncestor(id, newParent));
  if (!refusal.empty()) return Status::InvalidArgument(refusal);
  cat.SetCatParentId(newParent);
  return Done();
}

Status CatalogEditor::DeleteCategory(int32_t id) {
  classCat cat = data_->CatCursor();
  Status s = data_->FindCat(id, &cat);
  if (!s.ok()) return s;
  const std::string refusal = CatalogRules::CheckDelete(NodeKind::kCategory, CategoryHasChildren(id));
  if (!refusal.empty()) return Status::InvalidArgument(refusal);
  if (!data_->GetCatDelete(id)) return data_->status();
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
