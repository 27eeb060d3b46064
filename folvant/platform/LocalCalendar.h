#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "folvant/platform/CivilDate.h"
#include "folvant/platform/Clock.h"
#include "folvant/platform/plist/Value.h"

namespace folvant::platform {

// Calendar dates in the user's local time zone. Dates are held as local date-times without a
// zone (LocalTime); the zone is consulted only when converting to or from absolute time, which
// happens at the edges (property-list dates, the format upgrade).

// A civil day of the proleptic Gregorian calendar.
using CivilDay = CivilDate;

// The year, month and day of a local date-time.
CivilDay DayOf(LocalTime time);

// The weekday of a local date-time, 0 = Sunday to 6 = Saturday.
int WeekdayOf(LocalTime time);

// The local date-time of a year, month and day at a time of day. Fields out of range carry
// into the next larger unit as a calendar does: month 13 of 2007 is January 2008, day 0 is the
// last day of the previous month, day 32 of January is 1 February. Years must lie within
// ±10^9 and months and days within the 32-bit range (every date number does).
LocalTime MakeLocalTime(std::int64_t year, std::int64_t month, std::int64_t day, int hour = 0,
                        int minute = 0, int second = 0);

// Local date-time to absolute time in the local zone (mktime rules: a time skipped by a
// daylight-saving change moves forward, an ambiguous one takes the zone's first choice).
std::chrono::sys_seconds ToAbsoluteTime(LocalTime time);

// Absolute time to local date-time in the local zone.
LocalTime ToLocalTime(std::chrono::sys_seconds time);

// A property-list date (seconds since 2001-01-01 00:00:00 UTC) as a local date-time (whole
// seconds, rounded down), and back.
LocalTime FromPlistDate(plist::Date date);
plist::Date ToPlistDate(LocalTime time);

// strftime-style text of a local date-time, e.g. FormatLocalTime(t, "%m/%d/%y") == "02/29/08".
std::string FormatLocalTime(LocalTime time, std::string_view format);

// The text of a local date-time in the user's short date format.
std::string FormatShortDate(LocalTime time);

// strptime-style parsing of a whole text (trailing blanks allowed). Fields that the format does
// not mention take 1 January 1970 at 00:00:00. A day beyond the end of its month, a text that
// does not match the format, or leftover characters give nullopt.
std::optional<LocalTime> ParseLocalTime(std::string_view text, std::string_view format);

}  // namespace folvant::platform
