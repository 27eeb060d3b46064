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
  bool json = false;
};

// An account as `account new` and `account edit` leave it.
render::Json SummaryJson(const AccountSummary& a) {
  return {{"number", a.number},
          {"name", render::JsonText(a.name)},
          {"currency", render::JsonText(a.currency)},
          {"startingBalance", render::JsonAmount(a.startingBalance)},
          {"startingCheck", a.startingCheck},
          {"notes", render::JsonText(a.notes)}};
}

int NewAccount(Context& context, const NewAccountOptions& options) {
  return ChangeBook(
      context,
      [&](Book& book) -> BookResult<AccountSummary> {
        std::shared_ptr<LVCurrency> currency;
        if (!options.currency.empty()) {
          auto registered = book.RegisterCurrency(options.currency);
          if (!registered) {
            BookError error = registered.error();
            // As account edit does: a code the book does not know is a failure, not a usage
            // error.
            if (error.kind == BookError::Kind::kInvalid) {
              error.message = "--currency: " + error.message;
            }
            return Unexpected{std::move(error)};
          }
          currency = *registered;
        }
        auto added = book.AddAccount(options.name, currency, options.startingBalance);
        if (!added) return Unexpected{added.error()};
        ZELMAccount& account = **added;
        account.SetStartingCheckNumber(options.startingCheck);
        return AccountSummary{account.GetName(), account.GetNumber(), account.currency()->code(),
                              account.GetStartingBalance(), account.GetStartingCheckNumber(),
                              book.AccountNotes(account)};
      },
      [&](const AccountSummary& a) {
        if (options.json) {
          render::WriteJson(context.out, SummaryJson(a));
          return;
        }
        context.out << "Created account \"" << a.name << "\" (number " << a.number << ", "
                    << a.currency << ")\n";
      });
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
  bool json = false;
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
  std::shared_ptr<LVCurrency> currency;  // the account's, for the text
  return ChangeBook(
      context,
      [&](Book& book) {
        auto edited = folvant::EditAccount(book, options.account, edit);
        if (edited) {
          currency = book.currencyWithCode(edited->currency);
          if (!currency) currency = book.currency();
        }
        return edited;
      },
      [&](const AccountSummary& a) {
        if (options.json) {
          render::WriteJson(context.out, SummaryJson(a));
          return;
        }
        context.out << "Account \"" << a.name << "\" (number " << a.number << ", " << a.currency
                    << "): starting balance "
                    << render::AmountWriter(*currency).Text(a.startingBalance) << ", first check "
                    << a.startingCheck << '\n';
        if (!a.notes.empty()) context.out << "Notes: " << a.notes << '\n';
      });
}

int RemoveAccount(Context& context, const ChangeOptions& options) {
  if (!options.yes) {
    Fail(context, "account remove takes the account out of the book: give --yes to confirm");
    return 2;  // a usage error
  }
  return ChangeBook(
      context,
      [&](Book& book) {
        auto removed = folvant::RemoveAccount(book, options.account, options.unlink);
        if (!removed && removed.error().kind == BookError::Kind::kInvalid) {
          BookError error = removed.error();
          error.message += " (--unlink)";
          return decltype(removed){Unexpected{std::move(error)}};
        }
        return removed;
      },
      [&](const AccountRemoval& r) {
        const std::string kept = "accounts/" + r.keptAs;
        if (options.json) {
          render::Json in = render::Json::array();
          for (const std::string& name : r.in) in.push_back(render::JsonText(name));
          render::Json document = render::Json::object();
          document["account"] = render::JsonText(r.name);
          document["keptAs"] = render::JsonText(kept);
          document["unlinked"] = r.unlinked;
          document["in"] = std::move(in);
          render::WriteJson(context.out, document);
          return;
        }
        context.out << "Removed account \"" << r.name << "\"; its file is kept as " << kept << '\n';
        if (r.unlinked > 0) {
          context.out << "Unlinked " << r.unlinked << (r.unlinked == 1 ? " transfer" : " transfers")
                      << " in";
          for (std::size_t i = 0; i < r.in.size(); ++i) {
            context.out << (i == 0 ? " \"" : ", \"") << r.in[i] << '"';
          }
          context.out << '\n';
        }
      });
}

// `account lock` and `unlock`: {account, locked}.
void PrintLocked(Context& context, const std::string& account, bool locked, bool json) {
  if (json) {
    render::Json document = render::Json::object();
    document["account"] = render::JsonText(account);
    document["locked"] = locked;
    render::WriteJson(context.out, document);
    return;
  }
  if (locked) {
    context.out << "Locked account \"" << account
                << "\": commands on it now need its password\n";
  } else {
    context.out << "Unlocked account \"" << account << "\": it has no password now\n";
  }
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
  return ChangeBook(
      context, [&](Book& book) { return folvant::LockAccount(book, options.account, *password); },
      [&](const std::string& account) { PrintLocked(context, account, true, options.json); });
}

int UnlockAccount(Context& context, const ChangeOptions& options) {
  return ChangeBook(
      context, [&](Book& book) { return folvant::UnlockAccount(book, options.account); },
      [&](const std::string& account) { PrintLocked(context, account, false, options.json); });
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
  create->add_flag("--json", options->json, "Print JSON");
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
  edit->add_flag("--json", change->json, "Print JSON");
  actions.emplace_back(edit, [&context, change]() { return EditAccount(context, *change); });

  CLI::App* remove = account->add_subcommand("remove", "Take an account out of the book");
  remove->add_option("ACCOUNT", change->account, kAccount)->required();
  remove->add_flag("--yes", change->yes, "Confirm the removal");
  remove->add_flag("--unlink", change->unlink,
                   "Unlink the transfers other accounts hold with it (they stay as entries)");
  remove->add_flag("--json", change->json, "Print JSON");
  actions.emplace_back(remove, [&context, change]() { return RemoveAccount(context, *change); });

  CLI::App* lock = account->add_subcommand(
      "lock", "Give an account a password, read from the terminal or --password-stdin");
  lock->add_option("ACCOUNT", change->account, kAccount)->required();
  lock->add_flag("--json", change->json, "Print JSON");
  actions.emplace_back(lock, [&context, change]() { return LockAccount(context, *change); });

  CLI::App* unlock = account->add_subcommand("unlock", "Take an account's password away");
  unlock->add_option("ACCOUNT", change->account, kAccount)->required();
  unlock->add_flag("--json", change->json, "Print JSON");
  actions.emplace_back(unlock, [&context, change]() { return UnlockAccount(context, *change); });
}

}  // namespace folvant::app
