#include "ui/options/ProgramState.h"

#include "app/SettingsStore.h"
#include "app/basIniFiles.h"

namespace gorvan::ui {
namespace {

std::unique_ptr<ProgramState>& Slot() {
  static std::unique_ptr<ProgramState> state;
  return state;
}

}  // namespace

void ProgramState::Install(SettingsRecord* settings, IconMap* iconMap,
                           const ShellIntegration* shell, const AppFiles& files) {
  std::unique_ptr<ProgramState> state(new ProgramState);
  state->settings_ = settings;
  state->iconMap_ = iconMap;
  state->shell_ = shell;
  state->files_ = files;
  Slot() = std::move(state);
}

void ProgramState::Reset() { Slot().reset(); }

ProgramState& ProgramState::Current() {
  std::unique_ptr<ProgramState>& slot = Slot();
  if (!slot) {
    std::unique_ptr<ProgramState> state(new ProgramState);
    state->ownSettings_ = std::make_unique<SettingsRecord>(ReadRecord());
    state->files_ = AppFiles::Fix();
    state->ownIconMap_ = std::make_unique<IconMap>();
    state->ownIconMap_->Load(state->files_.mapFile);
    state->ownShell_ = std::make_unique<ShellIntegration>();
    state->settings_ = state->ownSettings_.get();
    state->iconMap_ = state->ownIconMap_.get();
    state->shell_ = state->ownShell_.get();
    slot = std::move(state);
  }
  return *slot;
}

SettingsRecord ProgramState::ReadRecord() {
  SettingsRecord record;
  record.noSubclass = GetIniBool("NoSubclass", true);
  record.backgroundList = GetIniBool("BackgroundList", true);
  record.backgroundTree = GetIniBool("BackgroundTree", true);
  record.backgroundDetails = GetIniBool("BackgroundDetails", true);
  if (!GetIniBool("Background", true)) {
    record.backgroundList = record.backgroundTree = record.backgroundDetails = false;
  }
  record.dragDrop = GetIniBool("DragDrop", true);
  for (const SettingKey& key : SettingsRecord::Keys()) {
    record.SetText(key.key, SettingsStore::GetText(kSwitches, key.key, key.defaultText));
  }
  if (record.currentBackground < 1) record.currentBackground = 1;
  return record;
}

}  // namespace gorvan::ui
