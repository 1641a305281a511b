#pragma once
// ToggleLabel: the caption beside an option of the search window
// (lblFileNames, lblOptAnywhere, ...). A click on it toggles its check box or
// chooses its option button, as a click on the box itself does.

#include <QLabel>

class QAbstractButton;

namespace gorvan::ui {

class ToggleLabel : public QLabel {
  Q_OBJECT

 public:
  ToggleLabel(const QString& text, QAbstractButton* box, const char* objectName,
              QWidget* parent = nullptr);
  QAbstractButton* box() const { return box_; }

 protected:
  void mouseReleaseEvent(QMouseEvent* event) override;

 private:
  QAbstractButton* box_;
};

}  // namespace gorvan::ui
