#include "ui/explorer/ListReveal.h"

#include <QTreeView>

#include "ui/explorer/FileListModel.h"

namespace gorvan::ui {

ListReveal::Result ListReveal::Advance(QTreeView* view, FileListModel* model,
                                       const std::vector<Step>& steps) {
  if (steps.empty()) return Result::kFailed;
  if (!model->loaded()) return Result::kWaiting;
  QModelIndex parent;
  for (size_t i = 0; i < steps.size(); ++i) {
    QModelIndex found;
    const int rows = model->rowCount(parent);
    for (int r = 0; r < rows && !found.isValid(); ++r) {
      const QModelIndex at = model->index(r, 0, parent);
      const EntryRow* row = model->Row(at);
      if (row && row->kind == steps[i].first && row->id == steps[i].second) found = at;
    }
    if (!found.isValid()) {
      // A level that is still being read holds no rows yet.
      if (parent.isValid() && rows == 0 && model->hasChildren(parent)) {
        if (model->canFetchMore(parent)) model->fetchMore(parent);
        view->expand(parent);
        return Result::kWaiting;
      }
      return Result::kFailed;
    }
    if (i + 1 < steps.size()) {
      if (model->canFetchMore(found)) model->fetchMore(found);
      view->expand(found);
      parent = found;
      continue;
    }
    view->setCurrentIndex(found);
    view->scrollTo(found);
    view->setFocus();
  }
  return Result::kDone;
}

}  // namespace gorvan::ui
