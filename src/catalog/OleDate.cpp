#include "catalog/OleDate.h"

#include <cmath>
#include <cstdint>

namespace gorvan {
namespace {

// Days from 1970-01-01 to a proleptic Gregorian date (H. Hinnant's algorithm).
int64_t DaysFromCivil(int64_t y, unsigned m, unsigned d) {
  y -= m <= 2;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const auto yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<int64_t>(doe) - 719468;
}

void CivilFromDays(int64_t z, int* y, unsigned* m, unsigned* d) {
  z += 719468;
  const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const auto doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  *d = doy - (153 * mp + 2) / 5 + 1;
  *m = mp < 10 ? mp + 3 : mp - 9;
  *y = static_cast<int>(static_cast<int64_t>(yoe) + era * 400 + (*m <= 2));
}

const int64_t kOleEpochDays = DaysFromCivil(1899, 12, 30);

}  // namespace

double OleDateFromTime(std::time_t utc) {
  std::tm local{};
  localtime_r(&utc, &local);
  const int64_t days = DaysFromCivil(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday) -
                       kOleEpochDays;
  const int secs = local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec;
  return static_cast<double>(days) + secs / 86400.0;
}

double OleDateNow() { return OleDateFromTime(std::time(nullptr)); }

bool OleDateToTm(double ole, std::tm* out) {
  if (!std::isfinite(ole) || ole < -657434.0 || ole > 2958466.0) return false;
  // Negative OLE dates count whole days backwards but the fraction forwards.
  double whole = std::trunc(ole);
  double frac = std::fabs(ole - whole);
  auto secs = static_cast<int64_t>(std::llround(frac * 86400.0));
  auto days = static_cast<int64_t>(whole);
  if (secs >= 86400) {
    secs -= 86400;
    days += ole < 0 ? -1 : 1;
  }
  int y;
  unsigned m, d;
  CivilFromDays(days + kOleEpochDays, &y, &m, &d);
  *out = std::tm{};
  out->tm_year = y - 1900;
  out->tm_mon = static_cast<int>(m) - 1;
  out->tm_mday = static_cast<int>(d);
  out->tm_hour = static_cast<int>(secs / 3600);
  out->tm_min = static_cast<int>(secs / 60 % 60);
  out->tm_sec = static_cast<int>(secs % 60);
  out->tm_isdst = -1;
  return true;
}

std::time_t TimeFromOleDate(double ole) {
  std::tm tm{};
  if (!OleDateToTm(ole, &tm)) return 0;
  return std::mktime(&tm);
}

}  // namespace gorvan
