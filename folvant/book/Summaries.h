#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/book/BookError.h"
#include "folvant/summaries/ZELMSummaryTables.h"

namespace folvant {

class Book;
class LVCurrency;
class ZELMAccount;
class ZELMAccountSummary;

// Reports of income and expenses: the summaries an account keeps, in words, and their reports.

// A summary's date range: a named range counted from today, all entries, or two days.
struct SummaryRange {
  std::int32_t style = 0;  // the stored range code
  std::int32_t start = 0, end = 0;  // the days, for the range of two days
};
// Reads "this month", "last year", "year to date", "all", "all to today", "today", or
// FROM..TO (YYYY-MM-DD each); words may be joined by "-" ("this-month"). None when it does not
// read.
std::optional<SummaryRange> ReadSummaryRange(std::string_view text);
// The range in the words ReadSummaryRange reads ("this month", "2026-01-01..2026-03-31").
std::string SummaryRangeInWords(std::int32_t style, std::int32_t start, std::int32_t end);

// Period lengths by name: day, week, month, quarter (three months from the start month), year,
// none. -1 for an unknown name.
std::int32_t ReadSummaryPeriod(std::string_view text);
std::string SummaryPeriodName(std::int32_t period);

// The fields a text filter searches by name: any, type, description, to-from-or-category,
// category, split-description, split-category, notes. -1 for an unknown name.
std::int32_t ReadSummaryFilterField(std::string_view text);
std::string SummaryFilterFieldName(std::int32_t field);

// The options a person sets. Adding starts from the defaults, editing from the summary's own;
// either changes only what is set.
struct SummaryOptions {
  std::optional<std::string> name;
  std::optional<SummaryRange> range;
  std::optional<std::int32_t> period;
  std::optional<bool> debits, deposits;  // take debits / deposits
  // 0 only entries that are so, 1 only those that are not, 2 all.
  std::optional<std::int32_t> resolved, taxDeductible, checks;
  // A text filter: the field's code and the text; an empty text turns the filter off.
  std::optional<std::pair<std::int32_t, std::string>> filter;
  std::optional<bool> subcategoriesInParents;
};

// A summary as it reads.
struct SummaryDefinition {
  std::string name;
  std::string range;   // SummaryRangeInWords
  std::string period;  // SummaryPeriodName
  bool debits = true, deposits = true;
  std::int32_t resolved = 2, taxDeductible = 2, checks = 2;
  bool filter = false;
  std::string filterField, filterText;
  bool subcategoriesInParents = true;
  bool selected = false;
};

struct SummaryListing {
  std::shared_ptr<ZELMAccount> account;
  std::vector<SummaryDefinition> summaries;  // by name, as the account keeps them
};
BookResult<SummaryListing> ListSummaries(Book& book, std::string_view account);

// A computed report.
struct SummaryResult {
  std::string title;  // "Expenses, Year To Date" of "Checking", or of every account
  std::vector<std::shared_ptr<ZELMAccount>> accounts;
  // The accounts an all-accounts report could not read, with why (locked, damaged).
  std::vector<std::pair<std::string, std::string>> leftOut;
  std::shared_ptr<LVCurrency> currency;  // the report's amounts are in it
  SummaryDefinition definition;
  std::int32_t period = 2;
  ZELMSummaryReport report;
};

// The report of the account's summary named `name` (the selected one when none is given),
// with `overrides` applied for this run only. With `allAccounts` the report covers every
// account of the book that can be read, in the book's base currency. Changes nothing.
BookResult<SummaryResult> ShowSummary(Book& book, std::string_view account,
                                      const std::optional<std::string>& name,
                                      const SummaryOptions& overrides, bool allAccounts);

struct SummaryChange {
  std::shared_ptr<ZELMAccount> account;
  SummaryDefinition summary;
};
// A new summary: the name must be new to the account (ignoring case). The account is marked
// changed; the caller saves the book.
BookResult<SummaryChange> AddSummary(Book& book, std::string_view account,
                                     const std::string& name, const SummaryOptions& options);
BookResult<SummaryChange> EditSummary(Book& book, std::string_view account,
                                      const std::string& name, const SummaryOptions& options);
BookResult<SummaryChange> RemoveSummary(Book& book, std::string_view account,
                                        const std::string& name);
// Makes the summary the one `summary show` gives without a name.
BookResult<SummaryChange> SelectSummary(Book& book, std::string_view account,
                                        const std::string& name);

}  // namespace folvant
