#include "ui/widgets/JobProgressDialog.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include "ui/widgets/UiText.h"

namespace gorvan::ui {

JobProgressDialog::JobProgressDialog(const QString& caption, const QString& cancelText, int delayMs,
                                     QWidget* parent)
    : QDialog(parent) {
  setObjectName(QStringLiteral("frmProgress"));
  setWindowTitle(caption);
  setModal(false);
  line_ = new QLabel(caption);
  line_->setObjectName(QStringLiteral("lblCaption"));
  line_->setMinimumWidth(fontMetrics().averageCharWidth() * 50);
  line_->setTextFormat(Qt::PlainText);
  detail_ = new QLabel;
  detail_->setObjectName(QStringLiteral("lblDetail"));
  detail_->setTextFormat(Qt::PlainText);
  bar_ = new QProgressBar;
  bar_->setObjectName(QStringLiteral("prgProgress"));
  bar_->setRange(0, 0);
  cancel_ = new QPushButton(cancelText);
  cancel_->setObjectName(QStringLiteral("btnCancel"));
  connect(cancel_, &QPushButton::clicked, this, &JobProgressDialog::reject);

  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(cancel_);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(line_);
  layout->addWidget(detail_);
  layout->addWidget(bar_);
  layout->addLayout(buttons);

  if (delayMs <= 0) {
    show();
  } else {
    QTimer::singleShot(delayMs, this, [this] {
      if (!isVisible()) show();
    });
  }
}

void JobProgressDialog::Report(const JobProgress& p) {
  if (!p.caption.empty()) line_->setText(RowText(p.caption));
  detail_->setText(RowText(p.detail));
  if (p.maximum > 0) {
    // A bar's range is an int: large counts are scaled to per mille.
    bar_->setRange(0, 1000);
    bar_->setValue(static_cast<int>(std::min<int64_t>(1000, p.value * 1000 / p.maximum)));
  }
}

void JobProgressDialog::reject() {
  // Escape and the title bar's close cancel as the button does; the window
  // closes when the job has ended.
  if (!cancel_->isEnabled()) return;
  cancel_->setEnabled(false);
  line_->setText(tr("Cancelling..."));
  Q_EMIT cancelRequested();
}

}  // namespace gorvan::ui
