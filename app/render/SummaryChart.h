#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "app/render/Chart.h"
#include "folvant/book/Summaries.h"

namespace folvant::render {

// What the summary command and the web pages show of a report, drawn the same way.

// A period as the report's period length names it: "2026-03-01" (days, weeks), "2026-03"
// (months), "2026" (years), else "first..last".
std::string PeriodLabel(const ZELMPeriodSubtotal& period, std::int32_t periodStyle);
// The category tree depth first, the largest amount first among siblings, with each node's depth.
void FlattenCategories(const ZELMCategorySubtotals& nodes, int depth,
                       std::vector<std::pair<const ZELMCategorySubtotal*, int>>& out);
// The report's periods as the charts take them.
std::vector<PeriodValues> PeriodValuesOf(const SummaryResult& result);
// The report's SVG: the period chart (none for a report of one period) and the category chart,
// titled with the report's title and dates.
std::string SummaryResultSvg(const SummaryResult& result);

}  // namespace folvant::render
