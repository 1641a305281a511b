#include "search/SearchCriteria.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace gorvan {
namespace {

using Field = SearchCriteria::Field;

// Which fields a search looks at.
struct In {
  bool names = false;
  bool paths = false;
  bool comments = false;
  bool extra = false;
};
constexpr In kAll{true, true, true, true};
constexpr In kNamesOnly{true, false, false, false};

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
struct PlainRow {
  std::string field;
  std::string expect;  // "WwBbAa": 1 = match
};

TEST_F(SearchCriteriaTest, PlainModeTableInEveryModeAndFieldWithAndWithoutCase) {
  const std::vector<PlainRow> rows = {
      {"Cat", "111111"},      {"cat", "010101"},       {"CAT", "010101"},
      {"Cat food", "001111"}, {"cat food", "000101"},  {"the Cat", "000011"},
      {"the cAT", "000001"},  {"Ca", "000000"},        {"", "000000"},
      {"Cat\r\nx", "001111"}, {"Cats", "001111"},      {"xCat", "000011"},
  };
  const MatchMode modes[] = {MatchMode::kWholeWord, MatchMode::kBeginning, MatchMode::kAnywhere};
  for (const PlainRow& row : rows) {
    for (int m = 0; m < 3; ++m) {
      for (bool caseSensitive : {true, false}) {
        Prepare("Cat", caseSensitive, modes[m], kAll);
        ASSERT_FALSE(c_.UseRegExp());
        for (int slot = 0; slot < 4; ++slot) {
          In in;
          std::string name = "zzz", path = "zzz", comments = "zzz", extra = "zzz";
          switch (slot) {
            case 0: in.names = true; name = row.field; break;
            case 1: in.paths = true; path = row.field; break;
            case 2: in.comments = true; comments = row.field; break;
            case 3: in.extra = true; extra = row.field; break;
          }
          Prepare("Cat", caseSensitive, modes[m], in);
          int column = 2 * m + (caseSensitive ? 0 : 1);
          if (slot == 3 && modes[m] == MatchMode::kAnywhere) {
            column = 2 + (caseSensitive ? 0 : 1);  // extra: at the beginning only
          }
          EXPECT_EQ(c_.FieldsMatch(name, path, comments, extra), row.expect[column] == '1')
              << "field \"" << row.field << "\" mode " << m << " case-sensitive "
              << caseSensitive << " slot " << slot;
        }
      }
    }
  }
}

TEST_F(SearchCriteriaTest, PlainTextIsComparedExactlyAsTyped) {
  Prepare(" Cat", true, MatchMode::kWholeWord);
  EXPECT_EQ(c_.Pattern(), " Cat");  // not trimmed
  EXPECT_TRUE(Name(" Cat"));
  EXPECT_FALSE(Name("Cat"));

  // Expression characters are ordinary characters in plain text.
  for (bool caseSensitive : {true, false}) {
    Prepare("a.b[1]", caseSensitive, MatchMode::kAnywhere);
    EXPECT_TRUE(Name("xa.b[1]y"));
    EXPECT_FALSE(Name("axb1"));
  }
  // "@@" without a pattern trigger is plain text, "@@" included.
  Prepare("@@^ab+c$", false, MatchMode::kAnywhere);
  EXPECT_FALSE(c_.UseRegExp());
  EXPECT_TRUE(Name("x @@^AB+c$ y"));
  EXPECT_FALSE(Name("abbc"));
}

TEST_F(SearchCriteriaTest, PlainCaseInsensitiveComparisonFoldsUnicodeLetters) {
  Prepare("\xC3\xA4rger", false, MatchMode::kWholeWord);  // "ärger"
  EXPECT_TRUE(Name("\xC3\x84RGER"));                      // "ÄRGER"
  Prepare("\xC3\xA4rger", true, MatchMode::kWholeWord);
  EXPECT_FALSE(Name("\xC3\x84RGER"));

  // Raw bytes that are not UTF-8, in the field or in the text: ASCII folds.
  Prepare("caf", false, MatchMode::kBeginning);
  EXPECT_TRUE(Name("CAF\xE9 noir"));
  Prepare("caf\xE9", false, MatchMode::kAnywhere);
  EXPECT_TRUE(Name("le CAF\xE9"));
  EXPECT_FALSE(Name("le CAF\xC9"));

  // A text too long for the expression engine is still compared, ASCII only.
  std::string longText(60000, 'a');
  Prepare(longText + "B", false, MatchMode::kWholeWord);
  EXPECT_TRUE(Name(std::string(60000, 'A') + "b"));
  EXPECT_FALSE(Name(std::string(60000, 'A') + "bb"));
  Prepare(longText, false, MatchMode::kAnywhere);
  EXPECT_TRUE(Name("x" + std::string(60000, 'A') + "x"));
  EXPECT_FALSE(Name("x" + std::string(59999, 'A') + "x"));
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
    Prepare(text, false, MatchMode::kWholeWord, kAll);
    EXPECT_EQ(c_.FirstMatchingField("hit", "hit", "hit", "hit"), Field::kPath) << text;
    EXPECT_EQ(c_.FirstMatchingField("hit", "no", "hit", "hit"), Field::kName) << text;
    EXPECT_EQ(c_.FirstMatchingField("no", "no", "hit", "hit"), Field::kComments) << text;
    EXPECT_EQ(c_.FirstMatchingField("no", "no", "no", "hit"), Field::kExtra) << text;
    EXPECT_EQ(c_.FirstMatchingField("no", "no", "no", "no"), Field::kNone) << text;

    In noPath = kAll;
    noPath.paths = false;
    Prepare(text, false, MatchMode::kWholeWord, noPath);
    EXPECT_EQ(c_.FirstMatchingField("hit", "hit", "hit", "hit"), Field::kName) << text;
    EXPECT_EQ(c_.FirstMatchingField("no", "hit", "no", "no"), Field::kNone) << text;

    Prepare(text, false, MatchMode::kWholeWord, In{});
    EXPECT_EQ(c_.FirstMatchingField("hit", "hit", "hit", "hit"), Field::kNone) << text;
  }
}

