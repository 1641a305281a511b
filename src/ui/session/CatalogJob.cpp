#include "ui/session/CatalogJob.h"

#include <QMetaObject>

namespace gorvan::ui {

CatalogJob::CatalogJob(classData& data, JobSpec spec, QObject* parent)
    : QObject(parent), data_(data), spec_(std::move(spec)) {}

CatalogJob::~CatalogJob() {
  if (thread_.joinable()) {
    stop_.request_stop();
    thread_.join();
  }
}

void CatalogJob::Start() {
  thread_ = std::thread([this] {
    JobOutcome outcome;
    {
      // The catalog is this thread's until the block ends: the end is posted
      // only after it was handed back.
      classData::ThreadHandover handover(data_);
      JobControl job(stop_.get_token(), [this](const JobProgress& p) {
        QMetaObject::invokeMethod(
            this, [this, p] { Q_EMIT progress(p); }, Qt::QueuedConnection);
      });
      outcome = spec_.work(data_, job);
    }
    QMetaObject::invokeMethod(
        this,
        [this, outcome] {
          thread_.join();
          Q_EMIT finished(outcome);
        },
        Qt::QueuedConnection);
  });
}

}  // namespace gorvan::ui
