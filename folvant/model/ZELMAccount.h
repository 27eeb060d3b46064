#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/kit/DateRangeForMnemonic.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountEntryType.h"
#include "folvant/model/ZELMAccountFolder.h"
#include "folvant/platform/Clock.h"
#include "folvant/platform/Port.h"
#include "folvant/platform/plist/Value.h"

namespace folvant {

class LVCurrency;
class ZELMAccountSchedule;
class ZELMAccountSummary;
class ZELMFilter;
class ZELMAccountsController;
struct QIFExportOptions;
struct TabDelimitedExportOptions;

// One bank account of the ledger: its register (the main entry list and the entries filed in
// folders), entry types, currency, password, suggestion lists, schedules, smart folders,
// import and export settings, view-filter settings and summaries. Accounts are held by the
// accounts controller through std::shared_ptr; the account owns its entries, types,
// schedules, summaries and folders and refers to the controller by a plain pointer (not
// owned), which must outlive it. Entries filed in the account point back to it; the account
// clears those pointers when it goes.
class ZELMAccount {
 public:
  using EntryList = std::vector<std::shared_ptr<ZELMAccountEntry>>;
  using TypeList = std::vector<std::shared_ptr<ZELMAccountEntryType>>;
  using CategoryList = std::vector<std::shared_ptr<ZELMAccountEntryCategory>>;
  using FolderList = std::vector<std::shared_ptr<ZELMAccountFolder>>;
  using StringList = std::vector<std::string>;

  // The format version that this code reads and writes.
  static constexpr std::int32_t kCurrentVersion = 8;

  // A new account: number -1, a US dollar currency of its own, the 13 default types (no
  // default debit or deposit type chosen), starting check number 1, no entries, the default
  // icons, unauthenticated with an empty password.
  ZELMAccount();
  // A new account, then the stored keys of `dict` (already brought to the current version).
  // `controller` resolves the currency and the categories (the in-memory "accountsController"
  // key). nullptr dict: the new account, with a message.
  explicit ZELMAccount(const plist::Dictionary* dict, ZELMAccountsController* controller = nullptr);
  // A register already built from its stored entries as they were read from a file, with the
  // messages that building gave, in order.
  struct PreparedEntries {
    EntryList entries;
    std::vector<std::string> messages;
  };
  // As above, except that the register is `prepared` instead of the stored "entries" (which
  // must still be there, as an array): its messages are given where the stored entries would
  // have been built.
  ZELMAccount(const plist::Dictionary* dict, ZELMAccountsController* controller,
              PreparedEntries prepared);
  ZELMAccount(const ZELMAccount&) = delete;
  ZELMAccount& operator=(const ZELMAccount&) = delete;
  ~ZELMAccount();

  // The stored form (keys in a fixed order, see the .cpp).
  plist::Dictionary asDictionary() const;
  // The same with an empty "entries" array, for writers that take the register entry by entry
  // (AccountFileBytes).
  plist::Dictionary asDictionaryWithoutEntries() const;

  // ---- Format upgrade (ZELMAccountUpgrade.cpp) ----
  // Brings a stored account of any older version to the current one, in place.
  static plist::Dictionary& UpdateAccountDictionary(plist::Dictionary& dict);
  static plist::Dictionary& UpdateAccountDictionary(plist::Dictionary& dict, std::int32_t version);
  static plist::Dictionary& UpdateAccountDictionaryFromNil(plist::Dictionary& dict);

  // ---- Identity and display ----
  ZELMAccountsController* accountsController() const { return accountsController_; }
  void setAccountsController(ZELMAccountsController* controller) {
    accountsController_ = controller;
  }
  std::int32_t GetNumber() const { return number_; }
  void SetNumber(std::int32_t number) { number_ = number; }
  std::int32_t GetVersion() const { return version_; }
  void SetVersion(std::int32_t version) { version_ = version; }
  std::string GetName() const { return name_; }
  // nullopt is ignored.
  void SetName(std::optional<std::string_view> name);
  // The icons as TIFF bytes, kept exactly as loaded; nullopt when there is none.
  const std::optional<plist::Data>& icon() const { return icon_; }
  void setIcon(std::optional<plist::Data> icon) { icon_ = std::move(icon); }
  const std::optional<plist::Data>& highResolutionIcon() const { return highResolutionIcon_; }
  void setHighResolutionIcon(std::optional<plist::Data> icon) {
    highResolutionIcon_ = std::move(icon);
  }
  const std::shared_ptr<LVCurrency>& currency() const { return currency_; }
  // nullptr is ignored: an account always has a currency.
  void setCurrency(std::shared_ptr<LVCurrency> currency);
  bool displayExpanded() const { return displayExpanded_; }
  void setDisplayExpanded(bool expanded) { displayExpanded_ = expanded; }

