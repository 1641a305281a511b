#pragma once
// frmBrowse2: the explorer view.

#include "ui/explorer/CatalogView.h"

namespace gorvan::ui {

class frmMenu;

class frmBrowse2 : public CatalogView {
  Q_OBJECT

 public:
  explicit frmBrowse2(frmMenu& menu);

  CatalogItem currentItem() const override { return {}; }
  void RenameCurrent() override {}
  void DeleteCurrent() override {}
  void PropertiesOfCurrent() override {}
  void LaunchCurrent() override {}
  void NewCategory() override {}
};

}  // namespace gorvan::ui
