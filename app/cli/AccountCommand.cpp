#include <cmath>
#include <cstdlib>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "app/cli/BookAccess.h"
#include "app/cli/Commands.h"
#include "app/cli/Options.h"
#include "app/render/AmountText.h"
#include "app/render/Json.h"
#include "app/render/Table.h"
#include "app/cli/Password.h"
#include "folvant/book/Accounts.h"
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
      // As account edit does: a code the book does not know is a failure, not a usage error.
      return Fail(context, "--currency: " + registered.error().message);
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

struct ChangeOptions {
  std::string account;
  AccountEdit edit;
  bool yes = false;
  bool unlink = false;
};

int EditAccount(Context& context, const ChangeOptions& options) {
  const AccountEdit& edit = options.edit;
  if (!edit.name && !edit.startingBalance && !edit.startingCheck && !edit.currency &&
      !edit.notes) {
    Fail(context,
         "account edit needs something to change: --name, --starting-balance, --starting-check, "
         "--currency or --notes");
    return 2;  // a usage error
  }
  auto book = OpenBook(context, Book::Access::kWrite);
  if (!book) return 1;
  auto edited = folvant::EditAccount(*book, options.account, edit);
  PrintWarnings(context, *book);
  if (!edited) return Fail(context, edited.error());
  if (!SaveBook(context, *book)) return 1;
  auto currency = book->currencyWithCode(edited->currency);
  context.out << "Account \"" << edited->name << "\" (number " << edited->number << ", "
              << edited->currency << "): starting balance "
              << render::AmountWriter(currency ? *currency : *book->currency())
                     .Text(edited->startingBalance)
              << ", first check " << edited->startingCheck << '\n';
  if (!edited->notes.empty()) context.out << "Notes: " << edited->notes << '\n';
  return 0;
}

int RemoveAccount(Context& context, const ChangeOptions& options) {
  if (!options.yes) {
    Fail(context, "account remove takes the account out of the book: give --yes to confirm");
    return 2;  // a usage error
  }
  auto book = OpenBook(context, Book::Access::kWrite);
  if (!book) return 1;
  auto removed = folvant::RemoveAccount(*book, options.account, options.unlink);
  PrintWarnings(context, *book);
  if (!removed) {
    if (removed.error().kind == BookError::Kind::kInvalid) {
      return Fail(context, removed.error().message + " (--unlink)");
    }
    return Fail(context, removed.error());
  }
  if (!SaveBook(context, *book)) return 1;
  context.out << "Removed account \"" << removed->name << "\"; its file is kept as accounts/"
              << removed->keptAs << '\n';
  if (removed->unlinked > 0) {
    context.out << "Unlinked " << removed->unlinked
                << (removed->unlinked == 1 ? " transfer" : " transfers") << " in";
    for (std::size_t i = 0; i < removed->in.size(); ++i) {
      context.out << (i == 0 ? " \"" : ", \"") << removed->in[i] << '"';
    }
    context.out << '\n';
  }
  return 0;
}

int LockAccount(Context& context, const ChangeOptions& options) {
  std::optional<std::string> password =
      ReadPassword(context, "New password: ", context.passwordStdin);
  if (password && !context.passwordStdin) {
    const std::optional<std::string> again = ReadPassword(context, "Again: ", false);
    if (again != password) return Fail(context, "the two passwords differ; nothing was changed");
  }
  if (!password) {
    Fail(context, "account lock reads the password from the terminal, or from standard input "
                  "with --password-stdin");
    return 2;  // a usage error
  }
  auto book = OpenBook(context, Book::Access::kWrite);
  if (!book) return 1;
  auto locked = folvant::LockAccount(*book, options.account, *password);
  PrintWarnings(context, *book);
  if (!locked) return Fail(context, locked.error());
  if (!SaveBook(context, *book)) return 1;
  context.out << "Locked account \"" << *locked
              << "\": commands on it now need its password\n";
  return 0;
}

int UnlockAccount(Context& context, const ChangeOptions& options) {
  auto book = OpenBook(context, Book::Access::kWrite);
  if (!book) return 1;
  auto unlocked = folvant::UnlockAccount(*book, options.account);
  PrintWarnings(context, *book);
  if (!unlocked) return Fail(context, unlocked.error());
  if (!SaveBook(context, *book)) return 1;
  context.out << "Unlocked account \"" << *unlocked << "\": it has no password now\n";
  return 0;
}

}  // namespace

void RegisterAccountCommand(CLI::App& app, Context& context, CommandList& actions) {
  CLI::App* account = app.add_subcommand("account", "Create, list, change and lock accounts");
  account->require_subcommand(1);

  auto options = std::make_shared<NewAccountOptions>();
  CLI::App* create = account->add_subcommand("new", "Create an account");
  create->add_option("NAME", options->name, "Name of the account")->required();
  create->add_option("--currency", options->currency,
                     "Currency code, e.g. EUR (default: the base currency)");
  create->add_option("--starting-balance", options->startingBalance, "Opening balance")
      ->transform(AmountValue());
  create->add_option("--starting-check", options->startingCheck, "First check number")
      ->check(ZeroOrMore());
  actions.emplace_back(create, [&context, options]() { return NewAccount(context, *options); });

  auto json = std::make_shared<bool>(false);
  CLI::App* list = account->add_subcommand("list", "List the accounts with their balances");
  list->add_flag("--json", *json, "Print JSON");
  actions.emplace_back(list, [&context, json]() { return ListAccounts(context, *json); });

  auto change = std::make_shared<ChangeOptions>();
  const char* kAccount = "Name or number of the account";
  CLI::App* edit = account->add_subcommand("edit", "Change an account's name, start or currency");
  edit->add_option("ACCOUNT", change->account, kAccount)->required();
  edit->add_option("--name", change->edit.name, "A new name");
  edit->add_option("--starting-balance", change->edit.startingBalance, "Opening balance")
      ->transform(AmountValue());
  edit->add_option("--starting-check", change->edit.startingCheck, "First check number")
      ->check(ZeroOrMore());
  edit->add_option("--currency", change->edit.currency,
                   "Currency code (amounts are kept as they are, not converted)");
  edit->add_option("--notes", change->edit.notes, "Notes on the account (empty: none)");
  actions.emplace_back(edit, [&context, change]() { return EditAccount(context, *change); });

  CLI::App* remove = account->add_subcommand("remove", "Take an account out of the book");
  remove->add_option("ACCOUNT", change->account, kAccount)->required();
  remove->add_flag("--yes", change->yes, "Confirm the removal");
  remove->add_flag("--unlink", change->unlink,
                   "Unlink the transfers other accounts hold with it (they stay as entries)");
  actions.emplace_back(remove, [&context, change]() { return RemoveAccount(context, *change); });

  CLI::App* lock = account->add_subcommand(
      "lock", "Give an account a password, read from the terminal or --password-stdin");
  lock->add_option("ACCOUNT", change->account, kAccount)->required();
  actions.emplace_back(lock, [&context, change]() { return LockAccount(context, *change); });

  CLI::App* unlock = account->add_subcommand("unlock", "Take an account's password away");
  unlock->add_option("ACCOUNT", change->account, kAccount)->required();
  actions.emplace_back(unlock, [&context, change]() { return UnlockAccount(context, *change); });
}

}  // namespace folvant::app