  // ---- Password ----
  std::string GetPassword() const { return password_; }
  // nullopt is ignored; the empty password also authenticates the account.
  void SetPassword(std::optional<std::string_view> password);
  bool HasPassword() const { return !password_.empty(); }
  // Without a password: authenticated whatever is given. nullopt: unauthenticated. The exact
  // password: authenticated. A wrong one: unchanged. Returns the new state.
  bool Authenticate(std::optional<std::string_view> candidate);
  bool IsAuthenticated() const { return authenticated_; }

  // ---- Entry store ----
  // The main list itself; folders hold the rest.
  const EntryList& GetEntries() const { return entries_; }
  // The main list followed by each folder's entries, folder by folder: a new list.
  EntryList GetAllEntries() const;
  // Builds the main list from stored entries and returns it; nullptr for a missing argument or
  // one that is not an array.
  const EntryList* InitEntries(const plist::Value* array);
  // nullopt is ignored; otherwise the main list becomes these entries, adopted by this account.
  void SetEntries(std::optional<EntryList> entries);
  // Adopts the entry and appends it to the shown folder, else to the main list. Does not number
  // it (take NextAvailableNumber first). nullptr is ignored.
  void AddEntry(const std::shared_ptr<ZELMAccountEntry>& entry);
  // Takes the entry out of the main list if it is there, else out of every folder holding it.
  void RemoveEntry(const ZELMAccountEntry* entry);
  std::shared_ptr<ZELMAccountEntry> GetEntryWithNumber(std::int32_t number) const;
  // Smallest / largest date, the first met on equal dates; nullptr without entries.
  std::shared_ptr<ZELMAccountEntry> GetFirstEntry() const;
  std::shared_ptr<ZELMAccountEntry> GetLastEntry() const;
  // Largest entry number; among checks for GetLastEnteredCheck.
  std::shared_ptr<ZELMAccountEntry> GetLastEnteredEntry() const;
  std::shared_ptr<ZELMAccountEntry> GetLastEnteredCheck() const;
  // Every debit / deposit (void ones included), in all-entries order.
  EntryList GetDebits() const;
  EntryList GetDeposits() const;

  // ---- Numbering ----
  // Raises the counter and returns it: numbers are never reused. A counter loaded at 2147483647
  // wraps to -2147483648, as the stored 32-bit number would, rather than overflowing.
  std::int32_t NextAvailableNumber() {
    numberCount_ = static_cast<std::int32_t>(static_cast<std::uint32_t>(numberCount_) + 1);
    return numberCount_;
  }
  std::int32_t GetNumberCount() const { return numberCount_; }
  void SetNumberCount(std::int32_t count) { numberCount_ = count; }
  std::int32_t GetStartingCheckNumber() const { return startingCheckNumber_; }
  void SetStartingCheckNumber(std::int32_t number) { startingCheckNumber_ = number; }
  // The largest check number in use (linked deposits aside), or the starting check number - 1
  // when that is larger.
  std::int32_t HighestCheckNumber() const;
  std::int32_t NextAvailableCheckNumber() const;
  // The first free check number after `entry`'s in check-number order; nullptr: after all.
  std::int32_t NextAvailableCheckNumberAfterEntry(const ZELMAccountEntry* entry) const;
  // The smallest check number in use above `number`, or the highest one.
  std::int32_t NextCheckNumberAfterCheckNumber(std::int32_t number) const;

  // ---- Balances (void entries never count) ----
  double GetStartingBalance() const { return startingBalance_; }
  // Rounds to cents.
  void SetStartingBalance(double balance);
  double statementBalance() const { return statementBalance_; }
  // Rounds to cents.
  void setStatementBalance(double balance);
  // 0.0 while the account is locked.
  double GetBalance() const;
  // Entries dated on or before today.
  double GetTodaysBalance() const;
  double GetResolvedBalance() const;
  // GetBalance() - GetResolvedBalance(): no starting balance when unlocked.
  double GetUnresolvedBalance() const;
  double GetRunningBalanceBeforeDate(std::int32_t date) const;
  double GetRunningBalanceThroughDate(std::int32_t date) const;
  // The balance after `entry` in date / checks-first order; 0.0 for nullptr.
  double GetRunningBalanceAtEntry(const ZELMAccountEntry* entry) const;
  // Stores each entry's running balance in date / checks-first order; with `ordered`, also
  // gives every entry (folders' too) in that order.
  void CacheRunningBalances(EntryList* ordered = nullptr) const;
  // Sums from 0.0 of the non-void debits / deposits.
  double GetDebitsTotal() const;
  double GetDepositsTotal() const;

