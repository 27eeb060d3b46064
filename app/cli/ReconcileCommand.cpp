#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "app/cli/BookAccess.h"
#include "app/cli/Commands.h"
#include "app/cli/Options.h"
#include "app/render/AmountText.h"
#include "app/render/Json.h"
#include "app/render/ReconcileOutput.h"
#include "app/render/Table.h"
#include "folvant/book/Book.h"
#include "folvant/book/Reconcile.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/platform/CivilDate.h"
#include "folvant/platform/LocalCalendar.h"
#include "folvant/values/LVCurrency.h"

namespace folvant::app {
namespace {

using platform::FormatIsoDate;
using render::Align;
using render::Json;
using render::JsonText;

struct ReconcileOptions {
  std::string account;
  std::string date;
  double balance = 0.0;
  std::vector<std::int32_t> resolve, unresolve;
  bool finish = false;
  bool json = false;
};

void Write(Context& context, const std::string& text) {
  context.out.write(text.data(), static_cast<std::streamsize>(text.size()));
}

std::string FinishedText(const ReconciliationRecord& r) {
  return platform::FormatLocalTime(r.finished, "%Y-%m-%d %H:%M");
}

std::string NumberList(const std::vector<std::int32_t>& numbers) {
  std::string text;
  for (std::int32_t n : numbers) text += (text.empty() ? "" : ", ") + std::to_string(n);
  return text;
}

void PrintJson(Context& context, const ReconcileOutcome& outcome) {
  render::WriteJson(context.out, render::ReconcileOutcomeJson(outcome));
}

std::string SuggestionText(const ReconcileSuggestion& s, const render::AmountWriter& amounts) {
  using Kind = ReconcileSuggestion::Kind;
  switch (s.kind) {
    case Kind::kOneEntry:
      return "entry " + std::to_string(s.entries[0]) + " (" + amounts.Text(s.amounts[0]) +
             ") is the difference and is not resolved";
    case Kind::kTwoEntries:
      return "entries " + std::to_string(s.entries[0]) + " and " + std::to_string(s.entries[1]) +
             " (" + amounts.Text(s.amounts[0]) + " and " + amounts.Text(s.amounts[1]) +
             ") add up to the difference and are not resolved";
    case Kind::kSignFlipped:
      return "entry " + std::to_string(s.entries[0]) + " (" + amounts.Text(s.amounts[0]) +
             ") may belong the other way round (" +
             (s.amounts[0] < 0 ? "a deposit entered as a debit" : "a debit entered as a deposit") +
             (s.resolved ? "; it is resolved, so it counts twice)" : ")");
    case Kind::kTransposedDigits:
      return "the difference divides by 9: two digits may be swapped in an amount";
  }
  return {};
}

void PrintText(Context& context, const ReconcileOutcome& outcome) {
  const ReconcileListing& l = outcome.listing;
  const render::AmountWriter amounts(*l.account->currency());
  std::string out;
  if (l.unresolved.empty()) {
    out += "No unresolved entries in \"" + l.account->GetName() + "\" through " +
           FormatIsoDate(l.statement.date) + ".\n";
  } else {
    render::Table table;
    table.AddFitColumn("No.", Align::kRight);
    table.AddColumn("Date", Align::kLeft, 10);
    table.AddFitColumn("Check", Align::kRight);
    table.AddFitColumn("To/From", Align::kLeft, 24);
    table.AddFitColumn("Description", Align::kLeft, 24);
    table.AddFitColumn("Amount", Align::kRight);
    for (const UnresolvedEntry& e : l.unresolved) {
      table.AddRow({std::to_string(e.number), FormatIsoDate(e.date),
                    e.checkNumber ? std::to_string(*e.checkNumber) : std::string(), e.toFrom,
                    e.description, amounts.Text(e.amount)});
    }
    table.Write(out);
  }
  out += '\n';
  render::Table totals;
  totals.AddFitColumn("", Align::kLeft);
  totals.AddFitColumn("", Align::kRight);
  totals.AddRow({"Statement balance (" + FormatIsoDate(l.statement.date) + "):",
                 amounts.Text(l.statement.balance)});
  totals.AddRow({"Resolved balance:", amounts.Text(l.resolvedBalance)});
  totals.AddRow({"Difference:", amounts.Text(l.difference)});
  totals.Write(out);
  if (!l.suggestions.empty()) {
    out += "\nThe difference may come from:\n";
    for (const ReconcileSuggestion& s : l.suggestions) {
      out += "  " + SuggestionText(s, amounts) + '\n';
    }
  }
  if (outcome.finished) {
    const std::size_t n = outcome.finished->resolved.size();
    out += "\nFinished the reconciliation of \"" + l.account->GetName() + "\" through " +
           FormatIsoDate(outcome.finished->statement.date) + ": " + std::to_string(n) +
           (n == 1 ? " entry" : " entries") + " resolved since the last one.\n";
  }
  Write(context, out);
}

// A missing value, found once the options are read together: a usage error.
int UsageError(Context& context, const std::string& message) {
  Fail(context, message);
  return 2;
}

int Run(Context& context, const ReconcileOptions& o, bool balanceGiven) {
  if (o.account.empty()) {
    return UsageError(context, "reconcile: name the account; see folvant reconcile --help");
  }
  if (o.date.empty() || !balanceGiven) {
    return UsageError(context,
                      "reconcile: --statement-date and --statement-balance are both needed");
  }
  ReconcileRequest request;
  ParseDateNumber(o.date, request.statement.date);  // checked when read
  request.statement.balance = o.balance;
  request.resolve = o.resolve;
  request.unresolve = o.unresolve;
  request.finish = o.finish;
  const bool changes = o.finish || !o.resolve.empty() || !o.unresolve.empty();
  auto book = OpenBook(context, changes ? Book::Access::kWrite : Book::Access::kRead);
  if (!book) return 1;
  auto outcome = Reconcile(*book, o.account, request);
  PrintWarnings(context, *book);
  if (!outcome) return Fail(context, outcome.error());
  if (outcome->changed && !SaveBook(context, *book)) return 1;
  if (o.json) {
    PrintJson(context, *outcome);
  } else {
    PrintText(context, *outcome);
  }
  return 0;
}

int History(Context& context, const std::string& account, bool json) {
  auto book = OpenBook(context);
  if (!book) return 1;
  auto history = ReconcileRecords(*book, account);
  PrintWarnings(context, *book);
  if (!history) return Fail(context, history.error());
  if (json) {
    Json records = Json::array();
    for (const ReconciliationRecord& r : history->records) {
      records.push_back(render::ReconciliationRecordJson(r));
    }
    Json document = Json::object();
    document["account"] = JsonText(history->account->GetName());
    document["reconciliations"] = std::move(records);
    render::WriteJson(context.out, document);
    return 0;
  }
  if (history->records.empty()) {
    context.out << "\"" << history->account->GetName() << "\" has no finished reconciliations.\n";
    return 0;
  }
  const render::AmountWriter amounts(*history->account->currency());
  render::Table table;
  table.AddColumn("Statement", Align::kLeft, 10);
  table.AddFitColumn("Balance", Align::kRight);
  table.AddFitColumn("Finished", Align::kLeft);
  table.AddFitColumn("Entries resolved", Align::kLeft, 60);
  for (const ReconciliationRecord& r : history->records) {
    table.AddRow({FormatIsoDate(r.statement.date), amounts.Text(r.statement.balance),
                  FinishedText(r), r.resolved.empty() ? "-" : NumberList(r.resolved)});
  }
  std::string out;
  table.Write(out);
  Write(context, out);
  return 0;
}

int Undo(Context& context, const std::string& account, bool json) {
  return ChangeBook(
      context, [&](Book& book) { return UndoReconciliation(book, account); },
      [&](const UndoneReconciliation& undone) {
        const ReconciliationRecord& r = undone.record;
        if (json) {
          Json document = Json::object();
          document["account"] = JsonText(undone.account->GetName());
          document["reconciliation"] = render::ReconciliationRecordJson(r);
          render::WriteJson(context.out, document);
          return;
        }
        const std::size_t n = r.resolved.size();
        context.out << "Took back the reconciliation of \"" << undone.account->GetName()
                    << "\" through " << FormatIsoDate(r.statement.date) << " (finished "
                    << FinishedText(r) << "): " << n << (n == 1 ? " entry" : " entries")
                    << " unresolved" << (n == 0 ? "" : " (" + NumberList(r.resolved) + ")")
                    << ".\n";
      });
}

}  // namespace

void RegisterReconcileCommand(CLI::App& app, Context& context, CommandList& actions) {
  auto o = std::make_shared<ReconcileOptions>();
  CLI::App* reconcile =
      app.add_subcommand("reconcile", "Reconcile an account with a bank statement");
  reconcile->require_subcommand(0, 1);
  reconcile->add_option("ACCOUNT", o->account, "Name or number of the account");
  reconcile
      ->add_option("--statement-date", o->date, "The last day of the statement (YYYY-MM-DD)")
      ->check(IsoDate());
  CLI::Option* balance =
      reconcile->add_option("--statement-balance", o->balance, "The statement's closing balance")
          ->transform(AmountValue());
  reconcile->add_option("--resolve", o->resolve, "Mark these entries (numbers) resolved");
  reconcile->add_option("--unresolve", o->unresolve, "Mark these entries (numbers) unresolved");
  reconcile->add_flag("--finish", o->finish,
                      "Record the reconciliation (only when the difference is 0)");
  reconcile->add_flag("--json", o->json, "Print JSON");

  // The subcommands come first in the list: the command itself counts as parsed with them.
  {
    auto account = std::make_shared<std::string>();
    auto json = std::make_shared<bool>(false);
    CLI::App* history =
        reconcile->add_subcommand("history", "List an account's finished reconciliations");
    history->add_option("ACCOUNT", *account, "Name or number of the account")->required();
    history->add_flag("--json", *json, "Print JSON");
    actions.emplace_back(history,
                         [&context, account, json]() { return History(context, *account, *json); });
  }
  {
    auto account = std::make_shared<std::string>();
    auto json = std::make_shared<bool>(false);
    CLI::App* undo = reconcile->add_subcommand(
        "undo", "Take back the last reconciliation, unresolving its entries");
    undo->add_option("ACCOUNT", *account, "Name or number of the account")->required();
    undo->add_flag("--json", *json, "Print JSON");
    actions.emplace_back(undo,
                         [&context, account, json]() { return Undo(context, *account, *json); });
  }
  actions.emplace_back(reconcile, [&context, o, balance]() {
    return Run(context, *o, balance->count() > 0);
  });
}

}  // namespace folvant::app
