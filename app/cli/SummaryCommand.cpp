#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "app/cli/BookAccess.h"
#include "app/cli/Commands.h"
#include "app/render/AmountText.h"
#include "app/render/Chart.h"
#include "app/render/Json.h"
#include "app/render/SummaryChart.h"
#include "app/render/Table.h"
#include "folvant/book/Book.h"
#include "folvant/book/Summaries.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/platform/CivilDate.h"
#include "folvant/values/LVCurrency.h"
#include "folvant/values/ZELMUtilities.h"

namespace folvant::app {
namespace {

using platform::FormatIsoDate;
using render::Align;
using render::Json;
using render::JsonText;

std::int32_t Day(const platform::LocalTime& time) { return NSCalendarDateToDateNumber(time); }

// ---- options ----

struct Options {
  std::string account, name, newName, range, period;
  bool debitsOnly = false, depositsOnly = false, debitsAndDeposits = false;
  bool resolved = false, unresolved = false, anyResolved = false;
  bool taxDeductible = false, notTaxDeductible = false, anyTax = false;
  bool checks = false, notChecks = false, anyChecks = false;
  std::vector<std::string> filter;
  bool noFilter = false, noRollup = false, rollup = false;
  // show
  bool allAccounts = false, json = false, csv = false, chart = false;
  std::string svg;
  std::size_t rows = 10;
};

CLI::Validator RangeWords() {
  return CLI::Validator(
      [](const std::string& value) -> std::string {
        if (const auto range = ReadSummaryRange(value)) {
          if (range->start > range->end) return "\"" + value + "\" ends before it starts";
          return {};
        }
        return "\"" + value +
               "\" is not a range: all, all to today, today, yesterday, this or last week, "
               "month, quarter or year, week, month, quarter or year to date, or FROM..TO";
      },
      "RANGE");
}

CLI::Validator PeriodName() {
  return CLI::Validator(
      [](const std::string& value) -> std::string {
        if (ReadSummaryPeriod(value) >= 0) return {};
        return "\"" + value + "\" is not a period: day, week, month, quarter, year or none";
      },
      "PERIOD");
}

void AddDefinitionOptions(CLI::App* command, Options& o, bool edit) {
  command->add_option("--range", o.range, "all, this month, last year, year to date, FROM..TO, ...")
      ->check(RangeWords());
  command->add_option("--period", o.period, "day, week, month, quarter, year or none")
      ->check(PeriodName());
  auto* debits = command->add_flag("--debits-only", o.debitsOnly, "Only money going out");
  auto* deposits = command->add_flag("--deposits-only", o.depositsOnly, "Only money coming in");
  debits->excludes(deposits);
  auto* resolved = command->add_flag("--resolved", o.resolved, "Only resolved entries");
  auto* unresolved = command->add_flag("--unresolved", o.unresolved, "Only unresolved entries");
  resolved->excludes(unresolved);
  auto* tax = command->add_flag("--tax-deductible", o.taxDeductible, "Only tax-deductible entries");
  auto* notTax = command->add_flag("--not-tax-deductible", o.notTaxDeductible,
                                   "Only entries that are not tax-deductible");
  tax->excludes(notTax);
  auto* checks = command->add_flag("--checks", o.checks, "Only checks");
  auto* notChecks = command->add_flag("--not-checks", o.notChecks, "Only entries that are no check");
  checks->excludes(notChecks);
  auto* filter = command
                     ->add_option("--filter", o.filter,
                                  "FIELD TEXT: only entries whose field contains the text; FIELD "
                                  "is any, type, description, to-from-or-category, category, "
                                  "split-description, split-category or notes")
                     ->expected(2);
  auto* noRollup = command->add_flag("--no-subcategory-rollup", o.noRollup,
                                     "A parent category's subtotal leaves out its subcategories");
  if (edit) {
    command->add_option("--name", o.newName, "A new name");
    command->add_flag("--debits-and-deposits", o.debitsAndDeposits, "Money in and out")
        ->excludes(debits)
        ->excludes(deposits);
    command->add_flag("--any-resolved", o.anyResolved, "Resolved or not")
        ->excludes(resolved)
        ->excludes(unresolved);
    command->add_flag("--any-tax", o.anyTax, "Tax-deductible or not")
        ->excludes(tax)
        ->excludes(notTax);
    command->add_flag("--any-checks", o.anyChecks, "Checks or not")
        ->excludes(checks)
        ->excludes(notChecks);
    command->add_flag("--no-filter", o.noFilter, "No text filter")->excludes(filter);
    command->add_flag("--subcategory-rollup", o.rollup,
                      "A parent category's subtotal counts its subcategories")
        ->excludes(noRollup);
  }
}

// The options given, as the book layer takes them; a message for a filter field that does not
// read.
std::optional<std::string> ReadOptions(const Options& o, SummaryOptions& s) {
  if (!o.newName.empty()) s.name = o.newName;
  if (!o.range.empty()) s.range = ReadSummaryRange(o.range);
  if (!o.period.empty()) s.period = ReadSummaryPeriod(o.period);
  if (o.debitsOnly) s.debits = true, s.deposits = false;
  if (o.depositsOnly) s.debits = false, s.deposits = true;
  if (o.debitsAndDeposits) s.debits = true, s.deposits = true;
  const auto choice = [](bool yes, bool no, bool any) -> std::optional<std::int32_t> {
    if (yes) return 0;
    if (no) return 1;
    if (any) return 2;
    return std::nullopt;
  };
  s.resolved = choice(o.resolved, o.unresolved, o.anyResolved);
  s.taxDeductible = choice(o.taxDeductible, o.notTaxDeductible, o.anyTax);
  s.checks = choice(o.checks, o.notChecks, o.anyChecks);
  if (o.filter.size() == 2) {
    const std::int32_t field = ReadSummaryFilterField(o.filter[0]);
    if (field < 0) {
      return "--filter: \"" + o.filter[0] +
             "\" is not a field: any, type, description, to-from-or-category, category, "
             "split-description, split-category or notes";
    }
    s.filter = std::make_pair(field, o.filter[1]);
  }
  if (o.noFilter) s.filter = std::make_pair(0, std::string());
  if (o.noRollup) s.subcategoriesInParents = false;
  if (o.rollup) s.subcategoriesInParents = true;
  return std::nullopt;
}

// ---- what a definition reads as ----

std::string Choice(std::int32_t choice, const char* yes, const char* no) {
  return choice == 0 ? yes : choice == 1 ? no : "";
}

// "debits only, tax-deductible, description contains "rent"": what the summary takes.
std::string Takes(const SummaryDefinition& d) {
  std::vector<std::string> parts;
  if (!d.deposits) parts.push_back("debits only");
  if (!d.debits) parts.push_back("deposits only");
  for (std::string part : {Choice(d.resolved, "resolved", "unresolved"),
                           Choice(d.taxDeductible, "tax-deductible", "not tax-deductible"),
                           Choice(d.checks, "checks", "no checks")}) {
    if (!part.empty()) parts.push_back(part);
  }
  if (d.filter) parts.push_back(d.filterField + " contains \"" + d.filterText + "\"");
  if (parts.empty()) return "every entry";
  std::string text;
  for (const auto& p : parts) text += (text.empty() ? "" : ", ") + p;
  return text;
}

Json DefinitionJson(const SummaryDefinition& d) {
  Json j = Json::object();
  j["name"] = JsonText(d.name);
  j["range"] = d.range;
  j["period"] = d.period;
  j["debits"] = d.debits;
  j["deposits"] = d.deposits;
  j["resolved"] = d.resolved;
  j["taxDeductible"] = d.taxDeductible;
  j["checks"] = d.checks;
  j["filter"] = d.filter ? Json::object({{"field", d.filterField}, {"text", JsonText(d.filterText)}})
                         : Json(nullptr);
  j["subcategoryRollup"] = d.subcategoriesInParents;
  j["selected"] = d.selected;
  return j;
}

// ---- summary list / new / edit / remove / select ----

int List(Context& context, const Options& o) {
  auto book = OpenBook(context);
  if (!book) return 1;
  auto listing = ListSummaries(*book, o.account);
  PrintWarnings(context, *book);
  if (!listing) return Fail(context, listing.error());
  if (o.json) {
    Json summaries = Json::array();
    for (const auto& d : listing->summaries) summaries.push_back(DefinitionJson(d));
    render::WriteJson(context.out, Json::object({{"account", JsonText(listing->account->GetName())},
                                                 {"summaries", std::move(summaries)}}));
    return 0;
  }
  render::Table table;
  table.AddFitColumn("", Align::kLeft);
  table.AddFitColumn("Name", Align::kLeft);
  table.AddFitColumn("Range", Align::kLeft);
  table.AddFitColumn("Period", Align::kLeft);
  table.AddFitColumn("Takes", Align::kLeft);
  for (const auto& d : listing->summaries) {
    table.AddRow({d.selected ? "*" : "", d.name, d.range, d.period, Takes(d)});
  }
  std::string out;
  table.Write(out);
  context.out << out << "\n* the summary `summary show` gives without a name\n";
  return 0;
}

using Change = BookResult<SummaryChange> (*)(Book&, std::string_view, const std::string&,
                                             const SummaryOptions&);

int ChangeSummary(Context& context, const Options& o, Change change, const char* verb) {
  SummaryOptions options;
  if (auto bad = ReadOptions(o, options)) {
    Fail(context, *bad);
    return 2;
  }
  return ChangeBook(
      context, [&](Book& book) { return change(book, o.account, o.name, options); },
      [&](const SummaryChange& c) {
        if (o.json) {
          render::WriteJson(context.out,
                            Json::object({{"account", JsonText(c.account->GetName())},
                                          {"summary", DefinitionJson(c.summary)}}));
          return;
        }
        context.out << verb << " summary \"" << c.summary.name << "\" of \""
                    << c.account->GetName() << "\": " << c.summary.range << ", "
                    << (c.summary.period == "none" ? "in one period" : "by " + c.summary.period)
                    << ", " << Takes(c.summary) << '\n';
      });
}

BookResult<SummaryChange> Remove(Book& book, std::string_view account, const std::string& name,
                                 const SummaryOptions&) {
  return RemoveSummary(book, account, name);
}
BookResult<SummaryChange> Select(Book& book, std::string_view account, const std::string& name,
                                 const SummaryOptions&) {
  return SelectSummary(book, account, name);
}

// ---- summary show ----

using render::PeriodLabel;

void Flatten(const ZELMCategorySubtotals& nodes, int depth,
             std::vector<std::pair<const ZELMCategorySubtotal*, int>>& out) {
  render::FlattenCategories(nodes, depth, out);
}

std::string Share(double amount, const ZELMSummaryReport& r) {
  const double whole = amount < 0 ? r.debitsTotal : r.depositsTotal;
  if (whole == 0 || amount == 0) return "";
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "%.1f%%", 100.0 * amount / whole);
  return buffer;
}

Json RowsJson(const ZELMSummaryRows& rows) {
  Json j = Json::object();
  for (const auto& [key, row] : rows) {
    j[key] = Json::object({{"amount", render::JsonAmount(row.amount)},
                           {"debits", render::JsonAmount(row.debits)},
                           {"deposits", render::JsonAmount(row.deposits)}});
  }
  return j;
}

Json CategoriesJson(const ZELMCategorySubtotals& nodes) {
  Json j = Json::array();
  for (const auto& node : nodes) {
    j.push_back(Json::object({{"subtotalName", JsonText(node.subtotalName)},
                              {"amount", render::JsonAmount(node.amount)},
                              {"debits", render::JsonAmount(node.debits)},
                              {"deposits", render::JsonAmount(node.deposits)},
                              {"children", CategoriesJson(node.children)}}));
  }
  return j;
}

Json TotalsJson(const ZELMSummaryTotals& t) {
  Json j = Json::object();
  j["startDate"] = FormatIsoDate(Day(t.startDate));
  j["endDate"] = FormatIsoDate(Day(t.endDate));
  j["startBalance"] = render::JsonAmount(t.startBalance);
  j["endBalance"] = render::JsonAmount(t.endBalance);
  j["total"] = render::JsonAmount(t.total);
  j["entryCount"] = t.entryCount;
  j["depositsTotal"] = render::JsonAmount(t.depositsTotal);
  j["debitsTotal"] = render::JsonAmount(t.debitsTotal);
  j["resolvedTotal"] = render::JsonAmount(t.resolvedTotal);
  j["unresolvedTotal"] = render::JsonAmount(t.unresolvedTotal);
  j["taxDeductibleTotal"] = render::JsonAmount(t.taxDeductibleTotal);
  j["taxableTotal"] = render::JsonAmount(t.taxableTotal);
  j["descriptionsSubtotals"] = RowsJson(t.descriptionsSubtotals);
  j["typesSubtotals"] = RowsJson(t.typesSubtotals);
  j["toFromSubtotals"] = RowsJson(t.toFromSubtotals);
  j["categoriesSubtotals"] = CategoriesJson(t.categoriesSubtotals);
  return j;
}

void PrintJson(Context& context, const SummaryResult& r) {
  Json report = TotalsJson(r.report);
  Json periods = Json::array();
  for (const auto& p : r.report.subtotals) {
    Json period = TotalsJson(p);
    period["runningTotal"] = render::JsonAmount(p.runningTotal);
    Json entries = Json::array();
    for (const auto& e : p.entries) entries.push_back(e->GetNumber());
    period["entries"] = std::move(entries);
    periods.push_back(std::move(period));
  }
  report["subtotals"] = std::move(periods);
  Json accounts = Json::array();
  for (const auto& a : r.accounts) accounts.push_back(JsonText(a->GetName()));
  Json document = Json::object();
  document["title"] = JsonText(r.title);
  document["accounts"] = std::move(accounts);
  Json leftOut = Json::array();
  for (const auto& [name, why] : r.leftOut) {
    leftOut.push_back(Json::object({{"account", JsonText(name)}, {"why", JsonText(why)}}));
  }
  document["leftOut"] = std::move(leftOut);
  document["currency"] = r.currency ? Json(r.currency->code()) : Json(nullptr);
  document["summary"] = DefinitionJson(r.definition);
  document["report"] = std::move(report);
  render::WriteJson(context.out, document);
}

// A CSV field, quoted when it must be.
std::string Csv(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + "\"";
}

std::string Plain(double amount) {
  char buffer[render::kPlainAmountSize];
  const std::size_t n = render::WritePlainAmount(amount, buffer);
  return std::string(buffer, n);
}

void PrintCsv(Context& context, const SummaryResult& r) {
  std::string out = "period,start,end,entries,deposits,debits,net,running total,end balance\n";
  double running = 0;
  for (const auto& p : r.report.subtotals) {
    running += p.total;
    out += Csv(PeriodLabel(p, r.period)) + "," + FormatIsoDate(Day(p.startDate)) + "," +
           FormatIsoDate(Day(p.endDate)) + "," + std::to_string(p.entryCount) + "," +
           Plain(p.depositsTotal) + "," + Plain(p.debitsTotal) + "," + Plain(p.total) + "," +
           Plain(running) + "," + Plain(p.endBalance) + "\n";
  }
  out += "\ncategory,depth,amount,debits,deposits\n";
  std::vector<std::pair<const ZELMCategorySubtotal*, int>> nodes;
  Flatten(r.report.categoriesSubtotals, 0, nodes);
  for (const auto& [node, depth] : nodes) {
    out += Csv(node->subtotalName) + "," + std::to_string(depth) + "," + Plain(node->amount) + "," +
           Plain(node->debits) + "," + Plain(node->deposits) + "\n";
  }
  context.out << out;
}

// The largest rows of a subtotal by size, at most `count`.
void AppendLargest(std::string& out, const char* heading, const ZELMSummaryRows& rows,
                   std::size_t count, const render::AmountWriter& amounts) {
  std::vector<std::pair<std::string, double>> sorted;
  for (const auto& [key, row] : rows) sorted.emplace_back(key, row.amount);
  std::stable_sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) {
    return std::fabs(a.second) > std::fabs(b.second);
  });
  if (sorted.empty() || count == 0) return;
  render::Table table;
  table.AddFitColumn(heading, Align::kLeft, 40);
  table.AddFitColumn("Amount", Align::kRight);
  for (std::size_t i = 0; i < sorted.size() && i < count; ++i) {
    table.AddRow({sorted[i].first.empty() ? "(none)" : sorted[i].first,
                  amounts.Text(sorted[i].second)});
  }
  out += "\n";
  table.Write(out);
}

