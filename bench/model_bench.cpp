// Account-model speed and memory on a generated account of 1,000,000 register entries:
// building the account from its stored form and writing it back, balances, running balances,
// check numbering, register sorting, and loading and saving the account file end to end
// (binary property list). The resident size per loaded entry is reported as a counter of
// BM_LoadedEntryMemory.
//
//   model_bench [--entries=N] [Google Benchmark flags]
//   model_bench --write-file=PATH [--entries=N]   writes the generated account (binary)
//   model_bench --time-file=PATH                  in a fresh process: loads PATH into objects,
//                                                 saves it to PATH.out, prints the seconds of
//                                                 each and the resident bytes per entry
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountFile.h"
#include "folvant/platform/plist/PropertyList.h"

namespace {

using folvant::ZELMAccount;
using folvant::ZELMAccountEntry;
namespace plist = folvant::plist;

std::size_t g_entries = 1'000'000;

std::vector<std::string> Texts() {
  static const char* const kNames[] = {"Grocer",        "Shell",        "City Water",  "Landlord",
                                       "Payroll",       "Pharmacy",     "Café Müller", "Bookshop",
                                       "Insurance Co.", "Mobile Phone", "Gym",         "Bakery"};
  static const char* const kTails[] = {
      "", " weekly", " #2291", " - monthly payment", " downtown branch", " (refund)"};
  std::vector<std::string> texts;
  for (const char* name : kNames) {
    for (const char* tail : kTails) texts.push_back(std::string(name) + tail);
  }
  return texts;
}

// A register as a household builds it over 35 years: mostly debits, a quarter of them checks,
// some deposits, a few void entries, notes and split entries.
std::unique_ptr<ZELMAccount> MakeAccount(std::size_t count) {
  auto account = std::make_unique<ZELMAccount>();
  account->SetName("Everyday Checking");
  account->SetNumber(1);
  account->SetPassword("");
  account->SetStartingBalance(1500.0);
  std::mt19937 random(20080229);
  const std::vector<std::string> texts = Texts();
  auto text = [&] { return texts[random() % texts.size()]; };
  std::int32_t check = 1000;
  for (std::size_t i = 0; i < count; ++i) {
    auto entry = std::make_shared<ZELMAccountEntry>();
    entry->SetNumber(account->NextAvailableNumber());
    const auto year = static_cast<std::int32_t>(1990 + i * 35 / count);
    entry->SetDate(year * 10000 + static_cast<std::int32_t>(1 + random() % 12) * 100 +
                   static_cast<std::int32_t>(1 + random() % 28));
    const bool deposit = random() % 5 == 0;
    entry->SetIsDeposit(deposit);
    entry->SetIsDebit(!deposit);
    entry->SetAmount((deposit ? 1.0 : -1.0) * static_cast<double>(random() % 100000) / 100.0);
    if (!deposit && random() % 4 == 0) {
      entry->SetIsCheck(true);
      entry->SetCheckNumber(check++);
    }
    entry->SetType(static_cast<std::int32_t>(random() % 13));
    entry->SetCategory(static_cast<std::int32_t>(random() % 60));
    entry->SetDescription(text());
    entry->SetToFrom(text());
    entry->SetCleared(random() % 3 != 0 ? 1 : 0);
    entry->SetVoid(random() % 200 == 0);
    if (random() % 10 == 0) entry->SetNotes(text() + " note");
    if (random() % 20 == 0) {
      entry->addSplitLineItemWithCategory(3, text(), text(), -10.0);
      entry->addSplitLineItemWithCategory(4, text(), text(), -5.5);
    }
    account->AddEntry(entry);
  }
  return account;
}

// The account as the program holds it: loaded from its file, entries side by side in memory.
ZELMAccount& Shared() {
  static std::shared_ptr<ZELMAccount> account = [] {
    const std::string bytes =
        folvant::AccountFileBytes(*MakeAccount(g_entries), plist::Format::kBinary);
    return folvant::AccountFromFile(folvant::ReadAccountBytes(bytes).value(), nullptr);
  }();
  return *account;
}

// The same register built entry by entry in memory (as by an import), entries scattered.
ZELMAccount& SharedBuilt() {
  static std::unique_ptr<ZELMAccount> account = MakeAccount(g_entries);
  return *account;
}

const plist::Dictionary& SharedStored() {
  static const plist::Dictionary stored = Shared().asDictionary();
  return stored;
}

const std::filesystem::path& SharedFile() {
  static const std::filesystem::path path = [] {
    auto file = std::filesystem::temp_directory_path() /
                ("folvant_model_bench_" + std::to_string(getpid()) + ".plist");
    std::ofstream(file, std::ios::binary) << plist::Write(SharedStored(), plist::Format::kBinary);
    std::atexit([] { std::filesystem::remove(SharedFile()); });
    return file;
  }();
  return path;
}

void Shuffle(ZELMAccount& account) {
  // Through the public store: take the list, shuffle it, put it back.
  ZELMAccount::EntryList entries = account.GetEntries();
  std::shuffle(entries.begin(), entries.end(), std::mt19937(7));
  account.SetEntries(std::move(entries));
}

double ResidentBytes() {
  long pages = 0, resident = 0;
  if (FILE* statm = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(statm, "%ld %ld", &pages, &resident) != 2) resident = 0;
    std::fclose(statm);
  }
  return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

void BM_AccountFromDictionary(benchmark::State& state) {
  const plist::Dictionary& stored = SharedStored();
  for (auto _ : state) {
    auto account = std::make_unique<ZELMAccount>(&stored);
    benchmark::DoNotOptimize(account->GetEntries().data());
    state.PauseTiming();  // freeing 1M entries is not part of the load
    account.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(g_entries));
}

void BM_AccountAsDictionary(benchmark::State& state) {
  const ZELMAccount& account = Shared();
  for (auto _ : state) {
    plist::Dictionary stored = account.asDictionary();
    benchmark::DoNotOptimize(stored.size());
    state.PauseTiming();
    { plist::Dictionary gone = std::move(stored); }
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(g_entries));
}

void BM_GetBalance(benchmark::State& state) {
  const ZELMAccount& account = Shared();
  for (auto _ : state) benchmark::DoNotOptimize(account.GetBalance());
}

void BM_GetBalanceOfBuiltAccount(benchmark::State& state) {
  const ZELMAccount& account = SharedBuilt();
  for (auto _ : state) benchmark::DoNotOptimize(account.GetBalance());
}

void BM_CacheRunningBalances(benchmark::State& state) {
  ZELMAccount& account = Shared();
  for (auto _ : state) account.CacheRunningBalances();
}

void BM_NextAvailableCheckNumber(benchmark::State& state) {
  const ZELMAccount& account = Shared();
  for (auto _ : state) benchmark::DoNotOptimize(account.NextAvailableCheckNumber());
}

// Each round starts from a shuffled register, as after an import.
void SortBench(benchmark::State& state, std::int32_t key) {
  ZELMAccount& account = Shared();
  for (auto _ : state) {
    state.PauseTiming();
    Shuffle(account);
    state.ResumeTiming();
    account.SortBy(key, false);
  }
}

void BM_SortByDate(benchmark::State& state) { SortBench(state, 1); }
void BM_SortByDescription(benchmark::State& state) { SortBench(state, 3); }

void BM_LoadAccountFile(benchmark::State& state) {
  const std::filesystem::path& path = SharedFile();
  for (auto _ : state) {
    auto account = folvant::AccountFromFile(folvant::ReadAccountFile(path).value(), nullptr);
    benchmark::DoNotOptimize(account.get());
    state.PauseTiming();
    account.reset();
    state.ResumeTiming();
  }
}

void BM_SaveAccountFile(benchmark::State& state) {
  const ZELMAccount& account = Shared();
  const auto path = SharedFile().string() + ".out";
  for (auto _ : state) {
    const std::string bytes = folvant::AccountFileBytes(account, plist::Format::kBinary);
    std::ofstream(path, std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }
  std::filesystem::remove(path);
}

// Resident memory of the loaded objects alone: measured after the property-list tree is freed
// and the allocator has given its pages back.
void BM_LoadedEntryMemory(benchmark::State& state) {
  const std::filesystem::path& path = SharedFile();
  double per_entry = 0.0;
  for (auto _ : state) {
    malloc_trim(0);
    const double before = ResidentBytes();
    auto account = folvant::AccountFromFile(folvant::ReadAccountFile(path).value(), nullptr);
    malloc_trim(0);
    per_entry = (ResidentBytes() - before) / static_cast<double>(account->GetEntries().size());
    state.PauseTiming();
    account.reset();
    state.ResumeTiming();
  }
  state.counters["bytes_per_entry"] = per_entry;
}

constexpr auto kMs = benchmark::kMillisecond;
BENCHMARK(BM_AccountFromDictionary)->Unit(kMs);
BENCHMARK(BM_AccountAsDictionary)->Unit(kMs);
BENCHMARK(BM_GetBalance)->Unit(kMs);
BENCHMARK(BM_GetBalanceOfBuiltAccount)->Unit(kMs);
BENCHMARK(BM_CacheRunningBalances)->Unit(kMs);
BENCHMARK(BM_NextAvailableCheckNumber)->Unit(kMs);
BENCHMARK(BM_SortByDate)->Unit(kMs);
BENCHMARK(BM_SortByDescription)->Unit(kMs);
BENCHMARK(BM_LoadAccountFile)->Unit(kMs);
BENCHMARK(BM_SaveAccountFile)->Unit(kMs);
BENCHMARK(BM_LoadedEntryMemory)->Unit(kMs)->Iterations(1);

double Seconds(std::chrono::steady_clock::time_point since) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

// Processor time of the whole process (user and system, page faults included): on a shared
// machine the wall time also counts the time others ran.
double ProcessorSeconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// The program's own load and save, once each, on a heap that nothing else has used yet.
int TimeFile(const std::filesystem::path& path) {
  using Clock = std::chrono::steady_clock;
  const double before = ResidentBytes();
  const double load_cpu_start = ProcessorSeconds();
  const auto load_start = Clock::now();
  auto file = folvant::ReadAccountFile(path);
  std::shared_ptr<ZELMAccount> account =
      file ? folvant::AccountFromFile(std::move(*file), nullptr) : nullptr;
  if (account == nullptr) {
    std::fprintf(stderr, "%s: not an account file\n", path.c_str());
    return 1;
  }
  const double load_seconds = Seconds(load_start);
  const double load_cpu = ProcessorSeconds() - load_cpu_start;
  malloc_trim(0);
  const double per_entry =
      (ResidentBytes() - before) / static_cast<double>(account->GetEntries().size());
  const double save_cpu_start = ProcessorSeconds();
  const auto save_start = Clock::now();
  {
    const std::string bytes = folvant::AccountFileBytes(*account, plist::Format::kBinary);
    std::ofstream out(path.string() + ".out", std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }
  const double save_seconds = Seconds(save_start);
  const double save_cpu = ProcessorSeconds() - save_cpu_start;
  std::printf(
      "entries %zu\nload_seconds %.3f (processor %.3f)\nsave_seconds %.3f (processor %.3f)\n"
      "bytes_per_entry %.0f\n",
      account->GetEntries().size(), load_seconds, load_cpu, save_seconds, save_cpu, per_entry);
  std::filesystem::remove(path.string() + ".out");
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  std::string write_file, time_file;
  for (int i = 1; i < argc; ++i) {
    const std::string_view arg = argv[i];
    if (arg.starts_with("--entries=")) {
      g_entries = std::strtoull(argv[i] + 10, nullptr, 10);
    } else if (arg.starts_with("--write-file=")) {
      write_file = arg.substr(13);
    } else if (arg.starts_with("--time-file=")) {
      time_file = arg.substr(12);
    } else {
      continue;
    }
    // Hide our flags from Google Benchmark.
    for (int j = i; j + 1 < argc; ++j) argv[j] = argv[j + 1];
    --argc;
    --i;
  }
  if (!time_file.empty()) return TimeFile(time_file);
  if (!write_file.empty()) {
    std::ofstream(write_file, std::ios::binary)
        << plist::Write(SharedStored(), plist::Format::kBinary);
    return 0;
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
