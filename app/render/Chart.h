#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace folvant::render {

// The charts of a report, drawn from plain numbers so that the summary command and the web
// pages share them.

// One period: the money in and out (both 0 or more) and the net of the two.
struct PeriodValues {
  std::string label;  // "2026-01", "2026-03-01"
  double deposits = 0.0;
  double debits = 0.0;
  double net = 0.0;
};

// One category row: its amount (negative for spending) and its depth in the tree.
struct CategoryValue {
  std::string label;
  double amount = 0.0;
  int depth = 0;
};

// How an amount reads ("$ 1,234.50").
using AmountFormat = std::function<std::string(double)>;

struct ChartTitles {
  std::string title;  // the document's heading
  std::string periods = "By period";
  std::string categories = "By category";
};

// An SVG document: the period chart (deposits as bars up, debits as bars down, the net as a
// line) above a horizontal bar chart of the categories. A chart without rows is left out.
std::string SummarySvg(const std::vector<PeriodValues>& periods,
                       const std::vector<CategoryValue>& categories, const AmountFormat& amount,
                       const ChartTitles& titles);

// The period chart for a terminal `width` columns wide: one line per period, debits as a bar
// to the left of an axis and deposits to the right, each with its amount.
std::string PeriodChartText(const std::vector<PeriodValues>& periods, const AmountFormat& amount,
                            std::size_t width);

}  // namespace folvant::render
