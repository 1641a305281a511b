#pragma once
// GuiStartup: what the desktop program works out before its main window
// shows — the catalog to open and a folder to scan, from the command line and
// the history — and the check that a display is there at all.
//
// The command line: "--scan PATH", "--scan=PATH" or "/Scan PATH" (any case)
// ask for the scan dialog; anything else, its words joined by blanks, names a
// catalog file (taken in the current folder, else in the application folder).
// The catalog is that file when it exists, else the newest catalog of the
// history when it exists, else "Gorvan.cd" in the application folder (created
// when missing).

#include <QString>
#include <string>
#include <vector>

namespace gorvan::ui {

struct StartupChoice {
  std::string catalogPath;
  QString scanPath;
};

class GuiStartup {
 public:
  static StartupChoice Choose(const std::vector<std::string>& args);
  // True when a window can be shown: a platform was named (QT_QPA_PLATFORM or
  // -platform) or DISPLAY or WAYLAND_DISPLAY is set.
  static bool HasDisplay(const std::vector<std::string>& args);
  // --help or -h.
  static bool WantsHelp(const std::vector<std::string>& args);
  static const char* Usage();
  static const char* NoDisplayMessage();
};

}  // namespace gorvan::ui
