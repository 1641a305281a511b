#pragma once
// CatalogSession: the open catalog of the desktop program and the only way its
// views and commands touch it.
//
// The session owns the catalog (the writer) on the GUI thread. It opens and
// closes it through the shared open workflow (CatalogOpener: the read-only
// question, the password dialog, the product's messages), keeps the history,
// and gives:
// - writer(): the catalog for a short edit on the GUI thread (a few record
//   writes: a rename, notes, a new category), only while no job runs;
// - StartJob(): a long job on a worker thread that takes the catalog for its
//   length. While it runs writer() is null, busy() is true and the commands
//   that write are disabled; when it ends the views are told what changed;
// - loader(): the views' reads, on a thread of their own with a reader of the
//   catalog, refreshed after every commit.
//
// A catalog that fails while open (a damaged chain, a disk that is gone) is
// reported once with the data-file error and logged; the window stays usable.
//
// Thread contract: the GUI thread.

#include <QObject>
#include <QString>
#include <functional>
#include <memory>
#include <string>

#include "app/CatalogOpener.h"
#include "app/Prompt.h"
#include "catalog/classData.h"
#include "ui/session/CatalogJob.h"

namespace gorvan::ui {

class ViewLoader;

inline constexpr const char* kNothingToDisplay = "Nothing To Display?";
inline constexpr const char* kProgramName = "Gorvan";

class CatalogSession : public QObject {
  Q_OBJECT

 public:
  explicit CatalogSession(Prompt& prompt, QObject* parent = nullptr);
  ~CatalogSession() override;

  Prompt& prompt() { return prompt_; }
  ViewLoader& loader() { return *loader_; }

  bool isOpen() const { return data_ != nullptr; }
  // A job holds the catalog.
  bool busy() const { return job_ != nullptr; }
  CatalogJob* job() const { return job_.get(); }
  // The open catalog's file; "" when none.
  const std::string& path() const { return path_; }
  // The catalog's name as the header holds it; "" when none is open.
  QString catalogName() const { return name_; }
  // The window caption: the catalog's name, " - ", "Gorvan"; "Gorvan" alone
  // when nothing is open.
  QString caption() const;
  // The catalog's header as of the last commit (only while open).
  const HeaderRecord& header() const { return header_; }
  // The catalog's font text ("" for the default font).
  const std::string& fontText() const { return fontText_; }

  // Opens path (creating it when it does not exist, unless options say it
  // must), closing the open catalog first; pushes it onto the history. On
  // refusal shows "Nothing To Display?" and the reason and stays empty.
  bool Open(const std::string& path, const OpenOptions& options = {});
  // Closes the open catalog (refused while a job runs).
  bool Close();

  // The catalog for a short edit on the GUI thread; null while a job runs or
  // when nothing is open.
  classData* writer() { return job_ ? nullptr : data_.get(); }
  // Runs a short edit with the writer and tells the views what changed. A
  // refusal (InvalidArgument, NotFound) is returned as it is; a failure of the
  // file itself is reported once with the data-file error. Refused when busy.
  Status Edit(CatalogChange change, const std::function<Status(classData&)>& edit);

  // Starts a job on a worker thread; false while another runs or when
  // nothing is open.
  bool StartJob(JobSpec spec);
  void CancelJob();

  // A read or write of the catalog failed: the data-file error is shown once
  // per opened catalog and every failure is logged.
  void ReportFailure(const Status& status, const char* routine);

 Q_SIGNALS:
  void opened();
  void closed();
  // After an edit or a job: what the views reload.
  void changed(gorvan::ui::CatalogChange change);
  void jobStarted(gorvan::ui::CatalogJob* job);
  void jobFinished(const gorvan::ui::JobOutcome& outcome);
  void busyChanged(bool busy);

 private:
  void Adopt(std::unique_ptr<classData> data);
  void RefreshHeader();
  void NewReader();
  void JobEnded(const JobOutcome& outcome);

  Prompt& prompt_;
  std::unique_ptr<classData> data_;
  std::unique_ptr<CatalogJob> job_;
  ViewLoader* loader_;
  std::string path_;
  QString name_;
  std::string fontText_;
  HeaderRecord header_;
  bool failureShown_ = false;
};

}  // namespace gorvan::ui
