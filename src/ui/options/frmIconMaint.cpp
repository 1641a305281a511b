#include "ui/options/frmIconMaint.h"

#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QImageReader>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSet>
#include <QStyle>
#include <QTableWidget>
#include <QVBoxLayout>

#include "app/IconMap.h"
#include "app/Prompt.h"
#include "ui/options/DialogSize.h"
#include "ui/options/MapIcons.h"
#include "ui/widgets/ThemeIcons.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

constexpr int kKeyRole = Qt::UserRole;

void ShowKey(QTableWidgetItem* item, const QString& key) {
  item->setData(kKeyRole, key);
  item->setText(MapIcons::Caption(key));
  item->setIcon(MapIcons::IconOf(key));
  item->setToolTip(key);
}

}  // namespace

int frmIconMaint::BrokenLines(const QString& mapFile) {
  QFile file(mapFile);
  if (!file.open(QIODevice::ReadOnly)) return 0;
  int broken = 0;
  const QByteArray bytes = file.read(static_cast<qint64>(IconMap::kMaxFileBytes));
  for (QByteArray line : bytes.split('\n')) {
    if (line.endsWith('\r')) line.chop(1);
    if (line.trimmed().isEmpty()) continue;
    if (line.count(',') != 1) ++broken;
  }
  return broken;
}

frmIconMaint::frmIconMaint(IconMap& map, const QString& mapFile, Prompt& prompt, QWidget* parent)
    : QDialog(parent), map_(map), mapFile_(mapFile), prompt_(prompt) {
  setObjectName(QStringLiteral("frmIconMaint"));
  setWindowTitle(tr("Icon Maintenance"));
  table_ = new QTableWidget(0, 2);
  table_->setObjectName(QStringLiteral("lstIcons"));
  table_->setHorizontalHeaderLabels({tr("Extension"), tr("Icon")});
  table_->horizontalHeader()->setStretchLastSection(true);
  table_->verticalHeader()->hide();
  table_->setSelectionBehavior(QAbstractItemView::SelectRows);
  table_->setSelectionMode(QAbstractItemView::SingleSelection);
  table_->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                          QAbstractItemView::AnyKeyPressed);
  const int icon = fontMetrics().height() + 4;
  table_->setIconSize(QSize(icon, icon));
  table_->setColumnWidth(0, fontMetrics().averageCharWidth() * 14);
  for (const IconMap::Entry& e : map_.entries()) AddRow(Qs(e.extension), Qs(e.iconKey));
  if (table_->rowCount() > 0) table_->selectRow(0);

  auto* note = new QLabel;
  note->setObjectName(QStringLiteral("lblNote"));
  note->setWordWrap(true);
  const int broken = BrokenLines(mapFile_);
  if (broken == 0) {
    note->setText(
        tr("Files of these types show these icons in the explorer and the search results."));
  } else {
    note->setText((broken == 1 ? tr("1 line of %1 is no \"extension,icon\" entry: it is left out "
                                    "and goes when the map is saved.")
                               : tr("%1 lines of %2 are no \"extension,icon\" entry: they are "
                                    "left out and go when the map is saved.")
                                     .arg(broken))
                      .arg(QLatin1String(kIconMapName)));
  }

  auto* add = new QPushButton(tr("&Add"));
  add->setObjectName(QStringLiteral("btnAdd"));
  auto* change = new QPushButton(tr("&Change Icon..."));
  change->setObjectName(QStringLiteral("btnChange"));
  auto* remove = new QPushButton(tr("&Remove"));
  remove->setObjectName(QStringLiteral("btnRemove"));
  connect(add, &QPushButton::clicked, this, [this] {
    AddRow(QString(), QStringLiteral("text-x-generic"));
    table_->editItem(table_->item(table_->rowCount() - 1, 0));
  });
  connect(change, &QPushButton::clicked, this, &frmIconMaint::Change);
  connect(remove, &QPushButton::clicked, this, &frmIconMaint::Remove);
  connect(table_, &QTableWidget::cellDoubleClicked, this, [this](int, int column) {
    if (column == 1) Change();
  });
  auto* side = new QVBoxLayout;
  side->addWidget(add);
  side->addWidget(change);
  side->addWidget(remove);
  side->addStretch();
  auto* body = new QHBoxLayout;
  body->addWidget(table_, 1);
  body->addLayout(side);

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("btnOK"));
  buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("btnCancel"));
  connect(buttons, &QDialogButtonBox::accepted, this, [this] {
    if (Apply()) accept();
  });
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(body, 1);
  layout->addWidget(note);
  layout->addWidget(buttons);
  DialogSize::Keep(this);
}

