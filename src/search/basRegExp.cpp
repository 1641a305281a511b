#include "search/basRegExp.h"

#include <vector>

#include "catalog/TextUtil.h"
#include "search/Regex.h"

namespace gorvan {

namespace {

constexpr std::string_view kAnyRun = "([\\s\\S]*)";
constexpr std::string_view kAnyOne = "([\\s\\S]{1})";
constexpr std::string_view kWordEdge = "\\b";

// Position of `word` (lower-case ASCII) in `s` at or after `from`, letters
// compared without case; npos when absent.
std::size_t FindNoCase(std::string_view s, std::string_view word, std::size_t from = 0) {
  if (word.size() > s.size()) {
    return std::string_view::npos;
  }
  for (std::size_t i = from; i + word.size() <= s.size(); ++i) {
    std::size_t k = 0;
    while (k < word.size() && AsciiLower(s[i + k]) == word[k]) {
      ++k;
    }
    if (k == word.size()) {
      return i;
    }
  }
  return std::string_view::npos;
}

// Splits `s` at every occurrence of `separator`, found left to right without
// overlap and without regard to letter case. Always at least one piece.
std::vector<std::string_view> SplitNoCase(std::string_view s, std::string_view separator) {
  std::vector<std::string_view> pieces;
  std::size_t start = 0;
  for (std::size_t at = FindNoCase(s, separator); at != std::string_view::npos;
       at = FindNoCase(s, separator, start)) {
    pieces.push_back(s.substr(start, at - start));
    start = at + separator.size();
  }
  pieces.push_back(s.substr(start));
  return pieces;
}

// Replaces every `from` in `s` by `to` in one left-to-right pass (text that a
// replacement put in is not looked at again).
std::string ReplaceAll(std::string_view s, char from, std::string_view to) {
  std::string out;
  out.reserve(s.size());
  for (char c : s) {
    if (c == from) {
      out += to;
    } else {
      out += c;
    }
  }
  return out;
}

}  // namespace

basRegExp::basRegExp() = default;
basRegExp::~basRegExp() = default;

bool basRegExp::IsPatternSearch(std::string_view text) {
  return FindNoCase(text, " or ") != std::string_view::npos ||
         FindNoCase(text, " and ") != std::string_view::npos ||
         text.find_first_of("?*()") != std::string_view::npos;
}

std::vector<std::string> basRegExp::RequiredLiterals(std::string_view text) {
  std::vector<std::string> literals;
  const std::string_view trimmed = Trim(text);
  // Raw expressions, groups and alternatives promise no one text.
  if (trimmed.substr(0, 2) == "@@" || text.find_first_of("()") != std::string_view::npos ||
      FindNoCase(text, " or ") != std::string_view::npos) {
    return literals;
  }
  std::string collapsed;
  for (char c : text) {
    if (c != ' ' || collapsed.empty() || collapsed.back() != ' ') collapsed += c;
  }
  for (std::string_view term : SplitNoCase(collapsed, " and ")) {
    term = Trim(term);
    // Between the wildcards each piece reaches the expression as it stands;
    // a piece holding an expression metacharacter may match other text.
    size_t start = 0;
    while (start <= term.size()) {
      const size_t end = std::min(term.find_first_of("*?", start), term.size());
      const std::string_view piece = term.substr(start, end - start);
      if (!piece.empty() && piece.find_first_of("\\.^$|[]{}+") == std::string_view::npos) {
        literals.emplace_back(piece);
      }
      start = end + 1;
    }
  }
  return literals;
}

std::string basRegExp::TranslatePattern(std::string_view text) {
  translationError_ = false;
  translationOverflow_ = false;

  std::string_view trimmed = Trim(text);
  if (trimmed.size() > 2 && trimmed.substr(0, 2) == "@@") {
    return std::string(trimmed.substr(2));
  }

  // Runs of spaces become one space, in the untrimmed text.
  std::string collapsed;
  collapsed.reserve(text.size());
  for (char c : text) {
    if (c != ' ' || collapsed.empty() || collapsed.back() != ' ') {
      collapsed += c;
    }
  }

  std::string result = TranslateGroups(collapsed);
  if (!translationOverflow_) {
    result = TranslateOrAnd(result);
  }
  if (translationError_) {
    return "";
  }
  if (translationOverflow_ || result.size() > kMaxTranslationLength) {
    translationOverflow_ = true;
    return std::string(kNeverMatches);
  }
  return result;
}

std::string basRegExp::TranslateGroups(std::string_view s) {
  // Each round handles the first group of what is left and continues with the
  // text after it, as if the rest were translated on its own.
  std::string result;
  while (true) {
    if (Trim(s).empty()) {
      return result;
    }
    const std::size_t npos = std::string_view::npos;
    std::size_t open = s.find('(');
    std::size_t close = s.find(')');
    if (open == npos && close == npos) {
      if (!translationOverflow_) {
        result += s;
      }
      return result;
    }
    if (open == npos || close == npos || close < open) {
      translationError_ = true;
      return result;
    }

    // Find the partner of the bracket at `open` by counting depth. The first
    // look starts two characters behind the opening bracket (not one): a
    // bracket right behind it is never seen. That is how the language pairs
    // brackets, and "()" and "((a) or b)" depend on it.
    // The next "(" and ")" at or after the cursor are kept between rounds and
    // looked up again only once the cursor has passed them, so the walk stays
    // linear however deep the nesting.
    std::size_t depth = 1;
    std::size_t cursor = open + 1;
    std::size_t from = cursor + 1;
    std::size_t nextOpen = from < s.size() ? s.find('(', from) : npos;
    std::size_t nextClose = from < s.size() ? s.find(')', from) : npos;
    while (depth > 0) {
      if (nextClose == npos) {
        translationError_ = true;
        return result;
      }
      if (nextOpen == npos || nextClose < nextOpen) {
        --depth;
        cursor = nextClose;
        nextClose = s.find(')', cursor + 1);
      } else {
        ++depth;
        cursor = nextOpen;
        nextOpen = s.find('(', cursor + 1);
      }
    }

    // After an overflow the result is discarded anyway; the walk goes on only
    // so that unbalanced brackets further on still set the error flag.
    if (!translationOverflow_) {
      std::string inside = TranslateOrAnd(s.substr(open + 1, cursor - open - 1));
      result.append(s.substr(0, open)).append("(").append(inside).append(")");
    }
    s = s.substr(cursor + 1);
  }
}

std::string basRegExp::TranslateOrAnd(std::string_view s) {
  if (Trim(s).empty()) {
    return "";
  }

  std::vector<std::string_view> pieces = SplitNoCase(s, " or ");
  if (pieces.size() >= 2) {
    std::string result;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
      if (i > 0) {
        result += '|';
      }
      result += '(';
      result += TranslateOrAnd(pieces[i]);
      result += ')';
      if (translationOverflow_) {
        return "";
      }
    }
    return result;
  }

