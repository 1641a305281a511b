// Catalog search speed against grep on the same names.
//
// Writes one disc of 10,000 folders with 100 files each (1,000,000 file
// records with realistic names) and a text file holding every disc, folder and
// file name of it, one per line. Then times, end to end, `gorvan-cli search
// TEXT --count` (process start, opening the catalog, walking every record,
// matching) for a plain " Anywhere" search and three patterns, and in the same
// run grep -c over the text file with the equivalent expression. grep's output
// goes into a pipe: with its output on /dev/null grep stops at the first match.
// Prints each pair of times, their ratio (target <= 2x), the hit counts (which
// must agree) and the peak memory of each gorvan-cli run.
//
// Usage: bench_search [FOLDERS]   (default 10000; 100 files each)
// With GORVAN_BENCH_KEEP set the catalog and the name list stay for profiling.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "RealNames.h"
#include "catalog/classData.h"
#include "search/CatalogSearch.h"

namespace {

using Clock = std::chrono::steady_clock;

double Seconds(Clock::time_point since) {
  return std::chrono::duration<double>(Clock::now() - since).count();
}

std::string Quote(const std::string& s) {
  std::string out = "'";
  for (char c : s) {
    if (c == '\'') {
      out += "'\\''";
    } else {
      out += c;
    }
  }
  return out + "'";
}

// Runs a shell command, returns its output and the time it took.
std::string RunShell(const std::string& cmd, double* secs) {
  const Clock::time_point start = Clock::now();
  FILE* p = popen(cmd.c_str(), "r");
  std::string out;
  char buf[256];
  size_t n;
  while (p && (n = fread(buf, 1, sizeof buf, p)) > 0) out.append(buf, n);
  if (!p || pclose(p) != 0) std::fprintf(stderr, "command failed: %s\n", cmd.c_str());
  *secs = Seconds(start);
  while (!out.empty() && (out.back() == '\n' || out.back() == '\r')) out.pop_back();
  return out;
}

// Runs gorvan-cli with args; returns its output, time and peak memory (KiB).
std::string RunCli(const std::string& cli, const std::vector<std::string>& args, double* secs,
                   long* peakKiB) {
  int fds[2];
  if (pipe(fds) != 0) return {};
  const Clock::time_point start = Clock::now();
  const pid_t pid = fork();
  if (pid == 0) {
    dup2(fds[1], STDOUT_FILENO);
    close(fds[0]);
    close(fds[1]);
    std::vector<char*> argv{const_cast<char*>(cli.c_str())};
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    execv(cli.c_str(), argv.data());
    _exit(127);
  }
  close(fds[1]);
  std::string out;
  char buf[256];
  ssize_t n;
  while ((n = read(fds[0], buf, sizeof buf)) > 0) out.append(buf, static_cast<size_t>(n));
  close(fds[0]);
  int status = 0;
  rusage ru{};
  wait4(pid, &status, 0, &ru);
  *secs = Seconds(start);
  *peakKiB = ru.ru_maxrss;
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) std::fprintf(stderr, "gorvan-cli failed\n");
  while (!out.empty() && out.back() == '\n') out.pop_back();
  return out;
}

struct Case {
  const char* label;
  const char* text;      // the search text
  const char* grepMode;  // -F or -E
  const char* grepExpr;  // the same search for grep
};

}  // namespace

