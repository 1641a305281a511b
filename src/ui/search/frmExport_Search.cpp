#include "ui/search/frmExport_Search.h"

#include <QDir>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "app/SettingsStore.h"
#include "catalog/OleDate.h"
#include "export/SearchResultsExport.h"
#include "export/basExport.h"
#include "ui/session/NotifyPrompt.h"
#include "ui/widgets/ThemeIcons.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

constexpr const char* kLayoutName = "export_search";
constexpr const char* kLastKey = "export_search_last";
constexpr const char* kTypeKey = "export_search_type";

}  // namespace

frmExport_Search* frmExport_Search::Open(Prompt& prompt, std::vector<SearchResult> rows,
                                         bool cdNameShown, const SearchOptions& search,
                                         QWidget* parent) {
  auto* dialog = new frmExport_Search(prompt, std::move(rows), cdNameShown, search, parent);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->open();
  return dialog;
}

frmExport_Search::frmExport_Search(Prompt& prompt, std::vector<SearchResult> rows, bool cdNameShown,
                                   const SearchOptions& search, QWidget* parent)
    : QDialog(parent),
      prompt_(prompt),
      rows_(std::make_shared<const std::vector<SearchResult>>(std::move(rows))),
      cdNameShown_(cdNameShown),
      search_(search) {
  setObjectName(QStringLiteral("frmExport_Search"));
  setWindowTitle(tr("Export Search Results"));
  setWindowIcon(ThemeIcons::Named("document-send"));

  auto* types = new QGroupBox(tr("Export As"));
  optCSV_ = new QRadioButton(Qs(kExportTypes[0].caption));
  optCSV_->setObjectName(QStringLiteral("optCSV"));
  optXML_ = new QRadioButton(Qs(kExportTypes[1].caption));
  optXML_->setObjectName(QStringLiteral("optXML"));
  auto* typeLayout = new QVBoxLayout(types);
  typeLayout->addWidget(optCSV_);
  typeLayout->addWidget(optXML_);

  fldFileName_ = new QLineEdit;
  fldFileName_->setObjectName(QStringLiteral("fldFileName"));
  auto* lblFile = new QLabel(tr("&File"));
  lblFile->setBuddy(fldFileName_);
  btnBrowse_ = new QPushButton(tr("&Browse..."));
  btnBrowse_->setObjectName(QStringLiteral("btnBrowse"));
  auto* fileRow = new QHBoxLayout;
  fileRow->addWidget(lblFile);
  fileRow->addWidget(fldFileName_, 1);
  fileRow->addWidget(btnBrowse_);

  auto* count = new QLabel(rows_->size() == 1
                               ? tr("1 item to export")
                               : tr("%L1 items to export").arg(static_cast<qint64>(rows_->size())));
  count->setObjectName(QStringLiteral("lblCount"));

  btnOK_ = new QPushButton(ThemeIcons::Named("document-send"), tr("&Export"));
  btnOK_->setObjectName(QStringLiteral("btnOK"));
  btnOK_->setDefault(true);
  btnCancel_ = new QPushButton(tr("&Cancel"));
  btnCancel_->setObjectName(QStringLiteral("btnCancel"));
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(count, 1);
  buttons->addWidget(btnOK_);
  buttons->addWidget(btnCancel_);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(types);
  layout->addLayout(fileRow);
  layout->addStretch(1);
  layout->addLayout(buttons);

  const std::string last = SettingsStore::GetText(kExportSearchSection, kLastKey, "0");
  const int savedType = SettingsStore::GetText(kExportSearchSection, kTypeKey, "0") == "1" ? 1 : 0;
  SetType(savedType);
  if (last != "0" && !last.empty()) fldFileName_->setText(Qs(last));

  connect(optCSV_, &QRadioButton::toggled, this, [this] { SetType(type()); });
  connect(btnBrowse_, &QPushButton::clicked, this, [this] { Browse(); });
  connect(btnOK_, &QPushButton::clicked, this, &frmExport_Search::Export);
  connect(btnCancel_, &QPushButton::clicked, this, &QDialog::reject);

  const QSize hint = sizeHint();
  const int ch = fontMetrics().averageCharWidth();
  restoredSize_ = WindowLayout::RestoreSize(
      kLayoutName,
      {static_cast<float>(std::max(hint.width(), ch * 70)), static_cast<float>(hint.height())});
  resize(static_cast<int>(restoredSize_.width), static_cast<int>(restoredSize_.height));
}

