#include <cmath>
#include <cstdlib>
#include <iomanip>
#include <ostream>

#include "folvant/book/Book.h"
#include "app/cli/BookAccess.h"
#include "app/cli/Options.h"
#include "app/cli/TextOutput.h"
#include "app/render/AmountText.h"
#include "app/cli/Commands.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/platform/Text.h"
#include "folvant/values/LVCurrency.h"
#include "folvant/values/LVEditingCurrency.h"

namespace folvant::app {
namespace {

struct NewAccountOptions {
  std::string name;
  std::string currency;
  double startingBalance = 0.0;
  int startingCheck = 1;
};

// Written forms of a few common currencies, used when an account asks for a currency the book
// does not have yet. Rates start at 1 until the user sets them.
struct KnownCurrency {
  const char* code;
  const char* description;
  const char* symbol;
  bool symbolFirst;
  const char* thousands;
  const char* decimal;
};
constexpr KnownCurrency kKnownCurrencies[] = {
    {"USD", "US Dollar", "$", true, ",", "."},     {"CAD", "Canadian Dollar", "$", true, ",", "."},
    {"EUR", "Euro", "€", false, ".", ","},         {"GBP", "Pound Sterling", "£", true, ",", "."},
    {"CHF", "Swiss Franc", "CHF", true, "'", "."}, {"JPY", "Yen", "¥", true, ",", "."},
};

std::shared_ptr<LVCurrency> CurrencyFor(Book& book, const std::string& code) {
  for (const auto& c : book.currencies()) {
    if (platform::CaseInsensitiveEqual(c->code(), code)) return c;
  }
  for (const KnownCurrency& known : kKnownCurrencies) {
    if (platform::CaseInsensitiveEqual(known.code, code)) {
      auto c = std::make_shared<LVCurrency>(known.code, known.description, known.symbol,
                                            known.symbolFirst, known.thousands, known.decimal, 1.0,
                                            platform::Today());
      book.currencies().push_back(c);
      book.BookChanged();
      return c;
    }
  }
  auto c = std::make_shared<LVCurrency>();
  c->setCode(code);
  c->setDescription(code);
  c->setSymbol(code);
  book.currencies().push_back(c);
  book.BookChanged();
  return c;
}

int NewAccount(Context& context, const NewAccountOptions& options) {
  auto book = OpenBook(context, Book::Access::kWrite);
  if (!book) return 1;
  std::shared_ptr<LVCurrency> currency = book->currency();
  if (!options.currency.empty()) {
    // Checked against no list: a code already in the book is reused, not refused.
    if (auto problem = ValidateCurrencyCode(options.currency, {}, nullptr)) {
      return Fail(context, problem->statement + " " + problem->message);
    }
    currency = CurrencyFor(*book, options.currency);
  }
  auto added = book->AddAccount(options.name);
  if (!added) return Fail(context, added.error());
  const auto& account = *added;
  account->setCurrency(currency);
  account->SetStartingBalance(options.startingBalance);
  account->SetStartingCheckNumber(options.startingCheck);
  if (!SaveBook(context, *book)) return 1;
  context.out << "Created account \"" << account->GetName() << "\" (number " << account->GetNumber()
              << ", " << currency->code() << ")\n";
  return 0;
}

// The balance column: the amount, or why there is none.
std::string BalanceText(const Book& book, const AccountListing& line) {
  if (line.locked) return "locked";
  if (!line.balance) return "-";
  auto currency = book.currencyWithCode(line.currency);
  return render::AmountWriter(currency ? *currency : *book.currency()).Text(*line.balance);
}

int ListAccounts(Context& context, bool json) {
  auto book = OpenBook(context);
  if (!book) return 1;
  const std::vector<AccountListing> list = book->ListAccounts();
  PrintWarnings(context, *book);
  if (json) {
    context.out << "[";
    bool first = true;
    for (const AccountListing& line : list) {
      context.out << (first ? "\n" : ",\n") << "  {\"number\": " << line.number
                  << ", \"name\": " << JsonString(line.name)
                  << ", \"currency\": " << JsonString(line.currency) << ", \"balance\": "
                  << (line.balance ? PlainAmount(*line.balance) : std::string("null"))
                  << ", \"problem\": " << (line.problem.empty() ? "null" : JsonString(line.problem))
                  << "}";
      first = false;
    }
    context.out << (first ? "]\n" : "\n]\n");
    return 0;
  }
  std::size_t width = 4;
  for (const AccountListing& line : list) width = std::max(width, DisplayWidth(line.name));
  context.out << Pad("Name", width) << "  " << std::setw(16) << "Balance"
              << "  Currency\n";
  for (const AccountListing& line : list) {
    context.out << Pad(line.name, width) << "  " << PadLeft(BalanceText(*book, line), 16) << "  "
                << line.currency;
    if (!line.problem.empty()) context.out << "  (" << line.problem << ")";
    context.out << '\n';
  }
  return 0;
}

}  // namespace

void RegisterAccountCommand(CLI::App& app, Context& context, CommandList& actions) {
  CLI::App* account = app.add_subcommand("account", "Create and list accounts");
  account->require_subcommand(1);

  auto options = std::make_shared<NewAccountOptions>();
  CLI::App* create = account->add_subcommand("new", "Create an account");
  create->add_option("NAME", options->name, "Name of the account")->required();
  create->add_option("--currency", options->currency, "Currency code (default: the base currency)");
  create->add_option("--starting-balance", options->startingBalance, "Opening balance")
      ->check(CLI::Validator(
          [](const std::string& value) -> std::string {
            // A balance that is not a number, or beyond what a register holds, would spoil
            // every balance after it.
            const double x = std::strtod(value.c_str(), nullptr);
            if (std::isfinite(x) && std::fabs(x) <= render::kLargestAmount) return {};
            return "\"" + value + "\" is not an amount a register can hold";
          },
          ""));
  create->add_option("--starting-check", options->startingCheck, "First check number")
      ->check(ZeroOrMore());
  actions.emplace_back(create, [&context, options]() { return NewAccount(context, *options); });

  auto json = std::make_shared<bool>(false);
  CLI::App* list = account->add_subcommand("list", "List the accounts with their balances");
  list->add_flag("--json", *json, "Print JSON");
  actions.emplace_back(list, [&context, json]() { return ListAccounts(context, *json); });
}

}  // namespace folvant::app
