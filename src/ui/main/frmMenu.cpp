// frmMenu: start, placement, caption, documents and the window's end.
#include "ui/main/frmMenu.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QScreen>
#include <QSplashScreen>
#include <QStatusBar>

#include "catalog/PasswordCheck.h"
#include "ui/explorer/TraditionalView.h"
#include "ui/explorer/frmBrowse2.h"
#include "ui/main/StatusPanels.h"
#include "ui/session/CatalogSession.h"
#include "ui/session/UiSettings.h"
#include "ui/session/ViewLoader.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {

frmMenu::frmMenu(CatalogSession& session, const CommandHooks& hooks, QWidget* parent)
    : QMainWindow(parent), session_(session), hooks_(hooks) {
  setObjectName(QStringLiteral("frmMenu"));
  mdi_ = new QMdiArea;
  mdi_->setObjectName(QStringLiteral("mdiDocuments"));
  mdi_->setViewMode(QMdiArea::TabbedView);
  mdi_->setTabsClosable(true);
  mdi_->setTabsMovable(true);
  mdi_->setDocumentMode(true);
  setCentralWidget(mdi_);
  panels_ = new StatusPanels(statusBar());

  CreateActions();
  CreateMenus();
  CreateToolBar();
  CreatePopups();

  explorerMode_ = UiSettings::ViewModeExplorer();
  command(QStringLiteral("mnuViewExplorer"))->setChecked(explorerMode_);
  ViewListStyle(static_cast<ListStyle>(UiSettings::ListStyle()));

  connect(&session_, &CatalogSession::opened, this, [this] {
    UpdateCaption();
    UpdateTotals();
    UpdateActions();
    RebuildHistory();
  });
  connect(&session_, &CatalogSession::closed, this, [this] {
    UpdateCaption();
    UpdateTotals();
    UpdateActions();
  });
  connect(&session_, &CatalogSession::changed, this, [this] {
    UpdateCaption();
    UpdateTotals();
    RebuildHistory();
  });
  connect(&session_, &CatalogSession::busyChanged, this, [this] { UpdateActions(); });
  connect(&session_, &CatalogSession::jobStarted, this, &frmMenu::ShowJobProgress);
  connect(mdi_, &QMdiArea::subWindowActivated, this, [this] { UpdateActions(); });

  ShowViews();
  UpdateCaption();
  UpdateActions();
  RebuildHistory();
  hooks_.WindowMade(*this);
}

frmMenu::~frmMenu() = default;

void frmMenu::MenuStart(const std::string& catalogPath, const QString& scanPath,
                        QSplashScreen* splash) {
  RestorePlacement();
  if (splash) splash->finish(this);
  AskAutoUpdateNotice();
  if (!catalogPath.empty()) OpenCatalog(catalogPath, false);
  if (!scanPath.isEmpty() && session_.isOpen()) RunCommand(QStringLiteral("mnuCdAdd"), scanPath);
}

void frmMenu::AskAutoUpdateNotice() {
  if (!UiSettings::Switch("lShowAutoUpdateNotice")) return;
  if (session_.prompt().YesNo(kAutoUpdateQuestion))
    UiSettings::SetSwitch("lNotifyNewVersion", true);
  UiSettings::SetSwitch("lShowAutoUpdateNotice", false);
}

void frmMenu::RestorePlacement() {
  const WindowPlacement p = UiSettings::LoadPlacement();
  const QScreen* screen = QGuiApplication::primaryScreen();
  const QRect area = screen ? screen->availableVirtualGeometry() : QRect(0, 0, 1024, 768);
  if (p.hasSize) {
    resize(p.width, p.height);
  } else {
    resize(area.width() * 3 / 4, area.height() * 3 / 4);
  }
  // A position beyond the screen (a monitor that is gone) is not applied.
  const bool onScreen = p.left < area.right() && p.top < area.bottom() &&
                        p.left + width() > area.left() && p.top >= area.top() - height() / 2;
  if (p.hasPosition && onScreen) {
    move(p.left, p.top);
  } else if (!p.hasPosition) {
    move(area.center() - rect().center());
  }
  // A window that starts minimised looks like one that failed to start.
  if (p.state == 2) {
    showMaximized();
  } else {
    show();
  }
}

void frmMenu::SavePlacement() {
  WindowPlacement p;
  p.state = isMaximized() ? 2 : isMinimized() ? 1 : 0;
  const QRect normal = p.state == 0 ? QRect(pos(), size()) : normalGeometry();
  p.left = normal.x();
  p.top = normal.y();
  p.width = normal.width();
  p.height = normal.height();
  UiSettings::SavePlacement(p);
}

void frmMenu::closeEvent(QCloseEvent* event) {
  if (session_.busy() && !quitting_) {
    if (!session_.prompt().YesNo(Std(tr("A job is still running. Stop it and quit Gorvan?")))) {
      event->ignore();
      return;
    }
  }
  SavePlacement();
  session_.CancelJob();
  event->accept();
}

