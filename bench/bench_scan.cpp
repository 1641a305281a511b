// Scans a generated tree (and /usr) into a fresh catalog and compares the time
// with `find TREE -printf '%p\t%s\t%T@\n' > /dev/null` on the same tree in the
// same run, each with a warm cache. Prints both times, the ratio and the peak
// memory of the process.
//
// Usage: bench_scan [FILES [FOLDERS]]   (default 1000000 files in 50000 folders)
//        bench_scan --once TREE [CATALOG]  one scan and nothing else, for profilers
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "RealNames.h"
#include "catalog/classData.h"
#include "scan/ScanEngine.h"

namespace {

using Clock = std::chrono::steady_clock;

double Seconds(Clock::time_point since) {
  return std::chrono::duration<double>(Clock::now() - since).count();
}

// FOLDERS folders in two levels, FILES files with real-looking names spread
// over them (every seventh holds ten bytes, the rest are empty).
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

double TimeFind(const std::string& tree) {
  const std::string cmd = "find '" + tree + "' -printf '%p\\t%s\\t%T@\\n' > /dev/null 2>&1";
  const Clock::time_point t = Clock::now();
  if (std::system(cmd.c_str()) != 0) std::fprintf(stderr, "find reported errors\n");
  return Seconds(t);
}

double TimeScan(const std::string& tree, const std::string& catalog, int32_t* files) {
  ::unlink(catalog.c_str());
  const Clock::time_point t = Clock::now();
  gorvan::classData data;
  if (!data.OpenFiles(catalog, false, true)) return -1;
  gorvan::ScanEngine engine(data);
  gorvan::ScanSettings settings;
  settings.path = tree;
  settings.discName = "bench";
  engine.SetVars(settings);
  gorvan::JobControl job;
  const int32_t id = engine.ScanCd(job);
  data.CloseFiles();
  const double secs = Seconds(t);
  if (id == 0) std::fprintf(stderr, "scan failed: %s\n", engine.status().message().c_str());
  *files = engine.totals().files;
  return secs;
}

void Compare(const std::string& label, const std::string& tree, const std::string& catalog) {
  int32_t files = 0;
  TimeFind(tree);  // warm the cache
  TimeScan(tree, catalog, &files);
  double bestFind = 1e9, bestScan = 1e9;
  for (int round = 0; round < 3; ++round) {
    bestFind = std::min(bestFind, TimeFind(tree));
    bestScan = std::min(bestScan, TimeScan(tree, catalog, &files));
  }
  struct stat st {};
  ::stat(catalog.c_str(), &st);
  std::printf("%-10s %9d files  scan %7.3f s  find %7.3f s  ratio %.2fx  catalog %.1f MiB\n",
              label.c_str(), files, bestScan, bestFind, bestScan / bestFind,
              static_cast<double>(st.st_size) / (1 << 20));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 2 && std::string(argv[1]) == "--once") {
    int32_t files = 0;
    const double secs = TimeScan(argv[2], argc > 3 ? argv[3] : "/tmp/gorvan-bench-once.cd", &files);
    std::printf("%d files  %.3f s\n", files, secs);
    return secs < 0 ? 1 : 0;
  }
  const long files = argc > 1 ? std::atol(argv[1]) : 1000000;
  const long folders = argc > 2 ? std::atol(argv[2]) : 50000;
  const char* tmp = std::getenv("TMPDIR");
  const std::string base = std::string(tmp && *tmp ? tmp : "/tmp") + "/gorvan-bench-scan";
  const std::string tree = base + "/tree";
  const std::string catalog = base + "/bench.cd";
  ::mkdir(base.c_str(), 0755);
  struct stat st {};
  const std::string stamp =
      tree + "/.generated-" + std::to_string(files) + "-" + std::to_string(folders);
  if (::stat(stamp.c_str(), &st) != 0) {
    std::system(("rm -rf '" + tree + "'").c_str());
    std::printf("generating %ld files in %ld folders under %s ...\n", files, folders, tree.c_str());
    Generate(tree, files, folders);
    ::close(::open(stamp.c_str(), O_WRONLY | O_CREAT, 0644));
  }
  Compare("generated", tree, catalog);
  Compare("/usr", "/usr", catalog);
  rusage ru{};
  ::getrusage(RUSAGE_SELF, &ru);
  std::printf("peak memory %.1f MiB\n", static_cast<double>(ru.ru_maxrss) / 1024.0);
  ::unlink(catalog.c_str());
  return 0;
}
