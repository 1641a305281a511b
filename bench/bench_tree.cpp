// DiscTree against a plain walk of the same folder chain.
//
// Writes one disc of 50,000 folders nested up to four levels below a folder
// root (as a scan of /home/ann/Archive would store them: depth first, each
// folder followed by its 20 files, 1,000,000 files in all), then times the
// best of seven DiscTree builds against the best of seven walks of the disc's
// folder chain reading each folder's name. Prints both times, the ratio, the
// tree's own bytes and the peak memory the build added to the process.
//
// Usage: bench_tree [FOLDERS]   (default 50000)
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "catalog/DiscTree.h"
#include "catalog/classData.h"

namespace {

using Clock = std::chrono::steady_clock;

double Seconds(Clock::time_point since) {
  return std::chrono::duration<double>(Clock::now() - since).count();
}

// Children per folder at each depth, and the stem of their names.
constexpr int kFanOut[] = {40, 12, 10, 10};
constexpr const char* kStems[] = {"Collection ", "Year 20", "Album ", "Disc "};
constexpr int kFilesPerFolder = 20;

struct Writer {
  gorvan::classCd* cd;
  int folders = 0;  // written so far
  int limit;
  std::string fileName;

  // Writes a folder, its files, then its subfolders; path is the folder's
  // parent path, full its own full path.
  void Folder(const std::string& path, const std::string& name, int depth) {
    if (folders >= limit) return;
    ++folders;
    gorvan::classDir& dir = cd->GetDirAppend();
    dir.SetDirPath(path);
    dir.SetDirName(name);
    dir.record().attr = 16;
    dir.GetFileAppendStart();
    static const char* const kExts[] = {".jpg", ".mp3", ".pdf", ".flac", ".txt"};
    for (int f = 0; f < kFilesPerFolder; ++f) {
      gorvan::ClassFile& file = dir.GetFileAppend();
      fileName.assign("Track ")
          .append(std::to_string(folders * kFilesPerFolder + f))
          .append(kExts[f % 5]);
      file.SetFileName(fileName);
      file.setFileSize(1000.0 * f);
    }
    dir.GetFileAppendFinish();
    if (depth >= static_cast<int>(std::size(kFanOut))) return;
    const std::string full = path + "\\" + name;
    for (int c = 0; c < kFanOut[depth]; ++c) {
      Folder(full, kStems[depth] + std::to_string(c + 1), depth + 1);
    }
  }
};

// Returns the disc id, 0 on failure.
int32_t WriteCatalog(const std::string& path, int folders) {
  gorvan::classData data;
  if (!data.OpenFiles(path, false, true)) return 0;
  gorvan::classCd cd = data.CdCursor();
  data.GetCdAppend(cd);
  cd.SetCdName("Archive");
  Writer w{&cd, 0, folders, {}};
  w.Folder("home\\ann", "Archive", 0);
  cd.setCdNumOfSubdirs(w.folders - 1);
  cd.setCdNumOfFiles(w.folders * kFilesPerFolder);
  cd.GetDirAppendFinish();
  const int32_t id = cd.GetCdId();
  if (!data.GetCdCommit(cd)) return 0;
  data.CloseFiles();
  return id;
}

// Reads every folder's name of the disc; returns the bytes of names read.
[[gnu::noinline]] size_t WalkFolders(gorvan::CatalogFile* file, int32_t disc, int* folders) {
  gorvan::classCd cd(file);
  std::string name;
  size_t bytes = 0;
  *folders = 0;
  if (!cd.recordGet(disc)) return 0;
  for (gorvan::classDir& d = cd.GetDirFirst(); !d.isEof(); d.MoveNext()) {
    d.GetDirName(&name);
    bytes += name.size();
    ++*folders;
  }
  return bytes;
}

// A /proc/self/status value in KiB ("VmRSS", "VmHWM").
long StatusKiB(const std::string& key) {
  std::ifstream in("/proc/self/status");
  for (std::string line; std::getline(in, line);) {
    if (line.rfind(key + ":", 0) == 0) return std::atol(line.c_str() + key.size() + 1);
  }
  return -1;
}

}  // namespace

int main(int argc, char** argv) {
  const int folders = argc > 1 ? std::atoi(argv[1]) : 50000;
  char tmpl[] = "/tmp/gorvan-bench-tree-XXXXXX";
  const std::string dir = mkdtemp(tmpl);
  const std::string path = dir + "/bench.cd";
  const auto writeStart = Clock::now();
  const int32_t disc = WriteCatalog(path, folders);
  if (disc == 0) return 1;

  gorvan::classData data;
  if (!data.OpenFiles(path, false, true)) return 1;
  gorvan::CatalogFile* file = data.file();
  std::printf("catalog: %lld bytes, %d folders of %d files, written in %.1f s\n",
              static_cast<long long>(file->Length()), folders, kFilesPerFolder,
              Seconds(writeStart));
  if (std::system(("cat " + path + " > /dev/null").c_str()) != 0) return 1;  // warm the cache

  // The peak the first build adds: the high-water mark is reset just before.
  std::ofstream("/proc/self/clear_refs") << "5";
  const long rssBefore = StatusKiB("VmRSS");
  gorvan::DiscTree tree;
  if (const gorvan::Status s = tree.Build(file, disc); !s.ok()) {
    std::fprintf(stderr, "build failed: %s\n", s.message().c_str());
    return 1;
  }
  const long buildPeakKiB = StatusKiB("VmHWM") - rssBefore;
  int depth = 0;
  for (int32_t n = 0; n < tree.size(); ++n) depth = std::max(depth, tree.depth(n));

  // The best of seven of each, interleaved, as the machine may be busy.
  double walkSecs = 1e9, treeSecs = 1e9;
  int walked = 0;
  size_t nameBytes = 0;
  for (int round = 0; round < 7; ++round) {
    auto start = Clock::now();
    nameBytes = WalkFolders(file, disc, &walked);
    walkSecs = std::min(walkSecs, Seconds(start));
    start = Clock::now();
    gorvan::DiscTree t;
    if (!t.Build(file, disc).ok()) return 1;
    treeSecs = std::min(treeSecs, Seconds(start));
  }

  std::printf("disc: %d folders (%zu bytes of names), tree of %d nodes, depth %d, %d orphans\n",
              walked, nameBytes, tree.size(), depth, tree.orphans());
  std::printf("tree:  %.4f s   plain walk: %.4f s   ratio %.2fx (target <= 2x)\n", treeSecs,
              walkSecs, treeSecs / walkSecs);
  std::printf("memory: tree %.2f MiB, build peak %.2f MiB (target < 16 MiB)\n",
              static_cast<double>(tree.MemoryBytes()) / (1 << 20),
              static_cast<double>(buildPeakKiB) / 1024.0);
  rusage ru{};
  ::getrusage(RUSAGE_SELF, &ru);
  std::printf("process peak memory %.1f MiB\n", static_cast<double>(ru.ru_maxrss) / 1024.0);
  std::system(("rm -rf " + dir).c_str());
  return tree.size() == walked ? 0 : 1;
}
