// Reads fuzzed bytes as a QIF file under each date order, as one register and account by
// account. Properties: no crash, no hang, and records as fuzz/import_checks.h requires.
#include <cstdint>
#include <string_view>

#include "folvant/exchange/ZELMQIFImport.h"
#include "fuzz/import_checks.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using folvant::ZELMQIFImport;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  static const char* const kFormats[] = {"%m/%d/%y", "%d/%m/%Y", "%Y/%m/%d"};
  ZELMQIFImport reader(text);
  reader.SetDateFormat(kFormats[size % 3]);
  reader.SetImportSplitLineItems(size % 2 == 0);
  const ZELMQIFImport::Result result = reader.parse();
  folvant::fuzz::CheckRecords(result.entries, size, true);
  for (const auto& account : result.accounts) {
    folvant::fuzz::CheckRecords(account.entries, size, true);
  }
  for (const std::string& name : reader.AccountNames()) {
    folvant::fuzz::CheckRecords(reader.EntriesForAccountWithName(name), size, true);
  }
  return 0;
}
