#pragma once
// SearchCriteria: the one prepared search of basSearch and its per-object field
// test. A search walk calls CreateMatcher(), PrepareSearch() once, then
// FieldsMatch() for every disc, folder, file and archive entry it visits, then
// ReleaseMatcher(). FieldsMatch() allocates nothing, so the walk pays only for
// the comparisons themselves. The criteria keep their values after a search
// until the next PrepareSearch().
//
// Plain mode (the text is no pattern, see basRegExp::IsPatternSearch) compares
// the text as typed, by MatchMode:
//
//   MatchMode       path, name, comments               extra
//   kWholeWord      the whole field equals the text    the same
//   kBeginning      the field begins with the text     the same
//   kAnywhere       the text occurs in the field       the field begins with the text
//
// Extra attributes are compared at their beginning even in kAnywhere mode, and
// kWholeWord means the whole field, not a word in it. Any other MatchMode value
// matches nothing. Case-insensitive comparison (CompareMode kText) folds case
// as the pattern mode does: Unicode simple case folding for valid UTF-8 text
// ("Ä" = "ä", "K" (Kelvin) = "k"), ASCII letters only for fields that are not
// valid UTF-8 and for search texts too long for the expression engine to hold
// as one literal (some tens of thousands of characters).
//
// Pattern mode tests each field with the translated expression (case ignored
// unless the search is case-sensitive); MatchMode plays no part.
//
// Not thread-safe: one SearchCriteria serves one walk at a time.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "search/Regex.h"
#include "search/basRegExp.h"

namespace gorvan {

// The three match options of the search form, by their stored values.
enum class MatchMode : int32_t {
  kWholeWord = 0,  // " Whole Word": the whole field
  kBeginning = 1,  // " Beginning"
  kAnywhere = 2,   // " Anywhere"
};

// How plain text is compared: always derived from the case-sensitive option.
enum class CompareMode : int32_t {
  kBinary = 0,  // exact bytes
  kText = 1,    // letters compared without case
};

class SearchCriteria {
 public:
  // The field a match was found in, for FirstMatchingField().
  enum class Field { kNone, kPath, kName, kComments, kExtra };

  SearchCriteria() = default;
  SearchCriteria(const SearchCriteria&) = delete;
  SearchCriteria& operator=(const SearchCriteria&) = delete;

  // The regular-expression object of a search, see basRegExp. Pattern mode
  // needs it: without it every pattern test fails.
  void CreateMatcher() { regExp_.CreateMatcher(); }
  void ReleaseMatcher() { regExp_.ReleaseMatcher(); }

  // Fills the criteria for one search. Note the order: names before path
  // names, while FieldsMatch() tests path names first.
  // A pattern text is translated (basRegExp::TranslatePattern) and compiled
  // here; a plain text is kept exactly as typed, not trimmed.
  void PrepareSearch(std::string_view text, bool caseSensitive, bool inNames, bool inPathNames,
                     bool inComments, bool inExtra, MatchMode matchMode,
                     std::string_view categoryName);

  // Tests one catalog object's texts (empty where the object has no such
  // text). Fields are tested in the order path (InPathNames), name (InNames),
  // comments (InComments), extra (InExtra), each only when its option is set;
  // the first that matches ends the test with true. A field whose expression
  // test fails (invalid "@@" expression, a match that gives up at its limit)
  // counts as not matching.
  bool FieldsMatch(std::string_view name, std::string_view path, std::string_view comments,
                   std::string_view extra) {
    return FirstMatchingField(name, path, comments, extra) != Field::kNone;
  }

  // The same test, telling which field matched first (kNone for no match).
  Field FirstMatchingField(std::string_view name, std::string_view path,
                           std::string_view comments, std::string_view extra);

  // The prepared values, in the order of the product's search record.
  // Pattern: the translated expression (pattern mode) or the text as typed.
  const std::string& Pattern() const { return pattern_; }
  bool CaseSensitive() const { return caseSensitive_; }
  bool UseRegExp() const { return useRegExp_; }
  bool InPathNames() const { return inPathNames_; }
  bool InNames() const { return inNames_; }
  bool InComments() const { return inComments_; }
  bool InExtra() const { return inExtra_; }
  MatchMode GetMatchMode() const { return matchMode_; }
  // Kept for the search walk; not used by the field test.
  const std::string& CategoryName() const { return categoryName_; }
  CompareMode GetCompareMode() const { return compareMode_; }

  // The translation and its flags (TranslationError, TranslationOverflow).
  const basRegExp& RegExp() const { return regExp_; }

 private:
  bool FieldMatches(std::string_view field, bool isExtra);
  bool PlainEquals(std::string_view field);
  bool PlainBeginsWith(std::string_view field);
  bool PlainContains(std::string_view field);
  void CompilePlain();

  std::string pattern_;
  bool caseSensitive_ = false;
  bool useRegExp_ = false;
  bool inPathNames_ = false;
  bool inNames_ = false;
  bool inComments_ = false;
  bool inExtra_ = false;
  MatchMode matchMode_ = MatchMode::kWholeWord;
  std::string categoryName_;
  CompareMode compareMode_ = CompareMode::kBinary;

  basRegExp regExp_;
  // Plain text compared without case, compiled as literal text: anchored at
  // both ends (whole field), at the start (beginning), or free (anywhere).
  Regex plainWhole_;
  Regex plainStart_;
  Regex plainAnywhere_;
  // An ASCII text against an ASCII field is compared without the engine: the
  // Unicode folding of ASCII letters is the ASCII one, and no other ASCII
  // character folds at all.
  // The texts every match holds (basRegExp::RequiredLiterals), tested before
  // the expression.
  std::vector<std::string> required_;
  bool patternAscii_ = false;
  bool asciiFoldExact_ = false;  // ASCII folding is exact for this text
};

}  // namespace gorvan
