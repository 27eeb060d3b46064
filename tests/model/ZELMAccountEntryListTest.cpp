// Entry lists built from their stored form share one block of memory: an entry must stay
// usable after its list and account are gone. (That the entries and their messages equal those
// built one by one is checked with account files.)
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

using testing::LogCapture;

plist::Dictionary StoredEntry(std::int32_t number, std::string description) {
  return plist::Dictionary{{"date", 20080300 + number},
                           {"number", number},
                           {"checkNumber", -1},
                           {"entryFlags", ZELMAccountEntry::kFlagDebit},
                           {"type", 1},
                           {"amount", -1.25 * number},
                           {"description", std::move(description)},
                           {"toFrom", "Grocer"},
                           {"cleared", false}};
}

TEST(ZELMAccountEntryListTest, EntriesOutliveTheirListAndAccountAndStayUsable) {
  std::shared_ptr<ZELMAccountEntry> kept;
  {
    // Enough entries for a block of several megabytes, which is mapped on its own.
    plist::Array stored;
    for (std::int32_t i = 1; i <= 30'000; ++i) stored.emplace_back(StoredEntry(i, "entry"));
    const plist::Dictionary dict{{"entries", std::move(stored)}};
    LogCapture log;  // the account's other keys are missing
    ZELMAccount account(&dict);
    ASSERT_EQ(account.GetEntries().size(), 30'000u);
    EXPECT_EQ(account.GetEntries()[41]->GetAccount(), &account);
    kept = account.GetEntries()[41];
    account.RemoveEntry(account.GetEntries()[0].get());
    EXPECT_EQ(account.GetEntries().size(), 29'999u);
  }
  // The account cleared its back references; the entry's memory lives on with it.
  EXPECT_EQ(kept->GetAccount(), nullptr);
  EXPECT_EQ(kept->GetNumber(), 42);
  kept->SetDescription("edited after the account went");
  EXPECT_EQ(kept->GetDescription(), "edited after the account went");
}

}  // namespace
}  // namespace folvant
