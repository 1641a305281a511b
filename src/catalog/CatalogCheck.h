#pragma once
// CatalogCheck: the integrity check of a catalog file. It walks every chain
// with its own bounds-checked reads (it never trusts a link) and lists every
// inconsistency it finds: links outside the file or at the wrong kind of
// record, previous/next mismatches, first/last/count mismatches, bytes used
// that do not add up, texts out of bounds and loops. The walk as a whole
// visits at most as many records as the file could hold, so a damaged file of
// any shape is checked in time proportional to its length.

#include <cstdint>
#include <string>
#include <vector>

#include "catalog/CatalogFile.h"
#include "catalog/JobControl.h"
#include "catalog/Records.h"

namespace gorvan {

class CatalogCheck {
 public:
  static constexpr size_t kMaxProblems = 1000;

  explicit CatalogCheck(CatalogFile* file) : file_(file) {}

  // Runs every test as one job (JobControl: value counts the records
  // visited, maximum the most the file could hold). Returns the problems
  // found; empty when the catalog is sound. When the job's stop was asked
  // the check ends early (stopped()) with what it found so far.
  // The catalog belongs to the calling thread while the check runs.
  std::vector<std::string> Run(JobControl& job);
  std::vector<std::string> Run() {
    JobControl none;
    return Run(none);
  }
  bool stopped() const { return stopped_; }
  // Bytes that no live record accounts for (what compacting would reclaim).
  int64_t garbage() const { return file_->Length() - liveBytes_; }
  int64_t records() const { return visited_; }

 private:
  template <typename Record>
  bool Load(int32_t id, Record* out, const char* kind, const std::string& where);
  bool Visit(const std::string& where);
  void Problem(std::string text);
  int64_t CheckTexts(std::initializer_list<const TextRef*> texts, const std::string& where);
  void CheckHeader();
  void CheckCategories();
  void CheckDiscs();
  int64_t CheckFolders(const CdRecord& cd, const std::string& where);
  int64_t CheckFiles(int32_t first, int32_t last, int32_t dirId, int32_t cdId, bool members,
                     const std::string& where);

  CatalogFile* file_;
  std::vector<std::string> problems_;
  std::vector<int32_t> categories_;  // sorted ids of the live categories
  int64_t liveBytes_ = 0;
  int64_t visited_ = 0;
  bool budgetSpent_ = false;
  bool stopped_ = false;
  JobControl* job_ = nullptr;
  JobProgress progress_;
};

}  // namespace gorvan
