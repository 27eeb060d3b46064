#include "folvant/platform/LocalCalendar.h"

#include <cmath>
#include <ctime>
#include <limits>
#include <vector>

#include "folvant/platform/UserSettings.h"

namespace folvant::platform {
namespace {

using std::chrono::local_seconds;
using std::chrono::seconds;
using std::chrono::sys_seconds;

constexpr std::int64_t kSecondsPerDay = 86400;
// 2001-01-01 00:00:00 UTC in seconds since 1970-01-01 00:00:00 UTC.
constexpr std::int64_t kReferenceDateOffset = 978307200;

int ClampToInt(std::int64_t v) {
  if (v > std::numeric_limits<int>::max()) return std::numeric_limits<int>::max();
  if (v < std::numeric_limits<int>::min()) return std::numeric_limits<int>::min();
  return static_cast<int>(v);
}

// The broken-down fields of a local date-time (weekday and day of year included), without
// consulting the zone.
std::tm CivilTm(LocalTime time) {
  const std::int64_t total = time.time_since_epoch().count();
  const std::int64_t days = FloorDiv(total, kSecondsPerDay);
  const std::int64_t secs = total - days * kSecondsPerDay;
  const CivilDate day = CivilFromDay(days);
  std::tm tm{};
  tm.tm_year = ClampToInt(day.year - 1900);
  tm.tm_mon = day.month - 1;
  tm.tm_mday = day.day;
  tm.tm_hour = static_cast<int>(secs / 3600);
  tm.tm_min = static_cast<int>(secs / 60 % 60);
  tm.tm_sec = static_cast<int>(secs % 60);
  tm.tm_wday = Weekday(days);
  tm.tm_yday = static_cast<int>(days - DayFromCivil(day.year, 1, 1));
  tm.tm_isdst = -1;
  return tm;
}

}  // namespace

CivilDay DayOf(LocalTime time) {
  return CivilFromDay(FloorDiv(time.time_since_epoch().count(), kSecondsPerDay));
}

int WeekdayOf(LocalTime time) {
  return Weekday(FloorDiv(time.time_since_epoch().count(), kSecondsPerDay));
}

LocalTime MakeLocalTime(std::int64_t year, std::int64_t month, std::int64_t day, int hour,
                        int minute, int second) {
  const Day days = DayFromCivil(year, month, day);
  return LocalTime{seconds{days * kSecondsPerDay + std::int64_t{hour} * 3600 +
                           std::int64_t{minute} * 60 + second}};
}

sys_seconds ToAbsoluteTime(LocalTime time) {
  std::tm tm = CivilTm(time);
  tm.tm_wday = -1;  // mktime sets it only on success
  const std::time_t t = std::mktime(&tm);
  if (tm.tm_wday < 0) {
    // Outside what the zone database describes: treat the local time as UTC.
    return sys_seconds{time.time_since_epoch()};
  }
  return sys_seconds{seconds{t}};
}

LocalTime ToLocalTime(sys_seconds time) {
  const std::time_t t = time.time_since_epoch().count();
  std::tm tm{};
  if (localtime_r(&t, &tm) == nullptr) return LocalTime{time.time_since_epoch()};
  return MakeLocalTime(std::int64_t{tm.tm_year} + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour,
                       tm.tm_min, tm.tm_sec);
}

LocalTime FromPlistDate(plist::Date date) {
  const double s = std::floor(date.secondsSinceReferenceDate);
  // Beyond ±2^62 seconds no calendar is meaningful; saturate instead of overflowing.
  constexpr double kLimit = 4.6e18;
  std::int64_t whole = 0;
  if (s >= kLimit) {
    whole = static_cast<std::int64_t>(kLimit);
  } else if (s <= -kLimit) {
    whole = -static_cast<std::int64_t>(kLimit);
  } else if (!std::isnan(s)) {
    whole = static_cast<std::int64_t>(s);
  }
  return ToLocalTime(sys_seconds{seconds{whole + kReferenceDateOffset}});
}

plist::Date ToPlistDate(LocalTime time) {
  const sys_seconds absolute = ToAbsoluteTime(time);
  return plist::Date{
      static_cast<double>(absolute.time_since_epoch().count() - kReferenceDateOffset)};
}

std::string FormatLocalTime(LocalTime time, std::string_view format) {
  if (format.empty()) return {};
  std::tm tm = CivilTm(time);
  // Let the zone fill in the daylight-saving flag and zone name for %Z and %z, when it agrees
  // with the civil fields (it does not for a time skipped by a daylight-saving change).
  std::tm zoned = tm;
  zoned.tm_wday = -1;  // mktime sets it only on success
  const std::time_t t = std::mktime(&zoned);
  std::tm local{};
  if (zoned.tm_wday >= 0 && localtime_r(&t, &local) != nullptr && local.tm_year == tm.tm_year &&
      local.tm_yday == tm.tm_yday && local.tm_hour == tm.tm_hour && local.tm_min == tm.tm_min &&
      local.tm_sec == tm.tm_sec) {
    tm = local;
  }
  // A trailing space tells "nothing printed" (such as "%p" in some locales) apart from "did not
  // fit", which strftime both report as 0; the space is dropped afterwards.
  const std::string pattern = std::string(format.substr(0, format.find('\0'))) + ' ';
  std::vector<char> buffer(pattern.size() * 4 + 64);
  for (int attempt = 0; attempt < 4; ++attempt) {
    const std::size_t n = std::strftime(buffer.data(), buffer.size(), pattern.c_str(), &tm);
    if (n > 0) return std::string(buffer.data(), n - 1);
    // No conversion prints more than a few dozen characters.
    buffer.resize(buffer.size() * 8);
  }
  return {};
}

std::string FormatShortDate(LocalTime time) {
  return FormatLocalTime(time, CurrentUserSettings().shortDateFormat);
}

std::optional<LocalTime> ParseLocalTime(std::string_view text, std::string_view format) {
  const std::string input(text);
  const std::string pattern(format);
  if (input.find('\0') != std::string::npos) return std::nullopt;
  std::tm tm{};
  tm.tm_year = 70;
  tm.tm_mday = 1;
  const char* end = strptime(input.c_str(), pattern.c_str(), &tm);
  if (end == nullptr) return std::nullopt;
  for (; *end != '\0'; ++end) {
    if (*end != ' ' && *end != '\t' && *end != '\n' && *end != '\r') return std::nullopt;
  }
  if (tm.tm_mon < 0 || tm.tm_mon > 11 || tm.tm_mday < 1) return std::nullopt;
  const std::int64_t year = std::int64_t{tm.tm_year} + 1900;
  if (tm.tm_mday > MonthLength(year, tm.tm_mon + 1)) return std::nullopt;
  return MakeLocalTime(year, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min,
                       tm.tm_sec > 59 ? 59 : tm.tm_sec);
}

}  // namespace folvant::platform
