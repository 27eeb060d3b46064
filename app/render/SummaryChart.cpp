#include "app/render/SummaryChart.h"

#include <algorithm>
#include <cmath>

#include "app/render/AmountText.h"
#include "folvant/platform/CivilDate.h"
#include "folvant/values/LVCurrency.h"
#include "folvant/values/ZELMUtilities.h"

namespace folvant::render {
namespace {

std::string IsoDay(const platform::LocalTime& time) {
  return platform::FormatIsoDate(NSCalendarDateToDateNumber(time));
}

}  // namespace

std::string PeriodLabel(const ZELMPeriodSubtotal& period, std::int32_t periodStyle) {
  const std::string start = IsoDay(period.startDate);
  switch (periodStyle) {
    case 0:
    case 1:
      return start;
    case 2:
      return start.substr(0, 7);
    case 4:
      return start.substr(0, 4);
    default:
      return start + ".." + IsoDay(period.endDate);
  }
}

void FlattenCategories(const ZELMCategorySubtotals& nodes, int depth,
                       std::vector<std::pair<const ZELMCategorySubtotal*, int>>& out) {
  std::vector<const ZELMCategorySubtotal*> sorted;
  for (const auto& node : nodes) sorted.push_back(&node);
  std::stable_sort(sorted.begin(), sorted.end(), [](const auto* a, const auto* b) {
    return std::fabs(a->amount) > std::fabs(b->amount);
  });
  for (const auto* node : sorted) {
    out.emplace_back(node, depth);
    FlattenCategories(node->children, depth + 1, out);
  }
}

std::vector<PeriodValues> PeriodValuesOf(const SummaryResult& result) {
  std::vector<PeriodValues> values;
  for (const auto& p : result.report.subtotals) {
    values.push_back({PeriodLabel(p, result.period), p.depositsTotal, -p.debitsTotal, p.total});
  }
  return values;
}

std::string SummaryResultSvg(const SummaryResult& result) {
  const AmountWriter amounts(*result.currency);
  std::vector<CategoryValue> categories;
  std::vector<std::pair<const ZELMCategorySubtotal*, int>> nodes;
  FlattenCategories(result.report.categoriesSubtotals, 0, nodes);
  for (const auto& [node, depth] : nodes) {
    categories.push_back(
        {node->subtotalName.empty() ? "(none)" : node->subtotalName, node->amount, depth});
  }
  ChartTitles titles;
  titles.title = result.title + ": " + IsoDay(result.report.startDate) + " to " +
                 IsoDay(result.report.endDate);
  return SummarySvg(result.period == 5 ? std::vector<PeriodValues>{} : PeriodValuesOf(result),
                    categories, [&](double a) { return amounts.Text(a); }, titles);
}

}  // namespace folvant::render
