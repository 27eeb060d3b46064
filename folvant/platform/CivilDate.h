#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Civil dates: date numbers (year x 10000 + month x 100 + day) written and read as people
// write them.
namespace folvant::platform {

// A date number as YYYY-MM-DD (the year with at least four digits).
std::string FormatIsoDate(std::int32_t date);

// Reads YYYY-MM-DD (or YYYYMMDD) into a date number; false when the text is not a real day.
bool ParseIsoDate(std::string_view text, std::int32_t& date);

}  // namespace folvant::platform
