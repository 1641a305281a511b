#pragma once
// DiscPropertiesDialog: the properties of a disc — every field of its record, its
// name and notes (editable), the audio values of an audio CD and its tracks.

#include "ui/dialogs/PropertiesDialog.h"

namespace gorvan::ui {

class DiscPropertiesDialog : public PropertiesDialog {
  Q_OBJECT

 public:
  DiscPropertiesDialog(CatalogSession& session, const CatalogItem& item, QWidget* parent = nullptr);

  // The values, read on the view loader's thread.
  static PropertiesData Read(classData& data, const CatalogItem& item, const std::stop_token& stop);
};

}  // namespace gorvan::ui
