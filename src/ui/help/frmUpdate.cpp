#include "ui/help/frmUpdate.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/SupportClient.h"
#include "ui/options/BackgroundTask.h"

namespace gorvan::ui {

frmUpdate::frmUpdate(const SettingsRecord& settings, Prompt& prompt, QWidget* parent)
    : QDialog(parent), settings_(settings), prompt_(prompt), task_(new BackgroundTask(this)) {
  setObjectName(QStringLiteral("frmUpdate"));
  setWindowTitle(tr("Check for Updates"));
  auto* label = new QLabel(tr("Asking the support server for the current version of Gorvan..."));
  label->setWordWrap(true);
  auto* bar = new QProgressBar;
  bar->setRange(0, 0);
  bar->setTextVisible(false);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
  buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("btnCancel"));
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(this, &QDialog::finished, task_, &BackgroundTask::Stop);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(label);
  layout->addWidget(bar);
  layout->addWidget(buttons);
  setMinimumWidth(fontMetrics().averageCharWidth() * 50);
}

bool frmUpdate::checking() const { return task_->running(); }

void frmUpdate::Start() {
  const SettingsRecord settings = settings_;
  task_->Start<SupportClient::Outcome>(
      [settings](std::stop_token stop) { return SupportClient(settings).CheckVersion(true, stop); },
      [this](SupportClient::Outcome& outcome) {
        hide();
        outcome.Show(prompt_);
        accept();
      });
}

}  // namespace gorvan::ui
