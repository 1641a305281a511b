#pragma once
// LocalDateCache: turns file-system time stamps (seconds since 1970, UTC) into
// the catalog's OLE dates in local time, as localtime_r would, without a
// localtime_r call per file: the offset from UTC is looked up once per quarter
// of an hour and reused for every stamp in it.

#include <climits>
#include <cstdint>

namespace gorvan {

class LocalDateCache {
 public:
  double DateOf(int64_t seconds);

 private:
  int64_t second_ = INT64_MIN;
  double value_ = 0;
  int64_t bucket_ = INT64_MIN;
  int64_t offset_ = 0;
};

}  // namespace gorvan
