#include "search/SearchCriteria.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace gorvan {
namespace {

using Field = SearchCriteria::Field;
constexpr MatchMode W = MatchMode::kWholeWord, B = MatchMode::kBeginning, A = MatchMode::kAnywhere;

// Which fields a search looks at.
struct In {
  bool names = false;
  bool paths = false;
  bool comments = false;
  bool extra = false;
};
constexpr In kAll{true, true, true, true};
constexpr In kNamesOnly{true, false, false, false};
constexpr In kExtraOnly{false, false, false, true};

class SearchCriteriaTest : public ::testing::Test {
 protected:
  void SetUp() override { c_.CreateMatcher(); }
  void TearDown() override { c_.ReleaseMatcher(); }

  void Prepare(std::string_view text, bool caseSensitive, MatchMode mode, In in = kNamesOnly) {
    c_.PrepareSearch(text, caseSensitive, in.names, in.paths, in.comments, in.extra, mode, "All");
  }
  bool Name(std::string_view name) { return c_.FieldsMatch(name, "", "", ""); }

  SearchCriteria c_;
};

// The plain-mode table for the text "Cat". Each row gives a field and whether
// it matches in the modes: whole (case-sensitive, not), beginning (cs, not),
// anywhere (cs, not), as a path, name or comments. Extra attributes follow the
// same columns except in anywhere mode, where they use the beginning columns.
TEST_F(SearchCriteriaTest, PlainModeTableInEveryModeAndFieldWithAndWithoutCase) {
  const std::vector<std::pair<std::string, std::string>> rows = {  // field, "WwBbAa"
      {"Cat", "111111"},      {"cat", "010101"},       {"CAT", "010101"},
      {"Cat food", "001111"}, {"cat food", "000101"},  {"the Cat", "000011"},
      {"the cAT", "000001"},  {"Ca", "000000"},        {"", "000000"},
      {"Cat\r\nx", "001111"}, {"Cats", "001111"},      {"xCat", "000011"},
  };
  const MatchMode modes[] = {W, B, A};
  for (const auto& [field, expect] : rows) {
    for (int m = 0; m < 3; ++m) {
      for (bool caseSensitive : {true, false}) {
        for (int slot = 0; slot < 4; ++slot) {
          In in;
          std::string f[4] = {"zzz", "zzz", "zzz", "zzz"};  // name, path, comments, extra
          f[slot] = field;
          (slot == 0 ? in.names : slot == 1 ? in.paths : slot == 2 ? in.comments : in.extra) = true;
          Prepare("Cat", caseSensitive, modes[m], in);
          ASSERT_FALSE(c_.UseRegExp());
          const int mode = (slot == 3 && modes[m] == A) ? 1 : m;  // extra: at the beginning only
          const int column = 2 * mode + (caseSensitive ? 0 : 1);
          EXPECT_EQ(c_.FieldsMatch(f[0], f[1], f[2], f[3]), expect[column] == '1')
              << "field \"" << field << "\" mode " << m << " case-sensitive " << caseSensitive
              << " slot " << slot;
        }
      }
    }
  }
}

TEST_F(SearchCriteriaTest, SearchTextsMatchNamesAsTheLanguageSays) {
  struct Case {
    const char* text;
    bool caseSensitive;
    MatchMode mode;
    std::string name;
    bool match;
  };
  const std::vector<Case> cases = {
      // Plain text is compared exactly as typed, expression characters and "@@" included.
      {" Cat", true, W, " Cat", true}, {" Cat", true, W, "Cat", false},
      {"a.b[1]", true, A, "xa.b[1]y", true}, {"a.b[1]", false, A, "xa.b[1]y", true},
      {"a.b[1]", true, A, "axb1", false}, {"a.b[1]", false, A, "axb1", false},
      {"@@^ab+c$", false, A, "x @@^AB+c$ y", true}, {"@@^ab+c$", false, A, "abbc", false},
      // Plain comparison without case folds Unicode letters; bytes that are not
      // UTF-8, in the field or in the text, leave ASCII folding only.
      {"\xC3\xA4rger", false, W, "\xC3\x84RGER", true},
      {"\xC3\xA4rger", true, W, "\xC3\x84RGER", false}, {"caf", false, B, "CAF\xE9 noir", true},
      {"caf\xE9", false, A, "le CAF\xE9", true}, {"caf\xE9", false, A, "le CAF\xC9", false},
      // Pattern mode honours case, finds its operators in any case and ignores
      // the match mode.
      {"CAT*", true, W, "CATALOG", true}, {"CAT*", true, W, "catalog", false},
      {"CAT*", false, W, "catalog", true}, {"CAT*", false, W, "my Catalog", true},
      {"CAT*", false, W, "concatenate", false}, {"cat OR dog", true, W, "hot dog", true},
      {"cat OR dog", true, W, "hot DOG", false}, {"Cat AND Dog", true, W, "Dog and Cat", true},
      {"Cat AND Dog", true, W, "dog and cat", false},
      {"Cat AND Dog", false, W, "dog and cat", true},
      {"cat and dog", false, W, "the dog bit the cat", true},
      {"cat and dog", false, W, "cat\r\ndog", true},  // across the lines of extra attributes
      {"cat and dog", false, W, "cat only", false},
      {"cat and dog", false, W, "cats and dogs", false}, {"c?t", false, W, "a cut", true},
      {"c?t", false, W, "a coat", false}, {"c*t", false, W, "a coat", true},
      {"*log", false, W, "catalog", true}, {"*log", false, W, "logbook", false},
      {"report 2004*", false, W, "Report 2004-05.pdf", true},
      {"report 2004*", false, W, "report 12004", false},
      {"(cat or dog) and bird", false, W, "bird, then dog", true},
      {"(cat or dog) and bird", false, W, "cat and dog", false},
      {"x (a or b) y", false, W, "x b y", true}, {"x (a or b) y", false, W, "x c y", false},
      {"file (1).txt", false, W, "file 1.txt", true},  // brackets group, "." is any character
      {"file (1).txt", false, W, "file 1-txt", true},
      {"file (1).txt", false, W, "file (1).txt", false},
      {"file(1).txt", false, W, "file1.txt", false},  // no word start between "e" and "1"
      {"@@^ab+c$", false, W, "@@^ab+c$", true},      // plain text
      {"@@^ab+c(|x)$", false, W, "abbbc", true},     // an expression of the user's own
      {"@@^ab+c(|x)$", false, W, "xabbbc", false},
      // "\b" sees ASCII letters only: a word that starts with "é" has no word start.
      {"\xC3\xA9t\xC3\xA9*", false, W, "\xC3\xA9t\xC3\xA9 2004", false},
      {"*\xC3\xA9t\xC3\xA9*", false, W, "\xC3\x89T\xC3\x89 2004", true},
      {"c?t", false, W, "c\xC3\xA9t", true},  // "é" in UTF-8 is one character
      {"c??t", false, W, "c\xC3\xA9t", false},
      {"c?t", false, W, "c\xE9t", true},  // so is a raw Latin-1 byte
      {"c*t", false, W, "c\xFF\xFEt", true}, {"c?t", false, W, "\xC3", false},
      // The texts every match must hold are tested first; they must never
      // turn away a field the expression matches: k and s fold to letters
      // outside ASCII (the Kelvin sign), and a "." piece is any character.
      {"*k*", false, W, "\xE2\x84\xAA", true}, {"*STRASSE* and 1", false, W, "strasse 1", true},
      {"x.y and z", false, W, "xay z", true}, {"x.y and z", false, W, "x.y", false},
      {"REPORT and 2021", true, W, "2021 REPORT", true}, {"REPORT and 2021", true, W, "2021 report", false},
  };
  for (const Case& k : cases) {
    Prepare(k.text, k.caseSensitive, k.mode);
    EXPECT_EQ(Name(k.name), k.match) << k.text << " on " << k.name << " case " << k.caseSensitive;
  }
}

TEST_F(SearchCriteriaTest, UnknownMatchModeMatchesNothingInPlainModeOnly) {
  for (int32_t value : {3, -1}) {
    Prepare("Cat", true, static_cast<MatchMode>(value), kAll);
    EXPECT_FALSE(c_.FieldsMatch("Cat", "Cat", "Cat", "Cat")) << value;
    Prepare("cat*", true, static_cast<MatchMode>(value), kAll);
    EXPECT_TRUE(c_.FieldsMatch("catalog", "", "", "")) << value;
  }
}

TEST_F(SearchCriteriaTest, PrepareTakesNamesBeforePathNamesAndStoresTheOptions) {
  c_.PrepareSearch("x", true, /*inNames=*/true, /*inPathNames=*/false, /*inComments=*/false,
                   /*inExtra=*/true, MatchMode::kBeginning, "Music");
  EXPECT_TRUE(c_.FieldsMatch("x", "", "", ""));
  EXPECT_FALSE(c_.FieldsMatch("", "x", "", ""));
  EXPECT_FALSE(c_.FieldsMatch("", "", "x", ""));
  EXPECT_TRUE(c_.FieldsMatch("", "", "", "x"));
  EXPECT_EQ(c_.CategoryName(), "Music");
  EXPECT_EQ(c_.GetMatchMode(), MatchMode::kBeginning);
  EXPECT_EQ(c_.GetCompareMode(), CompareMode::kBinary);

  c_.PrepareSearch("x", false, false, true, false, false, MatchMode::kWholeWord, "");
  EXPECT_EQ(c_.GetCompareMode(), CompareMode::kText);
  EXPECT_FALSE(c_.FieldsMatch("x", "", "", ""));
  EXPECT_TRUE(c_.FieldsMatch("", "X", "", ""));
}

TEST_F(SearchCriteriaTest, FieldsAreTestedPathNameCommentsExtraAndTheFirstMatchWins) {
  for (const char* text : {"hit", "hit*"}) {  // plain and pattern mode
    Prepare(text, false, W, kAll);
    EXPECT_EQ(c_.FirstMatchingField("hit", "hit", "hit", "hit"), Field::kPath) << text;
    EXPECT_EQ(c_.FirstMatchingField("hit", "no", "hit", "hit"), Field::kName) << text;
    EXPECT_EQ(c_.FirstMatchingField("no", "no", "hit", "hit"), Field::kComments) << text;
    EXPECT_EQ(c_.FirstMatchingField("no", "no", "no", "hit"), Field::kExtra) << text;
    EXPECT_EQ(c_.FirstMatchingField("no", "no", "no", "no"), Field::kNone) << text;

    Prepare(text, false, W, In{true, false, true, true});
    EXPECT_EQ(c_.FirstMatchingField("hit", "hit", "hit", "hit"), Field::kName) << text;
    EXPECT_EQ(c_.FirstMatchingField("no", "hit", "no", "no"), Field::kNone) << text;

    Prepare(text, false, W, In{});
    EXPECT_EQ(c_.FirstMatchingField("hit", "hit", "hit", "hit"), Field::kNone) << text;
  }
}

TEST_F(SearchCriteriaTest, PatternModeIgnoresMatchModeAlsoForExtra) {
  Prepare("cat*", false, A, kExtraOnly);
  EXPECT_TRUE(c_.FieldsMatch("", "", "", "Genre\r\ncatwalk"));
  Prepare("cat", false, A, kExtraOnly);
  EXPECT_FALSE(c_.FieldsMatch("", "", "", "Genre\r\ncatwalk"));
  EXPECT_TRUE(c_.FieldsMatch("", "", "", "catwalk"));
}

TEST_F(SearchCriteriaTest, BrokenSearchTextsNeverFailLoudly) {
  // Unbalanced brackets: the empty expression, every tested field matches.
  for (const char* text : {"(cat", "cat)", "()", "**"}) {
    Prepare(text, false, W);
    EXPECT_EQ(c_.Pattern(), "") << text;
    EXPECT_TRUE(c_.FieldsMatch("", "", "", "")) << text;
    Prepare(text, false, W, In{});
    EXPECT_FALSE(c_.FieldsMatch("a", "a", "a", "a")) << text;
  }
  EXPECT_FALSE(c_.RegExp().TranslationError());  // "**" is no error
  Prepare("(cat", false, W);
  EXPECT_TRUE(c_.RegExp().TranslationError());

  // An expression that does not compile: no field matches, nothing else happens.
  Prepare("@@a(b", false, W, kAll);
  EXPECT_FALSE(c_.FieldsMatch("a(b", "a(b", "a(b", "a(b"));

  // Runaway backtracking: the match gives up and counts as no match in every field.
  Prepare("@@(a|aa)+$", false, W, kAll);
  EXPECT_TRUE(Name("aaaa"));
  const std::string runaway = std::string(60, 'a') + "!";
  EXPECT_FALSE(c_.FieldsMatch(runaway, runaway, runaway, runaway));
}

TEST_F(SearchCriteriaTest, PatternTestsNeedTheMatcher) {
  Prepare("cat*", false, W);
  c_.ReleaseMatcher();
  EXPECT_FALSE(Name("catalog"));
  c_.ReleaseMatcher();  // none left: nothing happens
  Prepare("catalog", false, W);
  EXPECT_TRUE(Name("Catalog")) << "plain text needs no matcher";
  // A new matcher picks up the current pattern.
  Prepare("cat*", false, W);
  c_.CreateMatcher();
  EXPECT_TRUE(Name("catalog"));
  EXPECT_FALSE(Name("dog"));
}

TEST_F(SearchCriteriaTest, LongTextsAndFields) {
  // A plain text of 10,000 characters.
  std::string text;
  while (text.size() < 10000) text += "Abc ";
  std::string changed = text, upper;
  changed[9990] = 'x';
  for (char ch : text) upper += static_cast<char>(ch >= 'a' && ch <= 'z' ? ch - 32 : ch);
  for (bool caseSensitive : {true, false}) {
    Prepare(text, caseSensitive, W);
    EXPECT_TRUE(Name(text));
    EXPECT_FALSE(Name(changed));
    Prepare(text, caseSensitive, A);
    EXPECT_FALSE(Name("<" + std::string(text.size(), 'a') + ">"));
    EXPECT_EQ(Name("<" + upper + ">"), !caseSensitive);
  }
  // Too long for the expression engine: still compared, ASCII folding only.
  Prepare(std::string(60000, 'a') + "B", false, W);
  EXPECT_TRUE(Name(std::string(60000, 'A') + "b"));
  EXPECT_FALSE(Name(std::string(60000, 'A') + "bb"));
  Prepare(std::string(60000, 'a'), false, A);
  EXPECT_TRUE(Name("x" + std::string(60000, 'A') + "x"));
  EXPECT_FALSE(Name("x" + std::string(59999, 'A') + "x"));

  // A search text of 10,000 characters of alternatives.
  std::string ors = "w0";
  for (int i = 1; ors.size() < 10000; ++i) ors += " or w" + std::to_string(i);
  Prepare(ors, false, W);
  EXPECT_TRUE(Name("see W1000 here"));
  EXPECT_FALSE(Name("see w15000 here"));
  EXPECT_FALSE(Name("see w1000x here"));

  // Fields of 10,000 characters.
  std::string filler;
  while (filler.size() < 10000) filler += "filler ";
  Prepare("needle*", false, W);
  EXPECT_TRUE(Name(filler + "needles"));
  EXPECT_FALSE(Name(filler + "haystack"));
  Prepare("cat and dog", false, W);
  EXPECT_TRUE(Name("dog " + filler + "cat"));
  EXPECT_FALSE(Name("dog " + filler + "cats"));
}

}  // namespace
}  // namespace gorvan
