// gorvan-cli discid, cddb, drives, eject and watch: audio CDs and optical drives.
#include <signal.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <atomic>
#include <chrono>
#include <iostream>
#include <memory>
#include <thread>

#include "audio/DiscId.h"
#include "audio/DiscLookup.h"
#include "audio/OpticalDrives.h"
#include "audio/TocReader.h"
#include "audio/basEjectCd.h"
#include "audio/cCdChanger.h"
#include "cli/CliContext.h"
#include "cli/Commands.h"

namespace gorvan::cli {
namespace {

struct TocOptions {
  std::string drive;
  std::vector<std::string> values;  // OFFSET... LEADOUT
  bool musicBrainz = false;
};

struct CddbOptions {
  std::string server;
  std::string local;
  std::string email;
};

// The table of contents from --drive or from the numbers given. On failure
// returns the exit code (2 for unusable arguments, 1 for a drive that could
// not be read) after printing why.
int GetToc(const CliContext& ctx, const TocOptions& o, DiscToc* toc) {
  if (o.drive.empty() == o.values.empty()) {
    return ctx.Fail("give either --drive DEV or the track offsets and the lead-out", kExitUsage);
  }
  std::string error;
  if (!o.drive.empty()) {
    if (!TocReader::ReadWithMode(TocReader::kAutomatic, o.drive, &CdDevice::Open, toc, &error)) {
      return ctx.Fail(o.drive + ": " + error);
    }
    return kExitOk;
  }
  std::string contents;
  for (const std::string& v : o.values) contents += v + " ";
  if (!DiscToc::FromContents(contents, toc, &error)) return ctx.Fail(error, kExitUsage);
  if (const Status s = toc->Check(); !s.ok()) return ctx.Fail(s.message(), kExitUsage);
  return kExitOk;
}

// Ctrl-C and SIGTERM turned into a stop request for as long as the object lives.
class InterruptStop {
 public:
  InterruptStop() {
    Flag().store(false);
    struct sigaction sa {};
    sa.sa_handler = [](int) { Flag().store(true); };
    sigemptyset(&sa.sa_mask);
    sigaction(SIGINT, &sa, &oldInt_);
    sigaction(SIGTERM, &sa, &oldTerm_);
    // A stop cannot be requested from a signal handler; a watcher does it.
    watcher_ = std::jthread([this](std::stop_token done) {
      while (!done.stop_requested()) {
        if (Flag().load()) {
          source_.request_stop();
          return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
      }
    });
  }
  ~InterruptStop() {
    watcher_.request_stop();
    watcher_.join();
    sigaction(SIGINT, &oldInt_, nullptr);
    sigaction(SIGTERM, &oldTerm_, nullptr);
  }
  std::stop_token token() const { return source_.get_token(); }

 private:
  static std::atomic<bool>& Flag() {
    static std::atomic<bool> flag{false};
    return flag;
  }
  std::stop_source source_;
  std::jthread watcher_;
  struct sigaction oldInt_ {
  }, oldTerm_{};
};

std::string OneLine(std::string text) {
  for (char& c : text) {
    if (c == '\r' || c == '\n' || c == '\t') c = ' ';
  }
  return text;
}

int DiscIdCommand(const CliContext& ctx, const TocOptions& o) {
  DiscToc toc;
  if (const int code = GetToc(ctx, o, &toc); code != kExitOk) return code;
  std::cout << DiscId::FreeDb(toc) << "\n";
  if (o.musicBrainz) std::cout << DiscId::MusicBrainz(toc.AudioSession()) << "\n";
  return kExitOk;
}

int CddbCommand(const CliContext& ctx, const TocOptions& o, const CddbOptions& c) {
  DiscToc toc;
  if (const int code = GetToc(ctx, o, &toc); code != kExitOk) return code;
  FreeDbSettings settings;
  settings.enabled = true;
  settings.useDatabase = !c.local.empty();
  settings.databasePath = c.local;
  settings.useUrl = c.local.empty() || !c.server.empty();
  settings.url = c.server;
  settings.email = c.email;
  settings.musicBrainz = o.musicBrainz;
  InterruptStop interrupt;
  const DiscLookupResult r = DiscLookup::Run(settings, toc, DefaultHttpFetch(), interrupt.token(),
                                             [&ctx](const std::string& line) {
                                               if (!ctx.quiet && ::isatty(STDERR_FILENO))
                                                 std::cerr << line << "\n";
                                             });
  if (r.cancelled) return ctx.Fail("Cancelled", kExitCancelled);
  for (const auto& [number, text] : r.errors) ctx.Fail(text + " (" + std::to_string(number) + ")");
  if (!r.found) {
    return r.errors.empty() ? ctx.Fail("No entry found for disc " + r.info.discId) : kExitFailure;
  }
  const DiscInfo& i = r.info;
  std::cout << "id: " << i.discId << "\ncategory: " << OneLine(i.category)
            << "\nartist: " << OneLine(i.artist) << "\nalbum: " << OneLine(i.album)
            << "\nyear: " << OneLine(i.year) << "\ngenre: " << OneLine(i.genre)
            << "\nlength: " << SecondsToTimeString(i.albumSeconds) << "\n";
  for (size_t n = 0; n < i.tracks.size(); ++n) {
    std::cout << "track " << n + 1 << ": " << OneLine(i.tracks[n].title) << " ("
              << SecondsToTimeString(i.tracks[n].seconds) << ")\n";
  }
  return kExitOk;
}

int DrivesCommand(const CliContext& ctx) {
  const std::vector<std::string> drives = OpticalDrives::List();
  if (drives.empty()) return ctx.Fail(std::string(OpticalDrives::kNoDrives));
  for (const std::string& d : drives) std::cout << d << ": " << OpticalDrives::Label(d) << "\n";
  return kExitOk;
}

int EjectCommand(const CliContext& ctx, const std::string& drive) {
  if (!OpticalDrives::Exists(drive)) return ctx.Fail(drive + ": no such drive");
  basEjectCd(drive);
  return kExitOk;
}

int WatchCommand(const CliContext& ctx) {
  // The changer's thread inherits the blocked signals, so sigwait here gets them.
  sigset_t set, old;
  sigemptyset(&set);
  sigaddset(&set, SIGINT);
  sigaddset(&set, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &set, &old);
  cCdChanger changer([](int kind, const std::string& device) {
    std::cout << (kind == cCdChanger::kArrived ? "inserted " : "removed ") << device << std::endl;
  });
  if (!changer.Start()) {
    pthread_sigmask(SIG_SETMASK, &old, nullptr);
    return ctx.Fail("cannot watch for disc changes");
  }
  int signal = 0;
  sigwait(&set, &signal);
  changer.Stop();
  pthread_sigmask(SIG_SETMASK, &old, nullptr);
  return kExitOk;
}

}  // namespace

void AddAudioCommands(CLI::App& app, CliContext& ctx, int* result) {
  auto toc = std::make_shared<TocOptions>();
  CLI::App* discid = app.add_subcommand("discid", "The disc ids of a table of contents");
  discid->add_option("--drive", toc->drive, "Read the table from this optical drive");
  discid->add_option("OFFSETS", toc->values, "Track start frames, then the lead-out frame");
  discid->add_flag("--musicbrainz", toc->musicBrainz, "Also print the MusicBrainz disc id");
  discid->callback([&ctx, result, toc] { *result = DiscIdCommand(ctx, *toc); });

  auto lookupToc = std::make_shared<TocOptions>();
  auto cddb = std::make_shared<CddbOptions>();
  CLI::App* lookup = app.add_subcommand("cddb", "Look an audio disc up in FreeDB");
  lookup->add_option("--drive", lookupToc->drive, "Read the table from this optical drive");
  lookup->add_option("OFFSETS", lookupToc->values, "Track start frames, then the lead-out frame");
  lookup->add_option("--server", cddb->server, "FreeDB server, HOST[:PORT] (default gnudb)");
  lookup->add_option("--local", cddb->local, "A local FreeDB folder");
  lookup->add_option("--email", cddb->email, "Your e-mail address, sent in the hello");
  lookup->add_flag("--musicbrainz", lookupToc->musicBrainz,
                   "Ask MusicBrainz when FreeDB finds nothing");
  lookup->callback(
      [&ctx, result, lookupToc, cddb] { *result = CddbCommand(ctx, *lookupToc, *cddb); });

  app.add_subcommand("drives", "List the optical drives with their labels")
      ->callback([&ctx, result] { *result = DrivesCommand(ctx); });

  auto drive = std::make_shared<std::string>();
  CLI::App* eject = app.add_subcommand("eject", "Open the tray of an optical drive");
  eject->add_option("DRIVE", *drive, "The drive, e.g. /dev/sr0")->required();
  eject->callback([&ctx, result, drive] { *result = EjectCommand(ctx, *drive); });

  app.add_subcommand("watch", "Print each disc inserted or removed until Ctrl-C")
      ->callback([&ctx, result] { *result = WatchCommand(ctx); });
}

}  // namespace gorvan::cli
