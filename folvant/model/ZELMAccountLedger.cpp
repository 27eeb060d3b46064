// The account's register: where entries live, numbering, check numbers, balances, suggestion
// lists, sorting and the account comparators.

#include <algorithm>
#include <climits>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "folvant/model/ZELMAccount.h"
#include "folvant/platform/Clock.h"
#include "folvant/platform/Text.h"

namespace folvant {

namespace {

using platform::ThreeWay;
using Comparator = int (ZELMAccountEntry::*)(const ZELMAccountEntry&) const;

// n + 1 in wrapping 32-bit arithmetic (see NextAvailableCheckNumber).
std::int32_t NumberAfter(std::int32_t n) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(n) + 1);
}

// The receiving side of a transfer takes its check number from the sending account, so it
// never counts in this account's check numbering.
bool IsLinkedDeposit(const ZELMAccountEntry& entry) {
  return entry.IsLinked() && entry.IsDeposit();
}

template <typename Entries>
void StableSortBy(Entries& entries, Comparator comparator) {
  std::stable_sort(entries.begin(), entries.end(), [comparator](const auto& a, const auto& b) {
    return ((*a).*comparator)(*b) < 0;
  });
}

// What a register comparator looks at, computed once per entry so that sorting a large
// register neither folds texts nor looks up type names in every comparison. Keys compare by
// text (case-folded, bytewise: the order of CaseInsensitiveCompare), major, minor and entry
// number, then by position before the sort, which keeps the sort stable.
struct SortKey {
  std::string text;
  std::int64_t major = 0;
  std::int64_t minor = 0;
  std::int32_t number = 0;
  std::uint32_t index = 0;
};

enum class KeyKind {
  kDateCheck,    // DatePrimaryCheckSecondaryIsGreaterThan: date, checks first by check number
  kTypeDate,     // TypePrimaryDateSecondaryIsGreaterThan: type name, date
  kDescription,  // DescriptionIsGreaterThan
  kToFrom,       // ToFromIsGreaterThan
};

int CompareKeys(const SortKey& a, const SortKey& b) {
  if (int c = a.text.compare(b.text)) return c < 0 ? -1 : 1;
  if (int c = ThreeWay(a.major, b.major)) return c;
  if (int c = ThreeWay(a.minor, b.minor)) return c;
  return ThreeWay(a.number, b.number);
}

// Orders `list` as a stable sort with the comparator of `kind` (or its _Reversed twin) does.
// The date order's key, without the text: a third of SortKey's size, so a register of a
// million entries sorts in cache-sized strides.
struct DateKey {
  std::int32_t date;
  std::int32_t number;
  std::int64_t minor;
  std::uint32_t index;
};

template <typename Pointer>
void DateSort(std::vector<Pointer>& list, bool descending) {
  std::vector<DateKey> keys(list.size());
  for (std::uint32_t i = 0; i < keys.size(); ++i) {
    const ZELMAccountEntry& entry = *list[i];
    // Two non-checks are equal here whatever their check numbers.
    keys[i] = {entry.GetDate(), entry.GetNumber(),
               entry.IsCheck() ? entry.GetCheckNumber() : INT64_MAX, i};
  }
  auto before = [descending](const DateKey& a, const DateKey& b) {
    int c = ThreeWay(a.date, b.date);
    if (c == 0) c = ThreeWay(a.minor, b.minor);
    if (c == 0) c = ThreeWay(a.number, b.number);
    if (c != 0) return descending ? c > 0 : c < 0;
    return a.index < b.index;
  };
  // Registers are mostly kept in date order already; one pass tells.
  if (std::is_sorted(keys.begin(), keys.end(), before)) return;
  std::sort(keys.begin(), keys.end(), before);
  std::vector<Pointer> sorted;
  sorted.reserve(list.size());
  for (const DateKey& key : keys) sorted.push_back(std::move(list[key.index]));
  list.swap(sorted);
}

