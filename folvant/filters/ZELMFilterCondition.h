#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "folvant/filters/FilterCodes.h"
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

  // The codes under the names callers have always used; FilterCodes.h names them all.
  static constexpr std::int32_t kCategoryDescription = kConditionDescription;
  static constexpr std::int32_t kCategoryDate = kConditionDate;
  static constexpr std::int32_t kCategoryAmount = kConditionAmount;
  static constexpr std::int32_t kCategoryType = kConditionType;
  static constexpr std::int32_t kCategoryCheck = kConditionCheck;
  static constexpr std::int32_t kCategoryToFrom = kConditionToFrom;
  static constexpr std::int32_t kCategoryCleared = kConditionCleared;
  static constexpr std::int32_t kCategoryTaxDeductible = kConditionTaxDeductible;
  static constexpr std::int32_t kCategoryCategory = kConditionCategory;
  static constexpr std::int32_t kCategoryVoid = kConditionVoid;
  static constexpr std::int32_t kCategoryCheckString = kConditionCheckString;
  static constexpr std::int32_t kCategoryAmountString = kConditionAmountString;
  static constexpr std::int32_t kCategorySplitCategory = kConditionSplitCategory;
  static constexpr std::int32_t kCategorySplitDescription = kConditionSplitDescription;
  static constexpr std::int32_t kCategoryNotes = kConditionNotes;
  static constexpr std::int32_t kCategoryGeneral = kConditionGeneral;

  static constexpr std::int32_t kQualifierIsEqualTo = kTextIsEqualTo;
  static constexpr std::int32_t kQualifierContains = kTextContains;
  static constexpr std::int32_t kQualifierStartsWith = kTextStartsWith;
  static constexpr std::int32_t kQualifierEndsWith = kTextEndsWith;
  static constexpr std::int32_t kQualifierIsSet = kFlagIsSet;
  static constexpr std::int32_t kQualifierIs = kAmountIs;
  static constexpr std::int32_t kQualifierIsMoreThan = kAmountIsMoreThan;
  static constexpr std::int32_t kQualifierIsLessThan = kAmountIsLessThan;
  static constexpr std::int32_t kQualifierBefore = kDateBefore;
  static constexpr std::int32_t kQualifierExactly = kDateExactly;
  static constexpr std::int32_t kQualifierAfter = kDateAfter;
  static constexpr std::int32_t kQualifierToday = kDateToday;
  static constexpr std::int32_t kQualifierYesterday = kDateYesterday;
  static constexpr std::int32_t kQualifierDuringThisYear = kDateThisYear;
  static constexpr std::int32_t kQualifierDuringLastYear = kDateLastYear;
  static constexpr std::int32_t kQualifierBetween = kDateBetween;

  // Description, keeping matches, contains, data the empty text: passes every entry.
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

  // The same evaluation with the category taken as the one each name says (filter_Notes
  // tests kConditionNotes), whatever the condition's own category.
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

  std::int32_t category_ = kConditionDescription;
  std::int32_t logic_ = kConditionKeepsMatches;
  std::int32_t qualifier_ = kTextContains;
  plist::Value data_{std::string()};
};

}  // namespace folvant
