#include "ui/reports/frmPreview.h"

#include <QAction>
#include <QCloseEvent>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLocale>
#include <QPageSetupDialog>
#include <QPrintDialog>
#include <QPrinter>
#include <QProgressBar>
#include <QPushButton>
#include <QStandardItemModel>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>

#include "ui/export/ReaderJob.h"
#include "ui/main/CommandHooks.h"
#include "ui/main/frmMenu.h"
#include "ui/reports/CoverInlay.h"
#include "ui/reports/PrintJob.h"
#include "ui/reports/ReportPages.h"
#include "ui/reports/ReportView.h"
#include "ui/session/CatalogSession.h"
#include "ui/widgets/ThemeIcons.h"
#include "ui/widgets/UiText.h"

namespace gorvan::ui {
namespace {

constexpr const char* kWindowName = "preview";

// The paper of the user's region: Letter where it is the custom, else A4;
// upright, with margins of 15 mm.
QPageLayout DefaultPageLayout() {
  const QLocale::Territory t = QLocale().territory();
  const bool letter = t == QLocale::UnitedStates || t == QLocale::Canada || t == QLocale::Mexico ||
                      t == QLocale::Philippines || t == QLocale::Chile;
  return QPageLayout(QPageSize(letter ? QPageSize::Letter : QPageSize::A4), QPageLayout::Portrait,
                     QMarginsF(15, 15, 15, 15), QPageLayout::Millimeter);
}

}  // namespace

frmPreview::frmPreview(CatalogSession& session, QWidget* parent)
    : QMainWindow(parent, Qt::Window), session_(session), pageLayout_(DefaultPageLayout()) {
  setObjectName(QStringLiteral("frmPreview"));
  setWindowTitle(tr("Print Preview"));
  setAttribute(Qt::WA_DeleteOnClose);

  view_ = new ReportView;
  setCentralWidget(view_);

  QToolBar* bar = addToolBar(tr("Preview"));
  bar->setObjectName(QStringLiteral("tbPreview"));
  bar->setMovable(false);
  bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  auto* reportLabel = new QLabel(tr("&Report:"));
  reports_ = new QComboBox;
  reports_->setObjectName(QStringLiteral("cboReport"));
  reports_->addItems({tr("Catalog Report"), tr("Disc Report"), tr("CD Cover")});
  // Wide enough for a report another window adds later (ShowDocument).
  reports_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
  reportLabel->setBuddy(reports_);
  bar->addWidget(reportLabel);
  bar->addWidget(reports_);
  bar->addSeparator();

  auto action = [this, bar](const char* name, const QString& text, const char* icon,
                            const QKeySequence& key) {
    auto* a = new QAction(ThemeIcons::Named(icon), text, this);
    a->setObjectName(QLatin1String(name));
    a->setShortcut(key);
    bar->addAction(a);
    return a;
  };
  print_ = action("btnPrint", tr("&Print..."), "document-print", QKeySequence::Print);
  pdf_ = action("btnSavePdf", tr("Save as P&DF..."), "document-save-as", QKeySequence::Save);
  setup_ = action("btnPageSetup", tr("Page Set&up..."), "document-page-setup", {});
  bar->addSeparator();
  QAction* zoomIn = action("btnZoomIn", tr("Zoom &In"), "zoom-in", QKeySequence::ZoomIn);
  QAction* zoomOut = action("btnZoomOut", tr("Zoom &Out"), "zoom-out", QKeySequence::ZoomOut);
  QAction* fit = action("btnFitWidth", tr("&Fit Width"), "zoom-fit-width", {});
  for (QAction* a : {zoomIn, zoomOut, fit}) {
    if (auto* w = bar->widgetForAction(a)) {
      if (auto* b = qobject_cast<QToolButton*>(w)) b->setToolButtonStyle(Qt::ToolButtonIconOnly);
    }
    a->setToolTip(a->text().remove(QLatin1Char('&')));
  }
  page_ = new QLabel;
  page_->setObjectName(QStringLiteral("lblPage"));
  caption_ = new QLabel;
  caption_->setObjectName(QStringLiteral("lblCaption"));
  bar_ = new QProgressBar;
  bar_->setObjectName(QStringLiteral("prgProgress"));
  bar_->setMaximumWidth(fontMetrics().averageCharWidth() * 30);
  stop_ = new QPushButton(tr("&Stop"));
  stop_->setObjectName(QStringLiteral("btnStop"));
  statusBar()->addWidget(caption_, 1);
  statusBar()->addWidget(bar_);
  statusBar()->addWidget(stop_);
  statusBar()->addPermanentWidget(page_);

  connect(reports_, &QComboBox::activated, this,
          [this](int index) { ShowReport(static_cast<Kind>(index)); });
  connect(print_, &QAction::triggered, this, &frmPreview::Print);
  connect(pdf_, &QAction::triggered, this, &frmPreview::AskSaveAsPdf);
  connect(setup_, &QAction::triggered, this, &frmPreview::PageSetup);
  connect(zoomIn, &QAction::triggered, view_, &ReportView::ZoomIn);
  connect(zoomOut, &QAction::triggered, view_, &ReportView::ZoomOut);
  connect(fit, &QAction::triggered, view_, &ReportView::FitWidth);
  connect(stop_, &QPushButton::clicked, this, &frmPreview::StopWork);
  connect(view_, &ReportView::currentPageChanged, this, [this](int page) {
    page_->setText(report_ ? tr("Page %1 of %2").arg(page + 1).arg(report_->pageCount())
                           : QString());
  });
  // A catalog closed or replaced ends the window: its report is of another.
  connect(&session_, &CatalogSession::closed, this, &frmPreview::close);

  const QSize hint(fontMetrics().averageCharWidth() * 120, fontMetrics().height() * 45);
  restored_ = WindowLayout::RestoreSize(
      kWindowName, {static_cast<float>(hint.width()), static_cast<float>(hint.height())});
  resize(static_cast<int>(restored_.width), static_cast<int>(restored_.height));
  UpdateControls();
}

frmPreview::~frmPreview() = default;

frmPreview* frmPreview::Of(CatalogSession& session, QWidget* window) {
  auto* preview =
      window->findChild<frmPreview*>(QStringLiteral("frmPreview"), Qt::FindDirectChildrenOnly);
  // A window just closed waits for its deletion: a new one takes its place.
  if (!preview || !preview->isVisible()) preview = new frmPreview(session, window);
  preview->show();
  preview->raise();
  preview->activateWindow();
  return preview;
}

bool frmPreview::busy() const { return gather_ != nullptr || printJob_ != nullptr; }

void frmPreview::SetDisc(int32_t discId) {
  disc_ = discId;
  UpdateControls();
}

void frmPreview::UpdateControls() {
  // The disc's reports only for a disc.
  if (auto* model = qobject_cast<QStandardItemModel*>(reports_->model())) {
    for (int i = 1; i <= 2; ++i) model->item(i)->setEnabled(disc_ != 0);
  }
  reports_->setCurrentIndex(static_cast<int>(kind_));
  const bool idle = !busy();
  reports_->setEnabled(!printJob_);
  print_->setEnabled(idle && report_);
  pdf_->setEnabled(idle && report_);
  setup_->setEnabled(idle);
  caption_->setVisible(!idle);
  bar_->setVisible(!idle);
  stop_->setVisible(!idle);
  stop_->setEnabled(!idle);
}

void frmPreview::SetBusy(const QString& caption) {
  caption_->setText(caption);
  bar_->setRange(0, 0);
  UpdateControls();
}

void frmPreview::ShowReport(Kind kind) {
  if (printJob_) return;
  if (kind == Kind::kDocument) {
    if (given_) ShowDocument(given_);
    return;
  }
  if (kind != Kind::kCatalog && disc_ == 0) kind = Kind::kCatalog;
  kind_ = kind;
  gather_.reset();  // a gathering under way is stopped and waited for
  report_.reset();
  document_.reset();
  cover_.reset();
  view_->SetReport(nullptr);
  const int32_t disc = disc_;
  auto document = std::make_shared<ReportDocument>();
  auto cover = std::make_shared<CoverContent>();
  ReaderJob::Work work;
  QString caption;
  switch (kind) {
    case Kind::kCatalog:
      caption = tr(kCatalogReportCaption);
      work = [document](classData& d, JobControl& job) {
        return ReportGather::CatalogReport(d, job, document.get());
      };
      break;
    case Kind::kDisc:
      caption = tr(kDiscReportCaption);
      work = [document, disc](classData& d, JobControl& job) {
        return ReportGather::DiscReport(d, disc, job, document.get());
      };
      break;
    case Kind::kCover:
      caption = tr("Creating CD Cover");
      work = [cover, disc](classData& d, JobControl&) {
        return ReportGather::Cover(d, disc, cover.get());
      };
      break;
    case Kind::kDocument:
      return;  // handled above: nothing to gather
  }
  view_->SetMessage(caption);
  Status status;
  gather_ = ReaderJob::Open(session_, std::move(work), &status);
  if (!gather_) {
    view_->SetMessage(Qs(status.message()));
    UpdateControls();
    Q_EMIT reportReady(status);
    return;
  }
  connect(gather_.get(), &ReaderJob::progress, this, [this](const JobProgress& p) {
    if (!p.caption.empty()) caption_->setText(RowText(p.caption));
    if (p.maximum > 0) {
      bar_->setRange(0, 1000);
      bar_->setValue(static_cast<int>(std::min<int64_t>(1000, p.value * 1000 / p.maximum)));
    }
  });
  connect(gather_.get(), &ReaderJob::finished, this, [this, document, cover](const Status& s) {
    if (s.ok()) {
      document_ = document;
      cover_ = cover;
    }
    Gathered(s);
  });
  SetBusy(caption);
  gather_->Start();
}

void frmPreview::ShowDocument(std::shared_ptr<const ReportDocument> document) {
  if (printJob_ || !document) return;
  gather_.reset();
  given_ = document;
  if (reports_->count() <= static_cast<int>(Kind::kDocument)) reports_->addItem(QString());
  reports_->setItemText(static_cast<int>(Kind::kDocument), document->title);
  kind_ = Kind::kDocument;
  document_ = std::move(document);
  cover_.reset();
  LayOut();
  UpdateControls();
  Q_EMIT reportReady(Status::OK());
}

void frmPreview::Gathered(const Status& status) {
  std::unique_ptr<ReaderJob> done = std::move(gather_);
  if (status.ok()) {
    LayOut();
  } else if (status.IsCancelled()) {
    view_->SetMessage(tr("The report was stopped."));
  } else {
    view_->SetMessage(tr("The report could not be made:\n%1").arg(Qs(status.message())));
    if (!status.IsNotFound()) session_.ReportFailure(status, "frmPreview");
  }
  UpdateControls();
  Q_EMIT reportReady(status);
}

void frmPreview::LayOut() {
  if (kind_ == Kind::kCover && cover_) {
    report_ = std::make_shared<CoverInlay>(*cover_, pageLayout_);
  } else if (document_) {
    report_ = std::make_shared<ReportPages>(document_, pageLayout_);
  } else {
    return;
  }
  view_->SetReport(report_);
  setWindowTitle(tr("Print Preview - %1").arg(reports_->itemText(static_cast<int>(kind_))));
}

void frmPreview::SetPageLayout(const QPageLayout& layout) {
  pageLayout_ = layout;
  LayOut();
}

void frmPreview::AskSaveAsPdf() {
  if (!report_ || busy()) return;
  FileRequest r;
  r.title = Std(tr("Save the report as PDF"));
  r.filter = "PDF Files (*.pdf)|*.pdf";
  r.defaultExtension = "pdf";
  r.save = true;
  const std::string path = session_.prompt().AskFile(r);
  if (!path.empty()) SaveAsPdf(Qs(path));
}

void frmPreview::SaveAsPdf(const QString& path) {
  if (!report_ || busy()) return;
  StartPrint(std::make_unique<PrintJob>(report_, path), tr("Saving %1").arg(path));
}

QPrinter* frmPreview::printer() {
  if (!printer_) {
    printer_ = std::make_unique<QPrinter>(QPrinter::HighResolution);
    printer_->setPageLayout(pageLayout_);
  }
  return printer_.get();
}

void frmPreview::Print() {
  if (!report_ || busy()) return;
  QPrinter* p = printer();
  p->setPageLayout(pageLayout_);
  p->setPrintRange(QPrinter::AllPages);
  p->setFromTo(0, 0);
  auto* dialog = new QPrintDialog(p, this);
  dialog->setObjectName(QStringLiteral("dlgPrint"));
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setMinMax(1, report_->pageCount());
  connect(dialog, &QDialog::accepted, this, [this, p] {
    // The paper chosen in the dialog lays the report out again.
    if (!p->pageLayout().isEquivalentTo(pageLayout_)) SetPageLayout(p->pageLayout());
    if (!report_) return;
    StartPrint(std::make_unique<PrintJob>(report_, p), tr("Printing"));
  });
  dialog->open();
}

void frmPreview::PageSetup() {
  if (busy()) return;
  QPrinter* p = printer();
  p->setPageLayout(pageLayout_);
  auto* dialog = new QPageSetupDialog(p, this);
  dialog->setObjectName(QStringLiteral("dlgPageSetup"));
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  connect(dialog, &QDialog::accepted, this, [this, p] { SetPageLayout(p->pageLayout()); });
  dialog->open();
}

void frmPreview::StartPrint(std::unique_ptr<PrintJob> job, const QString& caption) {
  printJob_ = std::move(job);
  connect(printJob_.get(), &PrintJob::progress, this, [this](int page, int pages) {
    bar_->setRange(0, pages);
    bar_->setValue(page);
    caption_->setText(tr("Page %1 of %2").arg(page).arg(pages));
  });
  connect(printJob_.get(), &PrintJob::finished, this, &frmPreview::PrintEnded);
  SetBusy(caption);
  printJob_->Start();
}

void frmPreview::PrintEnded(const Status& status) {
  std::unique_ptr<PrintJob> done = std::move(printJob_);
  UpdateControls();
  if (!status.ok() && !status.IsCancelled()) {
    session_.prompt().Message(status.message(), PromptIcon::kWarning);
  }
  Q_EMIT printed(status);
  if (closing_) close();
}

void frmPreview::StopWork() {
  if (gather_) gather_->Cancel();
  if (printJob_) printJob_->Cancel();
  stop_->setEnabled(false);
}

void frmPreview::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape) {
    if (busy()) {
      StopWork();
    } else {
      close();
    }
    return;
  }
  QMainWindow::keyPressEvent(event);
}

