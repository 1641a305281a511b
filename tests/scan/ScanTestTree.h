#pragma once
// Helpers for the scan tests: fixture files with fixed times, ID3v1 blocks, a
// catalog in a temporary folder, an independent walk (opendir/readdir/lstat)
// to check a scan against, a scan run with test settings and readers of its
// records, and the members of a ZIP file as zipinfo lists them.

#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <stop_token>
#include <string>
#include <vector>

#include "catalog/CatalogCheck.h"
#include "catalog/OleDate.h"
#include "catalog/classData.h"
#include "scan/ScanEngine.h"
#include "support/RunCommand.h"
#include "support/TempDir.h"

namespace gorvan::test {

inline constexpr time_t kFixedTime = 1600000000;  // 2020-09-13 12:26:40 UTC

inline void SetTime(const std::string& path, time_t t) {
  const timespec ts[2] = {{t, 0}, {t, 0}};
  ::utimensat(AT_FDCWD, path.c_str(), ts, AT_SYMLINK_NOFOLLOW);
}
inline std::string MakeDir(const std::string& path) {
  ::mkdir(path.c_str(), 0755);
  return path;
}
inline std::string MakeFile(const std::string& path, const std::string& bytes,
                            time_t t = kFixedTime) {
  WriteFileBytes(path, bytes);
  SetTime(path, t);
  return path;
}
// `n` files prefix0, prefix1, ... holding `bytes` in folder `dir`.
inline void MakeFiles(const std::string& dir, int n, const std::string& prefix,
                      const std::string& bytes) {
  for (int i = 0; i < n; ++i) MakeFile(dir + "/" + prefix + std::to_string(i), bytes);
}

// An ID3v1 block: "TAG", title, artist, album, year, comment (NUL padded), genre.
inline std::string Id3Tag(const std::string& title, const std::string& artist = "",
                          const std::string& album = "", const std::string& year = "",
                          const std::string& comment = "", unsigned char genre = 12) {
  auto field = [](std::string s, size_t n) {
    s.resize(n, '\0');
    return s;
  };
  return "TAG" + field(title, 30) + field(artist, 30) + field(album, 30) + field(year, 4) +
         field(comment, 30) + std::string(1, static_cast<char>(genre));
}

// A catalog file in its own temporary folder.
struct TestCatalog {
  TempDir dir;
  std::string path = dir.File("test.cd");
  std::unique_ptr<classData> data = std::make_unique<classData>();

