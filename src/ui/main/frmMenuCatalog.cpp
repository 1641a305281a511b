// frmMenu: the Catalog and View menus. Commands on the selected item forward
// to the active view, which applies the catalog's rules.
#include <QMdiArea>
#include <QMdiSubWindow>

#include "app/SearchRequest.h"
#include "ui/dialogs/frmCategories.h"
#include "ui/dialogs/frmDataOptions.h"
#include "ui/main/frmMenu.h"
#include "ui/session/CatalogSession.h"
#include "ui/session/UiSettings.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {

bool frmMenu::RefuseOnEmptyCatalog(const QString& command) {
  const char* refusal = nullptr;
  if (command == QLatin1String("mnuFileExport")) {
    refusal = "You need to have at least one CD or folder scanned before you can export";
  } else if (command == QLatin1String("mnuFilePreview")) {
    refusal = "You need to have at least one CD or folder scanned before you can print";
  } else if (command == QLatin1String("mnuCdSearch")) {
    refusal = kNoDiscToSearch;
  }
  if (!refusal || !session_.isOpen() || session_.header().cdCount > 0) return false;
  session_.prompt().Message(refusal, PromptIcon::kInformation);
  return true;
}

// Delete and Properties act on what the user sees chosen: with a search
// window in front, not on a catalog view hidden behind it.
void frmMenu::CdDelete() {
  if (CatalogView* view = frontView()) view->DeleteCurrent();
}

void frmMenu::CdProperties() {
  if (CatalogView* view = frontView()) view->PropertiesOfCurrent();
}

void frmMenu::CdCategories() {
  if (!session_.writer()) return;
  CatalogItem item;
  if (CatalogView* view = activeView()) item = view->currentItem();
  auto* dialog = new frmCategories(session_, item, this);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->open();
}

void frmMenu::CdShowList() { OpenView(false); }

void frmMenu::ViewExplorer(bool explorer) {
  explorerMode_ = explorer;
  command(QStringLiteral("mnuViewExplorer"))->setChecked(explorer);
  UiSettings::SetViewModeExplorer(explorer);
  ShowViews();
  UpdateActions();
}

void frmMenu::ViewListStyle(ListStyle style) {
  listStyle_ = style;
  if (UiSettings::ListStyle() != static_cast<int>(style)) {
    UiSettings::SetListStyle(static_cast<int>(style));
  }
  static const char* const kNames[] = {"LargeIcons", "SmallIcons", "List", "Details"};
  const QString suffix = QLatin1String(kNames[static_cast<int>(style)]);
  command(QStringLiteral("mnuView") + suffix)->setChecked(true);
  for (const char* name : kNames) {
    command(QStringLiteral("popExpListView") + QLatin1String(name))
        ->setChecked(suffix == QLatin1String(name));
  }
  for (QMdiSubWindow* w : mdi_->subWindowList()) {
    if (auto* view = qobject_cast<CatalogView*>(w->widget())) view->SetListStyle(style);
  }
}

void frmMenu::ViewDataOptions() {
  if (!session_.writer()) return;
  auto* dialog = new frmDataOptions(session_, this);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->open();
}

}  // namespace gorvan::ui
