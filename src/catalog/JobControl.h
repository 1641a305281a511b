#pragma once
// JobControl: the one progress and cancel seam of every long job — scan,
// search, export, compact/backup/save as/merge, the integrity check and the
// physical-size count.
//
// Cancel. The caller owns a std::stop_source and hands the job its token. The
// job tests StopRequested() at every step (a relaxed atomic load), so a stop
// asked before the job starts ends it at its first check, and a stop from any
// other thread ends it at its next one.
//
// Progress. The job tells Due() at every step; it answers true at most about
// thirty times a second (it looks at the clock only every kClockStride steps),
// and only then does the job fill a JobProgress and pass it to Report(). The
// job's last report goes through Final(), which is never dropped. Every string
// in a JobProgress is an owned value, so a sink may move it to another thread.
//
// Thread contract: a JobControl belongs to the job's thread; the sink is
// called on that thread. Only the stop token is shared.

#include <chrono>
#include <cstdint>
#include <functional>
#include <stop_token>
#include <string>

namespace gorvan {

// What a job reports. Each job documents which fields it fills; the rest stay
// at their defaults.
struct JobProgress {
  std::string caption;    // "Processing : <disc>", the folder being read, ...
  std::string detail;     // the entry just read, an archive member
  int64_t value = 0;      // steps done, for a progress bar
  int64_t maximum = 0;    // steps planned; 0 when unknown
  int64_t folders = 0;
  int64_t files = 0;
  double bytes = 0;
  int64_t hits = 0;
  int64_t warnings = 0;
  bool final = false;     // the job's last report
};

class JobControl {
 public:
  using Sink = std::function<void(const JobProgress&)>;
  // How often reports are due: the clock is read every `stride` steps and a
  // report is due once `interval` has passed since the last one.
  struct Pace {
    uint32_t stride;
    std::chrono::milliseconds interval;
  };
  static constexpr Pace kNormalPace{64, std::chrono::milliseconds(33)};
  // Every step reports: for tests that act at an exact step.
  static constexpr Pace kEveryStep{1, std::chrono::milliseconds(0)};

  // No cancel, no progress.
  JobControl() = default;
  explicit JobControl(std::stop_token stop, Sink sink = {}, Pace pace = kNormalPace)
      : stop_(std::move(stop)), sink_(std::move(sink)), pace_(pace) {}

  bool StopRequested() const { return stop_.stop_requested(); }
  const std::stop_token& token() const { return stop_; }
  bool HasSink() const { return static_cast<bool>(sink_); }

  // True when a report is due now; cheap enough for every step of a walk.
  bool Due() {
    if (!sink_ || ++calls_ % pace_.stride != 0) return false;
    const auto now = std::chrono::steady_clock::now();
    if (pace_.interval.count() > 0 && now - last_ < pace_.interval) return false;
    last_ = now;
    return true;
  }
  // Reports now, whatever Due() says (a job's first report, a new disc).
  void Report(const JobProgress& p) {
    if (sink_) sink_(p);
  }
  void Final(JobProgress p) {
    p.final = true;
    Report(p);
  }

 private:
  std::stop_token stop_;
  Sink sink_;
  Pace pace_ = kNormalPace;
  uint32_t calls_ = 0;
  std::chrono::steady_clock::time_point last_{};
};

}  // namespace gorvan
