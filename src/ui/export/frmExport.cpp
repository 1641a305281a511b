#include "ui/export/frmExport.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHash>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <iterator>

#include "app/Resources.h"
#include "app/SettingsStore.h"
#include "ui/export/ReaderJob.h"
#include "ui/main/CommandHooks.h"
#include "ui/main/frmMenu.h"
#include "ui/session/CatalogReads.h"
#include "ui/session/CatalogSession.h"
#include "ui/session/NotifyPrompt.h"
#include "ui/session/ViewLoader.h"
#include "ui/widgets/JobProgressDialog.h"
#include "ui/widgets/ThemeIcons.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

constexpr int kDiscRole = Qt::UserRole;  // a disc item's id (0 for the others)
constexpr const char* kWindowName = "export";

// The option boxes: name, caption, and the field of ExportFields each sets.
struct OptionBox {
  const char* name;
  const char* caption;
  bool ExportFields::*field;
};
constexpr OptionBox kOptionBoxes[] = {
    {"chkDirSize", QT_TRANSLATE_NOOP("frmExport", "Folder si&zes"), &ExportFields::dirSize},
    {"chkDirDate", QT_TRANSLATE_NOOP("frmExport", "Folder &dates"), &ExportFields::dirDate},
    {"chkDirNotes", QT_TRANSLATE_NOOP("frmExport", "Folder &notes"), &ExportFields::dirNotes},
    {"chkDirFiles", QT_TRANSLATE_NOOP("frmExport", "The &files of each folder"),
     &ExportFields::dirFiles},
    {"chkFileSizes", QT_TRANSLATE_NOOP("frmExport", "File s&izes"), &ExportFields::fileSizes},
    {"chkFileDates", QT_TRANSLATE_NOOP("frmExport", "File da&tes"), &ExportFields::fileDates},
    {"chkFileNotes", QT_TRANSLATE_NOOP("frmExport", "File n&otes"), &ExportFields::fileNotes},
};
// The type options' names, in the types' order.
constexpr const char* kTypeNames[kExportTypeCount] = {"optCSV", "optXML", "optXLS", "optHTML"};

// path with its extension replaced by ext (added when it has none).
std::string WithExtension(const std::string& path, const char* ext) {
  const size_t slash = path.rfind('/');
  const size_t dot = path.rfind('.');
  const std::string stem = dot != std::string::npos && (slash == std::string::npos || dot > slash)
                               ? path.substr(0, dot)
                               : path;
  return stem + "." + ext;
}

}  // namespace

