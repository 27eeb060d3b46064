#include "folvant/book/Currencies.h"

#include <cmath>
#include <memory>

#include "folvant/book/Book.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/platform/Clock.h"
#include "folvant/platform/Text.h"
#include "folvant/values/LVCurrency.h"
#include "folvant/values/LVEditingCurrency.h"

namespace folvant {
namespace {

using Kind = BookError::Kind;

std::string Quote(std::string_view text) { return "\"" + std::string(text) + "\""; }

std::optional<BookError> RefuseCode(Book& book, std::string_view code, const LVCurrency* editing) {
  if (auto problem = ValidateCurrencyCode(code, book.currencies(), editing)) {
    return BookError::Of(Kind::kInvalid,
                         Quote(code) + ": " + problem->statement + " " + problem->message);
  }
  return std::nullopt;
}

std::optional<BookError> RefuseSettings(Book& book, const LVCurrency& currency,
                                        const CurrencySettings& settings) {
  if (settings.rate) {
    const double rate = *settings.rate;
    if (!std::isfinite(rate) || rate <= 0.0) {
      return BookError::Of(Kind::kInvalid, "a rate must be a number above 0");
    }
    if (&currency == book.currency().get() && rate != 1.0) {
      return BookError::Of(Kind::kInvalid, Quote(currency.code()) +
                                               " is the base currency: its rate is 1, the unit "
                                               "the other rates are given in");
    }
  }
  if (settings.decimal && settings.decimal->empty()) {
    return BookError::Of(Kind::kInvalid, "a decimal separator cannot be empty");
  }
  const std::string decimal = settings.decimal.value_or(currency.decimalSeparator());
  const std::string thousands = settings.thousands.value_or(currency.thousandsSeparator());
  if (decimal == thousands) {
    return BookError::Of(Kind::kInvalid, "the decimal and thousands separators must differ");
  }
  return std::nullopt;
}

void Apply(LVCurrency& currency, const CurrencySettings& settings) {
  if (settings.code) currency.setCode(*settings.code);
  if (settings.description) currency.setDescription(*settings.description);
  if (settings.symbol) currency.setSymbol(*settings.symbol);
  if (settings.symbolFirst) currency.setSymbolPrecedesAmounts(*settings.symbolFirst);
  if (settings.thousands) currency.setThousandsSeparator(*settings.thousands);
  if (settings.decimal) currency.setDecimalSeparator(*settings.decimal);
  if (settings.rate) {
    currency.setRate(*settings.rate);
    currency.setLastUpdate(platform::Today());
  }
}

CurrencyLine LineOf(Book& book, const std::shared_ptr<LVCurrency>& c, std::int64_t accounts) {
  return {c->code(),
          c->description(),
          c->symbol(),
          c->symbolPrecedesAmounts(),
          c->thousandsSeparator(),
          c->decimalSeparator(),
          c->rate(),
          c->lastUpdate(),
          c == book.currency(),
          accounts};
}

std::string Capitals(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return upper;
}

std::shared_ptr<LVCurrency> Find(Book& book, std::string_view code) {
  for (const auto& c : book.currencies()) {
    if (platform::CaseInsensitiveEqual(c->code(), code)) return c;
  }
  return nullptr;
}

}  // namespace

BookResult<std::vector<CurrencyLine>> ListCurrencies(Book& book) {
  std::vector<CurrencyLine> lines;
  const std::vector<AccountListing> accounts = book.ListAccounts();
  for (const auto& c : book.currencies()) {
    std::int64_t users = 0;
    for (const AccountListing& a : accounts) users += a.currency == c->code();
    lines.push_back(LineOf(book, c, users));
  }
  return lines;
}

BookResult<CurrencyLine> NewCurrency(Book& book, std::string_view typed,
                                     const CurrencySettings& given) {
  // Currency codes are written in capitals, whatever case they were typed in.
  const std::string code = Capitals(typed);
  CurrencySettings settings = given;
  if (settings.code) settings.code = Capitals(*settings.code);
  if (!book.writable()) {
    return Unexpected{BookError::Of(Kind::kReadOnly, "the book was opened for reading only")};
  }
  if (auto refused = RefuseCode(book, code, nullptr)) return Unexpected{*refused};
  std::shared_ptr<LVCurrency> currency;
  if (auto known = book.RegisterCurrency(code)) {
    currency = *known;
    book.currencies().pop_back();  // put back below, once the settings are known to be good
  } else {
    currency = std::make_shared<LVCurrency>(code, code, code, true, ",", ".", 1.0,
                                            platform::Today());
  }
  if (auto refused = RefuseSettings(book, *currency, settings)) return Unexpected{*refused};
  Apply(*currency, settings);
  book.currencies().push_back(currency);
  book.BookChanged();
  return LineOf(book, currency, 0);
}

BookResult<CurrencyLine> EditCurrency(Book& book, std::string_view code,
                                      const CurrencySettings& given) {
  CurrencySettings settings = given;
  if (settings.code) settings.code = Capitals(*settings.code);
  if (!book.writable()) {
    return Unexpected{BookError::Of(Kind::kReadOnly, "the book was opened for reading only")};
  }
  const std::shared_ptr<LVCurrency> currency = Find(book, code);
  if (!currency) {
    return Unexpected{BookError::Of(Kind::kNotFound, "no currency " + Quote(code) +
                                                         " in the book ('folvant currency list' "
                                                         "shows them)")};
  }
  if (settings.code) {
    if (auto refused = RefuseCode(book, *settings.code, currency.get())) {
      return Unexpected{*refused};
    }
  }
  if (auto refused = RefuseSettings(book, *currency, settings)) return Unexpected{*refused};
  // Account files carry their currency's form: those kept in it are written again, and a new
  // code needs every one of them, else a file would bring the old code back.
  std::int64_t users = 0;
  for (const auto& account : book.LoadAllAccounts()) {
    if (account->currency() != currency) continue;
    ++users;
    if (auto refused = book.Changed(*account)) {
      if (settings.code && *settings.code != currency->code()) {
        refused->message = "cannot give the currency a new code: " + refused->message;
        return Unexpected{*refused};
      }
    }
  }
  Apply(*currency, settings);
  book.BookChanged();
  return LineOf(book, currency, users);
}

}  // namespace folvant
