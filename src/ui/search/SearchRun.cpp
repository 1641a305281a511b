#include "ui/search/SearchRun.h"

#include "catalog/classData.h"

namespace gorvan::ui {

SearchRun::SearchRun(std::unique_ptr<classData> reader, SearchOptions options,
                     std::shared_ptr<void> garbage, QObject* parent)
    : QObject(parent),
      reader_(std::move(reader)),
      options_(std::move(options)),
      garbage_(std::move(garbage)) {}

SearchRun::~SearchRun() {
  stop_.request_stop();
  if (thread_.joinable()) thread_.join();
  // Events posted by the worker and not delivered yet go with the object.
}

void SearchRun::Start() {
  if (running_ || thread_.joinable()) return;
  running_ = true;
  thread_ = std::thread([this] { Work(); });
}

std::vector<std::vector<SearchResult>> SearchRun::TakeRows() {
  std::vector<std::vector<SearchResult>> out;
  std::lock_guard<std::mutex> lock(mutex_);
  out.swap(rows_);
  announced_ = false;
  return out;
}

void SearchRun::Work() {
  JobControl job(stop_.get_token(), [this](const JobProgress& p) {
    QMetaObject::invokeMethod(
        this, [this, p] { Q_EMIT progress(p); }, Qt::QueuedConnection);
  });
  CatalogSearch search(*reader_);
  const Status status = search.Run(
      options_,
      [this](const SearchResult& row) {
        bool announce = false;
        {
          std::lock_guard<std::mutex> lock(mutex_);
          if (rows_.empty() || rows_.back().size() >= kBlockRows) {
            rows_.emplace_back();
            rows_.back().reserve(kBlockRows);
          }
          rows_.back().push_back(row);
          announce = !announced_;
          announced_ = true;
        }
        if (announce) {
          QMetaObject::invokeMethod(
              this, [this] { Q_EMIT rowsReady(); }, Qt::QueuedConnection);
        }
      },
      job);
  const qint64 hits = search.hits();
  QMetaObject::invokeMethod(
      this,
      [this, status, hits] {
        running_ = false;
        Q_EMIT finished(status, hits);
      },
      Qt::QueuedConnection);
  // The rows of the search before go now, on this thread, after the hits
  // were announced.
  garbage_.reset();
  ended_.store(true);
}

}  // namespace gorvan::ui
