#include "folvant/filters/ConditionSyntax.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>
#include <vector>

#include "folvant/filters/FilterCodes.h"
#include "folvant/filters/ZELMFilterCondition.h"
#include "folvant/platform/CivilDate.h"
#include "folvant/platform/Text.h"
#include "folvant/platform/plist/Value.h"

namespace folvant {
namespace {

using Condition = ZELMFilterCondition;

enum class Kind : std::uint8_t { kText, kDate, kNumber, kBoolean };

struct Field {
  const char* word;
  std::int32_t category;
  Kind kind;
};

// In the order the help lists them; the first word for a category is the one written back.
constexpr Field kFields[] = {
    {"description", kConditionDescription, Kind::kText},
    {"date", kConditionDate, Kind::kDate},
    {"amount", kConditionAmount, Kind::kNumber},
    {"type", kConditionType, Kind::kText},
    {"check", kConditionCheck, Kind::kBoolean},
    {"payee", kConditionToFrom, Kind::kText},
    {"resolved", kConditionCleared, Kind::kBoolean},
    {"tax-deductible", kConditionTaxDeductible, Kind::kBoolean},
    {"category", kConditionCategory, Kind::kText},
    {"void", kConditionVoid, Kind::kBoolean},
    {"check-number", kConditionCheckString, Kind::kText},
    {"amount-text", kConditionAmountString, Kind::kText},
    {"split-category", kConditionSplitCategory, Kind::kText},
    {"split-description", kConditionSplitDescription, Kind::kText},
    {"notes", kConditionNotes, Kind::kText},
    {"general", kConditionGeneral, Kind::kText},
    {"to-from", kConditionToFrom, Kind::kText},  // accepted, written as "payee"
};

// A qualifier word of the text and amount fields. `negated` is the word for logic 0, when the
// editor has one; otherwise "not" is written before the word.
struct Comparison {
  const char* word;
  const char* negated;
  std::int32_t qualifier;
};

constexpr Comparison kTextComparisons[] = {
    {"contains", "does-not-contain", kTextContains},
    {"starts-with", "does-not-start-with", kTextStartsWith},
    {"ends-with", "does-not-end-with", kTextEndsWith},
    {"is", "is-not", kTextIsEqualTo},
};

constexpr Comparison kAmountComparisons[] = {
    {"=", "!=", kAmountIs},
    {">", nullptr, kAmountIsMoreThan},
    {"<", nullptr, kAmountIsLessThan},
    {"is", "is-not", kAmountIs},  // accepted, written as "=" and "!="
    {"more-than", nullptr, kAmountIsMoreThan},
    {"less-than", nullptr, kAmountIsLessThan},
};

// What follows a date qualifier word.
enum class Operands : std::uint8_t { kNone, kDay, kTwoDays, kCountUnit, kTwoCountsUnit };

// For the counted rows `code` is the variant (in the last, in the next, between N and M ago)
// and the qualifier is RelativeDateQualifier(unit, variant); for the others it is the qualifier
// itself.
struct DateWord {
  const char* word;
  const char* negated;
  std::int32_t code;
  Operands operands;
};

constexpr DateWord kDateWords[] = {
    {"before", nullptr, kDateBefore, Operands::kDay},
    {"on", nullptr, kDateExactly, Operands::kDay},
    {"after", nullptr, kDateAfter, Operands::kDay},
    {"between", nullptr, kDateBetween, Operands::kTwoDays},
    {"is-today", "is-not-today", kDateToday, Operands::kNone},
    {"is-yesterday", "is-not-yesterday", kDateYesterday, Operands::kNone},
    {"in-last", nullptr, kDateInLast, Operands::kCountUnit},
    {"in-next", nullptr, kDateInNext, Operands::kCountUnit},
    {"between-ago", nullptr, kDateBetweenAgo, Operands::kTwoCountsUnit},
    {"this-week", nullptr, kDateThisWeek, Operands::kNone},
    {"this-month", nullptr, kDateThisMonth, Operands::kNone},
    {"this-quarter", nullptr, kDateThisQuarter, Operands::kNone},
    {"this-year", nullptr, kDateThisYear, Operands::kNone},
    {"last-week", nullptr, kDateLastWeek, Operands::kNone},
    {"last-month", nullptr, kDateLastMonth, Operands::kNone},
    {"last-quarter", nullptr, kDateLastQuarter, Operands::kNone},
    {"last-year", nullptr, kDateLastYear, Operands::kNone},
    {"week-to-date", nullptr, kDateWeekToDate, Operands::kNone},
    {"month-to-date", nullptr, kDateMonthToDate, Operands::kNone},
    {"quarter-to-date", nullptr, kDateQuarterToDate, Operands::kNone},
    {"year-to-date", nullptr, kDateYearToDate, Operands::kNone},
    {"is", nullptr, kDateExactly, Operands::kDay},  // accepted, written as "on"
};

// Units of the counted date rows, from kDateUnitDay on.
constexpr std::array<const char*, 5> kUnits = {"day", "week", "month", "quarter", "year"};
constexpr std::int32_t kFirstUnit = kDateUnitDay;
static_assert(kFirstUnit + static_cast<std::int32_t>(kUnits.size()) - 1 == kDateUnitYear);

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

bool SameWord(std::string_view a, std::string_view b) {
  return platform::AsciiEqualIgnoringCase(a, b);
}

// Reads the words of a condition one at a time, or the rest of it as one text.
class Words {
 public:
  explicit Words(std::string_view text) : text_(text) {}
  std::string_view Next() {
    SkipSpace();
    const std::size_t start = pos_;
    while (pos_ < text_.size() && !IsSpace(text_[pos_])) ++pos_;
    return text_.substr(start, pos_ - start);
  }
  std::string_view Rest() {
    SkipSpace();
    std::string_view rest = text_.substr(pos_);
    while (!rest.empty() && IsSpace(rest.back())) rest.remove_suffix(1);
    pos_ = text_.size();
    return rest;
  }
  bool AtEnd() {
    SkipSpace();
    return pos_ == text_.size();
  }

