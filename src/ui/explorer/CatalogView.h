#pragma once
// CatalogView: what the main window asks of a document that shows the
// catalog — the explorer view (frmBrowse2) and the traditional view. Menu
// commands that act on "the selected item" (delete, properties, rename,
// launch) forward to the active view.

#include <QWidget>

#include "ui/main/CommandHooks.h"

namespace gorvan::ui {

enum class ListStyle { kLargeIcons, kSmallIcons, kList, kDetails };

// A catalog object for a view to show, chosen: a disc, a folder, a file (in
// its folder) or an archive member (in its archive file). Ids of the owners
// that do not apply are 0.
struct RevealTarget {
  NodeKind kind = NodeKind::kNone;  // kDisc, kFolder, kFile or kArchiveMember
  int32_t discId = 0;
  int32_t folderId = 0;  // the folder itself, or the folder holding the file
  int32_t fileId = 0;    // the file, or the archive holding the member
  int32_t memberId = 0;  // the archive member
};

class CatalogView : public QWidget {
  Q_OBJECT

 public:
  using QWidget::QWidget;

  // The item the commands act on (kNone when nothing is selected).
  virtual CatalogItem currentItem() const = 0;
  virtual void SetListStyle(ListStyle style) { (void)style; }

  // The commands on the current item, each under the catalog's rules.
  virtual void RenameCurrent() = 0;
  virtual void DeleteCurrent() = 0;
  virtual void PropertiesOfCurrent() = 0;
  virtual void LaunchCurrent() = 0;
  virtual void NewCategory() = 0;
  // Shows target, chosen, with what leads to it opened; what is not read yet
  // (a disc's folders, a folder's files, an archive's members) is read first,
  // so the choice may land after this returns. A target that is not in the
  // catalog any more leaves the view where the last step it could take led;
  // a disc not listed yet (one a job has just made) is chosen as soon as the
  // view has read the catalog again.
  virtual void Reveal(const RevealTarget& target) = 0;

 Q_SIGNALS:
  // The selection changed: its count and the bytes of what it holds (< 0:
  // not known).
  void selectionChanged(int count, double bytes);
};

}  // namespace gorvan::ui