  // ---- Suggestion lists ----
  // Style 0: all texts, 1: the most recent (count from the SomeSelection setting), 2: the
  // user's own list; any other style: nullopt.
  std::optional<StringList> GetPreferredDebitDescriptions() const;
  std::optional<StringList> GetPreferredDepositDescriptions() const;
  std::optional<StringList> GetPreferredTos() const;
  std::optional<StringList> GetPreferredFroms() const;
  // Distinct (ignoring case) non-empty texts sorted ignoring case; empty while locked.
  StringList DebitDescriptions_All() const;
  StringList DepositDescriptions_All() const;
  StringList Tos_All() const;
  StringList Froms_All() const;
  // Distinct texts, most recently entered first, up to count + 1; empty while locked.
  StringList DebitDescriptions_Some(std::int32_t count) const;
  StringList DepositDescriptions_Some(std::int32_t count) const;
  StringList Tos_Some(std::int32_t count) const;
  StringList Froms_Some(std::int32_t count) const;
  // The user's own lists as they are.
  std::optional<StringList> DebitDescriptions_Specific() const;
  std::optional<StringList> DepositDescriptions_Specific() const;
  std::optional<StringList> Tos_Specific() const;
  std::optional<StringList> Froms_Specific() const;
  // The user's own lists (nullopt: none).
  const std::optional<StringList>& preferredDebitDescriptions() const {
    return preferredDebitDescriptions_;
  }
  const std::optional<StringList>& preferredDepositDescriptions() const {
    return preferredDepositDescriptions_;
  }
  const std::optional<StringList>& preferredTos() const { return preferredTos_; }
  const std::optional<StringList>& preferredFroms() const { return preferredFroms_; }
  void SetPreferredDebitDescriptions(std::optional<StringList> list);
  void SetPreferredDepositDescriptions(std::optional<StringList> list);
  void SetPreferredTos(std::optional<StringList> list);
  void SetPreferredFroms(std::optional<StringList> list);
  std::int32_t Get_Preference_Descriptions_Style() const { return preference_Descriptions_Style_; }
  void Set_Preference_Descriptions_Style(std::int32_t style) {
    preference_Descriptions_Style_ = style;
  }
  std::int32_t Get_Preference_ToFrom_Style() const { return preference_ToFrom_Style_; }
  void Set_Preference_ToFrom_Style(std::int32_t style) { preference_ToFrom_Style_ = style; }
  std::int32_t Get_Preference_Descriptions_SomeSelection() const {
    return preference_Descriptions_SomeSelection_;
  }
  void Set_Preference_Descriptions_SomeSelection(std::int32_t count) {
    preference_Descriptions_SomeSelection_ = count;
  }
  std::int32_t Get_Preference_ToFrom_SomeSelection() const {
    return preference_ToFrom_SomeSelection_;
  }
  void Set_Preference_ToFrom_SomeSelection(std::int32_t count) {
    preference_ToFrom_SomeSelection_ = count;
  }
  // Appends the source's own description (or to/from) lists' texts that this account lacks
  // (ignoring case). Ignored for nullptr or a locked source.
  void importDescriptionsFromAccount(const ZELMAccount* source);
  void importToFromsFromAccount(const ZELMAccount* source);

  // ---- Sorting ----
  // Sorts the shown folder's entries, else the main list, by number and then by the key's
  // comparator: 0 check number, 1 date, 2 type, 3 description, 4 amount, 5 cleared, 6 to/from.
  void SortBy(std::int32_t key, bool descending);
  // Orders `list` (entries of this account) as SortBy orders the register, leaving every
  // stored list as it is.
  void SortEntries(EntryList& list, std::int32_t key, bool descending) const;
  // Account comparators for the account list: -1, 0 or 1, no tie-break.
  int NameIsGreaterThan(const ZELMAccount& other) const;
  int NameIsGreaterThan_Reversed(const ZELMAccount& other) const;
  int NumberIsGreaterThan(const ZELMAccount& other) const;
  int BalanceIsGreaterThan(const ZELMAccount& other) const;
  int BalanceIsGreaterThan_Reversed(const ZELMAccount& other) const;

  // ---- Types ----
  const TypeList& types() const { return types_; }
  void setTypes(TypeList types) { types_ = std::move(types); }
  const TypeList& inactiveTypes() const { return inactiveTypes_; }
  void setInactiveTypes(TypeList types) { inactiveTypes_ = std::move(types); }
  const std::shared_ptr<ZELMAccountEntryType>& GetDefaultDebitType() const {
    return defaultDebitType_;
  }
  void SetDefaultDebitType(std::shared_ptr<ZELMAccountEntryType> type) {
    defaultDebitType_ = std::move(type);
  }
  const std::shared_ptr<ZELMAccountEntryType>& GetDefaultDepositType() const {
    return defaultDepositType_;
  }
  void SetDefaultDepositType(std::shared_ptr<ZELMAccountEntryType> type) {
    defaultDepositType_ = std::move(type);
  }
  // The 13 types of a new account, sorted by name.
  static TypeList defaultTypes();
  TypeList GetDebitTypes() const;
  TypeList GetDepositTypes() const;
  // One more than the largest active or inactive type number; 0 when none is positive.
  std::int32_t nextAvailableTypeNumber() const;
  // The first active type with that number, else the first inactive one, else nullptr.
  std::shared_ptr<ZELMAccountEntryType> accountEntryTypeForNumber(std::int32_t number) const;
  // Exact (case-sensitive) name among debit / deposit types, active before inactive.
  std::shared_ptr<ZELMAccountEntryType> debitEntryTypeForName(std::string_view name) const;
  std::shared_ptr<ZELMAccountEntryType> depositEntryTypeForName(std::string_view name) const;
  // Moves the type to the inactive list, clearing the default that named it.
  void deactivateType(const std::shared_ptr<ZELMAccountEntryType>& type);
  // Copies the source's types whose names (ignoring case) this account lacks, per direction,
  // with new numbers. Ignored for nullptr or a locked source.
  void importTypesFromAccount(const ZELMAccount* source);

