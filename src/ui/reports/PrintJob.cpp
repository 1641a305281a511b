#include "ui/reports/PrintJob.h"

#include <QFile>
#include <QMetaObject>
#include <QPainter>
#include <QPrinter>
#include <algorithm>
#include <chrono>
#include <cstdio>

#include "ui/reports/PagedReport.h"

namespace gorvan::ui {

PrintJob::PrintJob(std::shared_ptr<const PagedReport> report, QPrinter* printer)
    : report_(std::move(report)), printer_(printer) {}

PrintJob::PrintJob(std::shared_ptr<const PagedReport> report, const QString& pdfPath)
    : report_(std::move(report)), pdfPath_(pdfPath) {
  pdf_ = std::make_unique<QPrinter>(QPrinter::HighResolution);
  pdf_->setOutputFormat(QPrinter::PdfFormat);
  pdf_->setOutputFileName(pdfPath + QStringLiteral(".part"));
  pdf_->setPageLayout(report_->layout());
  pdf_->setFullPage(true);
  printer_ = pdf_.get();
}

PrintJob::~PrintJob() {
  if (thread_.joinable()) {
    stop_.request_stop();
    thread_.join();
  }
}

void PrintJob::Start() {
  thread_ = std::thread([this] {
    const Status status = Run();
    QMetaObject::invokeMethod(
        this,
        [this, status] {
          thread_.join();
          Q_EMIT finished(status);
        },
        Qt::QueuedConnection);
  });
}

Status PrintJob::Run() {
  // The report's own margins place everything: the painter's origin is the
  // paper's corner.
  printer_->setFullPage(true);
  QString part;
  if (!pdfPath_.isEmpty()) part = pdfPath_ + QStringLiteral(".part");
  auto discard = [&part] {
    if (!part.isEmpty()) QFile::remove(part);
  };
  QPainter painter;
  if (!painter.begin(printer_)) {
    discard();
    return Status::IOError(pdfPath_.isEmpty()
                               ? std::string("The printer could not be started")
                               : "The file " + pdfPath_.toStdString() + " could not be written");
  }
  // The pages the print dialog chose (all when it chose no range).
  int first = 0, end = report_->pageCount();
  if (printer_->printRange() == QPrinter::PageRange && printer_->fromPage() > 0) {
    first = std::min(end, printer_->fromPage() - 1);
    end = std::clamp(printer_->toPage(), first, end);
  }
  const int pages = end - first;
  auto last = std::chrono::steady_clock::now();
  for (int at = 0; at < pages; ++at) {
    const int page = first + at;
    if (stop_.stop_requested()) {
      printer_->abort();
      painter.end();
      discard();
      return Status::Cancelled();
    }
    if (at > 0 && !printer_->newPage()) {
      painter.end();
      discard();
      return Status::IOError("The printer refused a new page");
    }
    report_->paintPage(painter, page);
    const auto now = std::chrono::steady_clock::now();
    if (now - last > std::chrono::milliseconds(50) || at + 1 == pages) {
      last = now;
      QMetaObject::invokeMethod(
          this, [this, at, pages] { Q_EMIT progress(at + 1, pages); }, Qt::QueuedConnection);
    }
  }
  if (!painter.end()) {
    discard();
    return Status::IOError("The report could not be finished");
  }
  if (!part.isEmpty()) {
    // The whole file is written: it replaces any file of the name.
    if (std::rename(QFile::encodeName(part).constData(), QFile::encodeName(pdfPath_).constData()) !=
        0) {
      discard();
      return Status::IOError("The file " + pdfPath_.toStdString() + " could not be written");
    }
  }
  return Status::OK();
}

}  // namespace gorvan::ui