  TestCatalog() { data->OpenFiles(path, false, true); }
  void Reopen() {
    data = std::make_unique<classData>();
    data->OpenFiles(path, false, true);
  }
};

// A number with all its digits, so that texts of numbers compare exactly.
inline std::string Exact(double v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.17g", v);
  return buf;
}

// What an independent walk expects of one folder record.
struct ExpectedDir {
  std::string parent, name;
  double date;
  int32_t attr;
  std::vector<std::string> files;  // "name=size|date|attr", in file-system order
  int32_t subtreeFiles = 0, subtreeDirs = 0;
  double bytes = 0;
};

// Walks `path` the way a scan must see it: files before subfolders, names
// beginning with "." left out unless `hidden`, links not followed. Appends the
// folder and its subfolders depth first to *out; returns the folder's index.
inline size_t ExpectWalk(const std::string& path, const std::string& parent,
                         const std::string& name, bool hidden, std::vector<ExpectedDir>* out) {
  struct stat st;
  ::lstat(path.c_str(), &st);
  const size_t me = out->size();
  out->push_back(
      {parent, name, OleDateFromTime(st.st_mtime), ScanEngine::AttributesOf(st, name), {}});
  std::vector<std::string> subdirs;
  if (DIR* d = ::opendir(path.c_str())) {
    while (dirent* e = ::readdir(d)) {
      const std::string n = e->d_name;
      if (n == "." || n == ".." || (n[0] == '.' && !hidden)) continue;
      if (::lstat((path + "/" + n).c_str(), &st) != 0) continue;
      if (S_ISDIR(st.st_mode)) {
        subdirs.push_back(n);
        continue;
      }
      (*out)[me].files.push_back(n + "=" + Exact(static_cast<double>(st.st_size)) + "|" +
                                 Exact(OleDateFromTime(st.st_mtime)) + "|" +
                                 std::to_string(ScanEngine::AttributesOf(st, n)));
      (*out)[me].bytes += static_cast<double>(st.st_size);
    }
    ::closedir(d);
  }
  (*out)[me].subtreeFiles = static_cast<int32_t>((*out)[me].files.size());
  const std::string childParent =
      name.empty() ? parent : (parent == "\\" ? name : parent + "\\" + name);
  for (const std::string& s : subdirs) {
    const ExpectedDir& c = (*out)[ExpectWalk(path + "/" + s, childParent, s, hidden, out)];
    (*out)[me].subtreeDirs += c.subtreeDirs + 1;
    (*out)[me].subtreeFiles += c.subtreeFiles;
    (*out)[me].bytes += c.bytes;
  }
  return me;
}

// A test scan: disc "Disc" with notes "Some notes" and label "LABEL", on a
// volume mounted at "/" with serial 0xABCD1234 and 12345 bytes free. Audio
// values are handed over in audio scan mode only.
struct ScanOptions {
  ScanOptions() {
    s.discName = "Disc";
    s.notes = "Some notes";
    s.volumeLabel = "LABEL";
  }
  ScanSettings s;
  ScanVolume v{.serial = 0xABCD1234, .freeBytes = 12345};
  std::vector<AudioTrack> tracks;
  AudioValues audio;
  // Called at every progress step; it may ask the scan's stop.
  std::function<void(std::stop_source&, const JobProgress&)> progress;
};

// Scans `path`; returns the new disc's id (0 on failure or cancel). *keep
// gets the engine, valid until the next call.
inline int32_t Scan(classData& data, const std::string& path, ScanOptions o = {},
                    ScanEngine** keep = nullptr) {
  static std::unique_ptr<ScanEngine> engine;
  engine = std::make_unique<ScanEngine>(data);
  o.s.path = path;
  engine->SetVars(o.s);
  engine->SetVolume(o.v);
  if (o.s.scanMode == kMediaAudioCd) engine->SetAudio(o.tracks, o.audio);
  std::stop_source stop;
  JobControl job;
  if (o.progress) {
    job = JobControl(
        stop.get_token(), [&o, &stop](const JobProgress& p) { o.progress(stop, p); },
        JobControl::kEveryStep);
  }
  const int32_t id = engine->ScanCd(job);
  if (keep) *keep = engine.get();
  return id;
}

// "path|name" of every folder record of a disc, each followed by what `more`
// says of it.
inline std::vector<std::string> Folders(classData& data, int32_t id,
                                        const std::function<std::string(classDir&)>& more = {}) {
  std::vector<std::string> got;
  classCd cd(data.file());
  if (!cd.recordGet(id)) return got;
  for (classDir& d = cd.GetDirFirst(); !d.isEof(); d.MoveNext()) {
    got.push_back(d.GetDirPath() + "|" + d.GetDirName() + (more ? more(d) : ""));
  }
  return got;
}

// The name of every file record of a folder, each followed by "=" and what
// `more` says of it; in record order or sorted.
inline std::vector<std::string> Files(classDir& dir, bool sorted,
                                      const std::function<std::string(ClassFile&)>& more = {}) {
  std::vector<std::string> got;
  for (ClassFile& f = dir.GetFileFirst(); !f.isEof(); f.MoveNext()) {
    got.push_back(f.GetFileName() + (more ? "=" + more(f) : ""));
  }
  if (sorted) std::sort(got.begin(), got.end());
  return got;
}

// Every note of a disc, keyed by folder ("path\name") or "folder|file".
inline std::map<std::string, std::string> AllNotes(classData& data, int32_t disc) {
  std::map<std::string, std::string> notes;
  classCd cd(data.file());
  if (!cd.recordGet(disc)) return notes;
  for (classDir& d = cd.GetDirFirst(); !d.isEof(); d.MoveNext()) {
    if (!d.GetDirNotes().empty()) notes[d.GetDirFullName()] = d.GetDirNotes();
    for (ClassFile& f = d.GetFileFirst(); !f.isEof(); f.MoveNext()) {
      if (!f.GetFileNotes().empty())
        notes[d.GetDirFullName() + "|" + f.GetFileName()] = f.GetFileNotes();
    }
  }
  return notes;
}

// Checks every folder and file record of disc `id` against the independent walk.
inline void ExpectDiscMatches(classData& data, int32_t id,
                              const std::vector<ExpectedDir>& expected) {
  classCd cd(data.file());
  ASSERT_TRUE(cd.recordGet(id));
  size_t i = 0;
  for (classDir& dir = cd.GetDirFirst(); !dir.isEof(); dir.MoveNext(), ++i) {
    ASSERT_LT(i, expected.size());
    const ExpectedDir& e = expected[i];
    SCOPED_TRACE("folder " + e.parent + " | " + e.name);
    EXPECT_EQ(dir.GetDirPath(), e.parent);
    EXPECT_EQ(dir.GetDirName(), e.name);
    EXPECT_EQ(dir.GetDirDate(), e.date);
    EXPECT_EQ(dir.GetDirAttr(), e.attr);
    EXPECT_EQ(dir.GetDirSize(), -e.bytes);
    EXPECT_TRUE(std::signbit(dir.GetDirSize())) << "an empty folder's size is -0";
    EXPECT_EQ(dir.GetDirCountOfFiles(), e.subtreeFiles);
    EXPECT_EQ(dir.GetDirCountOfDirs(), e.subtreeDirs);
    EXPECT_EQ(dir.GetDirCountOfFilesDirect(), static_cast<int32_t>(e.files.size()));
    // A new scan writes no notes and no path for a file.
    const auto text = [](ClassFile& f) {
      return Exact(f.GetFileSize()) + "|" + Exact(f.GetFileDate()) + "|" +
             std::to_string(f.getFileAttr()) + f.GetFileNotes() + f.GetFilePath();
    };
    EXPECT_EQ(Files(dir, false, text), e.files);
  }
  EXPECT_EQ(i, expected.size());
  EXPECT_EQ(cd.GetCdNumOfFiles(), expected[0].subtreeFiles);
  EXPECT_EQ(cd.GetCdNumOfSubdirs(), expected[0].subtreeDirs);
  EXPECT_EQ(cd.GetCdtotalSize(), expected[0].bytes);
}

// Flushes the catalog and checks it finds no fault and no garbage.
inline void ExpectSoundCatalog(classData& data) {
  ASSERT_TRUE(data.Flush());
  CatalogCheck check(data.file());
  EXPECT_EQ(check.Run(), std::vector<std::string>());
  EXPECT_EQ(check.garbage(), 0);
}

// Sets TZ while it lives and puts the old value back.
struct ZoneGuard {
  const char* old = std::getenv("TZ");
  std::string saved = old ? old : "";
  explicit ZoneGuard(const char* zone) {
    ::setenv("TZ", zone, 1);
    ::tzset();
  }
  ~ZoneGuard() {
    old ? ::setenv("TZ", saved.c_str(), 1) : ::unsetenv("TZ");
    ::tzset();
  }
};

// Runs `body` in a child process; returns its result, -1 if it did not exit.
inline int RunInChild(const std::function<int()>& body) {
  const pid_t pid = ::fork();
  if (pid == 0) ::_exit(body());
  int status = 0;
  if (pid < 0 || ::waitpid(pid, &status, 0) != pid || !WIFEXITED(status)) return -1;
  return WEXITSTATUS(status);
}

// Drops the capabilities that let root read any folder, so that a folder
// without permissions is unreadable for this process too.
inline bool DropReadOverride() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct caps[2] = {};
  if (::syscall(SYS_capget, &header, caps) != 0) return false;
  for (int bit : {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH}) {
    caps[bit / 32].effective &= ~(1u << (bit % 32));
  }
  return ::syscall(SYS_capset, &header, caps) == 0;
}

