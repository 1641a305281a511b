#pragma once
// frmTip: the tip of the day (mnuHelpTip, and once a start while "Show tips
// at start-up" is ticked). Previous and Next step through the tips; the tip
// shown next is remembered, so each start shows a new one. Kept in the
// per-user store: "Tips"/"ShowAtStartup" (bool, True) and "Tips"/"Next" (the
// number of the next tip, from 0).
//
// Thread contract: the GUI thread.

#include <QDialog>

#include "ui/help/TipFile.h"

class QCheckBox;
class QLabel;

namespace gorvan::ui {

class frmTip : public QDialog {
  Q_OBJECT

 public:
  // Shows the next tip of path.
  explicit frmTip(const QString& path, QWidget* parent = nullptr);

  static bool ShowAtStartup();
  int current() const { return current_; }
  QString tipText() const;
  void Step(int by);

 private:
  TipFile file_;
  int current_ = 0;
  QLabel* tip_;
  QCheckBox* showAtStart_;
};

}  // namespace gorvan::ui
