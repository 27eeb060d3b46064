#include <memory>
#include <ostream>
#include <string>

#include "app/cli/BookAccess.h"
#include "app/cli/Commands.h"
#include "app/cli/Options.h"
#include "app/render/AmountText.h"
#include "app/render/EntryOutput.h"
#include "app/render/Json.h"
#include "folvant/book/Book.h"
#include "folvant/book/Entries.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/values/LVCurrency.h"

namespace folvant::app {
namespace {

struct TransferOptions {
  std::string from, to, date;
  double amount = 0.0, toAmount = 0.0;
  std::string description;
  bool json = false;
  CLI::Option* toAmountOption = nullptr;
};

render::Json SideJson(const ZELMAccount& account, const EntryDetails& entry, double balance) {
  render::Json side = render::Json::object();
  side["account"] = render::JsonText(account.GetName());
  side["entry"] = render::EntryJson(entry);
  side["balance"] = render::JsonAmount(balance);
  return side;
}

// "Transferred $ 10.00 from "Checking" (entry 3) to "Savings" (entry 4)." and both balances.
void PrintTransfer(Context& context, const TransferChange& t, bool json) {
  if (json) {
    render::Json document = render::Json::object();
    document["from"] = SideJson(*t.from, t.debit, t.fromBalance);
    document["to"] = SideJson(*t.to, t.deposit, t.toBalance);
    render::WriteJson(context.out, document);
    return;
  }
  const render::AmountWriter from(*t.from->currency());
  const render::AmountWriter to(*t.to->currency());
  std::string out = "Transferred " + from.Text(-t.debit.amount) + " from \"" + t.from->GetName() +
                    "\" (entry " + std::to_string(t.debit.number) + ") to \"" + t.to->GetName() +
                    "\" (entry " + std::to_string(t.deposit.number) + ")";
  if (t.from->currency() != t.to->currency()) out += ", received as " + to.Text(t.deposit.amount);
  out += ".\nBalance of \"" + t.from->GetName() + "\": " + from.Text(t.fromBalance) + "\n";
  out += "Balance of \"" + t.to->GetName() + "\": " + to.Text(t.toBalance) + "\n";
  context.out << out;
}

int Run(Context& context, const TransferOptions& o) {
  TransferRequest request{o.from, o.to, o.amount, std::nullopt, o.description, std::nullopt};
  if (std::int32_t date = 0; ParseDateNumber(o.date, date)) request.date = date;
  if (o.toAmountOption->count() > 0) request.toAmount = o.toAmount;
  return ChangeBook(
      context, [&](Book& book) { return Transfer(book, request); },
      [&](const TransferChange& t) { PrintTransfer(context, t, o.json); });
}

}  // namespace

void RegisterTransferCommand(CLI::App& app, Context& context, CommandList& actions) {
  auto o = std::make_shared<TransferOptions>();
  CLI::App* transfer =
      app.add_subcommand("transfer", "Move money from one account to another (a linked pair)");
  transfer->add_option("FROM", o->from, "The account the money leaves")->required();
  transfer->add_option("TO", o->to, "The account the money goes to")->required();
  transfer->add_option("AMOUNT", o->amount, "The amount sent (positive)")
      ->required()
      ->transform(AmountValue());
  transfer->add_option("--date", o->date, "Date (YYYY-MM-DD; default: today)")->check(IsoDate());
  transfer->add_option("--description", o->description, "Description of both entries");
  o->toAmountOption =
      transfer
          ->add_option("--to-amount", o->toAmount,
                       "The amount received, in the other account's currency (default: "
                       "converted with the currencies' rates)")
          ->transform(AmountValue());
  transfer->add_flag("--json", o->json, "Print JSON");
  actions.emplace_back(transfer, [&context, o]() { return Run(context, *o); });
}

}  // namespace folvant::app
