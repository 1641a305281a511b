// gorvan: the desktop program. Shows the splash at once, works out the
// catalog to open, builds the main window with every feature's commands and
// hands over to frmMenu::MenuStart.
#include <QApplication>
#include <cstdio>
#include <string>
#include <vector>

#include "app/AppFolder.h"
#include "app/ErrorLog.h"
#include "ui/main/CommandHooks.h"
#include "ui/main/GuiStartup.h"
#include "ui/main/frmMenu.h"
#include "ui/main/frmSplash.h"
#include "ui/session/CatalogSession.h"
#include "ui/widgets/QtPrompt.h"
#include "ui/widgets/ThemeIcons.h"

int main(int argc, char** argv) {
  using namespace gorvan;
  using namespace gorvan::ui;
  const std::vector<std::string> args(argv + 1, argv + argc);
  // Without a display Qt would abort with a message about platform plugins;
  // say plainly what is wrong and where to go instead.
  if (GuiStartup::WantsHelp(args)) {
    std::fputs(GuiStartup::Usage(), stdout);
    return 0;
  }
  if (!GuiStartup::HasDisplay(args)) {
    std::fputs(GuiStartup::NoDisplayMessage(), stderr);
    return 1;
  }
  QApplication app(argc, argv);
  QApplication::setOrganizationName(QStringLiteral("Gorvan"));
  QApplication::setApplicationName(QStringLiteral("Gorvan"));
  QApplication::setApplicationVersion(QString::fromStdString(VersionNumber()));
  ThemeIcons::Setup();
  QApplication::setWindowIcon(ThemeIcons::Disc("cdrom"));

  frmSplash splash;
  splash.show();
  QApplication::processEvents();

  ErrorLog::InstallAsErrorSink();
  const std::vector<std::string> qtArgs(argv + 1, argv + argc);  // Qt's own options removed
  const StartupChoice choice = GuiStartup::Choose(qtArgs);

  CommandHooks hooks;
  RegisterFeatures(hooks);
  QtPrompt prompt;
  CatalogSession session(prompt);
  frmMenu window(session, hooks);
  prompt.SetParent(&window);
  window.MenuStart(choice.catalogPath, choice.scanPath, &splash);
  return QApplication::exec();
}
