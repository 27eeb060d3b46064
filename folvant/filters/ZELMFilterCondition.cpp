#include "folvant/filters/ZELMFilterCondition.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <unordered_map>
#include <utility>

#include "folvant/kit/DateRangeForMnemonic.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountEntryType.h"
#include "folvant/model/ZELMAccountScheduleCalendar.h"
#include "folvant/model/ZELMAccountsController.h"
#include "folvant/platform/Clock.h"
#include "folvant/platform/Port.h"
#include "folvant/platform/Text.h"
#include "folvant/platform/UserSettings.h"
#include "folvant/values/ZELMUtilities.h"

namespace folvant {
namespace {

using EntryList = ZELMFilterCondition::EntryList;
using schedule::AddYearsMonthsDays;
using schedule::Day;

bool IsAscii(std::string_view text) {
  unsigned char bits = 0;
  for (char c : text) bits |= static_cast<unsigned char>(c);
  return bits < 0x80;
}

// Whether the n bytes at `text`, lower-cased, are the (lower-case ASCII) needle.
bool EqualsLowered(const char* text, std::string_view needle) {
  for (std::size_t j = 0; j < needle.size(); ++j) {
    if (platform::AsciiLowerChar(text[j]) != needle[j]) return false;
  }
  return true;
}

// Eight bytes of text from `p`, the first in the lowest byte.
std::uint64_t LoadWord(const char* p) {
  std::uint64_t word;
  std::memcpy(&word, p, 8);
  if constexpr (std::endian::native == std::endian::big) word = platform::ByteSwap(word);
  return word;
}

// The last `count` (1 to 7) bytes of the text, the first in the lowest byte: read as the
// text's last eight bytes when it has that many, so short tails cost one load too.
std::uint64_t LoadTail(std::string_view text, std::size_t count) {
  if (text.size() >= 8) return LoadWord(text.data() + text.size() - 8) >> (8 * (8 - count));
  std::uint64_t word = 0;
  const char* p = text.data() + text.size() - count;
  for (std::size_t i = 0; i < count; ++i) {
    word |= static_cast<std::uint64_t>(static_cast<unsigned char>(p[i])) << (8 * i);
  }
  return word;
}

// The case-insensitive search for a lower-case ASCII needle, without folding the field.
// Full case folding maps ASCII letters to their lower case and keeps ASCII bytes together, so
// a match found byte by byte is a match; a miss is final only for an ASCII field, since other
// characters may fold into ASCII ("ſ" is "s", "ß" is "ss"). nullopt: fold and search again.
std::optional<bool> MatchAsciiNeedle(std::string_view field, std::string_view needle,
                                     std::int32_t qualifier) {
  const std::size_t n = needle.size(), m = field.size();
  const auto miss = [&]() -> std::optional<bool> {
    if (IsAscii(field)) return false;
    return std::nullopt;
  };
  switch (qualifier) {
    case kTextContains: {
      // Eight bytes at a time, look for bytes that may be the needle's first one: OR-ing 0x20
      // into a letter gives its lower case, so one comparison covers both cases (other bytes
      // may come out as false candidates, which the full comparison turns down).
      constexpr std::uint64_t kOnes = 0x0101010101010101ULL;
      constexpr std::uint64_t kHighs = 0x8080808080808080ULL;
      const char first = needle[0];
      const bool letter = first >= 'a' && first <= 'z';
      const std::uint64_t fold = letter ? 0x20 * kOnes : 0;
      const std::uint64_t pattern = static_cast<unsigned char>(first) * kOnes;
      const std::size_t last_start = m - n;  // only meaningful when n <= m
      std::uint64_t high = 0;
      // Looks for the needle at the candidates among the eight bytes from `base`.
      const auto found_in = [&](std::uint64_t word, std::size_t base) {
        high |= word;
        if (n > m) return false;
        const std::uint64_t y = (word | fold) ^ pattern;
        for (std::uint64_t zeros = (y - kOnes) & ~y & kHighs; zeros != 0; zeros &= zeros - 1) {
          const std::size_t at = base + static_cast<std::size_t>(std::countr_zero(zeros)) / 8;
          if (at > last_start) return false;
          if (EqualsLowered(field.data() + at, needle)) return true;
        }
        return false;
      };
      std::size_t base = 0;
      for (; base + 8 <= m; base += 8) {
        if (found_in(LoadWord(field.data() + base), base)) return true;
      }
      if (base < m && found_in(LoadTail(field, m - base), base)) return true;
      if (high & kHighs) return std::nullopt;
      return false;
    }
    case kTextStartsWith:
      if (n <= m && EqualsLowered(field.data(), needle)) return true;
      return miss();
    case kTextEndsWith:
      if (n <= m && EqualsLowered(field.data() + (m - n), needle)) return true;
      return miss();
    case kTextIsEqualTo:
      if (n == m && EqualsLowered(field.data(), needle)) return true;
      return miss();
    default:
      return false;
  }
}

// A text qualifier on a case-folded field and a case-folded needle. An empty needle (amount
// text that held nothing but thousands separators) is found nowhere.
bool MatchFolded(std::string_view field, std::string_view needle, std::int32_t qualifier) {
  const std::size_t n = needle.size();
  if (n == 0 || n > field.size()) return false;
  switch (qualifier) {
    case kTextContains:
      return field.find(needle) != std::string_view::npos;
    case kTextStartsWith:
      return field.substr(0, n) == needle;
    case kTextEndsWith:
      return field.substr(field.size() - n) == needle;
    case kTextIsEqualTo:
      return field == needle;
    default:
      return false;
  }
}

// The outcome of looking up a type or category name and testing it.
enum Outcome : std::int8_t { kUnknown = 0, kNotFound, kNoMatch, kMatch };

// Remembers outcomes per owner (an account or an accounts controller) and number, so that each
// name is looked up, built and tested once per filtering instead of once per entry. Small
// non-negative numbers, which is what accounts hand out, go to a flat table.
class OutcomeMemo {
 public:
  template <typename Compute>
  Outcome Get(const void* owner, std::int32_t number, Compute&& compute) {
    Table& table = TableFor(owner);
    Outcome* slot;
    if (number >= 0 && number < kDenseLimit) {
      const auto index = static_cast<std::size_t>(number);
      if (table.dense.size() <= index) table.dense.resize(index + 1, kUnknown);
      slot = &table.dense[index];
    } else {
      slot = &table.sparse[number];
    }
    if (*slot == kUnknown) *slot = compute();
    return *slot;
  }

