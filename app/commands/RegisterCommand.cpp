#include <algorithm>
#include <iomanip>
#include <ostream>
#include <string>
#include <vector>

#include "folvant/book/Book.h"
#include "app/Lookup.h"
#include "app/Output.h"
#include "app/commands/Commands.h"
#include "folvant/filters/ZELMFilter.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountEntryType.h"
#include "folvant/model/ZELMAccountFolder.h"
#include "folvant/platform/Clock.h"
#include "folvant/platform/Text.h"
#include "folvant/values/LVCurrency.h"

namespace folvant::app {
namespace {

// Sort keys of the register, as the account numbers them.
constexpr int kSortByDateChecksFirst = 1;

// The register view's search field: the option's word and the stored filter type. Any other
// stored type searches every text field, as "general" does.
struct FieldName {
  const char* word;
  std::int32_t type;
};
constexpr FieldName kFieldNames[] = {
    {"general", 0},         {"description", 10}, {"payee", 11},
    {"type", 12},           {"notes", 13},       {"amount", 14},
    {"check", 15},          {"category", 16},    {"split-description", 71},
    {"split-category", 72},
};

// The register view's date ranges: the option's word and the stored date-filter type. A
// custom range FROM..TO is type 61 with the stored start and end days; any type not listed
// sets no date limit.
struct DatesName {
  const char* word;
  std::int32_t type;
};
constexpr std::int32_t kDatesAll = 60;
constexpr std::int32_t kDatesCustom = 61;
constexpr DatesName kDatesNames[] = {
    {"all", kDatesAll},   {"through-today", 20}, {"today", 21},           {"yesterday", 22},
    {"this-week", 30},    {"this-month", 31},    {"this-quarter", 32},    {"this-year", 33},
    {"last-week", 40},    {"last-month", 41},    {"last-quarter", 42},    {"last-year", 43},
    {"week-to-date", 50}, {"month-to-date", 51}, {"quarter-to-date", 52}, {"year-to-date", 53},
};

// Resolved and tax-deductible settings: only those set, only those not set, all.
constexpr std::int32_t kResolvedOnly = 80, kUnresolvedOnly = 81, kAnyResolved = 82;
constexpr std::int32_t kTaxDeductibleOnly = 90, kNotTaxDeductibleOnly = 91, kAnyTaxDeductible = 92;

struct RegisterOptions {
  std::string account;
  int sort = kSortByDateChecksFirst;
  bool descending = false;
  bool json = false;
  // The view filter; each is applied only when given on the command line.
  std::string search;
  std::string field;
  std::string dates;
  bool resolved = false;
  bool unresolved = false;
  bool taxDeductible = false;
  bool notTaxDeductible = false;
  bool reset = false;
  std::string folder;
  std::string smartFolder;
  CLI::Option* searchOption = nullptr;
  CLI::Option* fieldOption = nullptr;
  CLI::Option* datesOption = nullptr;
};

// The seven stored settings of the register view, to tell whether a command changed them.
struct ViewSettings {
  std::int32_t filterType, resolved, taxDeductible, dateType, start, end;
  plist::Value data;
  bool operator==(const ViewSettings&) const = default;
};

ViewSettings ReadSettings(const ZELMAccount& account) {
  return {account.entryFilterType(),
          account.entryResolvedFilterType(),
          account.entryTaxDeductibleFilterType(),
          account.entryDateFilterType(),
          account.entryDateFilterStartDate(),
          account.entryDateFilterEndDate(),
          account.entryFilterData()};
}

// FROM..TO as two days; false when the text is not such a range.
bool ParseCustomRange(std::string_view text, std::int32_t& from, std::int32_t& to) {
  const auto dots = text.find("..");
  return dots != std::string_view::npos && ParseDateNumber(text.substr(0, dots), from) &&
         ParseDateNumber(text.substr(dots + 2), to) && from <= to;
}

std::string ValidateDates(const std::string& text) {
  for (const DatesName& name : kDatesNames) {
    if (text == name.word) return {};
  }
  std::int32_t from = 0, to = 0;
  if (ParseCustomRange(text, from, to)) return {};
  std::string allowed;
  for (const DatesName& name : kDatesNames) allowed += std::string(name.word) + ", ";
  return "\"" + text + "\" is not a date range; use one of: " + allowed +
         "or FROM..TO (YYYY-MM-DD..YYYY-MM-DD, FROM not after TO)";
}

void ApplyOptions(ZELMAccount& account, const RegisterOptions& options) {
  if (options.reset) {
    const plist::Value empty{std::string()};
    account.setEntryFilterType(0);
    account.setEntryFilterData(&empty);
    account.setEntryResolvedFilterType(kAnyResolved);
    account.setEntryTaxDeductibleFilterType(kAnyTaxDeductible);
    account.setEntryDateFilterType(kDatesAll);
    account.setEntryDateFilterStartDate(platform::Today());
    account.setEntryDateFilterEndDate(platform::Today());
  }
  if (options.searchOption->count() > 0) {
    const plist::Value data{options.search};
    account.setEntryFilterData(&data);
  }
  if (options.fieldOption->count() > 0) {
    for (const FieldName& name : kFieldNames) {
      if (options.field == name.word) account.setEntryFilterType(name.type);
    }
  }
  if (options.datesOption->count() > 0) {
    std::int32_t from = 0, to = 0;
    if (ParseCustomRange(options.dates, from, to)) {
      account.setEntryDateFilterType(kDatesCustom);
      account.setEntryDateFilterStartDate(from);
      account.setEntryDateFilterEndDate(to);
    }
    for (const DatesName& name : kDatesNames) {
      if (options.dates == name.word) account.setEntryDateFilterType(name.type);
    }
  }
  if (options.resolved) account.setEntryResolvedFilterType(kResolvedOnly);
  if (options.unresolved) account.setEntryResolvedFilterType(kUnresolvedOnly);
  if (options.taxDeductible) account.setEntryTaxDeductibleFilterType(kTaxDeductibleOnly);
  if (options.notTaxDeductible) account.setEntryTaxDeductibleFilterType(kNotTaxDeductibleOnly);
}

// What the register shows, in words, for the header and the JSON output.
struct FilterDescription {
  bool active = false;
  std::string field = "general";
  std::string search;
  std::string dates = "none";  // a stored type that sets no date limit
  std::string resolved = "all";
  std::string taxDeductible = "all";
  std::string folder;
  std::string smartFolder;
  std::string line;  // "Filter: ..." without the prefix
};

FilterDescription Describe(const ZELMAccount& account, const ZELMAccountFolder* folder,
                           const ZELMFilter* smart_folder) {
  FilterDescription d;
  std::vector<std::string> parts;
  for (const FieldName& name : kFieldNames) {
    if (name.type == account.entryFilterType()) d.field = name.word;
  }
  if (const std::string* text = account.entryFilterData().asString()) d.search = *text;
  if (!d.search.empty()) parts.push_back(d.field + " contains \"" + d.search + "\"");
  const std::int32_t date_type = account.entryDateFilterType();
  if (date_type == kDatesCustom) {
    d.dates = FormatDateNumber(account.entryDateFilterStartDate()) + ".." +
              FormatDateNumber(account.entryDateFilterEndDate());
  }
  for (const DatesName& name : kDatesNames) {
    if (name.type == date_type) d.dates = name.word;
  }
  if (date_type != kDatesAll && d.dates != "none") parts.push_back("dates " + d.dates);
  if (account.entryResolvedFilterType() == kResolvedOnly) d.resolved = "resolved";
  if (account.entryResolvedFilterType() == kUnresolvedOnly) d.resolved = "unresolved";
  if (d.resolved != "all") parts.push_back(d.resolved + " only");
  if (account.entryTaxDeductibleFilterType() == kTaxDeductibleOnly) d.taxDeductible = "yes";
  if (account.entryTaxDeductibleFilterType() == kNotTaxDeductibleOnly) d.taxDeductible = "no";
  if (d.taxDeductible == "yes") parts.push_back("tax-deductible only");
  if (d.taxDeductible == "no") parts.push_back("not tax-deductible only");
  if (folder != nullptr) {
    d.folder = folder->name();
    parts.push_back("folder \"" + d.folder + "\"");
  }
  if (smart_folder != nullptr) {
    d.smartFolder = smart_folder->name();
    parts.push_back("smart folder \"" + d.smartFolder + "\"");
  }
  d.active = !parts.empty();
  for (std::size_t i = 0; i < parts.size(); ++i) d.line += (i > 0 ? ", " : "") + parts[i];
  return d;
}

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

void PrintText(Context& context, const ZELMAccount& account, const std::vector<Row>& rows,
               const FilterDescription& filter) {
  const LVCurrency& currency = *account.currency();
  if (filter.active) context.out << "Filter: " << filter.line << '\n';
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
  context.out << '\n';
  if (filter.active) {
    double total = 0.0;
    for (const Row& row : rows) {
      if (!row.entry->GetVoid()) total += row.entry->GetAmount();
    }
    context.out << Pad("Shown:", 18) << rows.size() << " of " << account.GetAllEntries().size()
                << " entries, total " << FormatAmount(currency, total) << '\n';
  }
  context.out << Pad("Current balance:", 18) << FormatAmount(currency, account.GetBalance()) << '\n'
              << Pad("Today's balance:", 18) << FormatAmount(currency, account.GetTodaysBalance())
              << '\n'
              << Pad("Resolved balance:", 18)
              << FormatAmount(currency, account.GetResolvedBalance()) << '\n';
}

std::string JsonOrNull(const std::string& text) {
  return text.empty() ? std::string("null") : JsonString(text);
}

void PrintJson(Context& context, const ZELMAccount& account, const std::vector<Row>& rows,
               const FilterDescription& filter) {
  auto& out = context.out;
  out << "{\n  \"account\": " << JsonString(account.GetName())
      << ",\n  \"currency\": " << JsonString(account.currency()->code())
      << ",\n  \"filter\": {\"active\": " << (filter.active ? "true" : "false")
      << ", \"field\": " << JsonString(filter.field)
      << ", \"search\": " << JsonString(filter.search)
      << ", \"dates\": " << JsonString(filter.dates)
      << ", \"from\": " << JsonString(FormatDateNumber(account.entryDateFilterStartDate()))
      << ", \"to\": " << JsonString(FormatDateNumber(account.entryDateFilterEndDate()))
      << ", \"resolved\": " << JsonString(filter.resolved)
      << ", \"taxDeductible\": " << JsonString(filter.taxDeductible)
      << ", \"folder\": " << JsonOrNull(filter.folder)
      << ", \"smartFolder\": " << JsonOrNull(filter.smartFolder) << "}"
      << ",\n  \"entries\": [";
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
  // Filter options may change the stored filter: only then is the book opened for changing.
  const bool may_change = options.reset || options.searchOption->count() > 0 ||
                          options.fieldOption->count() > 0 || options.datesOption->count() > 0 ||
                          options.resolved || options.unresolved || options.taxDeductible ||
                          options.notTaxDeductible;
  auto book = OpenBook(context, may_change ? Book::Access::kWrite : Book::Access::kRead);
  if (!book) return 1;
  auto account = FindAccount(context, *book, options.account);
  if (!account) return 1;
  // The shown folder and smart folder are not stored with the account: they apply to this
  // command only.
  std::shared_ptr<ZELMAccountFolder> folder;
  std::shared_ptr<ZELMFilter> smart_folder;
  if (!options.folder.empty() && !(folder = FindNamed(account->folders(), options.folder))) {
    return Fail(context,
                "no folder named \"" + options.folder + "\" in \"" + account->GetName() + "\"");
  }
  if (!options.smartFolder.empty() &&
      !(smart_folder = FindNamed(account->smartFolders(), options.smartFolder))) {
    return Fail(context, "no smart folder named \"" + options.smartFolder + "\" in \"" +
                             account->GetName() + "\"");
  }

  // The filter settings are the account's own: stored, so the next register shows the same.
  const ViewSettings before = ReadSettings(*account);
  ApplyOptions(*account, options);
  if (!(ReadSettings(*account) == before)) {
    if (auto refused = book->Changed(*account)) return Fail(context, *refused);
    if (!SaveBook(context, *book)) return 1;
  }

  account->CacheRunningBalances();
  account->setFolder(folder);
  account->setSmartFolder(smart_folder);
  ZELMAccount::EntryList shown = account->entryFilteredEntries();
  // The account sorts the shown folder's list in place; a scratch folder holding the shown
  // entries gets the register's order without reordering any stored list.
  auto scratch = std::make_shared<ZELMAccountFolder>();
  scratch->setEntries(std::move(shown));
  account->setFolder(scratch);
  account->SortBy(options.sort, options.descending);
  account->setFolder(nullptr);
  account->setSmartFolder(nullptr);

  std::vector<Row> rows;
  rows.reserve(scratch->entries().size());
  for (const auto& entry : scratch->entries()) {
    rows.push_back(
        {entry.get(), EntryTypeName(*account, *entry), EntryCategoryName(*account, *entry)});
  }
  const FilterDescription filter = Describe(*account, folder.get(), smart_folder.get());
  if (options.json) {
    PrintJson(context, *account, rows, filter);
  } else {
    PrintText(context, *account, rows, filter);
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

  // The view filter, stored in the account and applied to every later register until reset.
  std::string fields;
  for (const FieldName& name : kFieldNames)
    fields += std::string(fields.empty() ? "" : "|") + name.word;
  options->searchOption =
      reg->add_option("--search", options->search,
                      "Show entries whose text contains TEXT (filter options are remembered)");
  options->fieldOption = reg->add_option("--field", options->field, "Field searched: " + fields)
                             ->check([](const std::string& value) -> std::string {
                               for (const FieldName& name : kFieldNames) {
                                 if (value == name.word) return {};
                               }
                               std::string allowed;
                               for (const FieldName& name : kFieldNames)
                                 allowed += std::string(allowed.empty() ? "" : ", ") + name.word;
                               return "\"" + value + "\" is not a field; use one of: " + allowed;
                             });
  options->datesOption =
      reg->add_option("--dates", options->dates,
                      "Date range: all, through-today, today, yesterday, this-/last-week, "
                      "-month, -quarter, -year, week-/month-/quarter-/year-to-date, or FROM..TO")
          ->check(ValidateDates);
  auto* resolved = reg->add_flag("--resolved", options->resolved, "Show resolved entries only");
  reg->add_flag("--unresolved", options->unresolved, "Show unresolved entries only")
      ->excludes(resolved);
  auto* tax =
      reg->add_flag("--tax-deductible", options->taxDeductible, "Show tax-deductible entries only");
  reg->add_flag("--not-tax-deductible", options->notTaxDeductible,
                "Show entries that are not tax-deductible only")
      ->excludes(tax);
  reg->add_flag("--reset", options->reset,
                "Forget the stored filter first (other filter options then apply)");
  auto* folder = reg->add_option("--folder", options->folder, "Show this folder only");
  reg->add_option("--smart-folder", options->smartFolder, "Show this smart folder")
      ->excludes(folder);
  actions.emplace_back(reg, [&context, options]() { return ShowRegister(context, *options); });
}

}  // namespace folvant::app
