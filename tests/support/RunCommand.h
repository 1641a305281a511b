#pragma once
// RunCommand: a shell command line's exit code (-1 when it did not exit) and
// what it wrote to standard output, for the tests that run gorvan-cli and tools.

#include <sys/wait.h>

#include <cstdio>
#include <string>

namespace gorvan::test {

struct CommandResult {
  int code = -1;
  std::string out;
};

inline CommandResult RunCommand(const std::string& command) {
  CommandResult r;
  FILE* p = ::popen(command.c_str(), "r");
  if (!p) return r;
  char buf[4096];
  for (size_t n; (n = std::fread(buf, 1, sizeof buf, p)) > 0;) r.out.append(buf, n);
  const int status = ::pclose(p);
  r.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return r;
}

}  // namespace gorvan::test
