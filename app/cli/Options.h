#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "app/cli/Program.h"
#include "folvant/book/Entries.h"

namespace folvant::app {

// Reading option values. A value that does not read is a usage error (exit status 2).

// An option check: the value is a day written YYYY-MM-DD.
CLI::Validator IsoDate();
// An option check: the value is a whole number, 0 or more.
CLI::Validator ZeroOrMore();

// An option check for amounts: the value reads as an amount the user types (their decimal and
// thousands separators; no NaN, infinities, exponents or amounts beyond what a register holds)
// and is rewritten as plain digits ("-1234.50") for the option's number to take. Give it with
// transform(), not check(): a check cannot rewrite the value.
CLI::Validator AmountValue();

// A split line item as typed: CATEGORY=AMOUNT[:DESCRIPTION]; the category may be empty and may
// hold colons ("Food:Groceries=-40:weekly shop"). None, with the problem, when it does not read.
std::optional<SplitFields> ReadSplit(const std::string& text, std::string* problem);
// An option check: the value reads with ReadSplit.
CLI::Validator SplitValue();

// A date number as YYYY-MM-DD.
std::string FormatDateNumber(std::int32_t date);
// Parses YYYY-MM-DD (or YYYYMMDD) into a date number; false when it is not a valid day.
bool ParseDateNumber(std::string_view text, std::int32_t& date);

}  // namespace folvant::app
