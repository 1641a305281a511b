// frmMenu: the commands — actions, menus, toolbar, pop-up menus and their
// enabled states.
#include <QActionGroup>
#include <QMenu>
#include <QMenuBar>
#include <QStatusBar>
#include <QToolBar>

#include "ui/main/StatusPanels.h"
#include "ui/main/frmMenu.h"
#include "ui/session/CatalogSession.h"
#include "ui/session/UiSettings.h"
#include "ui/widgets/ThemeIcons.h"

namespace gorvan::ui {
namespace {

// A command of the window: its name, menu text, shortcut and theme icon.
struct CommandSpec {
  const char* name;
  const char* text;
  QKeySequence key;
  const char* icon;
};

const QString kNotYet = QStringLiteral("Not available in this version yet");

// Pop-up items that run a menu command of another feature with the pop-up's item.
const QHash<QString, QString>& FeaturePopups() {
  static const QHash<QString, QString> map = {
      {QStringLiteral("popExpAddCdOrFolder"), QStringLiteral("mnuCdAdd")},
      {QStringLiteral("popExpListAddCdOrFolder"), QStringLiteral("mnuCdAdd")},
      {QStringLiteral("popCdAdd"), QStringLiteral("mnuCdAdd")},
      {QStringLiteral("popCdRescan"), QStringLiteral("mnuCdRescan")},
      // The entry of the chosen disc, in the scan dialog without scanning.
      {QStringLiteral("popCdEdit"), QStringLiteral("popCdEdit")},
      {QStringLiteral("popExpTreeSearch"), QStringLiteral("mnuCdSearch")},
      {QStringLiteral("popExpListSearch"), QStringLiteral("mnuCdSearch")},
      {QStringLiteral("popCdSearch"), QStringLiteral("mnuCdSearch")},
      {QStringLiteral("popBrowse1Search"), QStringLiteral("mnuCdSearch")},
      {QStringLiteral("popCdPreview"), QStringLiteral("mnuFilePreview")},
      {QStringLiteral("popBrowse1Preview"), QStringLiteral("mnuFilePreview")},
  };
  return map;
}

}  // namespace

QAction* frmMenu::NewAction(const char* name, const QString& text) {
  auto* action = new QAction(text, this);
  action->setObjectName(QLatin1String(name));
  actions_.insert(action->objectName(), action);
  return action;
}

void frmMenu::CreateActions() {
  static const CommandSpec kCommands[] = {
      {"mnuFileNew", QT_TR_NOOP("&New Catalog..."), QKeySequence::New, "document-new"},
      {"mnuFileOpen", QT_TR_NOOP("&Open Catalog..."), QKeySequence::Open, "document-open"},
      {"mnuFileClose", QT_TR_NOOP("&Close Catalog"), QKeySequence(Qt::CTRL | Qt::Key_W),
       "window-close"},
      {"mnuFileSaveAs", QT_TR_NOOP("Save &As..."), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S),
       "document-save-as"},
      {"mnuFileMerge", QT_TR_NOOP("&Merge Catalog..."), {}, "list-add"},
      {"mnuFileBackup", QT_TR_NOOP("&Backup..."), {}, "document-save"},
      {"mnuFileCompact", QT_TR_NOOP("Co&mpact"), {}, "edit-clear-all"},
      {"mnuFilePassword", QT_TR_NOOP("Pass&word..."), {}, "dialog-password"},
      {"mnuFileExport", QT_TR_NOOP("&Export..."), QKeySequence(Qt::CTRL | Qt::Key_E),
       "document-send"},
      {"mnuFilePreview", QT_TR_NOOP("Print Pre&view..."), QKeySequence::Print,
       "document-print-preview"},
      {"mnuFileExit", QT_TR_NOOP("E&xit"), QKeySequence(Qt::CTRL | Qt::Key_Q), "application-exit"},
      {"mnuCdAdd", QT_TR_NOOP("&Add CD or Folder..."), QKeySequence(Qt::CTRL | Qt::Key_D),
       "media-optical"},
      {"mnuCdAddNoScan", QT_TR_NOOP("Add Disc &Without Scanning..."), {}, "list-add"},
      {"mnuCdRescan", QT_TR_NOOP("&Rescan..."), QKeySequence(Qt::CTRL | Qt::Key_R), "view-refresh"},
      {"mnuCdDelete", QT_TR_NOOP("&Delete"), QKeySequence::Delete, "edit-delete"},
      {"mnuCdProperties", QT_TR_NOOP("&Properties"), QKeySequence(Qt::ALT | Qt::Key_Return),
       "document-properties"},
      {"mnuCdCategories", QT_TR_NOOP("&Categories..."), {}, "folder-documents"},
      {"mnuCDShowList", QT_TR_NOOP("Disc &List"), QKeySequence(Qt::CTRL | Qt::Key_L), "view-list"},
      {"mnuCdSearch", QT_TR_NOOP("&Search..."), QKeySequence::Find, "edit-find"},
      {"mnuCdEject", QT_TR_NOOP("&Eject..."), {}, "media-eject"},
      {"mnuViewExplorer", QT_TR_NOOP("&Explorer View"), QKeySequence(Qt::CTRL | Qt::Key_T),
       "view-dual"},
      {"mnuViewLargeIcons", QT_TR_NOOP("Lar&ge Icons"), {}, "view-grid"},
      {"mnuViewSmallIcons", QT_TR_NOOP("S&mall Icons"), {}, "view-list-icons|view-app-grid"},
      {"mnuViewList", QT_TR_NOOP("&List"), {}, "view-list-text|view-list-bullet"},
      {"mnuViewDetails", QT_TR_NOOP("&Details"), {}, "view-list-details|view-list"},
      {"mnuViewPanels", QT_TR_NOOP("Status &Panels"), {}, nullptr},
      {"mnuViewOptions", QT_TR_NOOP("&Options..."), QKeySequence::Preferences,
       "preferences-system"},
      {"mnuViewDataOptions",
       QT_TR_NOOP("Catalog Display &Font..."),
       {},
       "preferences-desktop-font"},
      {"mnuViewIconMaint", QT_TR_NOOP("&Icon Maintenance..."), {}, nullptr},
      {"mnuViewSkinChange", QT_TR_NOOP("S&kins..."), {}, "preferences-desktop-appearance"},
      {"mnuViewSkinDesigner", QT_TR_NOOP("Skin D&esigner..."), {}, nullptr},
      {"mnuHelpContents", QT_TR_NOOP("&Contents"), QKeySequence::HelpContents, "help-browser"},
      {"mnuHelpTip", QT_TR_NOOP("&Tip of the Day"), {}, nullptr},
      {"mnuHelpSendError", QT_TR_NOOP("&Send Error Report..."), {}, "mail-send"},
      {"mnuHelpUpdate", QT_TR_NOOP("Check for &Updates..."), {}, "software-update-available"},
      {"mnuHelpAbout", QT_TR_NOOP("&About Gorvan"), {}, "help-about"},
      // The pop-up menus' commands.
      {"popExpLaunch", QT_TR_NOOP("&Launch"), {}, "system-run"},
      {"popExpAddCdOrFolder", QT_TR_NOOP("&Add CD or Folder..."), {}, "media-optical"},
      {"popExpCatAdd", QT_TR_NOOP("&New Category"), QKeySequence(Qt::Key_Insert), "folder-new"},
      {"popExpCatRemove", QT_TR_NOOP("&Remove"), {}, "edit-delete"},
      {"popExpCatRename", QT_TR_NOOP("Re&name"), QKeySequence(Qt::Key_F2), nullptr},
      {"popExpCatProperties", QT_TR_NOOP("&Properties"), {}, "document-properties"},
      {"popExpTreeSearch", QT_TR_NOOP("&Search..."), {}, "edit-find"},
      {"popExpListLaunch", QT_TR_NOOP("&Launch"), {}, "system-run"},
      {"popExpListAddCdOrFolder", QT_TR_NOOP("&Add CD or Folder..."), {}, "media-optical"},
      {"popExpListCatAdd", QT_TR_NOOP("&New Category"), QKeySequence(Qt::Key_Insert), "folder-new"},
      {"popExpListCatRemove", QT_TR_NOOP("&Remove"), {}, "edit-delete"},
      {"popExpListCatRename", QT_TR_NOOP("Re&name"), QKeySequence(Qt::Key_F2), nullptr},
      {"popExpListCatProperties", QT_TR_NOOP("&Properties"), {}, "document-properties"},
      {"popExpListViewLargeIcons", QT_TR_NOOP("Lar&ge Icons"), {}, nullptr},
      {"popExpListViewSmallIcons", QT_TR_NOOP("S&mall Icons"), {}, nullptr},
      {"popExpListViewList", QT_TR_NOOP("&List"), {}, nullptr},
      {"popExpListViewDetails", QT_TR_NOOP("&Details"), {}, nullptr},
      {"popExpListSearch", QT_TR_NOOP("&Search..."), {}, "edit-find"},
      {"popCdAdd", QT_TR_NOOP("&Add CD or Folder..."), {}, "media-optical"},
      {"popCdDelete", QT_TR_NOOP("&Delete"), {}, "edit-delete"},
      {"popCdEdit", QT_TR_NOOP("&Edit..."), {}, "document-edit"},
      {"popCdPreview", QT_TR_NOOP("Print Pre&view..."), {}, "document-print-preview"},
      {"popCdProperties", QT_TR_NOOP("&Properties"), {}, "document-properties"},
      {"popCdRescan", QT_TR_NOOP("&Rescan..."), {}, "view-refresh"},
      {"popCdSearch", QT_TR_NOOP("&Search..."), {}, "edit-find"},
      {"popBrowse1Launch", QT_TR_NOOP("&Launch"), {}, "system-run"},
      {"popBrowse1Preview", QT_TR_NOOP("Print Pre&view..."), {}, "document-print-preview"},
      {"popBrowse1Properties", QT_TR_NOOP("&Properties"), {}, "document-properties"},
      {"popBrowse1Search", QT_TR_NOOP("&Search..."), {}, "edit-find"},
  };
  for (const CommandSpec& c : kCommands) {
    QAction* a = NewAction(c.name, tr(c.text));
    if (!c.key.isEmpty()) a->setShortcut(c.key);
    if (c.icon) a->setIcon(ThemeIcons::Named(c.icon));
    // Pop-up shortcuts act in the view that owns the pop-up (it adds them).
    if (a->objectName().startsWith(QLatin1String("pop"))) {
      a->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    }
  }
  // The history entries share one name, as the entries of one list.
  for (int i = 0; i < 5; ++i) {
    auto* a = new QAction(this);
    a->setObjectName(QStringLiteral("mnuFileHist"));
    a->setData(i);
    a->setVisible(false);
    connect(a, &QAction::triggered, this, [this, i] { FileHistory(i); });
    history_.append(a);
  }

