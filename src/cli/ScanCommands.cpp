// gorvan-cli scan and id3.
#include <CLI/CLI.hpp>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <iostream>

#include "app/ScanRequest.h"
#include "catalog/TextFormat.h"
#include "cli/CliContext.h"
#include "cli/Commands.h"
#include "cli/TerminalJob.h"
#include "scan/ScanChecks.h"
#include "scan/ScanEngine.h"
#include "scan/VolumeInfo.h"
#include "scan/clsID3.h"

namespace gorvan::cli {
namespace {

struct ScanOptions {
  ScanSettings settings;
  bool again = false;
  bool quiet = false;
  bool nameGiven = false;
  bool notesGiven = false;
  bool labelGiven = false;
  bool categoryGiven = false;
};

using Clock = std::chrono::steady_clock;

// The progress line: entries read, their rate and the folder being read.
std::string ScanLine(const JobProgress& p, Clock::time_point start) {
  const double secs = std::chrono::duration<double>(Clock::now() - start).count();
  const double rate = secs > 0 ? static_cast<double>(p.value) / secs : 0;
  char head[64];
  std::snprintf(head, sizeof head, "%lld entries, %.0f/s  ", static_cast<long long>(p.value),
                rate);
  return head + OneLine(p.caption, 60);
}

int Scan(CliContext& ctx, ScanOptions o) {
  ScanSettings& s = o.settings;
  if (Status st = ScanRequest::CheckPath(s.path); !st.ok()) return ctx.Fail(st.message());
  int code = 0;
  classData* data = ctx.Open(&code, false);
  if (!data) return code;

  const ScanProposal proposal = ScanRequest::Propose(s.path);
  if (!o.labelGiven) s.volumeLabel = proposal.label;
  if (s.previousDiscId > 0) {
    // A rescan starts from the disc's own name, notes and category.
    if (Status st = ScanRequest::RescanDefaults(*data, o.nameGiven, o.notesGiven,
                                                o.categoryGiven, &s);
        !st.ok()) {
      return ctx.Fail(st);
    }
  } else {
    if (!o.again) {
      if (int32_t before = ScanRequest::ScannedBefore(*data, s, proposal.facts)) {
        return ctx.Fail(std::string(ScanChecks::kScannedBefore) + " (disc " +
                        std::to_string(before) + "; --again scans it anyway)");
      }
    }
    if (!o.nameGiven) {
      s.discName = ScanChecks::DefaultDiscName(s.path, s.volumeLabel, proposal.facts);
    }
  }

  ScanEngine engine(*data);
  engine.SetVars(s);
  engine.SetVolume(proposal.facts);
  const Clock::time_point start = Clock::now();
  int32_t id = 0;
  {
    TerminalJob terminal(ctx.quiet || o.quiet,
                         [start](const JobProgress& p) { return ScanLine(p, start); });
    id = engine.ScanCd(terminal.job());
  }
  const double secs = std::chrono::duration<double>(Clock::now() - start).count();

  if (!o.quiet) {
    for (const std::string& w : engine.warningTexts()) {
      std::cerr << "gorvan-cli: warning: " << TextCodec::ForDisplay(w) << "\n";
    }
  }
  if (engine.status().IsCancelled()) {
    if (engine.NewDiscId() != 0) {
      std::cerr << "gorvan-cli: scan cancelled; the partial disc " << engine.NewDiscId()
                << " stays in the catalog\n";
    } else {
      std::cerr << "gorvan-cli: scan cancelled before it started\n";
    }
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
  ScanSettings& s = o->settings;
  scan->add_option("PATH", s.path, "The drive or folder")->required();
  CLI::Option* name = scan->add_option("--name", s.discName, "Disc name");
  CLI::Option* notes = scan->add_option("--notes", s.notes, "Disc notes");
  CLI::Option* label = scan->add_option("--label", s.volumeLabel, "Volume label to record");
  CLI::Option* category = scan->add_option("--category", s.categoryId, "Category id");
  scan->add_option("--include", s.includeText, "Extensions to catalogue (default *.*)");
  scan->add_option("--exclude", s.excludeText, "Extensions to leave out");
  scan->add_flag("--zip", s.scanZip, "List archive members");
  scan->add_flag("--mp3", s.scanMp3, "Read MP3 tags");
  scan->add_flag("--dirs-only", s.directoriesOnly, "Folders only, no file records");
  scan->add_flag("--hidden", s.includeHidden, "Include names beginning with \".\"");
  scan->add_option("--rescan", s.previousDiscId, "Replace this disc, keeping its notes");
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
