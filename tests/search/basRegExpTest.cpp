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

// What a search text becomes: the expression, or "plain" for plain text.
TEST(basRegExpTest, TranslatesSearchTextsExactly) {
  const std::vector<std::pair<std::string, std::string>> examples = {
      {"cat", "plain"},
      {"cat*", R"re(\bcat)re"},
      {"*cat", R"re(cat\b)re"},
      {"*cat*", "cat"},
      {"c?t", R"re(\bc([\s\S]{1})t\b)re"},
      {"c*t", R"re(\bc([\s\S]*)t\b)re"},
      {"  *a?b*  ", R"re(a([\s\S]{1})b)re"},
      {"a**b", R"re(\ba([\s\S]*)([\s\S]*)b\b)re"},
      {"?", R"re(\b([\s\S]{1})\b)re"},
      {"a+b.c?", R"re(\ba+b.c([\s\S]{1})\b)re"},  // expression characters pass as they are
      {"cat or dog", R"re((\bcat\b)|(\bdog\b))re"},
      {"cat  or   dog", R"re((\bcat\b)|(\bdog\b))re"},
      {"a Or b oR c", R"re((\ba\b)|(\bb\b)|(\bc\b))re"},
      {" or b", R"re(()|(\bb\b))re"},  // an empty piece stays an empty alternative
      {"cat and dog", R"re((\bcat\b)([\s\S]*)(\bdog\b)|(\bdog\b)([\s\S]*)(\bcat\b))re"},
      {"a AND b And c",
       R"re(((\ba\b)([\s\S]*)(\bb\b)|(\bb\b)([\s\S]*)(\ba\b))([\s\S]*)(\bc\b)|)re"
       R"re((\bc\b)([\s\S]*)((\ba\b)([\s\S]*)(\bb\b)|(\bb\b)([\s\S]*)(\ba\b)))re"},
      {"cat or dog and bird",
       R"re((\bcat\b)|((\bdog\b)([\s\S]*)(\bbird\b)|(\bbird\b)([\s\S]*)(\bdog\b)))re"},
      {"(cat or dog)", R"re(\b((\bcat\b)|(\bdog\b))\b)re"},
      {"(cat or dog) and bird",
       R"re((\b((\bcat\b)|(\bdog\b))\b)([\s\S]*)(\bbird\b)|(\bbird\b)([\s\S]*)(\b((\bcat\b)|(\bdog\b))\b))re"},
      {"x (a or b) y", R"re(\bx ((\ba\b)|(\bb\b)) y\b)re"},
      {"(a*b)", R"re(\b(\ba([\s\S]([\s\S]*))b\b)\b)re"},
      {"(a)(b)", R"re(\b(\ba\b)(\bb\b)\b)re"},
      // Nested brackets the partner search sees are left to the expression engine.
      {"(x(a)b)", R"re(\b(\bx(a)b\b)\b)re"},
      {"report 2004*", R"re(\breport 2004)re"},
      {"a or *", R"re((\ba\b)|(\b))re"},
      {"*", R"re(\b)re"},
      {"**", ""},
      // After "@@" the expression is the text trimmed of spaces, unchecked;
      // behind a tab "@@" is ordinary text.
      {"@@x(y)", "x(y)"},
      {"   @@x(y)  ", "x(y)"},
      {"@@(", "("},
      {"@@ or x", " or x"},
      {"\t@@(x)", "\\b\t@@(\\bx\\b)\\b"},
      {"@@^ab+c$", "plain"},
      {"a and", "plain"},
  };
  basRegExp re;
  for (const auto& [text, expected] : examples) {
    const std::string got = basRegExp::IsPatternSearch(text) ? re.TranslatePattern(text) : "plain";
    EXPECT_EQ(got, expected) << "search text: " << text;
    EXPECT_FALSE(re.TranslationError()) << text;
  }
  // The operators need one space on each side, in any case; tabs are no
  // spaces; "@@" and other expression characters do not make a pattern.
  for (const char* text : {"a aNd b", "x)", "("}) {
    EXPECT_TRUE(basRegExp::IsPatternSearch(text)) << text;
  }
  for (const char* text : {"orange and", "sandy", "or b", "a\tor\tb", "a.b[c]", "ORE", ""}) {
    EXPECT_FALSE(basRegExp::IsPatternSearch(text)) << text;
  }
}

TEST(basRegExpTest, UnbalancedBracketsGiveTheEmptyExpressionAndTheErrorFlag) {
  basRegExp re;
  // "((a)b)": a second "(" right behind the first is skipped and pairs with the first ")".
  for (const char* text :
       {"()", "(cat", "cat)", ")cat(", "((a) or b)", "(a) b)", "(a) (b", "((a)b)"}) {
    EXPECT_EQ(re.TranslatePattern(text), "") << text;
    EXPECT_TRUE(re.TranslationError()) << text;
    EXPECT_EQ(re.TranslatePattern("cat*"), R"re(\bcat)re");
    EXPECT_FALSE(re.TranslationError()) << "after " << text;
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
