#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "folvant/platform/Clock.h"
#include "folvant/platform/Log.h"
#include "folvant/platform/UserSettings.h"

namespace folvant::testing {

// Records every ZELMLog message while alive; tests assert the exact list.
using LogCapture = LogCollector;

// Pins "now" to a local date (YYYYMMDD) and time of day while alive.
class ScopedClockPin {
 public:
  explicit ScopedClockPin(int date_number, int hour = 12, int minute = 0, int second = 0);
  ~ScopedClockPin() { platform::PinClock(previous_); }
  ScopedClockPin(const ScopedClockPin&) = delete;
  ScopedClockPin& operator=(const ScopedClockPin&) = delete;

 private:
  std::optional<platform::LocalTime> previous_;
};

// Replaces the user settings while alive.
class ScopedSettingsPin {
 public:
  explicit ScopedSettingsPin(platform::UserSettings settings)
      : previous_(platform::SetUserSettings(std::move(settings))) {}
  ~ScopedSettingsPin() { platform::SetUserSettings(previous_); }
  ScopedSettingsPin(const ScopedSettingsPin&) = delete;
  ScopedSettingsPin& operator=(const ScopedSettingsPin&) = delete;

 private:
  platform::UserSettings previous_;
};

// Reads a whole file as bytes; fails the current test when it cannot.
std::string ReadFileBytes(const std::string& path);

}  // namespace folvant::testing
