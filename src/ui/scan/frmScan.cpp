#include "ui/scan/frmScan.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QTabWidget>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <cstdlib>
#include <functional>

#include "app/SettingsStore.h"
#include "app/WindowLayout.h"
#include "audio/uFreeDb.h"
#include "catalog/Attributes.h"
#include "catalog/TextUtil.h"
#include "scan/ScanChecks.h"
#include "scan/ScanPath.h"
#include "ui/scan/uFolderBrowser.h"
#include "ui/session/CatalogReads.h"
#include "ui/session/CatalogSession.h"
#include "ui/session/NotifyPrompt.h"
#include "ui/session/UiSettings.h"
#include "ui/session/ViewLoader.h"
#include "ui/widgets/ThemeIcons.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

constexpr const char* kName = "scan";

std::string Key(const char* suffix) { return std::string(kName) + "_" + suffix; }

bool StoredBool(const char* suffix) {
  return SettingsStore::GetBool(kDefaultsSection, Key(suffix), false);
}

// The "StartupDriveSelect" modes: which place the dialog starts on.
enum DriveSelect { kSelectNone = 0, kSelectFirstDrive = 1, kSelectDriveWithDisc = 2 };

}  // namespace

frmScan::frmScan(CatalogSession& session, std::shared_ptr<ScanSources> sources, QWidget* parent)
    : QDialog(parent), session_(session), sources_(std::move(sources)) {
  setObjectName(QStringLiteral("frmScan"));
  setWindowTitle(tr("Add a Disc or Folder"));
  setAttribute(Qt::WA_DeleteOnClose);
  BuildLayout();
  RestoreRemembered();
  connect(&session_, &CatalogSession::closed, this, &QDialog::reject);
}

frmScan::~frmScan() = default;