  // ---- Categories (the account's own, used only without a controller) ----
  const CategoryList& categories() const { return categories_; }
  void setCategories(CategoryList categories) { categories_ = std::move(categories); }
  const CategoryList& inactiveCategories() const { return inactiveCategories_; }
  // A new account has no categories of its own: always empty.
  CategoryList defaultCategories() const { return {}; }
  std::int32_t nextAvailableCategoryNumber() const;
  // Through the controller at any depth, else the top level of the account's own list.
  std::shared_ptr<ZELMAccountEntryCategory> accountEntryCategoryForNumber(
      std::int32_t number) const;
  void deactivateCategory(const std::shared_ptr<ZELMAccountEntryCategory>& category);

  // ---- Folders ----
  const FolderList& folders() const { return folders_; }
  // The list becomes these folders (none: empty), whose entries are adopted by this account.
  void SetFolders(std::optional<FolderList> folders);
  // Ignored for nullptr or a folder already present.
  void addFolder(std::shared_ptr<ZELMAccountFolder> folder);
  void removeFolder(const ZELMAccountFolder* folder);
  // Ignored outside 0..count-1.
  void removeFolderAtIndex(std::int32_t index);
  void removeAllFolders() { folders_.clear(); }
  // The folder being shown (not owned; removing it from the list does not clear it).
  std::shared_ptr<ZELMAccountFolder> folder() const { return folder_.lock(); }
  void setFolder(const std::shared_ptr<ZELMAccountFolder>& folder) { folder_ = folder; }

  // ---- View-filter settings (register and reconcile views) ----
  std::int32_t entryFilterType() const { return entryFilter_.filterType; }
  void setEntryFilterType(std::int32_t type) { entryFilter_.filterType = type; }
  const plist::Value& entryFilterData() const { return entryFilter_.filterData; }
  // A missing value becomes the empty text.
  void setEntryFilterData(const plist::Value* data);
  std::int32_t entryResolvedFilterType() const { return entryFilter_.resolvedFilterType; }
  void setEntryResolvedFilterType(std::int32_t type) { entryFilter_.resolvedFilterType = type; }
  std::int32_t entryTaxDeductibleFilterType() const { return entryFilter_.taxDeductibleFilterType; }
  void setEntryTaxDeductibleFilterType(std::int32_t type) {
    entryFilter_.taxDeductibleFilterType = type;
  }
  std::int32_t entryDateFilterType() const { return entryFilter_.dateFilterType; }
  void setEntryDateFilterType(std::int32_t type) { entryFilter_.dateFilterType = type; }
  std::int32_t entryDateFilterStartDate() const { return entryFilter_.dateFilterStartDate; }
  void setEntryDateFilterStartDate(std::int32_t date) { entryFilter_.dateFilterStartDate = date; }
  std::int32_t entryDateFilterEndDate() const { return entryFilter_.dateFilterEndDate; }
  void setEntryDateFilterEndDate(std::int32_t date) { entryFilter_.dateFilterEndDate = date; }
  std::int32_t reconcileFilterType() const { return reconcileFilter_.filterType; }
  void setReconcileFilterType(std::int32_t type) { reconcileFilter_.filterType = type; }
  const plist::Value& reconcileFilterData() const { return reconcileFilter_.filterData; }
  void setReconcileFilterData(const plist::Value* data);
  std::int32_t reconcileResolvedFilterType() const { return reconcileFilter_.resolvedFilterType; }
  void setReconcileResolvedFilterType(std::int32_t type) {
    reconcileFilter_.resolvedFilterType = type;
  }
  std::int32_t reconcileTaxDeductibleFilterType() const {
    return reconcileFilter_.taxDeductibleFilterType;
  }
  void setReconcileTaxDeductibleFilterType(std::int32_t type) {
    reconcileFilter_.taxDeductibleFilterType = type;
  }
  std::int32_t reconcileDateFilterType() const { return reconcileFilter_.dateFilterType; }
  void setReconcileDateFilterType(std::int32_t type) { reconcileFilter_.dateFilterType = type; }
  std::int32_t reconcileDateFilterStartDate() const { return reconcileFilter_.dateFilterStartDate; }
  void setReconcileDateFilterStartDate(std::int32_t date) {
    reconcileFilter_.dateFilterStartDate = date;
  }
  std::int32_t reconcileDateFilterEndDate() const { return reconcileFilter_.dateFilterEndDate; }
  void setReconcileDateFilterEndDate(std::int32_t date) {
    reconcileFilter_.dateFilterEndDate = date;
  }

