#include "ui/explorer/Launcher.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QObject>
#include <QUrl>
#include <vector>

#include "ui/session/CatalogSession.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

Launcher::Opener& CurrentOpener() {
  static Launcher::Opener opener;
  return opener;
}

}  // namespace

void Launcher::SetOpener(Opener opener) { CurrentOpener() = std::move(opener); }

std::string Launcher::NativePath(const DiscRow& disc, const DiscTree* tree, int32_t folderNode,
                                 const std::string& file) {
  if (disc.basePath.empty()) return {};
  std::string path = disc.basePath;
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  std::vector<std::string_view> names;
  if (tree && folderNode >= 0 && folderNode < tree->size()) {
    for (int32_t n = folderNode; n != DiscTree::kNone && n != tree->root(); n = tree->parent(n)) {
      names.push_back(tree->name(n));
    }
  }
  for (auto it = names.rbegin(); it != names.rend(); ++it) {
    if (path != "/") path += '/';
    path += *it;
  }
  if (!file.empty()) {
    if (path != "/") path += '/';
    path += file;
  }
  return path;
}

bool Launcher::Launch(CatalogSession& session, const DiscRow& disc, const DiscTree* tree,
                      int32_t folderNode, const std::string& file) {
  const std::string path = NativePath(disc, tree, folderNode, file);
  if (path.empty()) {
    session.prompt().Message(
        Std(QObject::tr("\"%1\" has no folder on a drive to open.").arg(Qs(disc.DisplayName()))),
        PromptIcon::kInformation);
    return false;
  }
  if (!QFileInfo::exists(Qs(disc.basePath))) {
    session.prompt().Message(
        Std(QObject::tr("The disc \"%1\" is not mounted: %2 cannot be found.\nInsert the disc or "
                        "connect its drive, then try again.")
                .arg(Qs(disc.DisplayName()), Qs(disc.basePath))),
        PromptIcon::kWarning);
    return false;
  }
  if (!QFileInfo::exists(Qs(path))) {
    session.prompt().Message(Std(QObject::tr("%1 is not on the disc \"%2\" any more.")
                                     .arg(Qs(path), Qs(disc.DisplayName()))),
                             PromptIcon::kWarning);
    return false;
  }
  const bool opened = CurrentOpener() ? CurrentOpener()(path)
                                      : QDesktopServices::openUrl(QUrl::fromLocalFile(Qs(path)));
  if (!opened) {
    session.prompt().Message(Std(QObject::tr("No program could open %1.").arg(Qs(path))),
                             PromptIcon::kWarning);
    return false;
  }
  return true;
}

}  // namespace gorvan::ui