void frmScan::BuildLayout() {
  tabs_ = new QTabWidget(this);
  tabs_->setObjectName(QStringLiteral("uTabStrip1"));

  // General Information
  auto* tab1 = new QWidget;
  tab1->setObjectName(QStringLiteral("tab1"));
  browser_ = new uFolderBrowser(tab1);
  txtLabelInternal_ = new QLineEdit(tab1);
  txtLabelInternal_->setObjectName(QStringLiteral("txtLabelInternal"));
  txtLabelInternal_->setReadOnly(true);
  fldDataLabel_ = new QLineEdit(tab1);
  fldDataLabel_->setObjectName(QStringLiteral("fldDataLabel"));
  uComboCategory1_ = new QComboBox(tab1);
  uComboCategory1_->setObjectName(QStringLiteral("uComboCategory1"));
  uComboCategory1_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  uComboCategory1_->setMinimumContentsLength(20);
  fldDataNotes_ = new QPlainTextEdit(tab1);
  fldDataNotes_->setObjectName(QStringLiteral("fldDataNotes"));
  fldDataNotes_->setTabChangesFocus(true);
  chkEnhancedCd_ = new QCheckBox(tr("Treat as an &enhanced audio CD"), tab1);
  chkEnhancedCd_->setObjectName(QStringLiteral("chkEnhancedCd"));
  lblEnhancedCd_ = new QLabel(tr("This CD has several sessions: audio tracks and data."), tab1);
  lblEnhancedCd_->setObjectName(QStringLiteral("lblEnhancedCd"));
  lblEnhancedCd_->setWordWrap(true);
  chkEnhancedCd_->hide();
  lblEnhancedCd_->hide();
  lblStatus_ = new QLabel(this);
  lblStatus_->setObjectName(QStringLiteral("lblStatus"));
  lblStatus_->setWordWrap(true);
  btnStopLookup_ = new QPushButton(tr("S&top Lookup"), this);
  btnStopLookup_->setObjectName(QStringLiteral("btnStopLookup"));
  btnStopLookup_->hide();

  auto* general = new QFormLayout(tab1);
  auto* scanLabel = new QLabel(tr("&Scan:"), tab1);
  scanLabel->setBuddy(browser_);
  general->addRow(scanLabel, browser_);
  general->addRow(tr("Volume label:"), txtLabelInternal_);
  auto* nameLabel = new QLabel(tr("Disc &name:"), tab1);
  nameLabel->setBuddy(fldDataLabel_);
  general->addRow(nameLabel, fldDataLabel_);
  auto* catLabel = new QLabel(tr("Cate&gory:"), tab1);
  catLabel->setBuddy(uComboCategory1_);
  general->addRow(catLabel, uComboCategory1_);
  auto* notesLabel = new QLabel(tr("N&otes:"), tab1);
  notesLabel->setBuddy(fldDataNotes_);
  general->addRow(notesLabel, fldDataNotes_);
  general->addRow(QString(), chkEnhancedCd_);
  general->addRow(QString(), lblEnhancedCd_);

  // Advanced
  auto* tab2 = new QWidget;
  tab2->setObjectName(QStringLiteral("tab2"));
  fldFilesInclude_ = new QLineEdit(tab2);
  fldFilesInclude_->setObjectName(QStringLiteral("fldFilesInclude"));
  fldFilesExclude_ = new QLineEdit(tab2);
  fldFilesExclude_->setObjectName(QStringLiteral("fldFilesExclude"));
  auto* hint = new QLabel(
      tr("Extensions separated by \";\", such as *.mp3;*.ogg — \"*.*\" includes every file."),
      tab2);
  hint->setWordWrap(true);
  chkScanZip_ = new QCheckBox(tr("List the contents of &archives (ZIP, 7z, tar, ...)"), tab2);
  chkScanZip_->setObjectName(QStringLiteral("chkScanZip"));
  chkScanMp3_ = new QCheckBox(tr("Read the tags of &MP3 files"), tab2);
  chkScanMp3_->setObjectName(QStringLiteral("chkScanMp3"));
  chkScanDirectoriesOnly_ = new QCheckBox(tr("&Folders only (no file records)"), tab2);
  chkScanDirectoriesOnly_->setObjectName(QStringLiteral("chkScanDirectoriesOnly"));
  auto* advanced = new QFormLayout(tab2);
  auto* incLabel = new QLabel(tr("&Include files:"), tab2);
  incLabel->setBuddy(fldFilesInclude_);
  advanced->addRow(incLabel, fldFilesInclude_);
  auto* excLabel = new QLabel(tr("E&xclude files:"), tab2);
  excLabel->setBuddy(fldFilesExclude_);
  advanced->addRow(excLabel, fldFilesExclude_);
  advanced->addRow(QString(), hint);
  advanced->addRow(chkScanZip_);
  advanced->addRow(chkScanMp3_);
  advanced->addRow(chkScanDirectoriesOnly_);

  // Audio CD Information
  auto* tab3 = new QWidget;
  tab3->setObjectName(QStringLiteral("tab3"));
  auto field = [tab3](const char* name) {
    auto* e = new QLineEdit(tab3);
    e->setObjectName(QLatin1String(name));
    return e;
  };
  fldAudioAlbum_ = field("fldAudioAlbum");
  fldAudioArtist_ = field("fldAudioArtist");
  fldAudioCategory_ = field("fldAudioCategory");
  fldAudioTime_ = field("fldAudioTime");
  fldAudioYear_ = field("fldAudioYear");
  lstAudioTracks_ = new QTreeWidget(tab3);
  lstAudioTracks_->setObjectName(QStringLiteral("lstAudioTracks"));
  lstAudioTracks_->setHeaderLabels({tr("Track"), tr("Title"), tr("Length")});
  lstAudioTracks_->setRootIsDecorated(false);
  lstAudioTracks_->setUniformRowHeights(true);
  lstAudioTracks_->header()->setStretchLastSection(false);
  lstAudioTracks_->header()->setSectionResizeMode(1, QHeaderView::Stretch);
  lstAudioTracks_->setEditTriggers(QAbstractItemView::DoubleClicked |
                                   QAbstractItemView::EditKeyPressed);
  auto* audio = new QFormLayout(tab3);
  auto audioRow = [&](const QString& text, QLineEdit* e) {
    auto* l = new QLabel(text, tab3);
    l->setBuddy(e);
    audio->addRow(l, e);
  };
  audioRow(tr("Al&bum:"), fldAudioAlbum_);
  audioRow(tr("A&rtist:"), fldAudioArtist_);
  audioRow(tr("Categor&y:"), fldAudioCategory_);
  auto* timeYear = new QHBoxLayout;
  timeYear->addWidget(fldAudioTime_);
  auto* yearLabel = new QLabel(tr("Y&ear:"), tab3);
  yearLabel->setBuddy(fldAudioYear_);
  timeYear->addWidget(yearLabel);
  timeYear->addWidget(fldAudioYear_);
  auto* timeLabel = new QLabel(tr("Ti&me:"), tab3);
  timeLabel->setBuddy(fldAudioTime_);
  audio->addRow(timeLabel, timeYear);
  cboFreeDbMatch_ = new QComboBox(tab3);
  cboFreeDbMatch_->setObjectName(QStringLiteral("cboFreeDbMatch"));
  cboFreeDbMatch_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  lblFreeDbMatch_ = new QLabel(tr("&Match:"), tab3);
  lblFreeDbMatch_->setBuddy(cboFreeDbMatch_);
  audio->addRow(lblFreeDbMatch_, cboFreeDbMatch_);
  lblFreeDbMatch_->hide();
  cboFreeDbMatch_->hide();
  connect(cboFreeDbMatch_, &QComboBox::activated, this, [this](int index) {
    if (index >= 0 && scanMode_ == kMediaAudioCd) StartLookup(toc_, static_cast<size_t>(index));
  });
  audio->addRow(lstAudioTracks_);

  tabs_->addTab(tab1, tr("General Information"));
  tabs_->addTab(tab2, tr("Advanced"));
  tabs_->addTab(tab3, QString());
  tabs_->setTabVisible(2, false);

  auto* buttons = new QDialogButtonBox(this);
  btnOK_ = buttons->addButton(QDialogButtonBox::Ok);
  btnOK_->setObjectName(QStringLiteral("btnOK"));
  btnCancel_ = buttons->addButton(QDialogButtonBox::Cancel);
  btnCancel_->setObjectName(QStringLiteral("btnCancel"));
  connect(buttons, &QDialogButtonBox::accepted, this, &frmScan::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &frmScan::reject);

  // The lookup's status shows under the tabs, whichever tab is chosen.
  auto* statusRow = new QHBoxLayout;
  statusRow->addWidget(lblStatus_, 1);
  statusRow->addWidget(btnStopLookup_);
  lblStatus_->hide();
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(tabs_);
  layout->addLayout(statusRow);
  layout->addWidget(buttons);

  connect(browser_, &uFolderBrowser::pathChanged, this, &frmScan::PathChanged);
  connect(fldDataLabel_, &QLineEdit::textEdited, this, [this] { nameTyped_ = true; });
  connect(btnStopLookup_, &QPushButton::clicked, this, &frmScan::StopLookup);
  connect(chkEnhancedCd_, &QCheckBox::toggled, this, [this](bool on) {
    // Ticked by hand on a multi-session disc: it is read as an audio CD.
    if (!filling_ && on && scanMode_ != kMediaAudioCd && toc_.AudioTrackCount() > 0)
      StartLookup(toc_);
  });
}

