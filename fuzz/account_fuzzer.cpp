// Reads fuzzed bytes as an account file of any version, as the program does (older ones
// upgraded, a current one's register built while it is read), then exercises what a register
// does with it: balances, running balances, sorting, the register filter and the schedules
// due. Properties: nothing crashes, hangs or leaks; the file written entry by entry has the
// bytes of the whole stored form, and loads again to the same stored form.
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountFile.h"
#include "folvant/model/ZELMAccountUpgrade.h"
#include "folvant/platform/Clock.h"
#include "folvant/platform/Log.h"
#include "folvant/platform/plist/PropertyList.h"

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

// Load messages are expected for damaged input; keep them off the fuzzer's output.
class QuietSink : public folvant::LogSink {
 public:
  void Write(std::string_view) override {}
};
QuietSink quiet;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  folvant::SetUpgradePreferencesPath("/nonexistent/Folvant Preferences");
  using namespace std::chrono;
  folvant::platform::PinClock(local_days{year{2026} / June / 30} + hours{12});
  folvant::SetLogSink(&quiet);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > (1 << 20)) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  auto file = folvant::ReadAccountBytes(bytes);
  if (!file) return 0;
  const std::shared_ptr<folvant::ZELMAccount> loaded =
      folvant::AccountFromFile(std::move(*file), nullptr);
  if (loaded == nullptr) return 0;
  folvant::ZELMAccount& account = *loaded;
  (void)account.GetBalance();
  (void)account.GetTodaysBalance();
  (void)account.GetResolvedBalance();
  (void)account.NextAvailableCheckNumber();
  account.CacheRunningBalances();
  for (std::int32_t key = 0; key <= 6; ++key) account.SortBy(key, (key & 1) != 0);
  (void)account.entryFilteredEntries();
  (void)account.reconcileFilteredEntries();
  (void)account.numberOfPendingScheduledEntriesForDate(folvant::platform::Now());

  const folvant::plist::Dictionary stored = account.asDictionary();
  const std::string written = folvant::AccountFileBytes(account, folvant::plist::Format::kBinary);
  Check(written ==
        folvant::plist::Write(folvant::plist::Value(stored), folvant::plist::Format::kBinary));
  auto again = folvant::ReadAccountBytes(written);
  Check(again.has_value());
  Check(folvant::AccountFromFile(std::move(*again), nullptr)->asDictionary() == stored);
  return 0;
}
