#include "app/render/Chart.h"

#include <algorithm>
#include <cmath>

#include "app/render/Svg.h"
#include "app/render/Table.h"

namespace folvant::render {
namespace {

constexpr double kWidth = 760;
constexpr double kMargin = 20;
constexpr double kCharWidth = 7;  // a 12-pixel character, roughly, for laying out labels
constexpr double kPlotHeight = 240;
constexpr double kRowHeight = 22;

double Finite(double value) { return std::isfinite(value) ? value : 0.0; }

// A step for about `parts` grid lines over `span`: 1, 2, 2.5 or 5 times a power of ten.
double NiceStep(double span, int parts) {
  if (!(span > 0)) return 1;
  const double raw = span / parts;
  const double power = std::pow(10.0, std::floor(std::log10(raw)));
  for (double factor : {1.0, 2.0, 2.5, 5.0, 10.0}) {
    if (raw <= factor * power) return factor * power;
  }
  return 10 * power;
}

double TextWidth(const std::string& text) { return static_cast<double>(DisplayWidth(text)) * kCharWidth; }

// Legend entry: a swatch and its name; returns the x after it.
double Legend(Svg& svg, double x, double y, const char* cssClass, const char* name) {
  svg.Rect(x, y - 9, 10, 10, cssClass);
  svg.Text(x + 14, y, name, Svg::Anchor::kStart, "muted");
  return x + 14 + TextWidth(name) + 16;
}

double DrawPeriods(Svg& svg, double top, const std::vector<PeriodValues>& periods,
                   const AmountFormat& amount, const std::string& heading) {
  double up = 0, down = 0;
  for (const PeriodValues& p : periods) {
    up = std::max({up, Finite(p.deposits), Finite(p.net)});
    down = std::max({down, Finite(p.debits), -Finite(p.net)});
  }
  const double step = NiceStep(up + down, 6);
  const double high = std::ceil(up / step) * step;
  const double low = -std::ceil(down / step) * step;
  const double span = high - low > 0 ? high - low : step;

  double labelWidth = 0;
  for (double t = low; t <= high + step / 2; t += step) {
    labelWidth = std::max(labelWidth, TextWidth(amount(t)));
  }
  const double left = kMargin + labelWidth + 8;
  const double right = kWidth - kMargin;
  const double plotTop = top + 30;
  const auto y = [&](double value) { return plotTop + (high - value) / span * kPlotHeight; };

  svg.Text(kMargin, top + 12, heading, Svg::Anchor::kStart, "heading");
  double legend = std::max(kMargin + TextWidth(heading) * 1.3 + 24, right - 260);
  legend = Legend(svg, legend, top + 12, "deposit", "Deposits");
  legend = Legend(svg, legend, top + 12, "debit", "Debits");
  svg.Line(legend, top + 8, legend + 10, top + 8, "net");
  svg.Text(legend + 14, top + 12, "Net", Svg::Anchor::kStart, "muted");

  svg.OpenGroup("grid-lines");
  for (double t = low; t <= high + step / 2; t += step) {
    svg.Line(left, y(t), right, y(t), "grid");
    svg.Text(left - 6, y(t) + 4, amount(t), Svg::Anchor::kEnd, "muted");
  }
  svg.CloseGroup();

  const double slot = (right - left) / static_cast<double>(periods.size());
  const double bar = std::min(40.0, slot * 0.6);
  // Labels no closer than their own width allows.
  double widest = 0;
  for (const PeriodValues& p : periods) widest = std::max(widest, TextWidth(p.label));
  const auto every = static_cast<std::size_t>(std::max(1.0, std::ceil((widest + 10) / slot)));

  std::string points;
  svg.OpenGroup("periods");
  for (std::size_t i = 0; i < periods.size(); ++i) {
    const PeriodValues& p = periods[i];
    const double center = left + slot * (static_cast<double>(i) + 0.5);
    svg.Rect(center - bar / 2, y(Finite(p.deposits)), bar, y(0) - y(Finite(p.deposits)),
             "deposit", p.label + ": deposits " + amount(p.deposits));
    svg.Rect(center - bar / 2, y(0), bar, y(-Finite(p.debits)) - y(0), "debit",
             p.label + ": debits " + amount(-p.debits));
    points += (points.empty() ? "" : " ") + Svg::Number(center) + "," + Svg::Number(y(Finite(p.net)));
    if (i % every == 0) {
      svg.Text(center, plotTop + kPlotHeight + 16, p.label, Svg::Anchor::kMiddle, "muted");
    }
  }
  svg.CloseGroup();
  svg.Line(left, y(0), right, y(0), "axis");
  svg.OpenGroup("net-line");
  if (periods.size() > 1) svg.Polyline(points, "net");
  for (std::size_t i = 0; i < periods.size(); ++i) {
    const double center = left + slot * (static_cast<double>(i) + 0.5);
    svg.Circle(center, y(Finite(periods[i].net)), 3, "net-point",
               periods[i].label + ": net " + amount(periods[i].net));
  }
  svg.CloseGroup();
  return plotTop + kPlotHeight + 24;
}

double DrawCategories(Svg& svg, double top, const std::vector<CategoryValue>& categories,
                      const AmountFormat& amount, const std::string& heading) {
  double labelWidth = 0, amountWidth = 0, largest = 0;
  for (const CategoryValue& c : categories) {
    labelWidth = std::max(labelWidth, TextWidth(c.label) + c.depth * 14);
    amountWidth = std::max(amountWidth, TextWidth(amount(c.amount)));
    largest = std::max(largest, std::fabs(Finite(c.amount)));
  }
  labelWidth = std::min(labelWidth, 280.0);
  const double barLeft = kMargin + labelWidth + 10;
  const double barRight = kWidth - kMargin - amountWidth - 10;
  svg.Text(kMargin, top + 12, heading, Svg::Anchor::kStart, "heading");
  svg.OpenGroup("categories");
  double row = top + 30;
  for (const CategoryValue& c : categories) {
    const double value = Finite(c.amount);
    const double length = largest > 0 ? std::fabs(value) / largest * (barRight - barLeft) : 0;
    svg.Text(kMargin + c.depth * 14, row + 14, c.label, Svg::Anchor::kStart, "");
    svg.Rect(barLeft, row + 3, std::max(length, value != 0 ? 1.0 : 0.0), kRowHeight - 6,
             value < 0 ? "debit" : "deposit", c.label + ": " + amount(value));
    svg.Text(kWidth - kMargin, row + 14, amount(value), Svg::Anchor::kEnd, "muted");
    row += kRowHeight;
  }
  svg.CloseGroup();
  return row + 10;
}

}  // namespace

std::string SummarySvg(const std::vector<PeriodValues>& periods,
                       const std::vector<CategoryValue>& categories, const AmountFormat& amount,
                       const ChartTitles& titles) {
  double height = 44;
  if (!periods.empty()) height += 30 + kPlotHeight + 24 + 10;
  if (!categories.empty()) height += 30 + kRowHeight * static_cast<double>(categories.size()) + 10;
  const std::string description =
      std::to_string(periods.size()) + (periods.size() == 1 ? " period" : " periods") + " and " +
      std::to_string(categories.size()) + (categories.size() == 1 ? " category" : " categories");
  Svg svg(kWidth, height, titles.title, description);
  svg.Text(kMargin, 26, titles.title, Svg::Anchor::kStart, "heading");
  double top = 44;
  if (!periods.empty()) top = DrawPeriods(svg, top, periods, amount, titles.periods) + 10;
  if (!categories.empty()) DrawCategories(svg, top, categories, amount, titles.categories);
  return svg.Finish();
}

std::string PeriodChartText(const std::vector<PeriodValues>& periods, const AmountFormat& amount,
                            std::size_t width) {
  std::size_t labelWidth = 0, amountWidth = 0;
  double largest = 0;
  for (const PeriodValues& p : periods) {
    labelWidth = std::max(labelWidth, DisplayWidth(p.label));
    amountWidth = std::max({amountWidth, DisplayWidth(amount(-p.debits)),
                            DisplayWidth(amount(p.deposits))});
    largest = std::max({largest, Finite(p.debits), Finite(p.deposits)});
  }
  // label  debits  ████│████  deposits
  const std::size_t fixed = labelWidth + 2 * amountWidth + 7;
  const std::size_t half = width > fixed + 10 ? (width - fixed) / 2 : 5;
  static const char* const kEighths[] = {"", "▏", "▎", "▍", "▌", "▋", "▊", "▉"};
  const auto eighths = [&](double value) {
    return largest > 0 ? static_cast<std::size_t>(std::lround(Finite(value) / largest *
                                                              static_cast<double>(half * 8)))
                       : 0;
  };
  std::string out;
  for (const PeriodValues& p : periods) {
    AppendPadded(out, p.label, labelWidth, Align::kLeft);
    out += "  ";
    AppendPadded(out, amount(-p.debits), amountWidth, Align::kRight);
    out += ' ';
    // Debits grow leftwards from the axis in whole blocks (a block has no left-growing eighths).
    const std::size_t left = std::min(half, (eighths(p.debits) + 4) / 8);
    out.append(half - left, ' ');
    for (std::size_t i = 0; i < left; ++i) out += "█";
    out += "│";
    const std::size_t right = std::min(half * 8, eighths(p.deposits));
    for (std::size_t i = 0; i < right / 8; ++i) out += "█";
    out += kEighths[right % 8];
    const std::size_t drawn = right / 8 + (right % 8 != 0 ? 1 : 0);
    out.append(half - drawn + 1, ' ');
    AppendPadded(out, amount(p.deposits), amountWidth, Align::kRight);
    while (!out.empty() && out.back() == ' ') out.pop_back();
    out += '\n';
  }
  return out;
}

}  // namespace folvant::render
