// Reads fuzzed bytes as delimited text: the first byte picks the separator and a column
// layout (or none, so that the header row is read), the rest is the file. Properties: no
// crash, no hang, and records as fuzz/import_checks.h requires.
#include <cstdint>
#include <string_view>
#include <vector>

#include "folvant/exchange/ZELMTextImport.h"
#include "fuzz/import_checks.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using folvant::ZELMTextImport;
  if (size == 0) return 0;
  const std::uint8_t choice = data[0];
  const std::string_view text(reinterpret_cast<const char*>(data + 1), size - 1);
  ZELMTextImport reader(text);
  reader.SetDataFormat(choice % 4);
  static const std::vector<std::int32_t> kLayouts[] = {
      {},
      {ZELMTextImport::kColumnDate, ZELMTextImport::kColumnToFrom, ZELMTextImport::kColumnAmount},
      {ZELMTextImport::kColumnDate, ZELMTextImport::kColumnNumber,
       ZELMTextImport::kColumnDescription, ZELMTextImport::kColumnDebitAmount,
       ZELMTextImport::kColumnCreditAmount, ZELMTextImport::kColumnResolved,
       ZELMTextImport::kColumnCategory, ZELMTextImport::kColumnType, ZELMTextImport::kColumnNotes},
  };
  reader.SetDataLayout(kLayouts[(choice / 4) % 3]);
  reader.SetSkipFirstRow(choice & 0x40);
  reader.SetDateFormat(choice & 0x80 ? "%d.%m.%Y" : "%m/%d/%y");
  folvant::fuzz::CheckRecords(reader.parse().entries, size, true);
  return 0;
}
