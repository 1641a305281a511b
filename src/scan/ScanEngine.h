#pragma once
// ScanEngine: turns a drive or folder into one disc of the open catalog — a
// disc record, then for each folder, depth first and parents before children,
// its folder record, its files (with MP3 tags and archive members) and then
// its subfolders, in the order the file system returns them. The scan dialog
// hands over its choices with SetVars; ScanCd runs the scan. The engine knows
// no user interface: it reports progress through a callback and stops when
// RequestCancel is called (from any thread or a signal handler), taking effect
// at the next folder entry.
//
// A folder record's size is written as -1.0 when the record is appended and,
// when its walk is finished, as its subtree's byte total times -1, together
// with its counts. Symbolic links are recorded as files with the reparse-point
// attribute and never followed; folders of other mounted file systems are
// recorded but not entered; unreadable folders are recorded, counted as
// warnings and skipped. Names are kept byte for byte, valid UTF-8 or not.

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "catalog/Status.h"
#include "catalog/classData.h"
#include "scan/clsID3.h"

struct stat;

namespace gorvan {
class VolumeInfo;
}

namespace gorvan {

// What a folder walk adds up: folders below it (all levels), files and bytes.
struct ScanTotals {
  int32_t dirs = 0;
  int32_t files = 0;
  double bytes = 0;
};

// The volume facts a scan records. Read from the volume holding the path
// unless the caller sets them (tests, or the audio-disc lookup).
struct ScanVolume {
  std::string mountPoint = "/";
  uint32_t serial = 0;
  double freeBytes = 0;
  int driveType = 3;

  static ScanVolume ForPath(const std::string& path);
  static ScanVolume From(const VolumeInfo& info);
};

// One track of an audio disc's list, as the disc lookup supplies it.
struct AudioTrack {
  std::string title;
  std::string length;  // as shown, e.g. "3:45"
};

// The audio disc values the dialog collects for an audio CD.
struct AudioValues {
  std::string album;
  std::string artist;
  std::string category;
  std::string time;
  std::string year;
};

struct ScanProgress {
  std::string_view folder;  // native path of the folder being read
  std::string_view name;    // the entry just read; "" on entering a folder
  int64_t entries = 0;      // folder entries read so far
  int32_t folders = 0;      // folder records written so far
  int32_t files = 0;        // files found so far (kept by the filter or not)
  double bytes = 0;         // their sizes
  size_t warnings = 0;
};

class ScanEngine {
 public:
  static constexpr int32_t kAudioScanMode = 105;
  static constexpr const char* kAudioIconKey = "i_0012";

  // File attribute bits as the catalog stores them.
  static constexpr int32_t kAttrReadOnly = 1;
  static constexpr int32_t kAttrHidden = 2;
  static constexpr int32_t kAttrDirectory = 16;
  static constexpr int32_t kAttrArchive = 32;
  static constexpr int32_t kAttrReparsePoint = 1024;
  // Set on an archive member whose data is encrypted.
  static constexpr int32_t kAttrEncrypted = 0x4000;

  // The key under which an archive member's extra text holds its packed size
  // in bytes (the member record has no field for it).
  static constexpr std::string_view kPackedSizeKey = "ZP";

  using ProgressFn = std::function<void(const ScanProgress&)>;

  explicit ScanEngine(classData& data);
  ~ScanEngine();
  ScanEngine(const ScanEngine&) = delete;
  ScanEngine& operator=(const ScanEngine&) = delete;

  // Stores the scan settings in the dialog's order, clears the cancel and
  // rescan flags and appends ";" to each pattern list. Only after storing them
  // it replaces every " ;" in the caller's two pattern texts by ";" (until none
  // is left): the stored lists keep any " ;", so a pattern typed with a blank
  // before its ";" never matches in this scan.
  void SetVars(int32_t previousDiscId, const std::string& path, const std::string& discName,
               const std::string& notes, const std::string& volumeLabel, int32_t categoryId,
               std::string& includeText, std::string& excludeText, bool scanZip, bool scanMp3,
               bool directoriesOnly, int32_t scanMode);

  // Names beginning with "." are skipped unless this is set; included ones get
  // the hidden attribute.
  void SetIncludeHidden(bool on) { includeHidden_ = on; }
  // Uses these volume facts instead of reading them from the volume.
  void SetVolume(const ScanVolume& volume);
  // The track list and disc values of an audio CD (scan mode 105).
  void SetAudio(std::vector<AudioTrack> tracks, AudioValues values);
  void SetProgress(ProgressFn fn) { progress_ = std::move(fn); }

  // Asks the running scan to stop at its next folder entry. Safe from another
  // thread and from a signal handler.
  void RequestCancel() { cancel_.store(true, std::memory_order_relaxed); }
  bool CancelRequested() const { return cancel_.load(std::memory_order_relaxed); }
  // True while ScanCd runs.
  bool ScanRunning() const { return running_; }

