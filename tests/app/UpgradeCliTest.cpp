// The upgrade command on account files of older versions: the report, the rewritten file in its
// original encoding, the backup, and the files it leaves alone or cannot read.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "folvant/model/ZELMAccount.h"
#include "folvant/platform/plist/PropertyList.h"
#include "tests/app/CliFixture.h"

namespace folvant {
namespace {

namespace fs = std::filesystem;
using plist::Array;
using plist::Dictionary;
using testing::Cli;
using testing::CommandResult;

const std::string kPreferences =
    std::string(FOLVANT_TEST_DATA_DIR) + "/upgrade/Folvant Preferences.plist";

class UpgradeCli : public Cli {
 protected:
  std::string Write(const std::string& name, const Dictionary& account, plist::Format format) {
    const fs::path path = dir_ / name;
    std::ofstream(path, std::ios::binary) << plist::Write(plist::Value(account), format);
    return path.string();
  }
  plist::Value Read(const std::string& path) {
    auto value = plist::ReadFile(path);
    EXPECT_TRUE(value.has_value()) << path;
    return value ? std::move(*value) : plist::Value();
  }
};

// A version-2 account: entries with the old debit and check booleans, two with one number, no
// types of its own.
Dictionary VersionTwoAccount() {
  const auto entry = [](bool debit, double amount, int date) {
    return Dictionary{
        {"number", 1}, {"isDebit", debit}, {"isCheck", !debit}, {"amount", amount}, {"date", date}};
  };
  return Dictionary{
      {"name", "Old Checking"},
      {"version", 2},
      {"entries", Array{entry(false, 12.5, 1199145600), entry(true, -3.333, 1199232000)}}};
}

TEST_F(UpgradeCli, OldFilesAreUpgradedInPlaceInTheirEncodingWithABackup) {
  const std::string xml = Write("old.plist", VersionTwoAccount(), plist::Format::kXml);
  Dictionary binary_account = VersionTwoAccount();
  binary_account.set("version", 7);
  binary_account.set("name", "Binary");
  const std::string binary = Write("old.bplist", binary_account, plist::Format::kBinary);
  const std::string xml_before = testing::ReadFileBytes(xml);
  const std::string binary_before = testing::ReadFileBytes(binary);

  CommandResult run = Folvant("upgrade old.plist old.bplist --preferences '" + kPreferences + "'");
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(run.err.empty()) << run.err;
  for (const char* line : {"old.plist: version 2 -> 8 (XML, account \"Old Checking\", 2 entries)",
                           "old.bplist: version 7 -> 8 (binary, account \"Binary\", 2 entries)",
                           "types (added)", "entries (2 of 2)", "  backup: old.plist.bak\n"}) {
    EXPECT_NE(run.out.find(line), std::string::npos) << line << "\n" << run.out;
  }

  // Backups hold the old bytes; the files keep their encoding and load as current accounts.
  EXPECT_EQ(testing::ReadFileBytes(xml + ".bak"), xml_before);
  EXPECT_EQ(testing::ReadFileBytes(binary + ".bak"), binary_before);
  EXPECT_EQ(plist::DetectFormat(testing::ReadFileBytes(xml)), plist::Format::kXml);
  EXPECT_EQ(plist::DetectFormat(testing::ReadFileBytes(binary)), plist::Format::kBinary);
  plist::Value upgraded = Read(xml);
  ASSERT_NE(upgraded.asDictionary(), nullptr);
  const Dictionary& dict = *upgraded.asDictionary();
  EXPECT_EQ(dict.find("version")->intValue(), 8);
  const ZELMAccount account(&dict);
  ASSERT_EQ(account.GetEntries().size(), 2u);
  EXPECT_EQ(account.GetEntries()[0]->GetEntryFlags(), 18) << "a deposit check";
  EXPECT_EQ(account.GetEntries()[1]->GetNumber(), 2) << "the duplicate number is repaired";
  EXPECT_DOUBLE_EQ(account.GetEntries()[1]->GetAmount(), -3.33);
  EXPECT_NE(account.debitEntryTypeForName("Check"), nullptr) << "types from the preferences";

  // Run again: both files are current now and are left alone.
  const std::string xml_after = testing::ReadFileBytes(xml);
  fs::remove(xml + ".bak");
  CommandResult again = Folvant("upgrade old.plist");
  ASSERT_EQ(again.status, 0) << again.err;
  EXPECT_EQ(again.out, "old.plist: version 8, already current; left untouched\n");
  EXPECT_EQ(testing::ReadFileBytes(xml), xml_after);
  EXPECT_FALSE(fs::exists(xml + ".bak"));
}

TEST_F(UpgradeCli, WithoutThePreferencesOptionTheFileInTheHomeFolderIsRead) {
  const fs::path brindle = dir_ / "home/Library/Preferences/Brindle";
  fs::create_directories(brindle);
  fs::copy_file(kPreferences, brindle / "Folvant Preferences");
  Write("old.plist", VersionTwoAccount(), plist::Format::kXml);
  const char* home = std::getenv("HOME");
  const std::string saved = home != nullptr ? home : "";
  ::setenv("HOME", (dir_ / "home").c_str(), 1);
  CommandResult run = Folvant("upgrade old.plist");
  if (home != nullptr) {
    ::setenv("HOME", saved.c_str(), 1);
  } else {
    ::unsetenv("HOME");
  }
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_NE(run.out.find("types (added)"), std::string::npos) << run.out;
  EXPECT_EQ(run.out.find("No inactiveTypes found"), std::string::npos) << run.out;
}

TEST_F(UpgradeCli, AnUnreadableFileIsOneLineAndTheOthersAreStillUpgraded) {
  { std::ofstream(dir_ / "broken.plist", std::ios::binary) << "bplist00\x01\x02garbage"; }
  { std::ofstream(dir_ / "array.plist") << "<plist><array/></plist>"; }
  Write("good.plist", VersionTwoAccount(), plist::Format::kXml);
  Write("bare.plist", Dictionary{{"name", "Bare"}, {"entries", Array{}}}, plist::Format::kXml);
  const std::string broken_before = testing::ReadFileBytes((dir_ / "broken.plist").string());

  // Without the preferences file the old types cannot be copied, which the upgrade reports.
  CommandResult run = Folvant(
      "upgrade broken.plist missing.plist array.plist good.plist bare.plist "
      "--preferences nowhere.plist");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(testing::LineCount(run.err), 3u) << run.err;
  for (const char* line : {"folvant: broken.plist: ", "folvant: missing.plist: ",
                           "folvant: array.plist: not an account file"}) {
    EXPECT_NE(run.err.find(line), std::string::npos) << line << "\n" << run.err;
  }
  for (const char* line :
       {"good.plist: version 2 -> 8",
        "  upgrade: No inactiveTypes found while upgrading account Old "
        "Checking. This could cause inconsistent behavior.\n",
        "bare.plist: version none -> 8", "  changed: version (added), number (added)\n"}) {
    EXPECT_NE(run.out.find(line), std::string::npos) << line << "\n" << run.out;
  }
  EXPECT_EQ(Read((dir_ / "good.plist").string()).asDictionary()->find("version")->intValue(), 8);
  EXPECT_EQ(testing::ReadFileBytes((dir_ / "broken.plist").string()), broken_before);
  EXPECT_FALSE(fs::exists(dir_ / "broken.plist.bak"));

  // With --json: the same error lines and status, and the files done as one document.
  Write("old.plist", VersionTwoAccount(), plist::Format::kXml);
  CommandResult json =
      Folvant("upgrade missing.plist old.plist good.plist --preferences nowhere.plist --json");
  EXPECT_EQ(json.status, 1);
  EXPECT_EQ(json.err.rfind("folvant: missing.plist: ", 0), 0u) << json.err;
  EXPECT_EQ(testing::LineCount(json.err), 1u) << json.err;
  EXPECT_EQ(testing::JsonValues(json.out, "file"), "old.plist, good.plist") << json.out;
  EXPECT_EQ(testing::JsonValues(json.out, "outcome"), "upgraded, current");
  EXPECT_EQ(testing::JsonValues(json.out, "fromVersion"), "2, 8");
  EXPECT_EQ(testing::JsonValues(json.out, "toVersion"), "8, null");
  EXPECT_EQ(testing::JsonValues(json.out, "backup"), "old.plist.bak, null");
  EXPECT_NE(json.out.find("\"No inactiveTypes found while upgrading account Old Checking."),
            std::string::npos)
      << json.out;

  EXPECT_EQ(Folvant("upgrade").status, 2) << "a file is required";
}

}  // namespace
}  // namespace folvant
