#pragma once
// TraditionalView: the traditional view.

#include "ui/explorer/CatalogView.h"

namespace gorvan::ui {

class frmMenu;

class TraditionalView : public CatalogView {
  Q_OBJECT

 public:
  explicit TraditionalView(frmMenu& menu);

  CatalogItem currentItem() const override { return {}; }
  void RenameCurrent() override {}
  void DeleteCurrent() override {}
  void PropertiesOfCurrent() override {}
  void LaunchCurrent() override {}
  void NewCategory() override {}
};

}  // namespace gorvan::ui
