#include "ui/scan/frmAnimation.h"

#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include "ui/session/CatalogSession.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {

// A label that shows its text shortened in the middle ("/home/ann/…/photos")
// to the width it has, the whole text as its tool-tip.
class ElidedLabel : public QLabel {
 public:
  explicit ElidedLabel(QWidget* parent) : QLabel(parent) {
    // As wide as a long path wants, and able to shrink to a few letters.
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    setTextInteractionFlags(Qt::NoTextInteraction);
  }
  void SetFullText(const QString& text) {
    if (text == full_) return;
    full_ = text;
    setToolTip(text);
    Elide();
  }
  const QString& fullText() const { return full_; }
  QSize minimumSizeHint() const override {
    return {fontMetrics().averageCharWidth() * 10, QLabel::minimumSizeHint().height()};
  }
  QSize sizeHint() const override {
    return {fontMetrics().averageCharWidth() * 60, QLabel::sizeHint().height()};
  }

 protected:
  void resizeEvent(QResizeEvent* event) override {
    QLabel::resizeEvent(event);
    Elide();
  }

 private:
  void Elide() { setText(fontMetrics().elidedText(full_, Qt::ElideMiddle, width())); }
  QString full_;
};

// A disc turning while the scan runs: drawn from the palette, sized by the
// font, so it fits every theme and screen.
class DiscSpinner : public QWidget {
 public:
  explicit DiscSpinner(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("picAnimation"));
    timer_ = new QTimer(this);
    timer_->setInterval(40);
    connect(timer_, &QTimer::timeout, this, [this] {
      angle_ = (angle_ + 9) % 360;
      update();
    });
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  }
  void SetRunning(bool on) {
    if (on) {
      timer_->start();
    } else {
      timer_->stop();
    }
  }
  bool running() const { return timer_->isActive(); }
  QSize sizeHint() const override {
    const int side = fontMetrics().height() * 4;
    return {side, side};
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const qreal side = std::min(width(), height()) - 2;
    const QRectF disc((width() - side) / 2, (height() - side) / 2, side, side);
    const QPalette& pal = palette();
    QConicalGradient shine(disc.center(), -angle_);
    const QColor base = pal.color(QPalette::Mid);
    const QColor light = pal.color(QPalette::Highlight).lighter(140);
    shine.setColorAt(0.0, light);
    shine.setColorAt(0.15, base);
    shine.setColorAt(0.5, light);
    shine.setColorAt(0.65, base);
    shine.setColorAt(1.0, light);
    p.setPen(QPen(pal.color(QPalette::Dark), side / 60));
    p.setBrush(shine);
    p.drawEllipse(disc);
    const qreal hub = side * 0.34;
    p.setBrush(pal.color(QPalette::Button));
    p.drawEllipse(disc.center(), hub / 2, hub / 2);
    p.setBrush(pal.color(QPalette::Window));
    p.drawEllipse(disc.center(), side * 0.07, side * 0.07);
  }

 private:
  QTimer* timer_;
  int angle_ = 0;
};

frmAnimation::frmAnimation(CatalogSession& session, const QString& title, QWidget* parent)
    : QDialog(parent), session_(session) {
  setObjectName(QStringLiteral("frmAnimation"));
  setWindowTitle(title);
  setAttribute(Qt::WA_DeleteOnClose);
  setModal(false);

  spinner_ = new DiscSpinner(this);
  label1_ = new ElidedLabel(this);
  label1_->setObjectName(QStringLiteral("Label1"));
  label2_ = new ElidedLabel(this);
  label2_->setObjectName(QStringLiteral("Label2"));
  auto number = [this](const char* name) {
    auto* l = new QLabel(QStringLiteral("0"), this);
    l->setObjectName(QLatin1String(name));
    l->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    return l;
  };
  folders_ = number("lblFolders");
  files_ = number("lblFiles");
  bytes_ = number("lblBytes");
  elapsed_ = number("lblElapsed");
  summary_ = new QLabel(this);
  summary_->setObjectName(QStringLiteral("lblSummary"));
  summary_->setWordWrap(true);
  summary_->hide();

  auto* counts = new QFormLayout;
  counts->addRow(tr("Folders:"), folders_);
  counts->addRow(tr("Files:"), files_);
  counts->addRow(tr("Size:"), bytes_);
  counts->addRow(tr("Time:"), elapsed_);

  auto* top = new QHBoxLayout;
  top->addWidget(spinner_, 0, Qt::AlignTop);
  auto* right = new QVBoxLayout;
  right->addWidget(label1_);
  right->addWidget(label2_);
  right->addLayout(counts);
  right->addWidget(summary_);
  top->addLayout(right, 1);

  // Plain buttons (not a button box, which shows every button it lays out):
  // Warnings and Close appear only once the scan has ended.
  auto* buttons = new QHBoxLayout;
  btnWarnings_ = new QPushButton(tr("&Warnings..."), this);
  btnWarnings_->setObjectName(QStringLiteral("btnWarnings"));
  btnWarnings_->setAutoDefault(false);
  btnWarnings_->hide();
  btnCancel_ = new QPushButton(tr("&Cancel Scan"), this);
  btnCancel_->setObjectName(QStringLiteral("btnCancel"));
  btnClose_ = new QPushButton(tr("&Close"), this);
  btnClose_->setObjectName(QStringLiteral("btnClose"));
  btnClose_->hide();
  buttons->addWidget(btnWarnings_);
  buttons->addStretch(1);
  buttons->addWidget(btnCancel_);
  buttons->addWidget(btnClose_);
  connect(btnCancel_, &QPushButton::clicked, this, &frmAnimation::AskCancel);
  connect(btnClose_, &QPushButton::clicked, this, &QDialog::accept);
  connect(btnWarnings_, &QPushButton::clicked, this, &frmAnimation::ShowWarnings);

  auto* layout = new QVBoxLayout(this);
  layout->addLayout(top);
  layout->addLayout(buttons);

  clock_ = new QTimer(this);
  clock_->setInterval(250);
  connect(clock_, &QTimer::timeout, this, &frmAnimation::Tick);
  started_.start();
  Tick();
  clock_->start();
  spinner_->SetRunning(true);
  resize(sizeHint());
}