template <typename Pointer>
void KeyedSort(std::vector<Pointer>& list, KeyKind kind, bool descending,
               const ZELMAccount& account) {
  if (kind == KeyKind::kDateCheck) return DateSort(list, descending);
  std::unordered_map<std::int32_t, std::string> type_names;
  auto type_name = [&](std::int32_t number) -> const std::string& {
    auto [at, added] = type_names.try_emplace(number);
    if (added) {
      auto type = account.accountEntryTypeForNumber(number);
      if (type != nullptr) at->second = platform::CaseFold(type->GetName());
    }
    return at->second;
  };
  std::vector<SortKey> keys(list.size());
  for (std::uint32_t i = 0; i < keys.size(); ++i) {
    const ZELMAccountEntry& entry = *list[i];
    SortKey& key = keys[i];
    key.number = entry.GetNumber();
    key.index = i;
    switch (kind) {
      case KeyKind::kDateCheck:  // sorted by DateSort
        break;
      case KeyKind::kTypeDate:
        key.text = type_name(entry.GetType());
        key.major = entry.GetDate();
        break;
      case KeyKind::kDescription:
        key.text = platform::CaseFold(entry.GetDescription());
        break;
      case KeyKind::kToFrom:
        key.text = platform::CaseFold(entry.GetToFrom());
        break;
    }
  }
  auto before = [descending](const SortKey& a, const SortKey& b) {
    const int c = CompareKeys(a, b);
    if (c != 0) return descending ? c > 0 : c < 0;
    return a.index < b.index;
  };
  // Registers are mostly kept in date order already; one pass tells.
  if (std::is_sorted(keys.begin(), keys.end(), before)) return;
  std::sort(keys.begin(), keys.end(), before);
  std::vector<Pointer> sorted;
  sorted.reserve(list.size());
  for (const SortKey& key : keys) sorted.push_back(std::move(list[key.index]));
  list.swap(sorted);
}

const std::string& TextOf(const ZELMAccountEntry& entry, bool descriptions) {
  return descriptions ? entry.GetDescription() : entry.GetToFrom();
}

bool Selects(const ZELMAccountEntry& entry, bool deposits) {
  return deposits ? entry.IsDeposit() : entry.IsDebit();
}

// A list of texts that are distinct ignoring case.
class DistinctTexts {
 public:
  explicit DistinctTexts(ZELMAccount::StringList& list) : list_(list) {
    for (const std::string& text : list_) seen_.insert(platform::CaseFold(text));
  }
  // Appends the text unless an equal one (ignoring case) is there; returns whether it did.
  bool Add(const std::string& text) {
    if (!seen_.insert(platform::CaseFold(text)).second) return false;
    list_.push_back(text);
    return true;
  }

 private:
  ZELMAccount::StringList& list_;
  std::unordered_set<std::string> seen_;
};

void ImportStrings(const std::optional<ZELMAccount::StringList>& source,
                   std::optional<ZELMAccount::StringList>& target) {
  if (!target) target.emplace();
  if (!source) return;
  // A copy, so importing from this very account reads a list that does not grow.
  const ZELMAccount::StringList texts = *source;
  DistinctTexts distinct(*target);
  for (const std::string& text : texts) distinct.Add(text);
}

}  // namespace

// ---- Entry store ----

ZELMAccount::EntryList ZELMAccount::GetAllEntries() const {
  std::size_t count = entries_.size();
  for (const auto& folder : folders_) count += folder->entries().size();
  EntryList all;
  all.reserve(count);
  ForEachEntryPointer(
      [&all](const std::shared_ptr<ZELMAccountEntry>& entry) { all.push_back(entry); });
  return all;
}

const ZELMAccount::EntryList* ZELMAccount::InitEntries(const plist::Value* array) {
  std::optional<EntryList> entries = EntriesFromStoredArray(array);
  if (!entries) return nullptr;
  SetEntries(std::move(entries));
  return &entries_;
}

void ZELMAccount::SetEntries(std::optional<EntryList> entries) {
  if (!entries) return;
  entries_ = std::move(*entries);
  for (const auto& entry : entries_) entry->SetAccount(this);
}

void ZELMAccount::AddEntry(const std::shared_ptr<ZELMAccountEntry>& entry) {
  if (entry == nullptr) return;
  entry->SetAccount(this);
  if (std::shared_ptr<ZELMAccountFolder> shown = folder()) {
    shown->mutableEntries().push_back(entry);
  } else {
    entries_.push_back(entry);
  }
}

void ZELMAccount::RemoveEntry(const ZELMAccountEntry* entry) {
  if (entry == nullptr) return;
  const auto is_entry = [entry](const auto& held) { return held.get() == entry; };
  if (std::erase_if(entries_, is_entry) > 0) return;
  for (const auto& folder : folders_) std::erase_if(folder->mutableEntries(), is_entry);
}

