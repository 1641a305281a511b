#include "ui/looks/frmSkinDesigner.h"

#include <QApplication>
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QFontComboBox>
#include <QFormLayout>
#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QSaveFile>
#include <QSpinBox>
#include <QTabWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "app/Prompt.h"
#include "app/SettingsRecord.h"
#include "app/SettingsStore.h"
#include "ui/looks/Looks.h"
#include "ui/options/DialogSize.h"
#include "ui/options/ProgramState.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

const char* const kCaptions[] = {
    QT_TRANSLATE_NOOP("frmSkinDesigner", "&Window"),
    QT_TRANSLATE_NOOP("frmSkinDesigner", "Window te&xt"),
    QT_TRANSLATE_NOOP("frmSkinDesigner", "&Lists and fields"),
    QT_TRANSLATE_NOOP("frmSkinDesigner", "&Alternate rows"),
    QT_TRANSLATE_NOOP("frmSkinDesigner", "&Text in lists"),
    QT_TRANSLATE_NOOP("frmSkinDesigner", "&Buttons"),
    QT_TRANSLATE_NOOP("frmSkinDesigner", "Button te&xt"),
    QT_TRANSLATE_NOOP("frmSkinDesigner", "&Selection"),
    QT_TRANSLATE_NOOP("frmSkinDesigner", "Selected te&xt"),
};

// A sample of what the program shows: a tree with alternating rows and a
// selection, fields, a button, tabs.
QFrame* PreviewPanel() {
  auto* frame = new QFrame;
  frame->setObjectName(QStringLiteral("fraPreview"));
  frame->setFrameShape(QFrame::StyledPanel);
  frame->setAutoFillBackground(true);
  auto* tabs = new QTabWidget;
  auto* tree = new QTreeWidget;
  tree->setHeaderLabels({QObject::tr("Name"), QObject::tr("Size")});
  tree->setAlternatingRowColors(true);
  tree->setRootIsDecorated(true);
  const QStringList rows[] = {{QStringLiteral("Holiday photos"), QStringLiteral("4.8 GB")},
                              {QStringLiteral("Music"), QStringLiteral("12.1 GB")},
                              {QStringLiteral("Letters"), QStringLiteral("86 KB")},
                              {QStringLiteral("Backups 2024"), QStringLiteral("31.0 GB")}};
  for (const QStringList& r : rows) new QTreeWidgetItem(tree, r);
  tree->setCurrentItem(tree->topLevelItem(1));
  tabs->addTab(tree, QObject::tr("Explorer"));
  tabs->addTab(new QWidget, QObject::tr("Search"));
  auto* field = new QLineEdit(QObject::tr("holiday and 2024"));
  auto* check = new QCheckBox(QObject::tr("Search in notes"));
  check->setChecked(true);
  auto* button = new QPushButton(QObject::tr("Search"));
  auto* disabled = new QPushButton(QObject::tr("Stop"));
  disabled->setEnabled(false);
  auto* row = new QHBoxLayout;
  row->addWidget(field, 1);
  row->addWidget(button);
  row->addWidget(disabled);
  auto* layout = new QVBoxLayout(frame);
  layout->addWidget(new QLabel(QObject::tr("Catalog: Discs at home")));
  layout->addWidget(tabs, 1);
  layout->addLayout(row);
  layout->addWidget(check);
  return frame;
}

}  // namespace

