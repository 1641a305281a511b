#include "ui/scan/uFolderBrowser.h"

#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>

#include "catalog/Attributes.h"
#include "ui/widgets/ThemeIcons.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

constexpr int kPathRole = Qt::UserRole + 1;

QIcon PlaceIcon(const ScanPlace& p) {
  switch (p.driveType) {
    case kMediaOptical:
      return QIcon::fromTheme(QStringLiteral("media-optical"));
    case kMediaRemovable:
      return QIcon::fromTheme(QStringLiteral("drive-removable-media"));
    case kMediaRemote:
      return QIcon::fromTheme(QStringLiteral("folder-remote"));
    default:
      return QIcon::fromTheme(QStringLiteral("drive-harddisk"));
  }
}

}  // namespace

uFolderBrowser::uFolderBrowser(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("uFolderBrowser1"));
  combo_ = new QComboBox(this);
  combo_->setObjectName(QStringLiteral("cboPath"));
  combo_->setEditable(true);
  combo_->setInsertPolicy(QComboBox::NoInsert);
  combo_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  combo_->setMinimumContentsLength(30);
  combo_->lineEdit()->setPlaceholderText(tr("A drive or a folder"));
  browse_ = new QPushButton(tr("&Browse..."), this);
  browse_->setObjectName(QStringLiteral("btnBrowse"));
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->addWidget(combo_, 1);
  row->addWidget(browse_);
  setFocusProxy(combo_);

  connect(combo_, &QComboBox::activated, this, [this](int index) {
    // The list shows the place's text; the field holds its path.
    const QString p = combo_->itemData(index, kPathRole).toString();
    if (!p.isEmpty()) combo_->setEditText(p);
    Commit();
  });
  connect(combo_->lineEdit(), &QLineEdit::editingFinished, this, &uFolderBrowser::Commit);
  connect(browse_, &QPushButton::clicked, this, &uFolderBrowser::Browse);
}

QString uFolderBrowser::PlaceText(const ScanPlace& p) {
  QString label = Qs(p.label);
  if (label.isEmpty()) label = p.drive ? tr("No disc") : tr("(no label)");
  QString text = label + QStringLiteral(" (") + Qs(p.path) + QLatin1Char(')');
  if (p.freeBytes >= 0 && !p.drive) text += tr(" — %1 free").arg(SizeText(p.freeBytes));
  return text;
}

void uFolderBrowser::SetPlaces(const std::vector<ScanPlace>& places) {
  const QString keep = combo_->currentText();
  places_ = places;
  combo_->blockSignals(true);
  combo_->clear();
  for (const ScanPlace& p : places_) {
    combo_->addItem(PlaceIcon(p), PlaceText(p));
    combo_->setItemData(combo_->count() - 1, Qs(p.path), kPathRole);
    combo_->setItemData(combo_->count() - 1, Qs(p.path), Qt::ToolTipRole);
  }
  combo_->setCurrentIndex(-1);
  combo_->setEditText(keep);
  combo_->blockSignals(false);
}

QString uFolderBrowser::path() const { return combo_->currentText().trimmed(); }

void uFolderBrowser::SetPath(const QString& path) {
  combo_->setEditText(path);
  Commit();
}

const ScanPlace* uFolderBrowser::PlaceOf(const QString& path) const {
  for (const ScanPlace& p : places_) {
    if (Qs(p.path) == path) return &p;
  }
  return nullptr;
}

void uFolderBrowser::Commit() {
  const QString now = path();
  if (now == last_) return;
  last_ = now;
  Q_EMIT pathChanged(now);
}

void uFolderBrowser::Browse() {
  QString start = path();
  if (start.isEmpty() || !QDir(start).exists()) start = QDir::homePath();
  auto* dialog = new QFileDialog(this, tr("Choose the folder to scan"), start);
  dialog->setObjectName(QStringLiteral("dlgBrowseFolder"));
  dialog->setFileMode(QFileDialog::Directory);
  dialog->setOption(QFileDialog::ShowDirsOnly, true);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  connect(dialog, &QFileDialog::fileSelected, this,
          [this](const QString& folder) { SetPath(QDir::toNativeSeparators(folder)); });
  dialog->open();
}

}  // namespace gorvan::ui
