#include <cmath>
#include <cstdlib>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "app/cli/BookAccess.h"
#include "app/cli/Commands.h"
#include "app/cli/Options.h"
#include "app/render/AmountText.h"
#include "app/render/Json.h"
#include "app/render/Table.h"
#include "folvant/book/Book.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/values/LVCurrency.h"

namespace folvant::app {
namespace {

struct NewAccountOptions {
  std::string name;
  std::string currency;
  double startingBalance = 0.0;
  int startingCheck = 1;
};

int NewAccount(Context& context, const NewAccountOptions& options) {
  auto book = OpenBook(context, Book::Access::kWrite);
  if (!book) return 1;
  std::shared_ptr<LVCurrency> currency;
  if (!options.currency.empty()) {
    auto registered = book->RegisterCurrency(options.currency);
    if (!registered) {
      if (registered.error().kind != BookError::Kind::kInvalid) {
        return Fail(context, registered.error());
      }
      Fail(context, "--currency: " + registered.error().message);
      return 2;  // a usage error
    }
    currency = *registered;
  }
  auto added = book->AddAccount(options.name, currency, options.startingBalance);
  if (!added) return Fail(context, added.error());
  const auto& account = *added;
  account->SetStartingCheckNumber(options.startingCheck);
  if (!SaveBook(context, *book)) return 1;
  context.out << "Created account \"" << account->GetName() << "\" (number " << account->GetNumber()
              << ", " << account->currency()->code() << ")\n";
  return 0;
}

// The balance column: the amount, or why there is none.
std::string BalanceText(const Book& book, const AccountListing& line) {
  if (line.locked) return "locked";
  if (!line.balance) return "-";
  auto currency = book.currencyWithCode(line.currency);
  return render::AmountWriter(currency ? *currency : *book.currency()).Text(*line.balance);
}

void PrintJson(Context& context, const std::vector<AccountListing>& list) {
  using render::Json;
  Json document = Json::array();
  for (const AccountListing& line : list) {
    document.push_back(
        {{"number", line.number},
         {"name", render::JsonText(line.name)},
         {"currency", render::JsonText(line.currency)},
         {"balance", line.balance ? render::JsonAmount(*line.balance) : Json(nullptr)},
         {"problem", line.problem.empty() ? Json(nullptr) : render::JsonText(line.problem)}});
  }
  render::WriteJson(context.out, document);
}

int ListAccounts(Context& context, bool json) {
  auto book = OpenBook(context);
  if (!book) return 1;
  const std::vector<AccountListing> list = book->ListAccounts();
  PrintWarnings(context, *book);
  if (json) {
    PrintJson(context, list);
    return 0;
  }
  bool any_problem = false;
  for (const AccountListing& line : list) any_problem = any_problem || !line.problem.empty();
  render::Table table;
  table.AddFitColumn("Name", render::Align::kLeft);
  // Sixteen columns at least, so that the columns stay where they are from one book to the next.
  table.AddFitColumn(std::string(9, ' ') + "Balance", render::Align::kRight);
  table.AddFitColumn("Currency", render::Align::kLeft);
  if (any_problem) table.AddFitColumn("Problem", render::Align::kLeft);
  for (const AccountListing& line : list) {
    table.AddRow({line.name, BalanceText(*book, line), line.currency, line.problem});
  }
  std::string out;
  table.Write(out);
  context.out << out;
  return 0;
}

}  // namespace

void RegisterAccountCommand(CLI::App& app, Context& context, CommandList& actions) {
  CLI::App* account = app.add_subcommand("account", "Create and list accounts");
  account->require_subcommand(1);

  auto options = std::make_shared<NewAccountOptions>();
  CLI::App* create = account->add_subcommand("new", "Create an account");
  create->add_option("NAME", options->name, "Name of the account")->required();
  create->add_option("--currency", options->currency,
                     "Currency code, e.g. EUR (default: the base currency)");
  create->add_option("--starting-balance", options->startingBalance, "Opening balance")
      ->check(AmountValue());
  create->add_option("--starting-check", options->startingCheck, "First check number")
      ->check(ZeroOrMore());
  actions.emplace_back(create, [&context, options]() { return NewAccount(context, *options); });

  auto json = std::make_shared<bool>(false);
  CLI::App* list = account->add_subcommand("list", "List the accounts with their balances");
  list->add_flag("--json", *json, "Print JSON");
  actions.emplace_back(list, [&context, json]() { return ListAccounts(context, *json); });
}

}  // namespace folvant::app
