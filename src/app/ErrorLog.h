#pragma once
// ErrorLog: the error routine's log, "Gorvan.err" in the application folder.
// Each error appends one line:
//   2026-11-21 14:03:09 1.0.1.Std | classData.OpenFiles | 1001 | <description>
// followed by an empty line unless the mode is 3. The log is only ever
// appended to.

#include <string>
#include <string_view>

namespace gorvan {

inline constexpr const char* kErrorLogName = "Gorvan.err";

class ErrorLog {
 public:
  explicit ErrorLog(std::string path) : path_(std::move(path)) {}
  // The log of the application folder.
  static ErrorLog Default();

  // Appends the entry; false when the log cannot be written (the error is
  // then lost: there is nowhere left to report it).
  bool Append(std::string_view routine, int number, std::string_view description, int mode) const;
  const std::string& path() const { return path_; }

  // Makes the default log the sink of every error the core layers trap.
  static void InstallAsErrorSink();

 private:
  std::string path_;
};

}  // namespace gorvan
