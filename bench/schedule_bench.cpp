// Scheduled entries: counting what falls due across an account's schedules, and finding the
// next date of a schedule that started long ago.

#include <benchmark/benchmark.h>

#include <memory>

#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountSchedule.h"
#include "folvant/model/ZELMAccountScheduleCalendar.h"

namespace folvant {
namespace {

constexpr std::int32_t kToday = 20261122;

platform::LocalTime On(std::int32_t n) {
  return schedule::LocalTimeFromDay(schedule::DayFromDateNumber(n));
}

// 1,000 schedules of every kind started about 20 years ago, each with up to 300 of its own
// occurrences committed (the first ones, as a register that is kept up to date for a while).
std::unique_ptr<ZELMAccount> MixedAccount() {
  static constexpr std::int32_t kKinds[] = {1, 2, 3, 4, 5, 6, 10, 11, 20, 21, 22, 23, 24};
  auto account = std::make_unique<ZELMAccount>();
  for (int i = 0; i < 1000; ++i) {
    auto s = std::make_shared<ZELMAccountSchedule>();
    s->SetNumber(account->NextAvailableScheduleNumber());
    s->SetDate(20060101 + (i % 12) * 100 + i % 28);
    s->SetRepeatIntervalType(kKinds[i % std::size(kKinds)]);
    s->SetRepeatInterval(1 + i % 3);
    s->SetUsePrecedingFriday(i % 2 == 0);
    s->SetAmount(-10.0 - i);
    s->SetDescription("Schedule");
    const schedule::Rule rule{s->GetDate(),
                              s->GetRepeatIntervalType(),
                              s->GetRepeatInterval(),
                              schedule::kUntilForever,
                              0,
                              s->GetUsePrecedingFriday()};
    int committed = 0;
    for (std::int32_t date : schedule::OccurrencesBetween(rule, {}, s->GetDate(), kToday)) {
      if (++committed > 300) break;
      s->AddCommittedDate(date);
    }
    account->AddSchedule(std::move(s));
  }
  return account;
}

void BM_PendingCountOverMixedSchedules(benchmark::State& state) {
  const std::unique_ptr<ZELMAccount> account = MixedAccount();
  const platform::LocalTime today = On(kToday);
  std::int64_t pending = 0;
  for (auto _ : state) {
    pending = account->numberOfPendingScheduledEntriesForDate(today);
    benchmark::DoNotOptimize(pending);
  }
  state.counters["pending"] = static_cast<double>(pending);
  state.counters["schedules"] = static_cast<double>(account->GetSchedules().size());
}
BENCHMARK(BM_PendingCountOverMixedSchedules)->Unit(benchmark::kMillisecond);

// A daily schedule from 1 January 1970 with its first `range(0)` days committed.
void BM_NextEntryDateDailySince1970(benchmark::State& state) {
  ZELMAccountSchedule s;
  s.SetDate(19700101);
  s.SetRepeatIntervalType(schedule::kRepeatDaily);
  const schedule::Day first = schedule::DayFromDateNumber(19700101);
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    s.AddCommittedDate(schedule::DateNumberFromDay(first + i));
  }
  std::int32_t next = 0;
  for (auto _ : state) {
    next = s.NextEntryDate();
    benchmark::DoNotOptimize(next);
  }
  state.counters["next"] = next;
}
BENCHMARK(BM_NextEntryDateDailySince1970)
    ->Arg(0)
    ->Arg(365)
    ->Arg(20'000)
    ->Unit(benchmark::kMicrosecond);

// The entries themselves: one weekly schedule from 2006 with nothing committed (about 1,100
// occurrences built as entries).
void BM_EvaluateForDateBuildsEntries(benchmark::State& state) {
  ZELMAccountSchedule s;
  s.SetDate(20060105);
  s.SetRepeatIntervalType(schedule::kRepeatWeekly);
  s.SetAmount(-25.0);
  s.SetDescription("Allowance");
  const platform::LocalTime today = On(kToday);
  std::size_t count = 0;
  for (auto _ : state) {
    count = s.EvaluateForDate(today).size();
    benchmark::DoNotOptimize(count);
  }
  state.counters["entries"] = static_cast<double>(count);
}
BENCHMARK(BM_EvaluateForDateBuildsEntries)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace folvant

BENCHMARK_MAIN();
