#include "folvant/book/Reconcile.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "folvant/book/Book.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountFolder.h"
#include "folvant/platform/CivilDate.h"
#include "folvant/platform/LocalCalendar.h"
#include "folvant/platform/plist/PropertyList.h"
#include "folvant/values/LVCurrency.h"

namespace folvant {
namespace {

using Kind = BookError::Kind;
using platform::FormatIsoDate;

std::string Quote(std::string_view text) { return "\"" + std::string(text) + "\""; }

// Amounts are kept to the cent, so cents compare exactly where doubles would not.
std::int64_t Cents(double amount) { return std::llround(amount * 100.0); }

// "-12.50 USD", with the currency's decimal separator.
std::string AmountInWords(double amount, const ZELMAccount& account) {
  char digits[64];
  std::snprintf(digits, sizeof digits, "%.2f", amount);
  std::string text = digits;
  const LVCurrency* currency = account.currency().get();
  if (currency != nullptr) {
    if (!currency->decimalSeparator().empty()) {
      text.replace(text.find('.'), 1, currency->decimalSeparator());
    }
    text += " " + currency->code();
  }
  return text;
}

// Every entry of the account, the main list's and the folders', without copying the lists.
template <typename Visit>
void ForEachEntry(const ZELMAccount& account, Visit&& visit) {
  for (const auto& entry : account.GetEntries()) visit(*entry);
  for (const auto& folder : account.folders()) {
    for (const auto& entry : folder->entries()) visit(*entry);
  }
}

// What the book keeps of an account's reconciliations.
struct Records {
  std::vector<std::int32_t> pending;  // resolved since the last one finished
  std::vector<ReconciliationRecord> finished;
};

std::filesystem::path RecordsFile(const ZELMAccount& account) {
  return std::filesystem::path("reconciliations") /
         (std::to_string(account.GetNumber()) + ".plist");
}

std::vector<std::int32_t> Numbers(const plist::Value* value) {
  std::vector<std::int32_t> numbers;
  if (const plist::Array* list = value != nullptr ? value->asArray() : nullptr) {
    for (const plist::Value& n : *list) numbers.push_back(n.intValue());
  }
  return numbers;
}

plist::Value NumbersValue(const std::vector<std::int32_t>& numbers) {
  plist::Array list;
  for (std::int32_t n : numbers) list.emplace_back(n);
  return plist::Value(std::move(list));
}

BookResult<Records> ReadRecords(const Book& book, const ZELMAccount& account) {
  const std::filesystem::path name = RecordsFile(account);
  auto bytes = book.ReadOwnFile(name);
  if (!bytes) return Unexpected{bytes.error()};
  Records records;
  if (!*bytes) return records;
  auto damaged = [&](const std::string& what) {
    return Unexpected{BookError::Of(
        Kind::kDamaged, (book.directory() / name).string() + ": " + what +
                            "; restore it from its backup (\"" + name.filename().string() +
                            ".bak\") or remove it to forget the reconciliations")};
  };
  auto value = plist::Read(**bytes);
  if (!value) return damaged(value.error().what);
  const plist::Dictionary* top = value->asDictionary();
  if (top == nullptr) return damaged("not a record of reconciliations");
  records.pending = Numbers(top->find("pending"));
  if (const plist::Value* list = top->find("reconciliations")) {
    if (list->asArray() == nullptr) return damaged("not a record of reconciliations");
    for (const plist::Value& item : *list->asArray()) {
      const plist::Dictionary* d = item.asDictionary();
      if (d == nullptr) return damaged("a reconciliation that is not a dictionary");
      ReconciliationRecord record;
      const plist::Value* date = d->find("statementDate");
      const plist::Value* balance = d->find("statementBalance");
      const plist::Value* finished = d->find("finished");
      if (date == nullptr || balance == nullptr || finished == nullptr || !finished->asDate()) {
        return damaged("a reconciliation without its statement or time");
      }
      record.statement = {date->intValue(), balance->doubleValue()};
      record.resolved = Numbers(d->find("resolved"));
      record.finished = platform::FromPlistDate(*finished->asDate());
      records.finished.push_back(std::move(record));
    }
  }
  return records;
}

std::optional<BookError> StageRecords(Book& book, const ZELMAccount& account,
                                      const Records& records) {
  plist::Array finished;
  for (const ReconciliationRecord& r : records.finished) {
    finished.emplace_back(plist::Dictionary{
        {"statementDate", std::int64_t{r.statement.date}},
        {"statementBalance", r.statement.balance},
        {"resolved", NumbersValue(r.resolved)},
        {"finished", platform::ToPlistDate(r.finished)},
    });
  }
  plist::Dictionary top{{"pending", NumbersValue(records.pending)},
                        {"reconciliations", plist::Value(std::move(finished))}};
  return book.StageOwnFile(RecordsFile(account),
                           plist::Write(plist::Value(std::move(top)), plist::Format::kXml));
}

// The entries of those numbers, found in one walk; an unknown number is an error.
BookResult<std::vector<ZELMAccountEntry*>> EntriesNumbered(const ZELMAccount& account,
                                                           const std::vector<std::int32_t>& numbers) {
  std::unordered_map<std::int32_t, ZELMAccountEntry*> wanted;
  for (std::int32_t n : numbers) wanted.emplace(n, nullptr);
  ForEachEntry(account, [&](ZELMAccountEntry& entry) {
    auto it = wanted.find(entry.GetNumber());
    if (it != wanted.end() && it->second == nullptr) it->second = &entry;
  });
  std::vector<ZELMAccountEntry*> entries;
  for (std::int32_t n : numbers) {
    ZELMAccountEntry* entry = wanted.at(n);
    if (entry == nullptr) {
      return Unexpected{BookError::Of(Kind::kNotFound, "no entry number " + std::to_string(n) +
                                                           " in " + Quote(account.GetName()))};
    }
    if (std::find(entries.begin(), entries.end(), entry) == entries.end()) entries.push_back(entry);
  }
  return entries;
}

// Entries in register order: by date, checks first by check number, then by number.
bool RegisterOrder(const UnresolvedEntry& a, const UnresolvedEntry& b) {
  if (a.date != b.date) return a.date < b.date;
  if (a.checkNumber.has_value() != b.checkNumber.has_value()) return a.checkNumber.has_value();
  if (a.checkNumber && *a.checkNumber != *b.checkNumber) return *a.checkNumber < *b.checkNumber;
  return a.number < b.number;
}

constexpr std::size_t kMostOfAKind = 3;

// Where the difference may come from; `flippedResolved` are the resolved entries that,
// counted the other way round, would close it.
std::vector<ReconcileSuggestion> Suggest(const std::vector<UnresolvedEntry>& unresolved,
                                         std::int64_t difference,
                                         const std::vector<const ZELMAccountEntry*>& flippedResolved) {
  using S = ReconcileSuggestion;
  std::vector<S> out;
  if (difference == 0) return out;
  std::vector<S> one, two, flipped;
  // The first entry of each amount, for the pairs.
  std::unordered_map<std::int64_t, std::size_t> firstOfAmount;
  firstOfAmount.reserve(unresolved.size());
  for (std::size_t i = 0; i < unresolved.size(); ++i) {
    const UnresolvedEntry& e = unresolved[i];
    const std::int64_t cents = Cents(e.amount);
    if (cents == difference && one.size() < kMostOfAKind) {
      one.push_back({S::Kind::kOneEntry, {e.number}, {e.amount}, false});
    }
    // Entered the other way round: resolving it as it should be closes the difference.
    if (cents == -difference && flipped.size() < kMostOfAKind) {
      flipped.push_back({S::Kind::kSignFlipped, {e.number}, {e.amount}, false});
    }
    if (two.size() < kMostOfAKind) {
      if (auto it = firstOfAmount.find(difference - cents); it != firstOfAmount.end()) {
        const UnresolvedEntry& other = unresolved[it->second];
        two.push_back({S::Kind::kTwoEntries, {other.number, e.number}, {other.amount, e.amount},
                       false});
      }
    }
    firstOfAmount.emplace(cents, i);
  }
  // A resolved entry the other way round counts twice its amount against the statement.
  for (const ZELMAccountEntry* e : flippedResolved) {
    if (flipped.size() >= kMostOfAKind) break;
    flipped.push_back({S::Kind::kSignFlipped, {e->GetNumber()}, {e->GetAmount()}, true});
  }
  for (auto* kind : {&one, &two, &flipped}) out.insert(out.end(), kind->begin(), kind->end());
  if (difference % 9 == 0) out.push_back({S::Kind::kTransposedDigits, {}, {}, false});
  return out;
}

BookResult<ReconcileListing> ListingOf(const Book& book, std::shared_ptr<ZELMAccount> account,
                                       const Statement& statement) {
  auto records = ReadRecords(book, *account);
  if (!records) return Unexpected{records.error()};
  ReconcileListing listing;
  listing.statement = statement;
  listing.resolvedBalance = account->GetResolvedBalance();
  const std::int64_t difference = Cents(statement.balance) - Cents(listing.resolvedBalance);
  listing.difference = static_cast<double>(difference) / 100.0;
  std::vector<const ZELMAccountEntry*> flippedResolved;
  ForEachEntry(*account, [&](const ZELMAccountEntry& e) {
    if (e.GetVoid() || e.GetDate() > statement.date) return;
    if (e.GetCleared() != 0) {
      if (difference != 0 && 2 * Cents(e.GetAmount()) == -difference &&
          flippedResolved.size() < kMostOfAKind) {
        flippedResolved.push_back(&e);
      }
      return;
    }
    listing.unresolved.push_back(
        {e.GetNumber(), e.GetDate(),
         e.IsCheck() ? std::optional<std::int32_t>(e.GetCheckNumber()) : std::nullopt,
         e.GetToFrom(), e.GetDescription(), e.GetAmount()});
  });
  std::sort(listing.unresolved.begin(), listing.unresolved.end(), RegisterOrder);
  listing.suggestions = Suggest(listing.unresolved, difference, flippedResolved);
  listing.resolvedSinceLast = std::move(records->pending);
  listing.account = std::move(account);
  return listing;
}

std::optional<BookError> CheckStatement(const Statement& statement) {
  if (!platform::IsValidDateNumber(statement.date)) {
    return BookError::Of(Kind::kInvalid, "the statement date is not a day");
  }
  if (!std::isfinite(statement.balance)) {
    return BookError::Of(Kind::kInvalid, "the statement balance is not an amount");
  }
  return std::nullopt;
}

}  // namespace

BookResult<ReconcileListing> ReconcileView(Book& book, std::string_view name,
                                           const Statement& statement) {
  if (auto bad = CheckStatement(statement)) return Unexpected{*bad};
  auto account = book.FindAccount(name);
  if (!account) return Unexpected{account.error()};
  return ListingOf(book, *account, statement);
}

BookResult<std::size_t> TickEntries(Book& book, std::string_view name,
                                       const Statement& statement,
                                       const std::vector<std::int32_t>& numbers) {
  auto account = book.AccountToChange(name);
  if (!account) return Unexpected{account.error()};
  auto entries = EntriesNumbered(**account, numbers);
  if (!entries) return Unexpected{entries.error()};
  for (const ZELMAccountEntry* e : *entries) {
    if (e->GetDate() > statement.date) {
      return Unexpected{BookError::Of(
          Kind::kInvalid, "entry " + std::to_string(e->GetNumber()) + " is dated " +
                              FormatIsoDate(e->GetDate()) + ", after the statement date " +
                              FormatIsoDate(statement.date))};
    }
  }
  auto records = ReadRecords(book, **account);
  if (!records) return Unexpected{records.error()};
  std::size_t changed = 0;
  for (ZELMAccountEntry* e : *entries) {
    if (e->GetCleared() != 0) continue;
    e->SetCleared(1);
    records->pending.push_back(e->GetNumber());
    ++changed;
  }
  if (changed == 0) return changed;
  if (auto failed = book.Changed(**account)) return Unexpected{*failed};
  if (auto failed = StageRecords(book, **account, *records)) return Unexpected{*failed};
  return changed;
}

BookResult<std::size_t> UntickEntries(Book& book, std::string_view name,
                                         const std::vector<std::int32_t>& numbers) {
  auto account = book.AccountToChange(name);
  if (!account) return Unexpected{account.error()};
  auto entries = EntriesNumbered(**account, numbers);
  if (!entries) return Unexpected{entries.error()};
  auto records = ReadRecords(book, **account);
  if (!records) return Unexpected{records.error()};
  std::size_t changed = 0;
  for (ZELMAccountEntry* e : *entries) {
    if (e->GetCleared() == 0) continue;
    e->SetCleared(0);
    std::erase(records->pending, e->GetNumber());
    ++changed;
  }
  if (changed == 0) return changed;
  if (auto failed = book.Changed(**account)) return Unexpected{*failed};
  if (auto failed = StageRecords(book, **account, *records)) return Unexpected{*failed};
  return changed;
}

std::optional<BookError> NoteResolvedMarks(Book& book, const ZELMAccount& account,
                                           const std::vector<std::int32_t>& resolved,
                                           const std::vector<std::int32_t>& unresolved) {
  if (resolved.empty() && unresolved.empty()) return std::nullopt;
  auto records = ReadRecords(book, account);
  if (!records) return records.error();
  bool changed = false;
  for (std::int32_t number : resolved) {
    if (std::find(records->pending.begin(), records->pending.end(), number) ==
        records->pending.end()) {
      records->pending.push_back(number);
      changed = true;
    }
  }
  for (std::int32_t number : unresolved) changed = std::erase(records->pending, number) > 0 || changed;
  if (!changed) return std::nullopt;
  return StageRecords(book, account, *records);
}

BookResult<ReconciliationRecord> FinishReconciliation(Book& book, std::string_view name,
                                                      const Statement& statement) {
  if (auto bad = CheckStatement(statement)) return Unexpected{*bad};
  auto account = book.AccountToChange(name);
  if (!account) return Unexpected{account.error()};
  const ZELMAccount& a = **account;
  const std::int64_t difference = Cents(statement.balance) - Cents(a.GetResolvedBalance());
  if (difference != 0) {
    return Unexpected{BookError::Of(
        Kind::kInvalid,
        "the statement balance is off the resolved balance by " +
            AmountInWords(static_cast<double>(difference) / 100.0, a) +
            "; resolve or correct entries until the difference is 0 before finishing")};
  }
  auto records = ReadRecords(book, a);
  if (!records) return Unexpected{records.error()};
  // The entries resolved since the last reconciliation that are still resolved, by number.
  std::unordered_set<std::int32_t> pending(records->pending.begin(), records->pending.end());
  ReconciliationRecord record{statement, {}, platform::Now()};
  ForEachEntry(a, [&](const ZELMAccountEntry& e) {
    if (e.GetCleared() != 0 && pending.erase(e.GetNumber()) > 0) {
      record.resolved.push_back(e.GetNumber());
    }
  });
  std::sort(record.resolved.begin(), record.resolved.end());
  records->pending.clear();
  records->finished.push_back(record);
  if (auto failed = StageRecords(book, a, *records)) return Unexpected{*failed};
  return record;
}

BookResult<ReconcileOutcome> Reconcile(Book& book, std::string_view name,
                                       const ReconcileRequest& request) {
  if (auto bad = CheckStatement(request.statement)) return Unexpected{*bad};
  ReconcileOutcome outcome;
  if (!request.unresolve.empty()) {
    auto changed = UntickEntries(book, name, request.unresolve);
    if (!changed) return Unexpected{changed.error()};
    outcome.changed = *changed > 0;
  }
  if (!request.resolve.empty()) {
    auto changed = TickEntries(book, name, request.statement, request.resolve);
    if (!changed) return Unexpected{changed.error()};
    outcome.changed = outcome.changed || *changed > 0;
  }
  if (request.finish) {
    auto finished = FinishReconciliation(book, name, request.statement);
    if (!finished) return Unexpected{finished.error()};
    outcome.finished = std::move(*finished);
    outcome.changed = true;
  }
  auto listing = ReconcileView(book, name, request.statement);
  if (!listing) return Unexpected{listing.error()};
  outcome.listing = std::move(*listing);
  return outcome;
}

BookResult<ReconcileHistory> ReconcileRecords(Book& book, std::string_view name) {
  auto account = book.FindAccount(name);
  if (!account) return Unexpected{account.error()};
  auto records = ReadRecords(book, **account);
  if (!records) return Unexpected{records.error()};
  return ReconcileHistory{*account, std::move(records->finished)};
}

BookResult<UndoneReconciliation> UndoReconciliation(Book& book, std::string_view name) {
  auto account = book.AccountToChange(name);
  if (!account) return Unexpected{account.error()};
  ZELMAccount& a = **account;
  auto records = ReadRecords(book, a);
  if (!records) return Unexpected{records.error()};
  if (records->finished.empty()) {
    return Unexpected{BookError::Of(Kind::kNotFound, Quote(a.GetName()) +
                                                         " has no finished reconciliation to "
                                                         "undo")};
  }
  ReconciliationRecord last = std::move(records->finished.back());
  records->finished.pop_back();
  const std::unordered_set<std::int32_t> resolved(last.resolved.begin(), last.resolved.end());
  ForEachEntry(a, [&](ZELMAccountEntry& e) {
    if (resolved.contains(e.GetNumber())) e.SetCleared(0);
  });
  if (auto failed = book.Changed(a)) return Unexpected{*failed};
  if (auto failed = StageRecords(book, a, *records)) return Unexpected{*failed};
  return UndoneReconciliation{*account, std::move(last)};
}

}  // namespace folvant
