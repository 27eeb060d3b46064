#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "folvant/book/BookError.h"

namespace folvant {

class Book;
class ZELMAccount;
class ZELMAccountEntry;
class ZELMFilter;

// The orders of the register. The first seven are the account's own sort keys, by number.
enum class RegisterSort : std::int32_t {
  kCheckNumber = 0,
  kDate = 1,  // checks first, by check number, within a day
  kType = 2,
  kDescription = 3,
  kAmount = 4,
  kResolved = 5,
  kToFrom = 6,
  kCategory = 7,  // category full name, then date
};

// Changes to the register's stored filter: each applies when given. The filter is the
// account's own, so the next register shows the same until it is reset.
struct RegisterFilterChange {
  bool reset = false;  // first back to: everything shown
  std::optional<std::string> search;
  std::optional<std::int32_t> field;          // a search field code (FilterCodes.h)
  std::optional<std::int32_t> dates;          // a date-filter code
  std::optional<std::int32_t> from, to;       // the custom range's days
  std::optional<std::int32_t> resolved;       // a resolved-filter code
  std::optional<std::int32_t> taxDeductible;  // a tax-deductible filter code
  bool any() const {
    return reset || search || field || dates || from || to || resolved || taxDeductible;
  }
};

struct RegisterQuery {
  std::string account;  // name or number
  RegisterSort sort = RegisterSort::kDate;
  bool descending = false;
  RegisterFilterChange filter;
  std::string folder;       // show only this folder (for this view; not stored)
  std::string smartFolder;  // show only this smart folder (for this view; not stored)
};

// One line of the register. The texts point into the view, which keeps the account alive.
struct RegisterRow {
  const ZELMAccountEntry* entry;
  std::int32_t number;
  std::int32_t date;
  std::optional<std::int32_t> checkNumber;
  std::string_view type;
  std::string_view toFrom;
  std::string_view description;
  std::string_view category;  // full name, "(split)" for a split entry without one, or empty
  double amount;
  double balance;  // running balance in the register's own order (date, then number)
  bool resolved;
  bool isVoid;
};

// The stored filter in words, for showing what the register shows.
struct RegisterFilterWords {
  bool active = false;
  std::string field = "general";
  std::string search;
  std::string dates = "none";  // a stored type that sets no date limit
  // The first and last day shown, when the dates are limited (not "all" or "none").
  std::optional<std::int32_t> from, to;
  std::string resolved = "all";
  std::string taxDeductible = "all";
  std::string folder;
  std::string smartFolder;
  std::string line;  // "description contains "rent", unresolved only"
};

struct RegisterView {
  std::shared_ptr<ZELMAccount> account;
  std::string currency;  // code
  std::vector<std::shared_ptr<ZELMAccountEntry>> entries;  // shown, in the query's order
  std::size_t allEntries = 0;
  double shownTotal = 0.0;  // of the shown entries that are not void
  double balance = 0.0, todaysBalance = 0.0, resolvedBalance = 0.0;
  RegisterFilterWords filter;
  bool filterChanged = false;  // the stored filter changed (and was saved)

  std::size_t size() const { return entries.size(); }
  // The line of the i-th shown entry, made when asked for, so that a view of a million entries
  // holds no more than their pointers and a front end can take any range of it.
  RegisterRow row(std::size_t i) const;

  // Names of types and categories, computed once per number when the view is made.
  std::unordered_map<std::int32_t, std::string> typeNames;
  std::unordered_map<std::int32_t, std::string> categoryNames;
  std::unordered_map<std::int32_t, bool> categoryKnown;
};

// The words of the search fields and date ranges, with their codes, in the order help lists them.
struct RegisterWord {
  const char* word;
  std::int32_t code;
};
const std::vector<RegisterWord>& RegisterSearchFields();
const std::vector<RegisterWord>& RegisterDateRanges();
const std::vector<RegisterWord>& RegisterSortWords();

// The register of an account: the stored filter (changed and saved first when the query says
// so), the folder or smart folder, the order, the running balances.
BookResult<RegisterView> ShowRegister(Book& book, const RegisterQuery& query);

// The view filter the change makes of the account's stored one, for one use: the account's
// settings are left as they were.
std::shared_ptr<ZELMFilter> FilterForChange(ZELMAccount& account,
                                            const RegisterFilterChange& change);

}  // namespace folvant
