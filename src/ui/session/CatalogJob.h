#pragma once
// CatalogJob: one long job over the open catalog — compaction, backup, save
// as, merge, a scan, a folder rename — on a worker thread of its own.
//
// The job takes the catalog for its thread (classData::ThreadHandover) and
// gives it back before it reports its end, so the GUI thread touches the
// catalog again only once the finished signal arrives. Progress reports
// (already paced by JobControl to a few dozen a second) are copied and posted
// to the GUI thread. Cancel asks the job's stop from the GUI thread; a job
// destroyed while running is stopped and waited for.

#include <QObject>
#include <QString>
#include <functional>
#include <stop_token>
#include <thread>

#include "catalog/JobControl.h"
#include "catalog/Status.h"
#include "catalog/classData.h"

namespace gorvan::ui {

// How a job ended.
struct JobOutcome {
  Status status;
  std::string message;  // what to tell the user ("Data Compaction Successful")
  size_t warnings = 0;  // characters stored as "?"
  int32_t id = 0;       // a record the job made (a scanned disc), 0 if none
};

// What the views reload when a job or an edit ends.
enum class CatalogChange {
  kNothing,     // a copy elsewhere (backup)
  kHeader,      // the catalog's own texts (name, notes, font, password)
  kEntries,     // the texts of folders or files (notes)
  kStructure,   // categories or discs added, moved, renamed or removed
  kEverything,  // the file was replaced or reopened (compaction, save as): every id may differ
};

struct JobSpec {
  QString caption;     // the progress window's title ("Compacting Data File")
  QString cancelText;  // its cancel button ("Cancel Data Compaction")
  bool showProgress = true;
  // The feature shows a progress window of its own (a scan): the main window
  // shows only its status panel.
  bool ownWindow = false;
  CatalogChange changes = CatalogChange::kStructure;
  // Runs on the worker with the catalog; never touches a widget.
  std::function<JobOutcome(classData& data, JobControl& job)> work;
  // Runs on the GUI thread once the views were told what changed.
  std::function<void(const JobOutcome& outcome)> done;
};

class CatalogJob : public QObject {
  Q_OBJECT

 public:
  CatalogJob(classData& data, JobSpec spec, QObject* parent = nullptr);
  ~CatalogJob() override;

  void Start();
  void Cancel() { stop_.request_stop(); }
  bool cancelRequested() const { return stop_.stop_requested(); }
  const JobSpec& spec() const { return spec_; }

 Q_SIGNALS:
  void progress(const gorvan::JobProgress& p);
  void finished(const gorvan::ui::JobOutcome& outcome);

 private:
  classData& data_;
  JobSpec spec_;
  std::stop_source stop_;
  std::thread thread_;
};

}  // namespace gorvan::ui
