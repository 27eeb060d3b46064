// The account's fields, its new-account values, its stored form and its password.

#include "folvant/model/ZELMAccount.h"

#include <algorithm>
#include <utility>

#include "folvant/model/ZELMAccountSchedule.h"
#include "folvant/model/ZELMAccountsController.h"
#include "folvant/platform/Clock.h"
#include "folvant/platform/Log.h"
#include "folvant/platform/Resources.h"
#include "folvant/platform/UserSettings.h"
#include "folvant/values/LVCurrency.h"
#include "folvant/values/ZELMUtilities.h"

namespace folvant {

namespace {

constexpr std::string_view kInInit = " in -[ZELMAccount initWithDictionary:]";
constexpr std::string_view kForAccount = " for ZELMAccount.";

void Log(std::string_view a, std::string_view b = {}, std::string_view c = {}) {
  std::string message;
  message.reserve(a.size() + b.size() + c.size());
  message.append(a).append(b).append(c);
  ZELMLog(message);
}

// What a key of the stored form must hold, and how its absence is reported.
enum class Kind { kAny, kNumber, kString, kData, kArray, kDictionary };

bool HasKind(const plist::Value& value, Kind kind) {
  switch (kind) {
    case Kind::kNumber:
      return value.isNumber();
    case Kind::kString:
      return value.isString();
    case Kind::kData:
      return value.isData();
    case Kind::kArray:
      return value.isArray();
    case Kind::kDictionary:
      return value.isDictionary();
    default:
      return true;
  }
}

// The value under `key` when it has the wanted kind; otherwise the given message (either may
// be empty for a silent case) and nullptr.
const plist::Value* Read(const plist::Dictionary& dict, std::string_view key, Kind kind,
                         std::string_view missing, std::string_view wrong) {
  const plist::Value* value = dict.find(key);
  if (value == nullptr) {
    if (!missing.empty()) ZELMLog(missing);
    return nullptr;
  }
  if (!HasKind(*value, kind)) {
    if (!wrong.empty()) ZELMLog(wrong);
    return nullptr;
  }
  return value;
}

// Keys whose messages follow "No KEY defined for ZELMAccount." / "KEY is in wrong format for
// ZELMAccount.".
const plist::Value* ReadSetting(const plist::Dictionary& dict, std::string_view key, Kind kind,
                                bool silent_when_missing = false) {
  const plist::Value* value = dict.find(key);
  if (value == nullptr) {
    if (!silent_when_missing) Log("No ", key, " defined for ZELMAccount.");
    return nullptr;
  }
  if (!HasKind(*value, kind)) {
    Log(key, " is in wrong format", kForAccount);
    return nullptr;
  }
  return value;
}

void ReadInt(const plist::Dictionary& dict, std::string_view key, std::int32_t& field,
             bool silent_when_missing = false) {
  if (const plist::Value* value = ReadSetting(dict, key, Kind::kNumber, silent_when_missing)) {
    field = value->intValue();
  }
}

void ReadBool(const plist::Dictionary& dict, std::string_view key, bool& field) {
  if (const plist::Value* value = ReadSetting(dict, key, Kind::kNumber)) field = value->boolValue();
}

// The separators' messages name the method in one of two spellings.
void ReadSeparator(const plist::Dictionary& dict, std::string_view key, std::string_view where,
                   std::string& field) {
  const plist::Value* value = dict.find(key);
  if (value == nullptr) {
    Log("No ", key, std::string(" defined").append(where));
    return;
  }
  if (const std::string* text = value->asString()) {
    field = *text;
  } else {
    Log(key, " is in the wrong format", where);
  }
}

std::optional<ZELMAccount::StringList> StringsOf(const plist::Array& array) {
  ZELMAccount::StringList strings;
  strings.reserve(array.size());
  for (const plist::Value& element : array) {
    if (const std::string* text = element.asString()) strings.push_back(*text);
  }
  return strings;
}

plist::Array StoredStrings(const std::optional<ZELMAccount::StringList>& list) {
  plist::Array array;
  if (!list) return array;
  array.reserve(list->size());
  for (const std::string& text : *list) array.emplace_back(text);
  return array;
}

ZELMAccount::TypeList TypesOf(const plist::Array& array) {
  ZELMAccount::TypeList types;
  types.reserve(array.size());
  for (const plist::Value& element : array) {
    if (const plist::Dictionary* dict = element.asDictionary()) {
      types.push_back(std::make_shared<ZELMAccountEntryType>(dict));
    }
  }
  return types;
}

plist::Array StoredTypes(const ZELMAccount::TypeList& types) {
  plist::Array array;
  array.reserve(types.size());
  for (const auto& type : types) array.emplace_back(type->asDictionary());
  return array;
}

std::int32_t TypeNumber(const std::shared_ptr<ZELMAccountEntryType>& type) {
  return type != nullptr ? type->GetNumber() : -1;
}

// "3,1,2"; the empty text for no layout.
std::string JoinLayout(const std::optional<std::vector<std::int32_t>>& layout) {
  std::string text;
  if (!layout) return text;
  for (std::size_t i = 0; i < layout->size(); ++i) {
    if (i > 0) text += ',';
    text += std::to_string((*layout)[i]);
  }
  return text;
}

// Each piece between commas read as an integer. The empty text is an empty layout, so that
// what JoinLayout wrote reads back the same.
std::vector<std::int32_t> SplitLayout(std::string_view text) {
  std::vector<std::int32_t> layout;
  if (text.empty()) return layout;
  std::size_t start = 0;
  while (true) {
    const std::size_t comma = text.find(',', start);
    const std::string_view piece = text.substr(
        start, comma == std::string_view::npos ? std::string_view::npos : comma - start);
    layout.push_back(plist::Value(piece).intValue());
    if (comma == std::string_view::npos) break;
    start = comma + 1;
  }
  return layout;
}

std::optional<plist::Data> ResourceData(std::string_view name) {
  const auto bytes = platform::Resource(name);
  if (bytes.empty()) return std::nullopt;
  return plist::Data(bytes.begin(), bytes.end());
}

}  // namespace

ZELMAccount::ZELMAccount()
    : icon_(ResourceData("accounticon_default")),
      highResolutionIcon_(ResourceData("accounticon_default_128")),
      currency_(std::make_shared<LVCurrency>("USD", "US Dollar", "$", true, ",", ".", 1.0,
                                             platform::Today())),
      types_(defaultTypes()),
      smartFolders_(defaultSmartFolders()) {
  const platform::UserSettings& settings = platform::CurrentUserSettings();
  const auto default_encoding = static_cast<std::int32_t>(settings.defaultCStringEncoding);
  QIFImportEncoding_ = default_encoding;
  textImportEncoding_ = default_encoding;
  textExport_Encoding_ = default_encoding;
  QIFImportDecimalSeparator_ = settings.decimalSeparator;
  QIFImportThousandsSeparator_ = settings.thousandsSeparator;
  textImportDecimalSeparator_ = settings.decimalSeparator;
  textImportThousandsSeparator_ = settings.thousandsSeparator;
  const std::int32_t today = platform::Today();
  for (ViewFilterSettings* view : {&entryFilter_, &reconcileFilter_}) {
    view->dateFilterStartDate = today;
    view->dateFilterEndDate = today;
  }
  // In the body: the defaults are given the account's entries, so every list must exist.
  accountSummaries_ = defaultAccountSummaries();
}

ZELMAccount::ZELMAccount(const plist::Dictionary* dict, ZELMAccountsController* controller)
    : ZELMAccount() {
  Load(dict, controller, nullptr);
}

ZELMAccount::ZELMAccount(const plist::Dictionary* dict, ZELMAccountsController* controller,
                         PreparedEntries prepared)
    : ZELMAccount() {
  Load(dict, controller, &prepared);
}

void ZELMAccount::Load(const plist::Dictionary* dict, ZELMAccountsController* controller,
                       PreparedEntries* prepared) {
  accountsController_ = controller;
  if (dict == nullptr) {
    ZELMLog("Invalid theDictionary supplied to -[ZELMAccount initWithDictionary:]");
    return;
  }
  ReadDictionary(*dict, prepared);
}

ZELMAccount::~ZELMAccount() {
  // Entries may outlive the account in other lists (summaries, filter results); they must not
  // point at it afterwards.
  ForEachEntryPointer([this](const std::shared_ptr<ZELMAccountEntry>& entry) {
    if (entry->GetAccount() == this) entry->SetAccount(nullptr);
  });
}

void ZELMAccount::ReadDictionary(const plist::Dictionary& dict, PreparedEntries* prepared) {
  if (const plist::Value* value =
          Read(dict, "name", Kind::kString,
               "Account does not have a name in -[ZELMAccount initWithDictionary:]",
               "Account name is in the wrong format in -[ZELMAccount initWithDictionary:]")) {
    name_ = *value->asString();
  }
  ResolveCurrency(dict.find("currency"));
  if (const plist::Value* value =
          Read(dict, "icon", Kind::kData,
               "Account does not have an icon in -[ZELMAccount initWithDictionary:]",
               "Account icon is in the wrong format in -[ZELMAccount initWithDictionary:]")) {
    icon_ = *value->asData();
  }
  if (const plist::Value* value =
          Read(dict, "highResolutionIcon", Kind::kData,
               "Account does not have a highResolutionIcon in -[ZELMAccount initWithDictionary:]",
               "Account highResolutionIcon is in the wrong format in -[ZELMAccount "
               "initWithDictionary:]")) {
    highResolutionIcon_ = *value->asData();
  }
  if (const plist::Value* value =
          Read(dict, "number", Kind::kAny,
               "Account does not have an identification number in -[ZELMAccount "
               "initWithDictionary:]",
               {})) {
    number_ = value->intValue();
  }
  if (const plist::Value* value =
          Read(dict, "version", Kind::kAny,
               "Account does not have a version in -[ZELMAccount initWithDictionary:]", {})) {
    version_ = value->intValue();
  }
  if (const plist::Value* value =
          Read(dict, "entries", Kind::kArray,
               "Account does not have entries in -[ZELMAccount initWithDictionary:]",
               "Account entries are in the wrong format in -[ZELMAccount initWithDictionary:]")) {
    if (prepared != nullptr) {
      for (const std::string& message : prepared->messages) ZELMLog(message);
      SetEntries(std::move(prepared->entries));
    } else {
      InitEntries(value);
    }
  }
  if (const plist::Value* value =
          Read(dict, "schedules", Kind::kArray,
               "Account does not have schedules in -[ZELMAccount initWithDictionary:]",
               "Account schedules are in the wrong format in -[ZELMAccount initWithDictionary:]")) {
    InitSchedules(value);
  }
  if (const plist::Value* value =
          Read(dict, "startingCheckNumber", Kind::kAny,
               "Account does not have a starting check number in -[ZELMAccount "
               "initWithDictionary:]",
               {})) {
    startingCheckNumber_ = value->intValue();
  }
  // Kept as stored: files hold balances already rounded.
  if (const plist::Value* value = dict.find("startingBalance")) {
    startingBalance_ = value->doubleValue();
  }
  if (const plist::Value* value =
          Read(dict, "password", Kind::kString, {},
               "Account password is in the wrong format in -[ZELMAccount initWithDictionary:]")) {
    SetPassword(*value->asString());
  }
  if (const plist::Value* value = dict.find("types")) {
    if (const plist::Array* array = value->asArray()) {
      types_ = TypesOf(*array);
      std::stable_sort(types_.begin(), types_.end(),
                       [](const auto& a, const auto& b) { return a->NameIsGreaterThan(*b) < 0; });
    } else {
      ZELMLog("types are in the wrong format for ZELMAccount.");
    }
  }
  if (const plist::Value* value = dict.find("inactiveTypes")) {
    if (const plist::Array* array = value->asArray()) {
      for (auto& type : TypesOf(*array)) inactiveTypes_.push_back(std::move(type));
    } else {
      ZELMLog("inactiveTypes are in the wrong format for ZELMAccount.");
    }
  }
  if (const plist::Value* value = ReadSetting(dict, "defaultDebitType", Kind::kNumber)) {
    defaultDebitType_ = accountEntryTypeForNumber(value->intValue());
  }
  if (const plist::Value* value = ReadSetting(dict, "defaultDepositType", Kind::kNumber)) {
    defaultDepositType_ = accountEntryTypeForNumber(value->intValue());
  }
  ReadInt(dict, "preference_Descriptions_Style", preference_Descriptions_Style_);
  ReadInt(dict, "preference_ToFrom_Style", preference_ToFrom_Style_);
  ReadInt(dict, "preference_Descriptions_SomeSelection", preference_Descriptions_SomeSelection_);
  ReadInt(dict, "preference_ToFrom_SomeSelection", preference_ToFrom_SomeSelection_);
  const std::pair<std::string_view, std::optional<StringList>*> preferred[] = {
      {"preferredDebitDescriptions", &preferredDebitDescriptions_},
      {"preferredDepositDescriptions", &preferredDepositDescriptions_},
      {"preferredTos", &preferredTos_},
      {"preferredFroms", &preferredFroms_},
  };
  for (const auto& [key, field] : preferred) {
    if (const plist::Value* value = ReadSetting(dict, key, Kind::kArray)) {
      *field = StringsOf(*value->asArray());
    }
  }
  ReadInt(dict, "numberCount", numberCount_);
  if (const plist::Value* value = Read(
          dict, "statementBalance", Kind::kAny,
          "Account does not have a statementBalance in -[ZELMAccount initWithDictionary:]", {})) {
    setStatementBalance(value->doubleValue());
  }
  const plist::Value* summaries = dict.find("accountSummaries");
  if (summaries == nullptr) {
    ZELMLog("Account does not have any account summaries in -[ZELMAccount initWithDictionary:]");
  }
  LoadAccountSummaries(summaries, dict.find("selectedAccountSummary"));
  const std::pair<std::string_view, ViewFilterSettings*> views[] = {
      {"entry", &entryFilter_}, {"reconcile", &reconcileFilter_}};
  for (const auto& [prefix, view] : views) {
    const std::pair<std::string_view, std::int32_t*> ints[] = {
        {"FilterType", &view->filterType},
        {"ResolvedFilterType", &view->resolvedFilterType},
        {"TaxDeductibleFilterType", &view->taxDeductibleFilterType},
        {"DateFilterType", &view->dateFilterType},
        {"DateFilterStartDate", &view->dateFilterStartDate},
        {"DateFilterEndDate", &view->dateFilterEndDate},
    };
    std::string key(prefix);
    for (const auto& [suffix, field] : ints) {
      key.resize(prefix.size());
      key.append(suffix);
      if (const plist::Value* value = dict.find(key)) *field = value->intValue();
    }
    key.resize(prefix.size());
    key.append("FilterData");
    if (const plist::Value* value = dict.find(key)) view->filterData = *value;
  }
  ReadImportSettings(dict);
  if (const plist::Value* value = dict.find("smartFolders")) LoadSmartFolders(*value);
  if (const plist::Value* value = dict.find("folders")) {
    FolderList folders;
    if (const plist::Array* array = value->asArray()) {
      folders.reserve(array->size());
      for (const plist::Value& element : *array) {
        if (const plist::Dictionary* stored = element.asDictionary()) {
          folders.push_back(std::make_shared<ZELMAccountFolder>(stored));
        }
      }
    }
    SetFolders(std::move(folders));
  }
}

void ZELMAccount::ReadImportSettings(const plist::Dictionary& dict) {
  ReadBool(dict, "OFXImportZeroAmountsAsDeposits", OFXImportZeroAmountsAsDeposits_);
  ReadInt(dict, "OFXImport_SwapOptions_Name", OFXImport_SwapOptions_Name_, true);
  ReadInt(dict, "OFXImport_SwapOptions_Memo", OFXImport_SwapOptions_Memo_, true);
  ReadInt(dict, "OFXImport_SwapOptions_Payee", OFXImport_SwapOptions_Payee_, true);
  ReadInt(dict, "OFXImport_SwapOptions_TransactionType", OFXImport_SwapOptions_TransactionType_,
          true);
  ReadInt(dict, "OFXImport_SwapOptions_ReferenceNumber", OFXImport_SwapOptions_ReferenceNumber_,
          true);
  ReadInt(dict, "QIFImportEncoding", QIFImportEncoding_);
  ReadInt(dict, "QIFImportDateFormat", QIFImportDateFormat_);
  ReadSeparator(dict, "QIFImportDecimalSeparator", kInInit, QIFImportDecimalSeparator_);
  ReadSeparator(dict, "QIFImportThousandsSeparator", kInInit, QIFImportThousandsSeparator_);
  ReadBool(dict, "QIFImportZeroAmountsAsDeposits", QIFImportZeroAmountsAsDeposits_);
  ReadBool(dict, "QIFImportAllCategories", QIFImportAllCategories_);
  ReadBool(dict, "QIFImportSplitLineItems", QIFImportSplitLineItems_);
  ReadInt(dict, "QIFImport_SwapOptions_ToFrom", QIFImport_SwapOptions_ToFrom_);
  ReadInt(dict, "QIFImport_SwapOptions_Category", QIFImport_SwapOptions_Category_);
  ReadInt(dict, "QIFImport_SwapOptions_Description", QIFImport_SwapOptions_Description_);
  ReadInt(dict, "textImportEncoding", textImportEncoding_);
  if (const plist::Value* value = ReadSetting(dict, "textImportDataLayout", Kind::kString)) {
    textImportDataLayout_ = SplitLayout(*value->asString());
  }
  ReadBool(dict, "textImportSkipFirstRow", textImportSkipFirstRow_);
  ReadInt(dict, "textImportDataFormat", textImportDataFormat_);
  ReadInt(dict, "textImportDateFormat", textImportDateFormat_);
  constexpr std::string_view kInTextInit = " in ZELMAccount:initWithDictionary";
  ReadSeparator(dict, "textImportDecimalSeparator", kInTextInit, textImportDecimalSeparator_);
  ReadSeparator(dict, "textImportThousandsSeparator", kInTextInit, textImportThousandsSeparator_);
  if (const plist::Value* value =
          ReadSetting(dict, "textImportZeroAmountsAsDeposits", Kind::kNumber)) {
    textImportZeroAmountsAsDeposits_ = value->boolValue() ? 1 : 0;
  }
  ReadInt(dict, "textExport_ExportType", textExport_ExportType_);
  ReadInt(dict, "textExport_Encoding", textExport_Encoding_);
  ReadInt(dict, "lastFromAccount", lastFromAccount_, true);
  ReadInt(dict, "lastToAccount", lastToAccount_, true);
}

void ZELMAccount::ResolveCurrency(const plist::Value* stored) {
  const plist::Dictionary* dict = nullptr;
  if (stored != nullptr) {
    dict = stored->asDictionary();
    if (dict == nullptr) {
      ZELMLog("Currency is in the wrong format in -[ZELMAccount initWithDictionary:]");
    }
  }
  if (dict == nullptr) {
    if (accountsController_ != nullptr) setCurrency(accountsController_->currency());
    return;
  }
  if (accountsController_ != nullptr) {
    const plist::Value* code = dict->find("code");
    const std::string* code_text = code != nullptr ? code->asString() : nullptr;
    if (code_text != nullptr) {
      if (auto registered = accountsController_->currencyWithCode(*code_text)) {
        currency_ = std::move(registered);
        return;
      }
    }
  }
  currency_ = std::make_shared<LVCurrency>(dict);
  // Accounts in the same currency share one object: register the new one.
  if (accountsController_ != nullptr) accountsController_->currencies().push_back(currency_);
}

plist::Dictionary ZELMAccount::asDictionary() const { return StoredForm(true); }

plist::Dictionary ZELMAccount::asDictionaryWithoutEntries() const { return StoredForm(false); }

plist::Dictionary ZELMAccount::StoredForm(bool with_entries) const {
  plist::Dictionary dict;
  dict.reserve(90);
  dict.append("name", name_);
  dict.append("currency", currency_->asDictionary());
  if (icon_) dict.append("icon", *icon_);
  if (highResolutionIcon_) dict.append("highResolutionIcon", *highResolutionIcon_);
  dict.append("number", number_);
  dict.append("version", version_);
  plist::Array entries;
  if (with_entries) {
    entries.reserve(entries_.size());
    for (const auto& entry : entries_) entries.emplace_back(entry->asDictionary());
  }
  dict.append("entries", std::move(entries));
  plist::Array schedules;
  schedules.reserve(schedules_.size());
  for (const auto& schedule : schedules_) schedules.emplace_back(schedule->asDictionary());
  dict.append("schedules", std::move(schedules));
  dict.append("startingCheckNumber", startingCheckNumber_);
  dict.append("numberCount", numberCount_);
  dict.append("startingBalance", startingBalance_);
  dict.append("password", password_);
  dict.append("types", StoredTypes(types_));
  dict.append("inactiveTypes", StoredTypes(inactiveTypes_));
  dict.append("defaultDebitType", TypeNumber(defaultDebitType_));
  dict.append("defaultDepositType", TypeNumber(defaultDepositType_));
  dict.append("preference_Descriptions_Style", preference_Descriptions_Style_);
  dict.append("preference_ToFrom_Style", preference_ToFrom_Style_);
  dict.append("preference_Descriptions_SomeSelection", preference_Descriptions_SomeSelection_);
  dict.append("preference_ToFrom_SomeSelection", preference_ToFrom_SomeSelection_);
  dict.append("preferredDebitDescriptions", StoredStrings(preferredDebitDescriptions_));
  dict.append("preferredDepositDescriptions", StoredStrings(preferredDepositDescriptions_));
  dict.append("preferredTos", StoredStrings(preferredTos_));
  dict.append("preferredFroms", StoredStrings(preferredFroms_));
  dict.append("statementBalance", statementBalance_);
  dict.append("accountSummaries", accountSummariesStoredForm());
  dict.append("selectedAccountSummary", selectedAccountSummaryIndex());
  for (const auto& [prefix, view] :
       {std::pair<std::string, const ViewFilterSettings*>{"entry", &entryFilter_},
        {"reconcile", &reconcileFilter_}}) {
    dict.append(prefix + "FilterType", view->filterType);
    if (!view->filterData.isNone()) dict.append(prefix + "FilterData", view->filterData);
    dict.append(prefix + "ResolvedFilterType", view->resolvedFilterType);
    dict.append(prefix + "TaxDeductibleFilterType", view->taxDeductibleFilterType);
    dict.append(prefix + "DateFilterType", view->dateFilterType);
    dict.append(prefix + "DateFilterStartDate", view->dateFilterStartDate);
    dict.append(prefix + "DateFilterEndDate", view->dateFilterEndDate);
  }
  WriteImportSettings(dict);
  dict.append("smartFolders", SmartFoldersAsArray());
  plist::Array folders;
  folders.reserve(folders_.size());
  for (const auto& folder : folders_) folders.emplace_back(folder->asDictionary());
  dict.append("folders", std::move(folders));
  return dict;
}

void ZELMAccount::WriteImportSettings(plist::Dictionary& dict) const {
  dict.append("OFXImportZeroAmountsAsDeposits", OFXImportZeroAmountsAsDeposits_);
  dict.append("OFXImport_SwapOptions_Name", OFXImport_SwapOptions_Name_);
  dict.append("OFXImport_SwapOptions_Memo", OFXImport_SwapOptions_Memo_);
  dict.append("OFXImport_SwapOptions_Payee", OFXImport_SwapOptions_Payee_);
  dict.append("OFXImport_SwapOptions_TransactionType", OFXImport_SwapOptions_TransactionType_);
  dict.append("OFXImport_SwapOptions_ReferenceNumber", OFXImport_SwapOptions_ReferenceNumber_);
  dict.append("QIFImportEncoding", QIFImportEncoding_);
  dict.append("QIFImportDateFormat", QIFImportDateFormat_);
  dict.append("QIFImportDecimalSeparator", QIFImportDecimalSeparator_);
  dict.append("QIFImportThousandsSeparator", QIFImportThousandsSeparator_);
  dict.append("QIFImportZeroAmountsAsDeposits", QIFImportZeroAmountsAsDeposits_);
  dict.append("QIFImportAllCategories", QIFImportAllCategories_);
  dict.append("QIFImportSplitLineItems", QIFImportSplitLineItems_);
  dict.append("QIFImport_SwapOptions_ToFrom", QIFImport_SwapOptions_ToFrom_);
  dict.append("QIFImport_SwapOptions_Category", QIFImport_SwapOptions_Category_);
  dict.append("QIFImport_SwapOptions_Description", QIFImport_SwapOptions_Description_);
  dict.append("textImportEncoding", textImportEncoding_);
  dict.append("textImportDataLayout", JoinLayout(textImportDataLayout_));
  dict.append("textImportDataFormat", textImportDataFormat_);
  dict.append("textImportSkipFirstRow", textImportSkipFirstRow_);
  dict.append("textImportDateFormat", textImportDateFormat_);
  dict.append("textImportDecimalSeparator", textImportDecimalSeparator_);
  dict.append("textImportThousandsSeparator", textImportThousandsSeparator_);
  dict.append("textImportZeroAmountsAsDeposits", textImportZeroAmountsAsDeposits_ != 0);
  dict.append("textExport_ExportType", textExport_ExportType_);
  dict.append("textExport_Encoding", textExport_Encoding_);
  dict.append("lastFromAccount", lastFromAccount_);
  // Saved through a boolean of the low byte, unlike lastFromAccount; files already written
  // depend on it, so it comes back as 0 or 1.
  dict.append("lastToAccount", static_cast<std::int8_t>(lastToAccount_ & 0xff) != 0);
}

void ZELMAccount::SetName(std::optional<std::string_view> name) {
  if (name) name_ = *name;
}

void ZELMAccount::setCurrency(std::shared_ptr<LVCurrency> currency) {
  if (currency != nullptr) currency_ = std::move(currency);
}

void ZELMAccount::SetPassword(std::optional<std::string_view> password) {
  if (!password) return;
  password_ = *password;
  if (password_.empty()) authenticated_ = true;
}

bool ZELMAccount::Authenticate(std::optional<std::string_view> candidate) {
  if (!HasPassword()) {
    authenticated_ = true;
  } else if (!candidate) {
    authenticated_ = false;
  } else if (*candidate == password_) {
    authenticated_ = true;
  }
  return authenticated_;
}

void ZELMAccount::SetStartingBalance(double balance) { startingBalance_ = RoundAmount(balance); }

void ZELMAccount::setStatementBalance(double balance) { statementBalance_ = RoundAmount(balance); }

void ZELMAccount::SetPreferredDebitDescriptions(std::optional<StringList> list) {
  preferredDebitDescriptions_ = std::move(list);
}

void ZELMAccount::SetPreferredDepositDescriptions(std::optional<StringList> list) {
  preferredDepositDescriptions_ = std::move(list);
}

void ZELMAccount::SetPreferredTos(std::optional<StringList> list) {
  preferredTos_ = std::move(list);
}

void ZELMAccount::SetPreferredFroms(std::optional<StringList> list) {
  preferredFroms_ = std::move(list);
}

void ZELMAccount::setEntryFilterData(const plist::Value* data) {
  entryFilter_.filterData = data != nullptr ? *data : plist::Value(std::string());
}

void ZELMAccount::setReconcileFilterData(const plist::Value* data) {
  reconcileFilter_.filterData = data != nullptr ? *data : plist::Value(std::string());
}

void ZELMAccount::SetQIFImportDecimalSeparator(std::optional<std::string_view> separator) {
  if (separator) QIFImportDecimalSeparator_ = *separator;
}

void ZELMAccount::SetQIFImportThousandsSeparator(std::optional<std::string_view> separator) {
  if (separator) QIFImportThousandsSeparator_ = *separator;
}

void ZELMAccount::SetTextImportDecimalSeparator(std::optional<std::string_view> separator) {
  if (separator) textImportDecimalSeparator_ = *separator;
}

void ZELMAccount::SetTextImportThousandsSeparator(std::optional<std::string_view> separator) {
  if (separator) textImportThousandsSeparator_ = *separator;
}

}  // namespace folvant
