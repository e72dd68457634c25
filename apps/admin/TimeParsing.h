// TimeParsing.h: points in time as people write and read them.
#ifndef ORVO_ADMIN_TIMEPARSING_H
#define ORVO_ADMIN_TIMEPARSING_H

#include <string>

namespace orvo::admin {

/// How --help describes what parseMoment takes.
inline constexpr const char* momentForms =
    "дата 2026-03-31, время 2026-03-31T14:00 (местное; с Z или +03:00 - того пояса) или давность: "
    "90d, 12h, 30m";

/// Seconds since 1970-01-01 UTC: of a date or time, or of so many days (d), hours (h) or minutes
/// (m) ago. Throws Failure; `option` names the text there.
double parseMoment(const std::string& text, const std::string& option);
/// The local time with its zone, to the second; empty for a time outside the years 0 to 9999.
std::string shownMoment(double seconds);

} // namespace orvo::admin

#endif
