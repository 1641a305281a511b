#pragma once
// frmSearch: the search window, a document (tab) of the main window. The user
// types a search text ("Search &For"), chooses the category to search ("All"
// or one of the category tree) and what to search within, and "&Search" runs
// the catalog search on a worker thread (SearchRun) while the window and the
// views stay usable. Hits stream into the results list (ListView1) in
// batches; "&Stop" and "&Close" end a running search at its next check and
// keep the rows found. With the follow switch ("lInteractiveSearch") each new
// row is chosen and scrolled to.
//
// The results lead back to the catalog through the pop-up menu popSearch:
// show the hit in the default, explorer or traditional view
// (popSearchSyncDefault/Explorer/Traditional), open it (popSearchLaunch),
// its properties (popSearchProperties), an archive's members
// (popSearchViewZip), and the columns to show (popSearchFieldChooser).
// btnExport writes the rows (frmExport_Search), btnPreview prints them
// (PreviewList). The layout of the list (column widths and order, "Defaults"/
// "ListView1_col<n>_width", "_order") and the window's size ("frmSearch_width",
// "_height") are kept.
//
// frmSearch.cpp holds the form and the search; frmSearchCommands.cpp the
// pop-up commands, export and print.
//
// Thread contract: the GUI thread.

#include <QPointer>
#include <QWidget>
#include <memory>
#include <thread>
#include <vector>

#include "app/WindowLayout.h"
#include "search/CatalogSearch.h"
#include "ui/explorer/CatalogView.h"

class QAbstractButton;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QMenu;
class QProgressBar;
class QPushButton;
class QRadioButton;
class QTableView;

namespace gorvan::ui {

class CatalogSession;
class SearchResultsModel;
class SearchRun;
class frmMenu;

// The hint the window shows, line by line, as the product has always shown it.
inline constexpr const char* kSearchHint[] = {
    "Please enter any search expression",
    "Use wildcards like '*' and '&' in the positions you want.",
    "You can also use logical operators like AND or OR",
    " or use brackets () to group conditions.",
    "    eg: Game* AND *Car* AND *Fast",
    "to search for all files having all above words",
    "in the selected search locations.",
};
inline constexpr const char* kNothingToPrint = "Nothing to Print!!";

class frmSearch : public QWidget {
  Q_OBJECT

 public:
  explicit frmSearch(frmMenu& menu, QWidget* parent = nullptr);
  ~frmSearch() override;

  // Preselects the category chooser (0: "All"), also before its entries are read.
  void SetStartupCategory(int32_t categoryId);

  // "&Search": the refusals, then the search on its worker thread.
  void StartSearch();
  // "&Stop": the running search ends at its next check; the rows stay.
  void StopSearch();
  bool searching() const;
  // The options as the form shows them.
  SearchOptions Options() const;
  // The category chooser's text ("All" or the category's name).
  QString CategoryText() const;

  SearchResultsModel* model() const { return model_; }
  QTableView* list() const { return list_; }
  QMenu* popup() const { return popup_; }
  // The search whose rows the list holds.
  const SearchOptions& lastOptions() const { return last_; }
  QString lastCategoryText() const { return lastCategory_; }

  // The pop-up commands on the current row (frmSearchCommands.cpp).
  void SyncToView(int which);  // 0 the view mode's, 1 explorer, 2 traditional
  void LaunchCurrent();
  void PropertiesOfCurrent();
  void ViewZipOfCurrent();
  void ChooseFields();
  // btnExport and btnPreview. PreviewList makes the search report of the
  // list's rows, in the order it shows them, on a thread of its own, then
  // shows it in the main window's print preview (reportShown).
  void ExportResults();
  void PreviewList();

 Q_SIGNALS:
  // The search ended and its last rows are in the list.
  void searchFinished();
  // PreviewList's report is in the print preview.
  void reportShown();

 protected:
  void closeEvent(QCloseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  // frmSearch.cpp
  void BuildForm();
  void LoadCategories();
  void TakeRows();
  // The rows belong to a catalog that is gone or was rewritten: drops them.
  void Forget();
  void Finished(const Status& status, qint64 hits);
  void UpdateState();
  void UpdateCount();
  void RestoreLayout();
  void SaveLayout();
  std::vector<ColumnLayout> Columns() const;

  // frmSearchCommands.cpp
  void CreatePopup();
  void ShowPopup(const QPoint& pos);
  void UpdatePopup();
  RevealTarget TargetOf(const class SearchResult& row) const;

  frmMenu& menu_;
  CatalogSession& session_;
  QLineEdit* fldSearchFor_;
  QComboBox* cboCategory_;
  QCheckBox* chkFileNames_;
  QCheckBox* chkPathNames_;
  QCheckBox* chkCDNames_;
  QCheckBox* chkComments_;
  QCheckBox* chkExtra_;
  QCheckBox* chkCaseSensitive_;
  QCheckBox* chkZip_;
  QRadioButton* option_[3];
  QPushButton* btnOK_;
  QPushButton* btnStop_;
  QPushButton* btnCancel_;
  QPushButton* btnExport_;
  QPushButton* btnPreview_;
  QLabel* lblCount_;
  QProgressBar* progress_;
  QTableView* list_;
  SearchResultsModel* model_;
  QMenu* popup_ = nullptr;

  std::unique_ptr<SearchRun> run_;
  // Ended runs whose threads may still free the rows of the search before
  // theirs; they are let go once ended.
  std::vector<std::unique_ptr<SearchRun>> retired_;
  SearchOptions last_;
  QString lastCategory_;
  std::thread reportMaker_;  // PreviewList's lines
  bool makingReport_ = false;
  int32_t startupCategory_ = 0;
  bool follow_ = false;
  bool stopped_ = false;
  qint64 lastTake_ = 0;  // when rows were last taken (ms, monotonic)
  bool takePending_ = false;
  int keepRow_ = -1;  // the chosen row while a long list is reordered
  int keepColumn_ = 0;
  int keepScroll_ = 0;
  std::vector<ColumnLayout> restoredColumns_;
  WindowSize restoredSize_;
};

}  // namespace gorvan::ui
