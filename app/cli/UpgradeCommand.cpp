#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "app/cli/BookAccess.h"
#include "app/cli/Options.h"
#include "app/cli/Commands.h"
#include "app/render/Json.h"
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
  bool json = false;
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

// What the upgrade did with one file.
struct FileUpgrade {
  enum class Outcome { kUpgraded, kCurrent, kNewer };
  std::string file;
  Outcome outcome = Outcome::kUpgraded;
  std::optional<std::int32_t> fromVersion;  // none when the file holds no version number
  std::int32_t toVersion = 0;               // upgraded files only, as the rest below
  plist::Format format = plist::Format::kXml;
  std::string account;
  std::size_t entries = 0;
  std::vector<std::string> changed;
  std::vector<std::string> upgradeMessages;
  std::vector<std::string> loadMessages;  // what loading the upgraded file reported
};

// Upgrades one file; nullopt after printing one error line.
std::optional<FileUpgrade> UpgradeFile(Context& context, const std::string& file) {
  const std::filesystem::path path(file);
  std::string bytes, error;
  if (!ReadBytes(path, bytes, error)) {
    Fail(context, file + ": " + error);
    return std::nullopt;
  }
  const std::optional<plist::Format> format = plist::DetectFormat(bytes);
  auto value = plist::Read(bytes);
  if (!format || !value) {
    Fail(context, file + ": not a property list" +
                      (value ? std::string()
                             : " (" + value.error().what + " at byte " +
                                   std::to_string(value.error().offset) + ")"));
    return std::nullopt;
  }
  plist::Dictionary* dict = value->asDictionary();
  if (dict == nullptr) {
    Fail(context, file + ": not an account file (the top level is not a dictionary)");
    return std::nullopt;
  }
  FileUpgrade done;
  done.file = file;
  done.format = *format;
  const plist::Value* version = dict->find("version");
  const std::int32_t before_version = version != nullptr ? version->intValue() : 0;
  if (before_version >= ZELMAccount::kCurrentVersion) {
    done.outcome = before_version == ZELMAccount::kCurrentVersion ? FileUpgrade::Outcome::kCurrent
                                                                  : FileUpgrade::Outcome::kNewer;
    done.fromVersion = before_version;
    return done;
  }
  if (version != nullptr && version->isNumber()) done.fromVersion = version->intValue();

  const plist::Dictionary original = *dict;
  LogCollector log;
  ZELMAccount::UpdateAccountDictionary(*dict);
  done.upgradeMessages = log.Take();
  // The upgraded file must load as an account; what the load reports is shown too.
  const ZELMAccount account(dict);
  done.loadMessages = log.Take();

  platform::SafeFileBatch batch;
  if (!batch.Stage(path, plist::Write(*value, *format), error) || !batch.Commit(error)) {
    Fail(context, file + ": " + error);
    return std::nullopt;
  }
  done.toVersion = dict->find("version")->intValue();
  done.account = account.GetName();
  done.entries = account.GetEntries().size();
  done.changed = Changes(original, *dict);
  return done;
}

void PrintText(Context& context, const FileUpgrade& u, bool verbose) {
  auto& out = context.out;
  if (u.outcome == FileUpgrade::Outcome::kCurrent) {
    out << u.file << ": version " << ZELMAccount::kCurrentVersion
        << ", already current; left untouched\n";
    return;
  }
  if (u.outcome == FileUpgrade::Outcome::kNewer) {
    out << u.file << ": version " << *u.fromVersion << " is newer than this program writes ("
        << ZELMAccount::kCurrentVersion << "); left untouched\n";
    return;
  }
  out << u.file << ": version " << (u.fromVersion ? std::to_string(*u.fromVersion) : "none")
      << " -> " << u.toVersion << " (" << (u.format == plist::Format::kBinary ? "binary" : "XML")
      << ", account \"" << u.account << "\", " << u.entries
      << (u.entries == 1 ? " entry)\n" : " entries)\n");
  std::string changed;
  for (const std::string& change : u.changed) changed += (changed.empty() ? "" : ", ") + change;
  out << "  changed: " << (changed.empty() ? "nothing" : changed) << '\n';
  for (const std::string& message : u.upgradeMessages) out << "  upgrade: " << message << '\n';
  // Old files lack many keys of the current format; loading reports each one.
  if (verbose) {
    for (const std::string& message : u.loadMessages) out << "  load: " << message << '\n';
  } else if (!u.loadMessages.empty()) {
    out << "  load: " << u.loadMessages.size()
        << (u.loadMessages.size() == 1 ? " message" : " messages")
        << " (missing keys take their defaults; --verbose lists them)\n";
  }
  out << "  backup: " << u.file << ".bak\n";
}

const char* OutcomeWord(FileUpgrade::Outcome outcome) {
  switch (outcome) {
    case FileUpgrade::Outcome::kUpgraded:
      return "upgraded";
    case FileUpgrade::Outcome::kCurrent:
      return "current";
    case FileUpgrade::Outcome::kNewer:
      return "newer";
  }
  return "";
}

render::Json JsonOf(const FileUpgrade& u) {
  using render::Json;
  const bool upgraded = u.outcome == FileUpgrade::Outcome::kUpgraded;
  const auto texts = [](const std::vector<std::string>& list) {
    Json array = Json::array();
    for (const std::string& text : list) array.push_back(render::JsonText(text));
    return array;
  };
  Json file = Json::object();
  file["file"] = render::JsonText(u.file);
  file["outcome"] = OutcomeWord(u.outcome);
  file["fromVersion"] = u.fromVersion ? Json(*u.fromVersion) : Json(nullptr);
  file["toVersion"] = upgraded ? Json(u.toVersion) : Json(nullptr);
  file["format"] = u.format == plist::Format::kBinary ? "binary" : "xml";
  file["account"] = upgraded ? render::JsonText(u.account) : Json(nullptr);
  file["entries"] = upgraded ? Json(u.entries) : Json(nullptr);
  file["changed"] = texts(u.changed);
  file["upgrade"] = texts(u.upgradeMessages);
  file["load"] = texts(u.loadMessages);
  file["backup"] = upgraded ? render::JsonText(u.file + ".bak") : Json(nullptr);
  return file;
}

int Upgrade(Context& context, const UpgradeOptions& options) {
  PreferencesOverride preferences(options.preferences);
  bool ok = true;
  render::Json files = render::Json::array();
  for (const std::string& file : options.files) {
    const std::optional<FileUpgrade> done = UpgradeFile(context, file);
    if (!done) {
      ok = false;
    } else if (options.json) {
      files.push_back(JsonOf(*done));
    } else {
      PrintText(context, *done, options.verbose);
    }
  }
  if (options.json) {
    // The files that failed are left out; each has its line on the error stream.
    render::Json document = render::Json::object();
    document["files"] = std::move(files);
    render::WriteJson(context.out, document);
  }
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
  upgrade->add_flag("--json", options->json, "Print JSON (with every message of the load check)");
  actions.emplace_back(upgrade, [&context, options]() { return Upgrade(context, *options); });
}

}  // namespace folvant::app
