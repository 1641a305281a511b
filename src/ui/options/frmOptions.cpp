#include "ui/options/frmOptions.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFontComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QSpinBox>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>

#include "app/Prompt.h"
#include "app/SettingsStore.h"
#include "app/ShellIntegration.h"
#include "audio/DiscId.h"
#include "ui/looks/Backgrounds.h"
#include "ui/looks/Skins.h"
#include "ui/options/BackgroundTask.h"
#include "ui/options/DialogSize.h"
#include "ui/scan/ScanSources.h"
#include "ui/scan/frmFreeDbServers.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

constexpr const char* kEmailSection = "Defaults";
constexpr const char* kEmailKey = "UserEmail";

// The prompts a user may switch off, with what each one is about.
struct PromptSwitch {
  const char* key;
  const char* caption;
};
const PromptSwitch kPrompts[] = {
    {"lNotifyNoInternet", QT_TRANSLATE_NOOP("frmOptions", "A missing internet connection")},
    {"lNotifyConnectFreedb",
     QT_TRANSLATE_NOOP("frmOptions", "Before connecting to the FreeDB server")},
    {"lNotifyConnectFreedbAction",
     QT_TRANSLATE_NOOP("frmOptions", "What to do when the FreeDB server cannot be reached")},
    {"lNotifyBackup", QT_TRANSLATE_NOOP("frmOptions", "Before a backup")},
    {"lNotifySaveAs",
     QT_TRANSLATE_NOOP("frmOptions", "Before saving the catalog under a new name")},
    {"lNotifyCdChange", QT_TRANSLATE_NOOP("frmOptions", "When a disc is inserted or removed")},
    {"lNotifyCompact", QT_TRANSLATE_NOOP("frmOptions", "Before compacting")},
    {"lNotifyPackGarbage",
     QT_TRANSLATE_NOOP("frmOptions", "When the catalog holds much unused space")},
    {"lNotifyUpgrade", QT_TRANSLATE_NOOP("frmOptions", "Before upgrading an older catalog")},
    {"lNotifyErrorSend", QT_TRANSLATE_NOOP("frmOptions", "Offer to send the error log")},
    {"lNotifyExport", QT_TRANSLATE_NOOP("frmOptions", "After an export")},
    {"lNotifyExport_Search", QT_TRANSLATE_NOOP("frmOptions", "After exporting search results")},
    {"lNotifyEnhancedCd",
     QT_TRANSLATE_NOOP("frmOptions", "Before treating a disc as an enhanced audio CD")},
};

bool IsTrue(const SettingsRecord& r, const QString& key) { return r.Text(Std(key)) == "True"; }

// A colour of the record (blue-green-red, red in the low byte) and back.
QColor ColourOf(int32_t value) {
  const auto v = static_cast<uint32_t>(value);
  return QColor(static_cast<int>(v & 0xFF), static_cast<int>((v >> 8) & 0xFF),
                static_cast<int>((v >> 16) & 0xFF));
}
int32_t ValueOf(const QColor& c) { return c.red() | (c.green() << 8) | (c.blue() << 16); }

QWidget* Page(QLayout* layout) {
  auto* page = new QWidget;
  page->setLayout(layout);
  return page;
}

}  // namespace

frmOptions::frmOptions(SettingsRecord& settings, const ShellIntegration& shell, QWidget* parent)
    : QDialog(parent),
      settings_(settings),
      shell_(shell),
      fetch_(DefaultHttpFetch()),
      test_(new BackgroundTask(this)) {
  setObjectName(QStringLiteral("frmOptions"));
  setWindowTitle(tr("Options"));
  tabs_ = new QTabWidget;
  tabs_->setObjectName(QStringLiteral("tabOptions"));
  // Every tab's caption in full: the dialog is as wide as they need.
  tabs_->tabBar()->setUsesScrollButtons(false);
  tabs_->tabBar()->setElideMode(Qt::ElideNone);
  tabs_->addTab(GeneralTab(), tr("&General"));
  tabs_->addTab(ScanningTab(), tr("&Scanning and audio CDs"));
  tabs_->addTab(LookupTab(), tr("Disc &lookup"));
  tabs_->addTab(PromptsTab(), tr("&Prompts"));
  tabs_->addTab(LooksTab(), tr("Loo&ks"));
  tabs_->addTab(IntegrationTab(), tr("&Integration"));

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("btnOK"));
  buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("btnCancel"));
  connect(buttons, &QDialogButtonBox::accepted, this, &frmOptions::Accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(this, &QDialog::finished, test_, &BackgroundTask::Stop);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(tabs_);
  layout->addWidget(buttons);

  for (const Binding& b : bindings_) b.load(settings_);
  UpdateEnabled();
  DialogSize::Keep(this);
}

