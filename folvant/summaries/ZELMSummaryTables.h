#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/platform/Clock.h"

namespace folvant {

// The tables a summary computes. Field names are the keys the report is known by. Every amount
// has gone through RoundNearZeroValue each time it was stored, so sums that cancel are exactly
// 0 and never show as "-0.00".

// One row of the description, type and to/from subtotals: the signed sum and the parts of it
// that came from debit and from deposit amounts.
struct ZELMSummaryRow {
  double amount = 0.0;
  double debits = 0.0;
  double deposits = 0.0;
  bool operator==(const ZELMSummaryRow&) const = default;
};

// Rows keyed by the exact text (description, type name, to/from); "" for none.
using ZELMSummaryRows = std::map<std::string, ZELMSummaryRow, std::less<>>;

// A node of the category subtotals: one component of a category path ("Auto" of
// "Auto:Fuel"), its sums, and the nodes of the paths one component longer. Names that differ
// only in case share a node, which keeps the name it was made with.
struct ZELMCategorySubtotal {
  std::string subtotalName;
  double amount = 0.0;
  double debits = 0.0;
  double deposits = 0.0;
  std::vector<ZELMCategorySubtotal> children;
  bool operator==(const ZELMCategorySubtotal&) const = default;
};

using ZELMCategorySubtotals = std::vector<ZELMCategorySubtotal>;

// What a period and the whole report both carry. Void entries count in entryCount and in
// nothing else. Balances are over all the summary's accounts (every entry, not only the
// selected ones), converted into the summary's currency.
struct ZELMSummaryTotals {
  std::int64_t entryCount = 0;
  double total = 0.0;
  double depositsTotal = 0.0;
  double debitsTotal = 0.0;
  double resolvedTotal = 0.0;
  double unresolvedTotal = 0.0;
  double taxDeductibleTotal = 0.0;
  double taxableTotal = 0.0;
  platform::LocalTime startDate{};
  platform::LocalTime endDate{};
  double startBalance = 0.0;
  double endBalance = 0.0;
  ZELMSummaryRows descriptionsSubtotals;
  ZELMSummaryRows typesSubtotals;
  ZELMSummaryRows toFromSubtotals;
  ZELMCategorySubtotals categoriesSubtotals;
  bool operator==(const ZELMSummaryTotals&) const = default;
};

// One period: its entries in date order (void ones included), its totals, and the running
// total through its last entry (its total). startDate is the first day at 00:00:00, endDate
// the last day at 23:59:59.
struct ZELMPeriodSubtotal : ZELMSummaryTotals {
  std::vector<std::shared_ptr<ZELMAccountEntry>> entries;
  double runningTotal = 0.0;
  bool operator==(const ZELMPeriodSubtotal&) const = default;
};

// The whole report: the periods in order and the totals over the whole range, whose startDate
// and endDate are the first and last day at 00:00:00.
struct ZELMSummaryReport : ZELMSummaryTotals {
  std::vector<ZELMPeriodSubtotal> subtotals;
  bool operator==(const ZELMSummaryReport&) const = default;
};

}  // namespace folvant
