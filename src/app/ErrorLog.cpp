#include "app/ErrorLog.h"

#include <fcntl.h>
#include <unistd.h>

#include <ctime>

#include "app/AppFolder.h"
#include "catalog/ErrorReporter.h"

namespace gorvan {

ErrorLog ErrorLog::Default() { return ErrorLog(AppFolder::File(kErrorLogName)); }

bool ErrorLog::Append(std::string_view routine, int number, std::string_view description,
                      int mode) const {
  char stamp[32];
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S", &local);

  std::string line;
  line.reserve(64 + routine.size() + description.size());
  line.append(stamp).append(" ").append(VersionString()).append(" | ");
  line.append(routine).append(" | ").append(std::to_string(number)).append(" | ");
  // One entry is one line: line breaks inside the description are flattened.
  for (char c : description) line.push_back(c == '\n' || c == '\r' ? ' ' : c);
  line.push_back('\n');
  if (mode != 3) line.push_back('\n');

  // O_APPEND makes each entry one atomic write at the end, even when the
  // desktop program and the command line log at the same time.
  const int fd = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  if (fd < 0) return false;
  const ssize_t n = ::write(fd, line.data(), line.size());
  ::close(fd);
  return n == static_cast<ssize_t>(line.size());
}

void ErrorLog::InstallAsErrorSink() {
  SetErrorSink([](std::string_view routine, int number, std::string_view description, int mode) {
    Default().Append(routine, number, description, mode);
  });
}

}  // namespace gorvan
