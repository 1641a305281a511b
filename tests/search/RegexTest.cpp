#include "search/Regex.h"

#include <gtest/gtest.h>

#include <string>

namespace gorvan {
namespace {

using Result = Regex::Result;

Result MatchOnce(std::string_view pattern, std::string_view subject, Regex::Options options = {}) {
  Regex regex;
  if (!regex.Compile(pattern, options)) {
    return Result::kFailed;
  }
  return regex.Match(subject);
}

Regex::Options Caseless() {
  Regex::Options options;
  options.caseless = true;
  return options;
}

TEST(RegexTest, RunawayBacktrackingGivesUpAtTheLimit) {
  Regex regex;
  ASSERT_TRUE(regex.Compile("(a|aa)+$", {}));
  EXPECT_EQ(regex.Match("aaaa"), Result::kMatch);
  const std::string runaway = std::string(60, 'a') + "!";
  EXPECT_EQ(regex.Match(runaway), Result::kFailed);
  // The object stays usable after a match gave up.
  EXPECT_EQ(regex.Match("aaab"), Result::kNoMatch);

  ASSERT_TRUE(regex.Compile(R"re(^(\w+\s?)*$)re", {}));
  EXPECT_EQ(regex.Match("some words in a row"), Result::kMatch);
  EXPECT_EQ(regex.Match("an example sentence with many words that goes on and on and on!"),
            Result::kFailed);
}

TEST(RegexTest, ReadsTextThatIsNotUtf8ByteByByte) {
  // Valid UTF-8: "é" is one character.
  EXPECT_EQ(MatchOnce("^c.t$", "c\xC3\xA9t"), Result::kMatch);
  EXPECT_EQ(MatchOnce("^c..t$", "c\xC3\xA9t"), Result::kNoMatch);
  // A Latin-1 name: every byte is one character, nothing fails.
  EXPECT_EQ(MatchOnce("^c.t$", "c\xE9t"), Result::kMatch);
  EXPECT_EQ(MatchOnce("^c..t$", "c\xFF\xFEt"), Result::kMatch);
  EXPECT_EQ(MatchOnce("x", "\xC3"), Result::kNoMatch);
  EXPECT_EQ(MatchOnce("", "\x80\x80"), Result::kMatch);
  // A pattern that is not UTF-8 is used bytewise on every subject.
  EXPECT_EQ(MatchOnce("caf\xE9", "Caf caf\xE9"), Result::kMatch);
  EXPECT_EQ(MatchOnce("caf\xE9", "caf\xC3\xA9"), Result::kNoMatch);
}

TEST(RegexTest, IgnoringCaseFoldsUnicodeLettersInUtf8AndAsciiOtherwise) {
  EXPECT_EQ(MatchOnce("\xC3\xA4pfel", "\xC3\x84PFEL", Caseless()), Result::kMatch);  // ä / Ä
  EXPECT_EQ(MatchOnce("k", "\xE2\x84\xAA", Caseless()), Result::kMatch);            // Kelvin sign
  EXPECT_EQ(MatchOnce("\xC3\xA4pfel", "\xC3\x84PFEL", {}), Result::kNoMatch);
  // The subject is not UTF-8 (trailing \xFF): ASCII letters still fold, "Ä" no longer does.
  EXPECT_EQ(MatchOnce("apfel", "APFEL\xFF", Caseless()), Result::kMatch);
  EXPECT_EQ(MatchOnce("\xC3\xA4", "\xC3\x84\xFF", Caseless()), Result::kNoMatch);
}

TEST(RegexTest, WordBoundaryAndAnchorsFollowTheExpressionDialect) {
  // "\b" sees ASCII word characters only, and "(*UCP)" may not change that.
  EXPECT_EQ(MatchOnce(R"re(\bcat\b)re", "a cat_ b"), Result::kNoMatch);
  EXPECT_EQ(MatchOnce(R"re(\bcat\b)re", "a.cat-b"), Result::kMatch);
  EXPECT_EQ(MatchOnce("\\b\xC3\xA9", "\xC3\xA9 \xC3\xA9"), Result::kNoMatch);
  EXPECT_EQ(MatchOnce("x\\b\xC3\xA9", "x\xC3\xA9"), Result::kMatch);
  Regex ucp;
  EXPECT_FALSE(ucp.Compile(R"re((*UCP)\bx)re", {}));
  // "$" only at the very end; "." everything but a line feed.
  EXPECT_EQ(MatchOnce("abc$", "abc\n"), Result::kNoMatch);
  EXPECT_EQ(MatchOnce("^a.b$", "a\rb"), Result::kMatch);
  EXPECT_EQ(MatchOnce("^a.b$", "a\nb"), Result::kNoMatch);
  EXPECT_EQ(MatchOnce(R"re(^a[\s\S]b$)re", "a\nb"), Result::kMatch);
  // ECMAScript escapes and classes.
  EXPECT_EQ(MatchOnce(R"re(caf\u00e9)re", "caf\xC3\xA9"), Result::kMatch);
  EXPECT_EQ(MatchOnce("^[^]$", "\n"), Result::kMatch);
  // "\C" could split a UTF-8 character and is refused.
  Regex oneUnit;
  EXPECT_FALSE(oneUnit.Compile(R"re(\C)re", {}));
}

TEST(RegexTest, LiteralAndAnchoredOptions) {
  Regex::Options literal;
  literal.literal = true;
  EXPECT_EQ(MatchOnce("a.b(", "xa.b(y", literal), Result::kMatch);
  EXPECT_EQ(MatchOnce("a.b(", "axb(", literal), Result::kNoMatch);

  Regex::Options start = literal;
  start.anchored = true;
  EXPECT_EQ(MatchOnce("ab", "abc", start), Result::kMatch);
  EXPECT_EQ(MatchOnce("ab", "cab", start), Result::kNoMatch);

  Regex::Options whole = start;
  whole.endAnchored = true;
  EXPECT_EQ(MatchOnce("ab", "ab", whole), Result::kMatch);
  EXPECT_EQ(MatchOnce("ab", "abc", whole), Result::kNoMatch);
  EXPECT_EQ(MatchOnce("", "", whole), Result::kMatch);
  EXPECT_EQ(MatchOnce("", "a", whole), Result::kNoMatch);
}

TEST(RegexTest, CompileFailuresAndResetLeaveNothingThatMatches) {
  Regex regex;
  EXPECT_EQ(regex.Match("anything"), Result::kFailed);  // nothing compiled yet
  EXPECT_FALSE(regex.Compile("a(b", {}));
  EXPECT_FALSE(regex.IsCompiled());
  EXPECT_EQ(regex.Match("a(b"), Result::kFailed);

  ASSERT_TRUE(regex.Compile("", {}));
  EXPECT_EQ(regex.Match(std::string_view()), Result::kMatch);
  EXPECT_EQ(regex.Match("x"), Result::kMatch);

  ASSERT_TRUE(regex.Compile("b", {}));
  EXPECT_EQ(regex.Match("abc"), Result::kMatch);
  regex.Reset();
  EXPECT_EQ(regex.Match("abc"), Result::kFailed);

  // Too large for the engine: a failure, not a crash.
  Regex::Options literal;
  literal.literal = true;
  EXPECT_FALSE(regex.Compile(std::string(100000, 'a'), literal));
}

}  // namespace
}  // namespace gorvan

