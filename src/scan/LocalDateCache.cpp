#include "scan/LocalDateCache.h"

#include <ctime>

#include "catalog/OleDate.h"

namespace gorvan {

double LocalDateCache::DateOf(int64_t seconds) {
  // Zones change their offset at most once within a quarter of an hour, so
  // when the quarter's first and last second have the same offset, every
  // second of it has.
  if (seconds == second_) return value_;
  const int64_t bucket = seconds >= 0 ? seconds / 900 : (seconds - 899) / 900;
  if (bucket != bucket_) {
    std::tm a{}, b{};
    const std::time_t first = static_cast<std::time_t>(bucket * 900);
    const std::time_t last = first + 899;
    if (!localtime_r(&first, &a) || !localtime_r(&last, &b) || a.tm_gmtoff != b.tm_gmtoff) {
      return OleDateFromTime(static_cast<std::time_t>(seconds));
    }
    bucket_ = bucket;
    offset_ = a.tm_gmtoff;
  }
  const int64_t local = seconds + offset_;
  const int64_t days = local >= 0 ? local / 86400 : (local - 86399) / 86400;
  const int64_t secs = local - days * 86400;
  second_ = seconds;
  // 25569 is the OLE date of 1 January 1970.
  value_ = static_cast<double>(days + 25569) + static_cast<double>(secs) / 86400.0;
  return value_;
}

}  // namespace gorvan
