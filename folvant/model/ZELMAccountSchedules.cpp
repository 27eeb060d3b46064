// The account's list of scheduled entries: loading and saving it, numbering schedules, and
// asking which occurrences fall due.

#include <algorithm>
#include <limits>
#include <optional>

#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountSchedule.h"
#include "folvant/platform/Clock.h"
#include "folvant/platform/Log.h"

namespace folvant {

const ZELMAccount::ScheduleList* ZELMAccount::InitSchedules(const plist::Value* array) {
  if (array == nullptr) return nullptr;
  const plist::Array* elements = array->asArray();
  if (elements == nullptr) {
    ZELMLog("Invalid theArray supplied to ZELMAccount:InitSchedules");
    return nullptr;
  }
  ScheduleList schedules;
  schedules.reserve(elements->size());
  for (const plist::Value& element : *elements) {
    const plist::Dictionary* dict = element.asDictionary();
    if (dict == nullptr) {
      ZELMLog("Invalid theDictionary encountered in ZELMAccount:InitSchedules");
      continue;
    }
    schedules.push_back(std::make_shared<ZELMAccountSchedule>(dict));
  }
  SetSchedules(std::move(schedules));
  return &schedules_;
}

void ZELMAccount::SetSchedules(std::optional<ScheduleList> schedules) {
  if (!schedules) return;
  schedules_ = std::move(*schedules);
  // The list never holds nullptr, so that no operation has to test for it.
  std::erase(schedules_, nullptr);
  for (const auto& schedule : schedules_) schedule->SetAccount(this);
}

void ZELMAccount::AddSchedule(std::shared_ptr<ZELMAccountSchedule> schedule) {
  if (!schedule) return;
  schedule->SetAccount(this);
  schedules_.push_back(std::move(schedule));
}

void ZELMAccount::RemoveSchedule(const ZELMAccountSchedule* schedule) {
  if (schedule == nullptr) return;
  std::erase_if(schedules_, [schedule](const auto& s) { return s.get() == schedule; });
}

std::shared_ptr<ZELMAccountSchedule> ZELMAccount::ScheduleForNumber(std::int32_t number) const {
  for (const auto& schedule : schedules_) {
    if (schedule->GetNumber() == number) return schedule;
  }
  return nullptr;
}

std::int32_t ZELMAccount::NextAvailableScheduleNumber() const {
  std::int32_t highest = -1;
  for (const auto& schedule : schedules_) {
    highest = std::max(highest, schedule->GetNumber());
  }
  // Wraps as the stored 32-bit number would, rather than overflowing.
  return static_cast<std::int32_t>(std::int64_t{highest} + 1);
}

bool ZELMAccount::HasPendingScheduledEntries() const {
  const platform::LocalTime now = platform::Now();
  for (const auto& schedule : schedules_) {
    if (schedule->NumberOfEntriesDueByDate(now, 1) > 0) return true;
  }
  return false;
}

std::int64_t ZELMAccount::numberOfPendingScheduledEntriesForDate(
    std::optional<platform::LocalTime> date) const {
  if (!date) return 0;
  std::int64_t count = 0;
  for (const auto& schedule : schedules_) {
    count += schedule->NumberOfEntriesDueByDate(*date, std::numeric_limits<std::int64_t>::max());
  }
  return count;
}

}  // namespace folvant
