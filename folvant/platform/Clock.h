#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace folvant::platform {

// The one source of "now". Only Clock.cpp reads the system clock; tests pin it.
using LocalTime = std::chrono::local_seconds;

// The current local date and time (the pinned one when pinned).
LocalTime Now();

// Today as a date number YYYYMMDD in the local time zone.
std::int32_t Today();

// The current absolute time (for property-list dates and the format upgrade).
std::chrono::sys_seconds NowUtc();

// Pins "now" to a local date and time; nullopt releases the pin. Returns the previous pin.
std::optional<LocalTime> PinClock(std::optional<LocalTime> when);

}  // namespace folvant::platform
