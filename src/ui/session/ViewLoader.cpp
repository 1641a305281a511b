#include "ui/session/ViewLoader.h"

#include <QMetaObject>

namespace gorvan::ui {

ViewLoader::ViewLoader(QObject* parent) : QObject(parent) {
  thread_ = std::thread([this] { Run(); });
}

ViewLoader::~ViewLoader() {
  {
    std::lock_guard lock(mutex_);
    quit_ = true;
    for (auto& t : queue_) t->stop.request_stop();
    if (running_) running_->stop.request_stop();
  }
  wake_.notify_all();
  thread_.join();
}

void ViewLoader::SetReader(std::unique_ptr<classData> reader) {
  auto task = std::make_unique<Task>();
  task->swap = true;
  task->reader = std::move(reader);
  {
    std::lock_guard lock(mutex_);
    for (auto& t : queue_) t->stop.request_stop();
    if (running_) running_->stop.request_stop();
    queue_.push_back(std::move(task));
    ++pending_;
  }
  wake_.notify_all();
}

void ViewLoader::Enqueue(const std::string& key, Work work) {
  auto task = std::make_unique<Task>();
  task->key = key;
  task->work = std::move(work);
  {
    std::lock_guard lock(mutex_);
    for (auto& t : queue_) {
      if (t->key == key) t->stop.request_stop();
    }
    if (running_ && running_->key == key) running_->stop.request_stop();
    queue_.push_back(std::move(task));
    ++pending_;
  }
  wake_.notify_all();
}

void ViewLoader::Cancel(const std::string& key) {
  std::lock_guard lock(mutex_);
  for (auto& t : queue_) {
    if (t->key == key) t->stop.request_stop();
  }
  if (running_ && running_->key == key) running_->stop.request_stop();
}

int ViewLoader::pending() const { return pending_.load(); }

void ViewLoader::Run() {
  for (;;) {
    std::unique_ptr<Task> task;
    {
      std::unique_lock lock(mutex_);
      wake_.wait(lock, [this] { return quit_ || !queue_.empty(); });
      if (quit_) break;
      task = std::move(queue_.front());
      queue_.pop_front();
      running_ = task.get();
    }
    RunTask(*task);
    {
      std::lock_guard lock(mutex_);
      running_ = nullptr;
    }
    --pending_;
  }
  // The reader belongs to this thread; it goes with it.
  reader_.reset();
}

void ViewLoader::RunTask(Task& task) {
  if (task.swap) {
    reader_ = std::move(task.reader);
    if (reader_) {
      reader_->file()->SetOwner(std::this_thread::get_id());
      stale_.store(false);
    }
    return;
  }
  if (!reader_ || task.stop.stop_requested()) return;
  const std::stop_token stop = task.stop.get_token();
  std::function<void()> deliver;
  for (int attempt = 0; attempt < 2; ++attempt) {
    // A reader takes the header again when the writer committed since its last
    // task, or when that task failed (the error is sticky until then).
    if (stale_.exchange(false) || !reader_->ok()) reader_->ReloadHeader();
    // A long-lived reader arms the damaged-chain budget afresh for each read.
    if (reader_->IsOpen()) reader_->file()->ArmWalkBudget();
    deliver = task.work(*reader_, stop);
    if (reader_->ok() || stop.stop_requested()) break;
    stale_.store(true);
  }
  // What was read is shown first, then the failure is told.
  if (deliver) QMetaObject::invokeMethod(this, std::move(deliver), Qt::QueuedConnection);
  if (!reader_->ok() && !stop.stop_requested()) {
    const Status failure = reader_->status();
    QMetaObject::invokeMethod(
        this, [this, failure] { Q_EMIT readFailed(failure); }, Qt::QueuedConnection);
  }
}

}  // namespace gorvan::ui
