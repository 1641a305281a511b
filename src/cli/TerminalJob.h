#pragma once
// TerminalJob: a long job run from the command line. Ctrl-C (SIGINT) or
// SIGTERM asks the job's stop, and a progress line on stderr, drawn by the
// caller's format, shows how far it got (only when stderr is a terminal and
// --quiet is not given). The signals are taken by a thread of the object's own
// (signalfd), so the stop is asked from an ordinary thread, never from
// a signal handler.

#include <signal.h>

#include <functional>
#include <stop_token>
#include <string>
#include <thread>

#include "catalog/JobControl.h"

namespace gorvan::cli {

class TerminalJob {
 public:
  // The progress line for one report ("" draws nothing).
  using Format = std::function<std::string(const JobProgress&)>;

  TerminalJob(bool quiet, Format format);
  ~TerminalJob();
  TerminalJob(const TerminalJob&) = delete;
  TerminalJob& operator=(const TerminalJob&) = delete;

  JobControl& job() { return job_; }
  bool interrupted() const { return stop_.stop_requested(); }
  // Removes the progress line (before printing anything else).
  void Clear();

  // The line most commands draw: the percentage done and the caption.
  static std::string PercentLine(const JobProgress& p);

 private:
  void Draw(const JobProgress& p);
  void Watch();

  std::stop_source stop_;
  Format format_;
  bool show_;
  bool shown_ = false;
  JobControl job_;
  sigset_t signals_{};
  sigset_t oldMask_{};
  struct sigaction oldInt_{}, oldTerm_{};
  int signalFd_ = -1;  // the two signals, read by the watcher
  int wakeFd_ = -1;    // tells the watcher to end
  std::thread watcher_;
};

// A text for one line of the terminal: line breaks and tabs as blanks, at
// most width characters (the middle left out).
std::string OneLine(std::string_view text, size_t width);

}  // namespace gorvan::cli
