#pragma once
// frmPassword: the catalog's password dialog. AskPassword has one field, the
// catalog's password; ChangePassword adds the new password twice. Every field
// shows "*" for each character. OK hands the fields to the judge (the rules of
// PasswordCheck): a message keeps the dialog open and shows it inside the
// dialog; none closes it, passed. Cancel closes it, not passed.

#include <QDialog>

#include "app/Prompt.h"

class QLabel;
class QLineEdit;

namespace gorvan::ui {

class frmPassword : public QDialog {
  Q_OBJECT

 public:
  frmPassword(bool change, PasswordJudge judge, QWidget* parent = nullptr);

  // The fields as typed.
  PasswordFields fields() const;
  // The message the dialog shows ("" when none).
  QString message() const;

 private:
  void Judge();

  bool change_;
  PasswordJudge judge_;
  QLineEdit* password_;
  QLineEdit* new1_ = nullptr;
  QLineEdit* new2_ = nullptr;
  QLabel* message_;
};

}  // namespace gorvan::ui