void frmScan::RestoreRemembered() {
  chkScanMp3_->setChecked(StoredBool("chkScanMp3"));
  chkScanZip_->setChecked(StoredBool("chkScanZip"));
  chkScanDirectoriesOnly_->setChecked(StoredBool("chkScanDirectoriesOnly"));
  fldFilesInclude_->setText(
      Qs(SettingsStore::GetText(kDefaultsSection, Key("fldFilesInclude"), "*.*")));
  fldFilesExclude_->setText(Qs(SettingsStore::GetText(kDefaultsSection, Key("fldFilesExclude"))));
  const QSize hint = sizeHint().expandedTo(QSize(fontMetrics().averageCharWidth() * 70, 0));
  const WindowSize size = WindowLayout::RestoreSize(
      kName, {static_cast<float>(hint.width()), static_cast<float>(hint.height())});
  restoredWidth_ = size.width;
  restoredHeight_ = size.height;
  resize(QSize(static_cast<int>(size.width), static_cast<int>(size.height)).expandedTo(hint));
}

void frmScan::SaveRemembered() {
  SettingsStore::PutBool(kDefaultsSection, Key("chkScanMp3"), chkScanMp3_->isChecked());
  SettingsStore::PutBool(kDefaultsSection, Key("chkScanZip"), chkScanZip_->isChecked());
  SettingsStore::PutBool(kDefaultsSection, Key("chkScanDirectoriesOnly"),
                         chkScanDirectoriesOnly_->isChecked());
  SettingsStore::PutText(kDefaultsSection, Key("fldFilesInclude"), Std(fldFilesInclude_->text()));
  SettingsStore::PutText(kDefaultsSection, Key("fldFilesExclude"), Std(fldFilesExclude_->text()));
}