std::shared_ptr<ZELMAccountEntry> ZELMAccount::GetEntryWithNumber(std::int32_t number) const {
  std::shared_ptr<ZELMAccountEntry> found;
  ForEachEntryPointer([&](const std::shared_ptr<ZELMAccountEntry>& entry) {
    if (found == nullptr && entry->GetNumber() == number) found = entry;
  });
  return found;
}

std::shared_ptr<ZELMAccountEntry> ZELMAccount::GetFirstEntry() const {
  const std::shared_ptr<ZELMAccountEntry>* first = nullptr;
  ForEachEntryPointer([&](const std::shared_ptr<ZELMAccountEntry>& entry) {
    if (first == nullptr || entry->GetDate() < (*first)->GetDate()) first = &entry;
  });
  return first != nullptr ? *first : nullptr;
}

std::shared_ptr<ZELMAccountEntry> ZELMAccount::GetLastEntry() const {
  const std::shared_ptr<ZELMAccountEntry>* last = nullptr;
  ForEachEntryPointer([&](const std::shared_ptr<ZELMAccountEntry>& entry) {
    if (last == nullptr || entry->GetDate() > (*last)->GetDate()) last = &entry;
  });
  return last != nullptr ? *last : nullptr;
}

std::shared_ptr<ZELMAccountEntry> ZELMAccount::GetLastEnteredEntry() const {
  const std::shared_ptr<ZELMAccountEntry>* last = nullptr;
  ForEachEntryPointer([&](const std::shared_ptr<ZELMAccountEntry>& entry) {
    if (last == nullptr || entry->GetNumber() > (*last)->GetNumber()) last = &entry;
  });
  return last != nullptr ? *last : nullptr;
}

std::shared_ptr<ZELMAccountEntry> ZELMAccount::GetLastEnteredCheck() const {
  const std::shared_ptr<ZELMAccountEntry>* last = nullptr;
  ForEachEntryPointer([&](const std::shared_ptr<ZELMAccountEntry>& entry) {
    if (!entry->IsCheck()) return;
    if (last == nullptr || entry->GetNumber() > (*last)->GetNumber()) last = &entry;
  });
  return last != nullptr ? *last : nullptr;
}

ZELMAccount::EntryList ZELMAccount::GetDebits() const {
  EntryList debits;
  ForEachEntryPointer([&](const std::shared_ptr<ZELMAccountEntry>& entry) {
    if (entry->IsDebit()) debits.push_back(entry);
  });
  return debits;
}

ZELMAccount::EntryList ZELMAccount::GetDeposits() const {
  EntryList deposits;
  ForEachEntryPointer([&](const std::shared_ptr<ZELMAccountEntry>& entry) {
    if (entry->IsDeposit()) deposits.push_back(entry);
  });
  return deposits;
}

// ---- Check numbers ----

std::int32_t ZELMAccount::MaxCheckNumber() const {
  std::int32_t highest = -1;
  // Any entry's check number counts, check or not.
  ForEachEntry([&highest](const ZELMAccountEntry& entry) {
    if (!IsLinkedDeposit(entry)) highest = std::max(highest, entry.GetCheckNumber());
  });
  return highest;
}

std::int32_t ZELMAccount::HighestCheckNumber() const {
  const std::int32_t highest = MaxCheckNumber();
  return startingCheckNumber_ > highest ? startingCheckNumber_ - 1 : highest;
}

// Check numbers are read from files as any 32-bit value. The number after 2147483647 wraps to
// -2147483648, as the stored 32-bit number would (schedule and entry numbers do the same),
// rather than overflowing.
std::int32_t ZELMAccount::NextAvailableCheckNumber() const {
  const std::int32_t highest = MaxCheckNumber();
  return startingCheckNumber_ > highest ? startingCheckNumber_ : NumberAfter(highest);
}

