#include "ui/help/frmSendError.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/SettingsStore.h"
#include "app/SupportClient.h"
#include "ui/options/BackgroundTask.h"
#include "ui/options/DialogSize.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {

frmSendError::frmSendError(const SettingsRecord& settings, const QString& logPath, QWidget* parent)
    : QDialog(parent), settings_(settings), logPath_(logPath), task_(new BackgroundTask(this)) {
  setObjectName(QStringLiteral("frmSendError"));
  setWindowTitle(tr("Send Error Report"));
  QString text;
  for (const std::string& line : SupportClient::SendDialogLines(settings_.supportEmail)) {
    text += Qs(line) + QLatin1Char('\n');
  }
  auto* lines = new QLabel(text.trimmed());
  lines->setObjectName(QStringLiteral("lblExplain"));
  lines->setTextFormat(Qt::PlainText);
  lines->setTextInteractionFlags(Qt::TextSelectableByMouse);
  email_ = new QLineEdit(Qs(SettingsStore::GetText("Defaults", "UserEmail")));
  email_->setObjectName(QStringLiteral("txtEmail"));
  auto* label = new QLabel(Qs(kSendDialogPrompt));
  label->setBuddy(email_);
  result_ = new QLabel;
  result_->setObjectName(QStringLiteral("lblResult"));
  result_->setWordWrap(true);
  result_->setTextFormat(Qt::PlainText);
  result_->setTextInteractionFlags(Qt::TextSelectableByMouse);

  auto* buttons = new QDialogButtonBox;
  send_ = buttons->addButton(tr("&Send"), QDialogButtonBox::AcceptRole);
  send_->setObjectName(QStringLiteral("btnSend"));
  send_->setDefault(true);
  cancel_ = buttons->addButton(QDialogButtonBox::Cancel);
  cancel_->setObjectName(QStringLiteral("btnCancel"));
  connect(send_, &QPushButton::clicked, this, &frmSendError::Send);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(this, &QDialog::finished, task_, &BackgroundTask::Stop);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(lines);
  layout->addSpacing(fontMetrics().height() / 2);
  layout->addWidget(label);
  layout->addWidget(email_);
  layout->addWidget(result_, 1);
  layout->addWidget(buttons);
  DialogSize::Keep(this);
}

QString frmSendError::result() const { return result_->text(); }

bool frmSendError::sending() const { return task_->running(); }

void frmSendError::Send() {
  if (task_->running()) return;
  const std::string email = Std(email_->text().trimmed());
  if (email != SettingsStore::GetText("Defaults", "UserEmail")) {
    SettingsStore::PutText("Defaults", "UserEmail", email);
  }
  send_->setEnabled(false);
  email_->setEnabled(false);
  result_->setText(tr("Sending the error log..."));
  const SettingsRecord settings = settings_;
  const std::string log = Std(logPath_);
  task_->Start<SupportClient::Outcome>(
      [settings, log, email](std::stop_token stop) {
        return SupportClient(settings).SubmitErrorLog(log, email, true, stop);
      },
      [this](SupportClient::Outcome& outcome) {
        QStringList lines;
        for (const std::string& m : outcome.messages) lines << Qs(m);
        if (!outcome.detail.empty()) lines << Qs(outcome.detail);
        result_->setText(lines.join(QStringLiteral("\n")));
        // Sent: the dialog only closes now; not sent: the user may try again.
        if (outcome.ok) {
          cancel_->setText(tr("&Close"));
        } else {
          send_->setEnabled(true);
          email_->setEnabled(true);
        }
      });
}

}  // namespace gorvan::ui
