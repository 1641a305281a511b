#pragma once
// CatalogSearch: the catalog search of the search form, without the form. It
// walks the open catalog disc by disc, tests every disc, folder, file and (on
// request) archive entry with SearchCriteria::FieldsMatch, and hands each hit
// to the caller as a SearchResult the moment it is found, so that a window can
// list hits live and the command line can print them.
//
// Visiting order: the discs of the search (see SearchOptions::categoryId) in
// the catalog's disc order; for each disc the disc itself, then its folders in
// stored order, each folder followed by its files in stored order, each file
// followed by its archive entries when SearchOptions::inZip is set.
//
// The texts each object gives FieldsMatch(name, path, comments, extra):
//   disc     name: the disc name; for an audio disc (media type 105) the
//                  extra values "AA", "AR" and "AC" joined by "|"
//            path: the base path scanned; comments: the disc notes
//            extra: the extra values "T1".."T6" joined by CR LF, or "" when
//                   the disc has no extra data
//   folder, file, archive entry
//            name: its name; path: ""; comments: its notes
//            extra: its extra values "T1".."T6" joined by CR LF
//
// Stopping and progress: the search is one job (JobControl). The stop is
// checked before every disc, folder, file and archive entry; the walk then
// ends at once and every hit reported so far stands. A stop asked before Run
// ends it at its first check. Progress (JobProgress): value the files and
// archive entries reached, maximum the files the discs of the search say they
// hold, hits.
//
// Thread contract: the search walks with cursors of its own; while Run runs,
// the catalog it was given belongs to the calling thread (a worker thread
// reads through a reader of its own, see classData::OpenReader).

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "catalog/JobControl.h"
#include "catalog/Status.h"
#include "search/SearchCriteria.h"
#include "search/SearchResult.h"

namespace gorvan {

class classData;
class classCd;
class classDir;
class ClassFile;

inline constexpr const char* kNothingToSearchFor = "Nothing To Search For";
inline constexpr const char* kSelectSomethingToSearchWithin =
    "You have to select something to search within";
// The category chooser's entry for the whole catalog.
inline constexpr const char* kAllCategories = "All";

// The options of the search form.
struct SearchOptions {
  std::string text;              // "Search For"
  bool inFileNames = false;      // "Search Filenames": counts only for the refusal check
  bool inPathNames = false;      // "Search Path Names": discs, by their base path
  bool inNames = false;          // "Search CD Names": the name of every kind of object
  bool inComments = false;       // "Search Comments"
  bool inExtra = false;          // "Search Additional Attributes"
  bool caseSensitive = false;    // "Case Sensitive"
  bool inZip = false;            // "Search Within Zip Files"
  MatchMode matchMode = MatchMode::kAnywhere;
  // The category whose discs are searched, with its sub-categories at every
  // depth; 0 searches every disc.
  int32_t categoryId = 0;
};

class CatalogSearch {
 public:
  using RowSink = std::function<void(const SearchResult&)>;

  explicit CatalogSearch(classData& data);
  CatalogSearch(const CatalogSearch&) = delete;
  CatalogSearch& operator=(const CatalogSearch&) = delete;

  // The search form's two refusals, in its order: InvalidArgument with
  // "Nothing To Search For" for an empty text, with "You have to select
  // something to search within" when no field option is set. OK otherwise.
  static Status Check(const SearchOptions& options);

  // Runs one search. Each hit is passed to onRow as it is found (the row is
  // reused: copy what must outlive the call); with onRow empty only hits()
  // counts them and no row is built.
  // On success returns OK. Returns InvalidArgument for a refused search
  // (Check), NotFound for a category id that is not in the catalog,
  // Cancelled when the job's stop ended the walk, and the catalog's
  // Corruption or IOError when the file turned out damaged (the walk stops
  // there; hits reported before stay valid).
  Status Run(const SearchOptions& options, const RowSink& onRow, JobControl& job);

  int64_t hits() const { return state_.hits; }
  int64_t steps() const { return state_.value; }

  // The discs a search visits, in visiting order: every disc for category 0,
  // else those filed under the category or any category below it. Fails
  // with NotFound for an unknown category.
  Status DiscList(int32_t categoryId, std::vector<int32_t>* out);

  // The prepared criteria of the last Run (for an export's header).
  const SearchCriteria& Criteria() const { return criteria_; }

 private:
  struct Walk;
  bool SearchDisc(Walk& w, classCd& cd);
  bool SearchFolder(Walk& w, classCd& cd, classDir& dir);
  bool SearchFile(Walk& w, classCd& cd, classDir& dir, ClassFile& file, ClassFile* archive);
  bool Stopped() const { return job_->StopRequested(); }
  void Step() {
    ++state_.value;
    if (job_->Due()) job_->Report(state_);
  }

  classData& data_;
  SearchCriteria criteria_;
  JobControl* job_ = nullptr;
  JobProgress state_;
};

}  // namespace gorvan
