#pragma once
// OLE dates: whole days since 30 December 1899 with the time of day as the
// fraction, in local time. Every date in a catalog is stored this way.

#include <ctime>
#include <string>

namespace gorvan {

// The OLE date of a UTC time stamp, converted to local time.
double OleDateFromTime(std::time_t utc);
// Now, as an OLE date in local time.
double OleDateNow();
// The UTC time stamp of a local OLE date (the inverse of OleDateFromTime).
std::time_t TimeFromOleDate(double ole);
// Splits an OLE date into its calendar fields (local, seconds rounded).
// Returns false for values outside the years 100..9999.
bool OleDateToTm(double ole, std::tm* out);

}  // namespace gorvan
