#pragma once
// frmSkins: the skin chooser (mnuViewSkinChange). Lists "None: follow the
// desktop" and every skin, with a strip of the chosen skin's colours; OK
// stores "SkinSupportEnabled" and, for a skin, "SkinName", updates the
// settings record and emits applied() so the window re-applies its look.
//
// Thread contract: the GUI thread.

#include <QDialog>
#include <QPixmap>

class QLabel;
class QListWidget;

namespace gorvan {
class SettingsRecord;
}

namespace gorvan::ui {

class frmSkins : public QDialog {
  Q_OBJECT

 public:
  frmSkins(SettingsRecord& settings, QWidget* parent = nullptr);

  QListWidget* list() const { return list_; }

 Q_SIGNALS:
  void applied();

 private:
  void ShowChoice();
  void Accept();

  SettingsRecord& settings_;
  QListWidget* list_;
  QLabel* preview_;
};

// A strip of a skin's main colours, for choosers.
QPixmap SkinStrip(const QString& path, QSize size);

}  // namespace gorvan::ui