 private:
  void SkipSpace() {
    while (pos_ < text_.size() && IsSpace(text_[pos_])) ++pos_;
  }
  std::string_view text_;
  std::size_t pos_ = 0;
};

template <typename Row>
std::string WordList(const Row* rows, std::size_t count, bool with_negated) {
  std::string list;
  for (std::size_t i = 0; i < count; ++i) {
    if (!list.empty()) list += ", ";
    list += rows[i].word;
    if constexpr (requires { rows[i].negated; }) {
      if (with_negated && rows[i].negated != nullptr) {
        list += ", ";
        list += rows[i].negated;
      }
    }
  }
  return list;
}

std::string Quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

// Looks `word` up among the rows' words and negated words; sets `negated` for the latter.
template <typename Row, std::size_t N>
const Row* FindWord(const Row (&rows)[N], std::string_view word, bool& negated) {
  for (const Row& row : rows) {
    if (SameWord(word, row.word)) {
      negated = false;
      return &row;
    }
    if (row.negated != nullptr && SameWord(word, row.negated)) {
      negated = true;
      return &row;
    }
  }
  return nullptr;
}

std::optional<std::int32_t> ParseInteger(std::string_view word) {
  std::int32_t value = 0;
  const auto [end, ec] = std::from_chars(word.data(), word.data() + word.size(), value);
  if (ec != std::errc() || end != word.data() + word.size() || word.empty()) return std::nullopt;
  return value;
}

std::optional<double> ParseNumber(std::string_view word) {
  if (!word.empty() && word.front() == '+') word.remove_prefix(1);
  double value = 0;
  const auto [end, ec] = std::from_chars(word.data(), word.data() + word.size(), value);
  if (ec != std::errc() || end != word.data() + word.size() || word.empty() ||
      !std::isfinite(value)) {
    return std::nullopt;
  }
  return value;
}

std::string NumberText(double value) {
  char buffer[64];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return std::string(buffer, result.ptr);
}

// A text operand: the rest of the condition, or the text between its outer double quotes.
std::string TextOperand(std::string_view rest) {
  if (rest.size() >= 2 && rest.front() == '"' && rest.back() == '"') {
    rest = rest.substr(1, rest.size() - 2);
  }
  return std::string(rest);
}

std::string TextOperandText(std::string_view text) {
  const bool quote = text.empty() || IsSpace(text.front()) || IsSpace(text.back()) ||
                     (text.size() >= 2 && text.front() == '"' && text.back() == '"');
  return quote ? Quoted(text) : std::string(text);
}

struct Parsed {
  std::int32_t qualifier = 0;
  bool negated = false;
  plist::Value data;
};

// Each ParseX reads the words after the field and returns false with `error` set on failure.
using ParseResult = bool;

ParseResult ParseText(Words& words, std::string_view field, bool negated, Parsed& out,
                      std::string& error) {
  const std::string_view word = words.Next();
  bool word_negated = false;
  const Comparison* row = FindWord(kTextComparisons, word, word_negated);
  if (row == nullptr) {
    error = (word.empty() ? "\"" + std::string(field) + "\" needs a comparison"
                          : "unknown comparison " + Quoted(word) + " for " + std::string(field)) +
            "; use one of: " + WordList(kTextComparisons, std::size(kTextComparisons), true);
    return false;
  }
  if (negated && word_negated) {
    error = "\"not\" cannot come before " + Quoted(word);
    return false;
  }
  if (words.AtEnd()) {
    error = Quoted(std::string(field) + " " + std::string(word)) +
            " needs a text (write \"\" for the empty text)";
    return false;
  }
  out.qualifier = row->qualifier;
  out.negated = negated || word_negated;
  out.data = plist::Value(TextOperand(words.Rest()));
  return true;
}

ParseResult ParseAmount(Words& words, bool negated, Parsed& out, std::string& error) {
  const std::string_view word = words.Next();
  bool word_negated = false;
  const Comparison* row = FindWord(kAmountComparisons, word, word_negated);
  if (row == nullptr) {
    error = (word.empty() ? std::string("\"amount\" needs a comparison")
                          : "unknown comparison " + Quoted(word) + " for amount") +
            "; use one of: =, !=, >, <";
    return false;
  }
  if (negated && word_negated) {
    error = "\"not\" cannot come before " + Quoted(word);
    return false;
  }
  const std::string_view value = words.Next();
  const std::optional<double> number = ParseNumber(value);
  if (!number) {
    error = "\"amount " + std::string(word) + "\" needs a number such as 100 or -20.5" +
            (value.empty() ? std::string() : ", not " + Quoted(value));
    return false;
  }
  out.qualifier = row->qualifier;
  out.negated = negated || word_negated;
  out.data = plist::Value(*number);
  return true;
}

ParseResult ParseBoolean(Words& words, std::string_view field, bool negated, Parsed& out,
                         std::string& error) {
  std::string_view word = words.Next();
  const auto yes_no = [](std::string_view w) -> std::optional<bool> {
    if (SameWord(w, "yes") || SameWord(w, "true")) return true;
    if (SameWord(w, "no") || SameWord(w, "false")) return false;
    return std::nullopt;
  };
  bool word_negated = false;
  std::optional<bool> flag;
  if (SameWord(word, "is-set")) {
    flag = true;
  } else if (SameWord(word, "is-not-set")) {
    flag = true;
    word_negated = true;
  } else if (SameWord(word, "is") || SameWord(word, "is-not")) {
    word_negated = SameWord(word, "is-not");
    word = words.Next();
    flag = yes_no(word);
  } else {
    flag = yes_no(word);
  }
  if (!flag) {
    error = (word.empty() ? Quoted(field) + " needs a value"
                          : "unknown value " + Quoted(word) + " for " + std::string(field)) +
            "; use one of: yes, no, is-set, is-not-set, is yes, is-not yes";
    return false;
  }
  if (negated && word_negated) {
    error = "\"not\" cannot come before a negative word";
    return false;
  }
  out.qualifier = kFlagIsSet;
  out.negated = negated || word_negated;
  out.data = plist::Value(*flag);
  return true;
}

bool ParseDay(std::string_view word, std::int32_t& day, std::string& error) {
  if (platform::ParseIsoDate(word, day)) return true;
  error = word.empty() ? std::string("a day (YYYY-MM-DD) is missing")
                       : Quoted(word) + " is not a day (YYYY-MM-DD)";
  return false;
}

bool ParseCount(std::string_view word, std::int32_t& count, std::string& error) {
  if (const auto value = ParseInteger(word); value && *value >= 0) {
    count = *value;
    return true;
  }
  error = word.empty() ? std::string("a count is missing")
                       : Quoted(word) + " is not a whole number of 0 or more";
  return false;
}

bool ParseUnit(std::string_view word, std::int32_t& unit, std::string& error) {
  for (std::size_t i = 0; i < kUnits.size(); ++i) {
    const std::string singular = kUnits[i];
    if (SameWord(word, singular) || SameWord(word, singular + "s")) {
      unit = kFirstUnit + static_cast<std::int32_t>(i);
      return true;
    }
  }
  error = (word.empty() ? std::string("a unit is missing") : "unknown unit " + Quoted(word)) +
          "; use one of: days, weeks, months, quarters, years";
  return false;
}

ParseResult ParseDate(Words& words, bool negated, Parsed& out, std::string& error) {
  const std::string_view word = words.Next();
  bool word_negated = false;
  const DateWord* row = FindWord(kDateWords, word, word_negated);
  if (row == nullptr) {
    error = (word.empty() ? std::string("\"date\" needs a comparison")
                          : "unknown comparison " + Quoted(word) + " for date") +
            "; use one of: " + WordList(kDateWords, std::size(kDateWords) - 1, true);
    return false;
  }
  if (negated && word_negated) {
    error = "\"not\" cannot come before " + Quoted(word);
    return false;
  }
  out.negated = negated || word_negated;
  std::int32_t a = 0, b = 0, unit = 0;
  switch (row->operands) {
    case Operands::kNone:
      out.qualifier = row->code;
      out.data = plist::Value(plist::Array{});
      break;
    case Operands::kDay:
      if (!ParseDay(words.Next(), a, error)) return false;
      out.qualifier = row->code;
      out.data = plist::Value(a);
      break;
    case Operands::kTwoDays:
      if (!ParseDay(words.Next(), a, error) || !ParseDay(words.Next(), b, error)) return false;
      out.qualifier = row->code;
      out.data = plist::Value(plist::Array{plist::Value(a), plist::Value(b)});
      break;
    case Operands::kCountUnit:
      if (!ParseCount(words.Next(), a, error) || !ParseUnit(words.Next(), unit, error)) {
        return false;
      }
      out.qualifier = RelativeDateQualifier(unit, row->code);
      out.data = plist::Value(a);
      break;
    case Operands::kTwoCountsUnit:
      if (!ParseCount(words.Next(), a, error) || !ParseCount(words.Next(), b, error) ||
          !ParseUnit(words.Next(), unit, error)) {
        return false;
      }
      out.qualifier = RelativeDateQualifier(unit, row->code);
      out.data = plist::Value(plist::Array{plist::Value(a), plist::Value(b)});
      break;
  }
  return true;
}

// ---- Writing back ----

std::string DataText(const plist::Value& data) {
  if (const std::string* text = data.asString()) return Quoted(*text);
  if (const auto flag = data.asBoolean()) return *flag ? "true" : "false";
  if (const auto integer = data.asInteger()) return std::to_string(*integer);
  if (const auto real = data.asReal()) return NumberText(*real);
  if (const plist::Array* array = data.asArray()) {
    std::string text = "[";
    for (std::size_t i = 0; i < array->size(); ++i) {
      if (i > 0) text += ", ";
      text += DataText((*array)[i]);
    }
    return text + "]";
  }
  return "(other)";
}

std::string RawText(const Condition& condition) {
  return "[category " + std::to_string(condition.category()) + " qualifier " +
         std::to_string(condition.qualifier()) + " logic " + std::to_string(condition.logic()) +
         " data " + (condition.data() != nullptr ? DataText(*condition.data()) : "none") + "]";
}

// "not WORD", or the row's own negative word when it has one.
template <typename Row>
std::string QualifierText(const Row& row, bool negated) {
  if (!negated) return row.word;
  return row.negated != nullptr ? row.negated : std::string("not ") + row.word;
}

template <typename Row, std::size_t N>
const Row* RowForQualifier(const Row (&rows)[N], std::int32_t qualifier) {
  for (const Row& row : rows) {
    if (row.qualifier == qualifier) return &row;
  }
  return nullptr;
}

std::optional<std::string> DayText(std::int32_t day) {
  std::int32_t check = 0;
  const std::string text = platform::FormatIsoDate(day);
  if (!platform::ParseIsoDate(text, check) || check != day) return std::nullopt;
  return text;
}

std::optional<std::string> DateOperands(const Condition& condition, bool negated) {
  const std::int32_t qualifier = condition.qualifier();
  // Both come from 32-bit values of the data.
  const auto [a, b] = Condition::DateOperands(*condition.data());
  for (const DateWord& row : kDateWords) {
    if (row.operands == Operands::kCountUnit || row.operands == Operands::kTwoCountsUnit ||
        row.code != qualifier) {
      continue;
    }
    std::string text = QualifierText(row, negated);
    if (row.operands == Operands::kNone) return text;
    const auto first = DayText(static_cast<std::int32_t>(a));
    if (!first) return std::nullopt;
    if (row.operands == Operands::kDay) return text + " " + *first;
    const auto second = DayText(static_cast<std::int32_t>(b));
    if (!second) return std::nullopt;
    return text + " " + *first + " " + *second;
  }
  const std::int32_t unit = RelativeDateUnit(qualifier), variant = RelativeDateVariant(qualifier);
  if (qualifier < 0 || unit < kFirstUnit ||
      unit >= kFirstUnit + static_cast<std::int32_t>(kUnits.size()) || variant > kDateBetweenAgo) {
    return std::nullopt;
  }
  const char* word = variant == kDateInLast   ? "in-last"
                     : variant == kDateInNext ? "in-next"
                                              : "between-ago";
  std::string text = negated ? std::string("not ") + word : std::string(word);
  text += " " + std::to_string(a);
  if (variant == kDateBetweenAgo) text += " " + std::to_string(b);
  const bool plural = variant == kDateBetweenAgo || a != 1;
  return text + " " + kUnits[unit - kFirstUnit] + (plural ? "s" : "");
}

}  // namespace

std::shared_ptr<ZELMFilterCondition> ParseCondition(std::string_view text, std::string& error) {
  Words words(text);
  const std::string_view field_word = words.Next();
  if (field_word.empty()) {
    error = "empty condition; write FIELD QUALIFIER [VALUE], e.g. \"description contains rent\"";
    return nullptr;
  }
  const Field* field = nullptr;
  for (const Field& candidate : kFields) {
    if (SameWord(field_word, candidate.word)) field = &candidate;
  }
  if (field == nullptr) {
    error = "unknown field " + Quoted(field_word) +
            "; use one of: " + WordList(kFields, std::size(kFields) - 1, false);
    return nullptr;
  }
  Words lookahead = words;
  bool negated = false;
  if (SameWord(lookahead.Next(), "not")) {
    words = lookahead;
    negated = true;
  }
  Parsed parsed;
  bool ok = false;
  switch (field->kind) {
    case Kind::kText:
      ok = ParseText(words, field->word, negated, parsed, error);
      break;
    case Kind::kNumber:
      ok = ParseAmount(words, negated, parsed, error);
      break;
    case Kind::kBoolean:
      ok = ParseBoolean(words, field->word, negated, parsed, error);
      break;
    case Kind::kDate:
      ok = ParseDate(words, negated, parsed, error);
      break;
  }
  if (!ok) return nullptr;
  if (!words.AtEnd()) {
    error = "unexpected " + Quoted(words.Rest()) + " at the end of " + Quoted(text);
    return nullptr;
  }
  return std::make_shared<ZELMFilterCondition>(
      field->category, parsed.qualifier,
      parsed.negated ? kConditionKeepsOthers : kConditionKeepsMatches, std::move(parsed.data));
}

std::string FormatCondition(const ZELMFilterCondition& condition) {
  const Field* field = nullptr;
  for (const Field& candidate : kFields) {
    if (candidate.category == condition.category()) {
      field = &candidate;
      break;
    }
  }
  const plist::Value* data = condition.data();
  if (field == nullptr || data == nullptr) return RawText(condition);
  const bool negated = condition.logic() == kConditionKeepsOthers;
  std::string text = std::string(field->word) + " ";
  switch (field->kind) {
    case Kind::kText: {
      const std::string* value = data->asString();
      const Comparison* row = RowForQualifier(kTextComparisons, condition.qualifier());
      if (value == nullptr || row == nullptr) return RawText(condition);
      return text + QualifierText(*row, negated) + " " + TextOperandText(*value);
    }
    case Kind::kNumber: {
      const Comparison* row = RowForQualifier(kAmountComparisons, condition.qualifier());
      if (!data->isNumber() || data->isBoolean() || row == nullptr) return RawText(condition);
      return text + QualifierText(*row, negated) + " " + NumberText(data->doubleValue());
    }
    case Kind::kBoolean: {
      if (!data->isNumber() || condition.qualifier() != kFlagIsSet) {
        return RawText(condition);
      }
      const bool flag = data->boolValue();
      if (!negated) return text + (flag ? "yes" : "no");
      return text + (flag ? "is-not-set" : "is-not no");
    }
    case Kind::kDate: {
      const auto operands = DateOperands(condition, negated);
      if (!operands) return RawText(condition);
      return text + *operands;
    }
  }
  return RawText(condition);
}

}  // namespace folvant
