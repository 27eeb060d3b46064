#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/model/ZELMAccountEntrySplitLineItem.h"
#include "folvant/platform/plist/Value.h"

namespace folvant {

class ZELMAccount;

// One line of a register: a check, debit or deposit with its date, signed amount (negative
// for money leaving the account), texts, type and category numbers, resolved mark, optional
// split line items and, for a transfer, the number of the matching entry in another account.
// Accounts hold entries through std::shared_ptr; `account_` is a back reference set by the
// owning account and never owned. Scheduled entries and import staging entries derive from it.
class ZELMAccountEntry {
 public:
  // Bits of entryFlags. Debit and deposit exclude each other; bit 3 (8) marked the sending
  // side of a transfer in old files and is read only by the format upgrade.
  static constexpr std::int32_t kFlagDebit = 1;
  static constexpr std::int32_t kFlagDeposit = 2;
  static constexpr std::int32_t kFlagLinked = 4;
  static constexpr std::int32_t kFlagSentTransfer = 8;
  static constexpr std::int32_t kFlagCheck = 16;
  static constexpr std::int32_t kFlagTaxDeductible = 64;
  static constexpr std::int32_t kFlagVoid = 128;

  ZELMAccountEntry() = default;
  // A fresh entry, then the stored keys (see ReadEntryKeys). nullptr: a fresh entry, no message.
  explicit ZELMAccountEntry(const plist::Dictionary* dict);
  // A copy of what the other entry stores (its asDictionary read back), with the same account;
  // the schedule number and the cached running balance are not carried over.
  explicit ZELMAccountEntry(const ZELMAccountEntry& entry);
  ZELMAccountEntry& operator=(const ZELMAccountEntry&) = delete;
  virtual ~ZELMAccountEntry() = default;

  // Plain entries built from the dictionaries of a stored entry list, in order; an element
  // that is not a dictionary is skipped with a message. The entries of one call live in one
  // block of memory, freed when the last of them goes.
  static std::vector<std::shared_ptr<ZELMAccountEntry>> entriesFromStoredArray(
      const plist::Array& elements);

  // The same, one element at a time, for a list read member by member from its file:
  //   StoredListBuilder builder(size);
  //   for (...) builder.Add(element);
  //   auto entries = std::move(builder).Finish();
  class StoredListBuilder {
   public:
    // `capacity`: the number of elements to come (at most).
    explicit StoredListBuilder(std::size_t capacity);
    void Add(const plist::Value& element);
    std::vector<std::shared_ptr<ZELMAccountEntry>> Finish() &&;

   private:
    class Block;
    std::shared_ptr<Block> block_;
    std::vector<std::shared_ptr<ZELMAccountEntry>> entries_;
  };

  // A plain entry made as the copy constructor makes it.
  static std::shared_ptr<ZELMAccountEntry> entryWithEntry(const ZELMAccountEntry& entry);

  // A copy of the same class, through the stored form, with the same account.
  virtual std::shared_ptr<ZELMAccountEntry> copy() const;
  // "date", "number", "checkNumber", "entryFlags", "type", "category", "amount" (the stored
  // amount, not the split total), "description", "toFrom", "cleared" (boolean); "notes" when
  // not empty; "linkedEntry", "linkedAccount", "linkedExchangedAmount" when linked;
  // "splitLineItems" when there is at least one item.
  virtual plist::Dictionary asDictionary() const;

  // A sentence for speech: date, amount, type, category, check number, payee or payer,
  // description and resolved state, e.g.
  // "03/14/08.  Debit in the Amount of:  -12.50 .  To:  Shell .  Unresolved .  ".
  std::string asSpeakableString() const;

  // Writes this entry's transfer data into its counterpart in the other account: link,
  // payee (this account's name), category, description, date, the opposite direction, the
  // void bit, and the negated amounts and line items, in the counterpart's currency when the
  // two accounts use different currency objects.
  void syncToEntry(ZELMAccountEntry& counterpart) const;

  // ---- Setters ----
  void SetAccount(ZELMAccount* account) { account_ = account; }
  void SetNumber(std::int32_t number) { number_ = number; }
  void SetCheckNumber(std::int32_t checkNumber) { checkNumber_ = checkNumber; }
  void SetType(std::int32_t type) { type_ = type; }
  void SetCategory(std::int32_t category) { category_ = category; }
  // A negative date number is ignored.
  void SetDate(std::int32_t date);
  // nullopt is ignored.
  void SetDescription(std::optional<std::string_view> description);
  void SetToFrom(std::optional<std::string_view> toFrom);
  // Rounds to two decimals, half away from zero, on the decimal form of the amount:
  // -12.345678 becomes -12.35, 0.004 becomes 0.
  void SetAmount(double amount);
  void SetIsCheck(bool isCheck);
  // Setting debit clears deposit and the other way round; clearing one leaves the other.
  void SetIsDebit(bool isDebit);
  void SetIsDeposit(bool isDeposit);
  // Clearing the linked bit also forgets the linked entry and account (-1).
  void SetIsLinked(bool isLinked);
  void SetCleared(std::uint8_t cleared) { cleared_ = cleared; }
  void SetTaxDeductible(bool taxDeductible);
  void SetVoid(bool isVoid);
  // nullopt stores "".
  void SetNotes(std::optional<std::string_view> notes);
  void SetLinkedEntry(std::int32_t number) { linkedEntry_ = number; }
  void SetLinkedAccount(std::int32_t number) { linkedAccount_ = number; }
  void SetLinkedExchangedAmount(double amount) { linkedExchangedAmount_ = amount; }
  void SetCachedRunningBalance(double balance) { cachedRunningBalance_ = balance; }

