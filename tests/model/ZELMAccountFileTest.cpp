// Account files: a current file builds its register while it is read and is written entry by
// entry; the account, the messages and the bytes must be exactly those of reading and writing
// the whole stored form.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountFile.h"
#include "folvant/model/ZELMAccountUpgrade.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

using plist::Array;
using plist::Dictionary;
using plist::Format;
using testing::LogCapture;

constexpr Format kFormats[] = {Format::kBinary, Format::kXml};

// A stored account of version `version` whose register has a good entry, one missing its
// description, one that is not a dictionary and one with a split; without a name (a message
// before the entries) and without schedules (a message after them).
Dictionary StoredAccount(std::int32_t version) {
  ZELMAccount account;
  account.SetNumber(4);
  for (std::int32_t i = 1; i <= 3; ++i) {
    auto entry = std::make_shared<ZELMAccountEntry>();
    entry->SetNumber(account.NextAvailableNumber());
    entry->SetDate(20260600 + i);
    entry->SetAmount(-12.5 * i);
    entry->SetDescription("Groceries");
    if (i == 3) entry->addSplitLineItemWithCategory(3, "Milk", "Shop", -2.0);
    account.AddEntry(entry);
  }
  Dictionary stored = account.asDictionary();
  stored.erase("name");
  stored.erase("schedules");
  stored.set("version", version);
  Array& entries = *stored.find("entries")->asArray();
  entries[1].asDictionary()->erase("description");
  entries.insert(entries.begin() + 2, plist::Value("not an entry"));
  return stored;
}

struct Loaded {
  std::shared_ptr<ZELMAccount> account;
  std::vector<std::string> messages;
  bool prepared = false;
};

Loaded ThroughAccountFile(const std::string& bytes) {
  Loaded loaded;
  LogCapture log;
  auto file = ReadAccountBytes(bytes);
  EXPECT_TRUE(file.has_value());
  if (!file) return loaded;
  loaded.prepared = file->entries.has_value();
  loaded.account = AccountFromFile(std::move(*file), nullptr);
  loaded.messages = log.messages();
  return loaded;
}

Loaded ThroughWholeTree(const std::string& bytes) {
  Loaded loaded;
  LogCapture log;
  auto value = plist::Read(bytes);
  EXPECT_TRUE(value.has_value());
  if (!value) return loaded;
  Dictionary& stored = *value->asDictionary();
  if (stored.find("version")->intValue() != ZELMAccount::kCurrentVersion) {
    ZELMAccount::UpdateAccountDictionary(stored);
  }
  loaded.account = std::make_shared<ZELMAccount>(&stored);
  loaded.messages = log.messages();
  return loaded;
}

class ZELMAccountFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    // Older accounts read the shared preferences; there are none here.
    previous_ = SetUpgradePreferencesPath(std::filesystem::path("/nonexistent/preferences"));
  }
  void TearDown() override { SetUpgradePreferencesPath(previous_); }

 private:
  std::optional<std::filesystem::path> previous_;
};

TEST_F(ZELMAccountFileTest, ACurrentFileLoadsAsItsWholeStoredFormWithTheSameMessagesInOrder) {
  for (const Format format : kFormats) {
    SCOPED_TRACE(format == Format::kBinary ? "binary" : "XML");
    const std::string bytes = plist::Write(StoredAccount(ZELMAccount::kCurrentVersion), format);
    const Loaded streamed = ThroughAccountFile(bytes);
    const Loaded whole = ThroughWholeTree(bytes);
    ASSERT_NE(streamed.account, nullptr);
    EXPECT_TRUE(streamed.prepared);
    EXPECT_EQ(streamed.messages, whole.messages);
    // The name's message comes first, the entries' next, the schedules' after them.
    ASSERT_GE(streamed.messages.size(), 4u);
    EXPECT_EQ(streamed.messages.front(),
              "Account does not have a name in -[ZELMAccount initWithDictionary:]");
    EXPECT_EQ(streamed.messages.back(),
              "Account does not have schedules in -[ZELMAccount initWithDictionary:]");
    EXPECT_EQ(streamed.account->asDictionary(), whole.account->asDictionary());
    ASSERT_EQ(streamed.account->GetEntries().size(), 3u);
    EXPECT_EQ(streamed.account->GetEntries()[0]->GetAccount(), streamed.account.get());
    EXPECT_EQ(streamed.account->GetBalance(), whole.account->GetBalance());

    // Written back: the bytes of the whole stored form, which read back as the same account.
    const std::string written = AccountFileBytes(*streamed.account, format);
    EXPECT_EQ(written, plist::Write(plist::Value(streamed.account->asDictionary()), format));
    EXPECT_EQ(ThroughAccountFile(written).account->asDictionary(),
              streamed.account->asDictionary());
  }
}

TEST_F(ZELMAccountFileTest, AnOlderFileIsUpgradedWholeBeforeItsEntriesAreBuilt) {
  for (const std::int32_t version : {1, 5, 7}) {
    SCOPED_TRACE(version);
    const std::string bytes = plist::Write(StoredAccount(version), Format::kBinary);
    const Loaded streamed = ThroughAccountFile(bytes);
    const Loaded whole = ThroughWholeTree(bytes);
    ASSERT_NE(streamed.account, nullptr);
    EXPECT_FALSE(streamed.prepared);
    EXPECT_EQ(streamed.messages, whole.messages);
    EXPECT_EQ(streamed.account->asDictionary(), whole.account->asDictionary());
  }
}

TEST_F(ZELMAccountFileTest, FilesThatAreNoAccountsGiveNoAccount) {
  auto list = ReadAccountBytes(plist::Write(Array{1, 2}, Format::kBinary));
  ASSERT_TRUE(list.has_value());
  EXPECT_EQ(AccountFromFile(std::move(*list), nullptr), nullptr);
  const auto damaged = ReadAccountBytes("bplist00 and nothing else");
  ASSERT_FALSE(damaged.has_value());
  EXPECT_FALSE(damaged.error().what.empty());
  const auto missing = ReadAccountFile("/nonexistent/account.plist");
  ASSERT_FALSE(missing.has_value());
  EXPECT_NE(missing.error().what.find("/nonexistent/account.plist"), std::string::npos);
}

// Entry lists built from their stored form share one block of memory: an entry must stay
// usable after its list and account are gone.
TEST(ZELMAccountEntryList, EntriesOutliveTheirListAndAccountAndStayUsable) {
  std::shared_ptr<ZELMAccountEntry> kept;
  {
    // Enough entries for a block of several megabytes, which is mapped on its own.
    ZELMAccountEntry entry;
    entry.SetDescription("entry");
    Dictionary stored = entry.asDictionary();
    Array entries;
    for (std::int32_t i = 1; i <= 30'000; ++i) {
      stored.set("number", i);
      entries.emplace_back(stored);
    }
    const Dictionary dict{{"entries", std::move(entries)}};
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
