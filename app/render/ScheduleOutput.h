#pragma once

#include <cstdint>
#include <optional>

#include "app/render/Json.h"
#include "folvant/book/Schedules.h"

namespace folvant::render {

// The JSON shapes of scheduled entries, as `folvant schedule ... --json` and the web pages give
// them.

// YYYY-MM-DD, or null.
Json JsonDateOrNull(const std::optional<std::int32_t>& date);
// {number, start, next, rule, recurrence: {every, unit, on, start, until, times,
// weekendsBefore}, repeatIntervalType, repeatInterval, repeatUntilType, repeatUntil,
// usePrecedingFriday, committed, check, type, category, toFrom, description, notes, amount,
// taxDeductible, splits, transferTo}
Json ScheduleRowJson(const ScheduleRow& row);
// {account, schedule, date, check, type, category, toFrom, description, amount, transferTo}
Json DueOccurrenceJson(const DueOccurrence& due);
// {account, schedule, entry, checkNumber, date, amount, toFrom, next, linked}
Json EnteredOccurrenceJson(const EnteredOccurrence& entered);
// {account, number, rule, next}
Json ScheduleChangeJson(const ScheduleChange& change);

}  // namespace folvant::render
