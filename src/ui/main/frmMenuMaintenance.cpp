// frmMenu: the maintenance commands — compact, back up, save as and merge —
// each a job on a worker thread with its progress window.
#include <QFileInfo>
#include <QLocale>

#include "catalog/basBackup.h"
#include "ui/main/StatusPanels.h"
#include "ui/main/frmMenu.h"
#include "ui/session/CatalogSession.h"
#include "ui/session/NotifyPrompt.h"
#include "ui/widgets/JobProgressDialog.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

JobOutcome OutcomeOf(const MaintenanceResult& r) {
  JobOutcome o;
  o.status = r.status;
  o.message = r.message;
  o.warnings = r.warnings;
  return o;
}

// The file a backup or save as writes; "" when the user cancelled.
std::string AskTarget(Prompt& prompt, const char* title, const std::string& current) {
  FileRequest r;
  r.title = title;
  r.filter = kBackupFilter;  // "Gorvan Data Files (*.cd)|*.cd"
  r.defaultExtension = "cd";
  r.startPath = Std(QFileInfo(Qs(current)).absolutePath());
  r.save = true;
  return prompt.AskFile(r);
}

}  // namespace

void frmMenu::ShowJobProgress(CatalogJob* job) {
  const JobSpec& spec = job->spec();
  if (progress_) progress_->deleteLater();
  const QString caption = spec.caption;
  panels_->SetJob(caption);
  if (spec.ownWindow) {
    connect(
        &session_, &CatalogSession::jobFinished, this, [this] { panels_->SetJob(QString()); },
        Qt::SingleShotConnection);
    return;
  }
  progress_ =
      new JobProgressDialog(spec.caption, spec.cancelText, spec.showProgress ? 0 : 600, this);
  connect(progress_, &JobProgressDialog::cancelRequested, job, &CatalogJob::Cancel);
  connect(job, &CatalogJob::progress, this, [this, caption](const JobProgress& p) {
    if (progress_) progress_->Report(p);
    panels_->SetJob(p.maximum > 0 ? tr("%1: %2%").arg(caption).arg(p.value * 100 / p.maximum)
                                  : caption);
  });
  connect(
      &session_, &CatalogSession::jobFinished, progress_.data(),
      [this] {
        panels_->SetJob(QString());
        if (progress_) progress_->deleteLater();
      },
      Qt::SingleShotConnection);
}

void frmMenu::TellOutcome(const JobOutcome& outcome, const char* notifyKey) {
  std::string text = outcome.message;
  if (outcome.warnings > 0) {
    text += "\n" + Std(tr("%1 characters could not be stored in this catalog's encoding and "
                          "were written as \"?\".")
                           .arg(outcome.warnings));
  }
  if (outcome.status.ok() && notifyKey) {
    PromptRequest r;
    r.text = text;
    r.notifyKey = notifyKey;
    NotifyPrompt::Ask(session_.prompt(), r, PromptAnswer::kOk);
    return;
  }
  const PromptIcon icon = outcome.status.ok() || outcome.status.IsCancelled()
                              ? PromptIcon::kInformation
                              : PromptIcon::kWarning;
  session_.prompt().Message(text, icon);
}

void frmMenu::FileCompact() {
  if (!session_.writer()) return;
  PromptRequest question;
  question.text = kCompactQuestion;
  question.buttons = PromptButtons::kYesNo;
  question.icon = PromptIcon::kQuestion;
  question.notifyKey = "lNotifyCompact";
  if (NotifyPrompt::Ask(session_.prompt(), question, PromptAnswer::kYes).answer !=
      PromptAnswer::kYes) {
    return;
  }
  JobSpec spec;
  spec.caption = Qs(kCompactCaption);
  spec.cancelText = Qs(kCompactCancelText);
  spec.changes = CatalogChange::kEverything;
  spec.work = [](classData& data, JobControl& job) {
    return OutcomeOf(CompactDataFiles(data, job));
  };
  spec.done = [this](const JobOutcome& o) { TellOutcome(o, nullptr); };
  session_.StartJob(std::move(spec));
}

void frmMenu::FileBackup() {
  if (!session_.writer()) return;
  const std::string target = AskTarget(session_.prompt(), kBackupCaption, session_.path());
  if (target.empty()) return;
  JobSpec spec;
  spec.caption = Qs(kBackupCaption);
  spec.cancelText = Qs(kBackupCancelText);
  spec.changes = CatalogChange::kNothing;
  spec.work = [target](classData& data, JobControl& job) {
    return OutcomeOf(BackupDataFiles(data, target, job));
  };
  spec.done = [this](const JobOutcome& o) { TellOutcome(o, "lNotifyBackup"); };
  session_.StartJob(std::move(spec));
}

void frmMenu::FileSaveAs() {
  if (!session_.writer()) return;
  const std::string target = AskTarget(session_.prompt(), kSaveAsCaption, session_.path());
  if (target.empty()) return;
  JobSpec spec;
  spec.caption = Qs(kSaveAsCaption);
  spec.cancelText = Qs(kSaveAsCancelText);
  spec.changes = CatalogChange::kEverything;
  spec.work = [target](classData& data, JobControl& job) {
    return OutcomeOf(SaveAsDataFiles(data, target, job));
  };
  spec.done = [this](const JobOutcome& o) {
    UpdateCaption();
    TellOutcome(o, "lNotifySaveAs");
  };
  session_.StartJob(std::move(spec));
}

void frmMenu::FileMerge() {
  if (!session_.writer()) return;
  FileRequest r;
  r.title = kMergeTitle;
  r.filter = kMergeFilter;
  r.defaultExtension = "cd";
  r.startPath = Std(QFileInfo(Qs(session_.path())).absolutePath());
  const std::string other = session_.prompt().AskFile(r);
  if (other.empty()) return;
  if (QFileInfo(Qs(other)) == QFileInfo(Qs(session_.path()))) {
    session_.prompt().Message(kMergeWithCurrent, PromptIcon::kWarning);
    return;
  }
  // The other catalog is opened here first, on this thread, so that its
  // read-only question and password dialog are asked under the same rules as
  // any opening; the job then opens it again without asking.
  OpenOptions options;
  options.mustExist = true;
  OpenOutcome probe = CatalogOpener::Open(other, session_.prompt(), options);
  if (!probe.data) {
    session_.prompt().Message(probe.message, PromptIcon::kWarning);
    return;
  }
  probe.data->CloseFiles();

  JobSpec spec;
  spec.caption = Qs(kMergeCaption);
  spec.cancelText = Qs(kMergeCancelText);
  spec.changes = CatalogChange::kStructure;
  spec.work = [other](classData& data, JobControl& job) {
    return OutcomeOf(
        MergeExistingCatalog(data, other, job, [](const std::string&) { return true; }));
  };
  spec.done = [this](const JobOutcome& o) { TellOutcome(o, nullptr); };
  session_.StartJob(std::move(spec));
}

}  // namespace gorvan::ui
