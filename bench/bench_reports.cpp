// The desktop program's export window and reports on a catalog of 1,000,000
// files: 10 discs of 1,000 folders with 100 files each.
//
// With the main window on the offscreen platform, times from the request to
// the result, while a heartbeat timer (every 2 ms) on the GUI thread measures
// how long the event loop was held up at most:
//   export window, XML / XLSX / HTML   the whole catalog written by frmExport
//   disc report                        one disc's 101,000 lines gathered and
//                                      laid out, the first page painted
//   last page                          the view scrolled to the last page
//   PDF of the disc report             every page written
//   catalog report                     the discs by category
// Targets: no stall over 100 ms; a report of 100,000 lines on the screen
// within a second.
//
// Usage: bench_reports [CATALOG]   (a catalog from an earlier run is reused)
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <tuple>

#include "GuiBench.h"
#include "app/SettingsStore.h"
#include "catalog/classData.h"
#include "ui/export/frmExport.h"
#include "ui/main/CommandHooks.h"
#include "ui/main/frmMenu.h"
#include "ui/reports/PagedReport.h"
#include "ui/reports/ReportView.h"
#include "ui/reports/frmPreview.h"
#include "ui/session/CatalogSession.h"
#include "ui/widgets/ThemeIcons.h"

namespace {

using namespace gorvan;
using guibench::Heartbeat;
using guibench::RunUntil;
using guibench::YesPrompt;

constexpr int kDiscs = 10;
constexpr int kFolders = 1000;
constexpr int kFiles = 100;

bool Build(const std::string& path) {
  classData data;
  if (!data.OpenFiles(path, false, true)) return false;
  FileRecord fields;
  fields.date = 45000.5;
  fields.attr = 32;
  std::string name;
  for (int d = 0; d < kDiscs; ++d) {
    classCd cd = data.CdCursor();
    data.GetCdAppend(cd);
    cd.SetCdName("Disc " + std::to_string(d));
    classDir& root = cd.GetDirAppend();
    root.SetDirPath("\\");
    root.GetFileAppendStart();
    root.GetFileAppendFinish();
    for (int f = 0; f < kFolders; ++f) {
      classDir& dir = cd.GetDirAppend();
      dir.SetDirName("Folder " + std::to_string(f));
      dir.SetDirPath("\\");
      dir.GetFileAppendStart();
      ClassFile& file = dir.files();
      for (int i = 0; i < kFiles; ++i) {
        name.assign("IMG_").append(std::to_string(f * kFiles + i)).append(".jpg");
        fields.size = 1000.0 * (i % 977);
        if (file.AppendFile(fields, {.name = name}) == 0) return false;
      }
      if (!dir.GetFileAppendFinish()) return false;
      dir.setDirCountOfFilesDirect(kFiles);
    }
    cd.setCdNumOfSubdirs(kFolders + 1);
    cd.setCdNumOfFiles(kFolders * kFiles);
    cd.GetDirAppendFinish();
    if (!data.GetCdCommit(cd) || !data.ok()) return false;
  }
  return true;
}

double MiB(const std::string& path) {
  struct stat st {};
  return ::stat(path.c_str(), &st) == 0 ? st.st_size / 1048576.0 : -1;
}

}  // namespace

