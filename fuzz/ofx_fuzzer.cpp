// Reads fuzzed bytes as an OFX download, plainly and with unclosed aggregates balanced.
// Properties: no crash, no hang; a refusal has a reason; records as fuzz/import_checks.h
// requires.
#include <cstdint>
#include <string_view>

#include "folvant/exchange/ZELMOFXImport.h"
#include "fuzz/import_checks.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using folvant::ZELMOFXImport;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  for (const bool balance : {false, true}) {
    auto read = ZELMOFXImport::Read(bytes, balance);
    if (!read) {
      folvant::fuzz::Check(!read.error().what.empty());
      continue;
    }
    (*read)->SetSwapOptions_Name(ZELMOFXImport::kRouteToNumber);
    (*read)->SetSwapOptions_Memo(ZELMOFXImport::kRouteToDescription);
    for (const folvant::OFXAccount& account : (*read)->parse().accounts) {
      folvant::fuzz::CheckRecords(account.entries, size, false);
    }
  }
  return 0;
}
