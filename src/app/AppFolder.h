#pragma once
// AppFolder: where Gorvan keeps its own files (error log, settings, default
// catalog): $GORVAN_HOME when set; else the executable's folder when it holds
// "Gorvan.ini" (a portable install); else $XDG_DATA_HOME/Gorvan (by default
// ~/.local/share/Gorvan), created on first use.

#include <string>

namespace gorvan {

class AppFolder {
 public:
  // The folder, without a trailing slash; created when missing.
  static std::string Path();
  // Path() + "/" + name.
  static std::string File(const std::string& name);
};

// The program's version: major.minor.revision.
std::string VersionNumber();
// The version string of the error log and reminders: VersionNumber() + ".Std".
std::string VersionString();

}  // namespace gorvan