 private:
  static constexpr std::int32_t kDenseLimit = 1 << 16;
  struct Table {
    const void* owner;
    std::vector<Outcome> dense;
    std::unordered_map<std::int32_t, Outcome> sparse;
  };

  Table& TableFor(const void* owner) {
    if (last_ < tables_.size() && tables_[last_].owner == owner) return tables_[last_];
    for (last_ = 0; last_ < tables_.size(); ++last_) {
      if (tables_[last_].owner == owner) return tables_[last_];
    }
    tables_.push_back(Table{owner, {}, {}});
    return tables_.back();
  }

  std::vector<Table> tables_;
  std::size_t last_ = 0;
};

// The closed range of date numbers that a date qualifier accepts, with "today" and the kit
// ranges resolved once. An empty range (first > last) matches nothing.
struct DateSpan {
  std::int64_t first = 1;
  std::int64_t last = 0;
};

DateSpan DaySpan(Day first, Day last) {
  return {schedule::DateNumberFromDay(first), schedule::DateNumberFromDay(last)};
}

// A named range counted from today. Today comes from the clock, so it is a real day and every
// named range exists.
DateRange Kit(std::int32_t code, std::int32_t today) {
  return DateRangeForMnemonic(code, today).value();
}

DateSpan KitSpan(std::int32_t code, std::int32_t today) {
  const DateRange range = Kit(code, today);
  return {range.start, range.end};
}

DateSpan SpanForDateQualifier(std::int32_t qualifier, std::int64_t a, std::int64_t b) {
  constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
  constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
  // The absolute qualifiers compare with the data's date numbers as they are.
  switch (qualifier) {
    case kDateBefore:
      return {kMin, a - 1};
    case kDateExactly:
      return {a, a};
    case kDateAfter:
      return {a + 1, kMax};
    case kDateBetween:
      return {a, b};
    default:
      break;
  }

  const std::int32_t today_number = platform::Today();
  const Day today = schedule::DayFromDateNumber(today_number);
  const auto kit = [&](std::int32_t code) {
    const DateRange range = Kit(code, today_number);
    return std::pair{schedule::DayFromDateNumber(range.start),
                     schedule::DayFromDateNumber(range.end)};
  };
  switch (qualifier) {
    case kDateToday: {
      const std::int32_t day = Kit(kMnemonicToday, today_number).start;
      return {day, day};
    }
    case kDateYesterday: {
      const std::int32_t day = Kit(kMnemonicYesterday, today_number).start;
      return {day, day};
    }
    // Days.
    case kDateInLastDays:
      return DaySpan(today - (a - 1), today);
    case kDateInNextDays:
      return DaySpan(today, today + (a - 1));
    case kDateDaysAgo:
      return DaySpan(today - a, today - b);
    // Weeks. "In the next 1 week" reaches only the week's first day, and "weeks ago" counts its
    // upper bound back from its lower one, so for positive counts it is empty; both are kept as
    // saved smart folders have always evaluated them.
    case kDateInLastWeeks: {
      const auto [start, end] = kit(kMnemonicThisWeek);
      return DaySpan(start - 7 * (a - 1), end);
    }
    case kDateInNextWeeks: {
      const Day start = kit(kMnemonicThisWeek).first;
      return DaySpan(start, start + 7 * (a - 1));
    }
    case kDateWeeksAgo: {
      const Day sunday = today - schedule::Weekday(today);
      const Day low = sunday - 7 * a;
      return DaySpan(low, low - 7 * b);
    }
    // Months. "Months ago" moves from today by whole months (the day clamped to the month's length)
    // and then back to the first of the month in days, in one step: on 31 March the month
    // before is clamped to 28 or 29 February and then moved back 30 days, into January.
    case kDateInLastMonths: {
      const auto [start, end] = kit(kMnemonicThisMonth);
      return DaySpan(AddYearsMonthsDays(start, 0, 1 - a, 0), end);
    }
    case kDateInNextMonths: {
      const Day start = kit(kMnemonicThisMonth).first;
      return DaySpan(start, AddYearsMonthsDays(start, 0, a, -1));
    }
    case kDateMonthsAgo: {
      const std::int64_t back = 1 - schedule::CivilFromDay(today).day;
      return DaySpan(AddYearsMonthsDays(today, 0, -a, back),
                     AddYearsMonthsDays(today, 0, -b, back));
    }
    // Quarters. The end of "in the next N quarters" keeps the quarter's last day number, clamped:
    // 30 September plus a quarter is 30 December.
    case kDateInLastQuarters: {
      const auto [start, end] = kit(kMnemonicThisQuarter);
      return DaySpan(AddYearsMonthsDays(start, 0, 3 - 3 * a, 0), end);
    }
    case kDateInNextQuarters: {
      const auto [start, end] = kit(kMnemonicThisQuarter);
      return DaySpan(start, AddYearsMonthsDays(end, 0, 3 * (a - 1), 0));
    }
    // Years.
    case kDateInLastYears: {
      const auto [start, end] = kit(kMnemonicThisYear);
      return DaySpan(AddYearsMonthsDays(start, 1 - a, 0, 0), end);
    }
    case kDateInNextYears: {
      const auto [start, end] = kit(kMnemonicThisYear);
      return DaySpan(start, AddYearsMonthsDays(end, a - 1, 0, 0));
    }
    // "Between N and M quarters or years ago" have always come out empty.
    case kDateQuartersAgo:
    case kDateYearsAgo:
      return {};
    // During this unit, the previous unit, and this unit to date.
    case kDateThisWeek:
      return KitSpan(kMnemonicThisWeek, today_number);
    case kDateThisMonth:
      return KitSpan(kMnemonicThisMonth, today_number);
    case kDateThisQuarter:
      return KitSpan(kMnemonicThisQuarter, today_number);
    case kDateThisYear:
      return KitSpan(kMnemonicThisYear, today_number);
    case kDateLastWeek:
      return KitSpan(kMnemonicLastWeek, today_number);
    case kDateLastMonth:
      return KitSpan(kMnemonicLastMonth, today_number);
    case kDateLastQuarter:
      return KitSpan(kMnemonicLastQuarter, today_number);
    case kDateLastYear:
      return KitSpan(kMnemonicLastYear, today_number);
    case kDateWeekToDate:
      return KitSpan(kMnemonicWeekToDate, today_number);
    case kDateMonthToDate:
      return KitSpan(kMnemonicMonthToDate, today_number);
    case kDateQuarterToDate:
      return KitSpan(kMnemonicQuarterToDate, today_number);
    case kDateYearToDate:
      return KitSpan(kMnemonicYearToDate, today_number);
    default:
      return {};
  }
}

bool IsTextCategory(std::int32_t category) {
  switch (category) {
    case kConditionDescription:
    case kConditionType:
    case kConditionToFrom:
    case kConditionCategory:
    case kConditionCheckString:
    case kConditionAmountString:
    case kConditionSplitCategory:
    case kConditionSplitDescription:
    case kConditionNotes:
    case kConditionGeneral:
      return true;
    default:
      return false;
  }
}

bool IsBooleanCategory(std::int32_t category) {
  return category == kConditionCheck || category == kConditionCleared ||
         category == kConditionTaxDeductible || category == kConditionVoid;
}

}  // namespace

// ---- The condition --------------------------------------------------------------------------

ZELMFilterCondition::ZELMFilterCondition() = default;

ZELMFilterCondition::ZELMFilterCondition(const plist::Dictionary* dict) {
  if (dict == nullptr) return;
  if (const plist::Value* v = dict->find("category")) setCategory(v->intValue());
  if (const plist::Value* v = dict->find("logic")) setLogic(v->intValue());
  if (const plist::Value* v = dict->find("qualifier")) setQualifier(v->intValue());
  if (const plist::Value* v = dict->find("data")) setData(*v);
}

ZELMFilterCondition::ZELMFilterCondition(std::int32_t category, std::int32_t qualifier,
                                         std::int32_t logic, plist::Value data) {
  setCategory(category);
  setQualifier(qualifier);
  setLogic(logic);
  setData(std::move(data));
}

std::pair<std::int64_t, std::int64_t> ZELMFilterCondition::DateOperands(const plist::Value& data) {
  if (const plist::Array* array = data.asArray()) {
    const std::int64_t a = array->empty() ? 0 : (*array)[0].intValue();
    const std::int64_t b = array->size() < 2 ? 0 : (*array)[1].intValue();
    return {a, b};
  }
  return {data.intValue(), 0};
}

plist::Dictionary ZELMFilterCondition::asDictionary() const {
  plist::Dictionary dict;
  dict.append("category", category_);
  dict.append("logic", logic_);
  dict.append("qualifier", qualifier_);
  if (!data_.isNone()) dict.append("data", data_);
  return dict;
}

EntryList ZELMFilterCondition::FilterAs(std::int32_t category, const EntryList& entries) const {
  Prepared prepared(*this, category);
  std::vector<std::uint8_t> keep(entries.size());
  std::size_t count = 0;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    keep[i] = entries[i] && prepared.Keeps(*entries[i]);
    count += keep[i];
  }
  EntryList result;
  result.reserve(count);
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (keep[i]) result.push_back(entries[i]);
  }
  return result;
}

