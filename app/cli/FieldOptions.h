#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/cli/Program.h"
#include "folvant/book/Entries.h"

namespace folvant::app {

// The entry fields that `entry add|edit` and `schedule add|edit` both take: the amount as
// --amount, --debit or --deposit, the description, type, category and notes, split line items
// and the tax-deductible mark. A field is given when its option was.
struct EntryFieldOptions {
  double amount = 0.0, debit = 0.0, deposit = 0.0;
  std::string description, type, category, notes;
  std::vector<std::string> splits;
  bool taxDeductible = false, notTaxDeductible = false;
  CLI::Option *amountOption = nullptr, *debitOption = nullptr, *depositOption = nullptr,
              *descriptionOption = nullptr, *typeOption = nullptr, *categoryOption = nullptr,
              *notesOption = nullptr, *splitOption = nullptr;
};

// Adds the options; `edit` adds --not-tax-deductible. `splitTotal` says what the line items
// add up to ("the entry's amount").
void AddEntryFieldOptions(CLI::App* command, EntryFieldOptions& o, bool edit,
                          const std::string& splitTotal);
// Sets the fields whose options were given.
void ReadEntryFields(const EntryFieldOptions& o, EntryFields& fields);
// A usage error in the amounts, once they are read: a negative --debit or --deposit.
std::optional<std::string> BadAmounts(const EntryFieldOptions& o);

}  // namespace folvant::app
