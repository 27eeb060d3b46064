// The upgrade of account dictionaries written by older versions of the program to the current
// format, version 8. It works on the property-list dictionary itself, key by key, before an
// account is built from it; each step runs for every version up to its bound, in order.

#include "folvant/model/ZELMAccountUpgrade.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <mutex>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntrySplit.h"
#include "folvant/platform/LocalCalendar.h"
#include "folvant/platform/Log.h"
#include "folvant/platform/plist/PropertyList.h"
#include "folvant/values/ZELMUtilities.h"

namespace folvant {
namespace {

constexpr std::int32_t kLinkedBit = 4;
constexpr std::int32_t kDebitBit = 1;
constexpr std::int32_t kDepositBit = 2;
constexpr std::int32_t kSendingSideBit = 8;  // version 7: the sending side of a transfer
constexpr std::int32_t kCheckBit = 16;
constexpr int kLegacySplitSlots = 10;

constexpr std::string_view kNoEntriesOnLoad =
    "Account does not have entries in -[ZELMAccount initWithDictionary:]";
constexpr std::string_view kBadEntriesOnLoad =
    "Account entries are in the wrong format in -[ZELMAccount initWithDictionary:]";
constexpr std::string_view kNoEntriesInUpgrade =
    "Account does not have entries in ZELMAccount:UpdateAccountDictionary:FromVersion";
constexpr std::string_view kBadEntriesInUpgrade =
    "Account entries are in the wrong format in ZELMAccount:UpdateAccountDictionary:FromVersion";
constexpr std::string_view kBadSchedulesOnLoad =
    "Account schedules are in the wrong format in -[ZELMAccount initWithDictionary:]";
constexpr std::string_view kBadSummariesOnLoad =
    "Account Summaries are in the wrong format in -[ZELMAccount initWithDictionary:]";
constexpr std::string_view kBadSchedulesInTransfers =
    "Schedules are in the wrong format in -[ZELMAccount initWithDictionary:]";

// Where the upgrade finds the shared preferences; empty: nowhere. Loads may run on several
// threads, so reads and writes take the lock.
std::mutex preferences_path_mutex;
std::filesystem::path preferences_path;

// The array under `key`: a missing key and a value of another kind each log their message.
plist::Array* RequiredArray(plist::Dictionary& dict, std::string_view key, std::string_view missing,
                            std::string_view wrong_kind) {
  plist::Value* value = dict.find(key);
  if (value == nullptr) {
    ZELMLog(missing);
    return nullptr;
  }
  if (!value->isArray()) {
    ZELMLog(wrong_kind);
    return nullptr;
  }
  return value->asArray();
}

// The array under `key`; silent when missing, logs `wrong_kind` for a value of another kind.
plist::Array* OptionalArray(plist::Dictionary& dict, std::string_view key,
                            std::string_view wrong_kind) {
  plist::Value* value = dict.find(key);
  if (value == nullptr) return nullptr;
  if (!value->isArray()) {
    if (!wrong_kind.empty()) ZELMLog(wrong_kind);
    return nullptr;
  }
  return value->asArray();
}

// The dictionaries of an array, in order; other elements are left alone.
std::vector<plist::Dictionary*> Dictionaries(plist::Array* array) {
  std::vector<plist::Dictionary*> out;
  if (array == nullptr) return out;
  out.reserve(array->size());
  for (plist::Value& element : *array) {
    if (plist::Dictionary* dict = element.asDictionary()) out.push_back(dict);
  }
  return out;
}

// Foundation semantics: a missing key reads as 0 / NO.
std::int32_t IntValue(const plist::Dictionary& dict, std::string_view key) {
  const plist::Value* value = dict.find(key);
  return value == nullptr ? 0 : value->intValue();
}

bool BoolValue(const plist::Dictionary& dict, std::string_view key) {
  const plist::Value* value = dict.find(key);
  return value != nullptr && value->boolValue();
}

// Sets `key` to a copy of `source[from]` when that is present. The copy is taken first: setting
// a key may move the dictionary's storage.
void CopyKey(plist::Dictionary& dict, std::string_view from, std::string_view to) {
  if (const plist::Value* value = dict.find(from)) {
    plist::Value copy = *value;
    dict.set(to, std::move(copy));
  }
}

// A date stored as seconds since 1970-01-01 00:00 UTC, as the date number of that moment's
// calendar day in the local time zone (so 0 is 19691231 west of Greenwich).
plist::Value SecondsToDateNumber(const plist::Value& seconds) {
  // Beyond a few thousand years there is no calendar day worth keeping; clamping keeps the
  // conversion defined for any number a damaged file holds.
  constexpr double kLimit = 1.0e11;
  double value = seconds.doubleValue();
  if (std::isnan(value)) value = 0.0;
  value = std::clamp(std::floor(value), -kLimit, kLimit);
  const std::chrono::sys_seconds when{std::chrono::seconds{static_cast<std::int64_t>(value)}};
  return plist::Value(NSCalendarDateToDateNumber(platform::ToLocalTime(when)));
}

void ConvertDateKey(plist::Dictionary& dict, std::string_view key) {
  if (plist::Value* value = dict.find(key)) *value = SecondsToDateNumber(*value);
}

std::optional<plist::Dictionary> ReadSharedPreferences() {
  const std::filesystem::path path = UpgradePreferencesPath();
  if (path.empty()) return std::nullopt;
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return std::nullopt;
  auto read = plist::ReadFile(path);
  if (!read.has_value() || !read.value().isDictionary()) return std::nullopt;
  return std::move(*read.value().asDictionary());
}

// What "%@" shows for the account's name in a message.
std::string NameForMessage(const plist::Dictionary& account) {
  const plist::Value* name = account.find("name");
  if (name == nullptr) return "(null)";
  if (const std::string* text = name->asString()) return *text;
  if (name->isInteger()) return std::to_string(name->longLongValue());
  return "(null)";
}

// Version 1 and older could hold entries with the same number. Only numbers that were the
// highest so far when met are remembered, so a later entry repeating one of them is set aside
// and numbered above the highest number of the file.
void RenumberDuplicateEntries(plist::Dictionary& account) {
  plist::Array* entries = RequiredArray(account, "entries", kNoEntriesOnLoad, kBadEntriesOnLoad);
  if (entries == nullptr) return;
  std::int64_t highest = 0;
  std::unordered_set<std::int32_t> seen;
  std::vector<plist::Dictionary*> set_aside;
  for (plist::Dictionary* entry : Dictionaries(entries)) {
    const std::int32_t number = IntValue(*entry, "number");
    if (number > highest) {
      highest = number;
      seen.insert(number);
    } else if (seen.contains(number)) {
      set_aside.push_back(entry);
    }
  }
  for (plist::Dictionary* entry : set_aside) entry->set("number", plist::Value(++highest));
}

// Version 2 and older kept the types in the shared preferences and marked entries with the
// booleans "isDebit" and "isCheck".
void ConvertTypesAndFlags(plist::Dictionary& account) {
  const std::optional<plist::Dictionary> preferences = ReadSharedPreferences();
  const plist::Value* shared_types = preferences ? preferences->find("types") : nullptr;
  const plist::Value* shared_inactive = preferences ? preferences->find("inactiveTypes") : nullptr;
  if (!account.contains("types") && shared_types != nullptr) account.set("types", *shared_types);
  if (!account.contains("inactiveTypes")) {
    if (shared_inactive != nullptr) {
      account.set("inactiveTypes", *shared_inactive);
    } else {
      ZELMLog("No inactiveTypes found while upgrading account " + NameForMessage(account) +
              ". This could cause inconsistent behavior.");
    }
  }

  plist::Array* entries =
      RequiredArray(account, "entries", kNoEntriesInUpgrade, kBadEntriesInUpgrade);
  if (entries == nullptr) return;
  std::int32_t highest = 0;
  for (plist::Dictionary* entry : Dictionaries(entries)) {
    const std::int32_t flags = (BoolValue(*entry, "isDebit") ? kDebitBit : kDepositBit) |
                               (BoolValue(*entry, "isCheck") ? kCheckBit : 0);
    entry->set("entryFlags", plist::Value(flags));
    highest = std::max(highest, IntValue(*entry, "number"));
  }
  account.set("numberCount", plist::Value(highest));
}

// Version 3 and older: for every entry that is not a transfer, every other entry with the same
// number is renumbered above the highest number in use. Grouping the entries by number gives
// the same numbers, in the same order, as comparing every pair: the first non-transfer entry of
// a number keeps it, and its partners (in file order) get fresh numbers at that point.
void RepairEntryNumbers(plist::Dictionary& account) {
  plist::Array* entries = RequiredArray(account, "entries", kNoEntriesOnLoad, kBadEntriesOnLoad);
  if (entries == nullptr) return;
  const std::vector<plist::Dictionary*> list = Dictionaries(entries);
  std::int64_t maximum = IntValue(account, "numberCount");
  std::unordered_map<std::int32_t, std::vector<std::size_t>> by_number;
  std::vector<std::int32_t> numbers;
  numbers.reserve(list.size());
  for (std::size_t i = 0; i < list.size(); ++i) {
    const std::int32_t number = IntValue(*list[i], "number");
    numbers.push_back(number);
    maximum = std::max<std::int64_t>(maximum, number);
    by_number[number].push_back(i);
  }
  for (std::size_t i = 0; i < list.size(); ++i) {
    if ((IntValue(*list[i], "entryFlags") & kLinkedBit) != 0) continue;
    // A settled number (and with it every entry renumbered away from it) is gone from the map.
    auto group = by_number.find(numbers[i]);
    if (group == by_number.end()) continue;
    for (std::size_t j : group->second) {
      if (j != i) list[j]->set("number", plist::Value(++maximum));
    }
    by_number.erase(group);
  }
  account.set("numberCount", plist::Value(maximum));
}

// Version 4 and older stored amounts unrounded.
void RoundAmounts(plist::Dictionary& account) {
  if (plist::Value* balance = account.find("startingBalance")) {
    *balance = plist::Value(RoundAmount(balance->doubleValue()));
  }
  for (plist::Dictionary* entry : Dictionaries(OptionalArray(account, "entries", {}))) {
    if (plist::Value* amount = entry->find("amount")) {
      *amount = plist::Value(RoundAmount(amount->doubleValue()));
    }
    plist::Value* split = entry->find("split");
    plist::Dictionary* split_dict = split == nullptr ? nullptr : split->asDictionary();
    if (split_dict == nullptr) continue;
    plist::Array* amounts = OptionalArray(*split_dict, "amounts", {});
    if (amounts == nullptr) continue;
    for (plist::Value& amount : *amounts) amount = plist::Value(RoundAmount(amount.doubleValue()));
  }
}

// Version 6 and older stored dates as seconds since 1970.
void ConvertDates(plist::Dictionary& account) {
  for (plist::Dictionary* entry : Dictionaries(OptionalArray(account, "entries", {}))) {
    ConvertDateKey(*entry, "date");
  }
  for (plist::Dictionary* schedule :
       Dictionaries(OptionalArray(account, "schedules", kBadSchedulesOnLoad))) {
    ConvertDateKey(*schedule, "date");
    if (plist::Array* committed = OptionalArray(*schedule, "committedDates", {})) {
      for (plist::Value& date : *committed) date = SecondsToDateNumber(date);
    }
    // The until date is converted only when "repeatUntil" itself reads 3: the test looks at the
    // key it converts, not at "repeatUntilType", so in practice an until date stays as it was.
    // Files converted this way exist, so the rule is kept.
    if (IntValue(*schedule, "repeatUntil") == 3) ConvertDateKey(*schedule, "repeatUntil");
  }
  for (plist::Dictionary* summary :
       Dictionaries(OptionalArray(account, "accountSummaries", kBadSummariesOnLoad))) {
    ConvertDateKey(*summary, "startDate");
    ConvertDateKey(*summary, "endDate");
  }
}

// The ten slots of a legacy split as line items; empty slots are dropped, and a debit's items
// take the negative sign that amounts carry today.
plist::Array LegacySplitLineItems(const plist::Dictionary& split_dict, bool debit) {
  const ZELMAccountEntrySplit split(&split_dict);
  plist::Array items;
  for (int slot = 0; slot < kLegacySplitSlots; ++slot) {
    const std::string& description = split.GetDescription(slot);
    const std::string& to_from = split.GetToFrom(slot);
    const double amount = debit ? -std::fabs(split.GetAmount(slot)) : split.GetAmount(slot);
    if (description.empty() && to_from.empty() && amount == 0.0) continue;
    plist::Dictionary item;
    if (!description.empty()) item.append("description", plist::Value(description));
    if (!to_from.empty()) item.append("toFrom", plist::Value(to_from));
    item.append("amount", plist::Value(amount));
    items.emplace_back(std::move(item));
  }
  return items;
}

// Version 7 and older: a transfer took its direction from bit 3 and kept its partner under
// "transferEntry" / "transferAccount"; splits had ten fixed slots.
void ConvertTransfersAndSplits(plist::Dictionary& entry, bool is_schedule) {
  std::int32_t flags = IntValue(entry, "entryFlags");
  if ((flags & kLinkedBit) != 0) {
    flags = (flags & kSendingSideBit) != 0 ? (flags | kDebitBit) & ~kDepositBit
                                           : (flags | kDepositBit) & ~kDebitBit;
    entry.set("entryFlags", plist::Value(flags));
    // A schedule's partner entry does not exist yet; only the account is carried over.
    if (!is_schedule) CopyKey(entry, "transferEntry", "linkedEntry");
    CopyKey(entry, "transferAccount", "linkedAccount");
    entry.set("type", plist::Value(-1));
  }
  const plist::Value* split = entry.find("split");
  if (split == nullptr || !split->isDictionary()) return;
  plist::Array items = LegacySplitLineItems(*split->asDictionary(), (flags & kDebitBit) != 0);
  entry.set("splitLineItems", plist::Value(std::move(items)));
}

void ConvertTransfersAndSplits(plist::Dictionary& account) {
  for (plist::Dictionary* entry :
       Dictionaries(OptionalArray(account, "entries", kBadEntriesOnLoad))) {
    ConvertTransfersAndSplits(*entry, false);
  }
  for (plist::Dictionary* schedule :
       Dictionaries(OptionalArray(account, "schedules", kBadSchedulesInTransfers))) {
    ConvertTransfersAndSplits(*schedule, true);
  }
}

}  // namespace

std::filesystem::path UpgradePreferencesPath() {
  const std::lock_guard lock(preferences_path_mutex);
  return preferences_path;
}

std::optional<std::filesystem::path> SetUpgradePreferencesPath(
    std::optional<std::filesystem::path> path) {
  const std::lock_guard lock(preferences_path_mutex);
  std::optional<std::filesystem::path> previous;
  if (!preferences_path.empty()) previous = std::move(preferences_path);
  preferences_path = path ? std::move(*path) : std::filesystem::path();
  return previous;
}

plist::Dictionary& ZELMAccount::UpdateAccountDictionary(plist::Dictionary& dict) {
  const plist::Value* version = dict.find("version");
  const std::int32_t number = version == nullptr ? 0 : version->intValue();
  if (number != 0) {
    UpdateAccountDictionary(dict, number);
  } else {
    UpdateAccountDictionaryFromNil(dict);
  }
  dict.set("version", plist::Value(kCurrentVersion));
  return dict;
}

plist::Dictionary& ZELMAccount::UpdateAccountDictionaryFromNil(plist::Dictionary& dict) {
  dict.set("version", plist::Value(kCurrentVersion));
  dict.set("number", plist::Value(-1));
  return dict;
}

plist::Dictionary& ZELMAccount::UpdateAccountDictionary(plist::Dictionary& dict,
                                                        std::int32_t version) {
  if (version <= 1) RenumberDuplicateEntries(dict);
  if (version <= 2) ConvertTypesAndFlags(dict);
  if (version <= 3) RepairEntryNumbers(dict);
  if (version <= 4) RoundAmounts(dict);
  if (version <= 6) ConvertDates(dict);
  if (version <= 7) ConvertTransfersAndSplits(dict);
  dict.set("version", plist::Value(kCurrentVersion));
  return dict;
}

}  // namespace folvant