std::vector<render::PeriodValues> PeriodValues(const SummaryResult& r) {
  return render::PeriodValuesOf(r);
}

std::size_t TerminalWidth() {
  if (const char* columns = std::getenv("COLUMNS")) {
    const long n = std::strtol(columns, nullptr, 10);
    if (n >= 40 && n <= 1000) return static_cast<std::size_t>(n);
  }
  return 80;
}

void PrintText(Context& context, const SummaryResult& r, const Options& o) {
  const render::AmountWriter amounts(*r.currency);
  const ZELMSummaryReport& report = r.report;
  std::string out = r.title + "\n";
  for (const auto& [name, why] : r.leftOut) out += "Left out of the report: " + why + "\n";
  out += "Range: " + FormatIsoDate(Day(report.startDate)) + " to " +
         FormatIsoDate(Day(report.endDate)) +
         (r.definition.range.find("..") == std::string::npos ? " (" + r.definition.range + ")"
                                                             : std::string()) +
         ", " +
         (r.period == 5 ? std::string("in one period") : "by " + r.definition.period) + "; " +
         Takes(r.definition) + "\n";
  out += "Start balance: " + amounts.Text(report.startBalance) +
         "   End balance: " + amounts.Text(report.endBalance) + "\n\n";

  if (o.chart) {
    out += render::PeriodChartText(PeriodValues(r),
                                   [&](double a) { return amounts.Text(a); }, TerminalWidth());
  } else {
    render::Table periods;
    periods.AddFitColumn("Period", Align::kLeft);
    periods.AddFitColumn("Deposits", Align::kRight);
    periods.AddFitColumn("Debits", Align::kRight);
    periods.AddFitColumn("Net", Align::kRight);
    periods.AddFitColumn("Running total", Align::kRight);
    periods.AddFitColumn("End balance", Align::kRight);
    double running = 0;
    for (const auto& p : report.subtotals) {
      running += p.total;
      periods.AddRow({PeriodLabel(p, r.period), amounts.Text(p.depositsTotal),
                      amounts.Text(p.debitsTotal), amounts.Text(p.total), amounts.Text(running),
                      amounts.Text(p.endBalance)});
    }
    periods.AddRow({"Total", amounts.Text(report.depositsTotal), amounts.Text(report.debitsTotal),
                    amounts.Text(report.total), "", ""});
    periods.Write(out);
  }
  out += "\n" + std::to_string(report.entryCount) +
         (report.entryCount == 1 ? " entry" : " entries") + "; resolved " +
         amounts.Text(report.resolvedTotal) + ", unresolved " +
         amounts.Text(report.unresolvedTotal) + ", tax-deductible " +
         amounts.Text(report.taxDeductibleTotal) + "\n";

  std::vector<std::pair<const ZELMCategorySubtotal*, int>> nodes;
  Flatten(report.categoriesSubtotals, 0, nodes);
  if (!nodes.empty()) {
    render::Table categories;
    categories.AddFitColumn("Category", Align::kLeft, 40);
    categories.AddFitColumn("Amount", Align::kRight);
    categories.AddFitColumn("Share", Align::kRight);
    for (const auto& [node, depth] : nodes) {
      const std::string name = node->subtotalName.empty() ? "(none)" : node->subtotalName;
      categories.AddRow({std::string(static_cast<std::size_t>(depth) * 2, ' ') + name,
                         amounts.Text(node->amount), Share(node->amount, report)});
    }
    out += "\n";
    categories.Write(out);
  }
  AppendLargest(out, "To/From", report.toFromSubtotals, o.rows, amounts);
  AppendLargest(out, "Description", report.descriptionsSubtotals, o.rows, amounts);
  AppendLargest(out, "Type", report.typesSubtotals, o.rows, amounts);
  context.out << out;
}