  auto on = [this](const char* name, auto slot) {
    connect(command(QLatin1String(name)), &QAction::triggered, this, slot);
  };
  on("mnuFileNew", [this] { FileNew(); });
  on("mnuFileOpen", [this] { FileOpen(); });
  on("mnuFileClose", [this] { FileClose(); });
  on("mnuFileSaveAs", [this] { FileSaveAs(); });
  on("mnuFileMerge", [this] { FileMerge(); });
  on("mnuFileBackup", [this] { FileBackup(); });
  on("mnuFileCompact", [this] { FileCompact(); });
  on("mnuFilePassword", [this] { FilePassword(); });
  on("mnuFileExit", [this] { close(); });
  on("mnuCdDelete", [this] { CdDelete(); });
  on("mnuCdProperties", [this] { CdProperties(); });
  on("mnuCdCategories", [this] { CdCategories(); });
  on("mnuCDShowList", [this] { CdShowList(); });
  on("mnuViewDataOptions", [this] { ViewDataOptions(); });

  QAction* explorer = command(QStringLiteral("mnuViewExplorer"));
  explorer->setCheckable(true);
  connect(explorer, &QAction::triggered, this, [this](bool on) { ViewExplorer(on); });

  listStyles_ = new QActionGroup(this);
  const std::pair<const char*, ListStyle> styles[] = {
      {"LargeIcons", ListStyle::kLargeIcons},
      {"SmallIcons", ListStyle::kSmallIcons},
      {"List", ListStyle::kList},
      {"Details", ListStyle::kDetails},
  };
  for (const auto& [suffix, style] : styles) {
    QAction* menu = command(QStringLiteral("mnuView") + QLatin1String(suffix));
    QAction* pop = command(QStringLiteral("popExpListView") + QLatin1String(suffix));
    menu->setCheckable(true);
    pop->setCheckable(true);
    listStyles_->addAction(menu);
    const ListStyle s = style;
    connect(menu, &QAction::triggered, this, [this, s] { ViewListStyle(s); });
    connect(pop, &QAction::triggered, this, [this, s] { ViewListStyle(s); });
  }
  command(QStringLiteral("mnuViewDetails"))->setChecked(true);

