// Compaction and XML export of a 1,000,000-file catalog against cp.
//
// Builds a catalog of 10 discs with 1,000 folders of 100 files each (realistic
// names, paths and some notes), with garbage from replaced notes. Then, each
// in a child process of its own so that its peak memory is its own:
//   - compacts the catalog, compared with cp of the same file;
//   - exports every disc to XML, compared with cp of a file of the export's size.
// Prints the times, the ratios and each child's peak resident memory.
// Usage: bench_maintenance [FOLDERS_PER_DISC] (default 1000).
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

#include "catalog/basBackup.h"
#include "catalog/classData.h"
#include "export/basExport.h"

namespace {

using Clock = std::chrono::steady_clock;

struct Run {
  double seconds = 0;
  long peakMiB = 0;
};

// Runs work in a child; the child's time and peak memory.
Run InChild(const std::function<int()>& work) {
  const auto start = Clock::now();
  const pid_t pid = ::fork();
  if (pid == 0) ::_exit(work());
  int status = 0;
  rusage ru{};
  ::wait4(pid, &status, 0, &ru);
  Run r;
  r.seconds = std::chrono::duration<double>(Clock::now() - start).count();
  r.peakMiB = ru.ru_maxrss / 1024;
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) std::fprintf(stderr, "child failed\n");
  return r;
}

Run Shell(const std::string& cmd) {
  return InChild([cmd] { return std::system(cmd.c_str()) == 0 ? 0 : 1; });
}

long FileSize(const std::string& path) {
  struct stat st;
  return ::stat(path.c_str(), &st) == 0 ? static_cast<long>(st.st_size) : -1;
}

void Build(const std::string& path, int discs, int folders, int files) {
  gorvan::classData data;
  if (!data.OpenFiles(path, false, true)) {
    std::fprintf(stderr, "%s\n", data.GetErrorText().c_str());
    std::exit(1);
  }
  for (int c = 0; c < discs; ++c) {
    gorvan::classCd cd = data.CdCursor();
    data.GetCdAppend(cd);
    cd.SetCdName("Backup disc " + std::to_string(c));
    cd.SetCdBasepath("/media/backup" + std::to_string(c));
    for (int d = 0; d < folders; ++d) {
      gorvan::classDir& dir = cd.GetDirAppend();
      const std::string parent = "Photos\\" + std::to_string(2000 + d % 20);
      dir.SetDirName("Album " + std::to_string(d) + " & friends");
      dir.SetDirPath(parent);
      dir.setDirDate(38000.5 + d);
      dir.GetFileAppendStart();
      const std::string filePath = parent + "\\Album " + std::to_string(d) + " & friends";
      for (int f = 0; f < files; ++f) {
        gorvan::ClassFile& file = dir.GetFileAppend();
        file.SetFileName("IMG_" + std::to_string(100000 + f) + " <holiday>.jpg");
        file.setFilePath(filePath);
        file.setFileSize(1.0e6 + f);
        file.setFileDate(38000.25 + f);
        if (f % 50 == 0) file.SetFileNotes("taken on the \"big\" day");
      }
      dir.GetFileAppendFinish();
      dir.setDirCountOfFilesDirect(files);
    }
    cd.setCdNumOfSubdirs(folders);
    cd.setCdNumOfFiles(folders * files);
    cd.GetDirAppendFinish();
    data.GetCdCommit(cd);
    // Garbage for the compaction.
    cd.SetCdNotes("first");
    cd.SetCdNotes("second and final");
  }
  data.Sync();
}

}  // namespace

int main(int argc, char** argv) {
  const int folders = argc > 1 ? std::atoi(argv[1]) : 1000;
  const int discs = 10, files = 100;
  char tmpl[] = "/tmp/gorvan-bench-maint-XXXXXX";
  const std::string dir = ::mkdtemp(tmpl);
  const std::string catalog = dir + "/bench.cd";
  const std::string xml = dir + "/bench.xml";

  const auto start = Clock::now();
  Build(catalog, discs, folders, files);
  std::printf("catalog: %d files, %.1f MiB, built in %.2f s\n", discs * folders * files,
              FileSize(catalog) / 1048576.0,
              std::chrono::duration<double>(Clock::now() - start).count());

  // Both sides start alike: the catalog in the page cache and nothing dirty
  // (a freshly built catalog's dirty pages would otherwise be written back in
  // whichever run forces a journal commit first). Best of five runs each.
  Shell("sync; cat '" + catalog + "' > /dev/null");
  Run cp{1e9, 0};
  Run compact{1e9, 0};
  for (int round = 0; round < 5; ++round) {
    Shell("sync");
    const Run c = Shell("cp '" + catalog + "' '" + dir + "/copy.cd' && sync '" + dir + "/copy.cd'");
    if (c.seconds < cp.seconds) cp = c;
    Shell("sync");
    const Run k = InChild([&] {
      gorvan::classData data;
      if (!data.OpenFiles(catalog, false, false)) return 1;
      gorvan::JobControl job;
      return gorvan::CompactDataFiles(data, job).status.ok() ? 0 : 1;
    });
    if (k.seconds < compact.seconds) compact = k;
  }
  std::printf(
      "compact: %.2f s, %.1f MiB after, peak %ld MiB | cp+sync of the catalog: %.2f s | "
      "ratio %.2fx (target <= 3x)\n",
      compact.seconds, FileSize(catalog) / 1048576.0, compact.peakMiB, cp.seconds,
      compact.seconds / cp.seconds);

  const Run exportRun = InChild([&] {
    gorvan::classData data;
    if (!data.OpenFiles(catalog, false, false)) return 1;
    gorvan::ExportOptions o;
    o.type = gorvan::ExportType::kXml;
    gorvan::JobControl job;
    return gorvan::basExport(data, xml, o, job).status.ok() ? 0 : 1;
  });
  const long xmlSize = FileSize(xml);
  Shell("cat '" + xml + "' > /dev/null");
  const Run cpXml = Shell("cp '" + xml + "' '" + dir + "/copy.xml' && sync '" + dir + "/copy.xml'");
  std::printf(
      "XML export: %.2f s, %.1f MiB, peak %ld MiB | cp+sync of a file that size: %.2f s | "
      "ratio %.2fx (target <= 4x)\n",
      exportRun.seconds, xmlSize / 1048576.0, exportRun.peakMiB, cpXml.seconds,
      exportRun.seconds / cpXml.seconds);

  if (!std::getenv("GORVAN_BENCH_KEEP"))
    std::system(("rm -rf '" + dir + "'").c_str());
  else
    std::printf("kept %s\n", dir.c_str());
  return 0;
}
