#pragma once
// CatalogEditor: the edits a user makes to an open catalog — categories, discs,
// folder and file notes — with the catalog's rules applied. Each returns OK or
// a Status whose message is what the user is shown. An id that is not a live
// record of its kind is NotFound and leaves the catalog's error state clear.
// Runs on the thread that owns the catalog (see classData).

#include <cstdint>
#include <string>

#include "catalog/JobControl.h"
#include "catalog/Status.h"
#include "catalog/classData.h"

namespace gorvan {

inline constexpr const char* kFolderNameRefusal =
    "A folder name can be neither empty nor hold a backslash (\\)";

class CatalogEditor {
 public:
  explicit CatalogEditor(classData* data) : data_(data) {}

  // A new category under parent (0: top level); an empty name gives "New Category".
  Status AddCategory(const std::string& name, int32_t parent, int32_t* newId);
  Status RenameCategory(int32_t id, const std::string& name);
  Status MoveCategory(int32_t id, int32_t newParent);
  Status DeleteCategory(int32_t id);
  Status SetCategoryNotes(int32_t id, const std::string& notes);

  Status DeleteDisc(int32_t id);
  Status RenameDisc(int32_t id, const std::string& name);
  Status SetDiscNotes(int32_t id, const std::string& notes);
  Status MoveDisc(int32_t id, int32_t category);

  // Renames a folder: its name, and the path text of every folder below it,
  // which names it. A walk of the folder's disc (a job: the progress reports
  // count the folders read). A stop asked before the first write cancels it;
  // once writing it goes to the end, so that no folder keeps the old path. An empty name, or one
  // holding "\" (the separator of the paths), is refused with kFolderNameRefusal; the top folder of
  // a disc (no name) is renamed with the disc.
  Status RenameFolder(int32_t id, const std::string& name, JobControl& job);
  Status SetFolderNotes(int32_t id, const std::string& notes);
  Status SetFileNotes(int32_t id, const std::string& notes);

  // True when category id is ancestor or the same as category of.
  bool IsSameOrAncestor(int32_t id, int32_t of);
  bool CategoryHasChildren(int32_t id);

 private:
  Status Done();

  classData* data_;
};

}  // namespace gorvan
