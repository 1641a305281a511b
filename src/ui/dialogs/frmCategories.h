#pragma once
// frmCategories: the category list. The user adds ("New Category"), renames
// and removes categories here under the catalog's rules; opened for a disc,
// OK files the disc under the chosen category (the catalog itself: no
// category).

#include <QDialog>

#include "ui/session/CatalogItem.h"
#include "ui/session/CatalogRows.h"

class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace gorvan::ui {

class CatalogSession;

class frmCategories : public QDialog {
  Q_OBJECT

 public:
  frmCategories(CatalogSession& session, const CatalogItem& item, QWidget* parent = nullptr);

  QTreeWidget* tree() const { return tree_; }
  // The category chosen (0: the catalog, no category).
  int32_t chosen() const;

 private:
  void Load();
  void Fill(const CatalogSnapshot& snapshot);
  void NewCategory();
  void RenameCategory();
  void RemoveCategory();
  void Renamed(QTreeWidgetItem* item);
  void Apply();
  CatalogItem ItemOf(const QTreeWidgetItem* item) const;

  CatalogSession& session_;
  CatalogItem disc_;
  QTreeWidget* tree_;
  QPushButton* rename_;
  QPushButton* remove_;
  int32_t select_ = -1;  // the category to select after the next load
  bool filling_ = false;
};

}  // namespace gorvan::ui
