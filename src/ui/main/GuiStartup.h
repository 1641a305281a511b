#pragma once
// GuiStartup: what the desktop program checks before Qt starts — that there is
// a display to show a window on, and whether the user asked for the usage.
// The start-up steps themselves (settings, the catalog to open, the scan
// folder of "--scan PATH") are StartupSequence's.

#include <string>
#include <vector>

namespace gorvan::ui {

class GuiStartup {
 public:
  // True when a window can be shown: a platform was named (QT_QPA_PLATFORM or
  // -platform) or DISPLAY or WAYLAND_DISPLAY is set.
  static bool HasDisplay(const std::vector<std::string>& args);
  // --help or -h.
  static bool WantsHelp(const std::vector<std::string>& args);
  static const char* Usage();
  static const char* NoDisplayMessage();
};

}  // namespace gorvan::ui