  // ---- Getters ----
  ZELMAccount* GetAccount() const { return account_; }
  std::int32_t GetNumber() const { return number_; }
  std::int32_t GetCheckNumber() const { return checkNumber_; }
  std::int32_t GetType() const { return type_; }
  std::int32_t GetCategory() const { return category_; }
  const std::string& GetDescription() const { return description_; }
  std::int32_t GetDate() const { return date_; }
  // The split total when the entry has line items, else the stored amount.
  double GetAmount() const { return splitLineItems_.empty() ? amount_ : splitTotal(); }
  const std::string& GetToFrom() const { return toFrom_; }
  std::uint8_t GetCleared() const { return cleared_; }
  bool GetTaxDeductible() const { return (entryFlags_ & kFlagTaxDeductible) != 0; }
  bool GetVoid() const { return (entryFlags_ & kFlagVoid) != 0; }
  const std::string& GetNotes() const { return notes_; }
  std::int32_t GetLinkedAccount() const { return linkedAccount_; }
  std::int32_t GetLinkedEntry() const { return linkedEntry_; }
  double GetLinkedExchangedAmount() const { return linkedExchangedAmount_; }
  double GetCachedRunningBalance() const { return cachedRunningBalance_; }
  bool IsCheck() const { return (entryFlags_ & kFlagCheck) != 0; }
  bool IsDebit() const { return (entryFlags_ & kFlagDebit) != 0; }
  bool IsDeposit() const { return (entryFlags_ & kFlagDeposit) != 0; }
  bool IsLinked() const { return (entryFlags_ & kFlagLinked) != 0; }
  // The whole bit set, as stored.
  std::int32_t GetEntryFlags() const { return entryFlags_; }

  // ---- Split line items ----
  const std::vector<std::shared_ptr<ZELMAccountEntrySplitLineItem>>& splitLineItems() const {
    return splitLineItems_;
  }
  // nullptr is ignored.
  void addSplitLineItem(std::shared_ptr<ZELMAccountEntrySplitLineItem> item);
  // Appends a new item whose exchanged amount equals its amount.
  void addSplitLineItemWithCategory(std::int32_t category,
                                    std::optional<std::string_view> description,
                                    std::optional<std::string_view> toFrom, double amount);
  // Ignored for nullptr, a negative index or one beyond the count; the count appends.
  void insertSplitLineItem(std::shared_ptr<ZELMAccountEntrySplitLineItem> item, std::int32_t index);
  // Ignored outside 0..count-1.
  void removeSplitLineItemAtIndex(std::int32_t index);
  // Removes every occurrence of this item; ignored when it is not in the list.
  void removeSplitLineItem(const ZELMAccountEntrySplitLineItem* item);
  void removeAllSplitLineItems() {
    splitLineItems_.clear();
    splitTotal_.Forget();
  }
  // The sum of the items' amounts (0.0 without items).
  double splitTotal() const;