frmOptions::~frmOptions() = default;

void frmOptions::Bind(const QString& key, QWidget* widget, Binding binding) {
  controls_.insert(key, widget);
  order_ << key;
  bindings_.push_back(std::move(binding));
}

QCheckBox* frmOptions::Check(const char* key, const QString& caption) {
  auto* box = new QCheckBox(caption);
  const QString k = QLatin1String(key);
  box->setObjectName(QStringLiteral("chk") + k);
  Bind(k, box,
       {[box, k](const SettingsRecord& r) { box->setChecked(IsTrue(r, k)); },
        [box, k](SettingsRecord& r) {
          r.SetText(Std(k), SettingsStore::BoolText(box->isChecked()));
        }});
  connect(box, &QCheckBox::toggled, this, &frmOptions::UpdateEnabled);
  return box;
}

QLineEdit* frmOptions::Text(const char* key, const QString& placeholder) {
  auto* edit = new QLineEdit;
  const QString k = QLatin1String(key);
  edit->setObjectName(QStringLiteral("txt") + k);
  edit->setPlaceholderText(placeholder);
  Bind(k, edit,
       {[edit, k](const SettingsRecord& r) { edit->setText(Qs(r.Text(Std(k)))); },
        [edit, k](SettingsRecord& r) { r.SetText(Std(k), Std(edit->text())); }});
  return edit;
}

