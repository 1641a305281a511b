#include "ui/options/OptionsCommands.h"

#include <QMdiArea>

#include "ui/help/HelpCommands.h"
#include "ui/looks/Looks.h"
#include "ui/looks/frmSkinDesigner.h"
#include "ui/looks/frmSkins.h"
#include "ui/main/CommandHooks.h"
#include "ui/main/frmMenu.h"
#include "ui/options/MapIcons.h"
#include "ui/options/ProgramState.h"
#include "ui/options/frmIconMaint.h"
#include "ui/options/frmOptions.h"
#include "ui/session/CatalogSession.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

// Opens a dialog of the window once: a second command brings the open one
// forward.
template <typename Dialog, typename Make>
void OpenOnce(frmMenu* window, Make make) {
  // A dialog that closed a moment ago waits for its deletion: not that one.
  for (Dialog* open : window->findChildren<Dialog*>(QString(), Qt::FindDirectChildrenOnly)) {
    if (!open->isVisible()) continue;
    open->raise();
    open->activateWindow();
    return;
  }
  Dialog* dialog = make();
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->open();
}

}  // namespace

void ReapplyLooks(frmMenu& window) {
  Looks::Apply(window.documents(), ProgramState::Current().settings(), window.session().prompt());
}

void ApplyLooksAtStart(Prompt& prompt) {
  Looks::RememberDesktop();
  Looks::Apply(nullptr, ProgramState::Current().settings(), prompt);
}

void OptionsWindowStarted(frmMenu& window) {
  Looks::ApplyBackground(window.documents(), ProgramState::Current().settings());
  MapIcons::Apply(ProgramState::Current().iconMap());
  window.ForcePaint();
  ShowTipAtStart(window);
}

void RegisterOptionsCommands(CommandHooks& hooks) {
  RegisterHelpCommands(hooks);
  hooks.Register(QStringLiteral("mnuViewIconMaint"), [](const CommandContext& c) {
    frmMenu* window = c.window;
    OpenOnce<frmIconMaint>(window, [window] {
      ProgramState& state = ProgramState::Current();
      auto* dialog = new frmIconMaint(state.iconMap(), Qs(state.files().mapFile),
                                      window->session().prompt(), window);
      QObject::connect(dialog, &frmIconMaint::applied, window, [window] { window->ForcePaint(); });
      return dialog;
    });
  });
  hooks.Register(QStringLiteral("mnuViewOptions"), [](const CommandContext& c) {
    frmMenu* window = c.window;
    OpenOnce<frmOptions>(window, [window] {
      ProgramState& state = ProgramState::Current();
      auto* dialog = new frmOptions(state.settings(), state.shell(), window);
      QObject::connect(dialog, &frmOptions::applied, window, [window] { ReapplyLooks(*window); });
      return dialog;
    });
  });
  hooks.Register(QStringLiteral("mnuViewSkinChange"), [](const CommandContext& c) {
    frmMenu* window = c.window;
    OpenOnce<frmSkins>(window, [window] {
      auto* dialog = new frmSkins(ProgramState::Current().settings(), window);
      QObject::connect(dialog, &frmSkins::applied, window, [window] { ReapplyLooks(*window); });
      return dialog;
    });
  });
  hooks.Register(QStringLiteral("mnuViewSkinDesigner"), [](const CommandContext& c) {
    frmMenu* window = c.window;
    OpenOnce<frmSkinDesigner>(window, [window] {
      auto* dialog = new frmSkinDesigner(ProgramState::Current().settings(),
                                         window->session().prompt(), window);
      QObject::connect(dialog, &frmSkinDesigner::applied, window,
                       [window] { ReapplyLooks(*window); });
      return dialog;
    });
  });
}

}  // namespace gorvan::ui
