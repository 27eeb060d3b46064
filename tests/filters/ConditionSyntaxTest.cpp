// The command-line words for filter conditions: every field and qualifier reads into the codes
// the filters use and is written back in the same words; bad words are refused with one line.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "folvant/filters/ConditionSyntax.h"
#include "folvant/filters/ZELMFilterCondition.h"
#include "folvant/platform/plist/Value.h"

namespace folvant {
namespace {

struct Row {
  std::string text;
  std::int32_t category;
  std::int32_t qualifier;
  std::int32_t logic;
  plist::Value data;
};

plist::Value Pair(std::int64_t a, std::int64_t b) {
  return plist::Value(plist::Array{plist::Value(a), plist::Value(b)});
}
plist::Value NoData() { return plist::Value(plist::Array{}); }

// Parses the text into exactly the row's codes and data, and (unless it is another spelling)
// writes the row's condition back as the text.
void ExpectRoundTrip(const Row& row, bool written_back = true) {
  SCOPED_TRACE(row.text);
  const ZELMFilterCondition expected(row.category, row.qualifier, row.logic, row.data);
  std::string error;
  const auto parsed = ParseCondition(row.text, error);
  ASSERT_NE(parsed, nullptr) << error;
  EXPECT_EQ(parsed->asDictionary(), expected.asDictionary());
  if (written_back) {
    EXPECT_EQ(FormatCondition(expected), row.text);
  }
}

TEST(ConditionSyntax, EveryTextFieldTakesEveryTextComparison) {
  const std::vector<std::pair<std::string, std::int32_t>> fields = {
      {"description", 0},   {"type", 3},         {"payee", 5},           {"category", 8},
      {"check-number", 10}, {"amount-text", 11}, {"split-category", 20}, {"split-description", 21},
      {"notes", 30},        {"general", 50}};
  struct Comparison {
    const char* word;
    std::int32_t qualifier;
    std::int32_t logic;
  };
  const Comparison comparisons[] = {{"contains", 6, 1},    {"does-not-contain", 6, 0},
                                    {"starts-with", 8, 1}, {"does-not-start-with", 8, 0},
                                    {"ends-with", 9, 1},   {"does-not-end-with", 9, 0},
                                    {"is", 1, 1},          {"is-not", 1, 0}};
  for (const auto& [field, category] : fields) {
    for (const Comparison& c : comparisons) {
      ExpectRoundTrip(
          {field + " " + c.word + " Rent 7/2025", category, c.qualifier, c.logic, "Rent 7/2025"});
    }
  }
  // Outer spaces and the empty text survive through quotes; inner quotes are kept as typed.
  ExpectRoundTrip({"notes contains \"  two words \"", 30, 6, 1, "  two words "});
  ExpectRoundTrip({"description is \"\"", 0, 1, 1, ""});
  ExpectRoundTrip({"payee contains \"\"Acme\"\"", 5, 6, 1, plist::Value("\"Acme\"")});
  ExpectRoundTrip({"amount-text starts-with 1,234.5", 11, 8, 1, "1,234.5"});
}

TEST(ConditionSyntax, AmountsYesNoFieldsAndEveryDateQualifier) {
  std::vector<Row> rows = {
      {"amount = 100", 2, 1, 1, 100.0},
      {"amount != 9.61", 2, 1, 0, 9.61},
      {"amount > 100", 2, 3, 1, 100.0},
      {"amount not > 0.5", 2, 3, 0, 0.5},
      {"amount < -20.25", 2, 4, 1, -20.25},
      {"amount not < 1234.56", 2, 4, 0, 1234.56},
      {"check yes", 4, 1, 1, true},
      {"resolved no", 6, 1, 1, false},
      {"tax-deductible is-not-set", 7, 1, 0, true},
      {"void is-not no", 9, 1, 0, false},
      {"date before 2026-01-05", 1, 0, 1, 20260105},
      {"date not before 2026-01-05", 1, 0, 0, 20260105},
      {"date on 2008-02-29", 1, 1, 1, 20080229},
      {"date not on 2008-02-29", 1, 1, 0, 20080229},
      {"date after 2025-12-31", 1, 2, 1, 20251231},
      {"date between 2026-01-01 2026-03-31", 1, 70, 1, Pair(20260101, 20260331)},
      {"date not between 2026-01-01 2026-03-31", 1, 70, 0, Pair(20260101, 20260331)},
      {"date is-today", 1, 23, 1, NoData()},
      {"date is-not-today", 1, 23, 0, NoData()},
      {"date is-yesterday", 1, 24, 1, NoData()},
      {"date is-not-yesterday", 1, 24, 0, NoData()},
      {"date in-last 1 month", 1, 40, 1, 1},
      {"date not in-next 3 weeks", 1, 31, 0, 3},
      {"date not this-year", 1, 63, 0, NoData()}};
  // unit × 10 + variant: in the last N, in the next N, between N and M units ago.
  const char* units[] = {"days", "weeks", "months", "quarters", "years"};
  for (std::int32_t unit = 2; unit <= 6; ++unit) {
    const std::string u = units[unit - 2];
    rows.push_back({"date in-last 2 " + u, 1, unit * 10, 1, 2});
    rows.push_back({"date in-next 2 " + u, 1, unit * 10 + 1, 1, 2});
    rows.push_back({"date between-ago 10 5 " + u, 1, unit * 10 + 2, 1, Pair(10, 5)});
  }
  const std::pair<const char*, std::int32_t> periods[] = {
      {"this-week", 33},    {"this-month", 43},    {"this-quarter", 53},    {"this-year", 63},
      {"last-week", 34},    {"last-month", 44},    {"last-quarter", 54},    {"last-year", 64},
      {"week-to-date", 35}, {"month-to-date", 45}, {"quarter-to-date", 55}, {"year-to-date", 65}};
  for (const auto& [word, qualifier] : periods) {
    rows.push_back({std::string("date ") + word, 1, qualifier, 1, NoData()});
  }
  for (const Row& row : rows) ExpectRoundTrip(row);
}

TEST(ConditionSyntax, OtherSpellingsReadTheSame) {
  const Row rows[] = {{"  DESCRIPTION   Contains   Rent  ", 0, 6, 1, "Rent"},
                      {"to-from starts-with acme", 5, 8, 1, "acme"},
                      {"description not contains x", 0, 6, 0, "x"},
                      {"amount is 3", 2, 1, 1, 3.0},
                      {"amount more-than +3", 2, 3, 1, 3.0},
                      {"amount less-than 3", 2, 4, 1, 3.0},
                      {"date is 20260105", 1, 1, 1, 20260105},
                      {"date in-last 1 days", 1, 20, 1, 1},
                      {"resolved is no", 6, 1, 1, false},
                      {"resolved is-set", 6, 1, 1, true},
                      {"void not yes", 9, 1, 0, true},
                      {"check true", 4, 1, 1, true}};
  for (const Row& row : rows) ExpectRoundTrip(row, false);
}

TEST(ConditionSyntax, BadWordsAreRefusedWithOneHelpfulLine) {
  const std::pair<const char*, const char*> rows[] = {
      {"", "empty condition"},
      {"colour is red", "unknown field \"colour\"; use one of: description, date, amount, type"},
      {"description", "\"description\" needs a comparison; use one of: contains"},
      {"description matches x", "unknown comparison \"matches\" for description"},
      {"description contains", "needs a text"},
      {"description not does-not-contain x", "\"not\" cannot come before"},
      {"amount bigger 3", "unknown comparison \"bigger\" for amount; use one of: =, !=, >, <"},
      {"amount > lots", "needs a number such as 100 or -20.5, not \"lots\""},
      {"amount > 3 4", "unexpected \"4\""},
      {"resolved maybe", "unknown value \"maybe\" for resolved; use one of: yes, no"},
      {"date soon", "unknown comparison \"soon\" for date; use one of: before, on, after"},
      {"date before 2026-02-30", "\"2026-02-30\" is not a day (YYYY-MM-DD)"},
      {"date between 2026-01-01", "a day (YYYY-MM-DD) is missing"},
      {"date in-last three days", "\"three\" is not a whole number"},
      {"date in-last -3 months", "\"-3\" is not a whole number of 0 or more"},
      {"date in-last 3 fortnights", "unknown unit \"fortnights\"; use one of: days, weeks"},
      {"date between-ago 3 days", "\"days\" is not a whole number"},
      {"date this-year please", "unexpected \"please\""}};
  for (const auto& [text, message] : rows) {
    SCOPED_TRACE(text);
    std::string error;
    EXPECT_EQ(ParseCondition(text, error), nullptr);
    EXPECT_NE(error.find(message), std::string::npos) << error;
    EXPECT_EQ(error.find('\n'), std::string::npos);
  }
}

TEST(ConditionSyntax, ConditionsTheWordsCannotSayAreWrittenRawAndNotReadBack) {
  const ZELMFilterCondition no_data(1, 63, 1, plist::Value());  // passes every entry
  const ZELMFilterCondition odd[] = {
      no_data,
      ZELMFilterCondition(22, 6, 1, plist::Value("x")),      // a code the editor treats as text
      ZELMFilterCondition(0, 7, 1, plist::Value("x")),       // an unknown text qualifier
      ZELMFilterCondition(0, 6, 1, plist::Value(5)),         // a number where a text belongs
      ZELMFilterCondition(1, 25, 1, NoData()),               // no "day to date" row
      ZELMFilterCondition(1, 0, 1, plist::Value(20260300)),  // not a real day
      ZELMFilterCondition(6, 2, 1, plist::Value(true)),      // yes/no fields know qualifier 1 only
  };
  for (const ZELMFilterCondition& condition : odd) {
    const std::string text = FormatCondition(condition);
    SCOPED_TRACE(text);
    EXPECT_EQ(text.rfind("[category ", 0), 0u);
    std::string error;
    EXPECT_EQ(ParseCondition(text, error), nullptr);
  }
  EXPECT_EQ(FormatCondition(ZELMFilterCondition(22, 6, 1, plist::Value(Pair(1, 2)))),
            "[category 22 qualifier 6 logic 1 data [1, 2]]");
  // A stored boolean kept as a number, or a count kept in an array, reads as the filter reads it.
  EXPECT_EQ(FormatCondition(ZELMFilterCondition(kConditionCleared, kFlagIsSet,
                                                kConditionKeepsMatches, plist::Value(1))),
            "resolved yes");
  EXPECT_EQ(
      FormatCondition(ZELMFilterCondition(kConditionDate, kDateInLastMonths, kConditionKeepsMatches,
                                          plist::Value(plist::Array{3}))),
      "date in-last 3 months");
}

}  // namespace
}  // namespace folvant
