#pragma once
// frmMenu: the main window. A frame whose documents (the explorer view, the
// traditional view, search windows) are the tabs of a QMdiArea; it owns the
// menu bar, the toolbar, the status panels and the pop-up menus, each command
// a QAction whose objectName is the command's name (mnuFileNew ...
// mnuHelpAbout, popExp*, popExpList*, popCd*, popBrowse1*). It holds no
// catalog logic of its own: the catalog is the session's, the rules are the
// core's, and commands of other features run through CommandHooks.
//
// The window is split by concern: frmMenu.cpp (start, placement, caption,
// documents), frmMenuActions.cpp (actions, menus, toolbar, pop-ups, enabled
// states), frmMenuFile.cpp (new, open, close, history, password, exit),
// frmMenuMaintenance.cpp (compact, backup, save as, merge), frmMenuCatalog.cpp
// (the Catalog and View menus).

#include <QHash>
#include <QMainWindow>
#include <QPointer>
#include <string>

#include "ui/explorer/CatalogView.h"
#include "ui/main/CommandHooks.h"
#include "ui/session/CatalogJob.h"

class QActionGroup;
class QMdiArea;
class QMdiSubWindow;
class QSplashScreen;

namespace gorvan::ui {

class CatalogSession;
class JobProgressDialog;
class StatusPanels;

class frmMenu : public QMainWindow {
  Q_OBJECT

 public:
  frmMenu(CatalogSession& session, const CommandHooks& hooks, QWidget* parent = nullptr);
  ~frmMenu() override;

  // Restores the placement kept in "Startup", shows the window (closing the
  // splash), asks the first-start question about update notices, and opens
  // catalogPath ("" opens nothing). With scanPath set, the scan dialog then
  // opens for that folder.
  void MenuStart(const std::string& catalogPath, const QString& scanPath = {},
                 QSplashScreen* splash = nullptr);
  // Redraws every document.
  void ForcePaint();
  // Asks the open catalog's password again; true when the user passed (or
  // the catalog has none).
  bool VerifyPassword();
  // Ends the program without further questions (a running job is stopped).
  void ForceQuit();

  CatalogSession& session() { return session_; }
  // A command by name (nullptr when there is none).
  QAction* command(const QString& name) const { return actions_.value(name); }
  // A pop-up menu: "popExp", "popExpList", "popCd", "popBrowse1".
  QMenu* popup(const QString& name) const { return popups_.value(name); }
  QMdiArea* documents() const { return mdi_; }
  // Adds a document as a tab of the frame and shows it.
  QMdiSubWindow* AddDocument(QWidget* widget, const QString& title);
  // The explorer or traditional view that commands act on (null when none).
  CatalogView* activeView() const;
  // The explorer or traditional view when it is the document in front (null
  // when a search window is).
  CatalogView* frontView() const;
  // Opens (or brings forward) the explorer or the traditional view beside
  // what is open, without changing the view mode; null when nothing is open.
  CatalogView* ShowView(bool explorer);
  bool explorerMode() const { return explorerMode_; }
  StatusPanels& panels() { return *panels_; }
  // What a feature command is handed: the active view's item.
  CommandContext context() const;
  // Runs a command of another feature as its menu item does: the window's
  // refusals first, then the feature's handler.
  void RunCommand(const QString& name, const QString& path = {});

 protected:
  void closeEvent(QCloseEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  // frmMenuActions.cpp
  void CreateActions();
  void CreateMenus();
  void CreateToolBar();
  void CreatePopups();
  void UpdateActions();
  QAction* NewAction(const char* name, const QString& text);

  // frmMenuFile.cpp
  void FileNew();
  void FileOpen();
  void FileClose();
  void FileHistory(int index);
  void RebuildHistory();
  void FilePassword();
  bool OpenCatalog(const std::string& path, bool mustExist);

  // frmMenuMaintenance.cpp
  void FileCompact();
  void FileBackup();
  void FileSaveAs();
  void FileMerge();
  void ShowJobProgress(CatalogJob* job);
  void TellOutcome(const JobOutcome& outcome, const char* notifyKey);

  // frmMenuCatalog.cpp
  void CdDelete();
  void CdProperties();
  void CdCategories();
  void CdShowList();
  void ViewExplorer(bool explorer);
  void ViewListStyle(ListStyle style);
  void ViewDataOptions();
  bool RefuseOnEmptyCatalog(const QString& command);

  // frmMenu.cpp
  void ShowViews();
  // Opens (or brings forward) the explorer or the traditional view.
  QMdiSubWindow* OpenView(bool explorer);
  void UpdateCaption();
  void RestorePlacement();
  void SavePlacement();
  void AskAutoUpdateNotice();
  void UpdateTotals();

  CatalogSession& session_;
  const CommandHooks& hooks_;
  QMdiArea* mdi_;
  StatusPanels* panels_;
  QHash<QString, QAction*> actions_;
  QHash<QString, QMenu*> popups_;
  QList<QAction*> history_;
  QActionGroup* listStyles_ = nullptr;
  QMenu* fileMenu_ = nullptr;
  QAction* historySeparator_ = nullptr;
  QPointer<QMdiSubWindow> explorerWindow_;
  QPointer<QMdiSubWindow> traditionalWindow_;
  QPointer<JobProgressDialog> progress_;
  ListStyle listStyle_ = ListStyle::kDetails;
  bool explorerMode_ = true;
  bool quitting_ = false;
  bool switching_ = false;  // the view mode closes the other view
};

}  // namespace gorvan::ui
