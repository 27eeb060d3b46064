#include "folvant/model/ZELMAccountSchedule.h"

#include <algorithm>
#include <chrono>

#include "folvant/platform/Log.h"

namespace folvant {
namespace {

// The platform's distant future (4001-01-01) in seconds since 1970: the sort key of a schedule
// without a next date, far above any date number.
constexpr std::int64_t kDistantFutureSeconds = 64'092'211'200;

constexpr int ThreeWayInt(std::int64_t a, std::int64_t b) { return a < b ? -1 : a > b ? 1 : 0; }

// Reads an integer key: any stored value converts, as Foundation's intValue does.
void ReadInteger(const plist::Dictionary& dict, std::string_view key, std::string_view missing,
                 std::int32_t& field) {
  const plist::Value* value = dict.find(key);
  if (value == nullptr) {
    ZELMLog(missing);
    return;
  }
  field = value->intValue();
}

}  // namespace

ZELMAccountSchedule::ZELMAccountSchedule(const plist::Dictionary* dict) : ZELMAccountEntry(dict) {
  if (dict == nullptr) return;
  ReadInteger(*dict, "repeatIntervalType", "No repeatIntervalType found for schedule.",
              repeatIntervalType_);
  ReadInteger(*dict, "repeatInterval", "No repeatInterval found for schedule.", repeatInterval_);
  ReadInteger(*dict, "repeatUntilType", "No repeatUntilType found for schedule.", repeatUntilType_);
  ReadInteger(*dict, "repeatUntil", "No repeatUntil found for schedule.", repeatUntil_);
  if (const plist::Value* value = dict->find("usePrecedingFriday")) {
    usePrecedingFriday_ = value->boolValue();
  } else {
    ZELMLog("No usePrecedingFriday found for schedule.");
  }
  // Kept in stored order, neither sorted nor checked: a list saved out of order stays so until
  // the next AddCommittedDate sorts it.
  if (const plist::Value* value = dict->find("committedDates")) {
    if (const plist::Array* dates = value->asArray()) {
      committedDates_.reserve(dates->size());
      for (const plist::Value& date : *dates) committedDates_.push_back(date.intValue());
    } else {
      ZELMLog("committedDates is in the wrong format for schedule.");
    }
  } else {
    ZELMLog("No committedDates found for schedule.");
  }
}

std::shared_ptr<ZELMAccountEntry> ZELMAccountSchedule::copy() const {
  const plist::Dictionary dict = asDictionary();
  auto schedule = std::make_shared<ZELMAccountSchedule>(&dict);
  schedule->SetAccount(GetAccount());
  return schedule;
}

plist::Dictionary ZELMAccountSchedule::asDictionary() const {
  plist::Dictionary dict = ZELMAccountEntry::asDictionary();
  dict.set("repeatIntervalType", plist::Value(repeatIntervalType_));
  dict.set("repeatInterval", plist::Value(repeatInterval_));
  dict.set("repeatUntilType", plist::Value(repeatUntilType_));
  dict.set("repeatUntil", plist::Value(repeatUntil_));
  dict.set("usePrecedingFriday", plist::Value(usePrecedingFriday_));
  plist::Array dates;
  dates.reserve(committedDates_.size());
  for (std::int32_t date : committedDates_) dates.emplace_back(date);
  dict.set("committedDates", plist::Value(std::move(dates)));
  return dict;
}

schedule::Rule ZELMAccountSchedule::Rule() const {
  return schedule::Rule{GetDate(),        repeatIntervalType_, repeatInterval_,
                        repeatUntilType_, repeatUntil_,        usePrecedingFriday_};
}

std::vector<std::shared_ptr<ZELMAccountEntry>> ZELMAccountSchedule::EntriesForDates(
    const std::vector<std::int32_t>& dates) const {
  std::vector<std::shared_ptr<ZELMAccountEntry>> entries;
  if (dates.empty()) return entries;
  // Each occurrence is EntryForDate of its date; the stored form they share is built once.
  const plist::Dictionary dict = asDictionary();
  entries.reserve(dates.size());
  for (std::int32_t date : dates) {
    auto entry = std::make_shared<ZELMAccountEntry>(&dict);
    entry->SetAccount(GetAccount());
    entry->SetDate(date);
    entries.push_back(std::move(entry));
  }
  return entries;
}

std::vector<std::shared_ptr<ZELMAccountEntry>> ZELMAccountSchedule::EntriesFromDate(
    std::int32_t from, std::int32_t to) const {
  return EntriesForDates(schedule::OccurrencesBetween(Rule(), committedDates_, from, to));
}

std::vector<std::shared_ptr<ZELMAccountEntry>> ZELMAccountSchedule::EvaluateForDate(
    platform::LocalTime date) const {
  return EntriesForDates(schedule::DueDates(Rule(), committedDates_, date));
}

std::int64_t ZELMAccountSchedule::NumberOfEntriesDueByDate(platform::LocalTime date,
                                                           std::int64_t limit) const {
  return schedule::CountDueDates(Rule(), committedDates_, date, limit);
}

std::int32_t ZELMAccountSchedule::NextEntryDate() const {
  return schedule::NextDate(Rule(), committedDates_);
}

std::shared_ptr<ZELMAccountEntry> ZELMAccountSchedule::EntryForDate(std::int32_t date) const {
  std::shared_ptr<ZELMAccountEntry> entry = ZELMAccountEntry::entryWithEntry(*this);
  entry->SetDate(date);
  return entry;
}

bool ZELMAccountSchedule::DateIsCommitted(std::int32_t date) const {
  return schedule::DateIsCommitted(committedDates_, date);
}

void ZELMAccountSchedule::AddCommittedDate(std::int32_t date) {
  if (!DateIsCommitted(date)) committedDates_.push_back(date);
  std::sort(committedDates_.begin(), committedDates_.end());
}

void ZELMAccountSchedule::CommitEntry(const ZELMAccountEntry* entry) {
  if (entry != nullptr) AddCommittedDate(entry->GetDate());
}

std::int32_t ZELMAccountSchedule::GetLastCommittedDate() const {
  if (committedDates_.empty()) return 0;
  return *std::max_element(committedDates_.begin(), committedDates_.end());
}

platform::LocalTime ZELMAccountSchedule::AdjustDateForUsePrecedingFriday(
    platform::LocalTime date) const {
  if (!usePrecedingFriday_) return date;
  const schedule::Day day = schedule::DayFromLocalTime(date);
  return date - std::chrono::days{day - schedule::PrecedingFriday(day)};
}

int ZELMAccountSchedule::NextEntryDateIsGreaterThan(const ZELMAccountSchedule& other) const {
  const auto key = [](const ZELMAccountSchedule& s) -> std::int64_t {
    const std::int32_t next = s.NextEntryDate();
    return next == -1 ? kDistantFutureSeconds : next;
  };
  if (const int c = ThreeWayInt(key(*this), key(other))) return c;
  return ThreeWayInt(GetNumber(), other.GetNumber());
}

int ZELMAccountSchedule::NextEntryDateIsGreaterThan_Reversed(
    const ZELMAccountSchedule& other) const {
  return -NextEntryDateIsGreaterThan(other);
}

}  // namespace folvant
