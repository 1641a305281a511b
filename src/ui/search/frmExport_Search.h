#pragma once
// frmExport_Search: the export of the search window's rows — comma-separated
// text (type 0; the header with or without the "Cd" column, as the list shows
// its "CD Name" column) or the small XML document (type 1), both written by
// SearchResultsExport. The file is asked for with the title "Select the name
// of the file to export"; the rows are written on a worker thread, beside the
// target first and renamed into place only when complete, so a failed export
// leaves no partial file and keeps a file that was there. Success is told
// through the switchable prompt "lNotifyExport_Search"; a failure says why
// and keeps the window open.
//
// Settings: the window's size in "Defaults" ("export_search_width",
// "export_search_height"); in "Export" the last file written
// ("export_search_last", "0" for none) and its type ("export_search_type").
//
// Thread contract: the GUI thread; the writing thread touches only the rows
// and the file.

#include <QDialog>
#include <memory>
#include <thread>
#include <vector>

#include "app/Prompt.h"
#include "app/WindowLayout.h"
#include "catalog/Status.h"
#include "search/CatalogSearch.h"
#include "search/SearchResult.h"

class QLineEdit;
class QPushButton;
class QRadioButton;

namespace gorvan::ui {

inline constexpr const char* kExportSearchSection = "Export";

class frmExport_Search : public QDialog {
  Q_OBJECT

 public:
  // Opens the window (not modal) for rows, in the list's order; search is the
  // search that found them (for the XML's criteria).
  static frmExport_Search* Open(Prompt& prompt, std::vector<SearchResult> rows, bool cdNameShown,
                                const SearchOptions& search, QWidget* parent);
  ~frmExport_Search() override;

  // Type 0 comma-separated text, 1 XML.
  int type() const;
  void SetType(int type);
  QString fileName() const;
  void SetFileName(const QString& path);
  // "&Export": asks for the file when none is given, then writes.
  void Export();
  bool writing() const { return writing_; }

 Q_SIGNALS:
  // The file was written (status OK) or could not be.
  void exported(const gorvan::Status& status);

 protected:
  void done(int result) override;

 private:
  frmExport_Search(Prompt& prompt, std::vector<SearchResult> rows, bool cdNameShown,
                   const SearchOptions& search, QWidget* parent);
  bool Browse();
  void Finished(const Status& status, const std::string& path);

  Prompt& prompt_;
  std::shared_ptr<const std::vector<SearchResult>> rows_;
  bool cdNameShown_;
  SearchOptions search_;
  QRadioButton* optCSV_;
  QRadioButton* optXML_;
  QLineEdit* fldFileName_;
  QPushButton* btnBrowse_;
  QPushButton* btnOK_;
  QPushButton* btnCancel_;
  std::thread thread_;
  bool writing_ = false;
  bool closing_ = false;  // closed while writing: the end is told to nobody
  WindowSize restoredSize_;
};

}  // namespace gorvan::ui