namespace gorvan {
namespace {

// Expressions without metacharacters are searched for bytewise; the answers
// must be the engine's, including the letters with partners outside ASCII.
TEST(RegexTest, PlainTextExpressionsGiveTheEnginesAnswers) {
  Regex caseless;
  ASSERT_TRUE(caseless.Compile("PaRt", {.caseless = true}));
  EXPECT_EQ(caseless.Match("counterpart.txt"), Regex::Result::kMatch);
  EXPECT_EQ(caseless.Match("PAR T"), Regex::Result::kNoMatch);
  EXPECT_EQ(caseless.Match("caf\xC3\xA9 PART"), Regex::Result::kMatch);
  EXPECT_EQ(caseless.Match("pa\xFFrt"), Regex::Result::kNoMatch);

  Regex kelvin;
  ASSERT_TRUE(kelvin.Compile("kb", {.caseless = true}));
  EXPECT_EQ(kelvin.Match("10 \xE2\x84\xAA" "B"), Regex::Result::kMatch) << "Kelvin sign";
  Regex longS;
  ASSERT_TRUE(longS.Compile("as", {.caseless = true}));
  EXPECT_EQ(longS.Match("a\xC5\xBF"), Regex::Result::kMatch) << "long s";

  Regex exact;
  ASSERT_TRUE(exact.Compile("Part", {}));
  EXPECT_EQ(exact.Match("part"), Regex::Result::kNoMatch);
  EXPECT_EQ(exact.Match("a Part"), Regex::Result::kMatch);

  Regex dotted;
  ASSERT_TRUE(dotted.Compile("a.c", {}));
  EXPECT_EQ(dotted.Match("abc"), Regex::Result::kMatch) << "a dot is no plain text";
}

}  // namespace
}  // namespace gorvan
