// gorvan-cli scan and id3.
#include <CLI/CLI.hpp>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <iostream>

#include "catalog/TextFormat.h"
#include "cli/CliContext.h"
#include "cli/Commands.h"
#include "scan/ScanChecks.h"
#include "scan/ScanEngine.h"
#include "scan/VolumeInfo.h"
#include "scan/clsID3.h"

namespace gorvan::cli {
namespace {

struct ScanOptions {
  std::string path;
  std::string name;
  std::string notes;
  std::string label;
  int32_t category = 0;
  std::string include = "*.*";
  std::string exclude;
  bool zip = false;
  bool mp3 = false;
  bool dirsOnly = false;
  bool hidden = false;
  int32_t rescan = 0;
  bool again = false;
  bool quiet = false;
  bool nameGiven = false;
  bool notesGiven = false;
  bool labelGiven = false;
  bool categoryGiven = false;
};

// The running scan, for the Ctrl-C handler.
ScanEngine* g_running = nullptr;

extern "C" void OnInterrupt(int) {
  if (g_running) g_running->RequestCancel();
}

using Clock = std::chrono::steady_clock;

// The progress line: entries read, their rate and the folder being read,
// redrawn at most ten times a second.
class ProgressLine {
 public:
  void Update(const ScanProgress& p) {
    if (++calls_ % 256 != 0 && !p.name.empty()) return;
    const Clock::time_point now = Clock::now();
    if (now - last_ < std::chrono::milliseconds(100)) return;
    last_ = now;
    const double secs = std::chrono::duration<double>(now - start_).count();
    const double rate = secs > 0 ? static_cast<double>(p.entries) / secs : 0;
    std::string folder = TextCodec::ForDisplay(p.folder);
    for (char& c : folder) {
      if (c == '\n' || c == '\t' || c == '\r') c = ' ';
    }
    if (folder.size() > 60) folder = "..." + folder.substr(folder.size() - 57);
    std::fprintf(stderr, "\r\033[K%lld entries, %.0f/s  %s", static_cast<long long>(p.entries),
                 rate, folder.c_str());
    shown_ = true;
  }
  void Clear() {
    if (shown_) std::fputs("\r\033[K", stderr);
  }

