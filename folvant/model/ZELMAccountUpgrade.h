#pragma once

#include <filesystem>
#include <optional>

// Settings of the account-format upgrade (ZELMAccount::UpdateAccountDictionary). Accounts of
// version 2 or older kept their entry types in the program's shared preferences, which the
// upgrade copies into the account.
namespace folvant {

// The shared preferences file: "Library/Preferences/Brindle/Folvant Preferences" under the
// user's home folder ($HOME), unless another path has been set.
std::filesystem::path UpgradePreferencesPath();

// Points the upgrade at another preferences file (tests, or a program that keeps its own);
// nullopt restores the default. Returns the previous setting.
std::optional<std::filesystem::path> SetUpgradePreferencesPath(
    std::optional<std::filesystem::path> path);

}  // namespace folvant
