#pragma once
// CatalogEdits: the edits a user makes from the views — rename, delete, new
// category, move by drag and drop, notes — each under the catalog's rules
// (CatalogRules, CatalogEditor) with the rules' messages, shown through the
// session's prompt. Every edit goes through the core functions the command
// line uses; small ones run on the GUI thread, a folder rename (which rewrites
// the paths below the folder) as a job.
//
// Thread contract: the GUI thread.

#include <QString>
#include <functional>

#include "ui/session/CatalogItem.h"

namespace gorvan {
class Status;
}

namespace gorvan::ui {

class CatalogSession;

inline constexpr const char* kRenameFolderCaption = "Renaming Folder";

class CatalogEdits {
 public:
  explicit CatalogEdits(CatalogSession& session) : session_(session) {}

  // Renames a category, disc, folder or the catalog; any other item is
  // refused with the rule's message. An empty name changes nothing. A folder
  // is renamed by a job: true when it started.
  bool Rename(const CatalogItem& item, const QString& name);
  // Deletes a category (without children) or a disc after the user agreed.
  bool Delete(const CatalogItem& item);
  // A new category "New Category" under parent (0: the top level); its id, 0
  // on failure.
  int32_t NewCategory(int32_t parent);
  // Drops dragged onto target: a disc or category onto a category or the
  // catalog; anything else is refused with the rule's message.
  bool Move(const CatalogItem& dragged, const CatalogItem& target);
  // The rule's refusal for a drop ("" when it is allowed); asks nothing.
  QString MoveRefusal(const CatalogItem& dragged, const CatalogItem& target);
  // The notes of the catalog, a category, disc, folder, file or member.
  bool SetNotes(const CatalogItem& item, const QString& notes);

 private:
  bool Tell(const Status& s);

  CatalogSession& session_;
};

}  // namespace gorvan::ui
