#pragma once
// ReaderJob: a read-only job over the open catalog — an export, the gathering
// of a report — on a worker thread of its own with a reader of its own
// (classData::OpenReader), so the user keeps browsing and the commands that
// write stay available while it runs.
//
// The reader is made on the GUI thread from the session's catalog (which
// flushes what the writer buffered), handed to the worker, and closed there.
// Progress (paced by JobControl) is copied and posted to the GUI thread;
// Cancel asks the job's stop; a job destroyed while running is stopped and
// waited for. The job's result stays on the worker until finished() is
// posted, so the GUI thread reads what the work filled in only after it.
//
// Thread contract: every public member on the GUI thread; work runs on the
// worker with the reader and never touches a widget.

#include <QObject>
#include <functional>
#include <memory>
#include <stop_token>
#include <thread>

#include "catalog/JobControl.h"
#include "catalog/Status.h"
#include "catalog/classData.h"

namespace gorvan::ui {

class CatalogSession;

inline constexpr const char* kCatalogBusy = "The catalog is busy; wait until the running job ends";

class ReaderJob : public QObject {
  Q_OBJECT

 public:
  using Work = std::function<Status(classData& reader, JobControl& job)>;

  // Opens a reader of session's catalog for work. On failure returns null with
  // the reason: nothing open, a job holding the catalog (kCatalogBusy), or
  // the reader could not be opened. The job does not start until Start().
  static std::unique_ptr<ReaderJob> Open(CatalogSession& session, Work work, Status* status);
  ~ReaderJob() override;

  void Start();
  void Cancel() { stop_.request_stop(); }
  bool cancelRequested() const { return stop_.stop_requested(); }
  bool running() const { return thread_.joinable(); }

 Q_SIGNALS:
  void progress(const gorvan::JobProgress& p);
  // The work's status (Cancelled when it gave up on a stop).
  void finished(const gorvan::Status& status);

 private:
  ReaderJob(std::unique_ptr<classData> reader, Work work);

  std::unique_ptr<classData> reader_;
  Work work_;
  std::stop_source stop_;
  std::thread thread_;
};

}  // namespace gorvan::ui
