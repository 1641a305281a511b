// Scanning from the desktop program against `gorvan-cli scan` of the same
// generated tree in the same run (warm cache, a fresh catalog each).
//
// The tree: FILES files with real-looking names in FOLDERS folders of two
// levels (default 1,000,000 files in 50,000 folders; every seventh file holds
// ten bytes). Steps:
//   cli scan        `gorvan-cli -c CATALOG scan TREE --quiet`, start to exit
//   open the dialog the scan dialog opened on the tree (mnuCdAdd): the list of
//                   places, the volume of the tree
//   desktop scan    the main window offscreen: from OK (the scanned-before
//                   check, the job's start) until the job has ended and the
//                   views were told
//   views show disc after the job: until the views have read the catalog
//                   again and the explorer shows the new disc selected
//   desktop cancel  a second desktop scan, cancelled (Yes to the question)
//                   once a third of the files were read; the time from the
//                   answer to the scan's end
// A heartbeat timer (every 2 ms) on the GUI thread measures the longest
// stall of the event loop during each desktop step. Targets: the desktop
// scan within 1.15x the cli's time, no stall over 100 ms, cancel within
// 200 ms.
//
// Usage: bench_gui_scan [FILES [FOLDERS]] [--tree DIR] [--keep]
//   --tree DIR  scan DIR (generated there first when it does not exist)
//   --keep      leave the generated tree and catalogs behind
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QPushButton>
#include <QTimer>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "GuiBench.h"
#include "RealNames.h"
#include "app/SettingsStore.h"
#include "ui/explorer/CatalogView.h"
#include "ui/main/CommandHooks.h"
#include "ui/main/frmMenu.h"
#include "ui/scan/ScanFeature.h"
#include "ui/scan/frmAnimation.h"
#include "ui/scan/frmScan.h"
#include "ui/session/CatalogSession.h"
#include "ui/session/ViewLoader.h"
#include "ui/widgets/ThemeIcons.h"

namespace {

using namespace gorvan;
using guibench::Heartbeat;
using guibench::RunUntil;
using guibench::YesPrompt;
using Clock = std::chrono::steady_clock;

double Seconds(Clock::time_point since) {
  return std::chrono::duration<double>(Clock::now() - since).count();
}

void Generate(const std::string& root, long files, long folders) {
  ::mkdir(root.c_str(), 0755);
  const long perTop = 50;
  for (long d = 0; d < folders; ++d) {
    const std::string top = root + "/top" + std::to_string(d / perTop);
    ::mkdir(top.c_str(), 0755);
    const std::string dir = top + "/folder" + std::to_string(d);
    ::mkdir(dir.c_str(), 0755);
    const int fd = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY);
    const long n = files / folders + (d < files % folders ? 1 : 0);
    for (long i = 0; i < n; ++i) {
      const std::string name = bench::RealName(static_cast<uint64_t>(d) * 1000003u + i);
      const int f = ::openat(fd, name.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
      if (f >= 0) {
        if (i % 7 == 0) (void)!::write(f, "0123456789", 10);
        ::close(f);
      }
    }
    ::close(fd);
  }
}

double CliScan(const std::string& tree, const std::string& catalog) {
  ::unlink(catalog.c_str());
  const std::string cli = GORVAN_CLI;
  const std::string create = "'" + cli + "' create '" + catalog + "'";
  if (std::system(create.c_str()) != 0) return -1;
  const std::string scan =
      "'" + cli + "' -c '" + catalog + "' scan '" + tree + "' --quiet > /dev/null";
  const Clock::time_point t = Clock::now();
  if (std::system(scan.c_str()) != 0) return -1;
  return Seconds(t);
}

// Opens the scan dialog on tree (the time it took in ms into *openMs), then
// resets the heartbeat and presses OK; the progress window.
ui::frmAnimation* DesktopScan(ui::frmMenu& window, const std::string& tree, Heartbeat& beat,
                              double* openMs) {
  QElapsedTimer t;
  t.start();
  window.RunCommand(QStringLiteral("mnuCdAdd"), QString::fromStdString(tree));
  ui::frmScan* dialog = ui::ScanFeature::OpenDialog();
  if (!dialog) return nullptr;
  QCoreApplication::processEvents();
  *openMs = t.nsecsElapsed() / 1e6;
  beat.Reset();
  dialog->findChild<QPushButton*>(QStringLiteral("btnOK"))->click();
  return window.findChild<ui::frmAnimation*>(QStringLiteral("frmAnimation"));
}

}  // namespace

