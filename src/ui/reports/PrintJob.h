#pragma once
// PrintJob: a report printed page by page on a worker thread — to a printer
// or to a PDF file — so a report of thousands of pages never freezes the
// window (Qt paints on a QPrinter from any one thread at a time). The printer
// belongs to the job until finished() arrives.
//
// A PDF is written beside its target ("<path>.part") and renamed into place
// when the last page is done, so a cancelled or failed job leaves no partial
// file, and an existing file of that name is kept.
//
// Thread contract: every public member on the GUI thread.

#include <QObject>
#include <QString>
#include <memory>
#include <stop_token>
#include <thread>

#include "catalog/Status.h"

class QPrinter;

namespace gorvan::ui {

class PagedReport;

class PrintJob : public QObject {
  Q_OBJECT

 public:
  // Prints to printer (set up by the caller: a print dialog's choice, with
  // its range of pages).
  PrintJob(std::shared_ptr<const PagedReport> report, QPrinter* printer);
  // Writes a PDF file of the report's paper layout to path.
  PrintJob(std::shared_ptr<const PagedReport> report, const QString& pdfPath);
  ~PrintJob() override;

  void Start();
  void Cancel() { stop_.request_stop(); }

 Q_SIGNALS:
  void progress(int page, int pages);
  void finished(const gorvan::Status& status);

 private:
  Status Run();

  std::shared_ptr<const PagedReport> report_;
  QPrinter* printer_ = nullptr;
  std::unique_ptr<QPrinter> pdf_;
  QString pdfPath_;
  std::stop_source stop_;
  std::thread thread_;
};

}  // namespace gorvan::ui
