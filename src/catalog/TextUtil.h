#pragma once
// Small text helpers shared by every layer: trimming and ASCII-only case
// folding (the catalog's extension tests and keyword tests fold ASCII letters
// only, whatever the locale).

#include <string>
#include <string_view>

namespace gorvan {

// s without the leading and trailing characters found in blanks (by default
// the space alone, as the product's fields are trimmed).
inline std::string_view Trim(std::string_view s, std::string_view blanks = " ") {
  const size_t first = s.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  const size_t last = s.find_last_not_of(blanks);
  return s.substr(first, last - first + 1);
}

inline char AsciiLower(char c) {
  return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

inline std::string AsciiLower(std::string_view s) {
  std::string out(s);
  for (char& c : out) c = AsciiLower(c);
  return out;
}

inline bool EqualsIgnoreCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (AsciiLower(a[i]) != AsciiLower(b[i])) return false;
  }
  return true;
}

// The order in which people expect names: ASCII letters compared case-blind
// and runs of digits compared as numbers ("disc 9" before "disc 10"), other
// bytes by value. Returns <0, 0 or >0.
int NaturalCompare(std::string_view a, std::string_view b);

}  // namespace gorvan
