#include "catalog/TextFormat.h"

#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "catalog/OleDate.h"

namespace gorvan {
namespace {

bool IsCLocale() {
  const char* name = std::setlocale(LC_TIME, nullptr);
  return name == nullptr || std::strcmp(name, "C") == 0 || std::strcmp(name, "POSIX") == 0;
}

std::string FormatDatePart(const std::tm& tm) {
  char buf[64];
  if (IsCLocale()) {
    std::snprintf(buf, sizeof buf, "%d/%d/%d", tm.tm_mon + 1, tm.tm_mday, tm.tm_year + 1900);
  } else {
    std::strftime(buf, sizeof buf, "%x", &tm);
  }
  return buf;
}

std::string FormatTimePart(const std::tm& tm) {
  char buf[64];
  if (IsCLocale()) {
    const int h12 = tm.tm_hour % 12 == 0 ? 12 : tm.tm_hour % 12;
    std::snprintf(buf, sizeof buf, "%d:%02d:%02d %s", h12, tm.tm_min, tm.tm_sec,
                  tm.tm_hour < 12 ? "AM" : "PM");
  } else {
    std::strftime(buf, sizeof buf, "%X", &tm);
  }
  return buf;
}

}  // namespace

std::string FormatGeneralDate(double ole) {
  std::tm tm{};
  if (!OleDateToTm(ole, &tm)) return FormatNumber(ole);
  const bool midnight = tm.tm_hour == 0 && tm.tm_min == 0 && tm.tm_sec == 0;
  const bool dayZero = std::trunc(ole) == 0;
  if (dayZero && !midnight) return FormatTimePart(tm);
  if (midnight) return FormatDatePart(tm);
  return FormatDatePart(tm) + " " + FormatTimePart(tm);
}

std::string FormatNumber(double value) {
  char buf[64];
  if (std::isfinite(value) && value == std::trunc(value) && std::fabs(value) < 1e15) {
    std::snprintf(buf, sizeof buf, "%.0f", value);
    return buf;
  }
  auto res = std::to_chars(buf, buf + sizeof buf, value);
  std::string text(buf, res.ptr);
  // to_chars writes "1.5e+15"; the product's form is "1.5E+15".
  for (char& c : text) {
    if (c == 'e') c = 'E';
  }
  return text;
}

}  // namespace gorvan