frmExport_Search::~frmExport_Search() {
  if (thread_.joinable()) thread_.join();
}

int frmExport_Search::type() const { return optXML_->isChecked() ? 1 : 0; }

void frmExport_Search::SetType(int type) {
  QRadioButton* want = type == 1 ? optXML_ : optCSV_;
  if (!want->isChecked()) want->setChecked(true);
  // A file named for the other type follows the choice.
  const QString path = fldFileName_->text();
  if (path.isEmpty()) return;
  const QString ext = Qs(kSearchResultsExtensions[type]);
  const QString other = Qs(kSearchResultsExtensions[1 - type]);
  const QFileInfo info(path);
  if (info.suffix().compare(other, Qt::CaseInsensitive) == 0) {
    fldFileName_->setText(path.left(path.size() - other.size()) + ext);
  }
}

QString frmExport_Search::fileName() const { return fldFileName_->text(); }
void frmExport_Search::SetFileName(const QString& path) { fldFileName_->setText(path); }

bool frmExport_Search::Browse() {
  FileRequest request;
  request.title = kExportDialogTitle;
  request.filter = kSearchResultsFileFilter;
  request.defaultExtension = kSearchResultsExtensions[type()];
  request.startPath =
      fldFileName_->text().isEmpty() ? Std(QDir::homePath()) : Std(fldFileName_->text());
  request.save = true;
  const std::string chosen = prompt_.AskFile(request);
  if (chosen.empty()) return false;
  QString path = Qs(chosen);
  // The dialog's filter chooses the type too.
  const QString suffix = QFileInfo(path).suffix();
  for (int t = 0; t < 2; ++t) {
    if (suffix.compare(Qs(kSearchResultsExtensions[t]), Qt::CaseInsensitive) == 0) SetType(t);
  }
  fldFileName_->setText(path);
  return true;
}

void frmExport_Search::Export() {
  if (writing_) return;
  if (rows_->empty()) {
    prompt_.Message(kNothingToExport, PromptIcon::kInformation);
    return;
  }
  if (fldFileName_->text().trimmed().isEmpty() && !Browse()) return;
  QString path = fldFileName_->text().trimmed();
  if (QFileInfo(path).suffix().isEmpty())
    path += QLatin1Char('.') + Qs(kSearchResultsExtensions[type()]);
  fldFileName_->setText(path);

  const SearchResultsFormat format = SearchResultsFormatFor(type(), cdNameShown_);
  const SearchResultsSummary summary = SearchResultsSummary::From(search_, OleDateNow());
  const std::string target = Std(path);
  writing_ = true;
  for (QWidget* w :
       std::initializer_list<QWidget*>{optCSV_, optXML_, fldFileName_, btnBrowse_, btnOK_})
    w->setEnabled(false);
  if (thread_.joinable()) thread_.join();
  thread_ = std::thread([this, rows = rows_, format, summary, target] {
    const Status status = SearchResultsExport::WriteFile(target, format, summary, *rows);
    QMetaObject::invokeMethod(
        this, [this, status, target] { Finished(status, target); }, Qt::QueuedConnection);
  });
}

void frmExport_Search::Finished(const Status& status, const std::string& path) {
  writing_ = false;
  if (closing_) return;
  for (QWidget* w :
       std::initializer_list<QWidget*>{optCSV_, optXML_, fldFileName_, btnBrowse_, btnOK_})
    w->setEnabled(true);
  Q_EMIT exported(status);
  if (!status.ok()) {
    prompt_.Message(Std(tr("The search results could not be written to %1:\n%2")
                            .arg(Qs(path), Qs(status.message()))),
                    PromptIcon::kWarning);
    return;
  }
  SettingsStore::PutText(kExportSearchSection, kLastKey, path);
  SettingsStore::PutText(kExportSearchSection, kTypeKey, std::to_string(type()));
  PromptRequest told;
  told.text = Std(tr("The search results were exported to %1").arg(Qs(path)));
  told.notifyKey = "lNotifyExport_Search";
  NotifyPrompt::Ask(prompt_, told, PromptAnswer::kOk);
  accept();
}

void frmExport_Search::done(int result) {
  // Closing while the file is written waits for it: it is a matter of moments.
  closing_ = true;
  if (thread_.joinable()) thread_.join();
  const WindowSize now{static_cast<float>(width()), static_cast<float>(height())};
  WindowLayout::SaveSize(kLayoutName, now, restoredSize_);
  restoredSize_ = now;
  QDialog::done(result);
}

}  // namespace gorvan::ui
