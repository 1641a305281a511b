// gorvan: the desktop program. Shows the splash at once, runs the start-up
// sequence (settings, the catalog to open) with the desktop's prompt, builds
// the main window with every feature's commands and hands over to
// frmMenu::MenuStart.
#include <QApplication>
#include <QFontDatabase>
#include <cstdio>
#include <string>
#include <vector>

#include "app/AppFolder.h"
#include "app/ErrorRoutine.h"
#include "app/StartupSequence.h"
#include "catalog/TextFormat.h"
#include "ui/main/CommandHooks.h"
#include "ui/main/GuiStartup.h"
#include "ui/main/frmMenu.h"
#include "ui/main/frmSplash.h"
#include "ui/options/OptionsCommands.h"
#include "ui/options/ProgramState.h"
#include "ui/session/CatalogSession.h"
#include "ui/widgets/QtPrompt.h"
#include "ui/widgets/ThemeIcons.h"
#include "ui/widgets/UiText.h"

int main(int argc, char** argv) {
  using namespace gorvan;
  using namespace gorvan::ui;
  // Dates are written in the user's locale, chosen before any thread starts.
  SetDateLocaleFromEnvironment();
  const std::vector<std::string> given(argv + 1, argv + argc);
  if (GuiStartup::WantsHelp(given)) {
    std::fputs(GuiStartup::Usage(), stdout);
    return 0;
  }
  // Without a display Qt would end with a message about platform plugins:
  // say plainly what is wrong and where to go instead.
  if (!GuiStartup::HasDisplay(given)) {
    std::fputs(GuiStartup::NoDisplayMessage(), stderr);
    return 1;
  }
  QApplication app(argc, argv);
  QApplication::setOrganizationName(QStringLiteral("Gorvan"));
  QApplication::setApplicationName(QStringLiteral("Gorvan"));
  QApplication::setApplicationVersion(Qs(VersionNumber()));
  ThemeIcons::Setup();
  QApplication::setWindowIcon(ThemeIcons::Disc("cdrom"));

  frmSplash splash;
  splash.show();
  QApplication::processEvents();

  // The start-up's questions (the first run's skin question, the old-version
  // reminder) show in front of the splash.
  QtPrompt prompt(&splash);
  ErrorRoutine::InstallOutOfMemoryHandler(&prompt);
  StartupHooks startupHooks;
  startupHooks.fontInstalled = [](const std::string& family) {
    return QFontDatabase::families().contains(Qs(family), Qt::CaseInsensitive);
  };
  startupHooks.closeSplash = [&splash] { splash.close(); };
  StartupSequence startup(prompt, startupHooks);
  // QApplication took its own options out of argv.
  const StartupResult start = startup.Run(std::vector<std::string>(argv + 1, argv + argc));
  if (!start.interfaceFont.empty()) {
    QFont font = QApplication::font();
    font.setFamily(Qs(start.interfaceFont));
    QApplication::setFont(font);
  }
  ProgramState::Install(&startup.settings(), &startup.iconMap(), &startup.shell(), start.files);
  ApplyLooksAtStart(prompt);
  ErrorRoutine errors(prompt, startup.settings());
  errors.InstallAsErrorSink();

  CommandHooks hooks;
  RegisterFeatures(hooks);
  CatalogSession session(prompt);
  frmMenu window(session, hooks);
  prompt.SetParent(&window);
  errors.SetReturnToMainWindow([&window] { window.activateWindow(); });
  window.MenuStart(start.catalogPath, Qs(start.scanPath), &splash);
  OptionsWindowStarted(window);
  return QApplication::exec();
}
