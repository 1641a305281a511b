#pragma once
// Helpers for the scan tests: fixture files with fixed times, ID3v1 blocks, a
// catalog in a temporary folder, an independent walk (opendir/readdir/lstat)
// to check a scan against, a scan run with test settings and readers of its
// records, and listings of archives by outside tools.

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
#include "catalog/FileIO.h"
#include "catalog/OleDate.h"
#include "catalog/classData.h"
#include "scan/ScanEngine.h"
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

// What an independent walk expects of one folder record.
struct ExpectedFile {
  std::string name;
  double size, date;
  int32_t attr;
};
struct ExpectedDir {
  std::string parent, name;
  double date;
  int32_t attr;
  std::vector<ExpectedFile> files;  // all files found, in file-system order
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
  out->push_back(ExpectedDir{parent, name, OleDateFromTime(st.st_mtime),
                             ScanEngine::AttributesOf(st, name), {}});
  std::vector<std::string> subdirs;
  if (DIR* d = ::opendir(path.c_str())) {
    while (dirent* e = ::readdir(d)) {
      const std::string n = e->d_name;
      struct stat cs;
      if (n == "." || n == ".." || (n[0] == '.' && !hidden)) continue;
      if (::lstat((path + "/" + n).c_str(), &cs) != 0) continue;
      if (S_ISDIR(cs.st_mode)) {
        subdirs.push_back(n);
        continue;
      }
      (*out)[me].files.push_back({n, static_cast<double>(cs.st_size),
                                  OleDateFromTime(cs.st_mtime), ScanEngine::AttributesOf(cs, n)});
      (*out)[me].bytes += static_cast<double>(cs.st_size);
    }
    ::closedir(d);
  }
  (*out)[me].subtreeFiles = static_cast<int32_t>((*out)[me].files.size());
  const std::string childParent =
      name.empty() ? parent : (parent == "\\" ? name : parent + "\\" + name);
  for (const std::string& s : subdirs) {
    const size_t child = ExpectWalk(path + "/" + s, childParent, s, hidden, out);
    (*out)[me].subtreeDirs += (*out)[child].subtreeDirs + 1;
    (*out)[me].subtreeFiles += (*out)[child].subtreeFiles;
    (*out)[me].bytes += (*out)[child].bytes;
  }
  return me;
}

// The settings of a test scan; volume facts are fixed (serial 0xABCD1234,
// 12345 bytes free). Audio values are handed over in audio scan mode only.
struct ScanOptions {
  std::string include = "*.*", exclude;
  bool zip = false, mp3 = false, dirsOnly = false, hidden = false;
  int32_t previous = 0, mode = 0, category = 0;
  std::string mountPoint;  // "" = "/"
  int driveType = 3;
  std::string label = "LABEL";
  std::vector<AudioTrack> tracks;
  AudioValues audio;
  // Called at every progress step; it may ask the scan's stop.
  std::function<void(std::stop_source&, const JobProgress&)> progress;
};

// Scans `path` as disc "Disc" with notes "Some notes"; returns the new disc's
// id (0 on failure or cancel). *keep gets the engine, valid until the next call.
inline int32_t Scan(classData& data, const std::string& path, ScanOptions o = {},
                    ScanEngine** keep = nullptr) {
  static std::unique_ptr<ScanEngine> engine;
  engine = std::make_unique<ScanEngine>(data);
  ScanSettings s;
  s.previousDiscId = o.previous;
  s.path = path;
  s.discName = "Disc";
  s.notes = "Some notes";
  s.volumeLabel = o.label;
  s.categoryId = o.category;
  s.includeText = o.include;
  s.excludeText = o.exclude;
  s.scanZip = o.zip;
  s.scanMp3 = o.mp3;
  s.directoriesOnly = o.dirsOnly;
  s.scanMode = o.mode;
  s.includeHidden = o.hidden;
  engine->SetVars(s);
  ScanVolume v;
  v.mountPoint = o.mountPoint.empty() ? "/" : o.mountPoint;
  v.serial = 0xABCD1234;
  v.freeBytes = 12345;
  v.driveType = o.driveType;
  engine->SetVolume(v);
  if (o.mode == kMediaAudioCd) engine->SetAudio(o.tracks, o.audio);
  std::stop_source stop;
  JobControl job;
  if (o.progress) {
    job = JobControl(stop.get_token(), [&o, &stop](const JobProgress& p) { o.progress(stop, p); },
                     JobControl::kEveryStep);
  }
  const int32_t id = engine->ScanCd(job);
  if (keep) *keep = engine.get();
  return id;
}