void frmPreview::closeEvent(QCloseEvent* event) {
  // A print under way is stopped first (no partial file); the window closes
  // when it has ended. A gathering just stops with the window.
  if (printJob_) {
    closing_ = true;
    printJob_->Cancel();
    event->ignore();
    return;
  }
  gather_.reset();
  WindowLayout::SaveSize(kWindowName, {static_cast<float>(width()), static_cast<float>(height())},
                         restored_);
  event->accept();
}

void RegisterReports(CommandHooks& hooks) {
  hooks.Register(QStringLiteral("mnuFilePreview"), [](const CommandContext& c) {
    // A disc, or a folder or file of one: that disc's report; else the
    // catalog's. One preview window: a second command shows its report there.
    int32_t disc = 0;
    switch (c.item.kind) {
      case NodeKind::kDisc:
        disc = c.item.id;
        break;
      case NodeKind::kFolder:
      case NodeKind::kFile:
      case NodeKind::kArchiveMember:
        disc = c.item.discId;
        break;
      default:
        break;
    }
    frmPreview* window = frmPreview::Of(*c.session, c.window);
    window->SetDisc(disc);
    window->ShowReport(disc != 0 ? frmPreview::Kind::kDisc : frmPreview::Kind::kCatalog);
  });
}

}  // namespace gorvan::ui
