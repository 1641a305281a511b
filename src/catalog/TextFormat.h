#pragma once
// How dates and numbers become text wherever the program shows or exports them.

#include <string>

namespace gorvan {

// The "general date format": the locale's short date and long time; the date
// alone at midnight, the time alone on day 0 (30 Dec 1899). In the C locale:
// "M/D/YYYY h:mm:ss AM".
std::string FormatGeneralDate(double ole);

// Sizes and other numbers: integers below 1e15 in plain digits, anything else
// in the shortest round-trip form with an upper-case exponent ("1.5E+15").
std::string FormatNumber(double value);

}  // namespace gorvan
