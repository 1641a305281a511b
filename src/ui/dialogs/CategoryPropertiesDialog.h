#pragma once
// CategoryPropertiesDialog: the properties of a category — its name and notes (editable),
// its path from the top, and the discs filed below it at every level.

#include "ui/dialogs/PropertiesDialog.h"

namespace gorvan::ui {

class CategoryPropertiesDialog : public PropertiesDialog {
  Q_OBJECT

 public:
  CategoryPropertiesDialog(CatalogSession& session, const CatalogItem& item,
                           QWidget* parent = nullptr);

  // The values, read on the view loader's thread.
  static PropertiesData Read(classData& data, const CatalogItem& item, const std::stop_token& stop);
};

}  // namespace gorvan::ui
