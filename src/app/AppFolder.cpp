#include "app/AppFolder.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace gorvan {
namespace fs = std::filesystem;

namespace {

std::string ExecutableFolder() {
  std::error_code ec;
  const fs::path exe = fs::read_symlink("/proc/self/exe", ec);
  return ec ? std::string() : exe.parent_path().string();
}

}  // namespace

std::string AppFolder::Path() {
  std::error_code ec;
  std::string folder;
  if (const char* home = std::getenv("GORVAN_HOME"); home && *home) {
    folder = home;
  } else if (const std::string exe = ExecutableFolder();
             !exe.empty() && fs::exists(fs::path(exe) / "Gorvan.ini", ec)) {
    folder = exe;
  } else if (const char* xdg = std::getenv("XDG_DATA_HOME"); xdg && *xdg) {
    folder = std::string(xdg) + "/Gorvan";
  } else {
    const char* user = std::getenv("HOME");
    folder = std::string(user && *user ? user : ".") + "/.local/share/Gorvan";
  }
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  fs::create_directories(folder, ec);
  return folder;
}

std::string AppFolder::File(const std::string& name) { return Path() + "/" + name; }

std::string VersionNumber() {
  return std::to_string(GORVAN_VERSION_MAJOR) + "." + std::to_string(GORVAN_VERSION_MINOR) + "." +
         std::to_string(GORVAN_VERSION_REVISION);
}

std::string VersionString() { return VersionNumber() + ".Std"; }

}  // namespace gorvan
