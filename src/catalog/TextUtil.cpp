#include "catalog/TextUtil.h"

namespace gorvan {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

int NaturalCompare(std::string_view a, std::string_view b) {
  size_t i = 0, j = 0;
  while (i < a.size() && j < b.size()) {
    if (IsDigit(a[i]) && IsDigit(b[j])) {
      // Leading zeros do not count; the longer run of digits is the larger number.
      size_t ei = i, ej = j;
      while (ei < a.size() && a[ei] == '0') ++ei;
      while (ej < b.size() && b[ej] == '0') ++ej;
      size_t ni = ei, nj = ej;
      while (ni < a.size() && IsDigit(a[ni])) ++ni;
      while (nj < b.size() && IsDigit(b[nj])) ++nj;
      if (ni - ei != nj - ej) return ni - ei < nj - ej ? -1 : 1;
      if (const int c = a.substr(ei, ni - ei).compare(b.substr(ej, nj - ej)); c != 0) return c;
      i = ni;
      j = nj;
      continue;
    }
    const auto ca = static_cast<unsigned char>(AsciiLower(a[i]));
    const auto cb = static_cast<unsigned char>(AsciiLower(b[j]));
    if (ca != cb) return ca < cb ? -1 : 1;
    ++i;
    ++j;
  }
  const size_t ra = a.size() - i, rb = b.size() - j;
  return ra < rb ? -1 : ra > rb ? 1 : 0;
}

}  // namespace gorvan