std::int32_t ZELMAccount::NextAvailableCheckNumberAfterEntry(const ZELMAccountEntry* entry) const {
  const std::int32_t highest = HighestCheckNumber();
  if (entry == nullptr) return std::max(NumberAfter(highest), startingCheckNumber_);
  if (entry->GetCheckNumber() == highest) return NumberAfter(highest);
  // Walk the main list in check-number order from the entry, looking for the first gap.
  std::vector<const ZELMAccountEntry*> ordered;
  ordered.reserve(entries_.size());
  for (const auto& held : entries_) ordered.push_back(held.get());
  StableSortBy(ordered, &ZELMAccountEntry::CheckNumberIsGreaterThan);
  std::int32_t candidate = entry->GetCheckNumber();
  auto at = std::find(ordered.begin(), ordered.end(), entry);
  if (at != ordered.end()) {
    // A linked deposit never advances: the test is on the entry walked from, as it always was.
    const bool frozen = IsLinkedDeposit(*entry);
    for (++at; at != ordered.end(); ++at) {
      const ZELMAccountEntry& check = **at;
      if (!check.IsCheck() || frozen) continue;
      candidate = NumberAfter(candidate);
      if (check.GetCheckNumber() > candidate) break;
      candidate = check.GetCheckNumber();
    }
  }
  return candidate == highest ? NumberAfter(candidate) : candidate;
}

std::int32_t ZELMAccount::NextCheckNumberAfterCheckNumber(std::int32_t number) const {
  const std::int32_t highest = HighestCheckNumber();
  if (number == highest) return highest;
  std::int32_t next = highest;
  ForEachEntry([&](const ZELMAccountEntry& entry) {
    if (!entry.IsCheck() || IsLinkedDeposit(entry)) return;
    const std::int32_t check = entry.GetCheckNumber();
    if (check > number && check < next) next = check;
  });
  return next;
}

// ---- Balances ----

template <typename Select>
double ZELMAccount::SumNonVoid(const Select& select) const {
  double sum = 0.0;
  ForEachEntry([&](const ZELMAccountEntry& entry) {
    if (!entry.GetVoid() && select(entry)) sum += entry.GetAmount();
  });
  return sum;
}

double ZELMAccount::GetBalance() const {
  // A locked account shows, and sorts with, a zero balance.
  if (!authenticated_) return 0.0;
  return startingBalance_ + SumNonVoid([](const ZELMAccountEntry&) { return true; });
}

double ZELMAccount::GetTodaysBalance() const {
  return GetRunningBalanceThroughDate(platform::Today());
}

double ZELMAccount::GetResolvedBalance() const {
  return startingBalance_ +
         SumNonVoid([](const ZELMAccountEntry& entry) { return entry.GetCleared() != 0; });
}

double ZELMAccount::GetUnresolvedBalance() const { return GetBalance() - GetResolvedBalance(); }

double ZELMAccount::GetRunningBalanceBeforeDate(std::int32_t date) const {
  return startingBalance_ +
         SumNonVoid([date](const ZELMAccountEntry& entry) { return entry.GetDate() < date; });
}

double ZELMAccount::GetRunningBalanceThroughDate(std::int32_t date) const {
  return startingBalance_ +
         SumNonVoid([date](const ZELMAccountEntry& entry) { return entry.GetDate() <= date; });
}

double ZELMAccount::GetRunningBalanceAtEntry(const ZELMAccountEntry* entry) const {
  if (entry == nullptr) return 0.0;
  const ZELMAccountEntry& at = *entry;
  double balance = startingBalance_;
  // The order of DatePrimaryCheckSecondaryIsGreaterThan: by date, and within a day the checks
  // by check number before the other entries by entry number.
  ForEachEntry([&](const ZELMAccountEntry& other) {
    if (&other == &at || other.GetVoid()) return;
    bool before;
    if (other.GetDate() != at.GetDate()) {
      before = other.GetDate() < at.GetDate();
    } else if (at.IsCheck()) {
      before = other.IsCheck() && other.GetCheckNumber() <= at.GetCheckNumber();
    } else {
      before = other.IsCheck() || other.GetNumber() < at.GetNumber();
    }
    if (before) balance += other.GetAmount();
  });
  if (!at.GetVoid()) balance += at.GetAmount();
  return balance;
}

