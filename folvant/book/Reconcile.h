#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/book/BookError.h"
#include "folvant/platform/Clock.h"

namespace folvant {

class Book;
class ZELMAccount;

// Reconciling an account with a bank statement: the entries resolved (their cleared mark) bring
// the resolved balance to the statement's balance. The book keeps each finished reconciliation
// in a file of its own per account, "reconciliations/<number>.plist", beside the account file,
// which keeps its format; that file also remembers the entries resolved since the last
// reconciliation finished, so that a reconciliation may span several runs.

struct Statement {
  std::int32_t date = 0;  // the last day the statement covers
  double balance = 0.0;
};

// An entry the statement may hold that is not resolved yet.
struct UnresolvedEntry {
  std::int32_t number = 0;
  std::int32_t date = 0;
  std::optional<std::int32_t> checkNumber;
  std::string toFrom;
  std::string description;
  double amount = 0.0;
};

// Where a difference may come from.
struct ReconcileSuggestion {
  enum class Kind {
    kOneEntry,          // an unresolved entry of the difference's amount
    kTwoEntries,        // two unresolved entries that add up to it
    kSignFlipped,       // an entry entered the other way round (a debit for a deposit)
    kTransposedDigits,  // the difference divides by 9: two digits swapped in an amount
  };
  Kind kind = Kind::kOneEntry;
  std::vector<std::int32_t> entries;  // their numbers; none for swapped digits
  std::vector<double> amounts;        // their amounts, in the same order
  bool resolved = false;              // kSignFlipped: the entry is already resolved
};

struct ReconcileListing {
  std::shared_ptr<ZELMAccount> account;
  Statement statement;
  // The unresolved entries dated up to the statement's day (void ones aside), by date, checks
  // first by check number within a day, then by number.
  std::vector<UnresolvedEntry> unresolved;
  double resolvedBalance = 0.0;
  double difference = 0.0;  // the statement balance less the resolved balance
  std::vector<ReconcileSuggestion> suggestions;  // when the difference is not 0
  // Entries resolved here since the last reconciliation finished.
  std::vector<std::int32_t> resolvedSinceLast;
};

// A finished reconciliation.
struct ReconciliationRecord {
  Statement statement;
  std::vector<std::int32_t> resolved;  // the entries it resolved
  platform::LocalTime finished{};
};

struct ReconcileHistory {
  std::shared_ptr<ZELMAccount> account;
  std::vector<ReconciliationRecord> records;  // the oldest first
};

// What the account looks like against the statement. Reads the register once.
BookResult<ReconcileListing> ReconcileView(Book& book, std::string_view account,
                                           const Statement& statement);

// Ticks (resolves) or unticks the entries (by number) in a reconciliation. Resolving an entry dated after the statement's
// day is refused; an unknown number anywhere in the list changes nothing. The account is marked
// changed; the caller saves the book. The count of entries whose mark changed.
BookResult<std::size_t> TickEntries(Book& book, std::string_view account,
                                       const Statement& statement,
                                       const std::vector<std::int32_t>& numbers);
BookResult<std::size_t> UntickEntries(Book& book, std::string_view account,
                                         const std::vector<std::int32_t>& numbers);

// Remembers entries resolved or unresolved outside a reconciliation run (an entry resolved by
// hand), so that the next reconciliation to finish records them and its undo takes them back.
std::optional<BookError> NoteResolvedMarks(Book& book, const ZELMAccount& account,
                                           const std::vector<std::int32_t>& resolved,
                                           const std::vector<std::int32_t>& unresolved);

// Records the reconciliation when the difference is 0, with the entries resolved since the last
// one; refused otherwise, saying by how much it is off.
BookResult<ReconciliationRecord> FinishReconciliation(Book& book, std::string_view account,
                                                      const Statement& statement);

// One run of reconciling: unresolve, resolve, then finish when asked; the listing is of after.
struct ReconcileRequest {
  Statement statement;
  std::vector<std::int32_t> resolve, unresolve;
  bool finish = false;
};
struct ReconcileOutcome {
  ReconcileListing listing;
  std::optional<ReconciliationRecord> finished;
  bool changed = false;  // something to save
};
BookResult<ReconcileOutcome> Reconcile(Book& book, std::string_view account,
                                       const ReconcileRequest& request);

BookResult<ReconcileHistory> ReconcileRecords(Book& book, std::string_view account);

// Takes back the last finished reconciliation: its entries are unresolved and its record goes.
// The account is marked changed; the caller saves the book.
struct UndoneReconciliation {
  std::shared_ptr<ZELMAccount> account;
  ReconciliationRecord record;
};
BookResult<UndoneReconciliation> UndoReconciliation(Book& book, std::string_view account);

}  // namespace folvant
