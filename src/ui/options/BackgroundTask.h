#pragma once
// BackgroundTask: one piece of work on a thread of its own (a disc lookup, a
// request to the support server), so the window that started it stays
// responsive. The work gets a stop token; what it reports (Post) and its
// result reach the GUI thread through the task's event queue, and are
// dropped when the task — and so the window that owns it — is gone.
//
// Thread contract: Start, Stop and the destructor on the GUI thread; Post
// from the work.

#include <QObject>
#include <functional>
#include <memory>
#include <stop_token>
#include <thread>

namespace gorvan::ui {

class BackgroundTask : public QObject {
  Q_OBJECT

 public:
  explicit BackgroundTask(QObject* parent = nullptr) : QObject(parent) {}
  // Asks the work to stop and waits for it.
  ~BackgroundTask() override;

  // Runs work(stop) on a new thread and then done(result) on the GUI thread.
  // A task already running is stopped first (its result is dropped).
  template <typename Result>
  void Start(std::function<Result(std::stop_token)> work, std::function<void(Result&)> done) {
    Stop();
    const unsigned generation = ++generation_;
    running_ = true;
    thread_ = std::jthread([this, generation, work = std::move(work),
                            done = std::move(done)](std::stop_token stop) mutable {
      auto result = std::make_shared<Result>(work(stop));
      Post([this, generation, result, done = std::move(done)]() mutable {
        if (generation != generation_) return;
        running_ = false;
        done(*result);
      });
    });
  }

  // Runs f on the GUI thread, later, unless the task is gone by then.
  void Post(std::function<void()> f);
  // Asks the running work to stop; its result is not delivered.
  void Stop();
  bool running() const { return running_; }

 private:
  std::jthread thread_;
  unsigned generation_ = 0;
  bool running_ = false;
};

}  // namespace gorvan::ui
