#include "folvant/model/ZELMAccountEntry.h"

#include <algorithm>
#include <new>
#include <string>
#include <utility>

#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountEntryType.h"
#include "folvant/platform/LocalCalendar.h"
#include "folvant/platform/Localized.h"
#include "folvant/platform/Log.h"
#include "folvant/platform/Text.h"
#include "folvant/platform/plist/BulkMemory.h"
#include "folvant/values/ZELMUtilities.h"

namespace folvant {

namespace {

using platform::CaseInsensitiveCompare;
using platform::ThreeWay;

constexpr std::string_view kWhere = " in -[ZELMAccountEntry initWithDictionary:]";

void LogMissing(std::string_view key) {
  ZELMLog("No " + std::string(key) + " defined for theDictionary" + std::string(kWhere));
}

void LogWrongKind(std::string_view key) {
  // "notes" is plural in its message.
  const char* verb = key == "notes" ? " are" : " is";
  ZELMLog(std::string(key) + verb + " in the wrong format" + std::string(kWhere));
}

enum class Missing { kLog, kSilent };

// The keys an entry reads, found in one pass over its stored form (a linear search per key
// costs a dozen string comparisons each, for every entry of a large register).
enum Slot : std::size_t {
  kDate,
  kNumber,
  kCheckNumber,
  kEntryFlags,
  kLinkedEntry,
  kLinkedAccount,
  kLinkedExchangedAmount,
  kDescription,
  kType,
  kCategory,
  kAmount,
  kToFrom,
  kCleared,
  kNotes,
  kSplitLineItems,
  kSlotCount
};

constexpr std::string_view kSlotKeys[kSlotCount] = {"date",
                                                    "number",
                                                    "checkNumber",
                                                    "entryFlags",
                                                    "linkedEntry",
                                                    "linkedAccount",
                                                    "linkedExchangedAmount",
                                                    "description",
                                                    "type",
                                                    "category",
                                                    "amount",
                                                    "toFrom",
                                                    "cleared",
                                                    "notes",
                                                    "splitLineItems"};

// The value of each key, the first one when a key repeats (as Dictionary::find gives).
struct EntryKeys {
  explicit EntryKeys(const plist::Dictionary& dict) {
    for (const plist::Dictionary::Entry& entry : dict) {
      const std::string_view key = entry.first;
      for (std::size_t slot = 0; slot < kSlotCount; ++slot) {
        if (key == kSlotKeys[slot]) {
          if (values[slot] == nullptr) values[slot] = &entry.second;
          break;
        }
      }
    }
  }
  const plist::Value* values[kSlotCount] = {};
};

// The value stored for `slot` when it is of the wanted kind; otherwise the fixed message (for
// a missing key only where that key has one) and nullptr.
const plist::Value* Checked(const EntryKeys& keys, Slot slot, bool is_number, Missing missing) {
  const plist::Value* value = keys.values[slot];
  if (value == nullptr) {
    if (missing == Missing::kLog) LogMissing(kSlotKeys[slot]);
    return nullptr;
  }
  if (is_number ? !value->isNumber() : !value->isString()) {
    LogWrongKind(kSlotKeys[slot]);
    return nullptr;
  }
  return value;
}

const plist::Value* Number(const EntryKeys& keys, Slot slot, Missing missing) {
  return Checked(keys, slot, true, missing);
}

const std::string* Text(const EntryKeys& keys, Slot slot, Missing missing) {
  const plist::Value* value = Checked(keys, slot, false, missing);
  return value != nullptr ? value->asString() : nullptr;
}

std::string AccountName(const ZELMAccount* account) {
  return account != nullptr ? account->GetName() : std::string();
}

// Checks first; between two checks the lower check number first; otherwise no order.
int CheckOrder(const ZELMAccountEntry& a, const ZELMAccountEntry& b) {
  if (a.IsCheck() != b.IsCheck()) return a.IsCheck() ? -1 : 1;
  if (a.IsCheck()) return ThreeWay(a.GetCheckNumber(), b.GetCheckNumber());
  return 0;
}

// "%@:  %@ .  " with the label localized.
std::string Labelled(std::string_view label, std::string_view value) {
  return Localized(label) + ":  " + std::string(value) + " .  ";
}

}  // namespace

ZELMAccountEntry::ZELMAccountEntry(const plist::Dictionary* dict) {
  if (dict != nullptr) ReadEntryKeys(*dict);
}

ZELMAccountEntry::ZELMAccountEntry(const ZELMAccountEntry& entry) {
  ReadEntryKeys(entry.asDictionary());
  account_ = entry.account_;
}

// Storage for the entries of one stored list: one allocation instead of one per entry, which
// for a large register saves most of the time and memory of building it. Entries are held
// through aliasing pointers that share the block's count.
class ZELMAccountEntry::StoredListBuilder::Block {
 public:
  explicit Block(std::size_t capacity)
      : capacity_(capacity),
        memory_(static_cast<ZELMAccountEntry*>(
            plist::AllocateBulk(capacity * sizeof(ZELMAccountEntry), true))) {}
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;
  ~Block() {
    for (std::size_t i = 0; i < size_; ++i) memory_[i].~ZELMAccountEntry();
    plist::FreeBulk(memory_, capacity_ * sizeof(ZELMAccountEntry));
  }
  bool full() const { return size_ == capacity_; }
  ZELMAccountEntry* Add(const plist::Dictionary* dict) {
    ZELMAccountEntry* entry = new (memory_ + size_) ZELMAccountEntry(dict);
    ++size_;
    return entry;
  }