bool frmAnimation::animating() const { return spinner_->running(); }

void frmAnimation::Report(const JobProgress& p) {
  if (!running_) return;
  label1_->SetFullText(Qs(p.caption));
  label2_->SetFullText(Qs(p.detail));
  const QLocale locale;
  folders_->setText(locale.toString(static_cast<qlonglong>(p.folders)));
  files_->setText(locale.toString(static_cast<qlonglong>(p.files)));
  bytes_->setText(SizeText(p.bytes));
}

void frmAnimation::Tick() {
  const qint64 s = started_.elapsed() / 1000;
  elapsed_->setText(QStringLiteral("%1:%2:%3")
                        .arg(s / 3600)
                        .arg(s / 60 % 60, 2, 10, QLatin1Char('0'))
                        .arg(s % 60, 2, 10, QLatin1Char('0')));
}

void frmAnimation::AskCancel() {
  if (!running_ || asking_) return;
  asking_ = true;
  spinner_->SetRunning(false);
  PromptRequest r;
  r.text = kCancelScanQuestion;
  r.buttons = PromptButtons::kYesNo;
  r.icon = PromptIcon::kQuestion;
  const bool yes = session_.prompt().Ask(r).answer == PromptAnswer::kYes;
  asking_ = false;
  if (!running_) return;  // the scan ended while the question was open
  if (yes) {
    btnCancel_->setEnabled(false);
    label2_->SetFullText(tr("Cancelling..."));
    cancelAsked_.start();
    Q_EMIT cancelRequested();
  } else {
    spinner_->SetRunning(true);
  }
}

void frmAnimation::Finish(const ScanSummary& s) {
  running_ = false;
  if (cancelAsked_.isValid()) cancelLatency_ = cancelAsked_.elapsed();
  clock_->stop();
  Tick();
  spinner_->SetRunning(false);
  const QLocale locale;
  folders_->setText(locale.toString(static_cast<qlonglong>(s.folders)));
  files_->setText(locale.toString(static_cast<qlonglong>(s.files)));
  bytes_->setText(ExactSizeText(s.bytes));
  label2_->SetFullText(QString());
  QString text;
  if (s.failed) {
    text = tr("The scan failed: %1\nThe catalog keeps what it held before.").arg(s.message);
  } else if (s.cancelled) {
    text = s.discId ? tr("The scan was cancelled. What was read so far stays in the catalog "
                         "as a disc of its own.")
                    : tr("The scan was cancelled before it began.");
  } else {
    text = tr("Scan complete.");
  }
  if (s.warnings == 1) {
    text += QLatin1Char('\n') + tr("1 warning.");
  } else if (s.warnings > 1) {
    text += QLatin1Char('\n') + tr("%1 warnings.").arg(s.warnings);
  }
  summary_->setText(text);
  summary_->show();
  warningTexts_ = s.warningTexts;
  btnWarnings_->setVisible(!warningTexts_.isEmpty());
  btnCancel_->hide();
  btnClose_->show();
  btnClose_->setDefault(true);
  btnClose_->setFocus();
}

void frmAnimation::ShowWarnings() {
  auto* box = new QDialog(this);
  box->setObjectName(QStringLiteral("frmScanWarnings"));
  box->setWindowTitle(tr("Scan Warnings"));
  box->setAttribute(Qt::WA_DeleteOnClose);
  auto* text = new QPlainTextEdit(box);
  text->setObjectName(QStringLiteral("txtWarnings"));
  text->setReadOnly(true);
  text->setLineWrapMode(QPlainTextEdit::NoWrap);
  text->setPlainText(warningTexts_.join(QLatin1Char('\n')));
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, box);
  connect(buttons, &QDialogButtonBox::rejected, box, &QDialog::reject);
  auto* layout = new QVBoxLayout(box);
  layout->addWidget(text);
  layout->addWidget(buttons);
  box->resize(fontMetrics().averageCharWidth() * 90, fontMetrics().height() * 20);
  box->open();
}

void frmAnimation::reject() {
  // Escape: while the scan runs it is the cancel question.
  if (running_) {
    AskCancel();
    return;
  }
  QDialog::reject();
}

void frmAnimation::closeEvent(QCloseEvent* event) {
  if (running_) {
    event->ignore();
    AskCancel();
    return;
  }
  QDialog::closeEvent(event);
}

}  // namespace gorvan::ui
