#include "ui/help/frmTip.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include "app/SettingsStore.h"
#include "ui/options/DialogSize.h"
#include "ui/widgets/ThemeIcons.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

constexpr const char* kTips = "Tips";

}  // namespace

bool frmTip::ShowAtStartup() { return SettingsStore::GetBool(kTips, "ShowAtStartup", true); }

frmTip::frmTip(const QString& path, QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("frmTip"));
  setWindowTitle(tr("Tip of the Day"));
  file_.Load(path);

  auto* icon = new QLabel;
  const int side = fontMetrics().height() * 3;
  icon->setPixmap(ThemeIcons::Named("dialog-information|help-about").pixmap(side, side));
  icon->setAlignment(Qt::AlignTop);
  auto* heading = new QLabel(tr("Did you know..."));
  QFont bold = heading->font();
  bold.setBold(true);
  bold.setPointSizeF(bold.pointSizeF() * 1.2);
  heading->setFont(bold);
  tip_ = new QLabel;
  tip_->setObjectName(QStringLiteral("lblTip"));
  tip_->setWordWrap(true);
  tip_->setAlignment(Qt::AlignTop | Qt::AlignLeft);
  tip_->setTextFormat(Qt::PlainText);
  tip_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  tip_->setMinimumWidth(fontMetrics().averageCharWidth() * 50);
  tip_->setMinimumHeight(fontMetrics().height() * 5);
  auto* problem = new QLabel(file_.problem());
  problem->setObjectName(QStringLiteral("lblProblem"));
  problem->setWordWrap(true);
  problem->setVisible(!file_.problem().isEmpty());

  showAtStart_ = new QCheckBox(tr("&Show tips at start-up"));
  showAtStart_->setObjectName(QStringLiteral("chkShowAtStartup"));
  showAtStart_->setChecked(ShowAtStartup());
  connect(showAtStart_, &QCheckBox::toggled, this,
          [](bool on) { SettingsStore::PutBool(kTips, "ShowAtStartup", on); });

  auto* buttons = new QDialogButtonBox;
  QPushButton* previous = buttons->addButton(tr("&Previous"), QDialogButtonBox::ActionRole);
  previous->setObjectName(QStringLiteral("btnPrevious"));
  QPushButton* next = buttons->addButton(tr("&Next"), QDialogButtonBox::ActionRole);
  next->setObjectName(QStringLiteral("btnNext"));
  QPushButton* close = buttons->addButton(QDialogButtonBox::Close);
  close->setObjectName(QStringLiteral("btnClose"));
  close->setDefault(true);
  connect(previous, &QPushButton::clicked, this, [this] { Step(-1); });
  connect(next, &QPushButton::clicked, this, [this] { Step(1); });
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* text = new QVBoxLayout;
  text->addWidget(heading);
  text->addWidget(tip_, 1);
  text->addWidget(problem);
  auto* top = new QHBoxLayout;
  top->addWidget(icon);
  top->addLayout(text, 1);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(top, 1);
  layout->addWidget(showAtStart_);
  layout->addWidget(buttons);

  bool ok = false;
  int stored = Qs(SettingsStore::GetText(kTips, "Next", "0")).toInt(&ok);
  if (!ok) stored = 0;
  const int count = static_cast<int>(file_.tips().size());
  current_ = ((stored % count) + count) % count;
  Step(0);
  DialogSize::Keep(this);
}

QString frmTip::tipText() const { return tip_->text(); }

void frmTip::Step(int by) {
  const int count = static_cast<int>(file_.tips().size());
  current_ = ((current_ + by) % count + count) % count;
  tip_->setText(file_.tips().at(current_));
  // The next showing starts after this one.
  SettingsStore::PutText(kTips, "Next", std::to_string((current_ + 1) % count));
}

}  // namespace gorvan::ui
