#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace folvant {

// The largest amount a register holds. Past it a double no longer has cents to keep, and one
// such amount would spoil every balance after it.
inline constexpr double kLargestAmount = 1e15;

// Reads an amount as a person types it, with the user's decimal and thousands separators
// (platform::CurrentUserSettings): "-1,234.50", "1234.5", ".75", "+12". Thousands separators,
// when used, must group the digits by three. Anything else is refused with the reason in
// `problem`: an empty text, letters, "12,50" where "." is the decimal mark, exponents, NaN and
// the infinities, and amounts beyond kLargestAmount. The value is not rounded: the entry that
// takes it rounds it to cents.
std::optional<double> ReadAmount(std::string_view text, std::string* problem = nullptr);

}  // namespace folvant