void ZELMAccount::CacheRunningBalances(EntryList* ordered) const {
  auto cache = [this](const auto& list) {
    double balance = startingBalance_;
    for (const auto& entry : list) {
      // A void entry shows the balance of the entry before it.
      if (!entry->GetVoid()) balance += entry->GetAmount();
      entry->SetCachedRunningBalance(balance);
    }
  };
  if (ordered != nullptr) {
    ordered->clear();
    ordered->reserve(entries_.size());
    ForEachEntryPointer(
        [ordered](const std::shared_ptr<ZELMAccountEntry>& entry) { ordered->push_back(entry); });
    KeyedSort(*ordered, KeyKind::kDateCheck, false, *this);
    cache(*ordered);
    return;
  }
  std::vector<ZELMAccountEntry*> list;
  list.reserve(entries_.size());
  ForEachEntryPointer(
      [&list](const std::shared_ptr<ZELMAccountEntry>& entry) { list.push_back(entry.get()); });
  KeyedSort(list, KeyKind::kDateCheck, false, *this);
  cache(list);
}

double ZELMAccount::GetDebitsTotal() const {
  return SumNonVoid([](const ZELMAccountEntry& entry) { return entry.IsDebit(); });
}

double ZELMAccount::GetDepositsTotal() const {
  return SumNonVoid([](const ZELMAccountEntry& entry) { return entry.IsDeposit(); });
}

// ---- Suggestion lists ----

ZELMAccount::StringList ZELMAccount::TextsAll(bool deposits, bool descriptions) const {
  StringList texts;
  if (!authenticated_) return texts;
  DistinctTexts distinct(texts);
  ForEachEntry([&](const ZELMAccountEntry& entry) {
    if (!Selects(entry, deposits)) return;
    const std::string& text = TextOf(entry, descriptions);
    if (!text.empty()) distinct.Add(text);
  });
  std::stable_sort(texts.begin(), texts.end(), [](const std::string& a, const std::string& b) {
    return platform::CaseInsensitiveCompare(a, b) < 0;
  });
  return texts;
}

ZELMAccount::StringList ZELMAccount::TextsSome(bool deposits, bool descriptions,
                                               std::int32_t count) const {
  StringList texts;
  if (!authenticated_) return texts;
  std::vector<const ZELMAccountEntry*> recent;
  ForEachEntry([&](const ZELMAccountEntry& entry) {
    if (Selects(entry, deposits)) recent.push_back(&entry);
  });
  StableSortBy(recent, &ZELMAccountEntry::NumberIsGreaterThan_Reversed);
  DistinctTexts distinct(texts);
  for (const ZELMAccountEntry* entry : recent) {
    const std::string& text = TextOf(*entry, descriptions);
    if (text.empty()) continue;
    const auto held_before = static_cast<std::int64_t>(texts.size());
    // The test comes after the addition, so the list can end one longer than the count.
    if (distinct.Add(text) && held_before >= count) break;
  }
  return texts;
}

std::optional<ZELMAccount::StringList> ZELMAccount::Preferred(std::int32_t style,
                                                              std::int32_t someCount, bool deposits,
                                                              bool descriptions) const {
  switch (style) {
    case 0:
      return TextsAll(deposits, descriptions);
    case 1:
      return TextsSome(deposits, descriptions, someCount);
    case 2:
      if (descriptions)
        return deposits ? preferredDepositDescriptions_ : preferredDebitDescriptions_;
      return deposits ? preferredFroms_ : preferredTos_;
    default:
      return std::nullopt;
  }
}

std::optional<ZELMAccount::StringList> ZELMAccount::GetPreferredDebitDescriptions() const {
  return Preferred(preference_Descriptions_Style_, preference_Descriptions_SomeSelection_, false,
                   true);
}

std::optional<ZELMAccount::StringList> ZELMAccount::GetPreferredDepositDescriptions() const {
  return Preferred(preference_Descriptions_Style_, preference_Descriptions_SomeSelection_, true,
                   true);
}

std::optional<ZELMAccount::StringList> ZELMAccount::GetPreferredTos() const {
  return Preferred(preference_ToFrom_Style_, preference_ToFrom_SomeSelection_, false, false);
}

std::optional<ZELMAccount::StringList> ZELMAccount::GetPreferredFroms() const {
  return Preferred(preference_ToFrom_Style_, preference_ToFrom_SomeSelection_, true, false);
}

ZELMAccount::StringList ZELMAccount::DebitDescriptions_All() const { return TextsAll(false, true); }
ZELMAccount::StringList ZELMAccount::DepositDescriptions_All() const {
  return TextsAll(true, true);
}
ZELMAccount::StringList ZELMAccount::Tos_All() const { return TextsAll(false, false); }
ZELMAccount::StringList ZELMAccount::Froms_All() const { return TextsAll(true, false); }