QWidget* frmOptions::Colour(const char* key) {
  auto* button = new QPushButton;
  const QString k = QLatin1String(key);
  button->setObjectName(QStringLiteral("btn") + k);
  // The stored value stays as it was (a system colour, say) until a colour is chosen.
  auto show = [button](int32_t value) {
    button->setProperty("value", value);
    const QColor c = ColourOf(value);
    const int size = button->fontMetrics().height();
    button->setIcon(Skins::Swatch(c, size));
    button->setText(c.name());
  };
  Bind(k, button,
       {[show, k](const SettingsRecord& r) { show(std::stoi(r.Text(Std(k)))); },
        [button, k](SettingsRecord& r) {
          r.SetText(Std(k), std::to_string(button->property("value").toInt()));
        }});
  connect(button, &QPushButton::clicked, this, [this, button, show] {
    auto* dialog = new QColorDialog(ColourOf(button->property("value").toInt()), this);
    dialog->setObjectName(QStringLiteral("dlgColour"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QColorDialog::colorSelected, button,
            [show](const QColor& c) { show(ValueOf(c)); });
    dialog->open();
  });
  return button;
}

QWidget* frmOptions::GeneralTab() {
  auto* form = new QFormLayout;
  auto* font = new QFontComboBox;
  font->setObjectName(QStringLiteral("cboDefaultFont"));
  // The family as stored stays, even one that is not installed here.
  Bind(QStringLiteral("DefaultFont"), font,
       {[font](const SettingsRecord& r) {
          font->setCurrentFont(QFont(Qs(r.defaultFont)));
          font->setEditText(Qs(r.defaultFont));
        },
        [font](SettingsRecord& r) {
          const QString family = font->currentText().trimmed();
          if (!family.isEmpty()) r.defaultFont = Std(family);
        }});
  form->addRow(tr("Interface &font:"), font);
  form->addRow(Check("RetainSize", tr("Windows keep their last &size")));
  form->addRow(Check("lDragDrop", tr("&Drag and drop discs and categories in the tree")));
  form->addRow(
      Check("lInteractiveSearch", tr("Follow the search: select each &hit as it is found")));
  form->addRow(Check("UnicodeEnabled", tr("New catalogs hold &Unicode (UTF-8) text")));
  form->addRow(Check("lNotifyNewVersion", tr("Check for a &newer version at every start")));
  return Page(form);
}

QWidget* frmOptions::ScanningTab() {
  auto* form = new QFormLayout;
  auto* drive = new QComboBox;
  drive->setObjectName(QStringLiteral("cboStartupDriveSelect"));
  drive->addItem(tr("None: no path chosen"), 0);
  drive->addItem(tr("The first optical drive"), 1);
  drive->addItem(tr("The first optical drive that holds a disc"), 2);
  Bind(QStringLiteral("StartupDriveSelect"), drive,
       {[drive](const SettingsRecord& r) {
          int index = drive->findData(r.startupDriveSelect);
          if (index < 0) {
            // A mode of another version stays as it was.
            drive->addItem(tr("Mode %1").arg(r.startupDriveSelect), r.startupDriveSelect);
            index = drive->count() - 1;
          }
          drive->setCurrentIndex(index);
        },
        [drive](SettingsRecord& r) { r.startupDriveSelect = drive->currentData().toInt(); }});
  form->addRow(tr("&Drive chosen when the scan dialog opens:"), drive);
  form->addRow(Check("lEnableAutoInsert", tr("&React when a disc is inserted")));
  form->addRow(Check("lAssumeEnhancedCd",
                     tr("Treat a disc with audio and data tracks as an &enhanced audio CD")));
  return Page(form);
}

QWidget* frmOptions::LookupTab() {
  auto* layout = new QVBoxLayout;
  layout->addWidget(Check("FreeDbEnabled", tr("&Look audio CDs up when they are scanned")));

  auto* sources = new QGroupBox(tr("Sources, tried in this order"));
  sources->setObjectName(QStringLiteral("grpSources"));
  auto* form = new QFormLayout(sources);
  form->addRow(Check("FreeDbUseDatabase", tr("A local FreeDB &folder")));
  QLineEdit* path = Text("FreedbDatabasePath");
  auto* browse = new QPushButton(tr("&Browse..."));
  browse->setObjectName(QStringLiteral("btnBrowseFreedbDatabase"));
  connect(browse, &QPushButton::clicked, this, [this, path] {
    auto* dialog = new QFileDialog(this, tr("Choose the local FreeDB folder"), path->text());
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QFileDialog::fileSelected, path, &QLineEdit::setText);
    dialog->open();
  });
  auto* pathRow = new QHBoxLayout;
  pathRow->addWidget(path);
  pathRow->addWidget(browse);
  auto* pathLabel = new QLabel(tr("Fol&der:"));
  pathLabel->setBuddy(path);
  form->addRow(pathLabel, pathRow);
  form->addRow(Check("FreeDbUseUrl", tr("A FreeDB &server")));
  QLineEdit* server = Text("FreeDbUrl", QStringLiteral("gnudb.gnudb.org"));
  // The server's own list of mirror sites; the one chosen becomes the server.
  auto* sites = new QPushButton(tr("S&ites..."));
  sites->setObjectName(QStringLiteral("btnFreeDbSites"));
  connect(sites, &QPushButton::clicked, this, [this, server] {
    auto* dialog = new frmFreeDbServers(ScanSources::CurrentShared(), this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &frmFreeDbServers::siteChosen, server, &QLineEdit::setText);
    dialog->open();
  });
  auto* serverRow = new QHBoxLayout;
  serverRow->addWidget(server);
  serverRow->addWidget(sites);
  auto* serverLabel = new QLabel(tr("Ser&ver:"));
  serverLabel->setBuddy(server);
  form->addRow(serverLabel, serverRow);
  auto* level = new QSpinBox;
  level->setObjectName(QStringLiteral("spnFreeDbProtocolLevel"));
  level->setRange(1, 6);
  Bind(QStringLiteral("FreeDbProtocolLevel"), level,
       {[level](const SettingsRecord& r) { level->setValue(r.freeDbProtocolLevel); },
        [level](SettingsRecord& r) {
          // A level outside 1..6 that was stored stays unless the box was changed.
          if (level->value() != std::clamp(r.freeDbProtocolLevel, 1, 6)) {
            r.freeDbProtocolLevel = level->value();
          }
        }});
  form->addRow(tr("Protocol &level (6 answers in UTF-8):"), level);
  form->addRow(Check("MusicBrainzEnabled", tr("Ask &MusicBrainz when FreeDB finds nothing")));
  layout->addWidget(sources);

  auto* other = new QFormLayout;
  auto* email = new QLineEdit;
  email->setObjectName(QStringLiteral("txtUserEmail"));
  email->setPlaceholderText(tr("name@example.org"));
  Bind(QStringLiteral("UserEmail"), email,
       {[email](const SettingsRecord&) {
          email->setText(Qs(SettingsStore::GetText(kEmailSection, kEmailKey)));
        },
        [](SettingsRecord&) {}});
  other->addRow(tr("Your &e-mail address (sent to the server as your name):"), email);
  other->addRow(tr("Artist &before this text in a title:"),
                Text("FreeDbArtistBeforeIf", tr("e.g. \" - \"")));
  other->addRow(tr("Artist &after this text in a title:"),
                Text("FreeDbArtistAfterIf", tr("e.g. \" by \"")));
  layout->addLayout(other);

  testButton_ = new QPushButton(tr("&Test"));
  testButton_->setObjectName(QStringLiteral("btnTest"));
  testButton_->setToolTip(tr("Looks a well-known audio CD up through the sources above"));
  testResult_ = new QLabel;
  testResult_->setObjectName(QStringLiteral("lblTestResult"));
  testResult_->setWordWrap(true);
  testResult_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  auto* testRow = new QHBoxLayout;
  testRow->addWidget(testButton_, 0, Qt::AlignTop);
  testRow->addWidget(testResult_, 1);
  layout->addLayout(testRow);
  layout->addStretch();
  connect(testButton_, &QPushButton::clicked, this, &frmOptions::RunTest);
  return Page(layout);
}