  // ---- Scheduled entries (ZELMAccountSchedules.cpp) ----
  using ScheduleList = std::vector<std::shared_ptr<ZELMAccountSchedule>>;
  // Builds the schedule list from stored schedules and returns it; nullptr (and no change) for
  // a missing argument or one that is not an array. Elements that are not dictionaries are
  // skipped with a message.
  const ScheduleList* InitSchedules(const plist::Value* array);
  // nullopt is ignored; otherwise the list becomes these schedules (shared, not copied), each
  // adopted by this account.
  void SetSchedules(std::optional<ScheduleList> schedules);
  // Adopts and appends the schedule; does not number it (take NextAvailableScheduleNumber
  // first). nullptr is ignored.
  void AddSchedule(std::shared_ptr<ZELMAccountSchedule> schedule);
  // Removes that schedule object; nullptr is ignored.
  void RemoveSchedule(const ZELMAccountSchedule* schedule);
  const ScheduleList& GetSchedules() const { return schedules_; }
  // The first schedule with that number, or nullptr.
  std::shared_ptr<ZELMAccountSchedule> ScheduleForNumber(std::int32_t number) const;
  // One more than the greatest schedule number; 0 when none is 0 or more.
  std::int32_t NextAvailableScheduleNumber() const;
  // Whether any schedule has something due now (stops at the first that has).
  bool HasPendingScheduledEntries() const;
  // The number of occurrences due by `date` over all schedules; 0 for no date.
  std::int64_t numberOfPendingScheduledEntriesForDate(
      std::optional<platform::LocalTime> date) const;

  // ---- Summaries (folvant/summaries/ZELMAccountSummaries.cpp) ----
  using SummaryList = std::vector<std::shared_ptr<ZELMAccountSummary>>;
  // The twelve summaries of a new account (" Custom...", then all entries, expenses and income
  // month, quarter and year to date, and tax-deductible entries last year and this year, the
  // names localized), each given this account's entries, sorted by name.
  SummaryList defaultAccountSummaries() const;
  // The list, always sorted by name ignoring case.
  const SummaryList& accountSummaries() const { return accountSummaries_; }
  // Appends the summary, gives it this account's entries and sorts the list again. nullptr is
  // ignored.
  void addAccountSummary(std::shared_ptr<ZELMAccountSummary> summary);
  // Takes the summary out of the list; the selection stays as it is, even when it was this
  // summary.
  void removeAccountSummary(const ZELMAccountSummary* summary);
  // Selects the summary whether or not it is in the list (nullptr: none).
  void selectAccountSummary(std::shared_ptr<ZELMAccountSummary> summary) {
    selectedAccountSummary_ = std::move(summary);
  }
  // Selects the summary only when it is in the list.
  void setSelectedAccountSummary(const std::shared_ptr<ZELMAccountSummary>& summary);
  // Ignored outside 0..count-1.
  void selectAccountSummaryAtIndex(std::int32_t index);
  // The selection, or the first summary when none is selected (nullptr for an empty list).
  std::shared_ptr<ZELMAccountSummary> selectedAccountSummary() const;
  // Sets the options present in `options` on the selected summary, then sorts the list again
  // (the name may have changed).
  void setAccountSummaryOptions(const plist::Dictionary* options);
  // The stored form: the summaries' option dictionaries in list order, and the index of the
  // selected one (0 when none is selected or it is not in the list).
  plist::Array accountSummariesStoredForm() const;
  std::int32_t selectedAccountSummaryIndex() const;

  // ---- Export (folvant/exchange/ZELMAccountExport.cpp) ----
  // The register as one QIF "Bank" register; nullptr: the default options.
  std::string asQIFStringWithOptions(const QIFExportOptions* options) const;
  // The register as tab-separated rows with a running balance; nullptr: the default options.
  std::string asTabDelimitedStringWithOptions(const TabDelimitedExportOptions* options) const;

