#include "ui/export/ReaderJob.h"

#include <QMetaObject>

#include "ui/session/CatalogSession.h"

namespace gorvan::ui {

std::unique_ptr<ReaderJob> ReaderJob::Open(CatalogSession& session, Work work, Status* status) {
  if (!session.isOpen()) {
    *status = Status::NotFound("no catalog is open");
    return nullptr;
  }
  classData* writer = session.writer();
  if (!writer) {
    *status = Status::Refused(kCatalogBusy);
    return nullptr;
  }
  std::unique_ptr<classData> reader = writer->OpenReader(status);
  if (!reader) return nullptr;
  *status = Status::OK();
  return std::unique_ptr<ReaderJob>(new ReaderJob(std::move(reader), std::move(work)));
}

ReaderJob::ReaderJob(std::unique_ptr<classData> reader, Work work)
    : reader_(std::move(reader)), work_(std::move(work)) {}

ReaderJob::~ReaderJob() {
  if (thread_.joinable()) {
    stop_.request_stop();
    thread_.join();
  }
}

void ReaderJob::Start() {
  if (thread_.joinable() || !reader_) return;
  thread_ = std::thread([this, reader = std::move(reader_)]() mutable {
    Status status;
    {
      // The reader is this thread's from here to its end.
      reader->file()->SetOwner(std::this_thread::get_id());
      JobControl job(stop_.get_token(), [this](const JobProgress& p) {
        QMetaObject::invokeMethod(
            this, [this, p] { Q_EMIT progress(p); }, Qt::QueuedConnection);
      });
      status = work_(*reader, job);
      reader->CloseFiles();
      reader.reset();
    }
    QMetaObject::invokeMethod(
        this,
        [this, status] {
          thread_.join();
          Q_EMIT finished(status);
        },
        Qt::QueuedConnection);
  });
}

}  // namespace gorvan::ui
