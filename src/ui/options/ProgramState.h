#pragma once
// ProgramState: what the options, looks and help commands share with the
// start of the program — the process's settings record, the icon map, the
// program's files and the shell integration. The desktop program installs
// the state its start-up made (Install); where none was installed (tests, a
// window built without the start-up sequence) the first use builds one from
// the settings store, the application folder and the resource folder, without
// asking anything and without touching the desktop integration.
//
// Thread contract: the GUI thread.

#include <memory>

#include "app/IconMap.h"
#include "app/SettingsRecord.h"
#include "app/ShellIntegration.h"
#include "app/StartupSequence.h"

namespace gorvan::ui {

class ProgramState {
 public:
  // The start-up's objects; they must outlive every use (main's own).
  static void Install(SettingsRecord* settings, IconMap* iconMap, const ShellIntegration* shell,
                      const AppFiles& files);
  // Forgets the installed or built state; the next use builds one afresh
  // from the store (tests, after they cleared it).
  static void Reset();
  static ProgramState& Current();

  SettingsRecord& settings() { return *settings_; }
  IconMap& iconMap() { return *iconMap_; }
  const ShellIntegration& shell() const { return *shell_; }
  const AppFiles& files() const { return files_; }

  // The record as the stores hold it now: the INI switches, then every
  // "Switches" key read with its default; nothing asked, nothing installed.
  static SettingsRecord ReadRecord();

 private:
  ProgramState() = default;

  SettingsRecord* settings_ = nullptr;
  IconMap* iconMap_ = nullptr;
  const ShellIntegration* shell_ = nullptr;
  AppFiles files_;
  // What a built state owns.
  std::unique_ptr<SettingsRecord> ownSettings_;
  std::unique_ptr<IconMap> ownIconMap_;
  std::unique_ptr<ShellIntegration> ownShell_;
};

}  // namespace gorvan::ui
