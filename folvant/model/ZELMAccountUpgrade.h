#pragma once

#include <filesystem>
#include <optional>

// Settings of the account-format upgrade (ZELMAccount::UpdateAccountDictionary). Accounts of
// version 2 or older kept their entry types in the program's shared preferences, which the
// upgrade copies into the account.
namespace folvant {

// The shared preferences file that the upgrade reads; an empty path (the default) means there
// is none. The library never looks for one itself: the program says where it is.
std::filesystem::path UpgradePreferencesPath();

// Points the upgrade at a preferences file (or, with nullopt or an empty path, at none) for
// every thread. Returns the previous setting, nullopt when there was none.
std::optional<std::filesystem::path> SetUpgradePreferencesPath(
    std::optional<std::filesystem::path> path);

}  // namespace folvant