QWidget* frmOptions::PromptsTab() {
  auto* layout = new QVBoxLayout;
  auto* intro = new QLabel(tr("Show these prompts (a prompt hidden with \"%1\" shows again when it "
                              "is ticked here):")
                               .arg(Qs(kDontDisplayAgain)));
  intro->setWordWrap(true);
  layout->addWidget(intro);
  for (const PromptSwitch& p : kPrompts) {
    layout->addWidget(Check(p.key, QCoreApplication::translate("frmOptions", p.caption)));
  }
  // The reminder that this version is very old, named by the version.
  const std::string reminder = SettingsRecord::VersionReminderKey();
  auto* box = new QCheckBox(tr("That this version of Gorvan is very old"));
  box->setObjectName(QStringLiteral("chkVersionReminder"));
  Bind(Qs(reminder), box,
       {[box](const SettingsRecord& r) { box->setChecked(r.showVersionReminder); },
        [box](SettingsRecord& r) { r.showVersionReminder = box->isChecked(); }});
  layout->addWidget(box);
  layout->addStretch();
  auto* scroll = new QScrollArea;
  scroll->setWidgetResizable(true);
  scroll->setFrameShape(QFrame::NoFrame);
  scroll->setWidget(Page(layout));
  return scroll;
}

QWidget* frmOptions::LooksTab() {
  auto* form = new QFormLayout;
  auto* skin = new QComboBox;
  skin->setObjectName(QStringLiteral("cboSkinName"));
  skin->addItem(tr("None: follow the desktop"), QString());
  skin->addItem(Skins::DisplayName(QLatin1String(kDefaultSkinName)),
                QLatin1String(kDefaultSkinName));
  for (const Skins::Skin& s : Skins::List()) skin->addItem(Skins::DisplayName(s.name), s.name);
  // "SkinSupportEnabled" and "SkinName" are one choice here: no skin, or which.
  Bind(QStringLiteral("SkinName"), skin,
       {[skin](const SettingsRecord& r) {
          const QString name =
              r.skinName.empty() ? QLatin1String(kDefaultSkinName) : Qs(r.skinName);
          int index = r.skinSupportEnabled ? skin->findData(name) : 0;
          if (index < 0) {
            skin->addItem(Skins::DisplayName(name), name);
            index = skin->count() - 1;
          }
          skin->setCurrentIndex(index);
        },
        [skin](SettingsRecord& r) {
          const QString name = skin->currentData().toString();
          r.skinSupportEnabled = !name.isEmpty();
          if (!name.isEmpty()) r.skinName = Std(name);
        }});
  controls_.insert(QStringLiteral("SkinSupportEnabled"), skin);
  order_ << QStringLiteral("SkinSupportEnabled");
  form->addRow(tr("S&kin:"), skin);

  auto* background = new QComboBox;
  background->setObjectName(QStringLiteral("cboCurrentBackground"));
  const int size = background->fontMetrics().height();
  background->setIconSize(QSize(size * 2, size));
  for (int n = 1; n <= Backgrounds::kCount; ++n) {
    background->addItem(QIcon(Backgrounds::Sample(n, palette(), QSize(size * 2, size))),
                        Backgrounds::Name(n), n);
  }
  Bind(QStringLiteral("CurrentBackground"), background,
       {[background](const SettingsRecord& r) {
          int index = background->findData(r.currentBackground);
          if (index < 0) {
            background->addItem(tr("Number %1 (none of ours)").arg(r.currentBackground),
                                r.currentBackground);
            index = background->count() - 1;
          }
          background->setCurrentIndex(index);
        },
        [background](SettingsRecord& r) {
          r.currentBackground = background->currentData().toInt();
        }});
  form->addRow(tr("&Background (without a skin):"), background);
  connect(skin, &QComboBox::currentIndexChanged, this, &frmOptions::UpdateEnabled);

  auto* colours = new QHBoxLayout;
  for (const char* key : {"htmlColor1", "htmlColor2", "htmlColor3", "htmlColor4"}) {
    colours->addWidget(Colour(key));
  }
  colours->addStretch();
  form->addRow(tr("Colours of web pages:"), colours);
  return Page(form);
}

