// Summary speed on an account of 1,000,000 register entries over ten years (2000-2009): a
// monthly report (120 periods), a daily one (3,652 periods) and, for comparison, the monthly
// report made by scanning the whole date-sorted list for every period and reading each period's
// balances from the account.
//
//   summary_bench [--entries=N] [Google Benchmark flags]
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountEntryType.h"
#include "bench/BenchController.h"
#include "folvant/model/ZELMAccountsController.h"
#include "folvant/platform/CivilDate.h"
#include "folvant/platform/Clock.h"
#include "folvant/summaries/ZELMAccountSummary.h"
#include "folvant/values/LVCurrency.h"
#include "folvant/values/ZELMUtilities.h"

namespace {

using folvant::ZELMAccount;
using folvant::ZELMAccountEntry;
using folvant::ZELMAccountEntryCategory;
using folvant::ZELMAccountSummary;
using EntryList = ZELMAccount::EntryList;

std::size_t g_entries = 1'000'000;

using bench::Random;


struct Book {
  bench::Controller controller{true};
  ZELMAccount account;

  Book() {
    folvant::platform::PinClock(std::chrono::local_days{std::chrono::year{2010} / 6 / 15} +
                                std::chrono::hours{12});
    account.setAccountsController(&controller);
    account.setCurrency(controller.currency());
    static const char* const kTexts[] = {"Grocer",  "City Water", "Shell",   "Landlord",
                                         "Payroll", "Pharmacy",   "Bakery",  "Cinema",
                                         "Airline", "Hardware",   "Florist", "Mobile"};
    Random random(20080615);
    EntryList entries;
    entries.reserve(g_entries);
    const folvant::platform::Day first = folvant::platform::DayFromDateNumber(20000101);
    for (std::size_t i = 0; i < g_entries; ++i) {
      auto entry = std::make_shared<ZELMAccountEntry>();
      entry->SetNumber(static_cast<std::int32_t>(i + 1));
      entry->SetDate(folvant::platform::DateNumberFromDay(first + random.Below(3653)));
      const double amount = (static_cast<double>(random.Below(200000)) - 150000.0) / 100.0;
      entry->SetAmount(amount);
      entry->SetIsDebit(amount < 0);
      entry->SetIsDeposit(amount >= 0);
      entry->SetDescription(kTexts[random.Below(12)]);
      entry->SetToFrom(kTexts[random.Below(12)]);
      entry->SetType(static_cast<std::int32_t>(random.Below(13)));
      entry->SetCategory(static_cast<std::int32_t>(random.Below(controller.categoryCount())));
      entry->SetCleared(random.Below(4) == 0);
      entry->SetTaxDeductible(random.Below(10) == 0);
      entry->SetVoid(random.Below(50) == 0);
      if (random.Below(10) == 0) {
        entry->addSplitLineItemWithCategory(
            static_cast<std::int32_t>(random.Below(controller.categoryCount())), "Part", "",
            amount / 2);
        entry->addSplitLineItemWithCategory(
            static_cast<std::int32_t>(random.Below(controller.categoryCount())), "", "",
            amount - amount / 2);
      }
      entries.push_back(entry);
    }
    account.SetEntries(std::move(entries));
  }
};

Book& TheBook() {
  static Book book;
  return book;
}

std::shared_ptr<ZELMAccountSummary> WholeDecade(std::int32_t periodStyle) {
  Book& book = TheBook();
  auto summary = std::make_shared<ZELMAccountSummary>();
  summary->setDateRangeStyle(20);
  summary->setStartDate(20000101);
  summary->setEndDate(20091231);
  summary->setSubtotalPeriodStyle(periodStyle);
  summary->setEntries(book.account.GetAllEntries());
  summary->setAccounts({&book.account});
  return summary;
}

void Report(benchmark::State& state, std::int32_t periodStyle) {
  const auto summary = WholeDecade(periodStyle);
  std::size_t periods = 0;
  for (auto _ : state) {
    const folvant::ZELMSummaryReport report = summary->Summary();
    periods = report.subtotals.size();
    benchmark::DoNotOptimize(report.total);
  }
  state.counters["periods"] = static_cast<double>(periods);
}

void BM_MonthlyReport(benchmark::State& state) { Report(state, 2); }
BENCHMARK(BM_MonthlyReport)->Unit(benchmark::kMillisecond);

void BM_DailyReport(benchmark::State& state) { Report(state, 0); }
BENCHMARK(BM_DailyReport)->Unit(benchmark::kMillisecond);

// The monthly report the slow way: every period scans the whole sorted list for its entries
// and reads its two balances from the account (each a walk over the register).
void BM_MonthlyReportScanningPerPeriod(benchmark::State& state) {
  const auto summary = WholeDecade(2);
  EntryList sorted = summary->entries();
  std::erase_if(sorted, [](const auto& e) { return !e->IsDebit() && !e->IsDeposit(); });
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const auto& a, const auto& b) { return a->DateIsGreaterThan(*b) < 0; });
  for (auto _ : state) {
    double total = 0.0;
    for (int year = 2000; year <= 2009; ++year) {
      for (int month = 1; month <= 12; ++month) {
        const std::int32_t first = year * 10000 + month * 100 + 1;
        const std::int32_t last =
            year * 10000 + month * 100 + folvant::platform::MonthLength(year, month);
        EntryList inside;
        for (const auto& entry : sorted) {
          if (entry->GetDate() >= first && entry->GetDate() <= last) inside.push_back(entry);
        }
        const auto period = summary->SubtotalEntries(
            inside, folvant::DateNumberToNSCalendarDate(first),
            folvant::DateNumberToNSCalendarDate(last) + std::chrono::seconds(86399));
        total += period.total;
      }
    }
    benchmark::DoNotOptimize(total);
  }
}
BENCHMARK(BM_MonthlyReportScanningPerPeriod)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], "--entries=", 10) == 0) {
      g_entries = std::strtoull(argv[i] + 10, nullptr, 10);
      for (int j = i; j + 1 < argc; ++j) argv[j] = argv[j + 1];
      --argc;
      --i;
    }
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
