#include "search/SearchCriteria.h"

#include <algorithm>

namespace gorvan {

namespace {

unsigned char AsciiFold(char c) {
  unsigned char u = static_cast<unsigned char>(c);
  return (u >= 'A' && u <= 'Z') ? static_cast<unsigned char>(u + ('a' - 'A')) : u;
}

bool AsciiEqualNoCase(char a, char b) { return AsciiFold(a) == AsciiFold(b); }

// Fallbacks for a text the expression engine cannot hold as a literal.
bool AsciiBeginsWithNoCase(std::string_view field, std::string_view text) {
  return field.size() >= text.size() &&
         std::equal(text.begin(), text.end(), field.begin(), AsciiEqualNoCase);
}

bool Matches(Regex& regex, std::string_view field) {
  return regex.Match(field) == Regex::Result::kMatch;
}

}  // namespace

void SearchCriteria::PrepareSearch(std::string_view text, bool caseSensitive, bool inNames,
                                   bool inPathNames, bool inComments, bool inExtra,
                                   MatchMode matchMode, std::string_view categoryName) {
  useRegExp_ = basRegExp::IsPatternSearch(text);
  pattern_ = useRegExp_ ? regExp_.TranslatePattern(text) : std::string(text);
  caseSensitive_ = caseSensitive;
  inNames_ = inNames;
  inPathNames_ = inPathNames;
  inComments_ = inComments;
  inExtra_ = inExtra;
  matchMode_ = matchMode;
  categoryName_ = categoryName;
  compareMode_ = caseSensitive ? CompareMode::kBinary : CompareMode::kText;

  // Everything a field test needs is compiled now, once per search.
  required_.clear();
  if (useRegExp_) {
    regExp_.SetPattern(pattern_, !caseSensitive_);
    // The texts a match must hold, tested before the expression runs. Under
    // case folding only texts for which ASCII folding gives the engine's own
    // answer qualify (ASCII, without k and s, whose case partners lie
    // outside ASCII).
    for (std::string& literal : basRegExp::RequiredLiterals(text)) {
      if (caseSensitive_ ||
          (Regex::IsAscii(literal) && literal.find_first_of("kKsS") == std::string::npos)) {
        required_.push_back(std::move(literal));
      }
    }
  }
  CompilePlain();
}

void SearchCriteria::CompilePlain() {
  plainWhole_.Reset();
  plainStart_.Reset();
  plainAnywhere_.Reset();
  patternAscii_ = Regex::IsAscii(pattern_);
  // Only k and s have case partners outside ASCII (the Kelvin sign, the long
  // s). An ASCII text without them matches under ASCII folding exactly as
  // under Unicode folding, whatever bytes the field holds.
  asciiFoldExact_ =
      patternAscii_ && pattern_.find_first_of("kKsS") == std::string::npos;
  if (useRegExp_ || compareMode_ != CompareMode::kText) {
    return;
  }
  Regex::Options options;
  options.caseless = true;
  options.literal = true;
  switch (matchMode_) {
    case MatchMode::kWholeWord:
      options.anchored = true;
      options.endAnchored = true;
      plainWhole_.Compile(pattern_, options);
      break;
    case MatchMode::kAnywhere:
      plainAnywhere_.Compile(pattern_, options);
      // Extra attributes are compared at their beginning.
      options.anchored = true;
      plainStart_.Compile(pattern_, options);
      break;
    case MatchMode::kBeginning:
      options.anchored = true;
      plainStart_.Compile(pattern_, options);
      break;
    default:
      break;
  }
}

SearchCriteria::Field SearchCriteria::FirstMatchingField(std::string_view name,
                                                         std::string_view path,
                                                         std::string_view comments,
                                                         std::string_view extra) {
  if (inPathNames_ && FieldMatches(path, false)) return Field::kPath;
  if (inNames_ && FieldMatches(name, false)) return Field::kName;
  if (inComments_ && FieldMatches(comments, false)) return Field::kComments;
  if (inExtra_ && FieldMatches(extra, true)) return Field::kExtra;
  return Field::kNone;
}

bool SearchCriteria::FieldMatches(std::string_view field, bool isExtra) {
  if (useRegExp_) {
    for (const std::string& literal : required_) {
      const bool held = caseSensitive_ ? field.find(literal) != std::string_view::npos
                                       : Regex::ContainsAsciiNoCase(field, literal);
      if (!held) return false;
    }
    return regExp_.RegExpTest(field);
  }
  switch (matchMode_) {
    case MatchMode::kWholeWord:
      return PlainEquals(field);
    case MatchMode::kBeginning:
      return PlainBeginsWith(field);
    case MatchMode::kAnywhere:
      return isExtra ? PlainBeginsWith(field) : PlainContains(field);
    default:
      return false;
  }
}

bool SearchCriteria::PlainEquals(std::string_view field) {
  if (compareMode_ == CompareMode::kBinary) {
    return field == pattern_;
  }
  if (plainWhole_.IsCompiled() && !asciiFoldExact_ && !(patternAscii_ && Regex::IsAscii(field))) {
    return Matches(plainWhole_, field);
  }
  return field.size() == pattern_.size() && AsciiBeginsWithNoCase(field, pattern_);
}

bool SearchCriteria::PlainBeginsWith(std::string_view field) {
  if (compareMode_ == CompareMode::kBinary) {
    return field.substr(0, pattern_.size()) == pattern_;
  }
  if (plainStart_.IsCompiled() && !asciiFoldExact_ && !(patternAscii_ && Regex::IsAscii(field))) {
    return Matches(plainStart_, field);
  }
  return AsciiBeginsWithNoCase(field, pattern_);
}

bool SearchCriteria::PlainContains(std::string_view field) {
  if (compareMode_ == CompareMode::kBinary) {
    return field.find(pattern_) != std::string_view::npos;
  }
  if (plainAnywhere_.IsCompiled() && !asciiFoldExact_ && !(patternAscii_ && Regex::IsAscii(field))) {
    return Matches(plainAnywhere_, field);
  }
  return Regex::ContainsAsciiNoCase(field, pattern_);
}

}  // namespace gorvan
