#pragma once
// JobProgressDialog: the progress window of a long job ("Compacting Data
// File" with "Cancel Data Compaction", "Data Backup", "Merging Data File",
// ...). It shows the job's caption line and a progress bar and offers the
// cancel button; it is not modal, so the views stay usable while the job
// runs. Shown only after a short delay, so that a job that ends at once does
// not flash a window.

#include <QDialog>

#include "catalog/JobControl.h"

class QLabel;
class QProgressBar;
class QPushButton;
class QTimer;

namespace gorvan::ui {

class JobProgressDialog : public QDialog {
  Q_OBJECT

 public:
  // delayMs: how long the job must run before the window shows (0: at once).
  JobProgressDialog(const QString& caption, const QString& cancelText, int delayMs,
                    QWidget* parent = nullptr);

  void Report(const JobProgress& p);
  QPushButton* cancelButton() const { return cancel_; }

 Q_SIGNALS:
  void cancelRequested();

 protected:
  void reject() override;

 private:
  QLabel* line_;
  QLabel* detail_;
  QProgressBar* bar_;
  QPushButton* cancel_;
};

}  // namespace gorvan::ui
