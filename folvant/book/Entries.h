#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/book/BookError.h"

namespace folvant {

class Book;
class ZELMAccount;
class ZELMAccountEntry;
class ZELMAccountEntryType;
class ZELMAccountEntryCategory;

// One split line item as a person gives it.
struct SplitFields {
  std::string category;  // a category's full name ("Food:Groceries"); empty: none
  double amount = 0.0;   // signed as the entry's amount
  std::string description;
};

// The fields of an entry a person gives. Adding takes what is set and defaults the rest; editing
// changes only what is set (an empty text clears a type or category).
struct EntryFields {
  std::optional<std::int32_t> date;  // adding: default today
  std::optional<double> amount;      // negative for money leaving the account
  std::optional<bool> check;
  std::optional<std::int32_t> checkNumber;  // with check: default the next free number
  std::optional<std::string> toFrom;
  std::optional<std::string> description;
  std::optional<std::string> type;      // one of the account's type names, any case
  std::optional<std::string> category;  // a full name in the book's tree
  std::optional<std::string> notes;
  std::optional<bool> resolved;
  std::optional<bool> taxDeductible;
  // The line items, replacing any the entry has; the entry's amount is then their total.
  std::optional<std::vector<SplitFields>> splits;
};

struct EntryOptions {
  bool newCategory = false;  // an unknown category is created instead of refused
  bool noMemory = false;     // earlier entries with the same to/from fill in nothing
  bool allowDuplicateCheck = false;
};

// An entry as it reads: every field, by name.
struct EntryDetails {
  struct Line {
    std::string category, description, toFrom;
    double amount = 0.0;
  };
  struct Link {
    std::string account;  // its name; "account N" when the book has no such account
    std::int32_t number = 0;
    bool found = false;  // the linked entry is there
  };
  std::int32_t number = 0;
  std::int32_t date = 0;
  std::optional<std::int32_t> checkNumber;  // for a check
  std::string kind;                         // "debit", "deposit" or "" when neither
  std::string type, category, toFrom, description, notes;
  double amount = 0.0;
  bool resolved = false, taxDeductible = false, isVoid = false;
  std::vector<Line> splits;
  std::optional<Link> linked;
  // For a transfer between currencies: this entry's amount in the other account's currency.
  std::optional<double> exchangedAmount;
  std::string exchangedCurrency;  // that currency's code
  double runningBalance = 0.0;    // the account's balance through this entry
};

// What a change did to the other side of a transfer.
struct LinkedChange {
  std::string account;
  std::int32_t number = 0;
  std::string what;  // "was updated to match", "was voided too", "keeps its own resolved mark", ...
};

// What adding, editing, voiding or deleting an entry did.
struct EntryChange {
  std::shared_ptr<ZELMAccount> account;
  EntryDetails entry;
  std::vector<std::string> remembered;  // fields filled in from an earlier entry, in order
  std::optional<LinkedChange> linked;
  double balance = 0.0;  // the account's balance after the change
};

// Adds an entry: the next entry number; for a check the next free check number unless one is
// given. A check number in use is refused unless allowed; an unknown category is refused with
// the closest names unless it is to be created. Without a type, the account's default debit or
// deposit type. Unless told not to, the latest earlier entry with the same to/from (any case)
// and direction fills in the type, category and description not given. The account is marked
// changed; the caller saves the book. A refusal changes nothing.
BookResult<EntryChange> AddEntry(Book& book, std::string_view account, const EntryFields& fields,
                                 const EntryOptions& options = {});
// Changes the fields given; a transfer's other side is kept in step.
BookResult<EntryChange> EditEntry(Book& book, std::string_view account, std::int32_t number,
                                  const EntryFields& fields, const EntryOptions& options = {});
BookResult<EntryDetails> ShowEntry(Book& book, std::string_view account, std::int32_t number);
// Voiding counts the entry in no balance; a transfer's other side is voided with it.
BookResult<EntryChange> VoidEntry(Book& book, std::string_view account, std::int32_t number);
BookResult<EntryChange> UnvoidEntry(Book& book, std::string_view account, std::int32_t number);
// Removes the entry, and a transfer's other side with it.
BookResult<EntryChange> DeleteEntry(Book& book, std::string_view account, std::int32_t number);

struct ResolveChange {
  std::shared_ptr<ZELMAccount> account;
  std::vector<std::int32_t> changed;  // the entries whose mark changed
  std::vector<std::int32_t> already;  // those already so
  std::vector<LinkedChange> linked;   // transfers: the other side keeps its own mark
  double resolvedBalance = 0.0;
};

// Sets or clears the resolved mark of the entries; an unknown number refuses them all.
BookResult<ResolveChange> ResolveEntries(Book& book, std::string_view account,
                                         const std::vector<std::int32_t>& numbers);
BookResult<ResolveChange> UnresolveEntries(Book& book, std::string_view account,
                                           const std::vector<std::int32_t>& numbers);

// A transfer: a debit of `amount` (positive) in `from` and a deposit in `to`, linked to each
// other. Between currencies the deposit is the amount converted with the currencies' rates,
// unless `toAmount` gives it. Both accounts are marked changed.
struct TransferRequest {
  std::string from, to;
  double amount = 0.0;
  std::optional<std::int32_t> date;  // default today
  std::string description;
  std::optional<double> toAmount;
};
struct TransferChange {
  std::shared_ptr<ZELMAccount> from, to;
  EntryDetails debit, deposit;
  double fromBalance = 0.0, toBalance = 0.0;
};
BookResult<TransferChange> Transfer(Book& book, const TransferRequest& request);

// The account's type a transfer's side takes: its debit or deposit type named "Transfer", any
// case; nullptr when it has none.
std::shared_ptr<ZELMAccountEntryType> TransferType(const ZELMAccount& account, bool debit);
// What `to` receives when `amount` (positive) leaves `from`: the amount itself between accounts
// of one currency, else `toAmount` when given or the amount converted with the rates.
BookResult<double> AmountReceived(const ZELMAccount& from, const ZELMAccount& to, double amount,
                                  std::optional<double> toAmount);
// Makes the deposit of `received` in `to` for a debit already in its own account's register,
// and links the two; returns the deposit.
std::shared_ptr<ZELMAccountEntry> LinkTransfer(ZELMAccount& to, ZELMAccountEntry& debit,
                                               double received);

// Sets the fields on an entry that is not in a register (a schedule's template) as adding it
// (`adding`) or editing it would, with the same refusals; `name` names it in messages. A check
// gets no number here. Categories are created only when `newCategory` allows it.
std::optional<BookError> ApplyToTemplate(Book& book, const ZELMAccount& account,
                                         ZELMAccountEntry& target, bool adding,
                                         const EntryFields& fields, const std::string& name,
                                         bool newCategory);

// The category of that full name in the book's tree (any case), or nullptr.
std::shared_ptr<ZELMAccountEntryCategory> CategoryNamed(const Book& book, std::string_view fullName);
// The number of the category of that full name ("Parent:Child"), made with any missing parents
// when the book has none; the name must be well formed.
std::int32_t MakeCategoryNamed(Book& book, const std::string& fullName);
// The account's type of that name (any case) and direction, retired ones included; nullptr.
std::shared_ptr<ZELMAccountEntryType> AccountTypeNamed(const ZELMAccount& account,
                                                       std::string_view name, bool debit);

// The account's preferred suggestion lists ("to": payees of debits, "from": payers of deposits,
// "description": descriptions of both), those starting with `prefix` ignoring case.
struct SuggestionList {
  std::shared_ptr<ZELMAccount> account;
  std::string which;
  std::vector<std::string> texts;
};
BookResult<SuggestionList> Suggestions(Book& book, std::string_view account, std::string_view which,
                                       std::string_view prefix);

}  // namespace folvant