  // ---- Smart folders and view filters (folvant/filters/ZELMAccountFilters.cpp) ----
  using FilterList = std::vector<std::shared_ptr<ZELMFilter>>;
  // The two smart folders of a new account: "This Year" and "Last Year" (localized), each one
  // group holding one date condition.
  static FilterList defaultSmartFolders();
  const FilterList& smartFolders() const { return smartFolders_; }
  // Ignored for nullptr or a smart folder already present.
  void addSmartFolder(std::shared_ptr<ZELMFilter> smartFolder);
  void removeSmartFolder(const ZELMFilter* smartFolder);
  // Ignored outside 0..count-1.
  void removeSmartFolderAtIndex(std::int32_t index);
  void removeAllSmartFolders() { smartFolders_.clear(); }
  // The smart folder being shown (not owned; removing it from the list does not clear it).
  std::shared_ptr<ZELMFilter> smartFolder() const { return smartFolder_.lock(); }
  void setSmartFolder(const std::shared_ptr<ZELMFilter>& smartFolder) {
    smartFolder_ = smartFolder;
  }
  // A new filter from a view's quick-filter settings (2 the reconcile view, otherwise the
  // register view): one group that narrows, holding a "contains" condition on the searched
  // field, the date range as an "after"/"before" pair, and the resolved and tax-deductible
  // tests when they are set.
  std::shared_ptr<ZELMFilter> filterForViewType(std::int32_t viewType) const;
  // The first and last day the view's date setting shows, both included; nullopt when the
  // setting limits nothing (an unknown code).
  std::optional<DateRange> viewDateRange(std::int32_t viewType) const;
  std::shared_ptr<ZELMFilter> entryFilter() const;
  std::shared_ptr<ZELMFilter> reconcileFilter() const;
  // What each view shows: its filter applied to the shown folder's entries; without a shown
  // folder, to all entries and then the shown smart folder applied to that.
  EntryList entryFilteredEntries() const;
  EntryList reconcileFilteredEntries() const;

  // ---- Import and export settings ----
  bool GetOFXImportZeroAmountsAsDeposits() const { return OFXImportZeroAmountsAsDeposits_; }
  void SetOFXImportZeroAmountsAsDeposits(bool on) { OFXImportZeroAmountsAsDeposits_ = on; }
  std::int32_t GetOFXImport_SwapOptions_Name() const { return OFXImport_SwapOptions_Name_; }
  void SetOFXImport_SwapOptions_Name(std::int32_t v) { OFXImport_SwapOptions_Name_ = v; }
  std::int32_t GetOFXImport_SwapOptions_Payee() const { return OFXImport_SwapOptions_Payee_; }
  void SetOFXImport_SwapOptions_Payee(std::int32_t v) { OFXImport_SwapOptions_Payee_ = v; }
  std::int32_t GetOFXImport_SwapOptions_Memo() const { return OFXImport_SwapOptions_Memo_; }
  void SetOFXImport_SwapOptions_Memo(std::int32_t v) { OFXImport_SwapOptions_Memo_ = v; }
  std::int32_t GetOFXImport_SwapOptions_TransactionType() const {
    return OFXImport_SwapOptions_TransactionType_;
  }
  void SetOFXImport_SwapOptions_TransactionType(std::int32_t v) {
    OFXImport_SwapOptions_TransactionType_ = v;
  }
  std::int32_t GetOFXImport_SwapOptions_ReferenceNumber() const {
    return OFXImport_SwapOptions_ReferenceNumber_;
  }
  void SetOFXImport_SwapOptions_ReferenceNumber(std::int32_t v) {
    OFXImport_SwapOptions_ReferenceNumber_ = v;
  }
  std::int32_t GetQIFImportEncoding() const { return QIFImportEncoding_; }
  void SetQIFImportEncoding(std::int32_t encoding) { QIFImportEncoding_ = encoding; }
  std::int32_t GetQIFImportDateFormat() const { return QIFImportDateFormat_; }
  void SetQIFImportDateFormat(std::int32_t format) { QIFImportDateFormat_ = format; }
  std::string GetQIFImportDecimalSeparator() const { return QIFImportDecimalSeparator_; }
  // nullopt is ignored (likewise for the other separators).
  void SetQIFImportDecimalSeparator(std::optional<std::string_view> separator);
  std::string GetQIFImportThousandsSeparator() const { return QIFImportThousandsSeparator_; }
  void SetQIFImportThousandsSeparator(std::optional<std::string_view> separator);
  bool GetQIFImportZeroAmountsAsDeposits() const { return QIFImportZeroAmountsAsDeposits_; }
  void SetQIFImportZeroAmountsAsDeposits(bool on) { QIFImportZeroAmountsAsDeposits_ = on; }
  bool GetQIFImportAllCategories() const { return QIFImportAllCategories_; }
  void SetQIFImportAllCategories(bool on) { QIFImportAllCategories_ = on; }
  bool GetQIFImportSplitLineItems() const { return QIFImportSplitLineItems_; }
  void SetQIFImportSplitLineItems(bool on) { QIFImportSplitLineItems_ = on; }
  std::int32_t GetQIFImport_SwapOptions_ToFrom() const { return QIFImport_SwapOptions_ToFrom_; }
  void SetQIFImport_SwapOptions_ToFrom(std::int32_t v) { QIFImport_SwapOptions_ToFrom_ = v; }
  std::int32_t GetQIFImport_SwapOptions_Category() const { return QIFImport_SwapOptions_Category_; }
  void SetQIFImport_SwapOptions_Category(std::int32_t v) { QIFImport_SwapOptions_Category_ = v; }
  std::int32_t GetQIFImport_SwapOptions_Description() const {
    return QIFImport_SwapOptions_Description_;
  }
  void SetQIFImport_SwapOptions_Description(std::int32_t v) {
    QIFImport_SwapOptions_Description_ = v;
  }
  std::int32_t GetTextImportEncoding() const { return textImportEncoding_; }
  void SetTextImportEncoding(std::int32_t encoding) { textImportEncoding_ = encoding; }
  // nullopt: no layout.
  const std::optional<std::vector<std::int32_t>>& GetTextImportDataLayout() const {
    return textImportDataLayout_;
  }
  void SetTextImportDataLayout(std::optional<std::vector<std::int32_t>> layout) {
    textImportDataLayout_ = std::move(layout);
  }
  bool GetTextImportSkipFirstRow() const { return textImportSkipFirstRow_; }
  void SetTextImportSkipFirstRow(bool on) { textImportSkipFirstRow_ = on; }
  std::int32_t GetTextImportDataFormat() const { return textImportDataFormat_; }
  void SetTextImportDataFormat(std::int32_t format) { textImportDataFormat_ = format; }
  std::int32_t GetTextImportDateFormat() const { return textImportDateFormat_; }
  void SetTextImportDateFormat(std::int32_t format) { textImportDateFormat_ = format; }
  std::string GetTextImportDecimalSeparator() const { return textImportDecimalSeparator_; }
  void SetTextImportDecimalSeparator(std::optional<std::string_view> separator);
  std::string GetTextImportThousandsSeparator() const { return textImportThousandsSeparator_; }
  void SetTextImportThousandsSeparator(std::optional<std::string_view> separator);
  std::uint8_t GetTextImportZeroAmountsAsDeposits() const {
    return textImportZeroAmountsAsDeposits_;
  }
  void SetTextImportZeroAmountsAsDeposits(std::uint8_t on) {
    textImportZeroAmountsAsDeposits_ = on;
  }
  std::int32_t textExport_ExportType() const { return textExport_ExportType_; }
  void setTextExport_ExportType(std::int32_t type) { textExport_ExportType_ = type; }
  std::int32_t textExport_Encoding() const { return textExport_Encoding_; }
  void setTextExport_Encoding(std::int32_t encoding) { textExport_Encoding_ = encoding; }
  std::int32_t lastFromAccount() const { return lastFromAccount_; }
  void setLastFromAccount(std::int32_t number) { lastFromAccount_ = number; }
  // Saved as a boolean of its low byte, so it comes back as 0 or 1.
  std::int32_t lastToAccount() const { return lastToAccount_; }
  void setLastToAccount(std::int32_t number) { lastToAccount_ = number; }

