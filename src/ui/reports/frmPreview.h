#pragma once
// frmPreview: the print preview. It shows one report at a time — the catalog
// report, the report of a disc, or the disc's cover inlays — chosen in its
// report box, and prints it to any printer or saves it as a PDF file.
//
// A report's lines are gathered on a worker thread over a reader of the
// catalog ("Creating Catalog Report", with Stop); they are then laid out on
// pages at once and painted one page at a time as they come into sight.
// Printing and saving also run on a worker thread, page by page, with Stop.
//
// Other windows show their own lines with ShowDocument (the search window's
// report: Of(session, main window)->ShowDocument(lines)).
//
// Opened by mnuFilePreview (popCdPreview and popBrowse1Preview run it with
// their item): on a disc, or a folder or file of one, it shows that disc's
// report; on the catalog or a category, the catalog report. The window's
// size is kept as "preview_width"/"preview_height".
//
// Thread contract: the GUI thread.

#include <QMainWindow>
#include <QPageLayout>
#include <QPointer>
#include <memory>

#include "app/WindowLayout.h"
#include "catalog/Status.h"
#include "ui/reports/ReportGather.h"

class QAction;
class QComboBox;
class QLabel;
class QPrinter;
class QProgressBar;
class QPushButton;

namespace gorvan::ui {

class CatalogSession;
class CommandHooks;
class PagedReport;
class PrintJob;
class ReaderJob;
class ReportView;

class frmPreview : public QMainWindow {
  Q_OBJECT

 public:
  enum class Kind { kCatalog = 0, kDisc = 1, kCover = 2, kDocument = 3 };

  explicit frmPreview(CatalogSession& session, QWidget* parent = nullptr);
  ~frmPreview() override;

  // The preview window of window (the main window): there is one; it is made
  // when there is none, or only one just closed. Shown and brought forward.
  static frmPreview* Of(CatalogSession& session, QWidget* window);

  // The disc the disc report and the cover are of (0: none; only the
  // catalog report is offered then).
  void SetDisc(int32_t discId);
  // Shows a report, gathering it first.
  void ShowReport(Kind kind);
  // Shows a report whose lines were made elsewhere (the search window's
  // results), laid out at once; the report box offers it under its title
  // from then on.
  void ShowDocument(std::shared_ptr<const ReportDocument> document);
  Kind kind() const { return kind_; }
  int32_t disc() const { return disc_; }
  // The report shown; null while it is gathered.
  std::shared_ptr<const PagedReport> report() const { return report_; }
  ReportView* view() const { return view_; }
  // Gathering or printing.
  bool busy() const;
  // The paper every report is laid out on.
  QPageLayout pageLayout() const { return pageLayout_; }
  void SetPageLayout(const QPageLayout& layout);

  // Writes the report to a PDF file on a worker thread.
  void SaveAsPdf(const QString& path);
  // Asks for the file (Prompt) and saves.
  void AskSaveAsPdf();
  void Print();
  void PageSetup();

 Q_SIGNALS:
  // The report shown is laid out (or could not be gathered).
  void reportReady(const gorvan::Status& status);
  // A print or a PDF ended.
  void printed(const gorvan::Status& status);

 protected:
  void closeEvent(QCloseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void Gathered(const Status& status);
  void LayOut();
  void StartPrint(std::unique_ptr<PrintJob> job, const QString& caption);
  void PrintEnded(const Status& status);
  void SetBusy(const QString& caption);
  void UpdateControls();
  void StopWork();
  QPrinter* printer();

  CatalogSession& session_;
  ReportView* view_;
  QComboBox* reports_;
  QLabel* page_;
  QLabel* caption_;
  QProgressBar* bar_;
  QPushButton* stop_;
  QAction* print_;
  QAction* pdf_;
  QAction* setup_;
  std::unique_ptr<QPrinter> printer_;
  QPageLayout pageLayout_;
  Kind kind_ = Kind::kCatalog;
  int32_t disc_ = 0;
  std::unique_ptr<ReaderJob> gather_;
  std::unique_ptr<PrintJob> printJob_;
  // What the last gathering gave, kept to lay out again on another paper.
  std::shared_ptr<const ReportDocument> document_;
  std::shared_ptr<const CoverContent> cover_;
  std::shared_ptr<const ReportDocument> given_;  // ShowDocument's
  std::shared_ptr<const PagedReport> report_;
  WindowSize restored_;
  bool closing_ = false;
};

// Registers mnuFilePreview.
void RegisterReports(CommandHooks& hooks);

}  // namespace gorvan::ui