  QAction* panels = command(QStringLiteral("mnuViewPanels"));
  panels->setCheckable(true);
  panels->setChecked(UiSettings::ShowPanels());
  statusBar()->setVisible(panels->isChecked());
  connect(panels, &QAction::toggled, this, [this](bool on) {
    statusBar()->setVisible(on);
    UiSettings::SetShowPanels(on);
  });

  for (const QString& name : CommandHooks::FeatureCommands()) {
    connect(command(name), &QAction::triggered, this, [this, name] { RunCommand(name); });
  }
  for (auto it = FeaturePopups().constBegin(); it != FeaturePopups().constEnd(); ++it) {
    const QString target = it.value();
    connect(command(it.key()), &QAction::triggered, this, [this, target] { RunCommand(target); });
  }
}

void frmMenu::CreateMenus() {
  auto add = [this](QMenu* menu, std::initializer_list<const char*> names) {
    for (const char* name : names) {
      if (!*name) {
        menu->addSeparator();
      } else {
        menu->addAction(command(QLatin1String(name)));
      }
    }
  };
  fileMenu_ = menuBar()->addMenu(tr("&File"));
  fileMenu_->setObjectName(QStringLiteral("mnuFile"));
  add(fileMenu_, {"mnuFileNew", "mnuFileOpen", "mnuFileClose", "", "mnuFileSaveAs", "mnuFileMerge",
                  "mnuFileBackup", "mnuFileCompact", "", "mnuFilePassword", "", "mnuFileExport",
                  "mnuFilePreview"});
  historySeparator_ = fileMenu_->addSeparator();
  for (QAction* a : history_) fileMenu_->addAction(a);
  fileMenu_->addSeparator();
  add(fileMenu_, {"mnuFileExit"});

  QMenu* cd = menuBar()->addMenu(tr("&Catalog"));
  cd->setObjectName(QStringLiteral("mnuCd"));
  add(cd, {"mnuCdAdd", "mnuCdAddNoScan", "mnuCdRescan", "", "mnuCdDelete", "mnuCdProperties",
           "mnuCdCategories", "mnuCDShowList", "", "mnuCdSearch", "", "mnuCdEject"});

  QMenu* view = menuBar()->addMenu(tr("&View"));
  view->setObjectName(QStringLiteral("mnuView"));
  add(view, {"mnuViewExplorer", "", "mnuViewLargeIcons", "mnuViewSmallIcons", "mnuViewList",
             "mnuViewDetails", "", "mnuViewPanels", "", "mnuViewOptions", "mnuViewDataOptions",
             "mnuViewIconMaint", "mnuViewSkinChange", "mnuViewSkinDesigner"});

  QMenu* help = menuBar()->addMenu(tr("&Help"));
  help->setObjectName(QStringLiteral("mnuHelp"));
  add(help, {"mnuHelpContents", "mnuHelpTip", "", "mnuHelpSendError", "mnuHelpUpdate", "",
             "mnuHelpAbout"});
  for (QMenu* m : {fileMenu_, cd, view, help}) m->setToolTipsVisible(true);
}