EntryList ZELMFilterCondition::filterEntries(const EntryList& entries) const {
  return FilterAs(category_, entries);
}

EntryList ZELMFilterCondition::filter_Description(const EntryList& entries) const {
  return FilterAs(kConditionDescription, entries);
}
EntryList ZELMFilterCondition::filter_Date(const EntryList& entries) const {
  return FilterAs(kConditionDate, entries);
}
EntryList ZELMFilterCondition::filter_Amount(const EntryList& entries) const {
  return FilterAs(kConditionAmount, entries);
}
EntryList ZELMFilterCondition::filter_Type(const EntryList& entries) const {
  return FilterAs(kConditionType, entries);
}
EntryList ZELMFilterCondition::filter_Check(const EntryList& entries) const {
  return FilterAs(kConditionCheck, entries);
}
EntryList ZELMFilterCondition::filter_ToFrom(const EntryList& entries) const {
  return FilterAs(kConditionToFrom, entries);
}
EntryList ZELMFilterCondition::filter_Cleared(const EntryList& entries) const {
  return FilterAs(kConditionCleared, entries);
}
EntryList ZELMFilterCondition::filter_TaxDeductible(const EntryList& entries) const {
  return FilterAs(kConditionTaxDeductible, entries);
}
EntryList ZELMFilterCondition::filter_Category(const EntryList& entries) const {
  return FilterAs(kConditionCategory, entries);
}
EntryList ZELMFilterCondition::filter_Void(const EntryList& entries) const {
  return FilterAs(kConditionVoid, entries);
}
EntryList ZELMFilterCondition::filter_CheckString(const EntryList& entries) const {
  return FilterAs(kConditionCheckString, entries);
}
EntryList ZELMFilterCondition::filter_AmountString(const EntryList& entries) const {
  return FilterAs(kConditionAmountString, entries);
}
EntryList ZELMFilterCondition::filter_SplitCategory(const EntryList& entries) const {
  return FilterAs(kConditionSplitCategory, entries);
}
EntryList ZELMFilterCondition::filter_SplitDescription(const EntryList& entries) const {
  return FilterAs(kConditionSplitDescription, entries);
}
EntryList ZELMFilterCondition::filter_Notes(const EntryList& entries) const {
  return FilterAs(kConditionNotes, entries);
}
EntryList ZELMFilterCondition::filter_General(const EntryList& entries) const {
  return FilterAs(kConditionGeneral, entries);
}

