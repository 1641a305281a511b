#pragma once
// The options, looks and help tests: the main window with this feature's
// commands, a program state built afresh from the cleared store, and the
// desktop's look restored afterwards (looks are the whole application's).

#include <QApplication>
#include <QDialog>

#include "app/SettingsRecord.h"
#include "ui/UiTestSupport.h"
#include "ui/looks/Looks.h"
#include "ui/options/OptionsCommands.h"
#include "ui/options/ProgramState.h"
#include "ui/widgets/ThemeIcons.h"

namespace gorvan::test {

class OptionsTest : public UiTest {
 protected:
  OptionsTest() {
    ui::ProgramState::Reset();
    ui::RegisterOptionsCommands(hooks);
    ui::Looks::RememberDesktop();
  }
  ~OptionsTest() override {
    for (QWidget* w : QApplication::topLevelWidgets()) {
      if (auto* d = qobject_cast<QDialog*>(w)) d->close();
    }
    SettingsRecord desktop;
    desktop.skinSupportEnabled = false;
    ui::Looks::ApplySkin(desktop);
    ui::ThemeIcons::SetFileTypeIcons({});
    ui::ProgramState::Reset();
  }
  ui::ProgramState& state() { return ui::ProgramState::Current(); }
  // Deletes the dialogs that closed (they go with the next event loop).
  static void Flush() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }
  // The dialog a command opened, by its name.
  template <typename D>
  D* Opened(const char* name) {
    D* d = nullptr;
    WaitFor([&] { return (d = Find<D>(name)) != nullptr; }, 3000);
    return d;
  }
};

}  // namespace gorvan::test
