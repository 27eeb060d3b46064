#pragma once

#include <gtest/gtest.h>

#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/platform/Clock.h"
#include "folvant/platform/Log.h"
#include "folvant/platform/UserSettings.h"

namespace folvant::testing {

// An empty folder under the system's temporary folder, named after `prefix`, this process and
// the running test, so that tests running at once never share one.
inline std::filesystem::path ScratchDir(std::string_view prefix) {
  std::filesystem::path dir =
      std::filesystem::temp_directory_path() /
      (std::string(prefix) + "-" + std::to_string(::getpid()) + "-" +
       ::testing::UnitTest::GetInstance()->current_test_info()->name());
  std::filesystem::remove_all(dir);
  return dir;
}

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

// Checks that `compare(a, b)` gives -1, 0 or 1 for every pair of `ordered` as their positions
// say, and that the reversed twin gives exactly the opposite. `ordered` holds pointers.
template <typename Pointer, typename Compare, typename Reversed>
void ExpectOrder(const std::vector<Pointer>& ordered, Compare compare, Reversed reversed) {
  for (std::size_t i = 0; i < ordered.size(); ++i) {
    for (std::size_t j = 0; j < ordered.size(); ++j) {
      const int expected = i < j ? -1 : i > j ? 1 : 0;
      EXPECT_EQ(compare(*ordered[i], *ordered[j]), expected) << "positions " << i << ", " << j;
      EXPECT_EQ(reversed(*ordered[i], *ordered[j]), -expected) << "positions " << i << ", " << j;
    }
  }
}

// Reads a whole file as bytes; fails the current test when it cannot.
std::string ReadFileBytes(const std::string& path);

}  // namespace folvant::testing
