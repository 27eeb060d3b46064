#include "folvant/platform/Clock.h"

#include <ctime>

namespace folvant::platform {
namespace {

std::optional<LocalTime> pinned;

LocalTime ToLocal(std::time_t t) {
  std::tm tm{};
  localtime_r(&t, &tm);
  using namespace std::chrono;
  const local_days day{year{tm.tm_year + 1900} / (tm.tm_mon + 1) / tm.tm_mday};
  return day + hours{tm.tm_hour} + minutes{tm.tm_min} + seconds{tm.tm_sec};
}

}  // namespace

LocalTime Now() {
  if (pinned) return *pinned;
  return ToLocal(std::time(nullptr));
}

std::int32_t Today() {
  using namespace std::chrono;
  const year_month_day ymd{floor<days>(Now())};
  return static_cast<int>(ymd.year()) * 10000 + static_cast<int>(unsigned(ymd.month())) * 100 +
         static_cast<int>(unsigned(ymd.day()));
}

std::chrono::sys_seconds NowUtc() {
  if (pinned) {
    // Interpret the pinned local time in the local zone.
    using namespace std::chrono;
    const auto day = floor<days>(*pinned);
    const year_month_day ymd{day};
    const hh_mm_ss hms{*pinned - day};
    std::tm tm{};
    tm.tm_year = static_cast<int>(ymd.year()) - 1900;
    tm.tm_mon = static_cast<int>(unsigned(ymd.month())) - 1;
    tm.tm_mday = static_cast<int>(unsigned(ymd.day()));
    tm.tm_hour = static_cast<int>(hms.hours().count());
    tm.tm_min = static_cast<int>(hms.minutes().count());
    tm.tm_sec = static_cast<int>(hms.seconds().count());
    tm.tm_isdst = -1;
    return sys_seconds{seconds{std::mktime(&tm)}};
  }
  return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
}

std::optional<LocalTime> PinClock(std::optional<LocalTime> when) {
  auto previous = pinned;
  pinned = when;
  return previous;
}

}  // namespace folvant::platform
