#pragma once
// StartupSequence: what Gorvan does before its main window shows, without the
// window: the desktop program shows its splash, runs the sequence with its
// own Prompt, closes the splash when asked, and opens the catalog the result
// names (then, when asked for, the scan dialog for a folder).
//
// Run's steps, in order: the version string; the file table in the
// application folder (a folder that cannot be written gives one message); the
// settings record (SettingsRecord::Load); the one-time clean-up of the error
// log ("Maintenance"/"CleanUp1"); the icon map; the interface font; the
// catalog path from the history; the command line; the default catalog; the
// read-only check; the old-version reminder; the version check when
// "lNotifyNewVersion"; closing the splash; the file-type registration; the
// view mode.
//
// Thread contract: the GUI thread (it asks questions through the Prompt).

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "app/IconMap.h"
#include "app/SettingsRecord.h"
#include "app/ShellIntegration.h"

namespace gorvan {

class Prompt;

inline constexpr const char* kDefaultCatalogFile = "Gorvan.cd";
inline constexpr const char* kReminderLine2 = "Please download a newer version from our website";

// The program's files. Writable ones live in the application folder,
// read-only ones (images, help, tips) in the resource folder (Resources).
struct AppFiles {
  std::string appFolder;
  std::string imagesFolder;     // resources: "images"
  std::string skinsFolder;      // application folder: "skins" (the user's skins)
  std::string iconsFolder;      // application folder: "icons" (file-type icon cache)
  std::string iniFile;          // "Gorvan.ini"
  std::string errorLog;         // "Gorvan.err"
  std::string mapFile;          // "Gorvan.map"
  std::string tipsFile;         // resources: "tips/Gorvan.tip"
  std::string styleSheet;       // "Gorvan.xsx"
  std::string reportTemplate;   // "Gorvan.hxm"
  std::string reportTemplate2;  // "Gorvan.hym"
  std::string helpFile;         // resources: "help/index.html"
  std::string defaultCatalog;   // "Gorvan.cd"

  // Every path, in the order images, skins, icons, INI file, error log, map,
  // tips, style sheet, the two templates; then the help file and the default
  // catalog. Resource paths are "" when the resource folder is not found.
  static AppFiles Fix();
};

// What the command line asks for.
struct CommandLine {
  std::string catalog;   // a catalog path (not yet checked for existence); "" none
  std::string scanPath;  // "--scan PATH" or "/Scan PATH": absolute; "" none
};

struct StartupHooks {
  // Whether a font of that family is installed (the GUI's font database).
  // Unset: every font counts as installed.
  std::function<bool(const std::string& family)> fontInstalled;
  // The version check of the start, run (not interactive) when
  // "lNotifyNewVersion" is True. Unset: SupportClient's check.
  std::function<void()> versionCheck;
  // Called when the splash window may close.
  std::function<void()> closeSplash;
  // The dates of the old-version reminder; unset (epoch) means today's local
  // date and the date this program was built.
  std::chrono::sys_days today{};
  std::chrono::sys_days buildDate{};
};

struct StartupResult {
  std::string versionString;
  AppFiles files;
  // The message shown when the application folder cannot be written; "" when it can.
  std::string appFolderProblem;
  // The interface font; "" when neither the chosen one nor any fallback is
  // installed (use the desktop's font).
  std::string interfaceFont;
  // The catalog to open; "" when the read-only check refused it (start empty).
  std::string catalogPath;
  // After the catalog is open, show the scan dialog for this folder; "" none.
  std::string scanPath;
  // The explorer view (true) or the traditional view (false).
  bool viewModeExplorer = true;
};

class StartupSequence {
 public:
  StartupSequence(Prompt& prompt, StartupHooks hooks = {},
                  ShellIntegration shell = ShellIntegration());

  // Runs every step. args: the command line without the program's name.
  StartupResult Run(const std::vector<std::string>& args);

  SettingsRecord& settings() { return settings_; }
  IconMap& iconMap() { return iconMap_; }
  const ShellIntegration& shell() const { return shell_; }

  // The command line: "--scan PATH", "--scan=PATH" or "/Scan PATH" (any case)
  // ask for the scan dialog; anything else, its words joined by blanks and
  // trimmed, is a catalog path, taken in appFolder when it holds no "/".
  static CommandLine ParseCommandLine(const std::vector<std::string>& args,
                                      const std::string& appFolder);
  // The interface font: "Fonts"/"Default" (default "Arial") when installed,
  // else the first installed of "Arial", "Tahoma", "Times Roman", "Courier",
  // else "".
  static std::string ChooseFont(const std::function<bool(const std::string&)>& installed);
  // The one-time clean-up: when "Maintenance"/"CleanUp1" is empty, stores
  // today as "yyyy/mm/dd" and deletes the error log. True when it ran.
  static bool CleanUpOnce(const std::string& errorLog, std::chrono::sys_days today);
  // The date this program was built; today's local date.
  static std::chrono::sys_days BuildDate();
  static std::chrono::sys_days Today();

 private:
  void OldVersionReminder(std::chrono::sys_days today, std::chrono::sys_days built);

  Prompt& prompt_;
  StartupHooks hooks_;
  ShellIntegration shell_;
  SettingsRecord settings_;
  IconMap iconMap_;
};

}  // namespace gorvan