  // Runs the scan.
  // On success returns the new disc's id; the disc is linked into the catalog
  // and, for a rescan, the previous disc is unlinked.
  // When cancelled returns 0; the partial disc is linked with the values it
  // had when it was appended (no totals), each folder written so far has its
  // totals, and a previous disc stays in the catalog. status() is Cancelled.
  // On failure returns 0 with status() saying why: NotFound when the path is
  // missing (nothing is written), InvalidArgument for an unknown previous disc,
  // or the catalog's error (a full disk: the partial disc is not linked and
  // what was in the catalog before stays readable).
  int32_t ScanCd();

  const Status& status() const { return status_; }
  // The id of the disc record this scan created (also after a cancel).
  int32_t NewDiscId() const { return newDiscId_; }
  // The root folder's totals: folders below it, files and bytes.
  const ScanTotals& totals() const { return totals_; }
  // Folder records written.
  int32_t foldersWritten() const { return progressState_.folders; }
  // Folders that could not be read, entries that vanished, damaged archives...
  size_t warnings() const { return warnings_; }
  // The first kMaxWarningTexts warnings as "path: reason".
  static constexpr size_t kMaxWarningTexts = 1000;
  const std::vector<std::string>& warningTexts() const { return warningTexts_; }

  // The extension filter: 1 when the list contains "*.*;", else 0 when it
  // contains "*." + the name's extension + ";", else 2. Both searches ignore
  // case; the extension is the text after the last "." of the name, "" when
  // there is none or the "." is the last character.
  static int MatchExtList(std::string_view name, std::string_view list);
  // Whether a file passes the include and exclude lists: kept when the
  // include result is 0, or when it is 1 and the exclude result is not 0.
  static bool KeepFile(int includeResult, int excludeResult) {
    return includeResult == 0 || (includeResult == 1 && excludeResult != 0);
  }

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
  std::string FindOldDirNotes(const std::string& parentPath, std::string_view name);
  const std::string& FindOldFileNotes(std::string_view name);
  // The extra text of the MP3 file's tag ("" without one); valid until the next call.
  std::string_view ReadMp3Tags(const std::string& path);
  bool Kept(std::string_view name);
  int MatchExt(std::string_view name, std::string_view lowerList);
  void ReadZipMembers(const std::string& path, ClassFile& file);
  void RefreshProgress(std::string_view name);
  std::string EntryPath(int fd, std::string_view name) const;
  std::string DiscIconKey(const std::string& root, int32_t* mediaType) const;
  double DateOf(int64_t seconds);
  void Warn(std::string_view path, std::string_view reason);
  bool Failed();
  bool Stop() { return CancelRequested() || Failed(); }

  classData& data_;
  // Settings, as SetVars stores them.
  int32_t previousDiscId_ = 0;
  std::string path_;
  std::string discName_;
  std::string notes_;
  std::string volumeLabel_;
  int32_t categoryId_ = 0;
  std::string includeList_;
  std::string excludeList_;
  bool scanZip_ = false;
  bool scanMp3_ = false;
  bool directoriesOnly_ = false;
  int32_t scanMode_ = 0;
  bool includeHidden_ = false;
  bool volumeSet_ = false;
  ScanVolume volume_;
  std::vector<AudioTrack> tracks_;
  AudioValues audio_;
  ProgressFn progress_;

  // The scan's state.
  std::atomic<bool> cancel_{false};
  bool running_ = false;
  bool rescan_ = false;
  Status status_;
  classCd* cd_ = nullptr;           // the disc being built (classData's cursor)
  std::unique_ptr<classCd> old_;    // reads the previous disc on a rescan
  bool oldFilesValid_ = false;
  std::string oldNotes_;
  std::string oldName_;
  int32_t newDiscId_ = 0;
  ScanTotals totals_;
  size_t warnings_ = 0;
  std::vector<std::string> warningTexts_;
  ScanProgress progressState_;
  unsigned long long rootDevice_ = 0;
  std::string includeLower_;        // the lists lower-cased once for the filter
  std::string excludeLower_;
  std::string rel_;                 // volume-relative path of the current folder, '\'-joined
  std::string native_;              // native path of the current folder
  std::vector<char> dirBuffer_;
  std::vector<Pending> pending_;    // subfolders waiting, a stack over all levels
  std::string pendingNames_;
  std::string extBuffer_;
  bool includeAll_ = false;         // the list holds "*.*;"
  bool excludeAll_ = false;
  std::string mp3Extra_;
  clsID3 id3_;
  int64_t dateCacheSecond_ = INT64_MIN;
  double dateCacheValue_ = 0;
  int64_t dateCacheBucket_ = INT64_MIN;
  int64_t dateCacheOffset_ = 0;
};

}  // namespace gorvan
