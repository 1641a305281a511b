#pragma once
// frmAnimation: the progress window of a scan. While the scan runs on its
// worker thread the window shows the path being read (Label1, shortened in
// the middle to fit), the archive member being listed (Label2), the folders,
// files and bytes found so far, the time the scan has taken, and a turning
// disc. btnCancel and closing the window ask "Are You Sure You Want To Cancel
// !!" (the disc stands still while asking); Yes asks the scan's stop. At the
// end the window shows what was catalogued and the warnings, whose texts
// btnWarnings lists.
//
// Thread contract: the GUI thread; Report takes copies the job posted.

#include <QDialog>
#include <QElapsedTimer>
#include <QStringList>

#include "catalog/JobControl.h"

class QLabel;
class QPushButton;
class QTimer;

namespace gorvan::ui {

class CatalogSession;

inline constexpr const char* kCancelScanQuestion = "Are You Sure You Want To Cancel !!";

// What a scan reports when it ends.
struct ScanSummary {
  bool cancelled = false;
  bool failed = false;
  QString message;  // why it failed
  int32_t discId = 0;
  int64_t folders = 0;
  int64_t files = 0;
  double bytes = 0;
  int64_t warnings = 0;
  QStringList warningTexts;
};

class frmAnimation : public QDialog {
  Q_OBJECT

 public:
  frmAnimation(CatalogSession& session, const QString& title, QWidget* parent = nullptr);

  // The scan's progress (posted from its thread).
  void Report(const JobProgress& p);
  // The scan ended: the window shows the summary and waits to be closed.
  void Finish(const ScanSummary& summary);
  bool running() const { return running_; }
  bool animating() const;
  // The time from the first Yes to the cancel question until Finish (ms);
  // -1 when no cancel was asked.
  qint64 cancelLatencyMs() const { return cancelLatency_; }

 Q_SIGNALS:
  // The user confirmed the cancel question.
  void cancelRequested();

 protected:
  void reject() override;
  void closeEvent(QCloseEvent* event) override;

 private:
  void AskCancel();
  void Tick();
  void ShowWarnings();

  CatalogSession& session_;
  class DiscSpinner* spinner_;
  class ElidedLabel* label1_;
  class ElidedLabel* label2_;
  QLabel* folders_;
  QLabel* files_;
  QLabel* bytes_;
  QLabel* elapsed_;
  QLabel* summary_;
  QPushButton* btnCancel_;
  QPushButton* btnWarnings_;
  QPushButton* btnClose_;
  QTimer* clock_;
  QElapsedTimer started_;
  QElapsedTimer cancelAsked_;
  qint64 cancelLatency_ = -1;
  QStringList warningTexts_;
  bool running_ = true;
  bool asking_ = false;
};

}  // namespace gorvan::ui