void frmMenu::UpdateCaption() {
  setWindowTitle(session_.caption());
  panels_->SetCatalog(session_.isOpen() ? session_.catalogName() : QString());
}

void frmMenu::UpdateTotals() {
  if (!session_.isOpen()) {
    panels_->ClearTotals();
    return;
  }
  using Totals = std::pair<int, qint64>;
  session_.loader().Load<Totals>(
      this, "frmMenu.totals",
      [](classData& data, const std::stop_token& stop) {
        Totals t{data.GetCdCount(), 0};
        classCd cd = data.CdCursor();
        for (cd.MoveFirst(); !cd.isEof() && !stop.stop_requested(); cd.MoveNext()) {
          t.second += cd.GetCdNumOfFiles();
        }
        return t;
      },
      [this](Totals& t) { panels_->SetTotals(t.first, t.second); });
}

QMdiSubWindow* frmMenu::OpenView(bool explorer) {
  QPointer<QMdiSubWindow>& slot = explorer ? explorerWindow_ : traditionalWindow_;
  if (!slot) {
    CatalogView* view = explorer ? static_cast<CatalogView*>(new frmBrowse2(*this))
                                 : static_cast<CatalogView*>(new TraditionalView(*this));
    connect(view, &CatalogView::selectionChanged, panels_, &StatusPanels::SetSelection);
    view->SetListStyle(listStyle_);
    slot = AddDocument(view, explorer ? tr("Explorer") : tr("Discs"));
    slot->setAttribute(Qt::WA_DeleteOnClose);
    slot->installEventFilter(this);
  }
  mdi_->setActiveSubWindow(slot);
  return slot;
}

CatalogView* frmMenu::ShowView(bool explorer) {
  QMdiSubWindow* window = OpenView(explorer);
  return window ? qobject_cast<CatalogView*>(window->widget()) : nullptr;
}

void frmMenu::ShowViews() {
  QPointer<QMdiSubWindow> other = explorerMode_ ? traditionalWindow_ : explorerWindow_;
  OpenView(explorerMode_);
  if (other) {
    switching_ = true;
    other->close();
    switching_ = false;
  }
}

bool frmMenu::eventFilter(QObject* watched, QEvent* event) {
  // The last view of the catalog stays: closing it would leave the window
  // empty with a catalog open. The View menu switches views instead.
  if (event->type() == QEvent::Close && !switching_ && !quitting_ &&
      (watched == explorerWindow_ || watched == traditionalWindow_) &&
      !(explorerWindow_ && traditionalWindow_)) {
    event->ignore();
    return true;
  }
  return QMainWindow::eventFilter(watched, event);
}

QMdiSubWindow* frmMenu::AddDocument(QWidget* widget, const QString& title) {
  QMdiSubWindow* window = mdi_->addSubWindow(widget);
  window->setWindowTitle(title);
  window->setWindowIcon(widget->windowIcon());
  window->showMaximized();
  return window;
}

CatalogView* frmMenu::frontView() const {
  // The tab shown, whether or not the frame has the focus right now.
  if (QMdiSubWindow* w = mdi_->currentSubWindow()) return qobject_cast<CatalogView*>(w->widget());
  return activeView();
}

CatalogView* frmMenu::activeView() const {
  if (QMdiSubWindow* w = mdi_->activeSubWindow()) {
    if (auto* view = qobject_cast<CatalogView*>(w->widget())) return view;
  }
  // A search window may be active: the catalog views still answer.
  for (const QPointer<QMdiSubWindow>& w : {explorerWindow_, traditionalWindow_}) {
    if (w) return qobject_cast<CatalogView*>(w->widget());
  }
  return nullptr;
}

CommandContext frmMenu::context() const {
  CommandContext c;
  c.window = const_cast<frmMenu*>(this);
  c.session = &session_;
  if (CatalogView* view = activeView()) c.item = view->currentItem();
  return c;
}

void frmMenu::RunCommand(const QString& name, const QString& path) {
  if (RefuseOnEmptyCatalog(name)) return;
  CommandContext c = context();
  c.path = path;
  if (!hooks_.Run(name, c)) statusBar()->showMessage(tr("Not available in this version yet"), 5000);
}

void frmMenu::ForcePaint() {
  for (QMdiSubWindow* w : mdi_->subWindowList()) w->widget()->update();
  update();
}

bool frmMenu::VerifyPassword() {
  classData* data = session_.writer();
  if (!data) return false;
  const std::string current = data->GetDataPassword();
  if (current.empty()) return true;
  return session_.prompt().AskPassword(false, [&current](const PasswordFields& f) {
    return std::string(PasswordCheck::Message(PasswordCheck::AskPassword(f.entered, current)));
  });
}

void frmMenu::ForceQuit() {
  quitting_ = true;
  close();
}

}  // namespace gorvan::ui