frmSkinDesigner::frmSkinDesigner(SettingsRecord& settings, Prompt& prompt, QWidget* parent)
    : QDialog(parent), settings_(settings), prompt_(prompt) {
  setObjectName(QStringLiteral("frmSkinDesigner"));
  setWindowTitle(tr("Skin Designer"));

  start_ = new QComboBox;
  start_->setObjectName(QStringLiteral("cboStartFrom"));
  start_->addItem(tr("The desktop's colours"), QString());
  for (const Skins::Skin& s : Skins::List()) start_->addItem(Skins::DisplayName(s.name), s.path);

  auto* colourBox = new QGroupBox(tr("Colours"));
  auto* grid = new QGridLayout(colourBox);
  const auto& keys = SkinColours::Keys();
  for (int i = 0; i < keys.size(); ++i) {
    auto* button = new QPushButton;
    const QString key = QLatin1String(keys[i].first);
    button->setObjectName(QStringLiteral("btnColour-") + key);
    auto* label = new QLabel(QCoreApplication::translate("frmSkinDesigner", kCaptions[i]));
    label->setBuddy(button);
    grid->addWidget(label, i / 2, (i % 2) * 2);
    grid->addWidget(button, i / 2, (i % 2) * 2 + 1);
    buttons_.insert(key, button);
    QColor SkinColours::*member = keys[i].second;
    connect(button, &QPushButton::clicked, this, [this, member] {
      auto* dialog = new QColorDialog(colours_.*member, this);
      dialog->setObjectName(QStringLiteral("dlgColour"));
      dialog->setAttribute(Qt::WA_DeleteOnClose);
      connect(dialog, &QColorDialog::currentColorChanged, this,
              [this, member](const QColor& c) { SetColour(member, c); });
      const QColor before = colours_.*member;
      connect(dialog, &QColorDialog::rejected, this,
              [this, member, before] { SetColour(member, before); });
      dialog->open();
    });
  }

  keepFont_ = new QCheckBox(tr("&Keep the program's font"));
  keepFont_->setObjectName(QStringLiteral("chkKeepFont"));
  font_ = new QFontComboBox;
  font_->setObjectName(QStringLiteral("cboFont"));
  size_ = new QSpinBox;
  size_->setObjectName(QStringLiteral("spnFontSize"));
  size_->setRange(6, 32);
  size_->setValue(QApplication::font().pointSize() > 0 ? QApplication::font().pointSize() : 10);
  auto* fontRow = new QHBoxLayout;
  fontRow->addWidget(font_, 1);
  fontRow->addWidget(size_);
  const auto updateFont = [this] {
    font_->setEnabled(!keepFont_->isChecked());
    size_->setEnabled(!keepFont_->isChecked());
    colours_.fontFamily = keepFont_->isChecked() ? QString() : font_->currentFont().family();
    colours_.fontPointSize = keepFont_->isChecked() ? 0 : size_->value();
    ShowColours();
  };
  connect(keepFont_, &QCheckBox::toggled, this, updateFont);
  connect(font_, &QFontComboBox::currentFontChanged, this, updateFont);
  connect(size_, &QSpinBox::valueChanged, this, updateFont);

  preview_ = PreviewPanel();
  name_ = new QLineEdit;
  name_->setObjectName(QStringLiteral("txtSkinName"));
  name_->setPlaceholderText(tr("My skin"));
  useNow_ = new QCheckBox(tr("&Use it now"));
  useNow_->setObjectName(QStringLiteral("chkUseNow"));
  useNow_->setChecked(true);

  auto* form = new QFormLayout;
  form->addRow(tr("Start &from:"), start_);
  auto* left = new QVBoxLayout;
  left->addLayout(form);
  left->addWidget(colourBox);
  left->addWidget(keepFont_);
  left->addLayout(fontRow);
  left->addStretch();
  auto* body = new QHBoxLayout;
  body->addLayout(left);
  body->addWidget(preview_, 1);
  auto* save = new QFormLayout;
  auto* nameRow = new QHBoxLayout;
  nameRow->addWidget(name_, 1);
  nameRow->addWidget(useNow_);
  auto* nameLabel = new QLabel(tr("Save as &name:"));
  nameLabel->setBuddy(name_);
  save->addRow(nameLabel, nameRow);

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Close);
  buttons->button(QDialogButtonBox::Save)->setObjectName(QStringLiteral("btnSave"));
  buttons->button(QDialogButtonBox::Close)->setObjectName(QStringLiteral("btnClose"));
  connect(buttons->button(QDialogButtonBox::Save), &QPushButton::clicked, this, [this] {
    if (!Save().isEmpty()) accept();
  });
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(body, 1);
  layout->addLayout(save);
  layout->addWidget(buttons);

  connect(start_, &QComboBox::currentIndexChanged, this, &frmSkinDesigner::StartFrom);
  // Start from the skin in use, else the desktop's colours.
  int index = 0;
  const QString current = Looks::CurrentSkin();
  for (int i = 1; i < start_->count(); ++i) {
    if (QFileInfo(start_->itemData(i).toString()).completeBaseName() == current) index = i;
  }
  start_->setCurrentIndex(index);
  StartFrom(index);
  DialogSize::Keep(this);
}

