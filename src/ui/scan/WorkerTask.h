#pragma once
// WorkerTask: one piece of blocking work of a dialog — reading a drive's
// table of contents, looking a disc up — on a thread of its own, its result
// handed to the GUI thread. Stop() asks the work's stop and lets the thread
// end on its own, so the dialog never waits for a drive or a server; a result
// that arrives after Stop() (or after the receiver is gone) is dropped.
//
// Thread contract: Run and Stop on the GUI thread. The work must not touch
// widgets or anything the receiver owns.

#include <QCoreApplication>
#include <QObject>
#include <QPointer>
#include <functional>
#include <memory>
#include <stop_token>
#include <thread>

namespace gorvan::ui {

class WorkerTask {
 public:
  WorkerTask() = default;
  ~WorkerTask() { Stop(); }
  WorkerTask(const WorkerTask&) = delete;
  WorkerTask& operator=(const WorkerTask&) = delete;

  // REQUIRES: the task belongs to receiver (it is read when a result arrives).
  // Stops the task running, then runs work(stop) on a new thread and
  // done(result) on the GUI thread once it returns (unless stopped first).
  template <typename R>
  void Run(QObject* receiver, std::function<R(std::stop_token)> work,
           std::function<void(R&)> done) {
    Stop();
    stop_ = std::make_shared<std::stop_source>();
    running_ = true;
    QPointer<QObject> guard(receiver);
    std::shared_ptr<std::stop_source> stop = stop_;
    bool* running = &running_;
    std::thread([guard, stop, running, work = std::move(work), done = std::move(done)] {
      auto result = std::make_shared<R>(work(stop->get_token()));
      QMetaObject::invokeMethod(
          qApp,
          [guard, stop, running, done, result] {
            // The task was stopped (and maybe replaced): its result is stale.
            if (!guard || stop->stop_requested()) return;
            *running = false;
            done(*result);
          },
          Qt::QueuedConnection);
    }).detach();
  }

  // Asks the running task to stop; its result will be dropped.
  void Stop() {
    if (stop_) stop_->request_stop();
    stop_.reset();
    running_ = false;
  }
  bool running() const { return running_; }

 private:
  std::shared_ptr<std::stop_source> stop_;
  bool running_ = false;
};

}  // namespace gorvan::ui
