#pragma once
// frmUpdate: the interactive version check (mnuHelpUpdate). While the support
// server is asked for the current version on a worker thread the dialog says
// so and Cancel stops the request; the answer — a newer version, the latest
// version, or why the server could not tell — is then shown in the message
// box and the dialog closes.
//
// Thread contract: the GUI thread.

#include <QDialog>

#include "app/SettingsRecord.h"

namespace gorvan {
class Prompt;
}

namespace gorvan::ui {

class BackgroundTask;

class frmUpdate : public QDialog {
  Q_OBJECT

 public:
  frmUpdate(const SettingsRecord& settings, Prompt& prompt, QWidget* parent = nullptr);

  // Starts the check (open() shows the dialog first).
  void Start();
  bool checking() const;

 private:
  SettingsRecord settings_;
  Prompt& prompt_;
  BackgroundTask* task_;
};

}  // namespace gorvan::ui
