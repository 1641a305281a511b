#pragma once
// frmDataOptions: the catalog's display options — the font its names are
// shown in, kept in the catalog's own font text. "Default" clears the text
// (the catalog is then shown in "Arabic Transparent", or the desktop's font
// when that is not installed).

#include <QDialog>

class QCheckBox;
class QFontComboBox;
class QLabel;

namespace gorvan::ui {

class CatalogSession;

class frmDataOptions : public QDialog {
  Q_OBJECT

 public:
  frmDataOptions(CatalogSession& session, QWidget* parent = nullptr);

 private:
  void Preview();
  void Apply();

  CatalogSession& session_;
  QCheckBox* useDefault_;
  QFontComboBox* font_;
  QLabel* sample_;
};

}  // namespace gorvan::ui