// ---- The prepared condition -----------------------------------------------------------------

struct ZELMFilterCondition::Prepared::Lookups {
  OutcomeMemo types;            // per account: the type's name
  OutcomeMemo categories;       // per account: the category's full name
  OutcomeMemo splitCategories;  // per accounts controller: the category's own name
};

ZELMFilterCondition::Prepared::Prepared(const ZELMFilterCondition& condition)
    : Prepared(condition, condition.category()) {}

ZELMFilterCondition::Prepared::Prepared(const ZELMFilterCondition& condition, std::int32_t category)
    : category_(category), qualifier_(condition.qualifier()), logic_(condition.logic() != 0) {
  const plist::Value* data = condition.data();
  if (data == nullptr) return;
  if (IsTextCategory(category)) {
    const std::string* text = data->asString();
    if (text == nullptr || text->empty()) return;
    mode_ = Mode::kText;
    if (category == kConditionAmountString) {
      const platform::UserSettings settings = platform::CurrentUserSettings();
      decimalSeparator_ = settings.decimalSeparator;
      // The user may type the amount with thousands separators; the printed amount has none.
      std::string cleaned = *text;
      const std::string& separator = settings.thousandsSeparator;
      if (!separator.empty()) {
        for (std::size_t at = cleaned.find(separator); at != std::string::npos;
             at = cleaned.find(separator, at)) {
          cleaned.erase(at, separator.size());
        }
      }
      needle_ = platform::CaseFold(cleaned);
    } else {
      needle_ = platform::CaseFold(*text);
    }
    needleAscii_ = IsAscii(needle_);
    lookups_ = std::make_unique<Lookups>();
  } else if (IsBooleanCategory(category)) {
    if (!data->isNumber()) return;
    mode_ = Mode::kBoolean;
    flag_ = data->boolValue();
  } else if (category == kConditionAmount) {
    if (!data->isNumber()) return;
    mode_ = Mode::kAmount;
    // The tolerance is fixed: amounts within 0.4 of the data are "the same".
    const double x = data->doubleValue();
    low_ = x - 0.4;
    high_ = x + 0.4;
  } else if (category == kConditionDate) {
    mode_ = Mode::kDate;
    const auto [a, b] = DateOperands(*data);
    const DateSpan span = SpanForDateQualifier(qualifier_, a, b);
    first_ = span.first;
    last_ = span.last;
  }
}