void frmMenu::CreateToolBar() {
  QToolBar* bar = addToolBar(tr("Commands"));
  bar->setObjectName(QStringLiteral("tbToolBar"));
  bar->setMovable(false);
  bar->setToolButtonStyle(Qt::ToolButtonIconOnly);
  for (const char* name :
       {"mnuFileNew", "mnuFileOpen", "", "mnuCdAdd", "mnuCdRescan", "mnuCdDelete",
        "mnuCdProperties", "", "mnuCdSearch", "mnuFileExport", "mnuFilePreview", "",
        "mnuViewExplorer", "mnuViewDetails", "mnuViewList", "", "mnuHelpContents"}) {
    if (!*name) {
      bar->addSeparator();
    } else {
      bar->addAction(command(QLatin1String(name)));
    }
  }
}

void frmMenu::CreatePopups() {
  const std::pair<const char*, std::vector<const char*>> menus[] = {
      {"popExp",
       {"popExpLaunch", "", "popExpAddCdOrFolder", "popExpCatAdd", "popExpCatRemove",
        "popExpCatRename", "", "popExpTreeSearch", "", "popExpCatProperties"}},
      {"popExpList",
       {"popExpListLaunch", "", "popExpListAddCdOrFolder", "popExpListCatAdd",
        "popExpListCatRemove", "popExpListCatRename", "", "popExpListViewLargeIcons",
        "popExpListViewSmallIcons", "popExpListViewList", "popExpListViewDetails", "",
        "popExpListSearch", "", "popExpListCatProperties"}},
      {"popCd",
       {"popCdAdd", "popCdRescan", "popCdEdit", "popCdDelete", "", "popCdSearch", "popCdPreview",
        "", "popCdProperties"}},
      {"popBrowse1",
       {"popBrowse1Launch", "", "popBrowse1Search", "popBrowse1Preview", "",
        "popBrowse1Properties"}},
  };
  for (const auto& [name, items] : menus) {
    auto* menu = new QMenu(this);
    menu->setObjectName(QLatin1String(name));
    menu->setToolTipsVisible(true);
    for (const char* item : items) {
      if (!*item) {
        menu->addSeparator();
      } else {
        menu->addAction(command(QLatin1String(item)));
      }
    }
    popups_.insert(menu->objectName(), menu);
  }
}

