#include "app/cli/FieldOptions.h"

#include "app/cli/Options.h"

namespace folvant::app {

void AddEntryFieldOptions(CLI::App* command, EntryFieldOptions& o, bool edit,
                          const std::string& splitTotal) {
  o.amountOption =
      command->add_option("--amount", o.amount, "Amount, negative for money leaving the account")
          ->transform(AmountValue());
  o.debitOption = command->add_option("--debit", o.debit, "Money leaving the account (positive)")
                      ->transform(AmountValue());
  o.depositOption = command->add_option("--deposit", o.deposit, "Money coming in (positive)")
                        ->transform(AmountValue());
  o.amountOption->excludes(o.debitOption)->excludes(o.depositOption);
  o.debitOption->excludes(o.depositOption);
  o.descriptionOption = command->add_option("--description", o.description, "Description");
  o.typeOption = command->add_option("--type", o.type, "One of the account's entry types");
  o.categoryOption =
      command->add_option("--category", o.category, "Category, by its full name (Parent:Child)");
  o.notesOption = command->add_option("--notes", o.notes, "Notes");
  o.splitOption = command
                      ->add_option("--split", o.splits,
                                   "A line item CATEGORY=AMOUNT[:DESCRIPTION], repeated; " +
                                       splitTotal + " is their total")
                      ->check(SplitValue());
  auto* taxDeductible = command->add_flag("--tax-deductible", o.taxDeductible, "Tax-deductible");
  if (edit) {
    command->add_flag("--not-tax-deductible", o.notTaxDeductible, "Not tax-deductible")
        ->excludes(taxDeductible);
  }
}

void ReadEntryFields(const EntryFieldOptions& o, EntryFields& f) {
  if (o.amountOption->count() > 0) f.amount = o.amount;
  if (o.debitOption->count() > 0) f.amount = -o.debit;
  if (o.depositOption->count() > 0) f.amount = o.deposit;
  if (o.descriptionOption->count() > 0) f.description = o.description;
  if (o.typeOption->count() > 0) f.type = o.type;
  if (o.categoryOption->count() > 0) f.category = o.category;
  if (o.notesOption->count() > 0) f.notes = o.notes;
  if (o.taxDeductible) f.taxDeductible = true;
  if (o.notTaxDeductible) f.taxDeductible = false;
  if (o.splitOption->count() > 0) {
    f.splits.emplace();
    for (const std::string& text : o.splits) {
      std::string problem;
      f.splits->push_back(*ReadSplit(text, &problem));  // checked when read
    }
  }
}

std::optional<std::string> BadAmounts(const EntryFieldOptions& o) {
  if (o.debitOption->count() > 0 && o.debit < 0) return "--debit takes a positive amount";
  if (o.depositOption->count() > 0 && o.deposit < 0) return "--deposit takes a positive amount";
  return std::nullopt;
}

}  // namespace folvant::app