bool WriteSvg(Context& context, const SummaryResult& r, const std::string& file) {
  const std::string svg = render::SummaryResultSvg(r);
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream << svg;
  stream.close();
  if (!stream) {
    Fail(context, "--svg: cannot write " + file);
    return false;
  }
  return true;
}

int Show(Context& context, const Options& o) {
  SummaryOptions overrides;
  if (auto bad = ReadOptions(o, overrides)) {
    Fail(context, *bad);
    return 2;
  }
  auto book = OpenBook(context);
  if (!book) return 1;
  auto result = ShowSummary(*book, o.account,
                            o.name.empty() ? std::nullopt : std::optional<std::string>(o.name),
                            overrides, o.allAccounts);
  PrintWarnings(context, *book);
  if (!result) return Fail(context, result.error());
  if (!o.svg.empty() && !WriteSvg(context, *result, o.svg)) return 1;
  if (o.json) {
    PrintJson(context, *result);
  } else if (o.csv) {
    // The tables stay plain CSV; what was left out goes to the error stream.
    for (const auto& [name, why] : result->leftOut) {
      context.err << "folvant: left out of the report: " << why << '\n';
    }
    PrintCsv(context, *result);
  } else {
    PrintText(context, *result, o);
  }
  return 0;
}

}  // namespace

