#include "cli/TerminalJob.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>

#include "catalog/TextCodec.h"

namespace gorvan::cli {

TerminalJob::TerminalJob(bool quiet, Format format)
    : format_(std::move(format)), show_(!quiet && ::isatty(STDERR_FILENO)) {
  job_ = JobControl(stop_.get_token(),
                    show_ ? JobControl::Sink([this](const JobProgress& p) { Draw(p); })
                          : JobControl::Sink());
  sigemptyset(&signals_);
  sigaddset(&signals_, SIGINT);
  sigaddset(&signals_, SIGTERM);
  // A program started in the background of a script has SIGINT ignored, and
  // an ignored signal is dropped before anyone can wait for it: a handler of
  // our own makes it pending instead.
  struct sigaction sa{};
  sa.sa_handler = [](int) {};
  sigemptyset(&sa.sa_mask);
  sigaction(SIGINT, &sa, &oldInt_);
  sigaction(SIGTERM, &sa, &oldTerm_);
  // Blocked here before the watcher starts, so the watcher inherits the mask
  // and reads the signals from its signalfd.
  pthread_sigmask(SIG_BLOCK, &signals_, &oldMask_);
  signalFd_ = ::signalfd(-1, &signals_, SFD_CLOEXEC);
  wakeFd_ = ::eventfd(0, EFD_CLOEXEC);
  watcher_ = std::thread([this] { Watch(); });
}

TerminalJob::~TerminalJob() {
  const uint64_t one = 1;
  if (::write(wakeFd_, &one, sizeof one) < 0) {
    // Without the wake-up the watcher still ends at its next poll time-out.
  }
  watcher_.join();
  ::close(signalFd_);
  ::close(wakeFd_);
  Clear();
  // A signal that came after the job ended stays the job's: it is taken
  // here rather than delivered to the old disposition.
  const timespec none{0, 0};
  while (sigtimedwait(&signals_, nullptr, &none) > 0) stop_.request_stop();
  sigaction(SIGINT, &oldInt_, nullptr);
  sigaction(SIGTERM, &oldTerm_, nullptr);
  pthread_sigmask(SIG_SETMASK, &oldMask_, nullptr);
}

void TerminalJob::Watch() {
  pollfd fds[2] = {{signalFd_, POLLIN, 0}, {wakeFd_, POLLIN, 0}};
  for (;;) {
    const int n = ::poll(fds, 2, 1000);
    if (n < 0 && errno != EINTR) return;
    if (fds[1].revents != 0) return;
    if (fds[0].revents != 0) {
      signalfd_siginfo info;
      if (::read(signalFd_, &info, sizeof info) == static_cast<ssize_t>(sizeof info)) {
        stop_.request_stop();
      }
    }
  }
}

void TerminalJob::Draw(const JobProgress& p) {
  const std::string line = format_ ? format_(p) : PercentLine(p);
  if (line.empty()) return;
  std::fprintf(stderr, "\r\033[K%s", line.c_str());
  shown_ = true;
}

void TerminalJob::Clear() {
  if (shown_) std::fputs("\r\033[K", stderr);
  shown_ = false;
}

std::string TerminalJob::PercentLine(const JobProgress& p) {
  std::string line;
  if (p.maximum > 0) {
    line = std::to_string(100 * p.value / p.maximum) + "%  ";
    if (line.size() < 6) line.insert(0, 6 - line.size(), ' ');
  }
  return line + OneLine(p.caption, 60);
}

std::string OneLine(std::string_view text, size_t width) {
  std::string line = TextCodec::ForDisplay(text);
  for (char& c : line) {
    if (c == '\n' || c == '\r' || c == '\t') c = ' ';
  }
  if (line.size() > width && width > 3) {
    const size_t keep = width - 3;
    line = line.substr(0, keep / 2) + "..." + line.substr(line.size() - (keep - keep / 2));
  }
  return line;
}

}  // namespace gorvan::cli
