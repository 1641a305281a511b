#pragma once
// SearchRun: one catalog search on a worker thread of its own, reading the
// catalog through a reader of its own (classData::OpenReader), so the user
// keeps browsing — and the views keep reading — while it runs.
//
// Hits collect in a buffer that the GUI thread takes in batches: the worker
// signals rowsReady() once when the buffer turns non-empty, and again only
// after TakeRows() emptied it, so however fast hits come the window is asked
// at most once per pass of its event loop. Progress (JobControl's pace) and
// the end are posted to the GUI thread the same way; finished() comes after
// the last rowsReady().
//
// Stop() asks the search's stop; the walk ends at its next check and every
// hit found before stands. Destroying a SearchRun stops it and waits for its
// thread (at most one step of the walk).
//
// Thread contract: every public member on the GUI thread.

#include <QObject>
#include <atomic>
#include <memory>
#include <mutex>
#include <stop_token>
#include <thread>
#include <vector>

#include "catalog/JobControl.h"
#include "catalog/Status.h"
#include "search/CatalogSearch.h"
#include "search/SearchResult.h"

namespace gorvan {
class classData;
}

namespace gorvan::ui {

class SearchRun : public QObject {
  Q_OBJECT

 public:
  // garbage (the rows of the search before) is freed on the worker thread
  // once the search has ended, not on the GUI thread.
  SearchRun(std::unique_ptr<classData> reader, SearchOptions options,
            std::shared_ptr<void> garbage = {}, QObject* parent = nullptr);
  ~SearchRun() override;

  void Start();
  void Stop() { stop_.request_stop(); }
  bool running() const { return running_; }
  // The thread has ended (also freed what it was given): destroying the run
  // waits for nothing.
  bool ended() const { return ended_.load(); }
  // The hits found since the last call, in the order found.
  // In blocks of at most kBlockRows, each filled in place and never moved.
  std::vector<std::vector<SearchResult>> TakeRows();

  static constexpr size_t kBlockRows = 1024;

 Q_SIGNALS:
  void rowsReady();
  void progress(const gorvan::JobProgress& p);
  // The search ended: OK, Cancelled when stopped, or why it failed.
  void finished(const gorvan::Status& status, qint64 hits);

 private:
  void Work();

  std::unique_ptr<classData> reader_;
  SearchOptions options_;
  std::shared_ptr<void> garbage_;
  std::stop_source stop_;
  std::thread thread_;
  bool running_ = false;
  std::atomic<bool> ended_{false};

  std::mutex mutex_;
  // Found, not taken yet: blocks of reserved room, so a batch of many
  // thousand rows grows without moving the rows it holds.
  std::vector<std::vector<SearchResult>> rows_;
  bool announced_ = false;  // rowsReady() is on its way
};

}  // namespace gorvan::ui
