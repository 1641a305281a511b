#pragma once
// CatalogCopy: the walk that writes the live records of one catalog into
// another — the heart of compact, back up, save as and merge.
//
// A full copy carries the header texts (extra data, icon key, name, notes and
// password, in that order; not the font), every category (parents translated in
// a second pass) and every disc with its folders, files and archive members, in
// chain order, so the target holds no garbage. A merge appends the categories
// and discs to a catalog that already has its own.
//
// Texts are copied byte for byte when both catalogs have the same encoding and
// converted through UTF-8 otherwise (characters the target cannot hold become
// "?" and are counted in warnings()).

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "catalog/FileIO.h"
#include "catalog/JobControl.h"
#include "catalog/Status.h"
#include "catalog/classData.h"

namespace gorvan {

// Opens (creating) a file that an operation writes; tests pass one that
// fails. Empty: OpenPosixFile with an exclusive lock.
using FileOpener = std::function<Status(const std::string& path, std::unique_ptr<FileIO>* out)>;

inline constexpr const char* kProcessingCaption = "Processing : ";

class CatalogCopy {
 public:
  // Both catalogs must be open; source is only read.
  CatalogCopy(classData& source, classData& target, JobControl& job);

  // The whole copy into a freshly created, empty target. On success the target
  // is flushed but not synced: the caller syncs it before it replaces
  // anything. Cancelled when the hook's flag was set (the target then holds a
  // partial copy whose last disc is not linked).
  Status CopyAll();
  // Categories and discs of the source appended to the target. On cancel the
  // discs and categories added so far are taken out of the target's chains
  // again (their bytes stay as garbage until the next compaction).
  Status MergeAll();

  // Characters replaced by "?" because the target's encoding cannot hold them.
  size_t warnings() const { return warnings_; }

 private:
  // The walk both share: progress range, the header texts when asked for,
  // categories, discs, flush.
  Status Run(bool headerTexts);
  bool CopyText(const TextRef& in, TextRef* out, int64_t* delta);
  Status CopyHeaderTexts();
  Status CopyCategories();
  Status CopyDiscs();
  Status CopyDisc(int32_t sourceId);
  // Appends a copy of file record r to the chain `to` is appending to; its id, 0 on failure.
  int32_t AppendCopy(ClassFile& to, const FileRecord& r);
  bool ReadForCopy(const TextRef& in, std::string* out);
  int32_t TranslateCategory(int32_t oldId) const;
  bool Commit(classCd& disc);
  Status Failure() const;
  void Step();
  void Undo();

  classData& source_;
  classData& target_;
  CatalogFile* src_;
  CatalogFile* dst_;
  JobControl& job_;
  JobProgress progress_;
  bool sameEncoding_;
  std::string text_, converted_;
  std::string name_, path_, notes_, extra_;  // one file's texts, reused
  // Old and new category ids, sorted by old id once the first pass is done.
  std::vector<std::pair<int32_t, int32_t>> catIds_;
  std::vector<int32_t> newDiscs_;
  size_t warnings_ = 0;
  bool freshTarget_ = false;
};

// The catalog copy of the maintenance commands: deletes a file named target,
// creates a catalog of the source's encoding in it and copies the source into
// it, then syncs and closes it. On success *copied is target; on cancel it is
// empty and the status is Cancelled (the partial file stays for the caller to
// remove). A failure (a full disk) leaves the partial file as well.
Status CopyCatalogTo(classData& source, const std::string& target, JobControl& job,
                     std::string* copied, size_t* warnings = nullptr,
                     const FileOpener& open = {});

}  // namespace gorvan
