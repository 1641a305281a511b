#pragma once
// frmSendError: the send dialog of the help menu (mnuHelpSendError). It
// explains the submission in its lines, in order, with the support e-mail
// address from "SupportEmail", and takes the user's e-mail address (kept in
// "Defaults"/"UserEmail"). Send posts the error log to the support server on
// a worker thread (Cancel stops it) and shows the server's reply, or why
// nothing was sent, in the dialog.
//
// Thread contract: the GUI thread.

#include <QDialog>

#include "app/SettingsRecord.h"

class QLabel;
class QLineEdit;
class QPushButton;

namespace gorvan::ui {

class BackgroundTask;

class frmSendError : public QDialog {
  Q_OBJECT

 public:
  // logPath: the error log to send.
  frmSendError(const SettingsRecord& settings, const QString& logPath, QWidget* parent = nullptr);

  QString result() const;
  bool sending() const;
  void Send();

 private:
  SettingsRecord settings_;
  QString logPath_;
  BackgroundTask* task_;
  QLineEdit* email_;
  QLabel* result_;
  QPushButton* send_;
  QPushButton* cancel_;
};

}  // namespace gorvan::ui