ZELMFilterCondition::Prepared::~Prepared() = default;
ZELMFilterCondition::Prepared::Prepared(Prepared&&) noexcept = default;
ZELMFilterCondition::Prepared& ZELMFilterCondition::Prepared::operator=(Prepared&&) noexcept =
    default;

bool ZELMFilterCondition::Prepared::Keeps(const ZELMAccountEntry& entry) {
  switch (mode_) {
    case Mode::kEverything:
      return true;
    case Mode::kText:
      return KeepsText(entry);
    case Mode::kBoolean: {
      bool flag = false;
      switch (category_) {
        case kConditionCheck:
          flag = entry.IsCheck();
          break;
        case kConditionCleared:
          flag = entry.GetCleared() != 0;
          break;
        case kConditionTaxDeductible:
          flag = entry.GetTaxDeductible();
          break;
        default:
          flag = entry.GetVoid();
          break;
      }
      return (qualifier_ == kFlagIsSet && flag == flag_) == logic_;
    }
    case Mode::kAmount: {
      const double amount = entry.GetAmount();
      bool match = false;
      switch (qualifier_) {
        case kAmountIs:
          match = low_ < amount && amount < high_;
          break;
        case kAmountIsMoreThan:
          match = amount > high_;
          break;
        case kAmountIsLessThan:
          match = amount < low_;
          break;
        default:
          break;
      }
      return match == logic_;
    }
    case Mode::kDate: {
      const std::int64_t date = entry.GetDate();
      return (first_ <= date && date <= last_) == logic_;
    }
  }
  return true;
}

