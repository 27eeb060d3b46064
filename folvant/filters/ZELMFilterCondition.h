#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "folvant/platform/plist/Value.h"

namespace folvant {

class ZELMAccountEntry;

// One test on register entries: the field tested (category), the comparison (qualifier), the
// sense (logic: non-zero keeps what matches, 0 keeps what does not) and the value compared
// with (data: a text, a number, a boolean or an array of numbers, or none). A plain value held
// by its condition group through std::shared_ptr; it never changes the entries it tests.
//
// What a condition does with each entry:
//   - data absent or of the wrong kind for the category (text categories need a non-empty
//     text, the number and boolean categories a number, the date category any value): every
//     entry passes, whatever the logic;
//   - an unknown category: every entry passes;
//   - an unknown qualifier: nothing matches, so logic 0 passes everything and logic 1 nothing;
//   - an entry whose type or category number finds nothing (Type, Category), or that has no
//     split line items (the split categories), is dropped whatever the logic.
class ZELMFilterCondition {
 public:
  using EntryList = std::vector<std::shared_ptr<ZELMAccountEntry>>;

  // Categories: the field tested.
  static constexpr std::int32_t kCategoryDescription = 0;
  static constexpr std::int32_t kCategoryDate = 1;
  static constexpr std::int32_t kCategoryAmount = 2;
  static constexpr std::int32_t kCategoryType = 3;
  static constexpr std::int32_t kCategoryCheck = 4;
  static constexpr std::int32_t kCategoryToFrom = 5;
  static constexpr std::int32_t kCategoryCleared = 6;
  static constexpr std::int32_t kCategoryTaxDeductible = 7;
  static constexpr std::int32_t kCategoryCategory = 8;
  static constexpr std::int32_t kCategoryVoid = 9;
  static constexpr std::int32_t kCategoryCheckString = 10;
  static constexpr std::int32_t kCategoryAmountString = 11;
  static constexpr std::int32_t kCategorySplitCategory = 20;
  static constexpr std::int32_t kCategorySplitDescription = 21;
  static constexpr std::int32_t kCategoryNotes = 30;
  static constexpr std::int32_t kCategoryGeneral = 50;

  // Text qualifiers; all ignore case and nothing else.
  static constexpr std::int32_t kQualifierIsEqualTo = 1;
  static constexpr std::int32_t kQualifierContains = 6;
  static constexpr std::int32_t kQualifierStartsWith = 8;
  static constexpr std::int32_t kQualifierEndsWith = 9;
  // The boolean qualifier: the entry's flag equals the data's boolean value.
  static constexpr std::int32_t kQualifierIsSet = 1;
  // Amount qualifiers, with a fixed tolerance of 0.4 either side of the data.
  static constexpr std::int32_t kQualifierIs = 1;
  static constexpr std::int32_t kQualifierIsMoreThan = 3;
  static constexpr std::int32_t kQualifierIsLessThan = 4;
  // Date qualifiers. The relative ones are unit × 10 + variant, units 2 day, 3 week, 4 month,
  // 5 quarter, 6 year; variants 0 in the last N, 1 in the next N, 2 between N and M ago,
  // 3 during this unit, 4 during the previous unit, 5 this unit to date.
  static constexpr std::int32_t kQualifierBefore = 0;
  static constexpr std::int32_t kQualifierExactly = 1;
  static constexpr std::int32_t kQualifierAfter = 2;
  static constexpr std::int32_t kQualifierToday = 23;
  static constexpr std::int32_t kQualifierYesterday = 24;
  static constexpr std::int32_t kQualifierDuringThisYear = 63;
  static constexpr std::int32_t kQualifierDuringLastYear = 64;
  static constexpr std::int32_t kQualifierBetween = 70;

  // Category 0, logic 1, qualifier 6 (contains), data the empty text: passes every entry.
  ZELMFilterCondition();
  // A new condition, then "category", "logic", "qualifier" (integer values) and "data" (as
  // stored), each only when present; nothing is logged. nullptr: a new condition.
  explicit ZELMFilterCondition(const plist::Dictionary* dict);
  // A new condition, then the four setters in the order category, qualifier, logic, data.
  ZELMFilterCondition(std::int32_t category, std::int32_t qualifier, std::int32_t logic,
                      plist::Value data);

  // "category", "logic" and "qualifier" as integers; "data" as stored, only when present.
  plist::Dictionary asDictionary() const;