 private:
  // The seven settings of a view's quick filter.
  struct ViewFilterSettings {
    std::int32_t filterType = 0;
    plist::Value filterData = plist::Value(std::string());
    std::int32_t resolvedFilterType = 82;
    std::int32_t taxDeductibleFilterType = 92;
    std::int32_t dateFilterType = 60;
    std::int32_t dateFilterStartDate = 0;
    std::int32_t dateFilterEndDate = 0;
  };

  // Calls `visit(const ZELMAccountEntry&)` for every entry in all-entries order, without
  // building the combined list.
  template <typename Visit>
  void ForEachEntry(Visit&& visit) const {
    VisitEntries(entries_, visit);
    for (const auto& folder : folders_) VisitEntries(folder->entries(), visit);
  }
  // Entries may be scattered over the heap: fetching a few ahead keeps long walks (balances
  // over a large register) from waiting on memory at every entry. The fields such walks read
  // lie in an entry's first 64 bytes, which span at most two cache lines.
  template <typename Visit>
  static void VisitEntries(const EntryList& list, Visit& visit) {
    constexpr std::size_t kAhead = 16;
    const std::size_t count = list.size();
    for (std::size_t i = 0; i < count; ++i) {
      if (i + kAhead < count) {
        const char* ahead = reinterpret_cast<const char*>(list[i + kAhead].get());
        platform::Prefetch(ahead);
        platform::Prefetch(ahead + 63);
      }
      visit(*list[i]);
    }
  }
  // As ForEachEntry, handing over the owning pointer.
  template <typename Visit>
  void ForEachEntryPointer(Visit&& visit) const {
    for (const auto& entry : entries_) visit(entry);
    for (const auto& folder : folders_) {
      for (const auto& entry : folder->entries()) visit(entry);
    }
  }

