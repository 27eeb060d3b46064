// Speed of the statement readers on generated bank statements (bench/make_statements) of
// 10,000, 100,000 and 1,000,000 transactions: an OFX 1.x download (SGML), an OFX 2.x download
// (XML) and a QIF register. Each is read into memory once, outside the timing; a timed run is
// what the import review does with the bytes before it looks at the book: ZELMOFXImport::Read
// and parse(), or a ZELMQIFImport made from the text and parse().
//
//   make_statements DIR 10000 100000 1000000
//   import_bench --data=DIR                        every form at the three sizes
//   import_bench --data=DIR --sizes=10000,50000    other sizes
//   import_bench --data=DIR --benchmark_filter='^ofx_v1/100000/'
//
// A benchmark whose file is missing stops with an error naming it. The default DIR is
// build/bench-import-data (where scripts/bench-import writes them).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/exchange/ZELMOFXImport.h"
#include "folvant/exchange/ZELMQIFImport.h"

namespace {

std::string g_data = "build/bench-import-data";
std::vector<std::int64_t> g_sizes = {10'000, 100'000, 1'000'000};

// The file's bytes; false when it cannot be read.
bool ReadAll(const std::string& path, std::string& bytes) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  return true;
}

void SetCounters(benchmark::State& state, std::size_t bytes, std::size_t records) {
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                          static_cast<std::int64_t>(bytes));
  state.counters["records"] = static_cast<double>(records);
}

// `version` is "v1" or "v2".
void BM_OFX(benchmark::State& state, const char* version) {
  const std::string path =
      g_data + "/stmt-" + std::to_string(state.range(0)) + "-" + version + ".ofx";
  std::string bytes;
  if (!ReadAll(path, bytes)) {
    state.SkipWithError(("cannot read " + path + "; run make_statements first").c_str());
    return;
  }
  std::size_t records = 0;
  for (auto _ : state) {
    auto reader = folvant::ZELMOFXImport::Read(bytes);
    if (!reader) {
      state.SkipWithError(reader.error().what.c_str());
      return;
    }
    // As the import review sets it up for a download.
    (*reader)->SetDecimalSeparator(".");
    (*reader)->SetThousandsSeparator(",");
    folvant::OFXParseResult result = (*reader)->parse();
    records = result.accounts.empty() ? 0 : result.accounts.front().entries.size();
    benchmark::DoNotOptimize(result);
  }
  if (records != static_cast<std::size_t>(state.range(0))) {
    state.SkipWithError(("read " + std::to_string(records) + " records of " + path).c_str());
    return;
  }
  SetCounters(state, bytes.size(), records);
}

void BM_QIF(benchmark::State& state) {
  const std::string path = g_data + "/stmt-" + std::to_string(state.range(0)) + ".qif";
  std::string bytes;
  if (!ReadAll(path, bytes)) {
    state.SkipWithError(("cannot read " + path + "; run make_statements first").c_str());
    return;
  }
  std::size_t records = 0;
  for (auto _ : state) {
    folvant::ZELMQIFImport reader{std::string_view(bytes)};
    // The format the import review picks for dates such as 07/14/2026.
    reader.SetDateFormat("%m/%d/%Y");
    folvant::ZELMQIFImport::Result result = reader.parse();
    records = result.entries.size();
    benchmark::DoNotOptimize(result);
  }
  if (records != static_cast<std::size_t>(state.range(0))) {
    state.SkipWithError(("read " + std::to_string(records) + " records of " + path).c_str());
    return;
  }
  SetCounters(state, bytes.size(), records);
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<char*> rest;
  for (int i = 0; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument.starts_with("--data=")) {
      g_data = argument.substr(7);
    } else if (argument.starts_with("--sizes=")) {
      g_sizes.clear();
      for (std::string_view list = argument.substr(8); !list.empty();) {
        const std::size_t comma = std::min(list.find(','), list.size());
        const std::int64_t size =
            std::strtoll(std::string(list.substr(0, comma)).c_str(), nullptr, 10);
        if (size <= 0) {
          std::fprintf(
              stderr,
              "import_bench: --sizes takes numbers of transactions, e.g. --sizes=10000,100000\n");
          return 2;
        }
        g_sizes.push_back(size);
        list.remove_prefix(std::min(comma + 1, list.size()));
      }
    } else {
      rest.push_back(argv[i]);
    }
  }
  for (const std::int64_t size : g_sizes) {
    const auto ofx_v1 = [](benchmark::State& state) { BM_OFX(state, "v1"); };
    const auto ofx_v2 = [](benchmark::State& state) { BM_OFX(state, "v2"); };
    for (benchmark::internal::Benchmark* b : {benchmark::RegisterBenchmark("ofx_v1", ofx_v1),
                                              benchmark::RegisterBenchmark("ofx_v2", ofx_v2),
                                              benchmark::RegisterBenchmark("qif", BM_QIF)}) {
      b->Arg(size)->Unit(benchmark::kMillisecond)->UseRealTime();
    }
  }
  int count = static_cast<int>(rest.size());
  benchmark::Initialize(&count, rest.data());
  if (benchmark::ReportUnrecognizedArguments(count, rest.data())) return 2;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
