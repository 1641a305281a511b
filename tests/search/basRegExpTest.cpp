#include "search/basRegExp.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace gorvan {
namespace {

std::size_t Count(const std::string& s, const std::string& what) {
  std::size_t n = 0;
  for (std::size_t at = s.find(what); at != std::string::npos; at = s.find(what, at + 1)) ++n;
  return n;
}

struct Example {
  std::string text;
  std::string expected;
};

// What a search text becomes: the expression, or "plain" for plain text.
TEST(basRegExpTest, TranslatesTheLanguageExamplesExactly) {
  const std::vector<Example> examples = {
      {"cat", "plain"},
      {"cat*", R"re(\bcat)re"},
      {"*cat", R"re(cat\b)re"},
      {"*cat*", "cat"},
      {"c?t", R"re(\bc([\s\S]{1})t\b)re"},
      {"c*t", R"re(\bc([\s\S]*)t\b)re"},
      {"cat or dog", R"re((\bcat\b)|(\bdog\b))re"},
      {"cat OR dog", R"re((\bcat\b)|(\bdog\b))re"},
      {"cat  or   dog", R"re((\bcat\b)|(\bdog\b))re"},
      {"cat and dog", R"re((\bcat\b)([\s\S]*)(\bdog\b)|(\bdog\b)([\s\S]*)(\bcat\b))re"},
      {"cat or dog and bird",
       R"re((\bcat\b)|((\bdog\b)([\s\S]*)(\bbird\b)|(\bbird\b)([\s\S]*)(\bdog\b)))re"},
      {"(cat or dog)", R"re(\b((\bcat\b)|(\bdog\b))\b)re"},
      {"(cat or dog) and bird",
       R"re((\b((\bcat\b)|(\bdog\b))\b)([\s\S]*)(\bbird\b)|(\bbird\b)([\s\S]*)(\b((\bcat\b)|(\bdog\b))\b))re"},
      {"x (a or b) y", R"re(\bx ((\ba\b)|(\bb\b)) y\b)re"},
      {"(a*b)", R"re(\b(\ba([\s\S]([\s\S]*))b\b)\b)re"},
      {"(a)(b)", R"re(\b(\ba\b)(\bb\b)\b)re"},
      {"report 2004*", R"re(\breport 2004)re"},
      {"a or *", R"re((\ba\b)|(\b))re"},
      {"*", R"re(\b)re"},   {"**", ""},         {"()", ""},        {"(cat", ""},
      {"cat)", ""},         {")cat(", ""},      {"((a) or b)", ""},
      {"@@x(y)", "x(y)"},   {"@@^ab+c$", "plain"},                  {"a and", "plain"},
  };
  basRegExp re;
  for (const Example& e : examples) {
    const std::string got =
        basRegExp::IsPatternSearch(e.text) ? re.TranslatePattern(e.text) : "plain";
    EXPECT_EQ(got, e.expected) << "search text: " << e.text;
  }
}

TEST(basRegExpTest, TheTranslationStepsOneByOne) {
  basRegExp re;
  // After "@@" the expression is the text trimmed of spaces, unchecked; behind a
  // tab "@@" is ordinary text.
  EXPECT_EQ(re.TranslatePattern("   @@x(y)  "), "x(y)");
  EXPECT_EQ(re.TranslatePattern("@@("), "(");
  EXPECT_EQ(re.TranslatePattern("@@ or x"), " or x");
  EXPECT_EQ(re.TranslatePattern("\t@@(x)"), "\\b\t@@(\\bx\\b)\\b");
  // Terms are trimmed and their wildcards expanded.
  EXPECT_EQ(basRegExp::TranslateTerm("  *a?b*  "), R"re(a([\s\S]{1})b)re");
  EXPECT_EQ(basRegExp::TranslateTerm("a**b"), R"re(\ba([\s\S]*)([\s\S]*)b\b)re");
  EXPECT_EQ(basRegExp::TranslateTerm("?"), R"re(\b([\s\S]{1})\b)re");
  EXPECT_EQ(basRegExp::TranslateTerm("a+b.c"), R"re(\ba+b.c\b)re");
  EXPECT_EQ(basRegExp::TranslateTerm(""), R"re(\b\b)re");
  // "or" and "and" split in any case; an empty piece stays an empty alternative.
  EXPECT_EQ(re.TranslateOrAnd("a Or b oR c"), R"re((\ba\b)|(\bb\b)|(\bc\b))re");
  EXPECT_EQ(re.TranslateOrAnd("a or  or b"), R"re((\ba\b)|()|(\bb\b))re");
  EXPECT_EQ(re.TranslateOrAnd("   "), "");
  const std::string ab = R"re((\ba\b)([\s\S]*)(\bb\b)|(\bb\b)([\s\S]*)(\ba\b))re";
  EXPECT_EQ(re.TranslateOrAnd("a AND b And c"),
            "(" + ab + R"re()([\s\S]*)(\bc\b)|(\bc\b)([\s\S]*)()re" + ab + ")");
  // Nested brackets the partner search sees are left to the expression engine;
  // text between groups is copied raw and a blank tail is dropped.
  EXPECT_EQ(re.TranslateGroups("(x(a)b)"), R"re((\bx(a)b\b))re");
  EXPECT_EQ(re.TranslatePattern("(x(a)b)"), R"re(\b(\bx(a)b\b)\b)re");
  EXPECT_EQ(re.TranslateGroups("a* (b or c) d*   "), R"re(a* ((\bb\b)|(\bc\b)) d*   )re");
  EXPECT_EQ(re.TranslateGroups("(a)   "), R"re((\ba\b))re");
  EXPECT_EQ(re.TranslateGroups("   "), "");
  EXPECT_FALSE(re.TranslationError());
  EXPECT_FALSE(re.TranslationOverflow());
}

TEST(basRegExpTest, UnbalancedBracketsSetTheErrorFlagAndEachTranslationClearsIt) {
  basRegExp re;
  // "((a)b)": a second "(" right behind the first is skipped and pairs with the first ")".
  for (const char* text : {"()", "(cat", "cat)", ")cat(", "((a) or b)", "(a) b)", "(a) (b",
                           "((a)b)"}) {
    EXPECT_EQ(re.TranslatePattern(text), "") << text;
    EXPECT_TRUE(re.TranslationError()) << text;
    EXPECT_EQ(re.TranslatePattern("cat*"), R"re(\bcat)re");
    EXPECT_FALSE(re.TranslationError()) << "after " << text;
  }
  // "**" also gives the empty expression, but it is no error.
  EXPECT_EQ(re.TranslatePattern("**"), "");
  EXPECT_FALSE(re.TranslationError());
}

TEST(basRegExpTest, RecognisesPatternsByTheirTriggers) {
  for (const char* text : {"a or b", "a OR b", "a Or b", "a AND b", "a aNd b", "a?", "*", "(",
                           ")", "x)"}) {
    EXPECT_TRUE(basRegExp::IsPatternSearch(text)) << text;
  }
  // The operators need one space on each side; tabs are no spaces; "@@" and
  // other expression characters do not make a pattern.
  for (const char* text : {"orange and", "sandy", "or b", "a\tor\tb", "a and", "@@^ab+c$",
                           "a.b[c]", "brand new", "ORE", ""}) {
    EXPECT_FALSE(basRegExp::IsPatternSearch(text)) << text;
  }
}

TEST(basRegExpTest, TenThousandCharacterSearchTexts) {
  basRegExp re;
  std::string groups;
  while (groups.size() < 10000) groups += "(a)";
  std::string translated = re.TranslatePattern(groups);
  EXPECT_FALSE(re.TranslationError());
  EXPECT_EQ(Count(translated, R"re((\ba\b))re"), groups.size() / 3);

  EXPECT_EQ(re.TranslatePattern(std::string(10000, '(')), "");
  EXPECT_TRUE(re.TranslationError());

  // Deep nesting that pairs up: one group whose inside keeps its brackets.
  std::string deep = "(";
  for (int i = 0; i < 3000; ++i) deep += "x(";
  deep += "y" + std::string(3001, ')');
  translated = re.TranslatePattern(deep);
  EXPECT_FALSE(re.TranslationError());
  EXPECT_EQ(Count(translated, "("), 3001u);

  std::string ors;
  for (int i = 0; ors.size() < 10000; ++i) ors += "w" + std::to_string(i) + "* or ";
  translated = re.TranslatePattern(ors + "last");
  EXPECT_EQ(translated.substr(0, 8), R"re((\bw0)|()re");
  EXPECT_EQ(translated.substr(translated.size() - 10), R"re((\blast\b))re");

  // "and" doubles the expression per term: a long chain stops at the length limit.
  std::string ands = "a";
  while (ands.size() < 10000) ands += " and a";
  EXPECT_EQ(re.TranslatePattern(ands), basRegExp::kNeverMatches);
  EXPECT_TRUE(re.TranslationOverflow());
  EXPECT_FALSE(re.TranslationError());
  // Unbalanced brackets still win over the overflow.
  EXPECT_EQ(re.TranslatePattern("(" + ands + ") )"), "");
  EXPECT_TRUE(re.TranslationError());
  // Ten terms stay inside the limit and the flag is cleared again.
  std::string ten = "t0";
  for (int i = 1; i < 10; ++i) ten += " and t" + std::to_string(i);
  translated = re.TranslatePattern(ten);
  EXPECT_FALSE(re.TranslationOverflow());
  EXPECT_EQ(Count(translated, R"re((\bt0\b))re"), 512u);
}

TEST(basRegExpTest, RequiredLiteralsAreThePiecesBetweenTheWildcardsOfEveryTerm) {
  using V = std::vector<std::string>;
  const std::pair<const char*, V> cases[] = {
      {"report and 2021", {"report", "2021"}},
      {"  report   AND  2021 ", {"report", "2021"}},
      {"*inal-1*", {"inal-1"}},
      {"a?c*d", {"a", "c", "d"}},
      {"a.b and c", {"c"}},  // "." may stand for any character
      {"x or y", {}},
      {"(a and b)", {}},
      {"@@^ab and c", {}},
      {"**", {}},
  };
  for (const auto& [text, want] : cases) {
    EXPECT_EQ(basRegExp::RequiredLiterals(text), want) << text;
  }
}

}  // namespace
}  // namespace gorvan
