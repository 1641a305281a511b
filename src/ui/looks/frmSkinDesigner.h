#pragma once
// frmSkinDesigner: the skin designer (mnuViewSkinDesigner). Starts from a
// skin or the desktop's colours; the nine main colours and the font are
// edited with a live preview (a sample of the program's widgets in the new
// colours); Save writes the skin under the name given as a .qss in the
// application folder's "skins", checks that it loads, and with "Use it now"
// makes it the program's skin (applied()).
//
// Thread contract: the GUI thread.

#include <QDialog>
#include <QHash>

#include "ui/looks/Skins.h"

class QCheckBox;
class QComboBox;
class QFontComboBox;
class QFrame;
class QLineEdit;
class QPushButton;
class QSpinBox;

namespace gorvan {
class Prompt;
class SettingsRecord;
}  // namespace gorvan

namespace gorvan::ui {

class frmSkinDesigner : public QDialog {
  Q_OBJECT

 public:
  frmSkinDesigner(SettingsRecord& settings, Prompt& prompt, QWidget* parent = nullptr);

  // The colours and font as the dialog stands.
  SkinColours colours() const { return colours_; }
  void SetColour(QColor SkinColours::*member, const QColor& colour);
  QFrame* preview() const { return preview_; }
  // Writes the skin as named; the path written, or "" (the reason was told).
  QString Save();

 Q_SIGNALS:
  void applied();

 private:
  void StartFrom(int index);
  void ShowColours();

  SettingsRecord& settings_;
  Prompt& prompt_;
  SkinColours colours_;
  QComboBox* start_;
  QHash<QString, QPushButton*> buttons_;
  QFontComboBox* font_;
  QSpinBox* size_;
  QCheckBox* keepFont_;
  QFrame* preview_;
  QLineEdit* name_;
  QCheckBox* useNow_;
};

}  // namespace gorvan::ui
