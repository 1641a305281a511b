#pragma once
// How dates and numbers become text wherever the program shows or exports them.

#include <string>

namespace gorvan {

// The "general date format": the date locale's short date and long time; the
// date alone at midnight, the time alone on day 0 (30 Dec 1899). In the C
// locale: "M/D/YYYY h:mm:ss AM".
std::string FormatGeneralDate(double ole);

// The locale dates are written in. It is chosen once at start-up, before any
// other thread starts, and nothing else changes it: the process locale (which
// a toolkit may set) plays no part, so both programs write the same date for
// the same catalog and environment. Until it is set, and for "", "C", "POSIX"
// and the C.UTF-8 locales, dates take the C form. False (and the C form) when
// the system has no locale of that name.
bool SetDateLocale(const std::string& name);
// The user's locale for dates: $LC_ALL, else $LC_TIME, else $LANG.
bool SetDateLocaleFromEnvironment();

// Sizes and other numbers: integers below 1e15 in plain digits, anything else
// in the shortest round-trip form with an upper-case exponent ("1.5E+15").
std::string FormatNumber(double value);

}  // namespace gorvan