int main(int argc, char** argv) {
  long files = 1000000;
  long folders = 50000;
  std::string tree;
  bool keep = false;
  int numbers = 0;
  for (int i = 1; i < argc; ++i) {
    const std::string a = argv[i];
    if (a == "--tree" && i + 1 < argc) {
      tree = argv[++i];
    } else if (a == "--keep") {
      keep = true;
    } else if (numbers == 0) {
      files = std::atol(a.c_str());
      ++numbers;
    } else {
      folders = std::atol(a.c_str());
    }
  }
  if (folders < 1) folders = 1;
  char home[] = "/tmp/gorvan-bench-gui-scan-XXXXXX";
  if (!mkdtemp(home)) return 1;
  setenv("GORVAN_HOME", home, 1);
  setenv("XDG_CONFIG_HOME", (std::string(home) + "/config").c_str(), 1);
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  if (tree.empty()) tree = std::string(home) + "/tree";
  if (access(tree.c_str(), F_OK) != 0) {
    const Clock::time_point t = Clock::now();
    Generate(tree, files, folders);
    std::printf("tree of %ld files in %ld folders written in %.1f s\n", files, folders, Seconds(t));
  }
  // Warm the cache for both.
  (void)!std::system(("find '" + tree + "' -printf '%s' > /dev/null 2>&1").c_str());

  const double cli = CliScan(tree, std::string(home) + "/cli.cd");
  if (cli < 0) {
    std::fprintf(stderr, "gorvan-cli scan failed\n");
    return 1;
  }

  QApplication app(argc, argv);
  QApplication::setOrganizationName(QStringLiteral("Gorvan"));
  QApplication::setApplicationName(QStringLiteral("Gorvan"));
  ui::ThemeIcons::Setup();
  SettingsStore::PutBool("Switches", "lShowAutoUpdateNotice", false);
  SettingsStore::PutBool("Switches", "lEnableAutoInsert", false);

  YesPrompt prompt(false);
  ui::CommandHooks hooks;
  ui::ScanFeature::Register(hooks);
  ui::CatalogSession session(prompt);
  ui::frmMenu window(session, hooks);
  window.resize(1200, 800);
  window.MenuStart(std::string(home) + "/desktop.cd");
  RunUntil([&] { return session.isOpen(); });
  Heartbeat beat;

  double openMs = 0;
  QElapsedTimer t;
  t.start();
  ui::frmAnimation* scan = DesktopScan(window, tree, beat, &openMs);
  if (!scan) {
    std::fprintf(stderr, "the desktop scan did not start\n");
    return 1;
  }
  RunUntil([&] { return !session.busy(); });
  // From OK to the job's end (the dialog's opening is shown apart).
  const double desktop = t.nsecsElapsed() / 1e9 - openMs / 1000;
  const double scanStall = beat.WorstMs();
  // The views read the catalog again and select the new disc.
  beat.Reset();
  t.restart();
  RunUntil([&] {
    ui::CatalogView* view = window.activeView();
    return session.loader().pending() == 0 && view && view->currentItem().kind == NodeKind::kDisc;
  });
  const double views = t.nsecsElapsed() / 1e9;
  const double viewsStall = beat.WorstMs();
  scan->close();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

  // A second scan of the same tree, cancelled a third of the way in.
  const std::string second = std::string(home) + "/cancel.cd";
  window.RunCommand(QStringLiteral("mnuFileClose"));
  window.MenuStart(second);
  RunUntil([&] { return session.isOpen(); });
  qint64 seen = 0;
  double openMs2 = 0;
  ui::frmAnimation* cancel = DesktopScan(window, tree, beat, &openMs2);
  if (!cancel) return 1;
  QObject::connect(session.job(), &ui::CatalogJob::progress,
                   [&seen](const JobProgress& p) { seen = p.files; });
  RunUntil([&] { return seen >= files / 3 || !session.busy(); });
  cancel->findChild<QPushButton*>(QStringLiteral("btnCancel"))->click();
  RunUntil([&] { return !session.busy(); });
  const double cancelStall = beat.WorstMs();
  const qint64 cancelMs = cancel->cancelLatencyMs();

  std::printf("%-16s %10s %10s %16s\n", "step", "time s", "vs cli", "worst stall ms");
  std::printf("%-16s %10.3f %10s %16s\n", "open the dialog", openMs / 1000, "-", "-");
  std::printf("%-16s %10.2f %10s %16s\n", "cli scan", cli, "1.00", "-");
  std::printf("%-16s %10.2f %10.2f %16.1f\n", "desktop scan", desktop, desktop / cli, scanStall);
  std::printf("%-16s %10.2f %10s %16.1f\n", "views show disc", views, "-", viewsStall);
  std::printf("%-16s %10.3f %10s %16.1f\n", "desktop cancel", cancelMs / 1000.0, "-", cancelStall);
  std::printf("files %ld, folders %ld; cancel asked after %lld files\n", files, folders,
              static_cast<long long>(seen));
  if (!keep) (void)!std::system(("rm -rf '" + std::string(home) + "'").c_str());
  return 0;
}