void frmIconMaint::AddRow(const QString& extension, const QString& key) {
  const int row = table_->rowCount();
  table_->insertRow(row);
  table_->setItem(row, 0, new QTableWidgetItem(extension));
  auto* icon = new QTableWidgetItem;
  icon->setFlags(icon->flags() & ~Qt::ItemIsEditable);
  ShowKey(icon, key);
  table_->setItem(row, 1, icon);
  table_->selectRow(row);
}

void frmIconMaint::SetKey(const QString& key) {
  const int row = table_->currentRow();
  if (row >= 0) ShowKey(table_->item(row, 1), key);
}

void frmIconMaint::Change() {
  const int row = table_->currentRow();
  if (row < 0) return;
  auto* picker = new frmIconPicker(table_->item(row, 1)->data(kKeyRole).toString(), this);
  picker->setAttribute(Qt::WA_DeleteOnClose);
  connect(picker, &QDialog::accepted, this, [this, picker] { SetKey(picker->key()); });
  picker->open();
}

void frmIconMaint::Remove() {
  const int row = table_->currentRow();
  if (row >= 0) table_->removeRow(row);
}

bool frmIconMaint::Apply() {
  IconMap edited;
  QSet<QString> seen;
  for (int row = 0; row < table_->rowCount(); ++row) {
    QString ext = table_->item(row, 0)->text().trimmed();
    if (ext.startsWith(QLatin1Char('.'))) ext.remove(0, 1);
    const QString key = table_->item(row, 1)->data(kKeyRole).toString();
    QString problem;
    if (ext.isEmpty()) {
      problem = tr("Row %1 has no extension.").arg(row + 1);
    } else if (ext.contains(QLatin1Char(',')) || ext.contains(QLatin1Char('\n'))) {
      problem = tr("The extension \"%1\" holds a comma or a line break, which the icon map "
                   "cannot keep.")
                    .arg(ext);
    } else if (key.contains(QLatin1Char(',')) || key.contains(QLatin1Char('\n'))) {
      problem = tr("The icon \"%1\" holds a comma or a line break, which the icon map cannot "
                   "keep: move or rename the picture.")
                    .arg(key);
    } else if (seen.contains(ext.toLower())) {
      problem = tr("The extension \"%1\" is listed twice.").arg(ext);
    }
    if (!problem.isEmpty()) {
      table_->selectRow(row);
      prompt_.Message(Std(problem), PromptIcon::kWarning);
      return false;
    }
    seen.insert(ext.toLower());
    edited.Set(Std(ext), Std(key));
  }
  if (!edited.Save(Std(mapFile_))) {
    prompt_.Message(Std(tr("The icon map cannot be written to %1.").arg(mapFile_)),
                    PromptIcon::kWarning);
    return false;
  }
  map_ = edited;
  MapIcons::Apply(map_);
  Q_EMIT applied();
  return true;
}