int main(int argc, char** argv) {
  const int folders = argc > 1 ? std::atoi(argv[1]) : 10000;
  const int filesPerFolder = 100;
  char tmpl[] = "/tmp/gorvan-bench-search-XXXXXX";
  const std::string dir = mkdtemp(tmpl);
  const std::string catalog = dir + "/bench.cd";
  const std::string names = dir + "/names.txt";

  std::string cli = argv[0];
  cli = cli.substr(0, cli.rfind('/') + 1) + "../src/cli/gorvan-cli";
  if (access(cli.c_str(), X_OK) != 0) {
    std::fprintf(stderr, "gorvan-cli not found at %s\n", cli.c_str());
    return 1;
  }

  {
    gorvan::classData data;
    if (!data.OpenFiles(catalog, false, true)) return 1;
    std::ofstream list(names, std::ios::binary);
    gorvan::classCd cd = data.CdCursor();
    data.GetCdAppend(cd);
    cd.SetCdName("Benchmark disc");
    list << "Benchmark disc\n";
    std::string name;
    for (int d = 0; d < folders; ++d) {
      gorvan::classDir& dirRec = cd.GetDirAppend();
      name = "Folder " + std::to_string(d);
      dirRec.SetDirName(name);
      list << name << '\n';
      dirRec.SetDirPath("Archive\\2024\\Projects");
      dirRec.GetFileAppendStart();
      for (int f = 0; f < filesPerFolder; ++f) {
        gorvan::ClassFile& file = dirRec.GetFileAppend();
        name = bench::RealName(static_cast<uint64_t>(d) * filesPerFolder + f);
        file.SetFileName(name);
        list << name << '\n';
        file.setFileSize(1000.0 * f);
        file.setFileDate(45000.5);
        file.setFileAttr(32);
      }
      dirRec.GetFileAppendFinish();
    }
    cd.setCdNumOfFiles(folders * filesPerFolder);
    cd.GetDirAppendFinish();
    if (!data.GetCdCommit(cd)) return 1;
    data.CloseFiles();
  }
  double secs = 0;
  RunShell("cat " + Quote(catalog) + " " + Quote(names) + " > /dev/null", &secs);  // warm the cache

  const Case cases[] = {
      {"plain anywhere", "final", "-F", "final"},
      {"word*", "report*", "-E", "\\breport"},
      {"*part*", "*oliday 20*", "-E", "oliday 20"},
      {"a and b", "report and 2021", "-E", "\\breport\\b.*\\b2021\\b|\\b2021\\b.*\\breport\\b"},
  };
  const char* locale = std::getenv("LC_ALL");
  if (!locale || !*locale) locale = std::getenv("LANG");
  std::printf("%d files in %d folders; grep under locale %s\n", folders * filesPerFolder, folders,
              locale && *locale ? locale : "C");
  std::printf("%-15s %10s %10s %7s %10s %10s %9s\n", "search", "gorvan s", "grep s", "ratio",
              "hits", "grep hits", "peak MiB");
  for (const Case& c : cases) {
    double ourSecs = 0, grepSecs = 0;
    long peak = 0;
    // Best of seven for both, so that a stray scheduler hiccup does not decide:
    // run-to-run times on a shared machine vary by up to a factor of two.
    std::string ours, theirs;
    double bestOurs = 1e9, bestGrep = 1e9;
    for (int i = 0; i < 7; ++i) {
      ours = RunCli(cli, {"-q", "-c", catalog, "search", c.text, "--count"}, &ourSecs, &peak);
      theirs = RunShell(std::string("grep -c -i ") + c.grepMode + " " + Quote(c.grepExpr) + " " +
                            Quote(names) + " | cat",
                        &grepSecs);
      bestOurs = std::min(bestOurs, ourSecs);
      bestGrep = std::min(bestGrep, grepSecs);
    }
    std::printf("%-15s %10.3f %10.3f %6.2fx %10s %10s %9ld%s\n", c.label, bestOurs, bestGrep,
                bestOurs / bestGrep, ours.c_str(), theirs.c_str(), peak / 1024,
                ours == theirs ? "" : "  (hit counts differ)");
  }

  // The walk alone, in this process: no process start, the catalog already open.
  gorvan::classData data;
  if (!data.OpenFiles(catalog, false, true)) return 1;
  gorvan::CatalogSearch search(data);
  gorvan::SearchOptions o;
  o.text = "final";
  o.inNames = true;
  const Clock::time_point start = Clock::now();
  gorvan::JobControl job;
  (void)search.Run(o, nullptr, job);
  std::printf("in-process walk, plain anywhere: %.3f s, %lld hits, %lld files stepped\n",
              Seconds(start), static_cast<long long>(search.hits()),
              static_cast<long long>(search.steps()));
  data.CloseFiles();
  if (std::getenv("GORVAN_BENCH_KEEP")) {
    std::printf("kept %s\n", dir.c_str());
  } else {
    std::system(("rm -rf " + Quote(dir)).c_str());
  }
  return 0;
}
