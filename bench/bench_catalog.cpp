// Catalog write and walk speed against dd and cat on the same number of bytes.
//
// Writes one disc of 10,000 folders with 100 files each (1,000,000 file
// records with realistic names) through the object model, then walks every
// disc, folder and file reading each name. Prints the times, the ratios to dd
// writing the same number of bytes and to cat reading the catalog, and the
// peak memory of this process.
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "catalog/classData.h"

namespace {

using Clock = std::chrono::steady_clock;

double Seconds(Clock::time_point since) {
  return std::chrono::duration<double>(Clock::now() - since).count();
}

double TimeShell(const std::string& cmd) {
  const auto start = Clock::now();
  if (std::system(cmd.c_str()) != 0) std::fprintf(stderr, "command failed: %s\n", cmd.c_str());
  return Seconds(start);
}

long PeakMiB() {
  rusage ru{};
  getrusage(RUSAGE_SELF, &ru);
  return ru.ru_maxrss / 1024;
}

// Reads every disc, folder and file name; returns the number of file names.
[[gnu::noinline]] int64_t WalkCatalog(gorvan::classData& data, size_t* nameBytes) {
  std::string name;
  int64_t names = 0;
  gorvan::classCd c = data.CdCursor();
  for (c.MoveFirst(); !c.isEof(); c.MoveNext()) {
    c.GetCdName(&name);
    for (gorvan::classDir& d = c.GetDirFirst(); !d.isEof(); c.GetDirNext()) {
      d.GetDirName(&name);
      for (gorvan::ClassFile& f = d.GetFileFirst(); !f.isEof(); d.GetFileNext()) {
        f.GetFileName(&name);
        *nameBytes += name.size();
        ++names;
      }
    }
  }
  return names;
}

// Writes one disc of `folders` folders with 100 files each through the object
// model, committed (synced) as a scan would. Returns the seconds taken, < 0 on failure.
double WriteCatalog(const std::string& path, int folders, int64_t* bytes) {
  static const char* const kStems[] = {"IMG_", "Track ", "report-final-", "setup_", "notes "};
  static const char* const kExts[] = {".jpg", ".mp3", ".pdf", ".exe", ".txt"};
  const int filesPerFolder = 100;
  gorvan::classData data;
  if (!data.OpenFiles(path, false, true)) return -1;
  const auto start = Clock::now();
  gorvan::classCd cd = data.CdCursor();
  data.GetCdAppend(cd);
  cd.SetCdName("Benchmark disc");
  std::string name;
  for (int d = 0; d < folders; ++d) {
    gorvan::classDir& dirRec = cd.GetDirAppend();
    dirRec.SetDirName("Folder " + std::to_string(d));
    dirRec.SetDirPath("Archive\\2024\\Projects");
    dirRec.GetFileAppendStart();
    for (int f = 0; f < filesPerFolder; ++f) {
      gorvan::ClassFile& file = dirRec.GetFileAppend();
      name.assign(kStems[f % 5])
          .append(std::to_string(d * filesPerFolder + f))
          .append(kExts[f % 5]);
      file.SetFileName(name);
      file.setFileSize(1000.0 * f);
      file.setFileDate(45000.5);
      file.setFileAttr(32);
    }
    dirRec.GetFileAppendFinish();
  }
  cd.GetDirAppendFinish();
  if (!data.GetCdCommit(cd)) return -1;
  const double secs = Seconds(start);
  *bytes = data.file()->Length();
  return secs;
}

}  // namespace

int main(int argc, char** argv) {
  const int folders = argc > 1 ? std::atoi(argv[1]) : 10000;
  char tmpl[] = "/tmp/gorvan-bench-XXXXXX";
  const std::string dir = mkdtemp(tmpl);
  const std::string path = dir + "/bench.cd";

  // The best of three writes and three dd runs, each starting with nothing
  // dirty in the page cache, as the machine may be busy with other work.
  double writeSecs = 1e9, ddSecs = 1e9;
  int64_t bytes = 0;
  for (int round = 0; round < 3; ++round) {
    std::remove(path.c_str());
    TimeShell("sync");
    const double secs = WriteCatalog(path, folders, &bytes);
    if (secs < 0) return 1;
    writeSecs = std::min(writeSecs, secs);
    TimeShell("sync");
    ddSecs = std::min(ddSecs, TimeShell("dd if=/dev/zero of=" + dir + "/dd.bin bs=1M count=" +
                                        std::to_string(bytes >> 20) + " conv=fsync status=none"));
  }
  const long writeMiB = PeakMiB();

  gorvan::classData data;
  std::string name;
  if (!data.OpenFiles(path, false, true)) return 1;
  TimeShell("cat " + path + " > /dev/null");  // warm the page cache for both readers
  // The best of seven walks and cats, as the machine may be busy with other work.
  size_t total = 0;
  int64_t names = 0;
  double walkSecs = 1e9;
  for (int round = 0; round < 7; ++round) {
    total = 0;
    const auto start = Clock::now();
    names = WalkCatalog(data, &total);
    walkSecs = std::min(walkSecs, Seconds(start));
  }
  double catSecs = 1e9;
  for (int round = 0; round < 7; ++round) {
    catSecs = std::min(catSecs, TimeShell("cat " + path + " > /dev/null"));
  }

  std::printf("catalog: %lld bytes, %lld file names read (%zu bytes of names)\n",
              static_cast<long long>(bytes), static_cast<long long>(names), total);
  std::printf("write: %.3f s   dd same bytes: %.3f s   ratio %.2fx (target <= 3x)\n", writeSecs,
              ddSecs, writeSecs / ddSecs);
  std::printf("walk:  %.3f s   cat the file:  %.3f s   ratio %.2fx (target <= 3x)\n", walkSecs,
              catSecs, walkSecs / catSecs);
  std::printf("peak memory: %ld MiB after writing, %ld MiB after walking (target < 64 MiB)\n",
              writeMiB, PeakMiB());
  std::system(("rm -rf " + dir).c_str());
  return 0;
}
