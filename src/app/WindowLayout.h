#pragma once
// WindowLayout: what dialogs and list views keep of their layout in the
// per-user store, section "Defaults": a dialog's size under "<name>_width" and
// "<name>_height" (single-precision numbers), and per column n (1 for the
// first) of a list view "<list>_col<n>_width" and "<list>_col<n>_order" (the
// column's display position, 0 for the leftmost). The desktop program calls
// these with the values of its widgets; values are written only when they
// changed since the window was restored, so closing an untouched window
// writes nothing.
//
// Thread contract: any thread.

#include <string>
#include <vector>

namespace gorvan {

inline constexpr const char* kDefaultsSection = "Defaults";

struct WindowSize {
  float width = 0;
  float height = 0;
};

struct ColumnLayout {
  int width = 0;
  int order = 0;
  bool operator==(const ColumnLayout&) const = default;
};

class WindowLayout {
 public:
  // The stored size of window name; a value that is missing or not a number
  // is taken from current.
  static WindowSize RestoreSize(const std::string& name, WindowSize current);
  // Writes the width and the height each only when it differs from the value
  // the window had when it was restored.
  static void SaveSize(const std::string& name, WindowSize now, WindowSize restored);

  // The stored layout of the columns of list; one entry per column of
  // current, each value that is missing or not a number taken from current.
  static std::vector<ColumnLayout> RestoreColumns(const std::string& list,
                                                  const std::vector<ColumnLayout>& current);
  // Writes each column's width and order only when it differs from restored
  // (a column restored had none: always written).
  static void SaveColumns(const std::string& list, const std::vector<ColumnLayout>& now,
                          const std::vector<ColumnLayout>& restored);
};

}  // namespace gorvan
