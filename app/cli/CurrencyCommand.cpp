#include <cstdio>
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
#include "folvant/book/Book.h"
#include "folvant/book/Currencies.h"
#include "folvant/values/LVCurrency.h"

namespace folvant::app {
namespace {

struct CurrencyOptions {
  std::string code;
  CurrencySettings settings;
  bool symbolAfter = false;
  bool symbolBefore = false;
  bool json = false;
};

// A rate with five decimals, as rates are read.
std::string RateText(double rate) {
  char text[64];
  std::snprintf(text, sizeof text, "%.5f", rate);
  return text;
}

// How an amount of the currency is written.
std::string Example(const CurrencyLine& line) {
  LVCurrency currency(line.code, line.description, line.symbol, line.symbolFirst, line.thousands,
                      line.decimal, line.rate, line.lastUpdate);
  return render::AmountWriter(currency).Text(-1234.5);
}

render::Json JsonOf(const CurrencyLine& c) {
  return {{"code", render::JsonText(c.code)},
          {"description", render::JsonText(c.description)},
          {"symbol", render::JsonText(c.symbol)},
          {"symbolFirst", c.symbolFirst},
          {"thousandsSeparator", render::JsonText(c.thousands)},
          {"decimalSeparator", render::JsonText(c.decimal)},
          {"rate", c.rate},
          {"rateDate", FormatDateNumber(c.lastUpdate)},
          {"base", c.base},
          {"accounts", c.accounts}};
}

int ListCurrencies(Context& context, const CurrencyOptions& options) {
  auto book = OpenBook(context);
  if (!book) return 1;
  auto list = folvant::ListCurrencies(*book);
  PrintWarnings(context, *book);
  if (!list) return Fail(context, list.error());
  if (options.json) {
    render::Json document = render::Json::array();
    for (const CurrencyLine& line : *list) document.push_back(JsonOf(line));
    render::WriteJson(context.out, document);
    return 0;
  }
  render::Table table;
  table.AddFitColumn("Code", render::Align::kLeft);
  table.AddFitColumn("Name", render::Align::kLeft);
  table.AddFitColumn("Written", render::Align::kRight);
  table.AddFitColumn("Rate", render::Align::kRight);
  table.AddFitColumn("Set on", render::Align::kLeft);
  table.AddFitColumn("Accounts", render::Align::kRight);
  for (const CurrencyLine& line : *list) {
    table.AddRow({line.code, line.description, Example(line),
                  line.base ? "base" : RateText(line.rate), FormatDateNumber(line.lastUpdate),
                  std::to_string(line.accounts)});
  }
  std::string out;
  table.Write(out);
  context.out << out;
  return 0;
}

int ChangeCurrency(Context& context, CurrencyOptions options, bool create) {
  if (options.symbolAfter || options.symbolBefore) options.settings.symbolFirst = options.symbolBefore;
  std::string base;  // the base currency's code, for the text
  return ChangeBook(
      context,
      [&](Book& book) {
        auto done = create ? folvant::NewCurrency(book, options.code, options.settings)
                           : folvant::EditCurrency(book, options.code, options.settings);
        base = book.currency()->code();  // after the change: the base currency's code may change
        return done;
      },
      [&](const CurrencyLine& c) {
        if (options.json) {
          render::WriteJson(context.out, JsonOf(c));
          return;
        }
        context.out << (create ? "Created" : "Changed") << " currency " << c.code << " ("
                    << c.description << "): " << Example(c) << ", 1 " << c.code << " = "
                    << RateText(c.rate) << ' ' << base << '\n';
      });
}

}  // namespace

void RegisterCurrencyCommand(CLI::App& app, Context& context, CommandList& actions) {
  CLI::App* currency = app.add_subcommand("currency", "The book's currencies and their rates");
  currency->require_subcommand(1);
  auto options = std::make_shared<CurrencyOptions>();

  CLI::App* list = currency->add_subcommand("list", "List the currencies");
  list->add_flag("--json", options->json, "Print JSON");
  actions.emplace_back(list, [&context, options]() { return ListCurrencies(context, *options); });

  auto settings = [&options](CLI::App* command) {
    CurrencySettings& s = options->settings;
    command->add_option("--name", s.description, "The currency's name");
    command->add_option("--symbol", s.symbol, "Symbol written with amounts");
    auto* after = command->add_flag("--symbol-after", options->symbolAfter,
                                    "Write the symbol after amounts");
    auto* before = command->add_flag("--symbol-before", options->symbolBefore,
                                     "Write the symbol before amounts");
    after->excludes(before);
    command->add_option("--thousands", s.thousands, "Thousands separator");
    command->add_option("--decimal", s.decimal, "Decimal separator");
    command->add_option("--rate", s.rate, "Value of one unit in units of the base currency")
        ->transform(AmountValue());
  };

  CLI::App* create = currency->add_subcommand("new", "Add a currency");
  create->add_option("CODE", options->code, "Three-character code, e.g. CHF")->required();
  settings(create);
  create->add_flag("--json", options->json, "Print JSON");
  actions.emplace_back(create,
                       [&context, options]() { return ChangeCurrency(context, *options, true); });

  CLI::App* edit = currency->add_subcommand("edit", "Change a currency");
  edit->add_option("CODE", options->code, "Its code")->required();
  edit->add_option("--code", options->settings.code, "A new code");
  settings(edit);
  edit->add_flag("--json", options->json, "Print JSON");
  actions.emplace_back(edit,
                       [&context, options]() { return ChangeCurrency(context, *options, false); });
}

}  // namespace folvant::app