void frmScan::done(int result) {
  inspect_.Stop();
  lookup_.Stop();
  WindowLayout::SaveSize(kName, {static_cast<float>(width()), static_cast<float>(height())},
                         {restoredWidth_, restoredHeight_});
  QDialog::done(result);
}

void frmScan::LoadCategories(int32_t select) {
  categoryToSelect_ = select;
  uComboCategory1_->clear();
  uComboCategory1_->addItem(tr("(none)"), 0);
  session_.loader().Load<CatalogSnapshot>(
      this, "frmScan",
      [](classData& d, const std::stop_token& stop) { return CatalogReads::Catalog(d, stop); },
      [this](CatalogSnapshot& s) {
        // Categories in tree order, each indented under its parent; a
        // parent that is no category (or a loop) leaves it at the top.
        QHash<int32_t, int32_t> parentOf;
        for (const CategoryRow& c : s.categories) parentOf.insert(c.id, c.parent);
        QHash<int32_t, QList<const CategoryRow*>> children;
        for (const CategoryRow& c : s.categories) {
          int32_t parent = parentOf.contains(c.parent) ? c.parent : 0;
          int steps = 0;
          for (int32_t up = parent; up != 0; up = parentOf.value(up, 0)) {
            if (up == c.id || ++steps > parentOf.size()) {
              parent = 0;
              break;
            }
          }
          children[parent].append(&c);
        }
        std::function<void(int32_t, int)> add = [&](int32_t parent, int depth) {
          for (const CategoryRow* c : children.value(parent)) {
            const QString indent(depth * 4, QLatin1Char(' '));
            uComboCategory1_->addItem(ThemeIcons::Category(), indent + RowText(c->name), c->id);
            if (c->id != parent) add(c->id, depth + 1);
          }
        };
        add(0, 0);
        const int at = uComboCategory1_->findData(categoryToSelect_);
        uComboCategory1_->setCurrentIndex(at < 0 ? 0 : at);
      });
}

int32_t frmScan::CategoryId() const { return uComboCategory1_->currentData().toInt(); }

bool frmScan::FillFromDisc(int32_t discId) {
  classData* data = session_.writer();
  DiscRow row;
  if (!data || !CatalogReads::Disc(*data, discId, &row).ok()) return false;
  discId_ = discId;
  filling_ = true;
  fldDataLabel_->setText(Qs(row.name));
  fldDataNotes_->setPlainText(Qs(row.notes));
  txtLabelInternal_->setText(Qs(row.label));
  filling_ = false;
  nameTyped_ = true;  // the disc's own name stays whatever is chosen
  LoadCategories(row.category);
  basePath_ = Qs(row.basePath);
  return true;
}

bool frmScan::ScanCd(int32_t discId, const QString& path, int32_t category) {
  noScan_ = false;
  if (discId > 0) {
    if (!FillFromDisc(discId)) return false;
    setWindowTitle(tr("Rescan \"%1\"").arg(fldDataLabel_->text()));
  } else {
    LoadCategories(category);
  }
  browser_->SetPlaces(sources_->Places());
  if (!path.isEmpty()) {
    browser_->SetPath(path);
  } else if (discId > 0 && !basePath_.isEmpty()) {
    browser_->SetPath(basePath_);
  } else {
    Preselect();
  }
  open();
  return true;
}