TEST_F(SearchCriteriaTest, PatternModeHonoursCaseButFindsOperatorsInAnyCase) {
  Prepare("CAT*", true, MatchMode::kWholeWord);
  EXPECT_TRUE(c_.UseRegExp());
  EXPECT_TRUE(Name("CATALOG"));
  EXPECT_FALSE(Name("catalog"));
  Prepare("CAT*", false, MatchMode::kWholeWord);
  EXPECT_TRUE(Name("catalog"));
  EXPECT_TRUE(Name("my Catalog"));
  EXPECT_FALSE(Name("concatenate"));

  Prepare("cat OR dog", true, MatchMode::kWholeWord);
  EXPECT_TRUE(Name("hot dog"));
  EXPECT_FALSE(Name("hot DOG"));
  Prepare("Cat AND Dog", true, MatchMode::kWholeWord);
  EXPECT_TRUE(Name("Dog and Cat"));
  EXPECT_FALSE(Name("dog and cat"));
  Prepare("Cat AND Dog", false, MatchMode::kWholeWord);
  EXPECT_TRUE(Name("dog and cat"));
}

TEST_F(SearchCriteriaTest, PatternsMatchAsTheLanguageSays) {
  struct Case {
    const char* text;
    const char* field;
    bool match;
  };
  const std::vector<Case> cases = {
      {"cat and dog", "the dog bit the cat", true},
      {"cat and dog", "cat\r\ndog", true},  // across the lines of extra attributes
      {"cat and dog", "cat only", false},
      {"cat and dog", "cats and dogs", false},
      {"c?t", "a cut", true},
      {"c?t", "a coat", false},
      {"c*t", "a coat", true},
      {"*log", "catalog", true},
      {"*log", "logbook", false},
      {"report 2004*", "Report 2004-05.pdf", true},
      {"report 2004*", "report 12004", false},
      {"(cat or dog) and bird", "bird, then dog", true},
      {"(cat or dog) and bird", "cat and dog", false},
      {"x (a or b) y", "x b y", true},
      {"x (a or b) y", "x c y", false},
      {"file (1).txt", "file 1.txt", true},  // brackets are groups, "." any character
      {"file (1).txt", "file 1-txt", true},
      {"file (1).txt", "file (1).txt", false},
      {"file(1).txt", "file1.txt", false},   // no word start between "e" and "1"
      {"@@^ab+c$", "@@^ab+c$", true},       // plain text
      {"@@^ab+c(|x)$", "abbbc", true},      // an expression of the user's own
      {"@@^ab+c(|x)$", "xabbbc", false},
      // "\b" sees ASCII letters only: a word that starts with "é" has no
      // word start in front of it.
      {"\xC3\xA9t\xC3\xA9*", "\xC3\xA9t\xC3\xA9 2004", false},
      {"*\xC3\xA9t\xC3\xA9*", "\xC3\x89T\xC3\x89 2004", true},
      {"c?t", "c\xC3\xA9t", true},          // "é" in UTF-8 is one character
      {"c??t", "c\xC3\xA9t", false},
      {"c?t", "c\xE9t", true},              // so is a raw Latin-1 byte
      {"c*t", "c\xFF\xFEt", true},
      {"c?t", "\xC3", false},
  };
  for (const Case& k : cases) {
    Prepare(k.text, false, MatchMode::kWholeWord);
    EXPECT_EQ(Name(k.field), k.match) << k.text << " on " << k.field;
  }
}

