// Filter speed on an account of 1,000,000 register entries (today pinned to 15 June 2008):
// the register view's filter (text search, a date range, a resolved test), a smart folder of
// two groups, filterAndTotalEntries, and case-insensitive "contains" on ASCII text by the
// prepared condition against case folding through ICU for every entry.
//
//   filter_bench [--entries=N] [Google Benchmark flags]
#include <benchmark/benchmark.h>
#include <unicode/unistr.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/filters/ZELMFilter.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "bench/BenchController.h"
#include "folvant/model/ZELMAccountsController.h"
#include "folvant/platform/Clock.h"

namespace {

using folvant::ZELMAccount;
using folvant::ZELMAccountEntry;
using folvant::ZELMAccountEntryCategory;
using folvant::ZELMFilter;
using folvant::ZELMFilterCondition;
using folvant::ZELMFilterConditionGroup;
using EntryList = ZELMAccount::EntryList;

std::size_t g_entries = 1'000'000;

using bench::Random;


// Payees and descriptions: mostly ASCII, a few in other scripts, as registers hold them.
std::vector<std::string> TextPool(bool ascii_only) {
  static const char* const kFirst[] = {
      "Grocer",   "City Water", "Shell",       "Amazon Marketplace", "Landlord", "Dr. Okafor",
      "Pharmacy", "Bookshop",   "Gym",         "Insurance Co.",      "Bakery",   "Cinema",
      "Taxi",     "Airline",    "Payroll",     "Restaurant",         "Florist",  "Vet Clinic",
      "Hardware", "Mobile",     "Café Müller", "Électricité",        "Школа",    "東京ストア"};
  static const char* const kSecond[] = {"",          " #1024",   " weekly", " - monthly payment",
                                        " (refund)", " Main St", " ONLINE", " 2008"};
  std::vector<std::string> pool;
  for (const char* first : kFirst) {
    for (const char* second : kSecond) {
      std::string text = std::string(first) + second;
      bool ascii = true;
      for (char c : text) ascii = ascii && static_cast<unsigned char>(c) < 0x80;
      if (ascii || !ascii_only) pool.push_back(std::move(text));
    }
  }
  return pool;
}

struct Book {
  bench::Controller controller{false};
  ZELMAccount account;
  EntryList asciiEntries;  // a second register whose texts are all ASCII

