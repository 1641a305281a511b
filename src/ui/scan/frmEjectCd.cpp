#include "ui/scan/frmEjectCd.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "audio/OpticalDrives.h"
#include "ui/scan/ScanSources.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {
constexpr int kDeviceRole = Qt::UserRole + 1;
}

frmEjectCd::frmEjectCd(std::shared_ptr<ScanSources> sources, QWidget* parent)
    : QDialog(parent), sources_(std::move(sources)) {
  setObjectName(QStringLiteral("frmEjectCd"));
  setWindowTitle(tr("Eject a Disc"));
  setAttribute(Qt::WA_DeleteOnClose);
  auto* caption = new QLabel(tr("&Drives:"), this);
  list_ = new QListWidget(this);
  list_->setObjectName(QStringLiteral("lstDrives"));
  caption->setBuddy(list_);
  auto* buttons = new QDialogButtonBox(this);
  btnEject_ = buttons->addButton(tr("&Eject"), QDialogButtonBox::AcceptRole);
  btnEject_->setObjectName(QStringLiteral("btnEject"));
  QPushButton* close = buttons->addButton(QDialogButtonBox::Close);
  close->setObjectName(QStringLiteral("btnCancel"));
  connect(buttons, &QDialogButtonBox::accepted, this, &frmEjectCd::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(list_, &QListWidget::itemActivated, this, &frmEjectCd::accept);

  for (const std::string& device : sources_->OpticalDrives()) {
    const std::string label = sources_->DriveLabel(device);
    auto* item = new QListWidgetItem(
        QIcon::fromTheme(QStringLiteral("media-optical")),
        Qs(device) + QStringLiteral(": ") + (label.empty() ? tr("(no disc)") : Qs(label)), list_);
    item->setData(kDeviceRole, Qs(device));
  }
  if (list_->count() == 0) {
    auto* none = new QListWidgetItem(Qs(OpticalDrives::kNoDrives), list_);
    none->setFlags(Qt::NoItemFlags);
    btnEject_->setEnabled(false);
  } else {
    list_->setCurrentRow(0);
  }
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(caption);
  layout->addWidget(list_);
  layout->addWidget(buttons);
  resize(fontMetrics().averageCharWidth() * 50, fontMetrics().height() * 14);
}

void frmEjectCd::accept() {
  QListWidgetItem* item = list_->currentItem();
  if (!item || !(item->flags() & Qt::ItemIsEnabled)) return;
  sources_->Eject(Std(item->data(kDeviceRole).toString()));
  QDialog::accept();
}

}  // namespace gorvan::ui
