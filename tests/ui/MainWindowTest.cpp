// The main window: every command as an action of its name, the start-up
// (placement, first-start question, opening with its refusals), the caption,
// the history and the hooks of other features.
#include <sys/stat.h>
#include <unistd.h>

#include <QMdiArea>
#include <QMenuBar>
#include <QScreen>
#include <QStatusBar>

#include "app/CatalogHistory.h"
#include "app/SettingsStore.h"
#include "ui/UiTestSupport.h"
#include "ui/main/StatusPanels.h"
#include "ui/main/frmMenu.h"
#include "ui/session/CatalogSession.h"
#include "ui/session/NotifyPrompt.h"
#include "ui/session/UiSettings.h"

namespace gorvan::test {
namespace {

QStringList MenuCommands(QMenu* menu) {
  QStringList names;
  for (QAction* a : menu->actions()) {
    if (a->menu()) names += MenuCommands(a->menu());
    if (!a->objectName().isEmpty()) names << a->objectName();
  }
  return names;
}

TEST_F(UiTest, EveryCommandIsAMenuActionNamedAfterItAndFeaturesWaitForTheirHooks) {
  bool searched = false;
  hooks.Register(QStringLiteral("mnuCdSearch"),
                 [&](const ui::CommandContext& c) { searched = c.session != nullptr; });
  CatalogBuilder b(dir.File("a.cd"));
  b.Disc({.name = "One"});
  b.Close();
  Start(dir.File("a.cd"));

  QStringList inMenus;
  for (QAction* top : window->menuBar()->actions()) inMenus += MenuCommands(top->menu());
  const char* const kCommands[] = {
      "mnuFileNew",         "mnuFileOpen",      "mnuFileClose",      "mnuFileHist",
      "mnuFileSaveAs",      "mnuFileMerge",     "mnuFileBackup",     "mnuFileCompact",
      "mnuFilePassword",    "mnuFileExport",    "mnuFilePreview",    "mnuFileExit",
      "mnuCdAdd",           "mnuCdAddNoScan",   "mnuCdDelete",       "mnuCdRescan",
      "mnuCdProperties",    "mnuCdCategories",  "mnuCdSearch",       "mnuCDShowList",
      "mnuCdEject",         "mnuViewExplorer",  "mnuViewLargeIcons", "mnuViewSmallIcons",
      "mnuViewList",        "mnuViewDetails",   "mnuViewPanels",     "mnuViewOptions",
      "mnuViewDataOptions", "mnuViewIconMaint", "mnuViewSkinChange", "mnuViewSkinDesigner",
      "mnuHelpContents",    "mnuHelpTip",       "mnuHelpSendError",  "mnuHelpUpdate",
      "mnuHelpAbout"};
  for (const char* name : kCommands) {
    EXPECT_TRUE(inMenus.contains(QLatin1String(name))) << name;
  }
  EXPECT_EQ(inMenus.count(QStringLiteral("mnuFileHist")), 5);

  const std::pair<const char*, std::vector<const char*>> popups[] = {
      {"popExp",
       {"popExpLaunch", "popExpAddCdOrFolder", "popExpCatAdd", "popExpCatRemove", "popExpCatRename",
        "popExpCatProperties", "popExpTreeSearch"}},
      {"popExpList",
       {"popExpListLaunch", "popExpListAddCdOrFolder", "popExpListCatAdd", "popExpListCatRemove",
        "popExpListCatRename", "popExpListCatProperties", "popExpListViewLargeIcons",
        "popExpListViewSmallIcons", "popExpListViewList", "popExpListViewDetails",
        "popExpListSearch"}},
      {"popCd",
       {"popCdAdd", "popCdDelete", "popCdEdit", "popCdPreview", "popCdProperties", "popCdRescan",
        "popCdSearch"}},
      {"popBrowse1",
       {"popBrowse1Launch", "popBrowse1Preview", "popBrowse1Properties", "popBrowse1Search"}},
  };
  for (const auto& [menu, items] : popups) {
    QMenu* popup = window->popup(QLatin1String(menu));
    ASSERT_TRUE(popup) << menu;
    const QStringList names = MenuCommands(popup);
    for (const char* item : items) EXPECT_TRUE(names.contains(QLatin1String(item))) << item;
  }

  // A feature that is not built in yet: disabled, and the tip says so.
  EXPECT_FALSE(Action("mnuCdAdd")->isEnabled());
  EXPECT_EQ(Action("mnuCdAdd")->toolTip(), QStringLiteral("Not available in this version yet"));
  EXPECT_FALSE(Action("popCdRescan")->isEnabled());
  // One that is: its handler gets the session.
  Trigger("mnuCdSearch");
  EXPECT_TRUE(searched);
  searched = false;
  Trigger("popExpTreeSearch");
  EXPECT_TRUE(searched) << "pop-up items run their menu command's hook";
}

TEST_F(UiTest, EmptyCatalogRefusesSearchExportAndPreview) {
  int ran = 0;
  for (const char* name : {"mnuCdSearch", "mnuFileExport", "mnuFilePreview"}) {
    hooks.Register(QLatin1String(name), [&](const ui::CommandContext&) { ++ran; });
  }
  Start(dir.File("empty.cd"));
  Trigger("mnuCdSearch");
  Trigger("mnuFileExport");
  Trigger("mnuFilePreview");
  EXPECT_EQ(ran, 0);
  EXPECT_EQ(prompt.Texts(),
            (std::vector<std::string>{
                "You need at least one CD or folder scanned before you can search for something!!",
                "You need to have at least one CD or folder scanned before you can export",
                "You need to have at least one CD or folder scanned before you can print"}));
}

TEST_F(UiTest, ScanPathOfTheCommandLineOpensTheScanDialogOnceTheCatalogIsOpen) {
  QString scanned;
  bool open = false;
  hooks.Register(QStringLiteral("mnuCdAdd"), [&](const ui::CommandContext& c) {
    scanned = c.path;
    open = c.session->isOpen();
  });
  SettingsStore::PutBool("Switches", "lShowAutoUpdateNotice", false);
  session_ = std::make_unique<ui::CatalogSession>(prompt);
  window = std::make_unique<ui::frmMenu>(*session_, hooks);
  window->MenuStart(dir.File("c.cd"), QStringLiteral("/media/usb"));
  EXPECT_EQ(scanned, QStringLiteral("/media/usb"));
  EXPECT_TRUE(open);
  EXPECT_TRUE(Action("mnuCdAdd")->isEnabled());
}

TEST_F(UiTest, FirstStartAsksOnceAboutUpdateNotices) {
  prompt.Answer(PromptAnswer::kYes);
  Start("", /*askUpdate=*/true);
  ASSERT_EQ(prompt.asked.size(), 1u);
  EXPECT_EQ(prompt.asked[0].text,
            "You can let Gorvan automatically notify you of new Gorvan updates when you are "
            "online!!\nDo want to enable this feature?\nYou can always chnage your selection "
            "later in the Gorvan options!!");
  EXPECT_EQ(SettingsStore::GetText("Switches", "lNotifyNewVersion"), "True");
  EXPECT_EQ(SettingsStore::GetText("Switches", "lShowAutoUpdateNotice"), "False");
  window.reset();
  session_.reset();
  Start("", /*askUpdate=*/true);
  EXPECT_EQ(prompt.asked.size(), 1u) << "asked once only";
}

TEST_F(UiTest, PlacementIsRestoredWhenOnTheScreenAndSavedOnClose) {
  const QRect screen = QGuiApplication::primaryScreen()->availableVirtualGeometry();
  struct Case {
    int left, top;
    bool applied;
  } cases[] = {
      {40, 30, true}, {screen.width() + 500, 30, false}, {40, screen.height() + 10, false}};
  for (const Case& c : cases) {
    SettingsStore::PutText("Startup", "Left", std::to_string(c.left));
    SettingsStore::PutText("Startup", "Top", std::to_string(c.top));
    SettingsStore::PutText("Startup", "Width", "500");
    SettingsStore::PutText("Startup", "Height", "400");
    SettingsStore::PutText("Startup", "WindowState", "0");
    Start("");
    EXPECT_EQ(window->size(), QSize(500, 400));
    EXPECT_EQ(window->pos() == QPoint(c.left, c.top), c.applied) << c.left << "," << c.top;
    window->move(60, 70);
    window->resize(520, 410);
    window->close();
    const ui::WindowPlacement saved = ui::UiSettings::LoadPlacement();
    EXPECT_EQ(saved.left, 60);
    EXPECT_EQ(saved.top, 70);
    EXPECT_EQ(saved.width, 520);
    EXPECT_EQ(saved.height, 410);
    EXPECT_EQ(saved.state, 0);
    window.reset();
    session_.reset();
  }
}

TEST_F(UiTest, OpenShowsTheCatalogInTheCaptionAndRefusalsSayWhy) {
  {
    CatalogBuilder b(dir.File("locked.cd"));
    b.data().SetDataName("Locked discs");
    b.data().SetDataPassword("secret");
  }
  // A refused password: the dialog's message, then the refusal.
  prompt.passwords = {{"wrong", "", ""}};
  Start(dir.File("locked.cd"));
  EXPECT_EQ(prompt.judged, std::vector<std::string>{"Invalid or Wrong Password !!"});
  EXPECT_EQ(prompt.LastText(), "Nothing To Display?\nLogon Denied!!");
  EXPECT_FALSE(session().isOpen());
  EXPECT_EQ(window->windowTitle(), QStringLiteral("Gorvan"));

  prompt.passwords = {{"  secret ", "", ""}};
  prompt.files = {dir.File("locked.cd")};
  Trigger("mnuFileOpen");
  ASSERT_TRUE(session().isOpen());
  EXPECT_EQ(window->windowTitle(), QStringLiteral("Locked discs - Gorvan"));
  EXPECT_EQ(prompt.fileRequests.back().title, "Select a Gorvan database to open");
  EXPECT_EQ(window->panels().catalogText(), QStringLiteral("Locked discs"));

  // Not a catalog at all, and a damaged one: the data-file error, nothing open.
  WriteFileBytes(dir.File("text.cd"), std::string(200, 'x'));
  prompt.files = {dir.File("text.cd")};
  Trigger("mnuFileOpen");
  EXPECT_FALSE(session().isOpen());
  EXPECT_EQ(prompt.LastText().rfind("Nothing To Display?\n", 0), 0u) << prompt.LastText();
}

TEST_F(UiTest, ReadOnlyAndWrongVersionCatalogsAreRefusedWithTheProductsWords) {
  CatalogBuilder(dir.File("ro.cd")).Close();
  ASSERT_EQ(::chmod(dir.File("ro.cd").c_str(), 0444), 0);
  prompt.Answer(PromptAnswer::kNo);
  Start(dir.File("ro.cd"));
  ASSERT_GE(prompt.asked.size(), 2u);
  EXPECT_EQ(prompt.asked[0].text,
            "Your data file is read-only,\ndo you want to make it read-write?");
  EXPECT_EQ(prompt.asked[0].buttons, PromptButtons::kYesNo);
  EXPECT_FALSE(session().isOpen());
  EXPECT_EQ(prompt.LastText().rfind("Nothing To Display?\n", 0), 0u);

  prompt.Answer(PromptAnswer::kYes);
  prompt.files = {dir.File("ro.cd")};
  Trigger("mnuFileOpen");
  EXPECT_TRUE(session().isOpen());
  struct stat st {};
  ASSERT_EQ(::stat(dir.File("ro.cd").c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0644u) << "the owner's write bit, and only that";

  // A catalog of a newer format version.
  CatalogBuilder(dir.File("new.cd")).Close();
  std::string bytes = ReadFileBytes(dir.File("new.cd"));
  bytes[4] = 3;  // the major version
  WriteFileBytes(dir.File("new.cd"), bytes);
  prompt.files = {dir.File("new.cd")};
  Trigger("mnuFileOpen");
  EXPECT_EQ(
      prompt.LastText(),
      "Nothing To Display?\nError!!\nWrong Version of the Data File\nCan't Use newer version data");
  EXPECT_FALSE(session().isOpen());
}

TEST_F(UiTest, SwitchedOffPromptsStayOffForTheSessionOrForGood) {
  PromptRequest r;
  r.text = "Compact Data Files ??";
  r.buttons = PromptButtons::kYesNo;
  r.notifyKey = "lNotifyCompact";
  r.sessionOnly = true;
  prompt.Answer(PromptAnswer::kYes, /*dontShowAgain=*/true);
  EXPECT_EQ(ui::NotifyPrompt::Ask(prompt, r, PromptAnswer::kNo).answer, PromptAnswer::kYes);
  EXPECT_EQ(ui::NotifyPrompt::Ask(prompt, r, PromptAnswer::kNo).answer, PromptAnswer::kNo)
      << "off for this session: not asked";
  EXPECT_EQ(prompt.asked.size(), 1u);
  EXPECT_EQ(SettingsStore::GetText("Switches", "lNotifyCompact"), "") << "nothing stored";
  ui::NotifyPrompt::ResetSession();
  r.sessionOnly = false;
  prompt.Answer(PromptAnswer::kYes, /*dontShowAgain=*/true);
  ui::NotifyPrompt::Ask(prompt, r, PromptAnswer::kNo);
  EXPECT_EQ(SettingsStore::GetText("Switches", "lNotifyCompact"), "False");
  ui::NotifyPrompt::ResetSession();
  EXPECT_FALSE(ui::NotifyPrompt::IsOn("lNotifyCompact"));
}

TEST_F(UiTest, HistoryListsNewestFirstAndOffersToDropAMissingCatalog) {
  for (const char* name : {"one.cd", "two.cd", "three.cd"}) CatalogBuilder(dir.File(name));
  Start(dir.File("one.cd"));
  for (const char* name : {"two.cd", "three.cd"}) {
    prompt.files = {dir.File(name)};
    Trigger("mnuFileOpen");
  }
  EXPECT_EQ(
      CatalogHistory::Entries(),
      (std::vector<std::string>{dir.File("three.cd"), dir.File("two.cd"), dir.File("one.cd")}));
  QList<QAction*> entries = window->findChildren<QAction*>(QStringLiteral("mnuFileHist"));
  ASSERT_EQ(entries.size(), 5);
  std::sort(entries.begin(), entries.end(),
            [](QAction* a, QAction* b) { return a->data().toInt() < b->data().toInt(); });
  EXPECT_TRUE(entries[2]->isVisible());
  EXPECT_FALSE(entries[3]->isVisible());
  EXPECT_EQ(entries[1]->text(), QStringLiteral("&2 two.cd"));

  entries[2]->trigger();  // one.cd
  EXPECT_EQ(session().path(), dir.File("one.cd"));
  EXPECT_EQ(CatalogHistory::Newest(), dir.File("one.cd"));

  ::unlink(dir.File("two.cd").c_str());
  prompt.Answer(PromptAnswer::kYes);
  entries[2]->trigger();  // two.cd is third now
  EXPECT_EQ(prompt.LastText(), "The catalog " + dir.File("two.cd") +
                                   " was not found.\nRemove it from the list of recent catalogs?");
  EXPECT_EQ(CatalogHistory::Entries(),
            (std::vector<std::string>{dir.File("one.cd"), dir.File("three.cd")}));
}

}  // namespace
}  // namespace gorvan::test
