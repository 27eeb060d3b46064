#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <ostream>
#include <utility>

#include "app/cli/BookAccess.h"
#include "app/cli/Options.h"
#include "app/cli/Commands.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountUpgrade.h"
#include "folvant/platform/Log.h"
#include "folvant/platform/SafeFileBatch.h"
#include "folvant/platform/plist/PropertyList.h"

namespace folvant::app {
namespace {

struct UpgradeOptions {
  std::vector<std::string> files;
  std::string preferences;
  bool verbose = false;
};

// The old program's shared preferences file in the user's home folder; empty without $HOME.
std::filesystem::path DefaultPreferencesPath() {
  const char* home = std::getenv("HOME");
  if (home == nullptr || *home == '\0') return {};
  return std::filesystem::path(home) / "Library/Preferences/Brindle/Folvant Preferences";
}

// Points the upgrade at the given preferences file, or at the default one, for the life of
// the command.
class PreferencesOverride {
 public:
  explicit PreferencesOverride(const std::string& path)
      : previous_(SetUpgradePreferencesPath(path.empty() ? DefaultPreferencesPath()
                                                         : std::filesystem::path(path))) {}
  ~PreferencesOverride() { SetUpgradePreferencesPath(previous_); }
  PreferencesOverride(const PreferencesOverride&) = delete;
  PreferencesOverride& operator=(const PreferencesOverride&) = delete;

 private:
  std::optional<std::filesystem::path> previous_;
};

bool ReadBytes(const std::filesystem::path& path, std::string& bytes, std::string& error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    error = "cannot be opened";
    return false;
  }
  bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  if (in.bad()) {
    error = "cannot be read";
    return false;
  }
  return true;
}

// "entries (3 of 40)" for a list whose elements changed, else the key alone; added and
// removed keys say so.
std::vector<std::string> Changes(const plist::Dictionary& before, const plist::Dictionary& after) {
  std::vector<std::string> changes;
  for (const auto& [stored_key, value] : after) {
    const std::string key = stored_key.str();
    const plist::Value* old = before.find(key);
    if (old == nullptr) {
      changes.push_back(key + " (added)");
    } else if (!(*old == value)) {
      const plist::Array* old_list = old->asArray();
      const plist::Array* new_list = value.asArray();
      if (old_list != nullptr && new_list != nullptr && old_list->size() == new_list->size()) {
        std::size_t changed = 0;
        for (std::size_t i = 0; i < new_list->size(); ++i) {
          if (!((*old_list)[i] == (*new_list)[i])) ++changed;
        }
        changes.push_back(key + " (" + std::to_string(changed) + " of " +
                          std::to_string(new_list->size()) + ")");
      } else {
        changes.push_back(key);
      }
    }
  }
  for (const auto& [key, value] : before) {
    if (after.find(key) == nullptr) changes.push_back(key.str() + " (removed)");
  }
  return changes;
}

std::string VersionText(const plist::Value* version) {
  if (version == nullptr) return "none";
  if (version->isNumber()) return std::to_string(version->intValue());
  return "none";
}

// Upgrades one file; returns false after printing one error line.
bool UpgradeFile(Context& context, const std::string& file, bool verbose) {
  const std::filesystem::path path(file);
  std::string bytes, error;
  if (!ReadBytes(path, bytes, error)) {
    Fail(context, file + ": " + error);
    return false;
  }
  const std::optional<plist::Format> format = plist::DetectFormat(bytes);
  auto value = plist::Read(bytes);
  if (!format || !value) {
    Fail(context, file + ": not a property list" +
                      (value ? std::string()
                             : " (" + value.error().what + " at byte " +
                                   std::to_string(value.error().offset) + ")"));
    return false;
  }
  plist::Dictionary* dict = value->asDictionary();
  if (dict == nullptr) {
    Fail(context, file + ": not an account file (the top level is not a dictionary)");
    return false;
  }
  const plist::Value* version = dict->find("version");
  const std::int32_t before_version = version != nullptr ? version->intValue() : 0;
  const std::string before_text = VersionText(version);
  auto& out = context.out;
  if (before_version == ZELMAccount::kCurrentVersion) {
    out << file << ": version " << ZELMAccount::kCurrentVersion
        << ", already current; left untouched\n";
    return true;
  }
  if (before_version > ZELMAccount::kCurrentVersion) {
    out << file << ": version " << before_version << " is newer than this program writes ("
        << ZELMAccount::kCurrentVersion << "); left untouched\n";
    return true;
  }

  const plist::Dictionary original = *dict;
  LogCollector log;
  ZELMAccount::UpdateAccountDictionary(*dict);
  const std::vector<std::string> upgrade_messages = log.Take();
  // The upgraded file must load as an account; what the load reports is shown too.
  const ZELMAccount account(dict);
  const std::vector<std::string> load_messages = log.Take();

  platform::SafeFileBatch batch;
  if (!batch.Stage(path, plist::Write(*value, *format), error) || !batch.Commit(error)) {
    Fail(context, file + ": " + error);
    return false;
  }
  out << file << ": version " << before_text << " -> " << dict->find("version")->intValue() << " ("
      << (*format == plist::Format::kBinary ? "binary" : "XML") << ", account \""
      << account.GetName() << "\", " << account.GetEntries().size()
      << (account.GetEntries().size() == 1 ? " entry)\n" : " entries)\n");
  std::string changed;
  for (const std::string& change : Changes(original, *dict)) {
    changed += (changed.empty() ? "" : ", ") + change;
  }
  out << "  changed: " << (changed.empty() ? "nothing" : changed) << '\n';
  for (const std::string& message : upgrade_messages) out << "  upgrade: " << message << '\n';
  // Old files lack many keys of the current format; loading reports each one.
  if (verbose) {
    for (const std::string& message : load_messages) out << "  load: " << message << '\n';
  } else if (!load_messages.empty()) {
    out << "  load: " << load_messages.size()
        << (load_messages.size() == 1 ? " message" : " messages")
        << " (missing keys take their defaults; --verbose lists them)\n";
  }
  out << "  backup: " << file << ".bak\n";
  return true;
}

int Upgrade(Context& context, const UpgradeOptions& options) {
  PreferencesOverride preferences(options.preferences);
  bool ok = true;
  for (const std::string& file : options.files)
    ok = UpgradeFile(context, file, options.verbose) && ok;
  return ok ? 0 : 1;
}

}  // namespace

void RegisterUpgradeCommand(CLI::App& app, Context& context, CommandList& actions) {
  auto options = std::make_shared<UpgradeOptions>();
  CLI::App* upgrade = app.add_subcommand(
      "upgrade", "Bring account files of older versions to the current one, in place");
  upgrade->add_option("FILE", options->files, "Account property-list files")->required();
  upgrade->add_option("--preferences", options->preferences,
                      "The old program's shared preferences file, whose entry types accounts of "
                      "version 2 or older take (default: ~/Library/Preferences/Brindle/Folvant "
                      "Preferences)");
  upgrade->add_flag("--verbose", options->verbose, "List every message of the load check");
  actions.emplace_back(upgrade, [&context, options]() { return Upgrade(context, *options); });
}

}  // namespace folvant::app
