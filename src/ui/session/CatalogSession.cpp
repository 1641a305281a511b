#include "ui/session/CatalogSession.h"

#include "app/CatalogHistory.h"
#include "catalog/ErrorReporter.h"
#include "ui/session/ViewLoader.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {

CatalogSession::CatalogSession(Prompt& prompt, QObject* parent)
    : QObject(parent), prompt_(prompt), loader_(new ViewLoader(this)) {
  connect(loader_, &ViewLoader::readFailed, this,
          [this](const Status& s) { ReportFailure(s, "frmBrowse2.Load"); });
}

CatalogSession::~CatalogSession() {
  // A running job is stopped and waited for before the catalog goes.
  job_.reset();
  loader_->SetReader(nullptr);
}

QString CatalogSession::caption() const {
  if (!data_) return Qs(kProgramName);
  return name_ + QStringLiteral(" - ") + Qs(kProgramName);
}

bool CatalogSession::Open(const std::string& path, const OpenOptions& options) {
  if (job_) return false;
  Close();
  OpenOutcome out = CatalogOpener::Open(path, prompt_, options);
  if (!out.data) {
    if (out.status.IsCorruption() || out.status.IsIOError()) {
      ReportError("classData.OpenFiles", out.error ? out.error : 1001, out.message, 3);
    }
    prompt_.Message(std::string(kNothingToDisplay) + "\n" + out.message, PromptIcon::kWarning);
    return false;
  }
  Adopt(std::move(out.data));
  CatalogHistory::Push(path_);
  Q_EMIT opened();
  return true;
}

void CatalogSession::Adopt(std::unique_ptr<classData> data) {
  data_ = std::move(data);
  path_ = data_->GetDataFileName();
  failureShown_ = false;
  RefreshHeader();
  NewReader();
}

bool CatalogSession::Close() {
  if (job_) return false;
  if (!data_) return true;
  loader_->SetReader(nullptr);
  data_->CloseFiles();
  data_.reset();
  path_.clear();
  name_.clear();
  fontText_.clear();
  header_ = HeaderRecord{};
  Q_EMIT closed();
  return true;
}

void CatalogSession::RefreshHeader() {
  header_ = data_->GetTableHeader();
  name_ = Qs(data_->GetDataName());
  fontText_ = data_->GetDataFont();
}

void CatalogSession::NewReader() {
  Status s;
  std::unique_ptr<classData> reader = data_->OpenReader(&s);
  if (!reader) ReportFailure(s, "classData.OpenReader");
  loader_->SetReader(std::move(reader));
}

Status CatalogSession::Edit(CatalogChange change, const std::function<Status(classData&)>& edit) {
  if (!data_) return Status::NotFound("no catalog is open");
  if (job_) return Status::Refused("The catalog is busy; wait until the running job ends");
  // A long-lived writer arms the damaged-chain budget afresh for each edit.
  data_->file()->ArmWalkBudget();
  Status s = edit(*data_);
  if (s.ok() && !data_->Flush()) s = data_->status();
  if (!data_->ok()) {
    ReportFailure(data_->status(), "frmBrowse2.Edit");
    return data_->status();
  }
  RefreshHeader();
  loader_->MarkStale();
  if (s.ok() || change == CatalogChange::kEverything) Q_EMIT changed(change);
  return s;
}

bool CatalogSession::StartJob(JobSpec spec) {
  if (!data_ || job_) return false;
  data_->file()->ArmWalkBudget();
  job_ = std::make_unique<CatalogJob>(*data_, std::move(spec));
  connect(job_.get(), &CatalogJob::finished, this, &CatalogSession::JobEnded, Qt::QueuedConnection);
  Q_EMIT busyChanged(true);
  Q_EMIT jobStarted(job_.get());
  job_->Start();
  return true;
}

void CatalogSession::CancelJob() {
  if (job_) job_->Cancel();
}

void CatalogSession::JobEnded(const JobOutcome& outcome) {
  std::unique_ptr<CatalogJob> job = std::move(job_);
  const JobSpec& spec = job->spec();
  if (!data_->IsOpen()) {
    // The job could not reopen the catalog (a compaction whose reopen failed).
    ReportFailure(Status::IOError(outcome.message), "basBackup");
    data_.reset();
    loader_->SetReader(nullptr);
    path_.clear();
    name_.clear();
    Q_EMIT busyChanged(false);
    Q_EMIT closed();
    if (spec.done) spec.done(outcome);
    return;
  }
  const std::string before = path_;
  path_ = data_->GetDataFileName();
  RefreshHeader();
  if (spec.changes == CatalogChange::kEverything) {
    NewReader();
  } else {
    loader_->MarkStale();
  }
  if (path_ != before) CatalogHistory::Push(path_);
  Q_EMIT busyChanged(false);
  Q_EMIT jobFinished(outcome);
  if (spec.changes != CatalogChange::kNothing) Q_EMIT changed(spec.changes);
  if (spec.done) spec.done(outcome);
}

void CatalogSession::ReportFailure(const Status& status, const char* routine) {
  ReportError(routine, classData::kDataFileError, status.message(), 3);
  if (failureShown_) return;
  failureShown_ = true;
  std::string text = kDataFileErrorMessage;
  if (!status.message().empty()) text += "\n(" + status.message() + ")";
  prompt_.Message(text, PromptIcon::kCritical);
}

}  // namespace gorvan::ui