  pieces = SplitNoCase(s, " and ");
  if (pieces.size() >= 2) {
    std::string r = TranslateOrAnd(pieces[0]);
    for (std::size_t i = 1; i < pieces.size() && !translationOverflow_; ++i) {
      std::string t = TranslateOrAnd(pieces[i]);
      std::size_t grown = 2 * (r.size() + t.size() + kAnyRun.size()) + 9;
      if (grown > kMaxTranslationLength) {
        translationOverflow_ = true;
        break;
      }
      std::string next;
      next.reserve(grown);
      next.append("(").append(r).append(")").append(kAnyRun).append("(").append(t).append(")");
      next.append("|");
      next.append("(").append(t).append(")").append(kAnyRun).append("(").append(r).append(")");
      r = std::move(next);
    }
    return translationOverflow_ ? std::string() : r;
  }

  return TranslateTerm(s);
}

std::string basRegExp::TranslateTerm(std::string_view s) {
  s = Trim(s);
  std::string term;
  term.reserve(s.size() + 2 * kWordEdge.size());
  if (!s.empty() && s.front() == '*') {
    s.remove_prefix(1);
  } else {
    term += kWordEdge;
  }
  bool trailingStar = !s.empty() && s.back() == '*';
  if (trailingStar) {
    s.remove_suffix(1);
  }
  term += s;
  if (!trailingStar) {
    term += kWordEdge;
  }
  return ReplaceAll(ReplaceAll(term, '*', kAnyRun), '?', kAnyOne);
}

void basRegExp::CreateMatcher() {
  matcher_ = std::make_unique<Regex>();
  CompilePattern();
}

void basRegExp::ReleaseMatcher() { matcher_.reset(); }

void basRegExp::SetPattern(std::string_view pattern, bool ignoreCase) {
  pattern_ = pattern;
  ignoreCase_ = ignoreCase;
  CompilePattern();
}

void basRegExp::CompilePattern() {
  if (matcher_ == nullptr) {
    return;
  }
  Regex::Options options;
  options.caseless = ignoreCase_;
  // An expression that does not compile is no error the user hears of: every
  // test with it simply fails.
  matcher_->Compile(pattern_, options);
}

bool basRegExp::RegExpTest(std::string_view field) {
  return matcher_ != nullptr && matcher_->Match(field) == Regex::Result::kMatch;
}

}  // namespace gorvan
