#include <algorithm>
#include <iomanip>
#include <ostream>

#include "app/Book.h"
#include "app/Output.h"
#include "app/commands/Commands.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountEntryType.h"
#include "folvant/values/LVCurrency.h"

namespace folvant::app {
namespace {

// Sort keys of the register, as the account numbers them.
constexpr int kSortByDateChecksFirst = 1;

struct RegisterOptions {
  std::string account;
  int sort = kSortByDateChecksFirst;
  bool descending = false;
  bool json = false;
};

struct Row {
  const ZELMAccountEntry* entry;
  std::string type;
  std::string category;
};

std::string ResolvedMark(const ZELMAccountEntry& entry) {
  std::string mark = entry.GetCleared() ? "R" : "";
  if (entry.GetVoid()) mark += "V";
  return mark;
}

void PrintText(Context& context, const ZELMAccount& account, const std::vector<Row>& rows) {
  const LVCurrency& currency = *account.currency();
  constexpr std::size_t kType = 14, kToFrom = 22, kDescription = 24, kCategory = 22;
  context.out << Pad("Date", 10) << "  " << std::setw(6) << "Check"
              << "  " << Pad("Type", kType) << "  " << Pad("To/From", kToFrom) << "  "
              << Pad("Description", kDescription) << "  " << Pad("Category", kCategory) << "  "
              << Pad("R", 2) << std::setw(14) << "Amount"
              << "  " << std::setw(14) << "Balance" << '\n';
  for (const Row& row : rows) {
    const ZELMAccountEntry& e = *row.entry;
    context.out << FormatDateNumber(e.GetDate()) << "  " << std::setw(6)
                << (e.IsCheck() ? std::to_string(e.GetCheckNumber()) : std::string()) << "  "
                << Pad(row.type, kType) << "  " << Pad(e.GetToFrom(), kToFrom) << "  "
                << Pad(e.GetDescription(), kDescription) << "  " << Pad(row.category, kCategory)
                << "  " << Pad(ResolvedMark(e), 2)
                << PadLeft(FormatAmount(currency, e.GetAmount()), 14) << "  "
                << PadLeft(FormatAmount(currency, e.GetCachedRunningBalance()), 14) << '\n';
  }
  context.out << '\n'
              << Pad("Current balance:", 18) << FormatAmount(currency, account.GetBalance()) << '\n'
              << Pad("Today's balance:", 18) << FormatAmount(currency, account.GetTodaysBalance())
              << '\n'
              << Pad("Resolved balance:", 18)
              << FormatAmount(currency, account.GetResolvedBalance()) << '\n';
}

void PrintJson(Context& context, const ZELMAccount& account, const std::vector<Row>& rows) {
  auto& out = context.out;
  out << "{\n  \"account\": " << JsonString(account.GetName())
      << ",\n  \"currency\": " << JsonString(account.currency()->code()) << ",\n  \"entries\": [";
  bool first = true;
  for (const Row& row : rows) {
    const ZELMAccountEntry& e = *row.entry;
    out << (first ? "\n" : ",\n") << "    {\"number\": " << e.GetNumber()
        << ", \"date\": " << JsonString(FormatDateNumber(e.GetDate()))
        << ", \"checkNumber\": " << (e.IsCheck() ? std::to_string(e.GetCheckNumber()) : "null")
        << ", \"type\": " << JsonString(row.type) << ", \"toFrom\": " << JsonString(e.GetToFrom())
        << ", \"description\": " << JsonString(e.GetDescription())
        << ", \"category\": " << JsonString(row.category)
        << ", \"resolved\": " << (e.GetCleared() ? "true" : "false")
        << ", \"void\": " << (e.GetVoid() ? "true" : "false")
        << ", \"amount\": " << PlainAmount(e.GetAmount())
        << ", \"balance\": " << PlainAmount(e.GetCachedRunningBalance()) << "}";
    first = false;
  }
  out << (first ? "],\n" : "\n  ],\n")
      << "  \"balances\": {\"current\": " << PlainAmount(account.GetBalance())
      << ", \"today\": " << PlainAmount(account.GetTodaysBalance())
      << ", \"resolved\": " << PlainAmount(account.GetResolvedBalance()) << "}\n}\n";
}

int ShowRegister(Context& context, const RegisterOptions& options) {
  auto book = OpenBook(context);
  if (!book) return 1;
  auto account = book->FindAccount(options.account);
  if (!account) return Fail(context, "no account named \"" + options.account + "\" in the book");
  account->CacheRunningBalances();
  account->SortBy(options.sort, options.descending);
  std::vector<Row> rows;
  rows.reserve(account->GetEntries().size());
  for (const auto& entry : account->GetEntries()) {
    Row row{entry.get(), {}, {}};
    if (auto type = account->accountEntryTypeForNumber(entry->GetType()))
      row.type = type->GetName();
    if (auto category = account->accountEntryCategoryForNumber(entry->GetCategory())) {
      row.category = category->fullName();
    } else if (!entry->splitLineItems().empty()) {
      row.category = "(split)";
    }
    rows.push_back(std::move(row));
  }
  if (options.json) {
    PrintJson(context, *account, rows);
  } else {
    PrintText(context, *account, rows);
  }
  return 0;
}

}  // namespace

void RegisterRegisterCommand(CLI::App& app, Context& context, CommandList& actions) {
  auto options = std::make_shared<RegisterOptions>();
  CLI::App* reg = app.add_subcommand("register", "Show an account's register");
  reg->add_option("ACCOUNT", options->account, "Name or number of the account")->required();
  reg->add_option("--sort", options->sort,
                  "Sort key: 0 check number, 1 date (checks first), 2 type, 3 description, "
                  "4 amount, 5 resolved, 6 to/from")
      ->check(CLI::Range(0, 6));
  reg->add_flag("--descending", options->descending, "Sort in descending order");
  reg->add_flag("--json", options->json, "Print JSON");
  actions.emplace_back(reg, [&context, options]() { return ShowRegister(context, *options); });
}

}  // namespace folvant::app
