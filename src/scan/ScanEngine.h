#pragma once
// ScanEngine: turns a drive or folder into one disc of the open catalog — a
// disc record, then for each folder, depth first and parents before children,
// its folder record, its files (with MP3 tags and archive members) and then
// its subfolders, in the order the file system returns them. The scan dialog
// hands over its choices with SetVars; ScanCd runs the scan as one job
// (JobControl): it stops at the next folder entry once the job's stop is
// asked, and reports progress at most a few dozen times a second.
//
// A folder record's size is written as -1.0 when the record is appended and,
// when its walk is finished, as its subtree's byte total times -1, together
// with its counts. Symbolic links are recorded as files with the reparse-point
// attribute and never followed; folders of other mounted file systems are
// recorded but not entered; unreadable folders are recorded, counted as
// warnings and skipped. Names are kept byte for byte, valid UTF-8 or not.
//
// Progress (JobProgress): caption the native path of the folder being read,
// detail the entry just read ("" on entering a folder), value the folder
// entries read, folders the folder records written, files and bytes the files
// found so far (kept by the filter or not), warnings.
//
// Thread contract: the engine builds its new disc in a cursor of its own, so
// the catalog's other cursors may be anywhere; while ScanCd runs, the catalog
// belongs to the scan's thread (see classData).

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "catalog/Attributes.h"
#include "catalog/JobControl.h"
#include "catalog/Status.h"
#include "catalog/classData.h"
#include "scan/AudioDisc.h"
#include "scan/ExtensionFilter.h"
#include "scan/LocalDateCache.h"
#include "scan/ScanSettings.h"
#include "scan/clsID3.h"

struct stat;

namespace gorvan {

class RescanNotes;

// What a folder walk adds up: folders below it (all levels), files and bytes.
struct ScanTotals {
  int32_t dirs = 0;
  int32_t files = 0;
  double bytes = 0;
};

class ScanEngine {
 public:
  static constexpr const char* kAudioIconKey = "i_0012";
  // The key under which an archive member's extra text holds its packed size
  // in bytes (the member record has no field for it).
  static constexpr std::string_view kPackedSizeKey = "ZP";

  explicit ScanEngine(classData& data);
  ~ScanEngine();
  ScanEngine(const ScanEngine&) = delete;
  ScanEngine& operator=(const ScanEngine&) = delete;

  // Stores the scan settings and appends ";" to each pattern list. Only after
  // storing them it cleans the caller's two pattern texts (CleanPatternText):
  // the stored lists keep any " ;", so a pattern typed with a blank before
  // its ";" never matches in this scan.
  void SetVars(ScanSettings& settings);
  // Uses these volume facts instead of reading them from the volume.
  void SetVolume(const ScanVolume& volume);
  // The track list and disc values of an audio CD (scan mode kMediaAudioCd).
  void SetAudio(std::vector<AudioTrack> tracks, AudioValues values);

  // Runs the scan.
  // On success returns the new disc's id; the disc is linked into the catalog
  // and, for a rescan, the previous disc is unlinked.
  // When stopped returns 0; the partial disc is linked with the values it
  // had when it was appended (no totals), each folder written so far has its
  // totals, and a previous disc stays in the catalog. status() is Cancelled.
  // A stop asked before the scan starts writes nothing.
  // On failure returns 0 with status() saying why: NotFound when the path is
  // missing (nothing is written), InvalidArgument for an unknown previous disc,
  // or the catalog's error (a full disk: the partial disc is not linked and
  // what was in the catalog before stays readable).
  int32_t ScanCd(JobControl& job);

  const Status& status() const { return status_; }
  // The id of the disc record this scan created (also after a cancel).
  int32_t NewDiscId() const { return newDiscId_; }
  // The root folder's totals: folders below it, files and bytes.
  const ScanTotals& totals() const { return totals_; }
  // Folder records written.
  int32_t foldersWritten() const { return static_cast<int32_t>(progress_.folders); }
  // Folders that could not be read, entries that vanished, damaged archives...
  size_t warnings() const { return warnings_; }
  // The first kMaxWarningTexts warnings as "path: reason".
  static constexpr size_t kMaxWarningTexts = 1000;
  const std::vector<std::string>& warningTexts() const { return warningTexts_; }

  // The attribute bits of a file-system entry.
  static int32_t AttributesOf(const struct stat& st, std::string_view name);

 private:
  struct Pending {
    size_t nameAt;
    size_t nameLen;
    int32_t attr;
    double date;
    bool otherVolume;
  };

  void ScanDataDisc();
  void ScanAudioDisc();
  bool BeginDisc();
  void EndDisc(bool audio, const std::string& basePath, const std::string& iconKey,
               int32_t mediaType, const std::string& extra);
  ScanTotals ScanFolder(int parentFd, const char* openName, std::string_view name, int32_t attr,
                        double date, bool otherVolume);
  ScanTotals ScanFiles(classDir& dir, int fd);
  void ScanFile(classDir& dir, int fd, std::string_view name, const struct stat& st,
                ScanTotals* t);
  // The extra text of the MP3 file's tag ("" without one); valid until the next call.
  std::string_view ReadMp3Tags(const std::string& path);
  void ReadZipMembers(const std::string& path, ClassFile& file);
  void Progress(std::string_view name, bool now = false);
  std::string EntryPath(int fd, std::string_view name) const;
  std::string DiscIconKey(const std::string& root, int32_t* mediaType) const;
  void Warn(std::string_view path, std::string_view reason);
  bool Failed();
  bool Stop() { return job_->StopRequested() || Failed(); }

  classData& data_;
  ScanSettings settings_;
  std::string includeList_;  // the settings' lists followed by ";"
  std::string excludeList_;
  bool volumeSet_ = false;
  ScanVolume volume_;
  std::vector<AudioTrack> tracks_;
  AudioValues audio_;

  // The scan's state.
  JobControl* job_ = nullptr;
  bool rescan_ = false;
  Status status_;
  std::unique_ptr<classCd> cd_;         // the disc being built
  std::unique_ptr<RescanNotes> notes_;  // reads the previous disc on a rescan
  const std::string noNotes_;
  int32_t newDiscId_ = 0;
  ScanTotals totals_;
  size_t warnings_ = 0;
  std::vector<std::string> warningTexts_;
  JobProgress progress_;
  unsigned long long rootDevice_ = 0;
  ExtensionFilter filter_;
  LocalDateCache dates_;
  std::string rel_;     // volume-relative path of the current folder, '\'-joined
  std::string native_;  // native path of the current folder
  std::vector<char> dirBuffer_;
  std::vector<Pending> pending_;  // subfolders waiting, a stack over all levels
  std::string pendingNames_;
  std::string mp3Extra_;
  clsID3 id3_;
};

}  // namespace gorvan
