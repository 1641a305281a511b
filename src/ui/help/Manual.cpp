#include "ui/help/Manual.h"

#include <QDesktopServices>
#include <QFileInfo>

#include "app/Prompt.h"
#include "app/Resources.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

Manual::Opener& TheOpener() {
  static Manual::Opener opener;
  return opener;
}

}  // namespace

QString Manual::Path() {
  const QString path = Qs(Resources::File("help/index.html"));
  return !path.isEmpty() && QFileInfo(path).isFile() ? path : QString();
}

void Manual::SetOpener(Opener opener) { TheOpener() = std::move(opener); }

bool Manual::Open(Prompt& prompt) { return Open(prompt, Path()); }

bool Manual::Open(Prompt& prompt, const QString& path) {
  if (path.isEmpty() || !QFileInfo(path).isFile()) {
    prompt.Message(Std(QObject::tr("The manual is not installed: Gorvan looks for it as "
                                   "help/index.html in its share/gorvan folder.")),
                   PromptIcon::kWarning);
    return false;
  }
  const QUrl url = QUrl::fromLocalFile(path);
  const bool opened = TheOpener() ? TheOpener()(url) : QDesktopServices::openUrl(url);
  if (!opened) {
    prompt.Message(Std(QObject::tr("No browser could be started to show the manual.\nOpen %1 "
                                   "in a browser to read it.")
                           .arg(path)),
                   PromptIcon::kWarning);
  }
  return opened;
}

}  // namespace gorvan::ui
