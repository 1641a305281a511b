#pragma once
// ReadOnlyCheck: runs before any catalog file is opened. A read-only file is
// opened only when the user agrees to make it writable; the question is asked
// through a callback so the desktop program and the command line each ask it
// their own way.

#include <functional>
#include <string>

namespace gorvan {

inline constexpr const char* kReadOnlyQuestion =
    "Your data file is read-only,\ndo you want to make it read-write?";

class ReadOnlyCheck {
 public:
  // Returns a Yes (true) or No (false) to the question.
  using Ask = std::function<bool(const std::string& question)>;

  // True when the file may be opened: it does not exist yet, it is writable,
  // or the user said Yes and its owner-write bit (only that) was set. On false,
  // *error says why ("" when the user said No).
  static bool Run(const std::string& path, const Ask& ask, std::string* error);
};

}  // namespace gorvan