QWidget* frmOptions::IntegrationTab() {
  auto* form = new QFormLayout;
  form->addRow(
      Check("lShellIntegration",
            tr("Offer \"%1\" in the file managers' folder menus").arg(Qs(kFolderActionCaption))));
  auto* support = new QGroupBox(tr("Support server (error reports and version check)"));
  auto* inner = new QFormLayout(support);
  inner->addRow(tr("&Server:"), Text("SupportServer", tr("none: nobody is contacted")));
  inner->addRow(tr("&Web address:"), Text("SupportWebAddress", QStringLiteral("https://")));
  inner->addRow(tr("Support e-&mail:"), Text("SupportEmail"));
  form->addRow(support);
  return Page(form);
}

void frmOptions::UpdateEnabled() {
  auto on = [this](const char* key) {
    auto* box = qobject_cast<QCheckBox*>(control(QLatin1String(key)));
    return box && box->isChecked();
  };
  control(QStringLiteral("FreedbDatabasePath"))->setEnabled(on("FreeDbUseDatabase"));
  findChild<QPushButton*>(QStringLiteral("btnBrowseFreedbDatabase"))
      ->setEnabled(on("FreeDbUseDatabase"));
  control(QStringLiteral("FreeDbUrl"))->setEnabled(on("FreeDbUseUrl"));
  findChild<QPushButton*>(QStringLiteral("btnFreeDbSites"))->setEnabled(on("FreeDbUseUrl"));
  control(QStringLiteral("FreeDbProtocolLevel"))->setEnabled(on("FreeDbUseUrl"));
  auto* skin = qobject_cast<QComboBox*>(control(QStringLiteral("SkinName")));
  // The background shows only without a skin.
  if (skin) {
    control(QStringLiteral("CurrentBackground"))
        ->setEnabled(skin->currentData().toString().isEmpty());
  }
}

