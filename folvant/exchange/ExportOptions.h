#pragma once

#include <string>

namespace folvant {

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

}  // namespace folvant
