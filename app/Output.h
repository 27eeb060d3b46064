#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "folvant/book/Book.h"
#include "app/Program.h"

namespace folvant {
class LVCurrency;
}

namespace folvant::app {

// Where the book is: --book, else $FOLVANT_BOOK, else $XDG_DATA_HOME/folvant/book (with
// ~/.local/share as the default data directory).
std::filesystem::path LocateBook(std::string_view option);
// Opens the book named by the global options, for reading or for changing; on failure prints
// one line and returns nullptr.
std::unique_ptr<Book> OpenBook(Context& context, Book::Access access = Book::Access::kRead);
// Saves the book; on failure prints one line and returns false.
bool SaveBook(Context& context, Book& book);
// Prints "folvant: <message>" on the error stream and returns the failure status 1.
int Fail(Context& context, std::string_view message);
// Prints the error (and with --verbose what lies behind it) and returns 1.
int Fail(Context& context, const BookError& error);
// Prints the book's warnings, one line each.
void PrintWarnings(Context& context, Book& book);

// A date number as YYYY-MM-DD.
std::string FormatDateNumber(std::int32_t date);
// Parses YYYY-MM-DD (or YYYYMMDD) into a date number; false when it is not a valid day.
bool ParseDateNumber(std::string_view text, std::int32_t& date);
// An option check: the value is a day written YYYY-MM-DD (a usage error otherwise).
CLI::Validator IsoDate();
// An option check: the value is a whole number, 0 or more.
CLI::Validator ZeroOrMore();
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
