#include "search/Regex.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace gorvan {
namespace {

using Result = Regex::Result;

constexpr Regex::Options kExact{};
constexpr Regex::Options kCaseless{.caseless = true};
constexpr Regex::Options kLiteral{.literal = true};
constexpr Regex::Options kLiteralStart{.literal = true, .anchored = true};
constexpr Regex::Options kLiteralWhole{.literal = true, .anchored = true, .endAnchored = true};

Result MatchOnce(std::string_view pattern, std::string_view subject, Regex::Options options) {
  Regex regex;
  return regex.Compile(pattern, options) ? regex.Match(subject) : Result::kFailed;
}

TEST(RegexTest, OneShotMatchesFollowTheDialectEncodingAndOptions) {
  struct Case {
    const char* pattern;
    std::string subject;
    Regex::Options options;
    Result expected;
  };
  constexpr Result M = Result::kMatch, N = Result::kNoMatch, F = Result::kFailed;
  const std::vector<Case> cases = {
      // Valid UTF-8: "é" is one character; other bytes are one character each.
      {"^c.t$", "c\xC3\xA9t", kExact, M}, {"^c..t$", "c\xC3\xA9t", kExact, N},
      {"^c.t$", "c\xE9t", kExact, M}, {"^c..t$", "c\xFF\xFEt", kExact, M}, {"x", "\xC3", kExact, N},
      {"", "\x80\x80", kExact, M},
      // A pattern that is not UTF-8 is used bytewise on every subject.
      {"caf\xE9", "Caf caf\xE9", kExact, M}, {"caf\xE9", "caf\xC3\xA9", kExact, N},
      // Ignoring case folds Unicode letters in UTF-8 and ASCII otherwise.
      {"\xC3\xA4pfel", "\xC3\x84PFEL", kCaseless, M},
      {"\xC3\xA4pfel", "\xC3\x84PFEL", kExact, N}, {"apfel", "APFEL\xFF", kCaseless, M},
      {"\xC3\xA4", "\xC3\x84\xFF", kCaseless, N},
      // Expressions without metacharacters are searched for bytewise; the
      // answers must be the engine's, also for the letters whose case
      // partners lie outside ASCII: the Kelvin sign and the long s.
      {"PaRt", "counterpart.txt", kCaseless, M}, {"PaRt", "PAR T", kCaseless, N},
      {"PaRt", "caf\xC3\xA9 PART", kCaseless, M}, {"PaRt", "pa\xFFrt", kCaseless, N},
      {"k", "\xE2\x84\xAA", kCaseless, M}, {"kb", "10 \xE2\x84\xAA" "B", kCaseless, M},
      {"as", "a\xC5\xBF", kCaseless, M}, {"Part", "part", kExact, N},
      {"Part", "a Part", kExact, M}, {"a.c", "abc", kExact, M},
      // "\b" sees ASCII word characters only.
      {R"re(\bcat\b)re", "a cat_ b", kExact, N}, {R"re(\bcat\b)re", "a.cat-b", kExact, M},
      {"\\b\xC3\xA9", "\xC3\xA9 \xC3\xA9", kExact, N}, {"x\\b\xC3\xA9", "x\xC3\xA9", kExact, M},
      {R"re((*UCP)\bx)re", "x", kExact, F},  // may not be switched on
      {R"re(\C)re", "x", kExact, F},         // could split a character
      // "$" only at the very end; "." everything but a line feed.
      {"abc$", "abc\n", kExact, N}, {"^a.b$", "a\rb", kExact, M}, {"^a.b$", "a\nb", kExact, N},
      {R"re(^a[\s\S]b$)re", "a\nb", kExact, M}, {R"re(caf\u00e9)re", "caf\xC3\xA9", kExact, M},
      {"^[^]$", "\n", kExact, M},
      // Literal, anchored at the start, anchored at both ends.
      {"a.b(", "xa.b(y", kLiteral, M}, {"a.b(", "axb(", kLiteral, N},
      {"ab", "abc", kLiteralStart, M}, {"ab", "cab", kLiteralStart, N},
      {"ab", "ab", kLiteralWhole, M}, {"ab", "abc", kLiteralWhole, N}, {"", "", kLiteralWhole, M},
      {"", "a", kLiteralWhole, N},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(MatchOnce(c.pattern, c.subject, c.options), c.expected)
        << "pattern \"" << c.pattern << "\" on \"" << c.subject << "\"";
  }
}

TEST(RegexTest, FailuresLeaveNothingThatMatches) {
  Regex regex;
  EXPECT_EQ(regex.Match("anything"), Result::kFailed);  // nothing compiled yet
  // Runaway backtracking gives up at the limit; the expression stays usable.
  ASSERT_TRUE(regex.Compile("(a|aa)+$", {}));
  EXPECT_EQ(regex.Match("aaaa"), Result::kMatch);
  EXPECT_EQ(regex.Match(std::string(60, 'a') + "!"), Result::kFailed);
  EXPECT_EQ(regex.Match("aaab"), Result::kNoMatch);
  ASSERT_TRUE(regex.Compile(R"re(^(\w+\s?)*$)re", {}));
  EXPECT_EQ(regex.Match("an example sentence with many words that goes on and on and on!"),
            Result::kFailed);

  EXPECT_FALSE(regex.Compile("a(b", {}));
  EXPECT_FALSE(regex.IsCompiled());
  EXPECT_EQ(regex.Match("a(b"), Result::kFailed);
  ASSERT_TRUE(regex.Compile("", {}));
  EXPECT_EQ(regex.Match(std::string_view()), Result::kMatch);
  regex.Reset();
  EXPECT_EQ(regex.Match("abc"), Result::kFailed);
  // Too large for the engine: a failure, not a crash.
  EXPECT_FALSE(regex.Compile(std::string(100000, 'a'), kLiteral));
}

// The vectorised plain-text search against the obvious one, on short and long
// fields, with the wanted character at every position and at both ends.
TEST(RegexTest, ContainsAsciiNoCaseAgreesWithASimpleSearch) {
  const auto fold = [](char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c; };
  const auto simple = [&](const std::string& field, const std::string& text) {
    std::string f, t;
    for (char c : field) f += fold(c);
    for (char c : text) t += fold(c);
    return f.find(t) != std::string::npos;
  };
  std::mt19937 rng(11);
  const std::string alphabet = "fFiInN-_@`\xC3\xA9 .";
  for (int trial = 0; trial < 20000; ++trial) {
    std::string field(rng() % 41, ' ');
    for (char& c : field) c = alphabet[rng() % alphabet.size()];
    std::string text(1 + rng() % 5, ' ');
    for (char& c : text) c = alphabet[rng() % alphabet.size()];
    ASSERT_EQ(Regex::ContainsAsciiNoCase(field, text), simple(field, text))
        << "field '" << field << "' text '" << text << "'";
  }
}

}  // namespace
}  // namespace gorvan
