#pragma once

#include <string>
#include <vector>

namespace folvant {

class ZELMAccount;
class ZELMFilter;

// How an account is written as QIF.
struct QIFExportOptions {
  std::string dateFormat = "%m/%d/%Y";  // of the D lines
  std::string lineEnding = "\n";
  // Resolved entries are marked "X" (reconciled) when set, "*" (cleared) otherwise.
  bool resolvedMeansReconciled = false;
  // The entries the filter selects instead of the whole register (and then no opening record);
  // not owned.
  const ZELMFilter* exportFilter = nullptr;
};

// How an account is written as tab-separated text.
struct TabDelimitedExportOptions {
  // As for QIF: the selected entries, without the opening row.
  const ZELMFilter* exportFilter = nullptr;
};

// The rows of the tab-separated export, field by field: the header, the opening row (without a
// filter; it has an empty thirteenth field) and one row per entry with the running balance.
std::vector<std::vector<std::string>> DelimitedExportRows(const ZELMAccount& account,
                                                         const ZELMFilter* filter);

}  // namespace folvant
