#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "folvant/model/ZELMAccountEntrySplit.h"
#include "folvant/model/ZELMAccountEntrySplitLineItem.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

using testing::LogCapture;
using Messages = std::vector<std::string>;

TEST(ZELMAccountEntrySplitLineItem, LoadsWhatIsPresentAndKeepsAmountsUnrounded) {
  LogCapture log;
  const plist::Dictionary only_amount{{"amount", -12.345}};
  ZELMAccountEntrySplitLineItem item(&only_amount);
  item.setToFrom(std::nullopt);  // still written, as ""
  const plist::Dictionary expected{{"category", -1},
                                   {"toFrom", ""},
                                   {"description", ""},
                                   {"amount", -12.345},
                                   {"exchangedAmount", 0.0}};
  EXPECT_EQ(item.asDictionary(), expected);
  EXPECT_TRUE(log.messages().empty());
}

plist::Dictionary GoodLegacySplit() {
  plist::Array descriptions, to_froms, amounts;
  for (int i = 0; i < 10; ++i) {
    descriptions.emplace_back("d" + std::to_string(i));
    to_froms.emplace_back("t" + std::to_string(i));
    amounts.emplace_back(i + 0.5);
  }
  return {{"descriptions", descriptions}, {"toFrom", to_froms}, {"amounts", amounts}};
}

TEST(ZELMAccountEntrySplit, DamagedKeysAreLoggedAndLeaveTheirSlots) {
  const char* kWrong =
      "theValue is in the wrong format in ZELMAccountEntrySplit:initWithDictionary";
  const char* rows[][2] = {
      {"descriptions", "No description defined for theDictionary in "},
      {"toFrom", "No toFroms defined for theDictionary in "},
      {"amounts", "No amounts defined for theDictionary in "},
  };
  const plist::Dictionary fresh = ZELMAccountEntrySplit().asDictionary();
  for (const auto& row : rows) {
    for (bool remove : {true, false}) {
      SCOPED_TRACE(std::string(row[0]) + (remove ? " removed" : " of the wrong kind"));
      plist::Dictionary damaged = GoodLegacySplit();
      plist::Dictionary expected = damaged;
      expected.set(row[0], *fresh.find(row[0]));
      if (remove) damaged.erase(row[0]);
      if (!remove) damaged.set(row[0], "not an array");
      LogCapture log;
      ZELMAccountEntrySplit split(&damaged);
      const std::string missing = std::string(row[1]) + "ZELMAccountEntrySplit:initWithDictionary";
      EXPECT_EQ(log.messages(), Messages{remove ? missing : kWrong});
      EXPECT_EQ(split.asDictionary(), expected);
    }
  }
}

TEST(ZELMAccountEntrySplit, ShortAndLongArrays) {
  LogCapture log;
  const plist::Dictionary good = GoodLegacySplit();
  EXPECT_EQ(ZELMAccountEntrySplit(&good).asDictionary(), good);
  const plist::Dictionary three{{"descriptions", plist::Array{}},
                                {"toFrom", plist::Array{}},
                                {"amounts", plist::Array{1.0, 2.0, 3.004}}};
  ZELMAccountEntrySplit short_split(&three);
  EXPECT_TRUE(log.messages().empty());
  EXPECT_EQ(short_split.GetAmount(2), 3.0);  // rounded on the way in
  EXPECT_EQ(short_split.GetTotal(), 6.0);    // slots 3-9 stay 0.0

  // Amounts beyond the tenth slot are refused one message each; texts are dropped silently.
  const plist::Array texts(11, plist::Value("x"));
  const plist::Dictionary eleven{
      {"descriptions", texts}, {"toFrom", texts}, {"amounts", plist::Array(11, 1.0)}};
  ZELMAccountEntrySplit long_split(&eleven);
  EXPECT_EQ(log.messages(),
            Messages{"Split index out of range of split array in ZELMAccountEntrySplit:SetAmount"});
  EXPECT_EQ(long_split.GetTotal(), 10.0);
}

TEST(ZELMAccountEntrySplit, IndexLimitsRoundingAndCopies) {
  ZELMAccountEntrySplit split;
  LogCapture log;
  split.SetAmount(5.0, 10);
  EXPECT_EQ(log.messages(),
            Messages{"Split index out of range of split array in ZELMAccountEntrySplit:SetAmount"});
  EXPECT_EQ(split.GetAmount(10), 0.0);
  split.SetEnabled(true, 10);  // accepted, but nothing reads slot 10
  EXPECT_FALSE(split.GetEnabled(10));
  EXPECT_FALSE(split.GetEnabled(9));

  split.SetAmount(-12.345678, 0);
  split.SetAmount(1.005, 9);
  split.SetEnabled(true, 9);
  EXPECT_EQ(split.GetAmount(0), -12.35);
  EXPECT_EQ(split.GetAmount(9), 1.01);
  EXPECT_DOUBLE_EQ(split.GetTotal(), -11.34);

  // Copies go through the stored form: slots survive, enabled marks do not.
  auto copy = ZELMAccountEntrySplit::splitWithSplit(&split);
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->asDictionary(), split.asDictionary());
  EXPECT_FALSE(copy->GetEnabled(9));
  EXPECT_EQ(ZELMAccountEntrySplit::splitWithSplit(nullptr), nullptr);
}

}  // namespace
}  // namespace folvant