frmExport::frmExport(CatalogSession& session, QWidget* parent)
    : QDialog(parent), session_(session) {
  setObjectName(QStringLiteral("frmExport"));
  setWindowTitle(tr("Export"));

  // What To Export: the catalog, its categories and their discs, each with a
  // check box; a category ticks or clears all it holds.
  auto* what = new QGroupBox(tr("What To Export"));
  what->setObjectName(QStringLiteral("fraWhatToExport"));
  tree_ = new QTreeWidget;
  tree_->setObjectName(QStringLiteral("tvwWhatToExport"));
  tree_->setHeaderHidden(true);
  tree_->setUniformRowHeights(true);
  tree_->setSelectionMode(QAbstractItemView::SingleSelection);
  auto* all = new QPushButton(tr("Select &All"));
  all->setObjectName(QStringLiteral("btnSelectAll"));
  auto* none = new QPushButton(tr("&Unselect All"));
  none->setObjectName(QStringLiteral("btnUnselectAll"));
  count_ = new QLabel;
  count_->setObjectName(QStringLiteral("lblCount"));
  auto* whatButtons = new QHBoxLayout;
  whatButtons->addWidget(all);
  whatButtons->addWidget(none);
  whatButtons->addStretch();
  whatButtons->addWidget(count_);
  auto* whatLayout = new QVBoxLayout(what);
  whatLayout->addWidget(tree_, 1);
  whatLayout->addLayout(whatButtons);

  auto* typeBox = new QGroupBox(tr("Export Type"));
  typeBox->setObjectName(QStringLiteral("fraExportType"));
  types_ = new QButtonGroup(this);
  auto* typeLayout = new QVBoxLayout(typeBox);
  static const char* const kMnemonics[kExportTypeCount] = {"C&S", "&X", "X&L", "&h"};
  for (int i = 0; i < kExportTypeCount; ++i) {
    // The captions are the product's; a mnemonic marks one of their letters.
    QString caption = Qs(kExportTypes[i].caption);
    const QString plain = QString::fromLatin1(kMnemonics[i]).remove(QLatin1Char('&'));
    const QString marked = QString::fromLatin1(kMnemonics[i]);
    caption.replace(caption.indexOf(plain), plain.size(), marked);
    auto* option = new QRadioButton(caption);
    option->setObjectName(QLatin1String(kTypeNames[i]));
    types_->addButton(option, i);
    typeLayout->addWidget(option);
  }
  typeLayout->addStretch();

  auto* optionBox = new QGroupBox(tr("Options"));
  optionBox->setObjectName(QStringLiteral("fraOptions"));
  auto* optionLayout = new QGridLayout(optionBox);
  for (size_t i = 0; i < std::size(kOptionBoxes); ++i) {
    auto* box = new QCheckBox(tr(kOptionBoxes[i].caption));
    box->setObjectName(QLatin1String(kOptionBoxes[i].name));
    box->setChecked(true);
    options_.push_back(box);
    // Folder fields on the left, file fields on the right.
    const bool file = i >= 4;
    optionLayout->addWidget(box, static_cast<int>(file ? i - 4 : i), file ? 1 : 0);
  }
  // The file fields mean nothing when the files are left out.
  QCheckBox* files = options_[3];
  connect(files, &QCheckBox::toggled, this, [this](bool on) {
    for (size_t i = 4; i < options_.size(); ++i) options_[i]->setEnabled(on);
  });

  auto* buttons = new QDialogButtonBox;
  ok_ = buttons->addButton(tr("&Export..."), QDialogButtonBox::AcceptRole);
  ok_->setObjectName(QStringLiteral("btnOK"));
  ok_->setIcon(ThemeIcons::Named("document-save-as"));
  ok_->setDefault(true);
  close_ = buttons->addButton(tr("&Close"), QDialogButtonBox::RejectRole);
  close_->setObjectName(QStringLiteral("btnCancel"));
  connect(ok_, &QPushButton::clicked, this, &frmExport::Export);
  connect(close_, &QPushButton::clicked, this, &frmExport::reject);

  auto* right = new QVBoxLayout;
  right->addWidget(typeBox);
  right->addWidget(optionBox);
  right->addStretch();
  auto* top = new QHBoxLayout;
  top->addWidget(what, 1);
  top->addLayout(right);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(top, 1);
  layout->addWidget(buttons);

  connect(all, &QPushButton::clicked, this, [this] { ChooseDiscs({}); });
  connect(none, &QPushButton::clicked, this, [this] {
    for (int i = 0; i < tree_->topLevelItemCount(); ++i)
      tree_->topLevelItem(i)->setCheckState(0, Qt::Unchecked);
  });
  // Ticking a category changes each of its discs: count them once after.
  connect(tree_, &QTreeWidget::itemChanged, this, [this] {
    if (updatePending_) return;
    updatePending_ = true;
    QTimer::singleShot(0, this, [this] {
      updatePending_ = false;
      UpdateButtons();
    });
  });

  RestoreSettings();
  UpdateButtons();
  Load();
  // The window follows the catalog: discs added or removed show, and a
  // catalog closed (or another opened) ends the window unless it is writing
  // an export, which goes on over its own reader.
  connect(&session_, &CatalogSession::changed, this, [this](CatalogChange change) {
    if (change == CatalogChange::kStructure || change == CatalogChange::kEverything) Load();
  });
  connect(&session_, &CatalogSession::opened, this, &frmExport::Load);
  connect(&session_, &CatalogSession::closed, this, [this] {
    if (!job_) close();
  });
}

void frmExport::Load() {
  session_.loader().Load<CatalogSnapshot>(
      this, "frmExport",
      [](classData& d, const std::stop_token& stop) { return CatalogReads::Catalog(d, stop); },
      [this](CatalogSnapshot& s) { Fill(s); });
}

frmExport::~frmExport() = default;

