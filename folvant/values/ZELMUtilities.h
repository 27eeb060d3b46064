#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "folvant/platform/Clock.h"

namespace folvant {

// The small value rules the whole ledger shares: date numbers, rounding of amounts, amount
// text, the English list joiner and the simple sorts. Free functions without state.

using platform::LocalTime;

// ---- Date numbers -------------------------------------------------------------------------
// A date number is year × 10000 + month × 100 + day (20071231); 19700101 stands for a
// missing date. Calendar dates are local date-times; a date number becomes midnight local time.

inline constexpr std::int32_t kMissingDateNumber = 19700101;

// The date number of a calendar date as seen in the local calendar; no date gives 19700101.
std::int32_t NSCalendarDateToDateNumber(std::optional<LocalTime> date);
std::int32_t dateNumber(std::optional<LocalTime> date);

// Midnight local time of a date number. No range check: year = n / 10000, month =
// (n % 10000) / 100, day = n % 100 (truncating toward zero) go to the calendar as they are,
// so 20071301 is 1 January 2008 and 20080100 is 31 December 2007.
LocalTime DateNumberToNSCalendarDate(std::int32_t n);
LocalTime dateWithDateNumber(std::int32_t n);

// The number of days of the date's month in the date's year (Gregorian).
std::int32_t daysInMonth(LocalTime date);

// The zero-based calendar quarter of the date: 0 for January-March, …, 3 for October-December.
std::int32_t quarterOfYear(LocalTime date);

// ---- Rounding -----------------------------------------------------------------------------
// Conversions of a double to a 64-bit integer here truncate toward zero, saturate at the
// integer's limits and give 0 for NaN, as every number conversion of the program does.

// Two decimals, half away from zero, in plain double arithmetic: truncate((x ± 0.005) × 100)
// × 0.01, with − for negative x. The last step is a product, so RoundValue(1.15) is the double
// nearest 115 × 0.01 (1.1500000000000001), not the double nearest 1.15.
double RoundValue(double x);

// x truncated toward zero to `digits` decimals: TruncateValue(-2.349, 2) == -2.34. A negative
// count makes the scale 0 and the result 0 / 0 (NaN).
double TruncateValue(double x, std::int32_t digits);

// Exactly 0.0 when -0.001 < x < 0.001, otherwise x; keeps cancelled sums from showing "-0.00".
// Inline: summaries call it for every amount they add.
inline double RoundNearZeroValue(double x) { return (x > -0.001 && x < 0.001) ? 0.0 : x; }

// The rounding applied when an amount is set: the shortest decimal text that reads back as x,
// rounded to two decimals half away from zero, read back as a double. So 1.005 becomes 1.01
// and -2.675 becomes -2.68, as a person typing them expects. NaN and infinities are returned
// as they are.
double RoundAmount(double x);

// The decimal digits of |x| × 10^decimals rounded half away from zero, taken from the shortest
// decimal text that reads back as x: RoundedDecimalDigits(1.005, 2) == "101",
// RoundedDecimalDigits(0.004, 2) == "0", RoundedDecimalDigits(12.5, 0) == "13". No leading
// zeros; "0" for zero. x must be finite; a negative count of decimals counts as 0.
std::string RoundedDecimalDigits(double x, int decimals);

// ---- Amount text --------------------------------------------------------------------------

// x with two decimals, as "%.2f" prints it, independent of the C locale: "-0.50", "nan".
std::string FormatFixed2(double x);

// |x| with two decimals and "," every three digits left of the point, "-" in front when
// x < 0: -1234567.891 → "-1,234,567.89", -0.001 → "-0.00", 999.999 → "1,000.00".
std::string FloatToCommasAmountString(double x);

// As FloatToCommasAmountString with "-$" or "$" in front: -1234.5 → "-$1,234.50".
std::string FloatToDollarCommasAmountString(double x);

// x with two decimals and no grouping, "$" after the minus sign: -12.5 → "-$12.50".
std::string FloatToDollarAmountString(double x);

// ---- Lists and sorting --------------------------------------------------------------------

// "a", "a and b", "a, b and c" (never a comma before the conjunction); empty gives "". The
// conjunction is the localized word for "and".
std::string StringsToEnglishList(std::span<const std::string> items);

// In-place ascending bubble sorts over `count` elements. Every pass runs (no early exit),
// equal values never move, and a pair that holds a NaN is never swapped.
void BubbleSort_Long(std::int32_t* array, std::int32_t count);
void BubbleSort_Float(float* array, std::int32_t count);
void BubbleSort_Double(double* array, std::int32_t count);

}  // namespace folvant