  std::int32_t category() const { return category_; }
  void setCategory(std::int32_t category) { category_ = category; }
  std::int32_t logic() const { return logic_; }
  void setLogic(std::int32_t logic) { logic_ = logic; }
  std::int32_t qualifier() const { return qualifier_; }
  void setQualifier(std::int32_t qualifier) { qualifier_ = qualifier; }
  // The data, or nullptr when there is none.
  const plist::Value* data() const { return data_.isNone() ? nullptr : &data_; }
  // Keeps the value; a none value means no data.
  void setData(plist::Value data) { data_ = std::move(data); }
  // The first and second numbers of a date condition's data (one number, or an array of
  // two), as the condition reads them; numbers not given are 0.
  static std::pair<std::int64_t, std::int64_t> DateOperands(const plist::Value& data);

  // The entries that pass, in the order given (an empty list gives an empty list).
  EntryList filterEntries(const EntryList& entries) const;

  // The same evaluation with the category taken as the one each name says, whatever the
  // condition's own category: Description 0, Date 1, Amount 2, Type 3, Check 4, ToFrom 5,
  // Cleared 6, TaxDeductible 7, Category 8, Void 9, CheckString 10, AmountString 11,
  // SplitCategory 20, SplitDescription 21, Notes 30, General 50.
  EntryList filter_Description(const EntryList& entries) const;
  EntryList filter_Date(const EntryList& entries) const;
  EntryList filter_Amount(const EntryList& entries) const;
  EntryList filter_Type(const EntryList& entries) const;
  EntryList filter_Check(const EntryList& entries) const;
  EntryList filter_ToFrom(const EntryList& entries) const;
  EntryList filter_Cleared(const EntryList& entries) const;
  EntryList filter_TaxDeductible(const EntryList& entries) const;
  EntryList filter_Category(const EntryList& entries) const;
  EntryList filter_Void(const EntryList& entries) const;
  EntryList filter_CheckString(const EntryList& entries) const;
  EntryList filter_AmountString(const EntryList& entries) const;
  EntryList filter_SplitCategory(const EntryList& entries) const;
  EntryList filter_SplitDescription(const EntryList& entries) const;
  EntryList filter_Notes(const EntryList& entries) const;
  EntryList filter_General(const EntryList& entries) const;

  // A condition made ready to test many entries. Everything that does not depend on the
  // entry is worked out once here: the search text is case-folded (and, for amount text,
  // cleaned of the user's thousands separator), the date range is resolved from today's date
  // on the clock, the amount bounds are computed. Keeps() then searches ASCII text in place,
  // with no ICU call and no allocation, and looks up each type or category name once per
  // account and number. The prepared form copies what it needs from the condition.
  class Prepared {
   public:
    explicit Prepared(const ZELMFilterCondition& condition);
    // As above with `category` in place of the condition's own category.
    Prepared(const ZELMFilterCondition& condition, std::int32_t category);
    ~Prepared();
    Prepared(Prepared&&) noexcept;
    Prepared& operator=(Prepared&&) noexcept;

    // Whether the entry stays in the condition's result.
    bool Keeps(const ZELMAccountEntry& entry);
    // True when the test searches text, which costs more than the numeric tests.
    bool searchesText() const { return mode_ == Mode::kText; }

   private:
    enum class Mode : std::uint8_t { kEverything, kText, kBoolean, kAmount, kDate };
    struct Lookups;  // remembered type and category names, per account and number

    bool MatchesText(std::string_view field);
    bool MatchesNamedLookup(const ZELMAccountEntry& entry, bool type, bool* found);
    bool KeepsText(const ZELMAccountEntry& entry);
    std::string_view AmountText(double amount);

    Mode mode_ = Mode::kEverything;
    std::int32_t category_ = 0;
    std::int32_t qualifier_ = 0;
    bool logic_ = true;
    bool flag_ = false;                  // boolean categories: the data's boolean value
    double low_ = 0, high_ = 0;          // amount: the open interval that matches
    std::int64_t first_ = 0, last_ = 0;  // date: the closed range of date numbers that match
    std::string needle_;                 // text: the case-folded search text
    bool needleAscii_ = true;
    std::string decimalSeparator_;
    std::string scratch_;  // the amount text of the entry being tested
    std::string folded_;   // the folded form of a non-ASCII field
    std::unique_ptr<Lookups> lookups_;
  };

 private:
  EntryList FilterAs(std::int32_t category, const EntryList& entries) const;

  std::int32_t category_ = kCategoryDescription;
  std::int32_t logic_ = 1;
  std::int32_t qualifier_ = kQualifierContains;
  plist::Value data_{std::string()};
};

}  // namespace folvant
