#include "folvant/platform/Clock.h"

#include <mutex>

#include "folvant/platform/CivilDate.h"
#include "folvant/platform/LocalCalendar.h"

namespace folvant::platform {
namespace {

// Any thread may ask for the time while another pins or releases the clock, so the pin is only
// read and written under the lock.
std::mutex pin_mutex;
std::optional<LocalTime> pinned;

std::optional<LocalTime> CurrentPin() {
  const std::lock_guard<std::mutex> lock(pin_mutex);
  return pinned;
}

}  // namespace

LocalTime Now() {
  if (const std::optional<LocalTime> pin = CurrentPin()) return *pin;
  return ToLocalTime(std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()));
}

std::int32_t Today() {
  return DateNumberFromDay(std::chrono::floor<std::chrono::days>(Now()).time_since_epoch().count());
}

std::chrono::sys_seconds NowUtc() {
  // A pinned time is a local time: it is read in the local zone.
  if (const std::optional<LocalTime> pin = CurrentPin()) return ToAbsoluteTime(*pin);
  return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
}

std::optional<LocalTime> PinClock(std::optional<LocalTime> when) {
  const std::lock_guard<std::mutex> lock(pin_mutex);
  std::optional<LocalTime> previous = pinned;
  pinned = when;
  return previous;
}

}  // namespace folvant::platform
