#pragma once
// Helpers for the scan tests: fixture files with fixed times, ID3v1 blocks, a
// catalog in a temporary folder, an independent walk (opendir/readdir/lstat)
// to check a scan against, and listings of archives by outside tools.

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <ctime>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

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
