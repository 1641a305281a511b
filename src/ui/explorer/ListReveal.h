#pragma once
// ListReveal: walks a file list (FileListModel in a QTreeView) down a path of
// rows — folders of the browse list, a file, an archive member — opening each
// row on the way and reading what it holds when it is not read yet, and
// chooses the last row of the path.
//
// The rows of a level arrive from the view loader, so a walk may have to wait:
// Advance() goes as far as it can and says whether it is done, waits for rows
// (call it again when the model reports rows: folderLoaded, rowsInserted), or
// cannot go on (a row of the path is not there).
//
// Thread contract: the GUI thread.

#include <cstdint>
#include <utility>
#include <vector>

#include "catalog/CatalogRules.h"

class QTreeView;

namespace gorvan::ui {

class FileListModel;

class ListReveal {
 public:
  using Step = std::pair<NodeKind, int32_t>;
  enum class Result { kDone, kWaiting, kFailed };

  static Result Advance(QTreeView* view, FileListModel* model, const std::vector<Step>& steps);
};

}  // namespace gorvan::ui
