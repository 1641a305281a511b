#include "ui/dialogs/frmPassword.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

QLineEdit* PasswordField(const char* name) {
  auto* edit = new QLineEdit;
  edit->setObjectName(QLatin1String(name));
  edit->setEchoMode(QLineEdit::Password);
  // The dialog shows "*" for every character, whatever the style's own mark.
  edit->setStyleSheet(QStringLiteral("lineedit-password-character: 42"));
  return edit;
}

}  // namespace

frmPassword::frmPassword(bool change, PasswordJudge judge, QWidget* parent)
    : QDialog(parent), change_(change), judge_(std::move(judge)) {
  setObjectName(QStringLiteral("frmPassword"));
  setWindowTitle(change ? tr("Change Password") : tr("Password"));
  auto* form = new QFormLayout;
  password_ = PasswordField("txtPassword");
  form->addRow(change ? tr("&Current password:") : tr("&Password:"), password_);
  if (change) {
    new1_ = PasswordField("txtNewPassword");
    new2_ = PasswordField("txtConfirmPassword");
    form->addRow(tr("&New password:"), new1_);
    form->addRow(tr("Con&firm new password:"), new2_);
  }
  message_ = new QLabel;
  message_->setObjectName(QStringLiteral("lblMessage"));
  message_->setWordWrap(true);
  QPalette warn = message_->palette();
  warn.setColor(QPalette::WindowText, QColor(0xC0, 0x1C, 0x28));
  message_->setPalette(warn);
  message_->hide();

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("btnOK"));
  buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("btnCancel"));
  connect(buttons, &QDialogButtonBox::accepted, this, &frmPassword::Judge);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* layout = new QVBoxLayout(this);
  if (!change) {
    auto* intro = new QLabel(tr("This catalog is protected by a password."));
    intro->setWordWrap(true);
    layout->addWidget(intro);
  }
  layout->addLayout(form);
  layout->addWidget(message_);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  password_->setFocus();
}

PasswordFields frmPassword::fields() const {
  PasswordFields f;
  f.entered = Std(password_->text());
  if (change_) {
    f.new1 = Std(new1_->text());
    f.new2 = Std(new2_->text());
  }
  return f;
}

QString frmPassword::message() const { return message_->isHidden() ? QString() : message_->text(); }

void frmPassword::Judge() {
  const std::string refusal = judge_ ? judge_(fields()) : std::string();
  if (refusal.empty()) {
    accept();
    return;
  }
  message_->setText(Qs(refusal));
  message_->show();
  password_->setFocus();
  password_->selectAll();
}

}  // namespace gorvan::ui
