#include "folvant/book/Export.h"

#include "folvant/book/Book.h"
#include "folvant/exchange/ExportOptions.h"
#include "folvant/filters/ZELMFilter.h"
#include "folvant/model/ZELMAccount.h"

namespace folvant {
namespace {

// A field as RFC 4180 writes it: quoted, with quotes doubled, when it holds a comma, a quote
// or a line end.
std::string CsvField(const std::string& field) {
  if (field.find_first_of(",\"\r\n") == std::string::npos) return field;
  std::string quoted = "\"";
  for (char c : field) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted + '"';
}

}  // namespace

BookResult<ExportResult> ExportAccount(Book& book, const ExportRequest& request) {
  auto found = book.FindAccount(request.account);
  if (!found) return Unexpected{found.error()};
  ZELMAccount& account = **found;
  std::shared_ptr<ZELMFilter> filter;
  if (request.filter) {
    RegisterFilterChange change = *request.filter;
    change.reset = true;
    filter = FilterForChange(account, change);
  }
  ExportResult result{*found, {}, 0};
  std::string text;
  switch (request.format) {
    case ExportFormat::kQIF: {
      QIFExportOptions options;
      options.resolvedMeansReconciled = request.resolvedMeansReconciled;
      options.exportFilter = filter.get();
      text = account.asQIFStringWithOptions(&options);
      result.entries =
          filter ? filter->filterEntries(account.GetEntries()).size() : account.GetEntries().size();
      break;
    }
    case ExportFormat::kTSV: {
      TabDelimitedExportOptions options;
      options.exportFilter = filter.get();
      text = account.asTabDelimitedStringWithOptions(&options);
      result.entries = DelimitedExportRows(account, filter.get()).size() - (filter ? 1 : 2);
      break;
    }
    case ExportFormat::kCSV: {
      const auto rows = DelimitedExportRows(account, filter.get());
      for (const auto& row : rows) {
        // Every row has the header's columns; the opening row's extra empty field is a quirk
        // of the tab-separated form only.
        for (std::size_t i = 0; i < row.size() && i < rows[0].size(); ++i) {
          if (i > 0) text += ',';
          text += CsvField(row[i]);
        }
        text += "\r\n";
      }
      result.entries = rows.size() - (filter ? 1 : 2);
      break;
    }
  }
  const platform::StringEncoding encoding = request.encoding.value_or(platform::kUTF8StringEncoding);
  auto bytes = platform::EncodeText(text, encoding);
  if (!bytes) {
    const std::string_view name = platform::EncodingName(encoding);
    return Unexpected{BookError::Of(
        BookError::Kind::kInvalid,
        "the register holds text that " + (name.empty() ? std::string("that encoding") : std::string(name)) +
            " cannot write; export it as UTF-8")};
  }
  result.bytes = std::move(*bytes);
  return result;
}

}  // namespace folvant
