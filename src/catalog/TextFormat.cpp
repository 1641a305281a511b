#include "catalog/TextFormat.h"

#include <charconv>
#include <clocale>
#include <cstdlib>
#include <locale.h>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "catalog/OleDate.h"

namespace gorvan {
namespace {

// The date locale; null for the C form. Set at start-up only.
locale_t g_dateLocale = nullptr;

bool IsCName(const std::string& name) {
  return name.empty() || name == "C" || name == "POSIX" || name.rfind("C.", 0) == 0;
}

std::string FormatDatePart(const std::tm& tm) {
  char buf[64];
  if (!g_dateLocale) {
    std::snprintf(buf, sizeof buf, "%d/%d/%d", tm.tm_mon + 1, tm.tm_mday, tm.tm_year + 1900);
  } else if (strftime_l(buf, sizeof buf, "%x", &tm, g_dateLocale) == 0) {
    buf[0] = '\0';
  }
  return buf;
}

std::string FormatTimePart(const std::tm& tm) {
  char buf[64];
  if (!g_dateLocale) {
    const int h12 = tm.tm_hour % 12 == 0 ? 12 : tm.tm_hour % 12;
    std::snprintf(buf, sizeof buf, "%d:%02d:%02d %s", h12, tm.tm_min, tm.tm_sec,
                  tm.tm_hour < 12 ? "AM" : "PM");
  } else if (strftime_l(buf, sizeof buf, "%X", &tm, g_dateLocale) == 0) {
    buf[0] = '\0';
  }
  return buf;
}

}  // namespace

bool SetDateLocale(const std::string& name) {
  locale_t next = nullptr;
  bool ok = true;
  if (!IsCName(name)) {
    next = newlocale(LC_TIME_MASK, name.c_str(), static_cast<locale_t>(nullptr));
    ok = next != nullptr;
  }
  if (g_dateLocale) freelocale(g_dateLocale);
  g_dateLocale = next;
  return ok;
}

bool SetDateLocaleFromEnvironment() {
  for (const char* var : {"LC_ALL", "LC_TIME", "LANG"}) {
    const char* value = std::getenv(var);
    if (value && *value) return SetDateLocale(value);
  }
  return SetDateLocale("");
}

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
