#include "ui/search/SearchFeature.h"

#include <QMdiSubWindow>

#include "ui/main/CommandHooks.h"
#include "ui/main/frmMenu.h"
#include "ui/search/frmSearch.h"

namespace gorvan::ui {

void RegisterSearch(CommandHooks& hooks) {
  hooks.Register(QStringLiteral("mnuCdSearch"), [](const CommandContext& c) {
    if (!c.window) return;
    auto* form = new frmSearch(*c.window);
    if (c.item.kind == NodeKind::kCategory) form->SetStartupCategory(c.item.id);
    QMdiSubWindow* window = c.window->AddDocument(form, QObject::tr("Search"));
    window->setAttribute(Qt::WA_DeleteOnClose);
    form->setFocus();
  });
}

}  // namespace gorvan::ui
