#pragma once
// EntryPropertiesDialog: the properties of a folder, a file or an archive member —
// every field of the record, its notes (editable; a folder's name too), the
// MP3 values of a file and the members of an archive.

#include "ui/dialogs/PropertiesDialog.h"

namespace gorvan::ui {

class EntryPropertiesDialog : public PropertiesDialog {
  Q_OBJECT

 public:
  EntryPropertiesDialog(CatalogSession& session, const CatalogItem& item,
                        QWidget* parent = nullptr);

  // The values, read on the view loader's thread.
  static PropertiesData Read(classData& data, const CatalogItem& item, const std::stop_token& stop);
};

}  // namespace gorvan::ui
