// Cost per register row of what the front ends draw: an amount written in a currency by
// AmountWriter against the currency's formatter, the plain two-decimal text of JSON, and the
// width and padding of table cells (ASCII and not).
#include <benchmark/benchmark.h>

#include <cstddef>
#include <random>
#include <string>
#include <vector>

#include "app/render/AmountText.h"
#include "app/render/Table.h"
#include "folvant/values/LVCurrency.h"
#include "folvant/values/ZELMNumberFormatter.h"

namespace {

using folvant::LVCurrency;
using folvant::render::Align;
using folvant::render::AmountWriter;

// Register-like amounts: whole cents from -100,000.00 to 100,000.00.
const std::vector<double>& Amounts() {
  static const std::vector<double> amounts = [] {
    std::mt19937_64 random(42);
    std::uniform_int_distribution<long long> cents(-10'000'000, 10'000'000);
    std::vector<double> out(4096);
    for (double& amount : out) amount = static_cast<double>(cents(random)) / 100;
    return out;
  }();
  return amounts;
}

const std::vector<std::string>& Cells(bool ascii) {
  static const std::vector<std::string> plain = {"Groceries", "Shell Oil 0042", "Rent",
                                                 "Transfer to Savings account", "ATM"};
  static const std::vector<std::string> wide = {"Caf\u00E9 Cr\u00E8me", "\u6771\u4EAC\u30AC\u30B9",
                                                "Ni\u00F1o's", "Stra\u00DFenbahn M\u00FCnchen",
                                                "e\u0301clair"};
  return ascii ? plain : wide;
}

void BM_AmountWriter(benchmark::State& state) {
  const LVCurrency currency("EUR", "Euro", "\u20AC", false, ".", ",", 1, 0);
  const AmountWriter writer(currency);
  std::string buffer(writer.maxSize(), '\0');
  const std::vector<double>& amounts = Amounts();
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(writer.Write(amounts[i++ % amounts.size()], buffer.data()));
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_AmountWriter);

void BM_Formatter(benchmark::State& state) {
  const LVCurrency currency("EUR", "Euro", "\u20AC", false, ".", ",", 1, 0);
  const auto formatter = currency.formatter();
  const std::vector<double>& amounts = Amounts();
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(formatter->stringForObjectValue(amounts[i++ % amounts.size()]));
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Formatter);

void BM_PlainAmount(benchmark::State& state) {
  char buffer[folvant::render::kPlainAmountSize];
  const std::vector<double>& amounts = Amounts();
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        folvant::render::WritePlainAmount(amounts[i++ % amounts.size()], buffer));
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_PlainAmount);

// Half-cent amounts take the exact path through the shortest decimal form.
void BM_AmountWriterHalfCents(benchmark::State& state) {
  const LVCurrency currency("USD", "US Dollar", "$", true, ",", ".", 1, 0);
  const AmountWriter writer(currency);
  std::string buffer(writer.maxSize(), '\0');
  const std::vector<double>& amounts = Amounts();
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(writer.Write(amounts[i++ % amounts.size()] + 0.005, buffer.data()));
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_AmountWriterHalfCents);

void BM_DisplayWidth(benchmark::State& state) {
  const std::vector<std::string>& cells = Cells(state.range(0) != 0);
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(folvant::render::DisplayWidth(cells[i++ % cells.size()]));
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DisplayWidth)->ArgName("ascii")->Arg(1)->Arg(0);

// One cell padded or cut to 16 columns, appended to a line that is reused.
void BM_AppendPadded(benchmark::State& state) {
  const std::vector<std::string>& cells = Cells(state.range(0) != 0);
  std::string line;
  std::size_t i = 0;
  for (auto _ : state) {
    line.clear();
    folvant::render::AppendPadded(line, cells[i++ % cells.size()], 16, Align::kLeft);
    benchmark::DoNotOptimize(line.data());
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_AppendPadded)->ArgName("ascii")->Arg(1)->Arg(0);

}  // namespace

BENCHMARK_MAIN();