  // ---- Comparators ----
  // Each returns 1 when this entry sorts after `other`, -1 when before, 0 when equal. Keys in
  // order of precedence; texts compare without regard to case; every comparator ends on the
  // entry number. The _Reversed twin is the exact negation at every step (a full descending
  // order). Type and category names are both looked up in this entry's account.
  //   Account:                       account name, date, number
  //   CheckNumber:                   checks first, check number between checks, number
  //   Date:                          date, number
  //   DatePrimaryCheckSecondary:     date, checks first, check number between checks, number
  //   Description / ToFrom:          the text, number
  //   TypePrimaryDateSecondary:      type name ("" for none), date, number
  //   CategoryPrimaryDateSecondary:  category full name ("" for none), date, number
  //   Amount:                        GetAmount, number
  //   Balance:                       cached running balance, number
  //   Number:                        number
  //   Cleared:                       resolved mark (unresolved first), number
  int AccountIsGreaterThan(const ZELMAccountEntry& other) const;
  int AccountIsGreaterThan_Reversed(const ZELMAccountEntry& other) const;
  int CheckNumberIsGreaterThan(const ZELMAccountEntry& other) const;
  int CheckNumberIsGreaterThan_Reversed(const ZELMAccountEntry& other) const;
  int DateIsGreaterThan(const ZELMAccountEntry& other) const;
  int DateIsGreaterThan_Reversed(const ZELMAccountEntry& other) const;
  int DatePrimaryCheckSecondaryIsGreaterThan(const ZELMAccountEntry& other) const;
  int DatePrimaryCheckSecondaryIsGreaterThan_Reversed(const ZELMAccountEntry& other) const;
  int DescriptionIsGreaterThan(const ZELMAccountEntry& other) const;
  int DescriptionIsGreaterThan_Reversed(const ZELMAccountEntry& other) const;
  int ToFromIsGreaterThan(const ZELMAccountEntry& other) const;
  int ToFromIsGreaterThan_Reversed(const ZELMAccountEntry& other) const;
  int TypePrimaryDateSecondaryIsGreaterThan(const ZELMAccountEntry& other) const;
  int TypePrimaryDateSecondaryIsGreaterThan_Reversed(const ZELMAccountEntry& other) const;
  int CategoryPrimaryDateSecondaryIsGreaterThan(const ZELMAccountEntry& other) const;
  int CategoryPrimaryDateSecondaryIsGreaterThan_Reversed(const ZELMAccountEntry& other) const;
  int AmountIsGreaterThan(const ZELMAccountEntry& other) const;
  int AmountIsGreaterThan_Reversed(const ZELMAccountEntry& other) const;
  int BalanceIsGreaterThan(const ZELMAccountEntry& other) const;
  int BalanceIsGreaterThan_Reversed(const ZELMAccountEntry& other) const;
  int NumberIsGreaterThan(const ZELMAccountEntry& other) const;
  int NumberIsGreaterThan_Reversed(const ZELMAccountEntry& other) const;
  int ClearedIsGreaterThan(const ZELMAccountEntry& other) const;
  int ClearedIsGreaterThan_Reversed(const ZELMAccountEntry& other) const;

 private:
  // The fields that balances, check numbering and date sorting read come first, next to the
  // object's start, so that a walk over a large register touches one or two cache lines per
  // entry instead of four.
  std::int32_t date_ = 0;
  std::int32_t entryFlags_ = 0;
  double amount_ = 0.0;
  std::int32_t number_ = -1;
  std::int32_t checkNumber_ = -1;
  std::vector<std::shared_ptr<ZELMAccountEntrySplitLineItem>> splitLineItems_;
  std::uint8_t cleared_ = 0;
  std::int32_t type_ = -1;
  std::int32_t category_ = -1;
  double cachedRunningBalance_ = 0.0;
  ZELMAccount* account_ = nullptr;  // not owned
  std::int32_t linkedEntry_ = -1;
  std::int32_t linkedAccount_ = -1;
  double linkedExchangedAmount_ = 0.0;
  std::string description_;
  std::string toFrom_;
  std::string notes_;

  // The total of the line items, kept while no line item anywhere changes its amount and
  // this entry's list stays as it is: a balance over a large register then need not visit
  // every item of every split entry. Copies start without one.
  class SplitTotal {
   public:
    SplitTotal() = default;
    SplitTotal(const SplitTotal&) {}
    SplitTotal& operator=(const SplitTotal&) {
      Forget();
      return *this;
    }
    // The total kept for the current count of changes, if any.
    std::optional<double> Get() const {
      if (at_.load(std::memory_order_acquire) !=
          detail::lineItemAmountChanges.load(std::memory_order_relaxed)) {
        return std::nullopt;
      }
      return total_.load(std::memory_order_relaxed);
    }
    void Keep(double total, std::uint64_t at) const {
      total_.store(total, std::memory_order_relaxed);
      at_.store(at, std::memory_order_release);
    }
    void Forget() { at_.store(0, std::memory_order_relaxed); }

   private:
    mutable std::atomic<double> total_{0.0};
    mutable std::atomic<std::uint64_t> at_{0};  // 0: nothing kept
  };
  SplitTotal splitTotal_;

 protected:
  // Reads the entry's own keys in stored order ("date", "number", "checkNumber", "entryFlags",
  // the three link keys only when the flags just read have the linked bit, "description",
  // "type", "category", "amount", "toFrom", "cleared", "notes", "splitLineItems"). A value of
  // the wrong kind, and some missing keys, log a fixed message and keep the field as it was.
  // The amount is kept as read, without rounding. Subclass constructors that start from their
  // own fresh values call this before reading their own keys.
  void ReadEntryKeys(const plist::Dictionary& dict);

  // The stored form's keys written straight into `dict`, for subclasses that add their own.
  void WriteEntryKeys(plist::Dictionary& dict) const;

  // Used by the scheduled-entry subclass; never stored by this class.
  std::int32_t schedule_ = 0;

 private:
  void SetFlag(std::int32_t mask, bool on);
};

}  // namespace folvant
