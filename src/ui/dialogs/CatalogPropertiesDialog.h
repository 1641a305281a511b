#pragma once
// CatalogPropertiesDialog: the properties of the catalog itself — its name and notes
// (editable), file, dates, version, encoding, counts, and what compacting
// would reclaim.

#include "ui/dialogs/PropertiesDialog.h"

namespace gorvan::ui {

class CatalogPropertiesDialog : public PropertiesDialog {
  Q_OBJECT

 public:
  CatalogPropertiesDialog(CatalogSession& session, const CatalogItem& item,
                          QWidget* parent = nullptr);

  // The values, read on the view loader's thread.
  static PropertiesData Read(classData& data, const CatalogItem& item, const std::stop_token& stop);
};

}  // namespace gorvan::ui
