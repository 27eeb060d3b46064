// Property-list speed and memory on an account of 1,000,000 register entries.
//
//   plist_bench                         Google Benchmark: write and read, both formats, with
//                                       the resident size of the loaded tree as a counter
//   plist_bench --write-files=DIR       writes DIR/account.bin and DIR/account.xml
//   plist_bench --time-file=FILE        times loading and saving one of those files once
//                                       (processor seconds) and prints "name value" lines, with
//                                       the loaded tree's size (scripts/bench-plist)
//   --entries=N                         a smaller or larger account
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "bench/BenchRandom.h"
#include "folvant/platform/plist/PropertyList.h"

namespace {

using bench::Random;
using folvant::plist::Array;
using folvant::plist::Data;
using folvant::plist::Date;
using folvant::plist::Dictionary;
using folvant::plist::Format;
using folvant::plist::Value;

std::size_t g_entries = 1'000'000;

// ~500 payee and description texts of varied length and script.
std::vector<std::string> TextPool() {
  static const char* const kFirst[] = {
      "Grocer",   "Café Müller", "City Water", "Shell",      "Amazon Marketplace",
      "Żabka",    "東京ストア",  "Landlord",   "Dr. Okafor", "Hardware & Garden",
      "Pharmacy", "Électricité", "Bookshop",   "Gym",        "Insurance Co.",
      "Bakery",   "Cinema",      "Taxi",       "Airline",    "Payroll",
      "Школа",    "Restaurant",  "Florist",    "Vet Clinic", "Mobile Phone"};
  static const char* const kSecond[] = {"",
                                        " #1024",
                                        " weekly",
                                        " - monthly payment",
                                        " (refund)",
                                        " downtown branch",
                                        " online order 55-2291",
                                        " gift for Ana's birthday",
                                        " shared with roommates, split three ways",
                                        " <annual> & renewal",
                                        " 🎉",
                                        " Q3",
                                        " card ending 4421",
                                        " cash back",
                                        " deposit 2/2",
                                        " tip included",
                                        " fuel",
                                        " late fee",
                                        " ✓ reconciled by phone",
                                        " north"};
  std::vector<std::string> pool;
  for (const char* first : kFirst) {
    for (const char* second : kSecond) pool.push_back(std::string(first) + second);
  }
  return pool;
}

Value MakeAccount(std::size_t entry_count) {
  Random random(20080229);
  const std::vector<std::string> texts = TextPool();
  static const char* const kTypes[] = {"Check",    "Deposit", "Debit",    "ATM",
                                       "Transfer", "Fee",     "Interest", "Payroll"};
  std::vector<std::string> categories;
  for (const char* parent : {"Home", "Food", "Car", "Health", "Travel", "Income"}) {
    for (const char* child : {"", ":Utilities", ":Groceries", ":Dining", ":Fuel", ":Repairs",
                              ":Insurance", ":Gifts", ":Books", ":Salary"}) {
      categories.push_back(std::string(parent) + child);
    }
  }

  Array entries;
  entries.reserve(entry_count);
  for (std::size_t i = 0; i < entry_count; ++i) {
    const auto year = static_cast<std::int32_t>(1990 + i * 35 / entry_count);
    Dictionary entry{
        {"date", year * 10000 + static_cast<std::int32_t>(1 + random.Below(12)) * 100 +
                     static_cast<std::int32_t>(1 + random.Below(28))},
        {"number", static_cast<std::int64_t>(i + 1)},
        {"checkNumber", random.Below(4) == 0 ? static_cast<std::int32_t>(1000 + i % 9000) : -1},
        {"entryFlags", static_cast<std::int32_t>(random.Below(8))},
        {"type", kTypes[random.Below(8)]},
        {"category", categories[random.Below(static_cast<std::uint32_t>(categories.size()))]},
        {"amount",
         static_cast<double>(static_cast<std::int32_t>(random.Below(200000)) - 150000) / 100},
        {"description", texts[random.Below(static_cast<std::uint32_t>(texts.size()))]},
        {"toFrom", texts[random.Below(static_cast<std::uint32_t>(texts.size()))]},
        {"cleared", random.Below(3) != 0},
    };
    if (random.Below(10) == 0) {
      entry.append("notes", texts[random.Below(static_cast<std::uint32_t>(texts.size()))] +
                                " - note " + std::to_string(i % 97));
    }
    if (random.Below(20) == 0) {
      Array splits;
      for (int s = 0; s < 2; ++s) {
        splits.push_back(Dictionary{
            {"amount", static_cast<double>(random.Below(10000)) / 100},
            {"category", categories[random.Below(static_cast<std::uint32_t>(categories.size()))]},
            {"description", texts[random.Below(static_cast<std::uint32_t>(texts.size()))]},
        });
      }
      entry.append("splitLineItems", std::move(splits));
    }
    entries.push_back(std::move(entry));
  }

  Dictionary account;
  account.append("version", 8);
  account.append("name", "Everyday Checking");
  account.append("accountNumber", "0042-7781-993");
  account.append("creationDate", Date{225979200});
  account.append("icon", Data(2048, 0x5A));
  account.append("types", Array{"Check", "Deposit", "Debit", "ATM", "Transfer", "Fee"});
  account.append("inactiveTypes", Array{});
  for (int k = 0; static_cast<int>(account.size()) < 70; ++k) {
    const std::string key = "setting" + std::to_string(k);
    switch (k % 4) {
      case 0:
        account.append(key, k);
        break;
      case 1:
        account.append(key, k % 3 == 0);
        break;
      case 2:
        account.append(key, texts[static_cast<std::size_t>(k) % texts.size()]);
        break;
      default:
        account.append(key, k * 0.25);
        break;
    }
  }
  account.append("entries", std::move(entries));
  return account;
}

const Value& Account() {
  static const Value account = MakeAccount(g_entries);
  return account;
}

const std::string& Bytes(Format format) {
  static const std::string binary = Write(Account(), Format::kBinary);
  static const std::string xml = Write(Account(), Format::kXml);
  return format == Format::kBinary ? binary : xml;
}

// Resident memory of the process in bytes.
std::int64_t Resident() {
  long pages = 0;
  long resident = 0;
  if (FILE* statm = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(statm, "%ld %ld", &pages, &resident) != 2) resident = 0;
    std::fclose(statm);
  }
  return static_cast<std::int64_t>(resident) * sysconf(_SC_PAGESIZE);
}

