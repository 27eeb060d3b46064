#include "folvant/platform/plist/Value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

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

}  // namespace
}  // namespace folvant::plist