void frmExport::Fill(const CatalogSnapshot& snapshot) {
  // A reload keeps what the user unticked.
  std::vector<int32_t> unticked;
  for (const auto& [id, item] : discs_) {
    if (item->checkState(0) != Qt::Checked) unticked.push_back(id);
  }
  const QSignalBlocker block(tree_);
  tree_->clear();
  discs_.clear();
  auto* root = new QTreeWidgetItem(tree_, QStringList{RowText(snapshot.name)});
  root->setIcon(0, ThemeIcons::Catalog());
  root->setFlags(root->flags() | Qt::ItemIsUserCheckable | Qt::ItemIsAutoTristate);
  QHash<int32_t, QTreeWidgetItem*> categories;
  QHash<int32_t, int32_t> parents;
  for (const CategoryRow& c : snapshot.categories) {
    auto* item = new QTreeWidgetItem(QStringList{RowText(c.name)});
    item->setIcon(0, ThemeIcons::Category());
    item->setData(0, kDiscRole, 0);
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable | Qt::ItemIsAutoTristate);
    categories.insert(c.id, item);
    parents.insert(c.id, c.parent);
  }
  // Parents may come after their children in the chain: link once all exist.
  // A parent that is no category, or a loop of parents, leaves the category
  // at the top.
  for (const CategoryRow& c : snapshot.categories) {
    int32_t parent = c.parent;
    for (int steps = 0; parent != 0 && categories.contains(parent); ++steps) {
      if (parent == c.id || steps > categories.size()) {
        parent = 0;
        break;
      }
      parent = parents.value(parent);
    }
    QTreeWidgetItem* up = parent == 0 ? categories.value(c.parent, root) : root;
    up->addChild(categories.value(c.id));
  }
  for (const DiscRow& d : snapshot.discs) {
    auto* item = new QTreeWidgetItem(QStringList{RowText(d.DisplayName())});
    item->setIcon(0, ThemeIcons::Disc(d.iconKey));
    item->setData(0, kDiscRole, d.id);
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    const bool off = std::find(unticked.begin(), unticked.end(), d.id) != unticked.end();
    item->setCheckState(0, off ? Qt::Unchecked : Qt::Checked);
    categories.value(d.category, root)->addChild(item);
    discs_.emplace_back(d.id, item);
  }
  // Categories without discs carry no check of their own.
  for (QTreeWidgetItem* c : std::as_const(categories)) {
    if (c->childCount() == 0) c->setFlags(c->flags() & ~Qt::ItemIsUserCheckable);
  }
  tree_->expandToDepth(0);
  tree_->setCurrentItem(root);
  loaded_ = true;
  UpdateButtons();
}

std::vector<int32_t> frmExport::chosenDiscs() const {
  std::vector<int32_t> ids;
  for (const auto& [id, item] : discs_) {
    if (item->checkState(0) == Qt::Checked) ids.push_back(id);
  }
  return ids;
}

void frmExport::ChooseDiscs(const std::vector<int32_t>& ids) {
  {
    const QSignalBlocker block(tree_);
    for (const auto& [id, item] : discs_) {
      const bool on = ids.empty() || std::find(ids.begin(), ids.end(), id) != ids.end();
      item->setCheckState(0, on ? Qt::Checked : Qt::Unchecked);
    }
  }
  // A category's state is worked out from its discs when it is drawn.
  tree_->viewport()->update();
  UpdateButtons();
}

ExportType frmExport::type() const {
  const int id = types_->checkedId();
  return static_cast<ExportType>(id < 0 ? 0 : id);
}

void frmExport::SetType(ExportType type) {
  if (QAbstractButton* b = types_->button(static_cast<int>(type))) b->setChecked(true);
}

ExportOptions frmExport::options() const {
  ExportOptions o;
  o.type = type();
  const std::vector<int32_t> chosen = chosenDiscs();
  if (chosen.size() != discs_.size()) o.discIds = chosen;
  for (size_t i = 0; i < options_.size(); ++i)
    o.fields.*kOptionBoxes[i].field = options_[i]->isChecked();
  o.stylesheet = Resources::File(kStylesheetName);
  return o;
}

void frmExport::UpdateButtons() {
  const size_t chosen = chosenDiscs().size();
  count_->setText(loaded_ ? tr("%n disc(s) chosen", nullptr, static_cast<int>(chosen))
                          : tr("Loading..."));
  ok_->setEnabled(loaded_ && chosen > 0 && !job_);
}

void frmExport::RestoreSettings() {
  const QSize hint = sizeHint().expandedTo(
      QSize(fontMetrics().averageCharWidth() * 90, fontMetrics().height() * 24));
  restored_ = WindowLayout::RestoreSize(
      kWindowName, {static_cast<float>(hint.width()), static_cast<float>(hint.height())});
  resize(static_cast<int>(restored_.width), static_cast<int>(restored_.height));
  const std::string stored = SettingsStore::GetText(kExportSection, "export_type", "1");
  char* end = nullptr;
  const long t = std::strtol(stored.c_str(), &end, 10);
  SetType(end != stored.c_str() && t >= 0 && t < kExportTypeCount ? static_cast<ExportType>(t)
                                                                  : ExportType::kXml);
  for (size_t i = 0; i < options_.size(); ++i) {
    options_[i]->setChecked(SettingsStore::GetBool(kExportSection, kOptionBoxes[i].name, true));
  }
}

void frmExport::SaveSettings() {
  WindowLayout::SaveSize(kWindowName, {static_cast<float>(width()), static_cast<float>(height())},
                         restored_);
  SettingsStore::PutText(kExportSection, "export_type", std::to_string(static_cast<int>(type())));
  for (size_t i = 0; i < options_.size(); ++i) {
    SettingsStore::PutBool(kExportSection, kOptionBoxes[i].name, options_[i]->isChecked());
  }
}

