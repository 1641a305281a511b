#pragma once
// FieldChooser: the dialog of popSearchFieldChooser — one box per column of
// the results list; OK shows the ticked columns and hides the others. At
// least one column stays: with every box cleared OK is disabled.

#include <QDialog>
#include <vector>

class QCheckBox;
class QHeaderView;

namespace gorvan::ui {

class FieldChooser : public QDialog {
  Q_OBJECT

 public:
  // Opens the dialog (not modal) for the columns of header.
  static FieldChooser* Open(QHeaderView* header, QWidget* parent);

  QCheckBox* box(int column) const { return boxes_[static_cast<size_t>(column)]; }

 private:
  FieldChooser(QHeaderView* header, QWidget* parent);
  void Apply();

  QHeaderView* header_;
  std::vector<QCheckBox*> boxes_;
};

}  // namespace gorvan::ui