bool frmScan::ScanCdNoScan(int32_t discId) {
  noScan_ = true;
  if (discId > 0) {
    if (!FillFromDisc(discId)) return false;
    setWindowTitle(tr("Disc Entry \"%1\"").arg(fldDataLabel_->text()));
    browser_->combo()->setEditText(basePath_);
  } else {
    setWindowTitle(tr("Add a Disc Without Scanning"));
    LoadCategories(0);
  }
  // Nothing is read from the drive: the label is typed, the scan options
  // have nothing to do.
  txtLabelInternal_->setReadOnly(false);
  tabs_->setTabEnabled(1, false);
  browser_->SetPlaces(sources_->Places());
  open();
  return true;
}

void frmScan::Preselect() {
  const int mode = static_cast<int>(std::strtol(
      SettingsStore::GetText("Switches", "StartupDriveSelect", "2").c_str(), nullptr, 10));
  if (mode == kSelectNone) return;
  const std::vector<ScanPlace>& places = browser_->places();
  const ScanPlace* chosen = nullptr;
  for (const ScanPlace& p : places) {
    if (p.driveType != kMediaOptical) continue;
    if (mode == kSelectFirstDrive || !p.label.empty()) {
      chosen = &p;
      break;
    }
  }
  if (!chosen && !places.empty()) chosen = &places.front();
  if (chosen) browser_->SetPath(Qs(chosen->path));
}

void frmScan::PathChanged(const QString& path) {
  inspect_.Stop();
  if (lookup_.running()) StopLookup();
  scanMode_ = 0;
  toc_ = DiscToc();
  tabs_->setTabVisible(2, false);
  cboFreeDbMatch_->clear();
  chkEnhancedCd_->hide();
  lblEnhancedCd_->hide();
  SetStatus(QString());
  btnOK_->setEnabled(true);
  if (noScan_) {
    // An entry reads nothing: the name follows the path's last folder.
    if (!nameTyped_) {
      const QString name = QFileInfo(path).fileName();
      fldDataLabel_->setText(name);
    }
    return;
  }
  if (path.isEmpty()) {
    txtLabelInternal_->clear();
    return;
  }
  proposal_ = sources_->Propose(Std(path));
  txtLabelInternal_->setText(Qs(proposal_.label));
  if (proposal_.facts.driveType != kMediaOptical) {
    FillDefaultName();
    Q_EMIT pathInspected();
    return;
  }
  // An optical drive: its table of contents tells an audio CD and a
  // multi-session disc; reading it may take the drive seconds.
  std::string device = proposal_.volume.device();
  if (const ScanPlace* place = browser_->PlaceOf(path); place && place->drive) device = place->path;
  if (device.empty()) device = Std(path);
  FillDefaultName();
  SetStatus(tr("Reading the disc..."));
  btnOK_->setEnabled(false);
  std::shared_ptr<ScanSources> sources = sources_;
  inspect_.Run<std::pair<bool, DiscToc>>(
      this,
      [sources, device](std::stop_token stop) {
        DiscToc toc;
        const bool found = sources->ReadToc(device, stop, &toc);
        return std::make_pair(found, toc);
      },
      [this](std::pair<bool, DiscToc>& r) { TocRead(r.first, r.second); });
}

void frmScan::TocRead(bool found, const DiscToc& toc) {
  SetStatus(QString());
  btnOK_->setEnabled(true);
  toc_ = found ? toc : DiscToc();
  // A disc with audio tracks and a data track was written in several
  // sessions: it may be an enhanced audio CD.
  const bool multiSession = found && toc.AudioTrackCount() > 0 && toc.HasDataTrack();
  if (multiSession) {
    chkEnhancedCd_->show();
    lblEnhancedCd_->show();
    if (!chkEnhancedCd_->isChecked()) AskEnhanced();
  }
  const bool enhanced = chkEnhancedCd_->isChecked() && multiSession;
  const bool audioLabel = EqualsIgnoreCase(proposal_.label, "audio cd");
  // The audio tracks stand for the "*.cda" files a drive shows of an audio CD.
  const bool audio = (audioLabel || enhanced) && (toc_.AudioTrackCount() > 0 || enhanced);
  if (audio) {
    StartLookup(toc_);
  } else {
    FillDefaultName();
  }
  Q_EMIT pathInspected();
}

