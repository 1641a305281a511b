#pragma once
// CatalogView: what the main window asks of a document that shows the
// catalog — the explorer view (frmBrowse2) and the traditional view. Menu
// commands that act on "the selected item" (delete, properties, rename,
// launch) forward to the active view.

#include <QWidget>

#include "ui/main/CommandHooks.h"

namespace gorvan::ui {

enum class ListStyle { kLargeIcons, kSmallIcons, kList, kDetails };

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
  // Makes item the view's current one: at once when the view shows it, else
  // as soon as the view has read the catalog again (a disc a job just made).
  virtual void Reveal(const CatalogItem& item) { (void)item; }

 Q_SIGNALS:
  // The selection changed: its count and the bytes of what it holds (< 0:
  // not known).
  void selectionChanged(int count, double bytes);
};

}  // namespace gorvan::ui
