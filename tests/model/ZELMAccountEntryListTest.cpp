// Entry lists built from their stored form, as accounts and folders load them: the entries
// of one list share one block of memory and must behave exactly as entries built one by one.
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

TEST(ZELMAccountEntryListTest, MatchesEntriesBuiltOneByOneWithTheSameMessagesInOrder) {
  plist::Dictionary no_date = StoredEntry(3, "no date");
  no_date.erase("date");
  plist::Dictionary repeated = StoredEntry(4, "first");
  repeated.append("description", "second");  // the first of a repeated key counts
  const plist::Array stored{StoredEntry(1, "a long description of more than fifteen bytes"),
                            plist::Value("not an entry"), no_date, repeated,
                            StoredEntry(5, "last")};

  LogCapture listed;
  const auto entries = ZELMAccountEntry::entriesFromStoredArray(stored);
  const std::vector<std::string> list_messages = listed.messages();

  LogCapture single;
  std::vector<std::shared_ptr<ZELMAccountEntry>> expected;
  for (const plist::Value& element : stored) {
    if (const plist::Dictionary* dict = element.asDictionary()) {
      expected.push_back(std::make_shared<ZELMAccountEntry>(dict));
    } else {
      ZELMLog("Invalid theValue encountered in -[ZELMAccount InitEntries]");
    }
  }
  EXPECT_EQ(list_messages, single.messages());
  ASSERT_EQ(list_messages.size(), 2u);

  ASSERT_EQ(entries.size(), 4u);
  for (std::size_t i = 0; i < entries.size(); ++i) {
    EXPECT_EQ(entries[i]->asDictionary(), expected[i]->asDictionary()) << i;
  }
  EXPECT_EQ(entries[1]->GetDate(), 0);
  EXPECT_EQ(entries[2]->GetDescription(), "first");
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

TEST(ZELMAccountEntryListTest, EmptyListsAndListsWithoutEntries) {
  EXPECT_TRUE(ZELMAccountEntry::entriesFromStoredArray(plist::Array{}).empty());
  LogCapture log;
  EXPECT_TRUE(
      ZELMAccountEntry::entriesFromStoredArray(plist::Array{plist::Value(1), plist::Value(2)})
          .empty());
  EXPECT_EQ(log.messages().size(), 2u);
}

}  // namespace
}  // namespace folvant
