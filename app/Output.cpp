#include "app/Output.h"

#include <charconv>
#include <climits>
#include <cstdlib>
#include <cstdio>
#include <ostream>

#include "folvant/platform/CivilDate.h"
#include "folvant/values/LVCurrency.h"
#include "folvant/values/ZELMNumberFormatter.h"
#include "folvant/values/ZELMUtilities.h"

namespace folvant::app {

std::filesystem::path LocateBook(std::string_view option) {
  if (!option.empty()) return std::filesystem::path(option);
  if (const char* env = std::getenv("FOLVANT_BOOK"); env != nullptr && *env != '\0') {
    return std::filesystem::path(env);
  }
  std::filesystem::path data;
  if (const char* xdg = std::getenv("XDG_DATA_HOME"); xdg != nullptr && *xdg != '\0') {
    data = xdg;
  } else if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') {
    data = std::filesystem::path(home) / ".local" / "share";
  } else {
    data = ".";
  }
  return data / "folvant" / "book";
}

std::unique_ptr<Book> OpenBook(Context& context, Book::Access access) {
  Book::OpenOptions options;
  options.access = access;
  if (const char* password = std::getenv("FOLVANT_PASSWORD")) options.password = password;
  auto book = Book::Open(LocateBook(context.book), options);
  if (!book) {
    Fail(context, book.error());
    return nullptr;
  }
  return std::move(*book);
}

bool SaveBook(Context& context, Book& book) {
  if (auto failed = book.Save()) {
    Fail(context, *failed);
    return false;
  }
  return true;
}

int Fail(Context& context, std::string_view message) {
  context.err << "folvant: " << message << '\n';
  return 1;
}

int Fail(Context& context, const BookError& error) {
  Fail(context, error.message);
  if (context.verbose) {
    for (const std::string& detail : error.details) context.err << "  " << detail << '\n';
  } else if (!error.details.empty()) {
    context.err << "folvant: (--verbose lists the " << error.details.size() << " messages)\n";
  }
  return 1;
}

void PrintWarnings(Context& context, Book& book) {
  for (const std::string& warning : book.TakeWarnings()) {
    context.err << "folvant: warning: " << warning << '\n';
  }
}

std::string FormatDateNumber(std::int32_t date) { return platform::FormatIsoDate(date); }

bool ParseDateNumber(std::string_view text, std::int32_t& date) {
  return platform::ParseIsoDate(text, date);
}

CLI::Validator IsoDate() {
  return CLI::Validator(
      [](const std::string& value) -> std::string {
        std::int32_t date = 0;
        return ParseDateNumber(value, date) ? std::string()
                                            : "\"" + value + "\" is not a date (YYYY-MM-DD)";
      },
      "");
}

CLI::Validator ZeroOrMore() {
  return CLI::Validator(
      [](const std::string& value) -> std::string {
        long long n = 0;
        const auto result = std::from_chars(value.data(), value.data() + value.size(), n);
        if (result.ec == std::errc() && result.ptr == value.data() + value.size() && n >= 0 &&
            n <= INT32_MAX) {
          return {};
        }
        return "\"" + value + "\": must be a whole number, 0 or more";
      },
      "");
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
