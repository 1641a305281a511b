#pragma once
// ViewLoader: the views' reads off the GUI thread. One worker thread holds a
// reader of the open catalog (classData::OpenReader: its own descriptor and
// cursors) and runs the views' read tasks in the order they were asked for;
// each result is handed to its receiver on the GUI thread.
//
// A task has a key: asking again under the same key cancels the older task
// (its stop token is set and its result is dropped), so a view that changes
// its mind never waits for what it no longer shows. Before each task the
// reader takes the catalog's header again when the writer committed since
// (MarkStale) or when the last task failed. A task whose read failed is run
// once more after that reload — the writer may have appended behind the
// reader's back — and only a second failure is reported (readFailed).
//
// Thread contract: every public member on the GUI thread; the work functions
// run on the loader's thread with the reader, the done functions on the GUI
// thread in the receiver's context (dropped when the receiver is gone).

#include <QObject>
#include <QPointer>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>

#include "catalog/Status.h"
#include "catalog/classData.h"

namespace gorvan::ui {

class ViewLoader : public QObject {
  Q_OBJECT

 public:
  explicit ViewLoader(QObject* parent = nullptr);
  ~ViewLoader() override;

  // The reader the next tasks use (null: no catalog; tasks then get no call).
  // Every task asked before is cancelled.
  void SetReader(std::unique_ptr<classData> reader);
  // The writer committed: the reader reloads the header before its next task.
  void MarkStale() { stale_.store(true); }

  // Runs work(reader, stop) on the loader's thread and done(result) on the
  // GUI thread, unless the task was cancelled first.
  template <typename R>
  void Load(QObject* receiver, const std::string& key,
            std::function<R(classData&, const std::stop_token&)> work,
            std::function<void(R&)> done) {
    QPointer<QObject> guard(receiver);
    Enqueue(key, [this, guard, work = std::move(work), done = std::move(done)](
                     classData& reader, const std::stop_token& stop) {
      auto result = std::make_shared<R>(work(reader, stop));
      return std::function<void()>([guard, done, result, stop] {
        if (guard && !stop.stop_requested()) done(*result);
      });
    });
  }
  // Cancels the tasks of key.
  void Cancel(const std::string& key);
  // Tasks queued or running.
  int pending() const;

 Q_SIGNALS:
  // A read failed twice; status says why.
  void readFailed(const gorvan::Status& status);

 private:
  // A task's work: runs on the loader thread and returns what to do on the
  // GUI thread.
  using Work = std::function<std::function<void()>(classData&, const std::stop_token&)>;
  struct Task {
    std::string key;
    std::stop_source stop;
    Work work;
    std::unique_ptr<classData> reader;  // a reader to swap in instead of work
    bool swap = false;
  };

  void Enqueue(const std::string& key, Work work);
  void Run();
  void RunTask(Task& task);

  mutable std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<std::unique_ptr<Task>> queue_;
  Task* running_ = nullptr;
  bool quit_ = false;
  std::atomic<bool> stale_{false};
  std::atomic<int> pending_{0};
  std::unique_ptr<classData> reader_;  // the loader thread's only
  std::thread thread_;
};

}  // namespace gorvan::ui
