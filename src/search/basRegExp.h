#pragma once
// basRegExp: the search pattern language. Decides whether a search text is
// plain text or a pattern, turns a pattern into a regular expression, and holds
// the one regular-expression object a search tests fields with.
//
// The language:
//   *  any run of characters, line breaks included     ?  exactly one character
//   " or "   either side matches (binds more loosely than " and ")
//   " and "  both sides occur, in either order, anywhere in the field
//   ( )      a group; brackets must balance or the pattern matches everything
//   @@       prefix: the rest is a regular expression used as it stands
// A bare word matches a whole word ("\b" on both sides), "word*" a word's
// beginning, "*word" a word's end, "*word*" anywhere. " or " and " and " are
// found in any letter case. Regular-expression metacharacters other than the
// ones above reach the expression unchanged and keep their meaning.
//
// The translation steps below are each a pure function of their argument
// apart from the two flags: the translation error flag (unbalanced brackets)
// and the overflow flag (see kMaxTranslationLength). Positions in comments are
// 1-based, as the user counts them.
//
// Not thread-safe: one basRegExp serves one search at a time.

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace gorvan {

class Regex;

class basRegExp {
 public:
  // Each term joined by " and " doubles the expression, so a long chain of
  // " and " would translate into more text than memory holds. A translation
  // that would grow beyond this length stops, sets the overflow flag and
  // TranslatePattern() returns kNeverMatches instead. (The engine could not
  // compile an expression of even a tenth of this size anyway, and an
  // expression that does not compile matches nothing.)
  static constexpr std::size_t kMaxTranslationLength = std::size_t{1} << 20;
  // A valid expression that matches no text at all.
  static constexpr std::string_view kNeverMatches = "(?!)";

  basRegExp();
  ~basRegExp();
  basRegExp(const basRegExp&) = delete;
  basRegExp& operator=(const basRegExp&) = delete;

  // True when `text` is a pattern: it contains " or " or " and " (one space on
  // both sides, letters in any case) or any of "?", "*", "(", ")". "@@" alone
  // does not make a pattern: "@@^ab+c$" is plain text, "@@" included.
  static bool IsPatternSearch(std::string_view text);

  // The regular expression for the search text `text`:
  //  - trimmed text longer than 2 characters that begins with "@@": the rest
  //    of the trimmed text, unchecked;
  //  - otherwise every run of spaces becomes one space, then TranslateGroups,
  //    then TranslateOrAnd over the whole result (which translates the insides
  //    of the groups a second time: "(a*b)" expands its "*" twice).
  // Clears both flags first. Returns "" (matches every text) when the
  // translation error flag ends up set, kNeverMatches on overflow.
  std::string TranslatePattern(std::string_view text);

  // Texts that every field the pattern text matches must hold (case aside,
  // unless the search is case-sensitive): the pieces between the wildcards
  // of each term joined by " and ". Empty when the text promises none — an
  // "@@" expression, groups, " or ", or pieces holding expression
  // metacharacters. A search tests these first and runs the expression only
  // on the fields that hold them all.
  static std::vector<std::string> RequiredLiterals(std::string_view text);

  // Translates each top-level group "(...)" with TranslateOrAnd and copies the
  // text between groups as it is. The search for a group's closing bracket
  // starts two characters after the opening one, so "()" is unbalanced and in
  // "((a) or b)" the first "(" pairs with the first ")". Brackets inside a
  // group reach the expression as plain expression brackets.
  // Sets the translation error flag and returns "" for the unbalanced part on
  // a ")" before the first "(", a ")" without "(", a "(" without ")" and a
  // "(" directly followed by its ")".
  std::string TranslateGroups(std::string_view s);

  // Splits at " or " into "(a)|(b)|...", else at " and " into
  // "(R)([\s\S]*)(T)|(T)([\s\S]*)(R)" term by term, else TranslateTerm.
  // Blank text gives "". Sets the overflow flag (and returns "") when an
  // " and " chain grows beyond kMaxTranslationLength.
  std::string TranslateOrAnd(std::string_view s);

  // One term: trimmed; a leading "*" is dropped, else "\b" goes in front; a
  // trailing "*" is dropped, else "\b" goes behind; then each remaining "*"
  // becomes "([\s\S]*)" and each "?" becomes "([\s\S]{1})".
  static std::string TranslateTerm(std::string_view s);

  // Set by TranslateGroups on unbalanced brackets; cleared by TranslatePattern.
  bool TranslationError() const { return translationError_; }
  // Set when a translation grew beyond kMaxTranslationLength; cleared by
  // TranslatePattern.
  bool TranslationOverflow() const { return translationOverflow_; }

  // The shared regular-expression object. CreateMatcher() makes it (anew when
  // one exists) and compiles the current pattern; ReleaseMatcher() frees it
  // and does nothing when there is none.
  void CreateMatcher();
  void ReleaseMatcher();
  bool HasMatcher() const { return matcher_ != nullptr; }

  // Sets the expression RegExpTest uses and whether it ignores case; compiles
  // it at once when the matcher exists, else when CreateMatcher() runs. The
  // pattern before the first call is "", which matches every text.
  void SetPattern(std::string_view pattern, bool ignoreCase);

  // True when the expression matches somewhere in `field`. False when it does
  // not, when there is no matcher, when the expression does not compile and
  // when the match gives up at a limit. Allocates nothing.
  bool RegExpTest(std::string_view field);

 private:
  void CompilePattern();

  bool translationError_ = false;
  bool translationOverflow_ = false;
  std::string pattern_;
  bool ignoreCase_ = false;
  std::unique_ptr<Regex> matcher_;
};

}  // namespace gorvan