 private:
  std::size_t capacity_;
  ZELMAccountEntry* memory_;
  std::size_t size_ = 0;
};

ZELMAccountEntry::StoredListBuilder::StoredListBuilder(std::size_t capacity) {
  entries_.reserve(capacity);
  if (capacity > 0) block_ = std::make_shared<Block>(capacity);
}

void ZELMAccountEntry::StoredListBuilder::Add(const plist::Value& element) {
  const plist::Dictionary* dict = element.asDictionary();
  if (dict == nullptr) {
    ZELMLog("Invalid theValue encountered in -[ZELMAccount InitEntries]");
    return;
  }
  if (block_ == nullptr || block_->full()) {
    // More elements than announced: the rest are made one by one.
    entries_.push_back(std::make_shared<ZELMAccountEntry>(dict));
    return;
  }
  entries_.emplace_back(block_, block_->Add(dict));
}

std::vector<std::shared_ptr<ZELMAccountEntry>> ZELMAccountEntry::StoredListBuilder::Finish() && {
  return std::move(entries_);
}

std::vector<std::shared_ptr<ZELMAccountEntry>> ZELMAccountEntry::entriesFromStoredArray(
    const plist::Array& elements) {
  StoredListBuilder builder(elements.size());
  for (const plist::Value& element : elements) builder.Add(element);
  return std::move(builder).Finish();
}

std::shared_ptr<ZELMAccountEntry> ZELMAccountEntry::entryWithEntry(const ZELMAccountEntry& entry) {
  return std::make_shared<ZELMAccountEntry>(entry);
}

std::shared_ptr<ZELMAccountEntry> ZELMAccountEntry::copy() const {
  return std::make_shared<ZELMAccountEntry>(*this);
}

void ZELMAccountEntry::ReadEntryKeys(const plist::Dictionary& dict) {
  const EntryKeys keys(dict);
  if (const plist::Value* v = Number(keys, kDate, Missing::kLog)) date_ = v->intValue();
  if (const plist::Value* v = Number(keys, kNumber, Missing::kLog)) number_ = v->intValue();
  if (const plist::Value* v = Number(keys, kCheckNumber, Missing::kLog)) {
    checkNumber_ = v->intValue();
  }
  // The link keys are read only when the flags just read say the entry is linked; stale link
  // keys of an unlinked entry are ignored.
  if (const plist::Value* v = Number(keys, kEntryFlags, Missing::kLog)) {
    entryFlags_ = v->intValue();
  }
  if ((entryFlags_ & kFlagLinked) != 0) {
    if (const plist::Value* v = Number(keys, kLinkedEntry, Missing::kSilent)) {
      linkedEntry_ = v->intValue();
    }
    if (const plist::Value* v = Number(keys, kLinkedAccount, Missing::kSilent)) {
      linkedAccount_ = v->intValue();
    }
    if (const plist::Value* v = Number(keys, kLinkedExchangedAmount, Missing::kSilent)) {
      linkedExchangedAmount_ = v->doubleValue();
    }
  }
  if (const std::string* s = Text(keys, kDescription, Missing::kLog)) description_ = *s;
  if (const plist::Value* v = Number(keys, kType, Missing::kLog)) type_ = v->intValue();
  if (const plist::Value* v = Number(keys, kCategory, Missing::kSilent)) {
    category_ = v->intValue();
  }
  // Kept as read: the rounding of SetAmount applies to what the user enters.
  if (const plist::Value* v = Number(keys, kAmount, Missing::kLog)) amount_ = v->doubleValue();
  if (const std::string* s = Text(keys, kToFrom, Missing::kLog)) toFrom_ = *s;
  if (const plist::Value* v = Number(keys, kCleared, Missing::kLog)) {
    cleared_ = static_cast<std::uint8_t>(v->intValue());
  }
  if (const std::string* s = Text(keys, kNotes, Missing::kSilent)) notes_ = *s;
  if (const plist::Value* v = keys.values[kSplitLineItems]) {
    if (const plist::Array* items = v->asArray()) {
      splitLineItems_.clear();
      splitTotal_.Forget();
      splitLineItems_.reserve(items->size());
      for (const plist::Value& item : *items) {
        if (const plist::Dictionary* d = item.asDictionary()) {
          splitLineItems_.push_back(std::make_shared<ZELMAccountEntrySplitLineItem>(d));
        }
      }
    }
  }
}

void ZELMAccountEntry::WriteEntryKeys(plist::Dictionary& dict) const {
  dict.append("date", date_);
  dict.append("number", number_);
  dict.append("checkNumber", checkNumber_);
  dict.append("entryFlags", entryFlags_);
  dict.append("type", type_);
  dict.append("category", category_);
  dict.append("amount", amount_);
  dict.append("description", description_);
  dict.append("toFrom", toFrom_);
  dict.append("cleared", cleared_ != 0);
  if (!notes_.empty()) dict.append("notes", notes_);
  if (IsLinked()) {
    dict.append("linkedEntry", linkedEntry_);
    dict.append("linkedAccount", linkedAccount_);
    dict.append("linkedExchangedAmount", linkedExchangedAmount_);
  }
  if (!splitLineItems_.empty()) {
    plist::Array items;
    items.reserve(splitLineItems_.size());
    for (const auto& item : splitLineItems_) items.emplace_back(item->asDictionary());
    dict.append("splitLineItems", std::move(items));
  }
}

plist::Dictionary ZELMAccountEntry::asDictionary() const {
  plist::Dictionary dict;
  // Exactly the keys WriteEntryKeys writes, so that a large register's stored form wastes no
  // room.
  dict.reserve(10 + (notes_.empty() ? 0 : 1) + (IsLinked() ? 3 : 0) +
               (splitLineItems_.empty() ? 0 : 1));
  WriteEntryKeys(dict);
  return dict;
}

std::string ZELMAccountEntry::asSpeakableString() const {
  std::string text = platform::FormatShortDate(DateNumberToNSCalendarDate(date_)) + ".  ";
  if (IsDebit()) {
    text += Labelled("Debit in the Amount of", FormatFixed2(amount_));
  } else if (IsDeposit()) {
    text += Labelled("Deposit in the Amount of", FormatFixed2(amount_));
  }
  if (type_ >= 0 && account_ != nullptr) {
    if (auto type = account_->accountEntryTypeForNumber(type_)) {
      text += Labelled("Type", type->GetName());
    }
  }
  if (category_ >= 0 && account_ != nullptr) {
    if (auto category = account_->accountEntryCategoryForNumber(category_)) {
      text += Labelled("Category", category->name());
    }
  }
  if (IsCheck()) text += Labelled("Check Number", std::to_string(checkNumber_));
  if (!toFrom_.empty()) {
    if (IsDebit()) {
      text += Labelled("To", toFrom_);
    } else if (IsDeposit()) {
      text += Labelled("From", toFrom_);
    }
  }
  if (!description_.empty()) text += Labelled("Description", description_);
  text += Localized(cleared_ != 0 ? "Resolved" : "Unresolved") + " .  ";
  return text;
}

void ZELMAccountEntry::syncToEntry(ZELMAccountEntry& counterpart) const {
  ZELMAccountEntry& t = counterpart;
  t.SetIsLinked(true);
  t.SetLinkedEntry(number_);
  // Without an account the counterpart links to account 0 and keeps its payee.
  t.SetLinkedAccount(account_ != nullptr ? account_->GetNumber() : 0);
  if (account_ != nullptr) t.SetToFrom(account_->GetName());
  t.SetCategory(category_);
  t.SetDescription(description_);
  t.SetDate(date_);
  if (IsDebit()) {
    t.SetIsDeposit(true);
  } else {
    t.SetIsDebit(true);
  }
  t.SetVoid(GetVoid());

  // The same currency object on both sides means no exchange; otherwise this side's
  // exchanged amounts are the counterpart's own amounts and the other way round.
  const LVCurrency* mine = account_ != nullptr ? account_->currency().get() : nullptr;
  const LVCurrency* theirs = t.account_ != nullptr ? t.account_->currency().get() : nullptr;
  const bool same_currency = mine == theirs;
  if (same_currency) {
    t.SetAmount(-amount_);
  } else {
    t.SetAmount(-linkedExchangedAmount_);
    t.SetLinkedExchangedAmount(-amount_);
  }
  std::vector<std::shared_ptr<ZELMAccountEntrySplitLineItem>> items;
  items.reserve(splitLineItems_.size());
  for (const auto& source : splitLineItems_) {
    const plist::Dictionary stored = source->asDictionary();
    auto item = std::make_shared<ZELMAccountEntrySplitLineItem>(&stored);
    item->setAmount(same_currency ? -source->amount() : -source->exchangedAmount());
    item->setExchangedAmount(same_currency ? -source->exchangedAmount() : -source->amount());
    items.push_back(std::move(item));
  }
  t.splitLineItems_ = std::move(items);
  t.splitTotal_.Forget();
}

// ---- Setters ----

void ZELMAccountEntry::SetFlag(std::int32_t mask, bool on) {
  entryFlags_ = on ? (entryFlags_ | mask) : (entryFlags_ & ~mask);
}

void ZELMAccountEntry::SetDate(std::int32_t date) {
  if (date >= 0) date_ = date;
}

void ZELMAccountEntry::SetDescription(std::optional<std::string_view> description) {
  if (description) description_ = std::string(*description);
}

void ZELMAccountEntry::SetToFrom(std::optional<std::string_view> toFrom) {
  if (toFrom) toFrom_ = std::string(*toFrom);
}

void ZELMAccountEntry::SetAmount(double amount) { amount_ = RoundAmount(amount); }

void ZELMAccountEntry::SetIsCheck(bool isCheck) { SetFlag(kFlagCheck, isCheck); }

void ZELMAccountEntry::SetIsDebit(bool isDebit) {
  SetFlag(kFlagDebit, isDebit);
  if (isDebit) SetFlag(kFlagDeposit, false);
}

void ZELMAccountEntry::SetIsDeposit(bool isDeposit) {
  SetFlag(kFlagDeposit, isDeposit);
  if (isDeposit) SetFlag(kFlagDebit, false);
}

void ZELMAccountEntry::SetIsLinked(bool isLinked) {
  SetFlag(kFlagLinked, isLinked);
  if (!isLinked) {
    linkedEntry_ = -1;
    linkedAccount_ = -1;
  }
}

void ZELMAccountEntry::SetTaxDeductible(bool taxDeductible) {
  SetFlag(kFlagTaxDeductible, taxDeductible);
}

void ZELMAccountEntry::SetVoid(bool isVoid) { SetFlag(kFlagVoid, isVoid); }

void ZELMAccountEntry::SetNotes(std::optional<std::string_view> notes) {
  notes_ = notes ? std::string(*notes) : std::string();
}

// ---- Split line items ----

void ZELMAccountEntry::addSplitLineItem(std::shared_ptr<ZELMAccountEntrySplitLineItem> item) {
  if (item == nullptr) return;
  splitLineItems_.push_back(std::move(item));
  splitTotal_.Forget();
}

void ZELMAccountEntry::addSplitLineItemWithCategory(std::int32_t category,
                                                    std::optional<std::string_view> description,
                                                    std::optional<std::string_view> toFrom,
                                                    double amount) {
  splitLineItems_.push_back(std::make_shared<ZELMAccountEntrySplitLineItem>(
      category, description, toFrom, amount, amount));
  splitTotal_.Forget();
}

void ZELMAccountEntry::insertSplitLineItem(std::shared_ptr<ZELMAccountEntrySplitLineItem> item,
                                           std::int32_t index) {
  if (item == nullptr || index < 0 || static_cast<std::size_t>(index) > splitLineItems_.size()) {
    return;
  }
  splitLineItems_.insert(splitLineItems_.begin() + index, std::move(item));
  splitTotal_.Forget();
}

void ZELMAccountEntry::removeSplitLineItemAtIndex(std::int32_t index) {
  if (index < 0 || static_cast<std::size_t>(index) >= splitLineItems_.size()) return;
  splitLineItems_.erase(splitLineItems_.begin() + index);
  splitTotal_.Forget();
}

void ZELMAccountEntry::removeSplitLineItem(const ZELMAccountEntrySplitLineItem* item) {
  std::erase_if(splitLineItems_, [item](const auto& held) { return held.get() == item; });
  splitTotal_.Forget();
}

double ZELMAccountEntry::splitTotal() const {
  if (const std::optional<double> kept = splitTotal_.Get()) return *kept;
  // Counted before the sum: a change made meanwhile makes this total stale at once.
  const std::uint64_t at = detail::lineItemAmountChanges.load(std::memory_order_relaxed);
  double total = 0.0;
  for (const auto& item : splitLineItems_) total += item->amount();
  splitTotal_.Keep(total, at);
  return total;
}

// ---- Comparators ----

int ZELMAccountEntry::AccountIsGreaterThan(const ZELMAccountEntry& other) const {
  if (int c = CaseInsensitiveCompare(AccountName(account_), AccountName(other.account_))) return c;
  if (int c = ThreeWay(date_, other.date_)) return c;
  return ThreeWay(number_, other.number_);
}

int ZELMAccountEntry::CheckNumberIsGreaterThan(const ZELMAccountEntry& other) const {
  if (int c = CheckOrder(*this, other)) return c;
  return ThreeWay(number_, other.number_);
}

int ZELMAccountEntry::DateIsGreaterThan(const ZELMAccountEntry& other) const {
  if (int c = ThreeWay(date_, other.date_)) return c;
  return ThreeWay(number_, other.number_);
}

int ZELMAccountEntry::DatePrimaryCheckSecondaryIsGreaterThan(const ZELMAccountEntry& other) const {
  if (int c = ThreeWay(date_, other.date_)) return c;
  if (int c = CheckOrder(*this, other)) return c;
  return ThreeWay(number_, other.number_);
}

int ZELMAccountEntry::DescriptionIsGreaterThan(const ZELMAccountEntry& other) const {
  if (int c = CaseInsensitiveCompare(description_, other.description_)) return c;
  return ThreeWay(number_, other.number_);
}

int ZELMAccountEntry::ToFromIsGreaterThan(const ZELMAccountEntry& other) const {
  if (int c = CaseInsensitiveCompare(toFrom_, other.toFrom_)) return c;
  return ThreeWay(number_, other.number_);
}

int ZELMAccountEntry::TypePrimaryDateSecondaryIsGreaterThan(const ZELMAccountEntry& other) const {
  // Both numbers resolve through this entry's account, so entries of different accounts are
  // compared by this account's types.
  auto type_name = [this](std::int32_t number) {
    if (account_ == nullptr) return std::string();
    auto type = account_->accountEntryTypeForNumber(number);
    return type != nullptr ? type->GetName() : std::string();
  };
  if (int c = CaseInsensitiveCompare(type_name(type_), type_name(other.type_))) return c;
  if (int c = ThreeWay(date_, other.date_)) return c;
  return ThreeWay(number_, other.number_);
}

int ZELMAccountEntry::CategoryPrimaryDateSecondaryIsGreaterThan(
    const ZELMAccountEntry& other) const {
  auto category_name = [this](std::int32_t number) {
    if (account_ == nullptr) return std::string();
    auto category = account_->accountEntryCategoryForNumber(number);
    return category != nullptr ? category->fullName() : std::string();
  };
  if (int c = CaseInsensitiveCompare(category_name(category_), category_name(other.category_))) {
    return c;
  }
  if (int c = ThreeWay(date_, other.date_)) return c;
  return ThreeWay(number_, other.number_);
}

int ZELMAccountEntry::AmountIsGreaterThan(const ZELMAccountEntry& other) const {
  if (int c = ThreeWay(GetAmount(), other.GetAmount())) return c;
  return ThreeWay(number_, other.number_);
}

int ZELMAccountEntry::BalanceIsGreaterThan(const ZELMAccountEntry& other) const {
  if (int c = ThreeWay(cachedRunningBalance_, other.cachedRunningBalance_)) return c;
  return ThreeWay(number_, other.number_);
}

int ZELMAccountEntry::NumberIsGreaterThan(const ZELMAccountEntry& other) const {
  return ThreeWay(number_, other.number_);
}

int ZELMAccountEntry::ClearedIsGreaterThan(const ZELMAccountEntry& other) const {
  if (int c = ThreeWay(cleared_, other.cleared_)) return c;
  return ThreeWay(number_, other.number_);
}

// Every step of every key reverses, so each twin is the plain negation.
int ZELMAccountEntry::AccountIsGreaterThan_Reversed(const ZELMAccountEntry& other) const {
  return -AccountIsGreaterThan(other);
}
int ZELMAccountEntry::CheckNumberIsGreaterThan_Reversed(const ZELMAccountEntry& other) const {
  return -CheckNumberIsGreaterThan(other);
}
int ZELMAccountEntry::DateIsGreaterThan_Reversed(const ZELMAccountEntry& other) const {
  return -DateIsGreaterThan(other);
}
int ZELMAccountEntry::DatePrimaryCheckSecondaryIsGreaterThan_Reversed(
    const ZELMAccountEntry& other) const {
  return -DatePrimaryCheckSecondaryIsGreaterThan(other);
}
int ZELMAccountEntry::DescriptionIsGreaterThan_Reversed(const ZELMAccountEntry& other) const {
  return -DescriptionIsGreaterThan(other);
}
int ZELMAccountEntry::ToFromIsGreaterThan_Reversed(const ZELMAccountEntry& other) const {
  return -ToFromIsGreaterThan(other);
}
int ZELMAccountEntry::TypePrimaryDateSecondaryIsGreaterThan_Reversed(
    const ZELMAccountEntry& other) const {
  return -TypePrimaryDateSecondaryIsGreaterThan(other);
}
int ZELMAccountEntry::CategoryPrimaryDateSecondaryIsGreaterThan_Reversed(
    const ZELMAccountEntry& other) const {
  return -CategoryPrimaryDateSecondaryIsGreaterThan(other);
}
int ZELMAccountEntry::AmountIsGreaterThan_Reversed(const ZELMAccountEntry& other) const {
  return -AmountIsGreaterThan(other);
}
int ZELMAccountEntry::BalanceIsGreaterThan_Reversed(const ZELMAccountEntry& other) const {
  return -BalanceIsGreaterThan(other);
}
int ZELMAccountEntry::NumberIsGreaterThan_Reversed(const ZELMAccountEntry& other) const {
  return -NumberIsGreaterThan(other);
}
int ZELMAccountEntry::ClearedIsGreaterThan_Reversed(const ZELMAccountEntry& other) const {
  return -ClearedIsGreaterThan(other);
}

}  // namespace folvant
