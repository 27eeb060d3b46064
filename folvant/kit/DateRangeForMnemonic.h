#pragma once

#include <cstdint>
#include <optional>

namespace folvant {

// The named relative date ranges, counted from today. Weeks begin on Sunday, quarters are
// calendar quarters, "last" is the whole previous unit, "this" the whole current unit, and
// the "to date" ranges run from the first day of the current unit through today.
inline constexpr std::int32_t kMnemonicToday = 0;
inline constexpr std::int32_t kMnemonicYesterday = 1;
inline constexpr std::int32_t kMnemonicLastWeek = 2;
inline constexpr std::int32_t kMnemonicLastMonth = 3;
inline constexpr std::int32_t kMnemonicLastQuarter = 4;
inline constexpr std::int32_t kMnemonicLastYear = 5;
inline constexpr std::int32_t kMnemonicThisWeek = 6;
inline constexpr std::int32_t kMnemonicThisMonth = 7;
inline constexpr std::int32_t kMnemonicThisQuarter = 8;
inline constexpr std::int32_t kMnemonicThisYear = 9;
inline constexpr std::int32_t kMnemonicWeekToDate = 10;
inline constexpr std::int32_t kMnemonicMonthToDate = 11;
inline constexpr std::int32_t kMnemonicQuarterToDate = 12;
inline constexpr std::int32_t kMnemonicYearToDate = 13;

// First and last day of a range, both included, as date numbers (YYYYMMDD).
struct DateRange {
  std::int32_t start = 0;
  std::int32_t end = 0;
  bool operator==(const DateRange&) const = default;
};

// The range of a mnemonic code counted from platform::Today(); nullopt for an unknown code.
// Example: on Wednesday 20080305, code 2 (last week) gives {20080224, 20080301}.
std::optional<DateRange> DateRangeForMnemonic(std::int32_t code);

// The same counted from the given day (a valid date number), for callers that resolve many
// ranges against one "today"; nullopt also when `today` is not a valid date.
std::optional<DateRange> DateRangeForMnemonic(std::int32_t code, std::int32_t today);

}  // namespace folvant
