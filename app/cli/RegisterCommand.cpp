#include <algorithm>
#include <charconv>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "app/cli/BookAccess.h"
#include "app/cli/Options.h"
#include "app/cli/Commands.h"
#include "app/cli/FilterOptions.h"
#include "app/render/AmountText.h"
#include "app/render/Json.h"
#include "app/render/Table.h"
#include "folvant/book/Book.h"
#include "folvant/book/RegisterView.h"
#include "folvant/filters/FilterCodes.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/platform/CivilDate.h"
#include "folvant/values/LVCurrency.h"

namespace folvant::app {
namespace {

struct RegisterOptions {
  RegisterQuery query;
  std::string sort = "date";
  bool json = false;
  FilterOptions filter;
  bool reset = false;
};

std::string_view ResolvedMark(const RegisterRow& row) {
  return row.resolved ? (row.isVoid ? "RV" : "R") : (row.isVoid ? "V" : "");
}

// YYYY-MM-DD into `text` (16 bytes), without going through a formatter; returns its length.
std::size_t FormatDate(std::int32_t date, char* text) {
  if (date < 0 || date > 99991231) {
    const std::string formatted = platform::FormatIsoDate(date);
    const std::size_t length = std::min<std::size_t>(formatted.size(), 16);
    formatted.copy(text, length);
    return length;
  }
  const char digits[10] = {char('0' + date / 10000000), char('0' + date / 1000000 % 10),
                           char('0' + date / 100000 % 10), char('0' + date / 10000 % 10), '-',
                           char('0' + date / 1000 % 10), char('0' + date / 100 % 10), '-',
                           char('0' + date / 10 % 10), char('0' + date % 10)};
  std::copy(digits, digits + 10, text);
  return 10;
}

void AppendDate(std::string& out, std::int32_t date) {
  char text[16];
  out.append(text, FormatDate(date, text));
}

void AppendNumber(std::string& out, std::int64_t n, std::size_t width) {
  char text[24];
  const auto end = std::to_chars(text, text + sizeof text, n).ptr;
  const std::size_t length = static_cast<std::size_t>(end - text);
  if (length < width) out.append(width - length, ' ');
  out.append(text, length);
}

void AppendAmount(std::string& out, const render::AmountWriter& writer, double amount,
                  std::size_t width) {
  char text[64];
  const std::size_t length = writer.Write(amount, text);
  const std::size_t shown = render::DisplayWidth(std::string_view(text, length));
  if (shown < width) out.append(width - shown, ' ');
  out.append(text, length);
}

void PrintText(Context& context, const RegisterView& view) {
  const LVCurrency& currency = *view.account->currency();
  const render::AmountWriter amounts(currency);
  using render::Align;
  constexpr std::size_t kNumber = 6, kCheck = 6, kType = 14, kToFrom = 22, kDescription = 24,
                        kCategory = 22, kAmount = 14;
  std::string out;
  out.reserve(1 << 16);
  if (view.filter.active) out += "Filter: " + view.filter.line + "\n";
  render::AppendPadded(out, "No.", kNumber, Align::kRight);
  out += "  ";
  render::AppendPadded(out, "Date", 10, Align::kLeft);
  out += "  ";
  render::AppendPadded(out, "Check", kCheck, Align::kRight);
  for (auto [title, width] : {std::pair{"Type", kType}, {"To/From", kToFrom},
                              {"Description", kDescription}, {"Category", kCategory}}) {
    out += "  ";
    render::AppendPadded(out, title, width, Align::kLeft);
  }
  out += "  R ";
  render::AppendPadded(out, "Amount", kAmount, Align::kRight);
  out += "  ";
  render::AppendPadded(out, "Balance", kAmount, Align::kRight);
  out += '\n';
  for (std::size_t i = 0; i < view.size(); ++i) {
    const RegisterRow row = view.row(i);
    AppendNumber(out, row.number, kNumber);
    out += "  ";
    AppendDate(out, row.date);
    out += "  ";
    if (row.checkNumber) {
      AppendNumber(out, *row.checkNumber, kCheck);
    } else {
      out.append(kCheck, ' ');
    }
    out += "  ";
    render::AppendPadded(out, row.type, kType, Align::kLeft);
    out += "  ";
    render::AppendPadded(out, row.toFrom, kToFrom, Align::kLeft);
    out += "  ";
    render::AppendPadded(out, row.description, kDescription, Align::kLeft);
    out += "  ";
    render::AppendPadded(out, row.category, kCategory, Align::kLeft);
    out += "  ";
    render::AppendPadded(out, ResolvedMark(row), 2, Align::kLeft);
    AppendAmount(out, amounts, row.amount, kAmount);
    out += "  ";
    AppendAmount(out, amounts, row.balance, kAmount);
    out += '\n';
    if (out.size() > (1 << 16) - 512) {
      context.out.write(out.data(), static_cast<std::streamsize>(out.size()));
      out.clear();
    }
  }
  out += '\n';
  auto line = [&](std::string_view label, double amount) {
    render::AppendPadded(out, label, 18, Align::kLeft);
    amounts.Append(out, amount);
    out += '\n';
  };
  if (view.filter.active) {
    render::AppendPadded(out, "Shown:", 18, Align::kLeft);
    out += std::to_string(view.size()) + " of " + std::to_string(view.allEntries) +
           " entries, total " + amounts.Text(view.shownTotal) + "\n";
  }
  line("Current balance:", view.balance);
  line("Today's balance:", view.todaysBalance);
  line("Resolved balance:", view.resolvedBalance);
  context.out.write(out.data(), static_cast<std::streamsize>(out.size()));
}

render::Json OrNull(const std::string& text) {
  return text.empty() ? render::Json(nullptr) : render::JsonText(text);
}

void PrintJson(Context& context, const RegisterView& view) {
  const RegisterFilterWords& f = view.filter;
  render::JsonWriter json(context.out);
  json.BeginObject();
  json.Key("account");
  json.String(view.account->GetName());
  json.Key("currency");
  json.String(view.currency);
  json.Key("filter");
  json.Value({{"active", f.active},
              {"field", f.field},
              {"search", render::JsonText(f.search)},
              {"dates", f.dates},
              {"from", f.from ? render::Json(platform::FormatIsoDate(*f.from)) : nullptr},
              {"to", f.to ? render::Json(platform::FormatIsoDate(*f.to)) : nullptr},
              {"resolved", f.resolved},
              {"taxDeductible", f.taxDeductible},
              {"folder", OrNull(f.folder)},
              {"smartFolder", OrNull(f.smartFolder)}});
  json.Key("entries");
  json.BeginArray();
  for (std::size_t i = 0; i < view.size(); ++i) {
    const RegisterRow row = view.row(i);
    json.BeginObject();
    json.Key("number");
    json.Number(row.number);
    json.Key("date");
    char date[16];
    json.String(std::string_view(date, FormatDate(row.date, date)));
    json.Key("checkNumber");
    if (row.checkNumber) {
      json.Number(*row.checkNumber);
    } else {
      json.Null();
    }
    json.Key("type");
    json.String(row.type);
    json.Key("toFrom");
    json.String(row.toFrom);
    json.Key("description");
    json.String(row.description);
    json.Key("category");
    json.String(row.category);
    json.Key("resolved");
    json.Bool(row.resolved);
    json.Key("void");
    json.Bool(row.isVoid);
    json.Key("amount");
    json.Amount(row.amount);
    json.Key("balance");
    json.Amount(row.balance);
    json.EndObject();
  }
  json.EndArray();
  json.Key("balances");
  json.BeginObject();
  json.Key("current");
  json.Amount(view.balance);
  json.Key("today");
  json.Amount(view.todaysBalance);
  json.Key("resolved");
  json.Amount(view.resolvedBalance);
  json.EndObject();
  json.EndObject();
}

int Show(Context& context, RegisterOptions& options) {
  options.query.sort =
      static_cast<RegisterSort>(*CodeOf(RegisterSortWords(), options.sort));
  options.query.filter = FilterChangeOf(options.filter);
  options.query.filter.reset = options.reset;
  // Only a query that may change the stored filter opens the book for changing.
  auto book = OpenBook(context, options.query.filter.any() ? Book::Access::kWrite
                                                           : Book::Access::kRead);
  if (!book) return 1;
  auto view = ShowRegister(*book, options.query);
  PrintWarnings(context, *book);
  if (!view) return Fail(context, view.error());
  if (options.json) {
    PrintJson(context, *view);
  } else {
    PrintText(context, *view);
  }
  return 0;
}

}  // namespace

void RegisterRegisterCommand(CLI::App& app, Context& context, CommandList& actions) {
  auto options = std::make_shared<RegisterOptions>();
  CLI::App* reg = app.add_subcommand("register", "Show an account's register");
  reg->add_option("ACCOUNT", options->query.account, "Name or number of the account")->required();
  reg->add_option("--sort", options->sort, "Order: " + WordList(RegisterSortWords()))
      ->check(OneOf(RegisterSortWords(), "a sort order"));
  reg->add_flag("--descending", options->query.descending, "Sort in descending order");
  reg->add_flag("--json", options->json, "Print JSON");

  // The view filter, stored in the account and applied to every later register until reset.
  AddFilterOptions(*reg, options->filter,
                   "Show entries whose text contains TEXT (filter options are remembered)");
  reg->add_flag("--reset", options->reset,
                "Forget the stored filter first (other filter options then apply)");
  auto* folder = reg->add_option("--folder", options->query.folder, "Show this folder only");
  reg->add_option("--smart-folder", options->query.smartFolder, "Show this smart folder")
      ->excludes(folder);
  actions.emplace_back(reg, [&context, options]() { return Show(context, *options); });
}

}  // namespace folvant::app