inline bool HaveTool(const std::string& name) {
  return std::system(("command -v " + name + " >/dev/null 2>&1").c_str()) == 0;
}

// The file members `zipinfo -l -T` lists (perms version os size type packed
// method yyyymmdd.hhmmss name), as "path=size|ZP<packed>|date".
inline std::map<std::string, std::string> ZipinfoMembers(const std::string& archive) {
  std::map<std::string, std::string> out;
  std::istringstream lines(RunCommand("zipinfo -l -T '" + archive + "'").out);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream f(line);
    std::string perms, a, b, size, c, packed, d, date, path;
    if (!(f >> perms >> a >> b >> size >> c >> packed >> d >> date) || perms.size() != 10 ||
        perms[0] != '-') {
      continue;  // headers, totals, folders
    }
    std::getline(f >> std::ws, path);
    out[path] = size + "|ZP" + packed + "|" + date;
  }
  return out;
}

// A catalog date (days since 30 December 1899, local time) as zipinfo -T prints dates.
inline std::string ZipinfoDateOfOle(double ole) {
  const time_t t = static_cast<time_t>(std::llround((ole - 25569.0) * 86400.0));
  std::tm tm{};
  gmtime_r(&t, &tm);
  char buf[32];
  std::strftime(buf, sizeof buf, "%Y%m%d.%H%M%S", &tm);
  return buf;
}

}  // namespace gorvan::test