bool ZELMFilterCondition::Prepared::MatchesText(std::string_view field) {
  if (needle_.empty()) return false;
  if (needleAscii_) {
    if (const std::optional<bool> match = MatchAsciiNeedle(field, needle_, qualifier_)) {
      return *match;
    }
  } else if (IsAscii(field)) {
    return false;  // folded ASCII text holds no other bytes
  }
  folded_ = platform::CaseFold(field);
  return MatchFolded(folded_, needle_, qualifier_);
}

std::string_view ZELMFilterCondition::Prepared::AmountText(double amount) {
  // "###0.00": two decimals rounded half away from zero on the amount's shortest decimal
  // form, no grouping, the user's decimal separator, a minus sign for negative amounts.
  if (std::isnan(amount)) return "NaN";
  if (std::isinf(amount)) return amount < 0 ? "-\u221e" : "\u221e";
  const std::string digits = RoundedDecimalDigits(amount, 2);
  scratch_.clear();
  if (amount < 0) scratch_.push_back('-');
  if (digits.size() < 3) {
    scratch_.push_back('0');
    scratch_ += decimalSeparator_;
    scratch_.append(3 - digits.size() - 1, '0');
    scratch_ += digits;
  } else {
    scratch_.append(digits, 0, digits.size() - 2);
    scratch_ += decimalSeparator_;
    scratch_.append(digits, digits.size() - 2, 2);
  }
  return scratch_;
}

