#pragma once
// WalkProgress: the terminal side of a long catalog walk (export, compact,
// back up, save as, merge) — a progress line on stderr when it is a terminal,
// and Ctrl-C (or SIGTERM) turned into the walk's cancel flag for as long as the
// object lives.

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <string>

#include "catalog/CatalogCopy.h"
#include "catalog/TextCodec.h"

namespace gorvan::cli {

class WalkProgress {
 public:
  explicit WalkProgress(bool quiet) : show_(!quiet && ::isatty(STDERR_FILENO)) {
    Flag().store(false);
    struct sigaction sa{};
    sa.sa_handler = OnInterrupt;
    sigemptyset(&sa.sa_mask);
    sigaction(SIGINT, &sa, &oldInt_);
    sigaction(SIGTERM, &sa, &oldTerm_);
    hooks_.cancel = &Flag();
    if (!show_) return;
    hooks_.setRange = [this](int64_t max) { max_ = max; };
    hooks_.setValue = [this](int64_t v) {
      value_ = v;
      Draw(false);
    };
    hooks_.setCaption = [this](const std::string& c) {
      caption_ = TextCodec::ForDisplay(c);
      for (char& ch : caption_) {
        if (ch == '\n' || ch == '\r' || ch == '\t') ch = ' ';
      }
      if (caption_.size() > 60) caption_ = caption_.substr(0, 57) + "...";
      Draw(true);
    };
  }
  ~WalkProgress() {
    Clear();
    sigaction(SIGINT, &oldInt_, nullptr);
    sigaction(SIGTERM, &oldTerm_, nullptr);
  }
  WalkProgress(const WalkProgress&) = delete;
  WalkProgress& operator=(const WalkProgress&) = delete;

  const CopyHooks& hooks() const { return hooks_; }
  bool interrupted() const { return Flag().load(); }
  void Clear() {
    if (shown_) std::fputs("\r\033[K", stderr);
    shown_ = false;
  }

 private:
  static std::atomic<bool>& Flag() {
    static std::atomic<bool> flag{false};
    return flag;
  }
  static void OnInterrupt(int) { Flag().store(true); }

  void Draw(bool force) {
    const auto now = std::chrono::steady_clock::now();
    if (!force && now - last_ < std::chrono::milliseconds(100)) return;
    last_ = now;
    if (max_ > 0) {
      std::fprintf(stderr, "\r\033[K%3d%%  %s", static_cast<int>(100 * value_ / max_),
                   caption_.c_str());
    } else {
      std::fprintf(stderr, "\r\033[K%s", caption_.c_str());
    }
    shown_ = true;
  }

  bool show_;
  bool shown_ = false;
  int64_t max_ = 0;
  int64_t value_ = 0;
  std::string caption_;
  std::chrono::steady_clock::time_point last_{};
  CopyHooks hooks_;
  struct sigaction oldInt_{}, oldTerm_{};
};

}  // namespace gorvan::cli
