#pragma once
// Real-looking file names for the benchmarks: camera pictures, reports with
// years, music tracks, installers, notes, invoices, archives — the kinds of
// names a catalog of personal discs holds, so that searches such as
// "report and 2021" meet the mix of hits and near misses they meet in use.
// Deterministic: name i is always the same.

#include <cstdint>
#include <cstdio>
#include <string>

namespace bench {

inline std::string RealName(uint64_t i) {
  // A cheap mix of the index, so that neighbouring names differ in kind.
  uint64_t x = i * 0x9E3779B97F4A7C15ull;
  x ^= x >> 29;
  const int year = 2012 + static_cast<int>(x % 13);
  const int month = 1 + static_cast<int>((x >> 8) % 12);
  const int day = 1 + static_cast<int>((x >> 12) % 28);
  const unsigned n = static_cast<unsigned>(i % 100000);
  char buf[128];
  switch ((x >> 20) % 12) {
    case 0: std::snprintf(buf, sizeof buf, "IMG_%04d%02d%02d_%06u.jpg", year, month, day, n); break;
    case 1: std::snprintf(buf, sizeof buf, "DSC%05u.JPG", n); break;
    case 2: std::snprintf(buf, sizeof buf, "Quarterly report %d Q%d.pdf", year, 1 + month % 4); break;
    case 3: std::snprintf(buf, sizeof buf, "Annual Report %d (final %u).docx", year, n % 7); break;
    case 4:
      std::snprintf(buf, sizeof buf, "%02u - Artist %u - Song title %u.mp3", 1 + n % 20, n % 900, n);
      break;
    case 5: std::snprintf(buf, sizeof buf, "setup_v%u.%u.%u.exe", n % 9, n % 13, n % 101); break;
    case 6: std::snprintf(buf, sizeof buf, "notes %d-%02d-%02d.txt", year, month, day); break;
    case 7: std::snprintf(buf, sizeof buf, "invoice_%d_%05u.pdf", year, n); break;
    case 8: std::snprintf(buf, sizeof buf, "Holiday %d part %u.mov", year, n % 40); break;
    case 9: std::snprintf(buf, sizeof buf, "backup-%d%02d%02d.tar.gz", year, month, day); break;
    case 10: std::snprintf(buf, sizeof buf, "report-%d-%02d draft %u.odt", year, month, n); break;
    default: std::snprintf(buf, sizeof buf, "Scan %u.tif", n); break;
  }
  return buf;
}

}  // namespace bench
