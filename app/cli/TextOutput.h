#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace folvant {
class LVCurrency;
}

namespace folvant::app {

// Older text helpers of the commands that do not yet write through app/render.

// A JSON string literal.
std::string JsonString(std::string_view text);
// Number of characters (code points) of a UTF-8 text, for lining up columns.
std::size_t DisplayWidth(std::string_view text);
// The text cut or padded with spaces to `width` characters (cut texts end in "…").
std::string Pad(std::string_view text, std::size_t width);
// The text right-aligned in `width` characters.
std::string PadLeft(std::string_view text, std::size_t width);
// An amount written in a currency ("$ 1,234.50", "1.234,50 €").
std::string FormatAmount(const LVCurrency& currency, double amount);
// Two-decimal text of an amount, locale-free ("-1234.50").
std::string PlainAmount(double amount);

}  // namespace folvant::app
