#include "ui/options/BackgroundTask.h"

#include <QMetaObject>

namespace gorvan::ui {

BackgroundTask::~BackgroundTask() { Stop(); }

void BackgroundTask::Post(std::function<void()> f) {
  // Queued on this object: a task deleted before the event runs drops it.
  QMetaObject::invokeMethod(this, std::move(f), Qt::QueuedConnection);
}

void BackgroundTask::Stop() {
  ++generation_;
  running_ = false;
  if (thread_.joinable()) {
    thread_.request_stop();
    thread_.join();
  }
}

}  // namespace gorvan::ui
