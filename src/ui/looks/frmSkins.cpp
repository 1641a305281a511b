#include "ui/looks/frmSkins.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/SettingsRecord.h"
#include "app/SettingsStore.h"
#include "ui/looks/Looks.h"
#include "ui/looks/Skins.h"
#include "ui/options/DialogSize.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {

QPixmap SkinStrip(const QString& path, QSize size) {
  SkinColours colours;
  QString sheet, error;
  bool hasColours = false;
  if (path.isEmpty() || !Skins::Read(path, &sheet, &colours, &hasColours, &error) || !hasColours) {
    colours = SkinColours::FromPalette(Looks::FollowDark(Looks::DesktopPalette()));
  }
  QPixmap pixmap(size);
  QPainter p(&pixmap);
  const QList<QColor> strip = {colours.window, colours.base,      colours.alternateBase,
                               colours.button, colours.highlight, colours.text};
  const int w = size.width() / static_cast<int>(strip.size());
  for (int i = 0; i < strip.size(); ++i) {
    const int right = i + 1 == strip.size() ? size.width() : (i + 1) * w;
    p.fillRect(QRect(i * w, 0, right - i * w, size.height()), strip[i]);
  }
  p.setPen(QColor(128, 128, 128));
  p.drawRect(pixmap.rect().adjusted(0, 0, -1, -1));
  return pixmap;
}

frmSkins::frmSkins(SettingsRecord& settings, QWidget* parent)
    : QDialog(parent), settings_(settings) {
  setObjectName(QStringLiteral("frmSkins"));
  setWindowTitle(tr("Skins"));
  list_ = new QListWidget;
  list_->setObjectName(QStringLiteral("lstSkins"));
  auto* none = new QListWidgetItem(tr("None: follow the desktop"), list_);
  none->setData(Qt::UserRole, QString());
  auto* standard = new QListWidgetItem(Skins::DisplayName(QLatin1String(kDefaultSkinName)), list_);
  standard->setData(Qt::UserRole, QLatin1String(kDefaultSkinName));
  for (const Skins::Skin& s : Skins::List()) {
    auto* item = new QListWidgetItem(
        s.shipped ? s.name : tr("%1 (yours)").arg(Skins::DisplayName(s.name)), list_);
    item->setData(Qt::UserRole, s.name);
    item->setData(Qt::UserRole + 1, s.path);
  }
  const QString current = !settings_.skinSupportEnabled ? QString()
                          : settings_.skinName.empty()  ? QLatin1String(kDefaultSkinName)
                                                        : Qs(settings_.skinName);
  list_->setCurrentRow(0);
  for (int i = 0; i < list_->count(); ++i) {
    const QString name = list_->item(i)->data(Qt::UserRole).toString();
    if (name.compare(current, Qt::CaseInsensitive) == 0) list_->setCurrentRow(i);
  }
  preview_ = new QLabel;
  preview_->setObjectName(QStringLiteral("lblPreview"));
  auto* hint =
      new QLabel(tr("Without a skin Gorvan follows the desktop's own colours and shows "
                    "the background chosen in the options."));
  hint->setWordWrap(true);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("btnOK"));
  buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("btnCancel"));
  connect(buttons, &QDialogButtonBox::accepted, this, &frmSkins::Accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(list_, &QListWidget::currentRowChanged, this, &frmSkins::ShowChoice);
  connect(list_, &QListWidget::itemActivated, this, &frmSkins::Accept);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(list_);
  layout->addWidget(preview_);
  layout->addWidget(hint);
  layout->addWidget(buttons);
  ShowChoice();
  DialogSize::Keep(this);
}

void frmSkins::ShowChoice() {
  const QListWidgetItem* item = list_->currentItem();
  QString path = item ? item->data(Qt::UserRole + 1).toString() : QString();
  const QString name = item ? item->data(Qt::UserRole).toString() : QString();
  if (name == QLatin1String(kDefaultSkinName)) {
    path = Skins::PathOf(Skins::DefaultSkin(Looks::DesktopPalette()));
  }
  const int h = fontMetrics().height();
  preview_->setPixmap(SkinStrip(path, QSize(h * 18, h * 2)));
}

void frmSkins::Accept() {
  const QListWidgetItem* item = list_->currentItem();
  const QString name = item ? item->data(Qt::UserRole).toString() : QString();
  settings_.skinSupportEnabled = !name.isEmpty();
  if (!name.isEmpty()) settings_.skinName = Std(name);
  SettingsStore::PutBool(kSwitches, "SkinSupportEnabled", settings_.skinSupportEnabled);
  SettingsStore::PutText(kSwitches, "SkinName", settings_.skinName);
  accept();
  Q_EMIT applied();
}

}  // namespace gorvan::ui
