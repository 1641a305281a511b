#pragma once
// basBackup: the maintenance commands over the open catalog — compact, back up,
// save as and merge. The questions, file choosers and the progress window are
// the caller's; these routines do the work and return the words to show.
//
// Compaction never risks the catalog: the copy is written beside it under
// kTempCatalogName, synced, and only then put in place — the old file is
// hard-linked to the ".bak" name (copied when the file system has no hard
// links) and the copy is renamed over the catalog — so that at every instant
// the catalog's name holds either the complete old or the complete new catalog.
// Back up and save as write their copy the same way beside the chosen file.
//
// Each runs as one job (JobControl: progress and cancel, see CatalogCopy) on
// the thread that owns the open catalog; the desktop program hands the open
// catalog to a worker thread for it.

#include <cstddef>
#include <string>

#include "catalog/CatalogCopy.h"
#include "catalog/Status.h"
#include "catalog/classData.h"

namespace gorvan {

inline constexpr const char* kTempCatalogName = "~Temp_cd.~~~";

// The texts of the commands, for the windows that run them.
inline constexpr const char* kCompactQuestion = "Compact Data Files ??";
inline constexpr const char* kCompactCaption = "Compacting Data File";
inline constexpr const char* kCompactCancelText = "Cancel Data Compaction";
inline constexpr const char* kBackupCaption = "Data Backup";
inline constexpr const char* kBackupCancelText = "Cancel Data Backup";
inline constexpr const char* kSaveAsCaption = "Data SaveAs";
inline constexpr const char* kSaveAsCancelText = "Cancel Data SaveAs";
inline constexpr const char* kMergeCaption = "Merging Data File";
inline constexpr const char* kMergeCancelText = "Cancel Data Merge";
inline constexpr const char* kBackupFilter = "Gorvan Data Files (*.cd)|*.cd";
inline constexpr const char* kMergeTitle =
    "Select a Gorvan database to merge into the currently open Gorvan catalog";
inline constexpr const char* kMergeFilter = "Gorvan Databases (*.cd)|*.cd";

inline constexpr const char* kCompactSuccessful = "Data Compaction Successful";
inline constexpr const char* kCompactCancelled = "Data Compaction Cancelled";
inline constexpr const char* kBackupSuccessful = "Data Backup Successful";
inline constexpr const char* kBackupCancelled = "Data Backup Cancelled";
inline constexpr const char* kBackupOntoCurrent = "Cannot backup to the current data file!!";
inline constexpr const char* kSaveAsSuccessful = "Data SaveAs Successful";
inline constexpr const char* kSaveAsCancelled = "Data SaveAs Cancelled";
inline constexpr const char* kSaveAsOntoCurrent = "Cannot save to the current data file!!";
inline constexpr const char* kMergeSuccessful = "Data Merge Successful";
inline constexpr const char* kMergeCancelled = "Data Merge Cancelled";
inline constexpr const char* kMergeWithCurrent = "Cannot merge the current data file into itself!!";

struct MaintenanceResult {
  // OK, Cancelled, InvalidArgument (a refused target), Refused (the catalog to
  // merge would not open), IOError or Corruption.
  Status status;
  // What to tell the user: the success or cancel words, or the reason.
  std::string message;
  // Characters a merge replaced by "?" (the open catalog's encoding lacks them).
  size_t warnings = 0;
};

// "<folder>/<name>.bak" for "<folder>/<name>.cd" (the extension replaced, or
// added when the name has none).
std::string BackupFileName(const std::string& catalog);
// kTempCatalogName in the folder of path.
std::string TempFileName(const std::string& path);

// Compacts the open catalog and reopens it. On cancel or failure the catalog
// is as it was, still open, and the temporary file is removed.
MaintenanceResult CompactDataFiles(classData& data, JobControl& job,
                                   const FileOpener& open = {});
// Copies the open catalog to target; the open catalog stays open.
MaintenanceResult BackupDataFiles(classData& data, const std::string& target, JobControl& job,
                                  const FileOpener& open = {});
// As BackupDataFiles under the save-as words; on success the open catalog
// becomes the new file.
MaintenanceResult SaveAsDataFiles(classData& data, const std::string& target, JobControl& job,
                                  const FileOpener& open = {});
// Appends every category and disc of the catalog at other to the open one.
// prompt answers the other catalog's password question (none: refused).
MaintenanceResult MergeExistingCatalog(classData& data, const std::string& other,
                                       JobControl& job,
                                       classData::PasswordPrompt prompt = nullptr);

}  // namespace gorvan
