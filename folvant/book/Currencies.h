#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/book/BookError.h"

namespace folvant {

class Book;

// The book's currencies: the base currency (first, rate 1) and the others with their rate, the
// value of one unit in base units.

struct CurrencyLine {
  std::string code;
  std::string description;
  std::string symbol;
  bool symbolFirst = true;
  std::string thousands;
  std::string decimal;
  double rate = 1.0;
  std::int32_t lastUpdate = 0;  // date number of the last rate change
  bool base = false;
  std::int64_t accounts = 0;  // accounts kept in it
};

// What to change; nullopt keeps what there is.
struct CurrencySettings {
  std::optional<std::string> code;
  std::optional<std::string> description;
  std::optional<std::string> symbol;
  std::optional<bool> symbolFirst;
  std::optional<std::string> thousands;
  std::optional<std::string> decimal;
  std::optional<double> rate;
};

BookResult<std::vector<CurrencyLine>> ListCurrencies(Book& book);
// A new currency. A code must be 3 characters long and not the code of another currency,
// ignoring case. One that is a known currency starts from its usual written form; any other
// starts with its code as name and symbol.
BookResult<CurrencyLine> NewCurrency(Book& book, std::string_view code,
                                     const CurrencySettings& settings);
// Changes a currency. A new code is checked as a new currency's is; the accounts kept in the
// currency are written again so that their files name it. The base currency's rate stays 1.
BookResult<CurrencyLine> EditCurrency(Book& book, std::string_view code,
                                      const CurrencySettings& settings);

}  // namespace folvant
