#pragma once
// CommandHooks: where the features that live in their own folders plug their
// commands into the main window. The window owns every menu item, toolbar
// button and pop-up item from the start; a command whose feature has not
// registered a handler is disabled and says so in its tool-tip. A feature
// registers its handlers before the window is built (RegisterFeatures in
// main/Features.cpp):
//
//   hooks.Register(QStringLiteral("mnuCdAdd"), [](const CommandContext& c) {
//     ... open frmScan for c.session, c.item, c.path ...
//   });
//
// The window runs its own checks first (an empty catalog refuses a search, an
// export and a preview with the product's messages) and then calls the
// handler. Pop-up items that do the same as a menu command call that
// command's handler with the pop-up's item (popCdRescan -> mnuCdRescan).
//
// Feature commands: scan mnuCdAdd, mnuCdAddNoScan, mnuCdRescan, mnuCdEject;
// search, export and reports mnuCdSearch, mnuFileExport, mnuFilePreview;
// options, looks and help mnuViewOptions, mnuViewIconMaint, mnuViewSkinChange,
// mnuViewSkinDesigner, mnuHelpContents, mnuHelpTip, mnuHelpSendError,
// mnuHelpUpdate, mnuHelpAbout.

#include <QHash>
#include <QString>
#include <QStringList>
#include <functional>
#include <vector>

#include "ui/session/CatalogItem.h"

namespace gorvan::ui {

class CatalogSession;
class frmMenu;

struct CommandContext {
  frmMenu* window = nullptr;
  CatalogSession* session = nullptr;
  // The item the command acts on: the active view's current item.
  CatalogItem item;
  // A folder named on the command line ("gorvan --scan PATH"): the scan
  // dialog opens for it. Empty otherwise.
  QString path;
};

class CommandHooks {
 public:
  using Handler = std::function<void(const CommandContext&)>;

  void Register(const QString& command, Handler handler) {
    handlers_.insert(command, std::move(handler));
  }
  bool Has(const QString& command) const { return handlers_.contains(command); }
  // Runs the command's handler; false when none is registered.
  bool Run(const QString& command, const CommandContext& context) const;
  // A feature that lives beside the window for its whole life (the listener
  // for inserted discs) is made when the window is built.
  void OnWindow(std::function<void(frmMenu&)> made) { windowHooks_.push_back(std::move(made)); }
  void WindowMade(frmMenu& window) const {
    for (const auto& made : windowHooks_) made(window);
  }

  // The commands the features provide, in menu order.
  static const QStringList& FeatureCommands();

 private:
  QHash<QString, Handler> handlers_;
  std::vector<std::function<void(frmMenu&)>> windowHooks_;
};

// Registers the handlers of every feature built into this program.
void RegisterFeatures(CommandHooks& hooks);

}  // namespace gorvan::ui