void frmExport::Export() {
  if (job_ || !loaded_) return;
  const ExportType t = type();
  const ExportTypeInfo& info = ExportTypeInfoOf(t);
  // The dialog starts at the last file written, with the chosen type's
  // extension; else beside the catalog, under the catalog's file name.
  std::string start = SettingsStore::GetText(kExportSection, "export_last", "0");
  if (start.empty() || start == "0") start = session_.path();
  FileRequest request;
  request.title = kExportDialogTitle;
  request.filter = kExportFileFilter;
  request.filterIndex = static_cast<int>(t);
  request.defaultExtension = info.extension;
  request.startPath = start.empty() ? std::string() : WithExtension(start, info.extension);
  request.save = true;
  const std::string path = session_.prompt().AskFile(request);
  if (path.empty()) return;
  // A name that asks for another type by its extension gets that type.
  if (std::optional<ExportType> byName = ExportTypeForPath(path); byName && *byName != t) {
    SetType(*byName);
  }
  ExportTo(path);
}

void frmExport::ExportTo(const std::string& path) {
  if (job_) return;
  ExportOptions o = options();
  auto result = std::make_shared<ExportResult>();
  Status status;
  job_ = ReaderJob::Open(
      session_,
      [o, path, result](classData& reader, JobControl& job) {
        *result = basExport(reader, path, o, job);
        return result->status;
      },
      &status);
  if (!job_) {
    session_.prompt().Message(
        status.IsRefused() ? status.message()
                           : Std(tr("The export could not start: %1").arg(Qs(status.message()))),
        PromptIcon::kWarning);
    return;
  }
  result_ = result;
  progress_ = new JobProgressDialog(tr("Export"), tr("&Cancel"), 300, this);
  progress_->setAttribute(Qt::WA_DeleteOnClose);
  connect(progress_, &JobProgressDialog::cancelRequested, this, &frmExport::StopExport);
  connect(job_.get(), &ReaderJob::progress, progress_, &JobProgressDialog::Report);
  connect(job_.get(), &ReaderJob::finished, this,
          [this, path](const Status& s) { Finished(s, path); });
  ok_->setEnabled(false);
  job_->Start();
}

void frmExport::StopExport() {
  if (job_) job_->Cancel();
}

void frmExport::Finished(const Status& status, const std::string& path) {
  std::unique_ptr<ReaderJob> job = std::move(job_);
  std::shared_ptr<ExportResult> result = std::move(result_);
  if (progress_) progress_->close();
  UpdateButtons();
  Q_EMIT exportEnded(status);
  if (status.IsCancelled()) return;
  if (!status.ok()) {
    // IOError carries the system's reason for the file; the rest (a damaged
    // chain) is the catalog's.
    if (status.IsIOError()) {
      session_.prompt().Message(
          Std(tr("The export could not be written to %1:\n%2").arg(Qs(path), Qs(status.message()))),
          PromptIcon::kWarning);
    } else {
      session_.ReportFailure(status, "basExport");
    }
    return;
  }
  SettingsStore::PutText(kExportSection, "export_last", path);
  SaveSettings();
  if (result && !result->stylesheetProblem.empty()) {
    session_.prompt().Message(
        Std(tr("The export is complete, but the stylesheet %1 could not be put beside it:\n%2")
                .arg(Qs(kStylesheetName), Qs(result->stylesheetProblem))),
        PromptIcon::kWarning);
  } else {
    PromptRequest r;
    r.text = kExportDone;
    r.notifyKey = "lNotifyExport";
    NotifyPrompt::Ask(session_.prompt(), r, PromptAnswer::kOk);
  }
  close();
}

void frmExport::done(int result) {
  // Closing the window while it exports cancels the export first; the window
  // closes once the job has ended.
  if (job_) {
    StopExport();
    connect(
        this, &frmExport::exportEnded, this, [this, result] { done(result); },
        Qt::SingleShotConnection);
    return;
  }
  SaveSettings();
  QDialog::done(result);
  deleteLater();
}

void RegisterExport(CommandHooks& hooks) {
  hooks.Register(QStringLiteral("mnuFileExport"), [](const CommandContext& c) {
    // One export window at a time: a second command brings it forward.
    // (A window just closed waits for its deletion: it does not count.)
    auto* open =
        c.window->findChild<frmExport*>(QStringLiteral("frmExport"), Qt::FindDirectChildrenOnly);
    if (open && open->isVisible()) {
      open->raise();
      open->activateWindow();
      return;
    }
    // Not modal: the user keeps browsing while the window is open.
    auto* window = new frmExport(*c.session, c.window);
    window->show();
  });
}

}  // namespace gorvan::ui