// Bytes the allocator has handed out and not taken back: unlike the resident size, this
// falls again when memory is freed, so it shows exactly what a loaded tree holds.
std::int64_t InUse() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<std::int64_t>(info.uordblks + info.hblkhd);
}

void BM_Write(benchmark::State& state, Format format) {
  const Value& account = Account();
  std::size_t size = 0;
  for (auto _ : state) {
    const std::string bytes = Write(account, format);
    size = bytes.size();
    benchmark::DoNotOptimize(bytes.data());
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * g_entries));
  state.counters["file_MB"] = static_cast<double>(size) / 1e6;
}

void BM_Read(benchmark::State& state, Format format) {
  const std::string& bytes = Bytes(format);
  double resident_mb = 0;
  double tree_mb = 0;
  for (auto _ : state) {
    const std::int64_t resident = Resident();
    const std::int64_t in_use = InUse();
    folvant::Expected<Value, folvant::plist::ReadError> value = folvant::plist::Read(bytes);
    // Freed memory stays with the allocator, so only the first load shows in the resident size.
    resident_mb = std::max(resident_mb, static_cast<double>(Resident() - resident) / 1e6);
    tree_mb = static_cast<double>(InUse() - in_use) / 1e6;
    if (!value) state.SkipWithError(value.error().what.c_str());
    benchmark::DoNotOptimize(&value);
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * g_entries));
  state.counters["file_MB"] = static_cast<double>(bytes.size()) / 1e6;
  state.counters["resident_MB"] = resident_mb;
  state.counters["tree_MB"] = tree_mb;
}

BENCHMARK_CAPTURE(BM_Write, binary, Format::kBinary)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK_CAPTURE(BM_Read, binary, Format::kBinary)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK_CAPTURE(BM_Write, xml, Format::kXml)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK_CAPTURE(BM_Read, xml, Format::kXml)->Unit(benchmark::kMillisecond)->Iterations(3);

std::string ReadAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Processor seconds spent in `f`: on a shared machine these vary far less than elapsed time.
template <typename F>
double Seconds(F&& f) {
  timespec start{};
  timespec end{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &start);
  f();
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &end);
  return static_cast<double>(end.tv_sec - start.tv_sec) +
         static_cast<double>(end.tv_nsec - start.tv_nsec) / 1e9;
}

// Loads and saves one file in this (fresh) process: memory freed by an earlier load would be
// reused without page faults and flatter the second figure.
int TimeFile(const std::string& path) {
  const Format format = path.ends_with(".bin") ? Format::kBinary : Format::kXml;
  const char* name = format == Format::kBinary ? "bin" : "xml";
  std::string bytes = ReadAll(path);
  const std::int64_t resident = Resident();
  const std::int64_t in_use = InUse();
  folvant::Expected<Value, folvant::plist::ReadError> value = Value();
  // XML is parsed inside the file's bytes, as ReadFile does.
  const double load = Seconds([&] {
    value = format == Format::kXml ? folvant::plist::ReadInPlace(std::move(bytes))
                                   : folvant::plist::Read(bytes);
  });
  if (!value) {
    std::fprintf(stderr, "%s: %s at %zu\n", name, value.error().what.c_str(), value.error().offset);
    return 1;
  }
  std::printf("ours_%s_load %.3f\nours_%s_resident_mb %.0f\n", name, load, name,
              static_cast<double>(Resident() - resident) / 1e6);
  if (format == Format::kBinary) {
    std::printf("ours_bin_tree_mb %.0f\n", static_cast<double>(InUse() - in_use) / 1e6);
  }
  std::string written;
  const double save = Seconds([&] { written = Write(*value, format); });
  std::printf("ours_%s_save %.3f\n", name, save);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  std::string write_directory;
  std::string time_file;
  std::vector<char*> rest;
  for (int i = 0; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument.starts_with("--entries=")) {
      g_entries = std::strtoull(argv[i] + 10, nullptr, 10);
    } else if (argument.starts_with("--write-files=")) {
      write_directory = argument.substr(14);
    } else if (argument.starts_with("--time-file=")) {
      time_file = argument.substr(12);
    } else {
      rest.push_back(argv[i]);
    }
  }
  if (!time_file.empty()) return TimeFile(time_file);
  if (!write_directory.empty()) {
    for (const Format format : {Format::kBinary, Format::kXml}) {
      std::ofstream(write_directory + (format == Format::kBinary ? "/account.bin" : "/account.xml"),
                    std::ios::binary)
          << Bytes(format);
    }
    return 0;
  }
  int count = static_cast<int>(rest.size());
  benchmark::Initialize(&count, rest.data());
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
