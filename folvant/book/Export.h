#pragma once

#include <memory>
#include <optional>
#include <string>

#include "folvant/book/BookError.h"
#include "folvant/book/RegisterView.h"
#include "folvant/platform/Encodings.h"

namespace folvant {

class Book;
class ZELMAccount;

enum class ExportFormat { kQIF, kTSV, kCSV };

struct ExportRequest {
  std::string account;
  ExportFormat format = ExportFormat::kQIF;
  // The register's filter options, for this export only (from everything shown); none: the
  // whole register with its opening balance.
  std::optional<RegisterFilterChange> filter;
  std::optional<platform::StringEncoding> encoding;  // default UTF-8
  bool resolvedMeansReconciled = false;              // QIF: "X" rather than "*"
};

struct ExportResult {
  std::shared_ptr<ZELMAccount> account;
  std::string bytes;        // the text in the encoding asked for
  std::size_t entries = 0;  // rows written for entries
};

// The account as QIF, as tab-separated text, or as comma-separated text (the same columns,
// fields quoted where they hold a comma, quote or line end). A character the encoding cannot
// write is refused, naming the encoding.
BookResult<ExportResult> ExportAccount(Book& book, const ExportRequest& request);

}  // namespace folvant