void frmScan::AskEnhanced() {
  if (!UiSettings::Switch("lAssumeEnhancedCd")) return;
  if (!UiSettings::Switch("lNotifyEnhancedCd")) {
    filling_ = true;
    chkEnhancedCd_->setChecked(true);
    filling_ = false;
    return;
  }
  PromptRequest r;
  r.text = kEnhancedQuestion;
  r.buttons = PromptButtons::kYesNo;
  r.icon = PromptIcon::kQuestion;
  r.notifyKey = "lNotifyEnhancedCd";
  const PromptReply reply = session_.prompt().Ask(r);
  if (reply.answer == PromptAnswer::kYes) {
    filling_ = true;
    chkEnhancedCd_->setChecked(true);
    filling_ = false;
  }
  if (!reply.dontShowAgain) return;
  if (reply.answer != PromptAnswer::kNo) {
    UiSettings::SetSwitch("lNotifyEnhancedCd", false);
    return;
  }
  PromptRequest off;
  off.title = kEnhancedOffTitle;
  off.text = kEnhancedOffText;
  off.buttons = PromptButtons::kYesNo;
  off.icon = PromptIcon::kQuestion;
  if (session_.prompt().Ask(off).answer == PromptAnswer::kYes) {
    UiSettings::SetSwitch("lAssumeEnhancedCd", false);
    UiSettings::SetSwitch("lNotifyEnhancedCd", false);
  }
}

void frmScan::StartLookup(const DiscToc& toc, size_t match) {
  scanMode_ = kMediaAudioCd;
  toc_ = toc;
  tabs_->setTabText(2, tr(kAudioTabCaption));
  tabs_->setTabVisible(2, true);
  tabs_->setCurrentIndex(2);
  // The table alone gives the tracks' lengths: shown at once, titles follow.
  ShowAudio(AudioScanValues::From(toc, nullptr));
  SetStatus(tr(kGettingTracks));
  btnOK_->setEnabled(false);
  btnStopLookup_->show();
  cboFreeDbMatch_->setEnabled(false);
  LookupRequest request;
  request.match = match;
  request.online = MayGoOnline();
  std::shared_ptr<ScanSources> sources = sources_;
  QPointer<frmScan> self(this);
  lookup_.Run<DiscLookupResult>(
      this,
      [sources, toc, request, self](std::stop_token stop) {
        return sources->Lookup(toc, request, stop, [self](const std::string& line) {
          const QString text = Qs(line);
          QMetaObject::invokeMethod(
              qApp,
              [self, text] {
                if (self && self->lookupRunning()) self->SetStatus(text);
              },
              Qt::QueuedConnection);
        });
      },
      [this](DiscLookupResult& r) { LookupDone(r); });
}

bool frmScan::MayGoOnline() {
  if (!sources_->LookupGoesOnline()) return false;
  if (goOnline_) return *goOnline_;
  // Asked once per dialog; a remembered answer stands for the question.
  if (!UiSettings::Switch("lNotifyConnectFreedb")) {
    goOnline_ = UiSettings::Switch("lNotifyConnectFreedbAction");
    return *goOnline_;
  }
  PromptRequest r;
  r.text = Std(tr("Gorvan can ask the server %1 for the album and track titles of this CD.\n"
                  "Do you want to connect to it now?")
                   .arg(Qs(sources_->LookupServer())));
  r.buttons = PromptButtons::kYesNo;
  r.icon = PromptIcon::kQuestion;
  r.notifyKey = "lNotifyConnectFreedb";
  const PromptReply reply = session_.prompt().Ask(r);
  goOnline_ = reply.answer == PromptAnswer::kYes;
  if (reply.dontShowAgain) {
    UiSettings::SetSwitch("lNotifyConnectFreedb", false);
    UiSettings::SetSwitch("lNotifyConnectFreedbAction", *goOnline_);
  }
  return *goOnline_;
}

