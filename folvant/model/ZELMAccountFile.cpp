#include "folvant/model/ZELMAccountFile.h"

#include <utility>

#include "folvant/platform/Log.h"

namespace folvant {
namespace {

bool IsCurrent(const plist::Dictionary& stored) {
  const plist::Value* version = stored.find("version");
  return version != nullptr && version->intValue() == ZELMAccount::kCurrentVersion;
}

// Reads with `read`, building the register entry by entry when the file is current (older
// files are upgraded as a whole, entries included, before any entry is built).
template <typename ReadWith>
Expected<ZELMAccountFile, plist::ReadError> ReadStreaming(ReadWith read) {
  std::optional<ZELMAccountEntry::StoredListBuilder> builder;
  const plist::StreamedRead stream{
      "entries", [&](const plist::Dictionary& rest, std::size_t size) -> plist::MemberSink {
        if (!IsCurrent(rest)) return {};
        builder.emplace(size);
        return [&](plist::Value&& member) { builder->Add(member); };
      }};
  // Only building entries gives messages here; they are kept for the account to give.
  LogCollector messages;
  Expected<plist::Value, plist::ReadError> stored = read(stream);
  if (!stored) return Unexpected{stored.error()};
  ZELMAccountFile file{std::move(*stored), std::nullopt};
  if (builder) file.entries = {std::move(*builder).Finish(), messages.Take()};
  return file;
}

}  // namespace

Expected<ZELMAccountFile, plist::ReadError> ReadAccountFile(const std::filesystem::path& path) {
  return ReadStreaming(
      [&path](const plist::StreamedRead& stream) { return plist::ReadFile(path, stream); });
}

Expected<ZELMAccountFile, plist::ReadError> ReadAccountBytes(std::string_view bytes) {
  return ReadStreaming(
      [bytes](const plist::StreamedRead& stream) { return plist::Read(bytes, stream); });
}

std::shared_ptr<ZELMAccount> AccountFromFile(ZELMAccountFile file,
                                             ZELMAccountsController* controller) {
  plist::Dictionary* stored = file.stored.asDictionary();
  if (stored == nullptr) return nullptr;
  if (file.entries) {
    return std::make_shared<ZELMAccount>(stored, controller, std::move(*file.entries));
  }
  if (!IsCurrent(*stored)) ZELMAccount::UpdateAccountDictionary(*stored);
  return std::make_shared<ZELMAccount>(stored, controller);
}

std::string AccountFileBytes(const ZELMAccount& account, plist::Format format) {
  const ZELMAccount::EntryList& entries = account.GetEntries();
  return plist::Write(plist::Value(account.asDictionaryWithoutEntries()), format,
                      {"entries", entries.size(), [&entries](std::size_t i) {
                         return plist::Value(entries[i]->asDictionary());
                       }});
}

}  // namespace folvant