void frmMenu::UpdateActions() {
  const bool open = session_.isOpen();
  const bool idle = !session_.busy();
  auto set = [this](const char* name, bool enabled) {
    QAction* a = command(QLatin1String(name));
    a->setEnabled(enabled);
  };
  set("mnuFileNew", idle);
  set("mnuFileOpen", idle);
  set("mnuFileClose", open && idle);
  for (QAction* a : history_) a->setEnabled(idle);
  for (const char* name :
       {"mnuFileSaveAs", "mnuFileMerge", "mnuFileBackup", "mnuFileCompact", "mnuFilePassword",
        "mnuCdDelete", "mnuCdCategories", "mnuViewDataOptions", "popExpCatAdd", "popExpCatRemove",
        "popExpCatRename", "popExpListCatAdd", "popExpListCatRemove", "popExpListCatRename",
        "popCdDelete"}) {
    set(name, open && idle);
  }
  for (const char* name : {"mnuCdProperties", "mnuCDShowList", "popExpLaunch",
                           "popExpCatProperties", "popExpListLaunch", "popExpListCatProperties",
                           "popCdProperties", "popBrowse1Launch", "popBrowse1Properties"}) {
    set(name, open);
  }
  // Commands of other features: enabled once the feature is built in.
  static const QStringList needCatalog = {QStringLiteral("mnuFileExport"),
                                          QStringLiteral("mnuFilePreview"),
                                          QStringLiteral("mnuCdSearch")};
  static const QStringList writes = {QStringLiteral("mnuCdAdd"), QStringLiteral("mnuCdAddNoScan"),
                                     QStringLiteral("mnuCdRescan"), QStringLiteral("popCdEdit")};
  auto feature = [&](QAction* a, const QString& target) {
    const bool built = hooks_.Has(target);
    bool enabled = built;
    if (needCatalog.contains(target)) enabled = enabled && open;
    if (writes.contains(target)) enabled = enabled && open && idle;
    a->setEnabled(enabled);
    a->setToolTip(built ? a->text().remove(QLatin1Char('&')).remove(QStringLiteral("..."))
                        : kNotYet);
    a->setStatusTip(built ? QString() : kNotYet);
  };
  for (const QString& name : CommandHooks::FeatureCommands()) feature(command(name), name);
  for (auto it = FeaturePopups().constBegin(); it != FeaturePopups().constEnd(); ++it) {
    feature(command(it.key()), it.value());
  }
}

}  // namespace gorvan::ui
