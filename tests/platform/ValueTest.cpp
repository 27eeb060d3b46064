#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "folvant/platform/plist/Value.h"

namespace folvant::plist {
namespace {

TEST(PlistValue, TypedAccessSeparatesMissingWrongKindAndConvertible) {
  Dictionary d{{"n", 12}, {"s", "12abc"}, {"r", 2.75}};
  EXPECT_EQ(d.find("missing"), nullptr);
  ASSERT_NE(d.find("s"), nullptr);
  EXPECT_FALSE(d.find("s")->isNumber());
  EXPECT_EQ(d.find("s")->asInteger(), std::nullopt);
  EXPECT_EQ(d.find("s")->intValue(), 12);
  EXPECT_TRUE(d.find("r")->isNumber());
  EXPECT_EQ(d.find("r")->intValue(), 2);
  EXPECT_EQ(d.find("n")->doubleValue(), 12.0);
}

TEST(PlistValue, FoundationConversions) {
  struct Row {
    Value value;
    int32_t int_value;
    double double_value;
    bool bool_value;
  };
  const Row rows[] = {
      {Value("  -42xyz"), -42, -42.0, true},
      {Value("yes"), 0, 0.0, true},
      {Value("True"), 0, 0.0, true},
      {Value("no"), 0, 0.0, false},
      {Value("  +007"), 7, 7.0, true},
      {Value("000"), 0, 0.0, false},
      {Value("-0.5"), 0, -0.5, false},
      {Value("99999999999"), std::numeric_limits<int32_t>::max(), 99999999999.0, true},
      {Value(-3.9), -3, -3.9, true},
      {Value(true), 1, 1.0, true},
      {Value(0), 0, 0.0, false},
      {Value(Data{1, 2}), 0, 0.0, false},
      {Value(), 0, 0.0, false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(static_cast<int>(row.value.kind())) + " " +
                 (row.value.asString() ? *row.value.asString() : std::string()));
    EXPECT_EQ(row.value.intValue(), row.int_value);
    EXPECT_EQ(row.value.doubleValue(), row.double_value);
    EXPECT_EQ(row.value.boolValue(), row.bool_value);
  }
  EXPECT_EQ(Value(std::nan("")).intValue(), 0);
  EXPECT_EQ(Value(1e300).intValue(), std::numeric_limits<int32_t>::max());
}

TEST(PlistValue, UnsignedIntegersAboveInt64Survive) {
  const Value big(std::numeric_limits<uint64_t>::max());
  EXPECT_TRUE(big.isInteger());
  EXPECT_TRUE(big.isUnsignedInteger());
  EXPECT_EQ(big.asInteger(), std::nullopt);
  EXPECT_EQ(big.asUnsignedInteger(), std::numeric_limits<uint64_t>::max());
  EXPECT_TRUE(Value(uint64_t{5}) == Value(5));
}

TEST(PlistDictionary, EqualityIgnoresOrderAndSetReplacesInPlace) {
  Dictionary a{{"x", 1}, {"y", Array{Value("a"), Value(std::nan(""))}}};
  Dictionary b{{"y", Array{Value("a"), Value(std::nan(""))}}, {"x", 1}};
  EXPECT_TRUE(a == b);
  b.set("x", 2);
  EXPECT_FALSE(a == b);
  EXPECT_EQ(b.entries().back().first, "x");
  EXPECT_TRUE(b.erase("x"));
  EXPECT_FALSE(b.erase("x"));
  EXPECT_EQ(b.size(), 1u);
  Value copy = Value(a);
  a.set("x", 3);
  EXPECT_EQ(copy.asDictionary()->find("x")->intValue(), 1);
}

TEST(PlistValue, CopiesShareATextUntilOneChangesIt) {
  const Value original("Grocer");
  Value copy = original;
  EXPECT_EQ(std::as_const(copy).asString(), original.asString());  // one text for both
  *copy.asString() += " & Co";
  EXPECT_EQ(*original.asString(), "Grocer");
  EXPECT_EQ(*copy.asString(), "Grocer & Co");
}

TEST(PlistDictionary, KeysInsideAndOnTheHeapBehaveAlike) {
  const std::string inside(15, 'k'), outside = "linkedExchangedAmount";
  Dictionary d{{outside, 1}, {inside, 2}, {"", 3}};
  Dictionary copy = d;
  Dictionary moved = std::move(d);
  EXPECT_EQ(moved.find(outside)->intValue(), 1);
  EXPECT_EQ(copy.find(inside)->intValue(), 2);
  EXPECT_EQ(copy.find("")->intValue(), 3);
  EXPECT_EQ(copy.find(inside + "k"), nullptr);
  std::vector<std::string> order;
  for (const Dictionary::Entry* entry : copy.sortedEntries()) order.push_back(entry->first.str());
  EXPECT_EQ(order, (std::vector<std::string>{"", inside, outside}));
  EXPECT_TRUE(copy == moved);
}

// Dictionaries made in an arena live on after it, change like any other, and free their room
// one by one (the sanitizers see a leak or a double free).
TEST(PlistDictionary, ArenaDictionariesOutliveTheArenaAndGrowOutOfIt) {
  for (const std::size_t chunk : {std::size_t{1} << 10, std::size_t{8} << 20}) {
    SCOPED_TRACE(chunk);
    Array made;
    {
      DictionaryArena arena(chunk);
      for (int i = 0; i < 2000; ++i) {
        Dictionary d = arena.Make(2);
        d.append("n", i);
        d.append("same", "text");
        made.push_back(std::move(d));
      }
      Dictionary big = arena.Make(1000);  // beyond a quarter of a small chunk
      big.append("n", -1);
      made.push_back(std::move(big));
    }
    Dictionary& first = *made[0].asDictionary();
    first.append("n", 7);  // a third entry: moves out of the arena
    EXPECT_TRUE(first.collapseDuplicateKeys());
    EXPECT_EQ(first, (Dictionary{{"n", 7}, {"same", "text"}}));
    EXPECT_TRUE(made[1].asDictionary()->erase("n"));
    EXPECT_EQ(*made[1].asDictionary(), (Dictionary{{"same", "text"}}));
    EXPECT_EQ(made[1999].asDictionary()->find("n")->intValue(), 1999);
    EXPECT_EQ(made[2000].asDictionary()->find("n")->intValue(), -1);
    made.erase(made.begin() + 10, made.begin() + 1500);
    const Array copy = made;
    made.clear();
    EXPECT_EQ(copy[10].asDictionary()->find("n")->intValue(), 1500);
  }
}

}  // namespace
}  // namespace folvant::plist
