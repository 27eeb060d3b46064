#include "app/Output.h"

#include <charconv>
#include <chrono>
#include <cstdio>
#include <ostream>

#include "folvant/values/LVCurrency.h"
#include "folvant/values/ZELMNumberFormatter.h"
#include "folvant/values/ZELMUtilities.h"

namespace folvant::app {

std::unique_ptr<Book> OpenBook(Context& context) {
  std::string error;
  auto book = Book::Open(Book::Locate(context.book), error);
  if (!book) Fail(context, error);
  return book;
}

bool SaveBook(Context& context, const Book& book) {
  std::string error;
  if (book.Save(error)) return true;
  Fail(context, error);
  return false;
}

int Fail(Context& context, std::string_view message) {
  context.err << "folvant: " << message << '\n';
  return 1;
}

std::string FormatDateNumber(std::int32_t date) {
  char text[32];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d", date / 10000, date / 100 % 100, date % 100);
  return text;
}

bool ParseDateNumber(std::string_view text, std::int32_t& date) {
  std::string digits;
  for (char c : text) {
    if (c != '-') digits.push_back(c);
  }
  if (digits.size() != 8) return false;
  int value = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (result.ec != std::errc() || result.ptr != digits.data() + digits.size()) return false;
  using namespace std::chrono;
  const year_month_day ymd{year{value / 10000}, month{static_cast<unsigned>(value / 100 % 100)},
                           day{static_cast<unsigned>(value % 100)}};
  if (!ymd.ok()) return false;
  date = value;
  return true;
}

std::string JsonString(std::string_view text) {
  std::string out = "\"";
  for (unsigned char c : text) {
    switch (c) {
      case '"':
        out += "\\\"";
        break;
      case '\\':
        out += "\\\\";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\t':
        out += "\\t";
        break;
      default:
        if (c < 0x20) {
          char escape[8];
          std::snprintf(escape, sizeof escape, "\\u%04x", c);
          out += escape;
        } else {
          out.push_back(static_cast<char>(c));
        }
    }
  }
  out += '"';
  return out;
}

std::size_t DisplayWidth(std::string_view text) {
  std::size_t width = 0;
  for (unsigned char c : text) {
    if ((c & 0xC0) != 0x80) ++width;
  }
  return width;
}

std::string Pad(std::string_view text, std::size_t width) {
  if (width == 0) return {};
  if (DisplayWidth(text) <= width) {
    return std::string(text) + std::string(width - DisplayWidth(text), ' ');
  }
  // Cut at a character boundary, leaving room for the ellipsis.
  std::string cut;
  std::size_t characters = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    if ((c & 0xC0) != 0x80) {
      if (characters + 1 == width) break;
      ++characters;
    }
    cut.push_back(text[i]);
  }
  return cut + "…";
}

std::string PadLeft(std::string_view text, std::size_t width) {
  const std::size_t w = DisplayWidth(text);
  return w >= width ? std::string(text) : std::string(width - w, ' ') + std::string(text);
}

std::string FormatAmount(const LVCurrency& currency, double amount) {
  return currency.formatter()->stringForObjectValue(amount).value_or(std::string());
}

std::string PlainAmount(double amount) { return FormatFixed2(amount); }

}  // namespace folvant::app