TEST_F(SearchCriteriaTest, PatternModeIgnoresMatchModeAlsoForExtra) {
  In extraOnly;
  extraOnly.extra = true;
  Prepare("cat*", false, MatchMode::kAnywhere, extraOnly);
  EXPECT_TRUE(c_.FieldsMatch("", "", "", "Genre\r\ncatwalk"));
  Prepare("cat", false, MatchMode::kAnywhere, extraOnly);
  EXPECT_FALSE(c_.FieldsMatch("", "", "", "Genre\r\ncatwalk"));
  EXPECT_TRUE(c_.FieldsMatch("", "", "", "catwalk"));
}

TEST_F(SearchCriteriaTest, BrokenSearchTextsNeverFailLoudly) {
  // Unbalanced brackets: the empty expression, every tested field matches.
  for (const char* text : {"(cat", "cat)", "()", "**"}) {
    Prepare(text, false, MatchMode::kWholeWord);
    EXPECT_EQ(c_.Pattern(), "") << text;
    EXPECT_TRUE(c_.FieldsMatch("", "", "", "")) << text;
    Prepare(text, false, MatchMode::kWholeWord, In{});
    EXPECT_FALSE(c_.FieldsMatch("a", "a", "a", "a")) << text;
  }
  EXPECT_FALSE(c_.RegExp().TranslationError());  // "**" is no error
  Prepare("(cat", false, MatchMode::kWholeWord);
  EXPECT_TRUE(c_.RegExp().TranslationError());

  // An expression that does not compile: no field matches, nothing else happens.
  Prepare("@@a(b", false, MatchMode::kWholeWord, kAll);
  EXPECT_FALSE(c_.FieldsMatch("a(b", "a(b", "a(b", "a(b"));

  // Runaway backtracking: the match gives up and counts as no match.
  Prepare("@@(a|aa)+$", false, MatchMode::kWholeWord, kAll);
  EXPECT_TRUE(Name("aaaa"));
  const std::string runaway = std::string(60, 'a') + "!";
  EXPECT_FALSE(c_.FieldsMatch(runaway, runaway, runaway, runaway));

  // An " and " chain too long to translate matches nothing.
  std::string ands = "a";
  while (ands.size() < 10000) ands += " and a";
  Prepare(ands, false, MatchMode::kWholeWord);
  EXPECT_TRUE(c_.RegExp().TranslationOverflow());
  EXPECT_FALSE(Name("a"));
}

TEST_F(SearchCriteriaTest, PatternTestsNeedTheMatcher) {
  Prepare("cat*", false, MatchMode::kWholeWord);
  c_.ReleaseMatcher();
  EXPECT_FALSE(Name("catalog"));
  c_.ReleaseMatcher();  // none left: nothing happens

  // Plain text needs no matcher.
  Prepare("catalog", false, MatchMode::kWholeWord);
  EXPECT_TRUE(Name("Catalog"));

  // The criteria keep their values; a new matcher picks up the current pattern.
  Prepare("cat*", false, MatchMode::kWholeWord);
  EXPECT_FALSE(Name("catalog"));
  c_.CreateMatcher();
  EXPECT_TRUE(Name("catalog"));
  EXPECT_FALSE(Name("dog"));
}

TEST_F(SearchCriteriaTest, TenThousandCharacterTexts) {
  // A plain text of 10,000 characters.
  std::string text;
  while (text.size() < 10000) text += "Abc ";
  for (bool caseSensitive : {true, false}) {
    Prepare(text, caseSensitive, MatchMode::kWholeWord);
    EXPECT_TRUE(Name(text));
    std::string changed = text;
    changed[9990] = 'x';
    EXPECT_FALSE(Name(changed));
    Prepare(text, caseSensitive, MatchMode::kAnywhere);
    EXPECT_FALSE(Name("<" + std::string(text.size(), 'a') + ">"));
  }
  std::string upper;
  for (char ch : text) upper += static_cast<char>(ch >= 'a' && ch <= 'z' ? ch - 32 : ch);
  Prepare(text, false, MatchMode::kAnywhere);
  EXPECT_TRUE(Name("<" + upper + ">"));

  // A search text of 10,000 characters of alternatives.
  std::string ors = "w0";
  for (int i = 1; ors.size() < 10000; ++i) ors += " or w" + std::to_string(i);
  Prepare(ors, false, MatchMode::kWholeWord);
  EXPECT_TRUE(Name("see W1000 here"));
  EXPECT_FALSE(Name("see w15000 here"));
  EXPECT_FALSE(Name("see w1000x here"));

  // Fields of 10,000 characters.
  std::string filler;
  while (filler.size() < 10000) filler += "filler ";
  Prepare("needle*", false, MatchMode::kWholeWord);
  EXPECT_TRUE(Name(filler + "needles"));
  EXPECT_FALSE(Name(filler + "haystack"));
  Prepare("cat and dog", false, MatchMode::kWholeWord);
  EXPECT_TRUE(Name("dog " + filler + "cat"));
  EXPECT_FALSE(Name("dog " + filler + "cats"));
}

}  // namespace
}  // namespace gorvan
