#include "ui/main/GuiStartup.h"

#include <cstdlib>

namespace gorvan::ui {
namespace {

bool Set(const char* name) {
  const char* v = std::getenv(name);
  return v && *v;
}

}  // namespace

bool GuiStartup::HasDisplay(const std::vector<std::string>& args) {
  for (const std::string& a : args) {
    if (a == "-platform" || a == "--platform" || a.rfind("-platform=", 0) == 0) return true;
  }
  return Set("QT_QPA_PLATFORM") || Set("DISPLAY") || Set("WAYLAND_DISPLAY");
}

bool GuiStartup::WantsHelp(const std::vector<std::string>& args) {
  for (const std::string& a : args) {
    if (a == "--help" || a == "-h") return true;
  }
  return false;
}

const char* GuiStartup::Usage() {
  return "Usage: gorvan [FILE.cd]\n"
         "       gorvan --scan PATH   (also /Scan PATH)\n"
         "Opens the catalog FILE.cd (by default the last one used), and with --scan the scan\n"
         "dialog for the folder PATH. For the command line, see gorvan-cli --help.\n";
}

const char* GuiStartup::NoDisplayMessage() {
  return "gorvan: there is no display to show the window on (neither DISPLAY nor "
         "WAYLAND_DISPLAY is set).\n"
         "Use gorvan-cli to work with Gorvan catalogs on the command line (gorvan-cli --help).\n";
}

}  // namespace gorvan::ui
