#include "ui/main/GuiStartup.h"

#include <QDir>
#include <QFileInfo>
#include <cstdlib>

#include "app/AppFolder.h"
#include "app/CatalogHistory.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

bool Set(const char* name) {
  const char* v = std::getenv(name);
  return v && *v;
}

bool Exists(const std::string& path) { return !path.empty() && QFileInfo::exists(Qs(path)); }

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

StartupChoice GuiStartup::Choose(const std::vector<std::string>& args) {
  StartupChoice c;
  QStringList words;
  for (size_t i = 0; i < args.size(); ++i) {
    const QString a = Qs(args[i]);
    if (a == QLatin1String("--help") || a == QLatin1String("-h")) {
      continue;
    } else if (a.compare(QLatin1String("--scan"), Qt::CaseInsensitive) == 0 ||
               a.compare(QLatin1String("/scan"), Qt::CaseInsensitive) == 0) {
      if (i + 1 < args.size()) c.scanPath = QFileInfo(Qs(args[++i])).absoluteFilePath();
    } else if (a.startsWith(QLatin1String("--scan="), Qt::CaseInsensitive)) {
      c.scanPath = QFileInfo(a.mid(7)).absoluteFilePath();
    } else if (a == QLatin1String("-platform") && i + 1 < args.size()) {
      ++i;  // Qt's own option, with its value
    } else {
      words << a;
    }
  }
  const QString named = words.join(QLatin1Char(' ')).trimmed();
  if (!named.isEmpty()) {
    QString path = QFileInfo(named).absoluteFilePath();
    if (!QFileInfo::exists(path) && !named.contains(QLatin1Char('/'))) {
      path = Qs(AppFolder::File(Std(named)));
    }
    if (QFileInfo::exists(path)) c.catalogPath = Std(path);
  }
  if (c.catalogPath.empty()) {
    const std::string newest = CatalogHistory::Newest();
    if (Exists(newest)) c.catalogPath = newest;
  }
  if (c.catalogPath.empty()) c.catalogPath = AppFolder::File("Gorvan.cd");
  return c;
}

}  // namespace gorvan::ui
