#include "ui/session/CatalogEdits.h"

#include "catalog/CatalogEditor.h"
#include "catalog/CatalogRules.h"
#include "ui/session/CatalogSession.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {

bool CatalogEdits::Tell(const Status& s) {
  if (s.ok()) return true;
  // Failures of the file itself were reported by the session already.
  if (s.IsInvalidArgument() || s.IsNotFound() || s.IsRefused()) {
    session_.prompt().Message(s.message(), PromptIcon::kWarning);
  }
  return false;
}

bool CatalogEdits::Rename(const CatalogItem& item, const QString& name) {
  const std::string refusal = CatalogRules::CheckRename(item.kind);
  if (!refusal.empty()) {
    session_.prompt().Message(refusal, PromptIcon::kWarning);
    return false;
  }
  const std::string text = Std(name);
  if (name.trimmed().isEmpty() || name == item.name) return false;
  const int32_t id = item.id;
  switch (item.kind) {
    case NodeKind::kCatalog:
      return Tell(session_.Edit(CatalogChange::kHeader, [&text](classData& d) {
        return d.SetDataName(text) ? Status::OK() : d.status();
      }));
    case NodeKind::kCategory:
      return Tell(session_.Edit(CatalogChange::kStructure, [&](classData& d) {
        return CatalogEditor(&d).RenameCategory(id, text);
      }));
    case NodeKind::kDisc:
      return Tell(session_.Edit(CatalogChange::kStructure, [&](classData& d) {
        return CatalogEditor(&d).RenameDisc(id, text);
      }));
    case NodeKind::kFolder: {
      if (text.find('\\') != std::string::npos) {
        session_.prompt().Message(kFolderNameRefusal, PromptIcon::kWarning);
        return false;
      }
      JobSpec spec;
      spec.caption = Qs(kRenameFolderCaption);
      spec.cancelText = QObject::tr("Cancel");
      spec.showProgress = false;
      spec.changes = CatalogChange::kStructure;
      spec.work = [id, text](classData& d, JobControl& job) {
        JobOutcome o;
        o.status = CatalogEditor(&d).RenameFolder(id, text, job);
        o.message = o.status.message();
        o.id = id;
        return o;
      };
      spec.done = [this](const JobOutcome& o) { Tell(o.status); };
      return session_.StartJob(std::move(spec));
    }
    default:
      return false;
  }
}

bool CatalogEdits::Delete(const CatalogItem& item) {
  classData* data = session_.writer();
  if (!data) return false;
  const bool children =
      item.kind == NodeKind::kCategory && CatalogEditor(data).CategoryHasChildren(item.id);
  const std::string refusal = CatalogRules::CheckDelete(item.kind, children);
  if (!refusal.empty()) {
    session_.prompt().Message(refusal, PromptIcon::kWarning);
    return false;
  }
  PromptRequest confirm;
  confirm.buttons = PromptButtons::kYesNo;
  confirm.icon = PromptIcon::kQuestion;
  if (item.kind == NodeKind::kCategory) {
    confirm.title = kRemoveCategoryTitle;
    confirm.text = Std(QObject::tr("Remove the category \"%1\"?").arg(item.name));
  } else {
    confirm.title = Std(QObject::tr("Delete"));
    confirm.text = Std(
        QObject::tr("Delete \"%1\" from the catalog, with its folders and files?").arg(item.name));
  }
  if (session_.prompt().Ask(confirm).answer != PromptAnswer::kYes) return false;
  const int32_t id = item.id;
  const bool category = item.kind == NodeKind::kCategory;
  return Tell(session_.Edit(CatalogChange::kStructure, [id, category](classData& d) {
    CatalogEditor editor(&d);
    return category ? editor.DeleteCategory(id) : editor.DeleteDisc(id);
  }));
}

int32_t CatalogEdits::NewCategory(int32_t parent) {
  int32_t id = 0;
  Tell(session_.Edit(CatalogChange::kStructure, [parent, &id](classData& d) {
    return CatalogEditor(&d).AddCategory(kNewCategoryName, parent, &id);
  }));
  return id;
}

QString CatalogEdits::MoveRefusal(const CatalogItem& dragged, const CatalogItem& target) {
  bool ownDescendant = false;
  if (dragged.kind == NodeKind::kCategory && target.kind == NodeKind::kCategory) {
    if (classData* data = session_.writer()) {
      ownDescendant = CatalogEditor(data).IsSameOrAncestor(dragged.id, target.id);
    }
  }
  return Qs(CatalogRules::CheckMove(dragged.kind, target.kind, ownDescendant));
}

bool CatalogEdits::Move(const CatalogItem& dragged, const CatalogItem& target) {
  const QString refusal = MoveRefusal(dragged, target);
  if (!refusal.isEmpty()) {
    session_.prompt().Message(Std(refusal), PromptIcon::kWarning);
    return false;
  }
  const int32_t id = dragged.id;
  const int32_t to = target.kind == NodeKind::kCategory ? target.id : 0;
  const bool disc = dragged.kind == NodeKind::kDisc;
  return Tell(session_.Edit(CatalogChange::kStructure, [id, to, disc](classData& d) {
    CatalogEditor editor(&d);
    return disc ? editor.MoveDisc(id, to) : editor.MoveCategory(id, to);
  }));
}

bool CatalogEdits::SetNotes(const CatalogItem& item, const QString& notes) {
  const std::string text = Std(notes);
  const int32_t id = item.id;
  const NodeKind kind = item.kind;
  const CatalogChange change = kind == NodeKind::kCatalog ? CatalogChange::kHeader
                               : kind == NodeKind::kCategory || kind == NodeKind::kDisc
                                   ? CatalogChange::kStructure
                                   : CatalogChange::kEntries;
  return Tell(session_.Edit(change, [&text, id, kind](classData& d) {
    CatalogEditor editor(&d);
    switch (kind) {
      case NodeKind::kCatalog:
        return d.SetDataNotes(text) ? Status::OK() : d.status();
      case NodeKind::kCategory:
        return editor.SetCategoryNotes(id, text);
      case NodeKind::kDisc:
        return editor.SetDiscNotes(id, text);
      case NodeKind::kFolder:
        return editor.SetFolderNotes(id, text);
      case NodeKind::kFile:
      case NodeKind::kArchiveMember:
        return editor.SetFileNotes(id, text);
      default:
        return Status::InvalidArgument(CatalogRules::CheckEdit(kind));
    }
  }));
}

}  // namespace gorvan::ui