  // What both loading constructors do; `prepared`: the register to take instead of building
  // the stored entries.
  void Load(const plist::Dictionary* dict, ZELMAccountsController* controller,
            PreparedEntries* prepared);
  void ReadDictionary(const plist::Dictionary& dict, PreparedEntries* prepared);
  plist::Dictionary StoredForm(bool with_entries) const;
  // Smart folders and view filters (folvant/filters/ZELMAccountFilters.cpp): the stored
  // "smartFolders" replaces the list; the list in stored form; one view's filtered entries.
  void LoadSmartFolders(const plist::Value& stored);
  plist::Array SmartFoldersAsArray() const;
  EntryList FilteredEntriesForView(std::int32_t viewType) const;
  // Summaries (folvant/summaries/ZELMAccountSummaries.cpp): a non-empty stored list replaces
  // the list, each made from its options with no entries; then the stored selection (a
  // missing or unusable index selects the first summary).
  void LoadAccountSummaries(const plist::Value* stored, const plist::Value* selected);
  void SortAccountSummaries();
  void ReadImportSettings(const plist::Dictionary& dict);
  void WriteImportSettings(plist::Dictionary& dict) const;
  void ResolveCurrency(const plist::Value* stored);
  // The largest check number of all entries except linked deposits, from -1.
  std::int32_t MaxCheckNumber() const;
  // The sum of the amounts of the non-void entries that `select` accepts.
  template <typename Select>
  double SumNonVoid(const Select& select) const;
  StringList TextsAll(bool deposits, bool descriptions) const;
  StringList TextsSome(bool deposits, bool descriptions, std::int32_t count) const;
  std::optional<StringList> Preferred(std::int32_t style, std::int32_t someCount, bool deposits,
                                      bool descriptions) const;

  ZELMAccountsController* accountsController_ = nullptr;  // not owned
  std::int32_t number_ = -1;
  std::int32_t version_ = kCurrentVersion;
  std::string name_;
  std::optional<plist::Data> icon_;
  std::optional<plist::Data> highResolutionIcon_;
  std::shared_ptr<LVCurrency> currency_;
  EntryList entries_;
  TypeList types_;
  TypeList inactiveTypes_;
  std::shared_ptr<ZELMAccountEntryType> defaultDebitType_;
  std::shared_ptr<ZELMAccountEntryType> defaultDepositType_;
  CategoryList categories_;
  CategoryList inactiveCategories_;
  std::int32_t startingCheckNumber_ = 1;
  double startingBalance_ = 0.0;
  std::string password_;
  bool authenticated_ = false;
  ScheduleList schedules_;
  std::int32_t numberCount_ = 0;
  std::int32_t preference_Descriptions_Style_ = 1;
  std::int32_t preference_ToFrom_Style_ = 1;
  std::int32_t preference_ToFrom_SomeSelection_ = 50;
  std::int32_t preference_Descriptions_SomeSelection_ = 50;
  std::optional<StringList> preferredDebitDescriptions_;
  std::optional<StringList> preferredDepositDescriptions_;
  std::optional<StringList> preferredTos_;
  std::optional<StringList> preferredFroms_;
  SummaryList accountSummaries_;
  std::shared_ptr<ZELMAccountSummary> selectedAccountSummary_;
  double statementBalance_ = 0.0;
  ViewFilterSettings entryFilter_;
  ViewFilterSettings reconcileFilter_;
  bool OFXImportZeroAmountsAsDeposits_ = true;
  std::int32_t OFXImport_SwapOptions_Name_ = 2;
  std::int32_t OFXImport_SwapOptions_Payee_ = 1;
  std::int32_t OFXImport_SwapOptions_Memo_ = 4;
  std::int32_t OFXImport_SwapOptions_TransactionType_ = 3;
  std::int32_t OFXImport_SwapOptions_ReferenceNumber_ = 5;
  std::int32_t QIFImportEncoding_;
  std::int32_t QIFImportDateFormat_ = 0;
  std::string QIFImportDecimalSeparator_;
  std::string QIFImportThousandsSeparator_;
  bool QIFImportZeroAmountsAsDeposits_ = true;
  bool QIFImportAllCategories_ = false;
  bool QIFImportSplitLineItems_ = true;
  std::int32_t QIFImport_SwapOptions_ToFrom_ = 1;
  std::int32_t QIFImport_SwapOptions_Category_ = 0;
  std::int32_t QIFImport_SwapOptions_Description_ = 2;
  std::int32_t textImportEncoding_;
  std::optional<std::vector<std::int32_t>> textImportDataLayout_;
  bool textImportSkipFirstRow_ = false;
  std::int32_t textImportDataFormat_ = 0;
  std::int32_t textImportDateFormat_ = 0;
  std::string textImportDecimalSeparator_;
  std::string textImportThousandsSeparator_;
  std::uint8_t textImportZeroAmountsAsDeposits_ = 1;
  std::int32_t textExport_ExportType_ = -5;
  std::int32_t textExport_Encoding_;
  std::int32_t lastFromAccount_ = -1;
  std::int32_t lastToAccount_ = -1;
  FilterList smartFolders_;
  std::weak_ptr<ZELMFilter> smartFolder_;  // not owned
  FolderList folders_;
  std::weak_ptr<ZELMAccountFolder> folder_;  // not owned
  bool displayExpanded_ = false;
};

}  // namespace folvant
