// What the front ends draw: amounts in a currency's form, JSON, text tables and charts.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <pugixml.hpp>

#include "app/render/AmountText.h"
#include "app/render/Chart.h"
#include "app/render/Json.h"
#include "app/render/Table.h"
#include "folvant/values/LVCurrency.h"
#include "folvant/values/ZELMNumberFormatter.h"

namespace folvant::render {
namespace {

std::vector<double> SampleAmounts() {
  std::vector<double> amounts = {0.0,
                                 -0.0,
                                 1.005,
                                 2.675,
                                 -1.005,
                                 -2.675,
                                 0.125,
                                 0.001,
                                 -0.001,
                                 0.005,
                                 -0.005,
                                 0.5,
                                 0.995,
                                 -0.995,
                                 1234.5,
                                 -1234.5,
                                 1e15,
                                 -1e15,
                                 999999999999999.9,
                                 123456789012.345,
                                 9007199254.745,
                                 1e-300,
                                 5e-324,
                                 4503599627370495.5 / 10};
  std::mt19937_64 random(20080615);
  std::uniform_int_distribution<long long> cents(-10'000'000'000LL, 10'000'000'000LL);
  std::uniform_real_distribution<double> anything(-1e6, 1e6);
  std::uniform_int_distribution<int> digits(0, 15);
  for (int i = 0; i < 5000; ++i) {
    const double value = static_cast<double>(cents(random)) / 100;
    amounts.push_back(value);
    amounts.push_back(value + (value < 0 ? -0.005 : 0.005));  // half a cent
    amounts.push_back(anything(random));
    amounts.push_back(std::ldexp(anything(random), digits(random) * 3) / 1e6);
  }
  return amounts;
}

TEST(RenderAmountWriter, WritesWhatTheFormatterPrints) {
  const std::vector<std::shared_ptr<LVCurrency>> currencies = {
      std::make_shared<LVCurrency>("USD", "US Dollar", "$", true, ",", ".", 1, 0),
      std::make_shared<LVCurrency>("EUR", "Euro", "€", false, ".", ",", 1, 0),
      std::make_shared<LVCurrency>("CHF", "Swiss Franc", "CHF", true, "'", ".", 1, 0),
      std::make_shared<LVCurrency>("XXX", "No symbol", "", true, "\u202F", ",", 1, 0),
      std::make_shared<LVCurrency>("XXX", "No separators", "kr", false, "", "", 1, 0),
      // Symbols made of pattern characters change the pattern itself.
      std::make_shared<LVCurrency>("XXX", "Odd", "#0;x", true, ",", ".", 1, 0),
      std::make_shared<LVCurrency>("XXX", "Odd", "0.0", false, ",", ".", 1, 0),
      std::make_shared<LVCurrency>("XXX", "Many decimals", "0.00000", true, ",", ".", 1, 0),
  };
  const std::vector<double> amounts = SampleAmounts();
  for (const auto& currency : currencies) {
    const AmountWriter writer(*currency);
    const ZELMNumberFormatter& formatter = *currency->formatter();
    std::string buffer(writer.maxSize(), '\0');
    for (double amount : amounts) {
      const std::string expected = formatter.stringForNumber(amount);
      ASSERT_EQ(writer.Text(amount), expected)
          << currency->symbol() << " " << std::hexfloat << amount;
      ASSERT_LE(expected.size(), writer.maxSize());
    }
    for (double beyond : {1.0000000000000002e15, -1e16, std::numeric_limits<double>::infinity(),
                          std::numeric_limits<double>::quiet_NaN()}) {
      EXPECT_EQ(writer.Text(beyond), "n/a");
    }
  }
}

TEST(RenderPlainAmount, TwoDecimalsRoundedAsShown) {
  const std::pair<double, const char*> cases[] = {
      {-1234.5, "-1234.50"}, {0.0, "0.00"},   {-0.0, "0.00"},    {-0.001, "0.00"},
      {1.005, "1.01"},       {2.675, "2.68"}, {-0.005, "-0.01"}, {1e15, "1000000000000000.00"},
      {0.1 + 0.2, "0.30"},   {1e16, "n/a"},   {NAN, "n/a"},
  };
  for (const auto& [amount, text] : cases) EXPECT_EQ(PlainAmount(amount), text) << amount;
}

TEST(RenderJson, WritesAmountsWithTwoDecimalsAndKeepsKeyOrder) {
  Json doc = Json::object();
  doc["name"] = JsonText("Caf\xC3\xA9 \"Z\"\n");
  doc["amount"] = JsonAmount(-1234.5);
  doc["balances"] = {{"zero", JsonAmount(-0.0)}, {"nan", JsonAmount(NAN)}};
  doc["huge"] = JsonAmount(1e20);
  doc["entries"] = Json::array({JsonAmount(2.675), 7, true, nullptr});
  doc["empty"] = Json::array();
  doc["none"] = Json::object();
  doc["odd key\t\xFF"] = 1.5;
  EXPECT_EQ(JsonDump(doc),
            "{\n"
            "  \"name\": \"Café \\\"Z\\\"\\n\",\n"
            "  \"amount\": -1234.50,\n"
            "  \"balances\": {\n    \"zero\": 0.00,\n    \"nan\": null\n  },\n"
            "  \"huge\": 1e+20,\n"
            "  \"entries\": [\n    2.68,\n    7,\n    true,\n    null\n  ],\n"
            "  \"empty\": [],\n"
            "  \"none\": {},\n"
            "  \"odd key\\t\xEF\xBF\xBD\": 1.5\n"
            "}\n");
  EXPECT_EQ(AmountOf(doc["amount"]), -1234.5);
  EXPECT_EQ(AmountOf(doc["entries"][1]), std::nullopt);

  // Without amounts the text is nlohmann's own.
  Json plain = Json::parse(R"({"b": [1, {"c": "d"}], "a": 2.5e-7, "e": [{}]})");
  EXPECT_EQ(JsonDump(plain), plain.dump(2) + "\n");
}

TEST(RenderJson, StreamedPiecesWriteWhatTheTreeWrites) {
  const Json tree = {{"rows", Json::array({Json::object({{"n", 1}, {"amount", JsonAmount(0.5)}}),
                                           Json::object()})},
                     {"none", Json::array()},
                     {"tail", {{"ok", true}, {"text", JsonText("tab\t\xFF")}}}};
  std::ostringstream out;
  {
    JsonWriter json(out);
    json.BeginObject();
    json.Key("rows");
    json.BeginArray();
    json.BeginObject();
    json.Key("n");
    json.Number(1);
    json.Key("amount");
    json.Amount(0.5);
    json.EndObject();
    json.BeginObject();
    json.EndObject();
    json.EndArray();
    json.Key("none");
    json.BeginArray();
    json.EndArray();
    json.Key("tail");
    json.Value({{"ok", true}, {"text", "tab\t\xFF"}});
    json.EndObject();
  }
  EXPECT_EQ(out.str(), JsonDump(tree));
}

TEST(RenderJson, InvalidUtf8NeverBreaksTheOutput) {
  // A truncated sequence, a stray continuation byte, an overlong form, a surrogate.
  const std::string bad = "a\xE2\x82 b\x80 c\xC0\xAF d\xED\xA0\x80 e\xF0\x9F\x98\x80";
  EXPECT_EQ(JsonText(bad).get<std::string>(),
            "a\uFFFD b\uFFFD c\uFFFD\uFFFD d\uFFFD\uFFFD\uFFFD e\U0001F600");
  Json doc = {{"raw", bad}, {"clean", JsonText(bad)}};
  std::ostringstream out;
  ASSERT_NO_THROW(WriteJson(out, doc));
  const Json back = Json::parse(out.str());
  EXPECT_EQ(back["raw"], back["clean"]);
}

TEST(RenderTable, DisplayWidthCountsTerminalColumns) {
  const std::pair<const char*, std::size_t> cases[] = {
      {"", 0},
      {"Groceries", 9},
      {"Caf\u00E9", 4},
      {"Cafe\u0301", 4},          // combining acute accent
      {"\u65E5\u672C", 4},        // two wide ideographs
      {"\uFF21", 2},              // fullwidth A
      {"a\u200Bb\u200D", 2},      // zero-width space and joiner
      {"\U0001F600", 2},          // emoji
      {"\xFF\xE2\x82", 3},        // invalid bytes take one column each
      {"\u1100\u1161\u11A8", 2},  // a Hangul syllable in jamo
  };
  for (const auto& [text, width] : cases) EXPECT_EQ(DisplayWidth(text), width) << text;
}

TEST(RenderTable, AppendPaddedPadsAndCutsAtCharacters) {
  struct Case {
    const char* text;
    std::size_t width;
    Align align;
    const char* expected;
  };
  const Case cases[] = {
      {"abc", 5, Align::kLeft, "abc  "},
      {"abc", 5, Align::kRight, "  abc"},
      {"abcdef", 4, Align::kLeft, "abc…"},
      {"abcdef", 1, Align::kRight, "…"},
      {"abcdef", 0, Align::kLeft, ""},
      {"\u65E5\u672C\u8A9E", 6, Align::kRight, "\u65E5\u672C\u8A9E"},
      {"\u65E5\u672C\u8A9E", 4, Align::kLeft, "\u65E5… "},  // no half of a wide character
      {"\u65E5\u672C\u8A9E", 4, Align::kRight, " \u65E5…"},
      {"e\u0301e\u0301e\u0301", 3, Align::kLeft, "e\u0301e\u0301e\u0301"},
      {"e\u0301e\u0301e\u0301", 2, Align::kLeft, "e\u0301…"},  // the mark stays with its letter
      {"Caf\u00E9 au lait", 6, Align::kLeft, "Caf\u00E9 …"},
  };
  for (const Case& c : cases) {
    std::string out;
    AppendPadded(out, c.text, c.width, c.align);
    EXPECT_EQ(out, c.expected) << c.text << " in " << c.width;
    EXPECT_EQ(DisplayWidth(out), c.width) << c.text << " in " << c.width;
  }
}

TEST(RenderTable, WritesAlignedLinesWithoutTrailingSpaces) {
  Table table;
  table.AddColumn("Date", Align::kLeft, 10);
  table.AddFitColumn("Payee", Align::kLeft, 8);
  table.AddFitColumn("Amount", Align::kRight);
  table.AddFitColumn("Memo", Align::kLeft);
  table.AddRow({"2008-06-15", "\u6771\u4EAC\u30AC\u30B9", "-1,234.50", ""});
  table.AddRow({"2008-06-16", "Caf\u00E9", "5.00", "lunch"});
  table.AddRow({"2008-06-17", "A very long payee", "12.00"});
  EXPECT_EQ(table.rowCount(), 3u);
  std::string out;
  table.Write(out);
  EXPECT_EQ(out,
            "Date        Payee        Amount  Memo\n"
            "2008-06-15  \u6771\u4EAC\u30AC\u30B9  -1,234.50\n"
            "2008-06-16  Caf\u00E9           5.00  lunch\n"
            "2008-06-17  A very …      12.00\n");

  Table headless;
  headless.AddFitColumn("", Align::kLeft);
  headless.AddFitColumn("", Align::kRight);
  headless.AddRow({"Current balance:", "$ 5.00"});
  headless.AddRow({"Resolved:", "$ 10.00"});
  out.clear();
  headless.Write(out);
  EXPECT_EQ(out, "Current balance:   $ 5.00\nResolved:         $ 10.00\n");
}

std::string Dollars(double amount) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.2f", amount);
  return buffer;
}

// The summary picture is XML a browser reads: one deposit and one debit bar per period, the net
// line through them, a bar per category, and labels escaped.
TEST(ChartTest, SummarySvgParsesWithABarPerPeriodAndCategory) {
  const std::vector<PeriodValues> periods = {{"Jan", 2480, 1900.5, 579.5},
                                             {"Feb", 0, 120, -120},
                                             {"Mar <&> \"Q1\"", 10, 0, 10}};
  const std::vector<CategoryValue> categories = {
      {"Food", -800, 0}, {"Groceries", -600, 1}, {"Salary", 2480, 0}, {"Zero", 0, 0}};
  const std::string svg = SummarySvg(periods, categories, Dollars, {"Checking & more", {}, {}});
  pugi::xml_document doc;
  const pugi::xml_parse_result parsed = doc.load_string(svg.c_str());
  ASSERT_TRUE(parsed) << parsed.description() << " at " << parsed.offset;
  const pugi::xml_node root = doc.child("svg");
  EXPECT_STREQ(root.child_value("title"), "Checking & more");
  EXPECT_EQ(root.select_nodes("//g[@class='periods']/rect[@class='deposit']").size(), 3u);
  EXPECT_EQ(root.select_nodes("//g[@class='periods']/rect[@class='debit']").size(), 3u);
  EXPECT_EQ(root.select_nodes("//g[@class='net-line']/circle").size(), 3u);
  EXPECT_EQ(root.select_nodes("//polyline[@class='net']").size(), 1u);
  EXPECT_EQ(root.select_nodes("//g[@class='categories']/rect").size(), 4u);
  EXPECT_TRUE(root.select_node("//text[text()='Mar <&> \"Q1\"']"));
  // Bars are as tall as their amounts: January's deposit is the tallest one.
  const auto deposits = root.select_nodes("//g[@class='periods']/rect[@class='deposit']");
  const double january = deposits[0].node().attribute("height").as_double();
  EXPECT_GT(january, 0);
  EXPECT_EQ(deposits[1].node().attribute("height").as_double(), 0);
  EXPECT_NEAR(deposits[2].node().attribute("height").as_double(), january * 10 / 2480, 0.02);

  const std::string empty = SummarySvg({}, {}, Dollars, {"Nothing", {}, {}});
  EXPECT_TRUE(doc.load_string(empty.c_str())) << "an empty report is still a picture";
}

TEST(ChartTest, PeriodChartTextKeepsTheAxisInOneColumn) {
  const std::vector<PeriodValues> periods = {{"2026-01", 1000, 500, 500}, {"2026-02", 250, 1000, -750}};
  const std::string text = PeriodChartText(periods, Dollars, 60);
  std::istringstream lines(text);
  std::vector<std::size_t> axis;
  for (std::string line; std::getline(lines, line);) {
    EXPECT_LE(DisplayWidth(line), 60u) << line;
    axis.push_back(DisplayWidth(line.substr(0, line.find("│"))));
  }
  ASSERT_EQ(axis.size(), 2u);
  EXPECT_EQ(axis[0], axis[1]);
  EXPECT_NE(text.find("-1000.00 ████"), std::string::npos) << "the largest debit fills its half\n"
                                                            << text;
}

}  // namespace
}  // namespace folvant::render
