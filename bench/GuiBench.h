#pragma once
// What the desktop program's benchmarks share: a prompt that answers every
// question with Yes and every message with OK, a heartbeat on the GUI thread
// that measures how long the event loop was held up, and a loop that runs
// the events until a condition holds.
#include <unistd.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>

#include "app/Prompt.h"

namespace gorvan::guibench {

// Yes to every question, OK to every message; messages are echoed on stderr
// (except the one given, a success message that would repeat every round).
class YesPrompt final : public Prompt {
 public:
  explicit YesPrompt(bool echo = true, std::string quiet = {})
      : echo_(echo), quiet_(std::move(quiet)) {}
  PromptReply Ask(const PromptRequest& r) override {
    if (echo_ && r.text != quiet_) std::fprintf(stderr, "  (prompt) %s\n", r.text.c_str());
    return {r.buttons == PromptButtons::kOk ? PromptAnswer::kOk : PromptAnswer::kYes, -1, false};
  }
  bool AskText(const std::string&, const std::string&, bool, std::string*) override {
    return false;
  }
  std::string AskFile(const FileRequest&) override { return {}; }
  bool AskPassword(bool, const PasswordJudge&) override { return false; }

 private:
  bool echo_;
  std::string quiet_;
};

// The longest gap between two heartbeats (every 2 ms) since Reset.
class Heartbeat {
 public:
  Heartbeat() {
    timer_.setInterval(2);
    QObject::connect(&timer_, &QTimer::timeout, [this] {
      const qint64 now = clock_.nsecsElapsed();
      if (last_ > 0) worst_ = std::max(worst_, now - last_);
      last_ = now;
    });
    clock_.start();
    timer_.start();
  }
  void Reset() {
    last_ = clock_.nsecsElapsed();
    worst_ = 0;
  }
  double WorstMs() const { return worst_ / 1e6; }

 private:
  QTimer timer_;
  QElapsedTimer clock_;
  qint64 last_ = 0;
  qint64 worst_ = 0;
};

// Runs the event loop until done() holds; the time it took in ms, or -1 when
// it gave up after limitMs.
inline double RunUntil(const std::function<bool()>& done, int limitMs = 3600000) {
  QElapsedTimer t;
  t.start();
  while (!done()) {
    if (t.elapsed() > limitMs) return -1;
    QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
    if (!done()) usleep(100);
  }
  return t.nsecsElapsed() / 1e6;
}

}  // namespace gorvan::guibench