void frmScan::StopLookup() {
  if (!lookup_.running()) return;
  lookup_.Stop();
  DiscLookupResult stopped;
  stopped.cancelled = true;
  LookupDone(stopped);
}

void frmScan::LookupDone(const DiscLookupResult& r) {
  btnStopLookup_->hide();
  btnOK_->setEnabled(true);
  cboFreeDbMatch_->setEnabled(true);
  // Several FreeDB entries fit the disc: the user may read another one. The
  // list stays as the first lookup gave it while another match is read.
  if (r.found && r.matches.size() > 1 && cboFreeDbMatch_->count() == 0) {
    for (const QueryMatch& m : r.matches) {
      cboFreeDbMatch_->addItem(Qs(m.category) + QStringLiteral(": ") + RowText(m.title));
    }
    cboFreeDbMatch_->setCurrentIndex(0);
  }
  lblFreeDbMatch_->setVisible(cboFreeDbMatch_->count() > 1);
  cboFreeDbMatch_->setVisible(cboFreeDbMatch_->count() > 1);
  if (r.found) {
    ShowAudio(AudioScanValues::From(toc_, &r.info));
    SetStatus(QString());
  } else if (r.cancelled) {
    SetStatus(tr("The lookup was stopped: the tracks keep their numbers."));
  } else if (!r.errors.empty()) {
    SetStatus(Qs(r.errors.front().second));
    for (const auto& [number, text] : r.errors) {
      if (number != uFreeDb::kErrNetwork) continue;
      PromptRequest m;
      m.text = kNoInternet;
      m.icon = PromptIcon::kWarning;
      m.notifyKey = "lNotifyNoInternet";
      NotifyPrompt::Ask(session_.prompt(), m, PromptAnswer::kOk);
      break;
    }
  } else {
    SetStatus(tr("This disc was not found: the tracks keep their numbers."));
  }
  Q_EMIT lookupFinished();
}

void frmScan::ShowAudio(const AudioScanValues& v) {
  filling_ = true;
  fldAudioAlbum_->setText(Qs(v.album));
  fldAudioArtist_->setText(Qs(v.artist));
  fldAudioCategory_->setText(Qs(v.category));
  fldAudioTime_->setText(Qs(v.time));
  fldAudioYear_->setText(Qs(v.year));
  lstAudioTracks_->clear();
  QList<QTreeWidgetItem*> items;
  int n = 0;
  for (const AudioScanValues::Track& t : v.tracks) {
    auto* item = new QTreeWidgetItem({QString::number(++n), Qs(t.title), Qs(t.length)});
    item->setFlags(item->flags() | Qt::ItemIsEditable);
    item->setTextAlignment(0, Qt::AlignRight | Qt::AlignVCenter);
    item->setTextAlignment(2, Qt::AlignRight | Qt::AlignVCenter);
    items.append(item);
  }
  lstAudioTracks_->addTopLevelItems(items);
  lstAudioTracks_->resizeColumnToContents(0);
  lstAudioTracks_->resizeColumnToContents(2);
  // An audio CD is named after its album.
  if (!nameTyped_ && !v.album.empty()) fldDataLabel_->setText(Qs(v.album));
  filling_ = false;
}

void frmScan::SetStatus(const QString& line) {
  lblStatus_->setText(line);
  lblStatus_->setVisible(!line.isEmpty());
}

QString frmScan::lookupStatus() const { return lblStatus_->text(); }

void frmScan::FillDefaultName() {
  if (nameTyped_) return;
  fldDataLabel_->setText(
      Qs(ScanChecks::DefaultDiscName(Std(browser_->path()), proposal_.label, proposal_.facts)));
}

int32_t frmScan::entryMediaType() const {
  const ScanPlace* place = browser_->PlaceOf(browser_->path());
  return place ? place->driveType : kMediaFixed;
}

