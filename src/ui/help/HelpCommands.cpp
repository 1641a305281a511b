#include "ui/help/HelpCommands.h"

#include "ui/help/Manual.h"
#include "ui/help/frmAbout.h"
#include "ui/help/frmSendError.h"
#include "ui/help/frmTip.h"
#include "ui/help/frmUpdate.h"
#include "ui/main/CommandHooks.h"
#include "ui/main/frmMenu.h"
#include "ui/options/ProgramState.h"
#include "ui/session/CatalogSession.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

// A dialog of the window shown once: a second command brings it forward.
template <typename Dialog>
Dialog* Existing(frmMenu* window) {
  for (Dialog* open : window->findChildren<Dialog*>(QString(), Qt::FindDirectChildrenOnly)) {
    if (!open->isVisible()) continue;  // closed, waiting for its deletion
    open->raise();
    open->activateWindow();
    return open;
  }
  return nullptr;
}

void ShowTip(frmMenu* window) {
  if (Existing<frmTip>(window)) return;
  auto* dialog = new frmTip(Qs(ProgramState::Current().files().tipsFile), window);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->show();
}

}  // namespace

void ShowTipAtStart(frmMenu& window) {
  if (frmTip::ShowAtStartup()) ShowTip(&window);
}

void RegisterHelpCommands(CommandHooks& hooks) {
  hooks.Register(QStringLiteral("mnuHelpContents"),
                 [](const CommandContext& c) { Manual::Open(c.session->prompt()); });
  hooks.Register(QStringLiteral("mnuHelpTip"), [](const CommandContext& c) { ShowTip(c.window); });
  hooks.Register(QStringLiteral("mnuHelpAbout"), [](const CommandContext& c) {
    if (Existing<frmAbout>(c.window)) return;
    auto* dialog = new frmAbout(c.window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
  });
  hooks.Register(QStringLiteral("mnuHelpSendError"), [](const CommandContext& c) {
    if (Existing<frmSendError>(c.window)) return;
    ProgramState& state = ProgramState::Current();
    auto* dialog = new frmSendError(state.settings(), Qs(state.files().errorLog), c.window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
  });
  hooks.Register(QStringLiteral("mnuHelpUpdate"), [](const CommandContext& c) {
    if (Existing<frmUpdate>(c.window)) return;
    auto* dialog = new frmUpdate(ProgramState::Current().settings(), c.session->prompt(), c.window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
    dialog->Start();
  });
}

}  // namespace gorvan::ui
