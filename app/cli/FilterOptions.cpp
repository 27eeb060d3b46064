#include "app/cli/FilterOptions.h"

#include "app/cli/Options.h"
#include "folvant/filters/FilterCodes.h"

namespace folvant::app {
namespace {

// FROM..TO as two days; false when the text is not such a range.
bool ParseCustomRange(std::string_view text, std::int32_t& from, std::int32_t& to) {
  const auto dots = text.find("..");
  return dots != std::string_view::npos && ParseDateNumber(text.substr(0, dots), from) &&
         ParseDateNumber(text.substr(dots + 2), to) && from <= to;
}

std::string ValidateDates(const std::string& text) {
  std::int32_t from = 0, to = 0;
  if (CodeOf(RegisterDateRanges(), text) || ParseCustomRange(text, from, to)) return {};
  return "\"" + text + "\" is not a date range; use one of: " + WordList(RegisterDateRanges()) +
         ", or FROM..TO (YYYY-MM-DD..YYYY-MM-DD, FROM not after TO)";
}

}  // namespace

std::optional<std::int32_t> CodeOf(const std::vector<RegisterWord>& words, std::string_view word) {
  for (const RegisterWord& w : words) {
    if (word == w.word) return w.code;
  }
  return std::nullopt;
}

CLI::Validator OneOf(const std::vector<RegisterWord>& words, const char* what) {
  return CLI::Validator(
      [&words, what](const std::string& value) -> std::string {
        if (CodeOf(words, value)) return {};
        return "\"" + value + "\" is not " + what + "; use one of: " + WordList(words);
      },
      "");
}

std::string WordList(const std::vector<RegisterWord>& words) {
  std::string list;
  for (const RegisterWord& w : words) list += std::string(list.empty() ? "" : ", ") + w.word;
  return list;
}

void AddFilterOptions(CLI::App& command, FilterOptions& o, const std::string& searchHelp) {
  o.searchOption = command.add_option("--search", o.search, searchHelp);
  o.fieldOption =
      command.add_option("--field", o.field, "Field searched: " + WordList(RegisterSearchFields()))
          ->check(OneOf(RegisterSearchFields(), "a field"));
  o.datesOption =
      command
          .add_option("--dates", o.dates,
                      "Date range: all, through-today, today, yesterday, this-/last-week, "
                      "-month, -quarter, -year, week-/month-/quarter-/year-to-date, or FROM..TO")
          ->check(ValidateDates);
  auto* resolved = command.add_flag("--resolved", o.resolved, "Resolved entries only");
  command.add_flag("--unresolved", o.unresolved, "Unresolved entries only")->excludes(resolved);
  auto* tax = command.add_flag("--tax-deductible", o.taxDeductible, "Tax-deductible entries only");
  command
      .add_flag("--not-tax-deductible", o.notTaxDeductible,
                "Entries that are not tax-deductible only")
      ->excludes(tax);
}

RegisterFilterChange FilterChangeOf(const FilterOptions& o) {
  RegisterFilterChange change;
  if (o.searchOption->count() > 0) change.search = o.search;
  if (o.fieldOption->count() > 0) change.field = CodeOf(RegisterSearchFields(), o.field);
  if (o.datesOption->count() > 0) {
    std::int32_t from = 0, to = 0;
    if (ParseCustomRange(o.dates, from, to)) {
      change.dates = kShowCustomDates;
      change.from = from;
      change.to = to;
    } else {
      change.dates = CodeOf(RegisterDateRanges(), o.dates);
    }
  }
  if (o.resolved) change.resolved = kShowResolvedOnly;
  if (o.unresolved) change.resolved = kShowUnresolvedOnly;
  if (o.taxDeductible) change.taxDeductible = kShowTaxDeductibleOnly;
  if (o.notTaxDeductible) change.taxDeductible = kShowNotTaxDeductibleOnly;
  return change;
}

}  // namespace folvant::app