void frmScan::CollectSettings() {
  ScanSettings s;
  s.previousDiscId = noScan_ ? 0 : discId_;
  s.path = Std(browser_->path());
  s.discName = Std(fldDataLabel_->text());
  s.notes = Std(fldDataNotes_->toPlainText());
  s.volumeLabel = Std(txtLabelInternal_->text());
  s.categoryId = CategoryId();
  s.includeText = Std(fldFilesInclude_->text());
  s.excludeText = Std(fldFilesExclude_->text());
  s.scanZip = chkScanZip_->isChecked();
  s.scanMp3 = chkScanMp3_->isChecked();
  s.directoriesOnly = chkScanDirectoriesOnly_->isChecked();
  s.scanMode = scanMode_;
  settings_ = s;
  volume_ = proposal_.facts;
  tracks_.clear();
  audio_ = AudioValues{};
  if (scanMode_ == kMediaAudioCd) {
    audio_.album = Std(fldAudioAlbum_->text());
    audio_.artist = Std(fldAudioArtist_->text());
    audio_.category = Std(fldAudioCategory_->text());
    audio_.time = Std(fldAudioTime_->text());
    audio_.year = Std(fldAudioYear_->text());
    for (int i = 0; i < lstAudioTracks_->topLevelItemCount(); ++i) {
      const QTreeWidgetItem* item = lstAudioTracks_->topLevelItem(i);
      tracks_.push_back({Std(item->text(1)), Std(item->text(2))});
    }
  }
  // The fields keep what was typed, less any blank before a ";" (the scan
  // itself takes the lists as typed).
  std::string include = s.includeText;
  std::string exclude = s.excludeText;
  CleanPatternText(&include);
  CleanPatternText(&exclude);
  fldFilesInclude_->setText(Qs(include));
  fldFilesExclude_->setText(Qs(exclude));
}

void frmScan::accept() {
  // A path typed and confirmed at once: its facts and name first.
  browser_->Commit();
  const QString path = browser_->path();
  if (noScan_) {
    CollectSettings();
    outcome_ = Outcome::kEntry;
    QDialog::accept();
    return;
  }
  if (path.isEmpty() || !sources_->Exists(Std(path))) {
    session_.prompt().Message(ScanChecks::kPathMissing, PromptIcon::kWarning);
    return;
  }
  if (lookup_.running() || inspect_.running()) return;
  // A drive whose disc has no file system to walk is scanned only as an
  // audio CD.
  if (scanMode_ != kMediaAudioCd && !ScanPath::FolderExists(Std(path))) {
    session_.prompt().Message(
        Std(tr("There is no disc to read in %1.\nInsert a disc, or wait until the system has "
               "mounted it, and try again.")
                .arg(path)),
        PromptIcon::kWarning);
    return;
  }
  // The facts of the path as it is now (a stick may have been swapped).
  proposal_ = sources_->Propose(Std(path));
  if (discId_ <= 0 && scanMode_ != kMediaAudioCd) {
    classData* data = session_.writer();
    if (!data) {
      session_.prompt().Message(
          Std(tr("Another job is using the catalog; try again when it has ended.")),
          PromptIcon::kWarning);
      return;
    }
    ScanSettings probe;
    probe.path = Std(path);
    probe.volumeLabel = Std(txtLabelInternal_->text());
    if (const int32_t before = ScanRequest::ScannedBefore(*data, probe, proposal_.facts)) {
      PromptRequest r;
      r.text = std::string(ScanChecks::kScannedBefore) + "\n" + ScanChecks::kProceed;
      r.buttons = PromptButtons::kCustom;
      r.icon = PromptIcon::kQuestion;
      r.customButtons = {Std(tr("&Scan Again")), Std(tr("S&how the Disc")), Std(tr("Cancel"))};
      const PromptReply reply = session_.prompt().Ask(r);
      if (reply.answer != PromptAnswer::kCustom || reply.customIndex == 2) return;
      if (reply.customIndex == 1) {
        discToShow_ = before;
        outcome_ = Outcome::kShowDisc;
        QDialog::accept();
        return;
      }
    }
  }
  CollectSettings();
  SaveRemembered();
  outcome_ = Outcome::kScan;
  QDialog::accept();
}

}  // namespace gorvan::ui