int main(int argc, char** argv) {
  char home[] = "/tmp/gorvan-bench-reports-XXXXXX";
  if (!mkdtemp(home)) return 1;
  setenv("GORVAN_HOME", home, 1);
  setenv("XDG_CONFIG_HOME", (std::string(home) + "/config").c_str(), 1);
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  const std::string dir = home;
  const std::string catalog = argc > 1 ? argv[1] : dir + "/million.cd";
  if (access(catalog.c_str(), F_OK) != 0) {
    QElapsedTimer t;
    t.start();
    if (!Build(catalog)) {
      std::fprintf(stderr, "could not write %s\n", catalog.c_str());
      return 1;
    }
    std::printf("catalog of %d files in %d discs written in %.1f s\n", kDiscs * kFolders * kFiles,
                kDiscs, t.elapsed() / 1000.0);
  }
  QApplication app(argc, argv);
  QApplication::setOrganizationName(QStringLiteral("Gorvan"));
  QApplication::setApplicationName(QStringLiteral("Gorvan"));
  ui::ThemeIcons::Setup();
  SettingsStore::PutBool("Switches", "lShowAutoUpdateNotice", false);

  YesPrompt prompt(true, ui::kExportDone);
  ui::CommandHooks hooks;
  ui::RegisterFeatures(hooks);
  ui::CatalogSession session(prompt);
  ui::frmMenu window(session, hooks);
  window.resize(1200, 800);
  window.MenuStart(catalog);
  if (!session.isOpen()) return 1;
  Heartbeat beat;
  QElapsedTimer t;
  std::printf("%-32s %10s %14s %10s\n", "step", "time ms", "worst stall ms", "size MiB");

  // The export window, each type but the comma-separated one.
  for (const auto& [label, type, file] :
       {std::tuple{"export window, XML", ExportType::kXml, "/all.xml"},
        std::tuple{"export window, XLSX", ExportType::kSpreadsheet, "/all.xlsx"},
        std::tuple{"export window, HTML", ExportType::kHtml, "/all.html"}}) {
    window.command(QStringLiteral("mnuFileExport"))->trigger();
    ui::frmExport* w = nullptr;
    for (auto* open : window.findChildren<ui::frmExport*>()) {
      if (open->isVisible()) w = open;
    }
    if (!w || RunUntil([w] { return w->loaded(); }) < 0) return 1;
    w->SetType(type);
    bool ended = false;
    Status status;
    QObject::connect(w, &ui::frmExport::exportEnded, w, [&](const Status& s) {
      ended = true;
      status = s;
    });
    beat.Reset();
    t.start();
    w->ExportTo(dir + file);
    if (RunUntil([&] { return ended; }) < 0) return 1;
    const double ms = t.nsecsElapsed() / 1e6;
    std::printf("%-32s %10.1f %14.1f %10.1f%s\n", label, ms, beat.WorstMs(), MiB(dir + file),
                status.ok() ? "" : (" " + status.message()).c_str());
    // The window closed after the export: let it go.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }

  // The report of the first disc: 1,001 folder headings and 100,000 rows.
  ui::CommandContext c = window.context();
  c.item.kind = NodeKind::kDisc;
  classCd cd = session.writer()->CdCursor();
  cd.MoveFirst();
  c.item.id = c.item.discId = cd.GetCdId();
  beat.Reset();
  t.start();
  hooks.Run(QStringLiteral("mnuFilePreview"), c);
  auto* preview = window.findChild<ui::frmPreview*>(QStringLiteral("frmPreview"));
  if (!preview || RunUntil([preview] { return preview->report() && !preview->busy(); }) < 0)
    return 1;
  preview->repaint();
  const int pages = preview->report()->pageCount();
  struct rusage usage {};
  getrusage(RUSAGE_SELF, &usage);
  std::printf("%-32s %10.1f %14.1f %10s   %d pages; peak memory of the program %.0f MiB\n",
              "disc report on the screen", t.nsecsElapsed() / 1e6, beat.WorstMs(), "", pages,
              usage.ru_maxrss / 1024.0);

  beat.Reset();
  t.start();
  preview->view()->ShowPage(pages - 1);
  preview->repaint();
  std::printf("%-32s %10.1f %14.1f\n", "last page", t.nsecsElapsed() / 1e6, beat.WorstMs());

  bool printed = false;
  Status status;
  QObject::connect(preview, &ui::frmPreview::printed, preview, [&](const Status& s) {
    printed = true;
    status = s;
  });
  beat.Reset();
  t.start();
  preview->SaveAsPdf(QString::fromStdString(dir + "/disc.pdf"));
  if (RunUntil([&] { return printed; }) < 0) return 1;
  std::printf("%-32s %10.1f %14.1f %10.1f%s\n", "PDF of the disc report", t.nsecsElapsed() / 1e6,
              beat.WorstMs(), MiB(dir + "/disc.pdf"),
              status.ok() ? "" : (" " + status.message()).c_str());

  beat.Reset();
  t.start();
  preview->ShowReport(ui::frmPreview::Kind::kCatalog);
  if (RunUntil([preview] { return preview->report() && !preview->busy(); }) < 0) return 1;
  preview->repaint();
  std::printf("%-32s %10.1f %14.1f\n", "catalog report on the screen", t.nsecsElapsed() / 1e6,
              beat.WorstMs());

  preview->close();
  window.ForceQuit();
  if (!std::getenv("GORVAN_BENCH_KEEP")) {
    std::system(("rm -rf '" + dir + "'").c_str());
  } else {
    std::printf("kept %s\n", dir.c_str());
  }
  return 0;
}