 private:
  unsigned long calls_ = 0;
  Clock::time_point start_ = Clock::now();
  Clock::time_point last_{};
  bool shown_ = false;
};

int Scan(CliContext& ctx, ScanOptions o) {
  if (Status s = ScanChecks::CheckPath(o.path); !s.ok()) return ctx.Fail(s.message());
  int code = 0;
  classData* data = ctx.Open(&code, false);
  if (!data) return code;

  const VolumeInfo info = VolumeInfo::ForPath(o.path);
  const ScanVolume volume = ScanVolume::From(info);
  if (!o.labelGiven) o.label = info.label();
  if (o.rescan > 0) {
    // A rescan starts from the disc's own name, notes and category.
    classCd old(data->file());
    if (!old.recordGet(o.rescan)) return ctx.Fail("There is no disc " + std::to_string(o.rescan));
    if (!o.nameGiven) o.name = old.GetCdName();
    if (!o.notesGiven) o.notes = old.GetCdNotes();
    if (!o.categoryGiven) o.category = old.GetCdCategory();
  } else if (!o.again) {
    if (int32_t before = ScanChecks::FindScannedBefore(*data, o.path, o.label, volume)) {
      return ctx.Fail(std::string(ScanChecks::kScannedBefore) + " (disc " +
                      std::to_string(before) + "; --again scans it anyway)");
    }
  }
  if (!o.nameGiven && o.rescan <= 0) o.name = ScanChecks::DefaultDiscName(o.path, o.label, volume);

  ScanEngine engine(*data);
  engine.SetVars(o.rescan, o.path, o.name, o.notes, o.label, o.category, o.include, o.exclude,
                 o.zip, o.mp3, o.dirsOnly, 0);
  engine.SetIncludeHidden(o.hidden);
  engine.SetVolume(volume);
  ProgressLine line;
  const bool showProgress = !ctx.quiet && !o.quiet && ::isatty(STDERR_FILENO);
  if (showProgress) engine.SetProgress([&line](const ScanProgress& p) { line.Update(p); });

  g_running = &engine;
  struct sigaction sa{}, oldInt{}, oldTerm{};
  sa.sa_handler = OnInterrupt;
  sigemptyset(&sa.sa_mask);
  sigaction(SIGINT, &sa, &oldInt);
  sigaction(SIGTERM, &sa, &oldTerm);
  const Clock::time_point start = Clock::now();
  const int32_t id = engine.ScanCd();
  const double secs = std::chrono::duration<double>(Clock::now() - start).count();
  sigaction(SIGINT, &oldInt, nullptr);
  sigaction(SIGTERM, &oldTerm, nullptr);
  g_running = nullptr;
  if (showProgress) line.Clear();

  if (!o.quiet) {
    for (const std::string& w : engine.warningTexts()) {
      std::cerr << "gorvan-cli: warning: " << TextCodec::ForDisplay(w) << "\n";
    }
  }
  if (engine.status().IsCancelled()) {
    std::cerr << "gorvan-cli: scan cancelled; the partial disc " << engine.NewDiscId()
              << " stays in the catalog\n";
    ctx.Finish();
    return kExitCancelled;
  }
  if (!engine.status().ok()) return ctx.Fail(engine.status());
  const ScanTotals& t = engine.totals();
  char summary[256];
  std::snprintf(summary, sizeof summary,
                "%d folders, %d files, %s bytes, %zu warnings, %.2f s\n",
                engine.foldersWritten(), t.files, FormatNumber(t.bytes).c_str(),
                engine.warnings(), secs);
  if (!o.quiet) std::cerr << summary;
  std::cout << id << "\n";
  return ctx.Finish();
}

int Id3(CliContext& ctx, const std::string& file) {
  clsID3 id3;
  if (!id3.Load(file)) return ctx.Fail(file + ": no ID3v1 tag");
  std::cout << "title: " << TsvEscape(id3.Title()) << "\n"
            << "artist: " << TsvEscape(id3.Artist()) << "\n"
            << "album: " << TsvEscape(id3.Album()) << "\n"
            << "year: " << TsvEscape(id3.Year()) << "\n"
            << "comment: " << TsvEscape(id3.Comment()) << "\n"
            << "genre: " << id3.Genre() << "\n";
  return kExitOk;
}

}  // namespace

void AddScanCommands(CLI::App& app, CliContext& ctx, int* result) {
  auto o = std::make_shared<ScanOptions>();
  CLI::App* scan = app.add_subcommand("scan", "Scan a drive or folder into a new disc");
  scan->add_option("PATH", o->path, "The drive or folder")->required();
  CLI::Option* name = scan->add_option("--name", o->name, "Disc name");
  CLI::Option* notes = scan->add_option("--notes", o->notes, "Disc notes");
  CLI::Option* label = scan->add_option("--label", o->label, "Volume label to record");
  CLI::Option* category = scan->add_option("--category", o->category, "Category id");
  scan->add_option("--include", o->include, "Extensions to catalogue (default *.*)");
  scan->add_option("--exclude", o->exclude, "Extensions to leave out");
  scan->add_flag("--zip", o->zip, "List archive members");
  scan->add_flag("--mp3", o->mp3, "Read MP3 tags");
  scan->add_flag("--dirs-only", o->dirsOnly, "Folders only, no file records");
  scan->add_flag("--hidden", o->hidden, "Include names beginning with \".\"");
  scan->add_option("--rescan", o->rescan, "Replace this disc, keeping its notes");
  scan->add_flag("--again", o->again, "Scan even when scanned before");
  scan->add_flag("--quiet", o->quiet, "No progress line, warnings or summary");
  scan->callback([&ctx, result, o, name, notes, label, category] {
    o->nameGiven = name->count() > 0;
    o->notesGiven = notes->count() > 0;
    o->labelGiven = label->count() > 0;
    o->categoryGiven = category->count() > 0;
    *result = Scan(ctx, *o);
  });

  auto file = std::make_shared<std::string>();
  CLI::App* id3 = app.add_subcommand("id3", "Show the ID3v1 tag of an MP3 file");
  id3->add_option("FILE", *file, "The MP3 file")->required();
  id3->callback([&ctx, result, file] { *result = Id3(ctx, *file); });
}

}  // namespace gorvan::cli
