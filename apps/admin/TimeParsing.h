// TimeParsing.h: points in time as people write and read them.
#ifndef ORVO_ADMIN_TIMEPARSING_H
#define ORVO_ADMIN_TIMEPARSING_H

#include <QString>

#include <string>

namespace orvo::admin {

/// How --help describes what parseMoment takes.
QString momentForms();

/// Seconds since 1970-01-01 UTC: of a date or time, or of so many days (d), hours (h) or minutes
/// (m) ago. Throws Failure; `option` names the text there.
double parseMoment(const std::string& text, const std::string& option);
/// The local time with its zone, to the second; empty for a time outside the years 0 to 9999.
std::string shownMoment(double seconds);

} // namespace orvo::admin

#endif