ZELMAccount::StringList ZELMAccount::DebitDescriptions_Some(std::int32_t count) const {
  return TextsSome(false, true, count);
}
ZELMAccount::StringList ZELMAccount::DepositDescriptions_Some(std::int32_t count) const {
  return TextsSome(true, true, count);
}
ZELMAccount::StringList ZELMAccount::Tos_Some(std::int32_t count) const {
  return TextsSome(false, false, count);
}
ZELMAccount::StringList ZELMAccount::Froms_Some(std::int32_t count) const {
  return TextsSome(true, false, count);
}

std::optional<ZELMAccount::StringList> ZELMAccount::DebitDescriptions_Specific() const {
  return preferredDebitDescriptions_;
}
std::optional<ZELMAccount::StringList> ZELMAccount::DepositDescriptions_Specific() const {
  return preferredDepositDescriptions_;
}
std::optional<ZELMAccount::StringList> ZELMAccount::Tos_Specific() const { return preferredTos_; }
std::optional<ZELMAccount::StringList> ZELMAccount::Froms_Specific() const {
  return preferredFroms_;
}

void ZELMAccount::importDescriptionsFromAccount(const ZELMAccount* source) {
  if (source == nullptr || !source->IsAuthenticated()) return;
  ImportStrings(source->preferredDebitDescriptions(), preferredDebitDescriptions_);
  ImportStrings(source->preferredDepositDescriptions(), preferredDepositDescriptions_);
}

void ZELMAccount::importToFromsFromAccount(const ZELMAccount* source) {
  if (source == nullptr || !source->IsAuthenticated()) return;
  ImportStrings(source->preferredTos(), preferredTos_);
  ImportStrings(source->preferredFroms(), preferredFroms_);
}

// ---- Sorting ----

void ZELMAccount::SortBy(std::int32_t key, bool descending) {
  std::shared_ptr<ZELMAccountFolder> shown = folder();
  SortEntries(shown != nullptr ? shown->mutableEntries() : entries_, key, descending);
}

void ZELMAccount::SortEntries(EntryList& list, std::int32_t key, bool descending) const {
  // The keyed sorts order by key, then number, then position: what sorting by number and then
  // stably by the key's comparator gives.
  std::pair<Comparator, Comparator> comparators{nullptr, nullptr};
  switch (key) {
    case 0:
      comparators = {&ZELMAccountEntry::CheckNumberIsGreaterThan,
                     &ZELMAccountEntry::CheckNumberIsGreaterThan_Reversed};
      break;
    case 1:
      return KeyedSort(list, KeyKind::kDateCheck, descending, *this);
    case 2:
      return KeyedSort(list, KeyKind::kTypeDate, descending, *this);
    case 3:
      return KeyedSort(list, KeyKind::kDescription, descending, *this);
    case 4:
      comparators = {&ZELMAccountEntry::AmountIsGreaterThan,
                     &ZELMAccountEntry::AmountIsGreaterThan_Reversed};
      break;
    case 5:
      comparators = {&ZELMAccountEntry::ClearedIsGreaterThan,
                     &ZELMAccountEntry::ClearedIsGreaterThan_Reversed};
      break;
    case 6:
      return KeyedSort(list, KeyKind::kToFrom, descending, *this);
    default:
      break;  // any other key leaves the register in number order
  }
  StableSortBy(list, &ZELMAccountEntry::NumberIsGreaterThan);
  if (comparators.first != nullptr) {
    StableSortBy(list, descending ? comparators.second : comparators.first);
  }
}

int ZELMAccount::NameIsGreaterThan(const ZELMAccount& other) const {
  return platform::CaseInsensitiveCompare(name_, other.name_);
}

int ZELMAccount::NameIsGreaterThan_Reversed(const ZELMAccount& other) const {
  return -NameIsGreaterThan(other);
}

int ZELMAccount::NumberIsGreaterThan(const ZELMAccount& other) const {
  return ThreeWay(number_, other.number_);
}

int ZELMAccount::BalanceIsGreaterThan(const ZELMAccount& other) const {
  return ThreeWay(GetBalance(), other.GetBalance());
}

int ZELMAccount::BalanceIsGreaterThan_Reversed(const ZELMAccount& other) const {
  return -BalanceIsGreaterThan(other);
}

}  // namespace folvant