void frmSkinDesigner::StartFrom(int index) {
  const QString path = start_->itemData(index).toString();
  SkinColours colours;
  QString sheet, error;
  bool hasColours = false;
  if (path.isEmpty() || !Skins::Read(path, &sheet, &colours, &hasColours, &error) || !hasColours) {
    colours = SkinColours::FromPalette(Looks::FollowDark(Looks::DesktopPalette()));
  }
  colours_ = colours;
  {
    const QSignalBlocker b1(keepFont_), b2(font_), b3(size_);
    keepFont_->setChecked(colours.fontFamily.isEmpty());
    if (!colours.fontFamily.isEmpty()) font_->setCurrentFont(QFont(colours.fontFamily));
    if (colours.fontPointSize > 0) size_->setValue(colours.fontPointSize);
    font_->setEnabled(!keepFont_->isChecked());
    size_->setEnabled(!keepFont_->isChecked());
  }
  if (index > 0 && name_->text().isEmpty()) {
    name_->setPlaceholderText(tr("My %1").arg(start_->itemText(index)));
  }
  ShowColours();
}

void frmSkinDesigner::SetColour(QColor SkinColours::*member, const QColor& colour) {
  if (!colour.isValid()) return;
  colours_.*member = colour;
  ShowColours();
}

void frmSkinDesigner::ShowColours() {
  const int size = fontMetrics().height();
  for (const auto& [key, member] : SkinColours::Keys()) {
    QPushButton* b = buttons_.value(QLatin1String(key));
    b->setIcon(Skins::Swatch(colours_.*member, size));
    b->setText((colours_.*member).name());
  }
  // The preview shows the skin as it will look: its palette and its font.
  // (A style sheet of its own would set the palette aside.)
  const QPalette palette = colours_.Palette();
  preview_->setPalette(palette);
  for (QWidget* w : preview_->findChildren<QWidget*>()) w->setPalette(palette);
  QFont font = QApplication::font();
  if (!colours_.fontFamily.isEmpty()) font.setFamily(colours_.fontFamily);
  if (colours_.fontPointSize > 0) font.setPointSize(colours_.fontPointSize);
  preview_->setFont(font);
}

QString frmSkinDesigner::Save() {
  Prompt& prompt = prompt_;
  QString name = name_->text().trimmed();
  if (name.isEmpty()) name = name_->placeholderText();
  const QString fileName = Skins::FileNameOf(name);
  if (fileName.isEmpty()) {
    prompt.Message(Std(tr("Give the skin a name.")), PromptIcon::kInformation);
    return {};
  }
  const QString folder = Qs(ProgramState::Current().files().skinsFolder);
  QDir().mkpath(folder);
  const QString path = folder + QLatin1Char('/') + fileName + QStringLiteral(".qss");
  if (QFileInfo::exists(path) &&
      !prompt.YesNo(Std(tr("A skin called \"%1\" exists. Replace it?").arg(fileName)))) {
    return {};
  }
  QSaveFile file(path);
  const QByteArray text = Skins::Write(colours_).toUtf8();
  if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.commit()) {
    prompt.Message(Std(tr("The skin cannot be saved as %1: %2").arg(path, file.errorString())),
                   PromptIcon::kWarning);
    return {};
  }
  // What was written must load as any skin does.
  QString sheet, error;
  SkinColours read;
  bool hasColours = false;
  if (!Skins::Read(path, &sheet, &read, &hasColours, &error) || !hasColours) {
    prompt.Message(Std(error), PromptIcon::kWarning);
    return {};
  }
  if (useNow_->isChecked()) {
    settings_.skinSupportEnabled = true;
    settings_.skinName = Std(fileName);
    SettingsStore::PutBool(kSwitches, "SkinSupportEnabled", true);
    SettingsStore::PutText(kSwitches, "SkinName", settings_.skinName);
    Q_EMIT applied();
  }
  return path;
}

}  // namespace gorvan::ui