bool ZELMFilterCondition::Prepared::MatchesNamedLookup(const ZELMAccountEntry& entry, bool type,
                                                       bool* found) {
  const ZELMAccount* account = entry.GetAccount();
  const std::int32_t number = type ? entry.GetType() : entry.GetCategory();
  OutcomeMemo& memo = type ? lookups_->types : lookups_->categories;
  const Outcome outcome = memo.Get(account, number, [&] {
    if (account == nullptr) return kNotFound;
    std::string name;
    if (type) {
      const std::shared_ptr<ZELMAccountEntryType> t = account->accountEntryTypeForNumber(number);
      if (!t) return kNotFound;
      name = t->GetName();
    } else {
      const std::shared_ptr<ZELMAccountEntryCategory> c =
          account->accountEntryCategoryForNumber(number);
      if (!c) return kNotFound;
      name = c->fullName();
    }
    return MatchesText(name) ? kMatch : kNoMatch;
  });
  *found = outcome != kNotFound;
  return outcome == kMatch;
}

bool ZELMFilterCondition::Prepared::KeepsText(const ZELMAccountEntry& entry) {
  switch (category_) {
    case kConditionDescription:
      return MatchesText(entry.GetDescription()) == logic_;
    case kConditionToFrom:
      return MatchesText(entry.GetToFrom()) == logic_;
    case kConditionNotes:
      return MatchesText(entry.GetNotes()) == logic_;
    case kConditionCheckString: {
      char buffer[16];
      const auto result = std::to_chars(buffer, buffer + sizeof buffer, entry.GetCheckNumber());
      return MatchesText(std::string_view(buffer, static_cast<std::size_t>(result.ptr - buffer))) ==
             logic_;
    }
    case kConditionAmountString:
      return MatchesText(AmountText(entry.GetAmount())) == logic_;
    case kConditionType:
    case kConditionCategory: {
      // An entry whose number finds nothing is in neither result.
      bool found = false;
      const bool match = MatchesNamedLookup(entry, category_ == kConditionType, &found);
      return found && match == logic_;
    }
    case kConditionSplitCategory: {
      const ZELMAccount* account = entry.GetAccount();
      const ZELMAccountsController* controller =
          account != nullptr ? account->accountsController() : nullptr;
      // The first line item that passes keeps the entry; items whose category is not in the
      // controller's tree are skipped, and an entry without items is dropped.
      for (const auto& item : entry.splitLineItems()) {
        const Outcome outcome = lookups_->splitCategories.Get(controller, item->category(), [&] {
          if (controller == nullptr) return kNotFound;
          const std::shared_ptr<ZELMAccountEntryCategory> c =
              controller->categoryWithNumber(item->category());
          if (!c) return kNotFound;
          return MatchesText(c->name()) ? kMatch : kNoMatch;
        });
        if (outcome != kNotFound && (outcome == kMatch) == logic_) return true;
      }
      return false;
    }
    case kConditionSplitDescription:
      for (const auto& item : entry.splitLineItems()) {
        if (MatchesText(item->description()) == logic_) return true;
      }
      return false;
    case kConditionGeneral: {
      bool found = false;
      const bool match = MatchesText(entry.GetDescription()) ||
                         MatchesNamedLookup(entry, true, &found) ||
                         MatchesNamedLookup(entry, false, &found) ||
                         MatchesText(entry.GetToFrom()) || MatchesText(entry.GetNotes());
      return match == logic_;
    }
    default:
      return true;
  }
}

}  // namespace folvant
