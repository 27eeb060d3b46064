#include "folvant/book/Summaries.h"

#include <algorithm>

#include "folvant/book/Book.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountScheduleCalendar.h"
#include "folvant/platform/CivilDate.h"
#include "folvant/platform/Text.h"
#include "folvant/summaries/ZELMAccountSummary.h"
#include "folvant/values/LVCurrency.h"

namespace folvant {
namespace {

using Kind = BookError::Kind;

constexpr std::int32_t kCustomRange = 20;

struct Named {
  const char* name;
  std::int32_t code;
};

// The ranges by name, in the order a person reads them.
constexpr Named kRanges[] = {
    {"all", 0},           {"all to today", 1},     {"today", 2},
    {"yesterday", 3},     {"last week", 4},        {"last month", 5},
    {"last quarter", 6},  {"last year", 7},        {"this week", 8},
    {"this month", 9},    {"this quarter", 10},    {"this year", 11},
    {"week to date", 15}, {"month to date", 16},   {"quarter to date", 17},
    {"year to date", 18},
};
constexpr const char* kPeriods[] = {"day", "week", "month", "quarter", "year", "none"};
constexpr Named kFilterFields[] = {
    {"any", 0},      {"type", 1},        {"description", 2},       {"to-from-or-category", 3},
    {"category", 4}, {"split-description", 10}, {"split-category", 12}, {"notes", 20},
};

std::string Quote(std::string_view text) { return "\"" + std::string(text) + "\""; }

// Lower case, with "-" and runs of spaces read as one space, and no spaces around.
std::string Words(std::string_view text) {
  std::string words;
  for (char c : platform::AsciiLower(text)) {
    if (c == '-' || c == '_' || c == ' ') {
      if (!words.empty() && words.back() != ' ') words += ' ';
    } else {
      words += c;
    }
  }
  while (!words.empty() && words.back() == ' ') words.pop_back();
  return words;
}

bool ParseDay(std::string_view text, std::int32_t& date) {
  return platform::ParseIsoDate(text, date);
}

// The summary of that name (ignoring case and the spaces around it).
std::shared_ptr<ZELMAccountSummary> Find(const ZELMAccount& account, std::string_view name) {
  const std::string wanted = Words(name);
  for (const auto& s : account.accountSummaries()) {
    if (platform::CaseInsensitiveEqual(Words(s->name()), wanted)) return s;
  }
  return nullptr;
}

BookResult<std::shared_ptr<ZELMAccountSummary>> SummaryNamed(const ZELMAccount& account,
                                                       std::string_view name) {
  if (auto s = Find(account, name)) return s;
  std::string names;
  for (const auto& s : account.accountSummaries()) {
    names += (names.empty() ? "" : ", ") + Quote(s->name());
  }
  return Unexpected{BookError::Of(Kind::kNotFound, Quote(account.GetName()) +
                                                       " has no summary named " + Quote(name) +
                                                       (names.empty() ? "" : "; its summaries: " +
                                                                                 names))};
}

std::optional<BookError> Check(const SummaryOptions& o) {
  if (o.name && Words(*o.name).empty()) return BookError::Of(Kind::kInvalid, "a summary needs a name");
  if (o.period && (*o.period < 0 || *o.period > 5)) {
    return BookError::Of(Kind::kInvalid, "the period must be day, week, month, quarter, year or none");
  }
  if (o.range && o.range->style == kCustomRange && o.range->start > o.range->end) {
    return BookError::Of(Kind::kInvalid, "the range ends before it starts");
  }
  for (const auto* choice : {&o.resolved, &o.taxDeductible, &o.checks}) {
    if (*choice && (**choice < 0 || **choice > 2)) {
      return BookError::Of(Kind::kInvalid, "a choice of entries is 0, 1 or 2");
    }
  }
  if (o.filter && !o.filter->second.empty() && SummaryFilterFieldName(o.filter->first).empty()) {
    return BookError::Of(Kind::kInvalid, "no such field to filter on");
  }
  if (o.debits && o.deposits && !*o.debits && !*o.deposits) {
    return BookError::Of(Kind::kInvalid, "a summary of neither debits nor deposits has nothing in it");
  }
  return std::nullopt;
}

void Apply(const SummaryOptions& o, ZELMAccountSummary& s) {
  if (o.name) s.setName(*o.name);
  if (o.range) {
    s.setDateRangeStyle(o.range->style);
    if (o.range->style == kCustomRange) {
      s.setStartDate(o.range->start);
      s.setEndDate(o.range->end);
    }
  }
  if (o.period) s.setSubtotalPeriodStyle(*o.period);
  if (o.debits) s.setShowDebits(*o.debits);
  if (o.deposits) s.setShowDeposits(*o.deposits);
  if (o.resolved) s.setShowResolved(*o.resolved);
  if (o.taxDeductible) s.setShowTaxDeductible(*o.taxDeductible);
  if (o.checks) s.setShowChecks(*o.checks);
  if (o.filter) {
    s.setFilter(!o.filter->second.empty());
    s.setFilterType(o.filter->first);
    s.setFilterData(o.filter->second);
  }
  if (o.subcategoriesInParents) s.setParentCategorySubtotalsIncludeSubcategorySubtotals(*o.subcategoriesInParents);
}

SummaryDefinition Definition(const ZELMAccountSummary& s, bool selected) {
  SummaryDefinition d;
  d.name = s.name();
  d.range = SummaryRangeInWords(s.dateRangeStyle(), s.startDate(), s.endDate());
  d.period = SummaryPeriodName(s.subtotalPeriodStyle());
  d.debits = s.showDebits();
  d.deposits = s.showDeposits();
  d.resolved = s.showResolved();
  d.taxDeductible = s.showTaxDeductible();
  d.checks = s.showChecks();
  d.filter = s.filter();
  d.filterField = SummaryFilterFieldName(s.filterType());
  d.filterText = s.filterData();
  d.subcategoriesInParents = s.parentCategorySubtotalsIncludeSubcategorySubtotals();
  d.selected = selected;
  return d;
}

}  // namespace

std::optional<SummaryRange> ReadSummaryRange(std::string_view text) {
  if (const auto dots = text.find(".."); dots != std::string_view::npos) {
    SummaryRange range{kCustomRange, 0, 0};
    if (!ParseDay(text.substr(0, dots), range.start) || !ParseDay(text.substr(dots + 2), range.end)) {
      return std::nullopt;
    }
    return range;
  }
  const std::string words = Words(text);
  for (const Named& r : kRanges) {
    if (words == r.name) return SummaryRange{r.code, 0, 0};
  }
  return std::nullopt;
}

std::string SummaryRangeInWords(std::int32_t style, std::int32_t start, std::int32_t end) {
  for (const Named& r : kRanges) {
    if (r.code == style) return r.name;
  }
  return platform::FormatIsoDate(start) + ".." + platform::FormatIsoDate(end);
}

std::int32_t ReadSummaryPeriod(std::string_view text) {
  const std::string words = Words(text);
  for (std::int32_t i = 0; i < 6; ++i) {
    if (words == kPeriods[i]) return i;
  }
  return -1;
}

std::string SummaryPeriodName(std::int32_t period) {
  return period >= 0 && period < 6 ? kPeriods[period] : "none";
}

std::int32_t ReadSummaryFilterField(std::string_view text) {
  const std::string words = Words(text);
  for (const Named& f : kFilterFields) {
    if (Words(f.name) == words) return f.code;
  }
  return -1;
}

std::string SummaryFilterFieldName(std::int32_t field) {
  for (const Named& f : kFilterFields) {
    if (f.code == field) return f.name;
  }
  return {};
}

BookResult<SummaryListing> ListSummaries(Book& book, std::string_view name) {
  auto account = book.FindAccount(name);
  if (!account) return Unexpected{account.error()};
  SummaryListing listing{*account, {}};
  const auto selected = (*account)->selectedAccountSummary();
  for (const auto& s : (*account)->accountSummaries()) {
    listing.summaries.push_back(Definition(*s, s == selected));
  }
  return listing;
}

BookResult<SummaryResult> ShowSummary(Book& book, std::string_view name,
                                      const std::optional<std::string>& summaryName,
                                      const SummaryOptions& overrides, bool allAccounts) {
  if (auto bad = Check(overrides)) return Unexpected{*bad};
  auto account = book.FindAccount(name);
  if (!account) return Unexpected{account.error()};
  std::shared_ptr<ZELMAccountSummary> stored;
  if (summaryName) {
    auto found = SummaryNamed(**account, *summaryName);
    if (!found) return Unexpected{found.error()};
    stored = *found;
  } else {
    stored = (*account)->selectedAccountSummary();
  }
  // A copy made from the stored options, so that a run's options are not kept.
  ZELMAccountSummary::EntryList entries;
  SummaryResult result;
  if (allAccounts) {
    // A locked account asks for its password, as naming it would; one that cannot be read
    // (locked without its password, damaged) is left out, and the report says why.
    for (const AccountListing& listed : book.ListAccounts()) {
      auto a = book.AccountWithNumber(listed.number);
      if (a) {
        result.accounts.push_back(*a);
      } else {
        result.leftOut.push_back({listed.name, a.error().message});
      }
    }
  } else {
    result.accounts.push_back(*account);
  }
  ZELMAccountSummary::AccountList accounts;
  for (const auto& a : result.accounts) {
    // Folders' entries too: they count in the account's balances, so in the report.
    const auto own = a->GetAllEntries();
    entries.insert(entries.end(), own.begin(), own.end());
    accounts.push_back(a.get());
  }
  const plist::Dictionary options =
      stored ? stored->optionsAsDictionary() : ZELMAccountSummary().optionsAsDictionary();
  ZELMAccountSummary s(&options, std::move(entries));
  Apply(overrides, s);
  s.setAccounts(accounts);
  // A range of centuries cut into days would make millions of periods: refuse it.
  s.updateDateRange();
  const auto days = schedule::DayFromDateNumber(s.endDate()) -
                    schedule::DayFromDateNumber(s.startDate());
  constexpr double kDaysPerPeriod[] = {1, 7, 28, 89, 365, 1e9};
  const std::int32_t style = std::clamp(s.subtotalPeriodStyle(), 0, 5);
  if (static_cast<double>(days) / kDaysPerPeriod[style] > 100000) {
    return Unexpected{BookError::Of(Kind::kInvalid, "the range " + SummaryRangeInWords(
                                                        s.dateRangeStyle(), s.startDate(),
                                                        s.endDate()) +
                                                        " makes more than 100,000 periods; "
                                                        "choose a longer period")};
  }
  result.report = s.Summary();
  result.currency = s.currency();
  result.definition = Definition(s, stored == (*account)->selectedAccountSummary());
  result.period = s.subtotalPeriodStyle();
  const std::string shown = Words(s.name()).empty() ? "Summary" : s.name();
  result.title = shown.substr(shown.find_first_not_of(' ')) + " of " +
                 (allAccounts ? std::string("every account") : Quote((*account)->GetName()));
  return result;
}

BookResult<SummaryChange> AddSummary(Book& book, std::string_view name, const std::string& summary,
                                     const SummaryOptions& options) {
  SummaryOptions o = options;
  o.name = summary;
  if (auto bad = Check(o)) return Unexpected{*bad};
  auto account = book.AccountToChange(name);
  if (!account) return Unexpected{account.error()};
  if (Find(**account, summary)) {
    return Unexpected{BookError::Of(Kind::kExists, Quote((*account)->GetName()) +
                                                       " already has a summary named " +
                                                       Quote(summary))};
  }
  auto s = std::make_shared<ZELMAccountSummary>();
  Apply(o, *s);
  (*account)->addAccountSummary(s);
  return SummaryChange{*account, Definition(*s, s == (*account)->selectedAccountSummary())};
}

BookResult<SummaryChange> EditSummary(Book& book, std::string_view name, const std::string& summary,
                                      const SummaryOptions& options) {
  if (auto bad = Check(options)) return Unexpected{*bad};
  auto account = book.AccountToChange(name);
  if (!account) return Unexpected{account.error()};
  ZELMAccount& a = **account;
  auto found = SummaryNamed(a, summary);
  if (!found) return Unexpected{found.error()};
  const auto s = *found;
  if (options.name) {
    if (auto other = Find(a, *options.name); other && other != s) {
      return Unexpected{BookError::Of(Kind::kExists, Quote(a.GetName()) +
                                                         " already has a summary named " +
                                                         Quote(*options.name))};
    }
  }
  Apply(options, *s);
  if (options.name) {  // the list keeps its order by name
    const bool selected = s == a.selectedAccountSummary();
    a.removeAccountSummary(s.get());
    a.addAccountSummary(s);
    if (selected) a.setSelectedAccountSummary(s);
  }
  return SummaryChange{*account, Definition(*s, s == a.selectedAccountSummary())};
}

BookResult<SummaryChange> RemoveSummary(Book& book, std::string_view name,
                                        const std::string& summary) {
  auto account = book.AccountToChange(name);
  if (!account) return Unexpected{account.error()};
  ZELMAccount& a = **account;
  auto found = SummaryNamed(a, summary);
  if (!found) return Unexpected{found.error()};
  const bool selected = *found == a.selectedAccountSummary();
  a.removeAccountSummary(found->get());
  // The removed summary cannot stay the one shown.
  if (selected) a.selectAccountSummaryAtIndex(0);
  return SummaryChange{*account, Definition(**found, false)};
}

BookResult<SummaryChange> SelectSummary(Book& book, std::string_view name,
                                        const std::string& summary) {
  auto account = book.AccountToChange(name);
  if (!account) return Unexpected{account.error()};
  auto found = SummaryNamed(**account, summary);
  if (!found) return Unexpected{found.error()};
  (*account)->setSelectedAccountSummary(*found);
  return SummaryChange{*account, Definition(**found, true)};
}

}  // namespace folvant