// `n` files prefix0, prefix1, ... holding `bytes` in folder `dir`.
inline void MakeFiles(const std::string& dir, int n, const std::string& prefix,
                      const std::string& bytes) {
  for (int i = 0; i < n; ++i) MakeFile(dir + "/" + prefix + std::to_string(i), bytes);
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
    EXPECT_TRUE(std::signbit(dir.GetDirSize()));
    EXPECT_EQ(dir.GetDirCountOfFiles(), e.subtreeFiles);
    EXPECT_EQ(dir.GetDirCountOfDirs(), e.subtreeDirs);
    EXPECT_EQ(dir.GetDirCountOfFilesDirect(), static_cast<int32_t>(e.files.size()));
    size_t k = 0;
    for (ClassFile& f = dir.GetFileFirst(); !f.isEof(); f.MoveNext(), ++k) {
      ASSERT_LT(k, e.files.size());
      EXPECT_EQ(f.GetFileName(), e.files[k].name);
      EXPECT_EQ(f.GetFileSize(), e.files[k].size);
      EXPECT_EQ(f.GetFileDate(), e.files[k].date);
      EXPECT_EQ(f.getFileAttr(), e.files[k].attr);
      EXPECT_EQ(f.GetFileNotes(), "");
      EXPECT_EQ(f.GetFilePath(), "");
    }
    EXPECT_EQ(k, e.files.size());
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

// A file that fails every write once it would grow past a limit: a full disk.
class FullDisk : public FileIO {
 public:
  FullDisk(std::unique_ptr<FileIO> real, uint64_t limit) : real_(std::move(real)), limit_(limit) {}
  Status ReadAt(uint64_t off, void* dst, size_t n, size_t* got) override {
    return real_->ReadAt(off, dst, n, got);
  }
  Status WriteAt(uint64_t off, const void* src, size_t n) override {
    if (off + n > limit_) return Status::IOError("No space left on device");
    return real_->WriteAt(off, src, n);
  }
  Status Truncate(uint64_t len) override { return real_->Truncate(len); }
  Status Sync() override { return real_->Sync(); }
  Status Size(uint64_t* size) override { return real_->Size(size); }

 private:
  std::unique_ptr<FileIO> real_;
  uint64_t limit_;
};

inline bool HaveTool(const std::string& name) {
  return std::system(("command -v " + name + " >/dev/null 2>&1").c_str()) == 0;
}

// One file member as an outside tool lists it: its '/'-separated path, sizes
// (packed -1 when the tool does not say), the date as the tool prints it and
// whether any write bit is set.
struct ToolMember {
  std::string path;
  long long size = 0, packed = -1;
  std::string date;
  bool writable = true;
};

// The file members listed by `zipinfo -l -T` (perms version os size type
// packed method yyyymmdd.hhmmss name) or `bsdtar -tv` (perms links owner
// group size, three date words, name).
inline std::vector<ToolMember> ToolMembers(const std::string& archive, bool zipinfo) {
  std::string text;
  const std::string cmd = (zipinfo ? "zipinfo -l -T '" : "bsdtar -tvf '") + archive + "'";
  if (FILE* p = ::popen(cmd.c_str(), "r")) {
    char buf[4096];
    for (size_t n; (n = std::fread(buf, 1, sizeof buf, p)) > 0;) text.append(buf, n);
    ::pclose(p);
  }
  std::vector<ToolMember> out;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream f(line);
    std::string perms, a, b, c, d1, d2, d3;
    ToolMember m;
    const bool ok = zipinfo ? !!(f >> perms >> a >> b >> m.size >> c >> m.packed >> d1 >> m.date)
                            : !!(f >> perms >> a >> b >> c >> m.size >> d1 >> d2 >> d3);
    if (!ok || perms.size() != 10 || perms[0] != '-') continue;  // headers, totals, folders
    if (!zipinfo) m.date = d1 + " " + d2 + " " + d3;
    std::getline(f >> std::ws, m.path);
    m.writable = perms.find('w') != std::string::npos;
    out.push_back(m);
  }
  return out;
}

// A time printed with strftime: seconds since 1970 in local time, or, with
// `wall`, a count of seconds that already is the local wall-clock time.
inline std::string TimeText(time_t t, const char* format, bool wall = false) {
  std::tm tm{};
  wall ? gmtime_r(&t, &tm) : localtime_r(&t, &tm);
  char buf[32];
  std::strftime(buf, sizeof buf, format, &tm);
  return buf;
}
// Dates as zipinfo -T and bsdtar -tv print them (bsdtar: the time of day
// within half a year of now, else the year; words joined by one blank).
inline std::string ZipinfoDate(time_t t) { return TimeText(t, "%Y%m%d.%H%M%S"); }
inline std::string BsdtarDate(time_t t) {
  const bool recent = std::llabs(static_cast<long long>(std::time(nullptr) - t)) < 365 * 86400 / 2;
  std::istringstream words(TimeText(t, recent ? "%b %e %H:%M" : "%b %e %Y"));
  std::string a, b, c;
  words >> a >> b >> c;
  return a + " " + b + " " + c;
}
// A catalog date (days since 30 December 1899, local time) as zipinfo -T prints dates.
inline std::string ZipinfoDateOfOle(double ole) {
  return TimeText(static_cast<time_t>(std::llround((ole - 25569.0) * 86400.0)), "%Y%m%d.%H%M%S",
                  true);
}

}  // namespace gorvan::test
