#pragma once
// frmEjectCd: lists the optical drives with the label of the disc in each
// ("/dev/sr0: Holiday 2024") and ejects the one chosen; with no drive it says
// "No CDROMs Found!!" and offers nothing to eject.
//
// Thread contract: the GUI thread.

#include <QDialog>
#include <memory>

class QListWidget;
class QPushButton;

namespace gorvan::ui {

class ScanSources;

class frmEjectCd : public QDialog {
  Q_OBJECT

 public:
  explicit frmEjectCd(std::shared_ptr<ScanSources> sources, QWidget* parent = nullptr);

  QListWidget* drives() const { return list_; }

 public Q_SLOTS:
  void accept() override;

 private:
  std::shared_ptr<ScanSources> sources_;
  QListWidget* list_;
  QPushButton* btnEject_;
};

}  // namespace gorvan::ui