  Book() {
    folvant::platform::PinClock(std::chrono::local_days{std::chrono::year{2008} / 6 / 15} +
                                std::chrono::hours{12});
    account.setAccountsController(&controller);
    const std::vector<std::string> texts = TextPool(false), ascii = TextPool(true);
    Random random(20080615);
    EntryList entries;
    entries.reserve(g_entries);
    asciiEntries.reserve(g_entries);
    for (std::size_t i = 0; i < g_entries; ++i) {
      auto entry = std::make_shared<ZELMAccountEntry>();
      entry->SetNumber(static_cast<std::int32_t>(i + 1));
      entry->SetDate(static_cast<std::int32_t>(
          (2000 + random.Below(10)) * 10000 + (1 + random.Below(12)) * 100 + 1 + random.Below(28)));
      entry->SetAmount((static_cast<double>(random.Below(200000)) - 150000.0) / 100.0);
      entry->SetDescription(texts[random.Below(static_cast<std::uint32_t>(texts.size()))]);
      entry->SetToFrom(texts[random.Below(static_cast<std::uint32_t>(texts.size()))]);
      entry->SetType(static_cast<std::int32_t>(random.Below(13)));
      entry->SetCategory(static_cast<std::int32_t>(
          random.Below(static_cast<std::uint32_t>(controller.categoryCount()))));
      entry->SetCleared(random.Below(4) == 0);
      entry->SetTaxDeductible(random.Below(10) == 0);
      entries.push_back(entry);
    }
    account.SetEntries(std::move(entries));
    for (std::size_t i = 0; i < g_entries; ++i) {
      auto plain = std::make_shared<ZELMAccountEntry>();
      plain->SetDescription(ascii[random.Below(static_cast<std::uint32_t>(ascii.size()))]);
      asciiEntries.push_back(std::move(plain));
    }
  }
};

Book& TheBook() {
  static Book book;
  return book;
}

// The register view: "General" search for "market", 2005 through 2008, unresolved only.
void BM_RegisterViewFilter(benchmark::State& state) {
  ZELMAccount& account = TheBook().account;
  const folvant::plist::Value text("market");
  account.setEntryFilterData(&text);
  account.setEntryDateFilterType(61);
  account.setEntryDateFilterStartDate(20050101);
  account.setEntryDateFilterEndDate(20081231);
  account.setEntryResolvedFilterType(81);
  std::size_t shown = 0;
  for (auto _ : state) {
    const EntryList entries = account.entryFilteredEntries();
    shown = entries.size();
    benchmark::DoNotOptimize(entries.data());
  }
  state.counters["shown"] = static_cast<double>(shown);
}
BENCHMARK(BM_RegisterViewFilter)->Unit(benchmark::kMillisecond);

// (Category contains "auto" and amount below -50) or (this year and tax-deductible).
std::shared_ptr<ZELMFilter> TwoGroupSmartFolder() {
  auto filter = std::make_shared<ZELMFilter>();
  auto narrow = std::make_shared<ZELMFilterConditionGroup>();
  narrow->addConditionWithCategory(ZELMFilterCondition::kCategoryCategory, 1, 6, "auto");
  narrow->addConditionWithCategory(ZELMFilterCondition::kCategoryAmount, 1, 4, -50.0);
  auto add = std::make_shared<ZELMFilterConditionGroup>();
  add->setLogic(ZELMFilterConditionGroup::kLogicAdds);
  add->addConditionWithCategory(ZELMFilterCondition::kCategoryDate, 1, 63, folvant::plist::Array{});
  add->addConditionWithCategory(ZELMFilterCondition::kCategoryTaxDeductible, 1, 1, true);
  filter->addConditionGroup(narrow);
  filter->addConditionGroup(add);
  return filter;
}

void BM_SmartFolderTwoGroups(benchmark::State& state) {
  const EntryList& entries = TheBook().account.GetEntries();
  const auto filter = TwoGroupSmartFolder();
  std::size_t shown = 0;
  for (auto _ : state) {
    const EntryList result = filter->filterEntries(entries);
    shown = result.size();
    benchmark::DoNotOptimize(result.data());
  }
  state.counters["shown"] = static_cast<double>(shown);
}
BENCHMARK(BM_SmartFolderTwoGroups)->Unit(benchmark::kMillisecond);

void BM_FilterAndTotalEntries(benchmark::State& state) {
  const EntryList& entries = TheBook().account.GetEntries();
  const auto filter = TwoGroupSmartFolder();
  for (auto _ : state) benchmark::DoNotOptimize(filter->filterAndTotalEntries(entries));
}
BENCHMARK(BM_FilterAndTotalEntries)->Unit(benchmark::kMillisecond);

// "Contains" on ASCII descriptions: the prepared condition (folded once, ASCII compare)...
// The argument is the number of entries searched: 10,000 fit in the cache and show the cost of
// the comparison itself; at 1,000,000 both ways also wait for memory.
void BM_ContainsPrepared(benchmark::State& state) {
  const EntryList entries(TheBook().asciiEntries.begin(),
                          TheBook().asciiEntries.begin() + state.range(0));
  const ZELMFilterCondition condition(ZELMFilterCondition::kCategoryDescription, 6, 1, "MARKET");
  std::size_t found = 0;
  for (auto _ : state) {
    const EntryList result = condition.filterEntries(entries);
    found = result.size();
    benchmark::DoNotOptimize(result.data());
  }
  state.counters["found"] = static_cast<double>(found);
}
BENCHMARK(BM_ContainsPrepared)->Arg(10'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

// The floor under both: reading each description once, without comparing anything.
void BM_ReadDescriptionsOnly(benchmark::State& state) {
  const EntryList entries(TheBook().asciiEntries.begin(),
                          TheBook().asciiEntries.begin() + state.range(0));
  for (auto _ : state) {
    std::size_t sum = 0;
    for (const auto& entry : entries) {
      const std::string& text = entry->GetDescription();
      sum += text.size() + static_cast<unsigned char>(text[text.size() / 2]);
    }
    benchmark::DoNotOptimize(sum);
  }
}
BENCHMARK(BM_ReadDescriptionsOnly)->Arg(10'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

// ...against folding every description through ICU and searching the folded text.
void BM_ContainsThroughIcu(benchmark::State& state) {
  const EntryList entries(TheBook().asciiEntries.begin(),
                          TheBook().asciiEntries.begin() + state.range(0));
  const icu::UnicodeString needle = icu::UnicodeString::fromUTF8("MARKET").foldCase();
  std::size_t found = 0;
  for (auto _ : state) {
    found = 0;
    for (const auto& entry : entries) {
      const std::string& text = entry->GetDescription();
      icu::UnicodeString folded = icu::UnicodeString::fromUTF8(text);
      found += folded.foldCase().indexOf(needle) >= 0;
    }
    benchmark::DoNotOptimize(found);
  }
  state.counters["found"] = static_cast<double>(found);
}
BENCHMARK(BM_ContainsThroughIcu)->Arg(10'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], "--entries=", 10) == 0) {
      g_entries = std::strtoull(argv[i] + 10, nullptr, 10);
    }
  }
  benchmark::Initialize(&argc, argv);
  TheBook();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