QStringList frmIconPicker::ThemeNames() {
  static const char* const kNames[] = {"text-x-generic",
                                       "text-x-script",
                                       "text-html",
                                       "text-x-preview",
                                       "x-office-document",
                                       "x-office-spreadsheet",
                                       "x-office-presentation",
                                       "x-office-drawing",
                                       "x-office-calendar",
                                       "x-office-address-book",
                                       "audio-x-generic",
                                       "video-x-generic",
                                       "image-x-generic",
                                       "font-x-generic",
                                       "package-x-generic",
                                       "application-x-executable",
                                       "application-x-addon",
                                       "application-certificate",
                                       "media-optical",
                                       "media-optical-cd-audio",
                                       "media-removable",
                                       "drive-harddisk",
                                       "folder",
                                       "folder-documents",
                                       "folder-music",
                                       "folder-pictures",
                                       "folder-videos",
                                       "folder-download",
                                       "user-bookmarks",
                                       "emblem-important",
                                       "emblem-favorite",
                                       "emblem-photos",
                                       "emblem-documents",
                                       "emblem-system",
                                       "help-browser",
                                       "mail-message-new",
                                       "system-software-install",
                                       "utilities-terminal",
                                       "accessories-text-editor",
                                       "applications-games",
                                       "applications-multimedia",
                                       "applications-graphics",
                                       "web-browser",
                                       "network-server",
                                       "computer"};
  QStringList out;
  for (const char* name : kNames) {
    if (!ThemeIcons::Named(name).isNull()) out << QLatin1String(name);
  }
  return out;
}

frmIconPicker::frmIconPicker(const QString& current, QWidget* parent)
    : QDialog(parent), key_(current) {
  setObjectName(QStringLiteral("frmIconPicker"));
  setWindowTitle(tr("Choose an Icon"));
  list_ = new QListWidget;
  list_->setObjectName(QStringLiteral("lstThemeIcons"));
  list_->setViewMode(QListView::IconMode);
  list_->setResizeMode(QListView::Adjust);
  list_->setWordWrap(true);
  const int side = fontMetrics().height() * 2;
  list_->setIconSize(QSize(side, side));
  const QSize grid(fontMetrics().averageCharWidth() * 24, side * 2 + fontMetrics().height() * 2);
  list_->setGridSize(grid);
  // Four columns and three rows of icons at least.
  list_->setMinimumSize(grid.width() * 4 + style()->pixelMetric(QStyle::PM_ScrollBarExtent) +
                            2 * list_->frameWidth() + 4,
                        grid.height() * 3);
  for (const QString& name : ThemeNames()) {
    // Shown as words, so a long name wraps instead of being cut.
    QString words = name;
    words.replace(QLatin1Char('-'), QLatin1Char(' '));
    auto* item = new QListWidgetItem(MapIcons::IconOf(name), words, list_);
    item->setData(Qt::UserRole, name);
    item->setToolTip(name);
    if (name == current) list_->setCurrentItem(item);
  }
  message_ = new QLabel;
  message_->setObjectName(QStringLiteral("lblMessage"));
  message_->setWordWrap(true);

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("btnOK"));
  buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("btnCancel"));
  QPushButton* file = buttons->addButton(tr("From a &File..."), QDialogButtonBox::ActionRole);
  file->setObjectName(QStringLiteral("btnFromFile"));
  connect(file, &QPushButton::clicked, this, [this] {
    QStringList patterns;
    for (const QByteArray& format : QImageReader::supportedImageFormats()) {
      patterns << QStringLiteral("*.") + QString::fromLatin1(format);
    }
    auto* dialog = new QFileDialog(this, tr("Choose a picture"), QString(),
                                   tr("Pictures (%1)").arg(patterns.join(QLatin1Char(' '))));
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& path) {
      if (ChooseFile(path)) accept();
    });
    dialog->open();
  });
  connect(list_, &QListWidget::currentItemChanged, this, [this](QListWidgetItem* item) {
    if (item) key_ = item->data(Qt::UserRole).toString();
  });
  connect(list_, &QListWidget::itemActivated, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(list_, 1);
  layout->addWidget(message_);
  layout->addWidget(buttons);
  DialogSize::Keep(this);
}

bool frmIconPicker::ChooseFile(const QString& path) {
  if (!MapIcons::IsPicture(path)) {
    message_->setText(tr("%1 is not a picture Gorvan can show.").arg(path));
    return false;
  }
  key_ = path;
  message_->clear();
  return true;
}

QString frmIconPicker::message() const { return message_->text(); }

}  // namespace gorvan::ui
