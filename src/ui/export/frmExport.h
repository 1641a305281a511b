#pragma once
// frmExport: the export window. The user chooses what to export ("What To
// Export": the discs, by category or one by one, all by default), the type
// (comma-separated text, XML, a spreadsheet workbook or one web page) and
// the option boxes chkDirSize ... chkFileNotes; "&Export..." asks for the
// file ("Select the name of the file to export") and writes it with basExport
// on a worker thread of its own, over a reader of the catalog, so the user
// keeps browsing meanwhile. The progress window shows "Exporting : " and the
// disc's name; Cancel leaves no file behind.
//
// Settings: the window's size as "export_width"/"export_height" (section
// "Defaults"); "export_type" (0..3), "export_last" (the last file written,
// "0" for none) and the option boxes under their own names (section
// "Export"). The end of a successful export is told unless "lNotifyExport"
// was switched off.
//
// Thread contract: the GUI thread.

#include <QDialog>
#include <QPointer>
#include <memory>
#include <vector>

#include "app/WindowLayout.h"
#include "export/basExport.h"
#include "ui/widgets/JobProgressDialog.h"

class QButtonGroup;
class QCheckBox;
class QLabel;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace gorvan::ui {

class CatalogSession;
class CommandHooks;
class ReaderJob;
struct CatalogSnapshot;

inline constexpr const char* kExportSection = "Export";
inline constexpr const char* kExportDone = "Export Complete!!";

class frmExport : public QDialog {
  Q_OBJECT

 public:
  explicit frmExport(CatalogSession& session, QWidget* parent = nullptr);
  ~frmExport() override;

  // What the window's choices ask for (the discs: empty when all are ticked).
  ExportOptions options() const;
  ExportType type() const;
  void SetType(ExportType type);
  // Ticks the discs of ids only (all when empty).
  void ChooseDiscs(const std::vector<int32_t>& ids);
  // The discs ticked, in chain order.
  std::vector<int32_t> chosenDiscs() const;
  bool loaded() const { return loaded_; }
  // An export is running.
  bool exporting() const { return job_ != nullptr; }
  JobProgressDialog* progressWindow() const { return progress_; }

  // Asks for the file and starts the export (btnOK).
  void Export();
  // Writes the export to path with the window's choices, without asking.
  void ExportTo(const std::string& path);

 Q_SIGNALS:
  // The export ended: written, failed or cancelled.
  void exportEnded(const gorvan::Status& status);

 protected:
  void done(int result) override;

 private:
  void Load();
  void Fill(const CatalogSnapshot& snapshot);
  void UpdateButtons();
  void RestoreSettings();
  void SaveSettings();
  void Finished(const Status& status, const std::string& path);
  void StopExport();

  CatalogSession& session_;
  QTreeWidget* tree_;
  QButtonGroup* types_;
  std::vector<QCheckBox*> options_;
  QPushButton* ok_;
  QPushButton* close_;
  QLabel* count_;
  std::vector<std::pair<int32_t, QTreeWidgetItem*>> discs_;  // chain order
  std::unique_ptr<ReaderJob> job_;
  QPointer<JobProgressDialog> progress_;
  std::shared_ptr<ExportResult> result_;
  WindowSize restored_;
  bool loaded_ = false;
  bool updatePending_ = false;
};

// Registers mnuFileExport.
void RegisterExport(CommandHooks& hooks);

}  // namespace gorvan::ui