void RegisterSummaryCommand(CLI::App& app, Context& context, CommandList& actions) {
  CLI::App* summary =
      app.add_subcommand("summary", "Reports of income and expenses by period and category");
  summary->require_subcommand(1);
  const auto account = [](CLI::App* command, Options& o) {
    command->add_option("ACCOUNT", o.account, "Name or number of the account")->required();
  };
  {
    auto o = std::make_shared<Options>();
    CLI::App* list = summary->add_subcommand("list", "List an account's summaries");
    account(list, *o);
    list->add_flag("--json", o->json, "Print JSON");
    actions.emplace_back(list, [&context, o]() { return List(context, *o); });
  }
  {
    auto o = std::make_shared<Options>();
    CLI::App* show = summary->add_subcommand(
        "show", "Show a summary's report (options change this run only)");
    account(show, *o);
    show->add_option("NAME", o->name, "The summary (default: the selected one)");
    AddDefinitionOptions(show, *o, false);
    show->add_flag("--all-accounts", o->allAccounts,
                   "Report over every account, in the book's base currency");
    auto* json = show->add_flag("--json", o->json, "Print the report as JSON");
    show->add_flag("--csv", o->csv, "Print the period and category tables as CSV")->excludes(json);
    show->add_flag("--chart", o->chart, "Draw the periods as bars");
    show->add_option("--svg", o->svg, "Also write the charts to this SVG file");
    show->add_option("--rows", o->rows, "Rows of the largest to/from, description and type")
        ->check(CLI::NonNegativeNumber);
    actions.emplace_back(show, [&context, o]() { return Show(context, *o); });
  }
  struct Named {
    const char* name;
    const char* help;
    Change change;
    const char* verb;
    bool options, edit;
  };
  for (const Named& n : {Named{"new", "Add a summary", &AddSummary, "Added", true, false},
                         Named{"edit", "Change a summary", &EditSummary, "Changed", true, true},
                         Named{"remove", "Remove a summary", &Remove, "Removed", false, false},
                         Named{"select", "Make a summary the one shown without a name", &Select,
                               "Selected", false, false}}) {
    auto o = std::make_shared<Options>();
    CLI::App* command = summary->add_subcommand(n.name, n.help);
    account(command, *o);
    command->add_option("NAME", o->name, "The summary's name")->required();
    if (n.options) AddDefinitionOptions(command, *o, n.edit);
    command->add_flag("--json", o->json, "Print JSON");
    actions.emplace_back(command, [&context, o, n]() {
      return ChangeSummary(context, *o, n.change, n.verb);
    });
  }
}

}  // namespace folvant::app