SettingsRecord frmOptions::Edited() const {
  SettingsRecord copy = settings_;
  for (const Binding& b : bindings_) b.save(copy);
  return copy;
}

void frmOptions::Accept() {
  test_->Stop();
  const SettingsRecord edited = Edited();
  edited.Save(shell_);
  auto* email = qobject_cast<QLineEdit*>(control(QStringLiteral("UserEmail")));
  const std::string address = Std(email->text().trimmed());
  if (address != SettingsStore::GetText(kEmailSection, kEmailKey)) {
    SettingsStore::PutText(kEmailSection, kEmailKey, address);
  }
  // The interface font of the next start.
  SettingsStore::PutText("Fonts", "Default", edited.defaultFont);
  // The reminder's switch is not among the keys the save routine writes.
  if (edited.showVersionReminder != settings_.showVersionReminder) {
    SettingsStore::PutBool(kSwitches, SettingsRecord::VersionReminderKey(),
                           edited.showVersionReminder);
  }
  settings_ = edited;
  accept();
  Q_EMIT applied();
}

QString frmOptions::testResult() const { return testResult_->text(); }

bool frmOptions::testRunning() const { return test_->running(); }

void frmOptions::RunTest() {
  if (test_->running()) {
    test_->Stop();
    testButton_->setText(tr("&Test"));
    testResult_->setText(tr("Test stopped."));
    return;
  }
  const SettingsRecord r = Edited();
  FreeDbSettings s;
  s.enabled = true;
  s.useDatabase = r.freeDbUseDatabase;
  s.useUrl = r.freeDbUseUrl;
  s.databasePath = r.freedbDatabasePath;
  s.url = r.freeDbUrl;
  s.artistAfterIf = r.freeDbArtistAfterIf;
  s.artistBeforeIf = r.freeDbArtistBeforeIf;
  s.protocolLevel = r.freeDbProtocolLevel;
  s.musicBrainz = r.musicBrainzEnabled;
  s.email = Std(qobject_cast<QLineEdit*>(control(QStringLiteral("UserEmail")))->text().trimmed());
  if (!s.useDatabase && !s.useUrl && !s.musicBrainz) {
    testResult_->setText(tr("Tick a local folder, a server or MusicBrainz first."));
    return;
  }
  DiscToc toc;
  std::string error;
  DiscToc::FromContents(kTestDiscContents, &toc, &error);
  testButton_->setText(tr("S&top"));
  testResult_->setText(tr("Looking up disc %1...").arg(QLatin1String(kTestDiscId)));
  BackgroundTask* task = test_;
  const HttpFetch fetch = fetch_;
  task->Start<DiscLookupResult>(
      [s, toc, fetch, task](std::stop_token stop) {
        return DiscLookup::Run(s, toc, fetch, stop, [task](const std::string& line) {
          task->Post([task, text = Qs(line)] {
            if (auto* self = qobject_cast<frmOptions*>(task->parent())) {
              if (self->testRunning()) self->testResult_->setText(text + QStringLiteral("..."));
            }
          });
        });
      },
      [this](DiscLookupResult& result) {
        testButton_->setText(tr("&Test"));
        QStringList lines;
        if (result.found) {
          const DiscInfo& i = result.info;
          lines << tr("Found %1 / %2 (%3 tracks) in %4.")
                       .arg(Qs(i.artist), Qs(i.album))
                       .arg(i.tracks.size())
                       .arg(i.source == "local"         ? tr("the local folder")
                            : i.source == "musicbrainz" ? tr("MusicBrainz")
                                                        : tr("the FreeDB server"));
        } else {
          lines << tr("Nothing was found for disc %1.").arg(Qs(result.info.discId));
        }
        for (const auto& [number, text] : result.errors) {
          lines << Qs(text) + QStringLiteral(" (") + QString::number(number) + QLatin1Char(')');
        }
        testResult_->setText(lines.join(QLatin1Char('\n')));
      });
}

}  // namespace gorvan::ui
