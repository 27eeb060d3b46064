#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "folvant/model/ZELMAccount.h"
#include "folvant/platform/Expected.h"
#include "folvant/platform/plist/PropertyList.h"

// Account files: one account's stored form (ZELMAccount::asDictionary) as a property list of
// either format. The register of a current file is built while the file is read, and written
// while its stored form is made, entry by entry: a register of a million entries never exists
// as stored values all at once.
namespace folvant {

class ZELMAccountsController;

// An account file read: its stored form and, for a file of the current version, its register
// already built (the stored form then holds an empty "entries" array).
struct ZELMAccountFile {
  plist::Value stored;
  std::optional<ZELMAccount::PreparedEntries> entries;
};

Expected<ZELMAccountFile, plist::ReadError> ReadAccountFile(const std::filesystem::path& path);
Expected<ZELMAccountFile, plist::ReadError> ReadAccountBytes(std::string_view bytes);

// The account of a file read, its stored form upgraded first when it is older than the
// current version; nullptr when the file's top level is not a dictionary. Messages go to the
// log sink installed when this is called.
std::shared_ptr<ZELMAccount> AccountFromFile(ZELMAccountFile file,
                                             ZELMAccountsController* controller);

// The bytes of the account's file: the same as plist::Write(account.asDictionary(), format).
std::string AccountFileBytes(const ZELMAccount& account, plist::Format format);

}  // namespace folvant
