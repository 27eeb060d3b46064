#include "folvant/book/Book.h"

#include <algorithm>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <system_error>

#include <unicode/ucurr.h>
#include <unicode/unistr.h>

#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountEntryType.h"
#include "folvant/model/ZELMAccountFile.h"
#include "folvant/platform/Clock.h"
#include "folvant/platform/LocalCalendar.h"
#include "folvant/platform/Log.h"
#include "folvant/platform/Text.h"
#include "folvant/values/LVCurrency.h"

namespace folvant {
namespace {

constexpr std::int64_t kBookVersion = 1;
using Kind = BookError::Kind;

// A count with thousands separators, as people read counts: 1,000,000.
std::string Count(std::size_t n) {
  std::string digits = std::to_string(n), out;
  for (std::size_t i = 0; i < digits.size(); ++i) {
    if (i > 0 && (digits.size() - i) % 3 == 0) out.push_back(',');
    out.push_back(digits[i]);
  }
  return out;
}

// The messages of a load, told in a few lines: a register of a million entries that all lack
// one key is one line, not a million.
std::string Summarize(const std::vector<std::string>& messages) {
  static constexpr std::string_view kEntryMissing =
      " defined for theDictionary in -[ZELMAccountEntry initWithDictionary:]";
  std::map<std::string, std::size_t> counts;
  std::vector<std::string> order;
  for (const std::string& message : messages) {
    if (counts[message]++ == 0) order.push_back(message);
  }
  std::string summary;
  for (const std::string& message : order) {
    const std::size_t n = counts[message];
    std::string line;
    const std::string_view m = message;
    if (m.starts_with("No ") && m.ends_with(kEntryMissing)) {
      const std::string key(m.substr(3, m.size() - 3 - kEntryMissing.size()));
      line = Count(n) + (n == 1 ? " entry had" : " entries had") + " no " + key;
      line += key == "amount" ? " and " + std::string(n == 1 ? "was" : "were") + " read as 0.00"
                              : " and took the default";
    } else {
      line = message + (n > 1 ? " (" + Count(n) + " times)" : "");
    }
    summary += (summary.empty() ? "" : "; ") + line;
  }
  return summary;
}

std::string Quote(std::string_view text) { return "\"" + std::string(text) + "\""; }

// Written forms of a few common currencies as people here write them; other currencies take
// ICU's English name and symbol, with the symbol first and "," and ".".
struct KnownCurrency {
  const char* code;
  const char* description;
  const char* symbol;
  bool symbolFirst;
  const char* thousands;
  const char* decimal;
};
constexpr KnownCurrency kKnownCurrencies[] = {
    {"USD", "US Dollar", "$", true, ",", "."},     {"CAD", "Canadian Dollar", "$", true, ",", "."},
    {"EUR", "Euro", "€", false, ".", ","},         {"GBP", "Pound Sterling", "£", true, ",", "."},
    {"CHF", "Swiss Franc", "CHF", true, "'", "."}, {"JPY", "Yen", "¥", true, ",", "."},
};

// ICU's name of the currency in the style, in English; empty when it has none.
std::string IcuCurrencyName(const UChar* code, UCurrNameStyle style) {
  UErrorCode status = U_ZERO_ERROR;
  UBool choice = false;
  int32_t length = 0;
  const UChar* name = ucurr_getName(code, "en", style, &choice, &length, &status);
  if (U_FAILURE(status) || name == nullptr) return {};
  std::string text;
  icu::UnicodeString(name, length).toUTF8String(text);
  return text;
}

// A new currency of the code (three ASCII letters, upper case), or nullptr when ICU does not
// know it as a currency at any time.
std::shared_ptr<LVCurrency> MakeCurrency(const std::string& code) {
  for (const KnownCurrency& known : kKnownCurrencies) {
    if (code == known.code) {
      return std::make_shared<LVCurrency>(known.code, known.description, known.symbol,
                                          known.symbolFirst, known.thousands, known.decimal, 1.0,
                                          platform::Today());
    }
  }
  const UChar wide[4] = {static_cast<UChar>(code[0]), static_cast<UChar>(code[1]),
                         static_cast<UChar>(code[2]), 0};
  UErrorCode status = U_ZERO_ERROR;
  if (!ucurr_isAvailable(wide, U_DATE_MIN, U_DATE_MAX, &status) || U_FAILURE(status)) {
    return nullptr;
  }
  std::string description = IcuCurrencyName(wide, UCURR_LONG_NAME);
  std::string symbol = IcuCurrencyName(wide, UCURR_SYMBOL_NAME);
  return std::make_shared<LVCurrency>(code, description.empty() ? code : description,
                                      symbol.empty() ? code : symbol, true, ",", ".", 1.0,
                                      platform::Today());
}

}  // namespace

// An account of the book: what the book file records of it, and once asked for, the account.
struct Book::Slot {
  std::int32_t number = 0;
  std::string name;
  // The records kept in the book file, valid for the account file of `identity`.
  struct Records {
    platform::FileIdentity identity;
    std::string currency;
    bool hasPassword = false;
    double balance = 0.0;
    double resolvedBalance = 0.0;
    std::int64_t entries = 0;
  };
  std::optional<Records> records;

  bool loaded = false;
  bool isNew = false;  // not yet in the book file on disk
  bool changed = false;
  std::shared_ptr<ZELMAccount> account;
  AccountHealth health = AccountHealth::kHealthy;
  std::string problem;                // summary of the damage, or why it cannot be read
  std::vector<std::string> messages;  // the load's messages
  std::string notes;                  // the user's, kept in the book file
  bool askedPassword = false;
};

Book::Book(std::filesystem::path directory, Access access)
    : directory_(std::move(directory)), access_(access) {}

Book::~Book() = default;

std::filesystem::path Book::AccountPath(std::int32_t number) const {
  return directory_ / "accounts" / (std::to_string(number) + ".plist");
}

BookResult<std::unique_ptr<Book>> Book::Create(const std::filesystem::path& directory) {
  std::error_code ec;
  if (std::filesystem::exists(directory / kBookFileName, ec)) {
    return Unexpected{BookError::Of(
        Kind::kExists, (directory / kBookFileName).string() + ": a book already exists here")};
  }
  std::filesystem::create_directories(directory / "accounts", ec);
  if (ec) return Unexpected{BookError::Of(Kind::kFailed, directory.string() + ": " + ec.message())};
  std::unique_ptr<Book> book(new Book(directory, Access::kWrite));
  std::string error;
  auto lock = platform::FileLock::Acquire(directory / kLockFileName,
                                          platform::FileLock::Mode::kExclusive,
                                          std::chrono::milliseconds(0), error);
  if (!lock) {
    return Unexpected{BookError::Of(
        Kind::kBusy, error.empty() ? directory.string() + ": another program is creating a book here"
                                   : error)};
  }
  book->lock_ = std::move(*lock);
  if (std::filesystem::exists(directory / kBookFileName, ec)) {
    return Unexpected{BookError::Of(
        Kind::kExists, (directory / kBookFileName).string() + ": a book already exists here")};
  }
  book->currencies_.push_back(std::make_shared<LVCurrency>("USD", "US Dollar", "$", true, ",", ".",
                                                           1.0, platform::Today()));
  book->bookChanged_ = true;
  if (auto failed = book->Save()) return Unexpected{*failed};
  return book;
}

BookResult<std::unique_ptr<Book>> Book::Open(const std::filesystem::path& directory,
                                             const OpenOptions& options) {
  std::error_code ec;
  if (!std::filesystem::exists(directory / kBookFileName, ec)) {
    return Unexpected{BookError::Of(Kind::kNotFound, directory.string() +
                                                         ": no book here (create one with "
                                                         "'folvant init " +
                                                         directory.string() + "')")};
  }
  std::unique_ptr<Book> book(new Book(directory, options.access));
  book->password_ = options.password;
  std::string error;
  auto lock = platform::FileLock::Acquire(
      directory / kLockFileName,
      options.access == Access::kWrite ? platform::FileLock::Mode::kExclusive
                                       : platform::FileLock::Mode::kShared,
      options.lockWait, error);
  if (!lock) {
    if (!error.empty()) return Unexpected{BookError::Of(Kind::kFailed, error)};
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, "%.3g",
                  std::chrono::duration<double>(options.lockWait).count());
    return Unexpected{BookError::Of(
        Kind::kBusy, "the book in " + directory.string() +
                         " is in use by another program (waited " + std::string(seconds) +
                         " s); try again when it has finished")};
  }
  book->lock_ = std::move(*lock);
  if (auto failed = book->ReadBookFile()) return Unexpected{*failed};
  return book;
}

std::filesystem::path Book::LockFile(const std::filesystem::path& directory) {
  return directory / kLockFileName;
}

void Book::ReleaseLock() {
  if (access_ != Access::kWrite) lock_ = platform::FileLock();
}

std::optional<BookError> Book::ReadBookFile() {
  const std::filesystem::path path = directory_ / kBookFileName;
  auto read = plist::ReadFile(path);
  if (!read) {
    const std::filesystem::path backup = path.string() + ".bak";
    std::string message = path.string() + ": the book file is damaged (" + read.error().what +
                          " at byte " + std::to_string(read.error().offset) + ")";
    std::error_code ec;
    if (std::filesystem::exists(backup, ec)) {
      message += "; its previous version is " + backup.string() +
                 ": copy it over the book file to go back to it";
    }
    return BookError::Of(Kind::kDamaged, message);
  }
  const plist::Dictionary* book = read->asDictionary();
  if (book == nullptr) {
    return BookError::Of(Kind::kDamaged,
                         path.string() + ": not a book file (the top level is not a dictionary)");
  }
  if (const plist::Value* currencies = book->find("currencies")) {
    if (const plist::Array* list = currencies->asArray()) {
      for (const plist::Value& item : *list) {
        if (const plist::Dictionary* d = item.asDictionary()) {
          currencies_.push_back(std::make_shared<LVCurrency>(d));
        }
      }
    }
  }
  if (currencies_.empty()) {
    return BookError::Of(Kind::kDamaged, path.string() + ": the book has no currencies");
  }
  if (const plist::Value* categories = book->find("categories")) {
    if (const plist::Array* list = categories->asArray()) {
      for (const plist::Value& item : *list) {
        if (const plist::Dictionary* d = item.asDictionary()) {
          categories_.push_back(std::make_shared<ZELMAccountEntryCategory>(d));
        }
      }
    }
  }
  if (const plist::Value* n = book->find("nextCategoryNumber")) nextCategoryNumber_ = n->intValue();
  if (const plist::Value* n = book->find("nextAccountNumber")) nextAccountNumber_ = n->intValue();
  // Numbers stay unique even when the counters were edited by hand.
  for (const auto& category : allCategories()) {
    if (category->number() >= nextCategoryNumber_) nextCategoryNumber_ = category->number() + 1;
  }

  const plist::Value* accounts = book->find("accounts");
  const plist::Array* list = accounts ? accounts->asArray() : nullptr;
  if (list == nullptr) return std::nullopt;
  for (const plist::Value& item : *list) {
    const plist::Dictionary* entry = item.asDictionary();
    const plist::Value* number = entry ? entry->find("number") : nullptr;
    if (number == nullptr || !number->isInteger()) {
      return BookError::Of(Kind::kDamaged, path.string() + ": an account in the list has no number");
    }
    auto slot = std::make_unique<Slot>();
    slot->number = static_cast<std::int32_t>(number->intValue());
    if (const plist::Value* name = entry->find("name"); name && name->asString()) {
      slot->name = *name->asString();
    }
    if (const plist::Value* r = entry->find("records"); r && r->asDictionary()) {
      const plist::Dictionary& d = *r->asDictionary();
      auto integer = [&d](const char* key) -> std::int64_t {
        const plist::Value* v = d.find(key);
        return v ? v->longLongValue() : 0;
      };
      auto real = [&d](const char* key) {
        const plist::Value* v = d.find(key);
        return v ? v->doubleValue() : 0.0;
      };
      Slot::Records records;
      records.identity = {static_cast<std::uint64_t>(integer("fileInode")),
                          static_cast<std::uint64_t>(integer("fileSize")), integer("fileModified")};
      if (const plist::Value* c = d.find("currency"); c && c->asString()) {
        records.currency = *c->asString();
      }
      records.hasPassword = integer("hasPassword") != 0;
      records.balance = real("balance");
      records.resolvedBalance = real("resolvedBalance");
      records.entries = integer("entries");
      slot->records = records;
    }
    if (const plist::Value* notes = entry->find("notes"); notes && notes->asString()) {
      slot->notes = *notes->asString();
    }
    if (slot->number >= nextAccountNumber_) nextAccountNumber_ = slot->number + 1;
    slots_.push_back(std::move(slot));
  }
  return std::nullopt;
}

std::string Book::BookFileBytes() const {
  plist::Array currencies;
  for (const auto& c : currencies_) currencies.emplace_back(c->asDictionary());
  plist::Array categories;
  for (const auto& c : categories_) categories.emplace_back(c->asDictionary());
  plist::Array accounts;
  for (const auto& slot : slots_) {
    plist::Dictionary entry{{"number", std::int64_t{slot->number}}, {"name", slot->name}};
    if (!slot->notes.empty()) entry.set("notes", slot->notes);
    if (slot->records && records_) {
      const Slot::Records& r = *slot->records;
      entry.set("records",
                   plist::Dictionary{{"fileInode", static_cast<std::int64_t>(r.identity.inode)},
                                     {"fileSize", static_cast<std::int64_t>(r.identity.size)},
                                     {"fileModified", r.identity.modified},
                                     {"currency", r.currency},
                                     {"hasPassword", r.hasPassword},
                                     {"balance", r.balance},
                                     {"resolvedBalance", r.resolvedBalance},
                                     {"entries", r.entries}});
    }
    accounts.emplace_back(std::move(entry));
  }
  plist::Dictionary book{{"version", kBookVersion},
                         {"currencies", std::move(currencies)},
                         {"categories", std::move(categories)},
                         {"nextCategoryNumber", std::int64_t{nextCategoryNumber_}},
                         {"nextAccountNumber", std::int64_t{nextAccountNumber_}},
                         {"accounts", std::move(accounts)}};
  return plist::Write(plist::Value(std::move(book)), format_);
}

BookResult<std::shared_ptr<ZELMAccount>> Book::Load(Slot& slot) {
  if (!slot.loaded) {
    slot.loaded = true;
    const std::filesystem::path path = AccountPath(slot.number);
    const auto identity = platform::IdentityOf(path);
    if (!identity) {
      slot.health = AccountHealth::kMissing;
      slot.problem = "the file " + path.string() + " is missing";
    } else {
      const std::size_t currencies = currencies_.size();
      LogCollector messages;
      auto file = ReadAccountFile(path);
      if (!file) {
        slot.health = AccountHealth::kUnreadable;
        slot.problem = "the file " + path.string() + " is damaged (" + file.error().what +
                       " at byte " + std::to_string(file.error().offset) + ")";
      } else if (auto account = AccountFromFile(std::move(*file), this); account == nullptr) {
        slot.health = AccountHealth::kUnreadable;
        slot.problem = "the file " + path.string() + " is not an account file";
      } else {
        slot.messages = messages.Take();
        if (!slot.messages.empty()) {
          slot.health = AccountHealth::kDamaged;
          slot.problem = Summarize(slot.messages);
          warnings_.push_back(path.string() + ": read with damage: " + slot.problem +
                              "; changes to \"" + slot.name +
                              "\" are refused until 'folvant repair " + slot.name + "'");
        }
        account->Authenticate(password_ ? std::optional<std::string_view>(*password_)
                                        : std::nullopt);
        slot.name = account->GetName();
        slot.account = std::move(account);
        // The records follow the file: recomputed here when it changed behind the book's back.
        const ZELMAccount& a = *slot.account;
        Slot::Records records{*identity,
                              a.currency() ? a.currency()->code() : std::string(),
                              a.HasPassword(),
                              a.HasPassword() ? 0.0 : a.GetBalance(),
                              a.HasPassword() ? 0.0 : a.GetResolvedBalance(),
                              static_cast<std::int64_t>(a.GetAllEntries().size())};
        if (!slot.records || !(slot.records->identity == *identity)) slot.records = records;
      }
      if (currencies_.size() != currencies) bookChanged_ = true;
    }
  }
  if (auto unavailable = Unavailable(slot)) return Unexpected{*unavailable};
  return slot.account;
}

std::optional<BookError> Book::Unavailable(const Slot& slot) const {
  if (slot.health != AccountHealth::kUnreadable && slot.health != AccountHealth::kMissing) {
    return std::nullopt;
  }
  const std::filesystem::path backup = AccountPath(slot.number).string() + ".bak";
  std::string message = "account " + Quote(slot.name) + ": " + slot.problem;
  std::error_code ec;
  if (std::filesystem::exists(backup, ec)) {
    message += "; its previous version is kept in " + backup.string() +
               ": 'folvant repair " + slot.name + " --from-backup' puts it back";
  } else {
    message += " and there is no backup of it";
  }
  return BookError::Of(Kind::kDamaged, message);
}

std::optional<BookError> Book::RefuseChange(const Slot& slot) const {
  if (access_ != Access::kWrite) {
    return BookError::Of(Kind::kReadOnly, "the book was opened for reading only");
  }
  if (auto unavailable = Unavailable(slot)) return unavailable;
  if (slot.account && slot.account->HasPassword() && !slot.account->IsAuthenticated()) {
    return BookError::Of(Kind::kLocked, "account " + Quote(slot.name) +
                                            " is locked: nothing in it changes without its "
                                            "password");
  }
  if (slot.health == AccountHealth::kDamaged) {
    BookError error = BookError::Of(
        Kind::kDamaged, AccountPath(slot.number).string() + " was read with damage (" +
                            slot.problem + "); it is left as it is. 'folvant repair " + slot.name +
                            "' keeps the damaged file and writes the account as it was read");
    error.details = slot.messages;
    return error;
  }
  return std::nullopt;
}

Book::Slot* Book::FindSlot(std::string_view name) {
  for (const auto& slot : slots_) {
    if (platform::CaseInsensitiveEqual(slot->name, name)) return slot.get();
  }
  for (const auto& slot : slots_) {
    if (std::to_string(slot->number) == name) return slot.get();
  }
  return nullptr;
}

Book::Slot* Book::SlotOf(const ZELMAccount& account) {
  for (const auto& slot : slots_) {
    if (slot->account.get() == &account) return slot.get();
  }
  return nullptr;
}

const Book::Slot* Book::SlotOf(const ZELMAccount& account) const {
  return const_cast<Book*>(this)->SlotOf(account);
}

BookResult<std::shared_ptr<ZELMAccount>> Book::FindAccount(std::string_view name) {
  Slot* slot = FindSlot(name);
  if (slot == nullptr) {
    return Unexpected{
        BookError::Of(Kind::kNotFound, "no account named " + Quote(name) + " in the book")};
  }
  return Opened(*slot);
}

BookResult<std::shared_ptr<ZELMAccount>> Book::Opened(Slot& slot) {
  auto account = Load(slot);
  if (!account) return account;
  ZELMAccount& a = **account;
  if (!a.HasPassword() || a.IsAuthenticated()) return account;
  bool given = password_.has_value();
  if (askPassword_ && !slot.askedPassword) {
    slot.askedPassword = true;
    if (std::optional<std::string> password = askPassword_(slot.name)) {
      given = true;
      a.Authenticate(*password);
    }
  }
  if (a.IsAuthenticated()) return account;
  return Unexpected{BookError::Of(
      Kind::kLocked, "account " + Quote(slot.name) +
                         (given ? " is locked and the password given is not its password"
                                : " is locked: it shows and changes nothing without its password"))};
}

BookResult<std::shared_ptr<ZELMAccount>> Book::AccountWithNumber(std::int32_t number) {
  for (const auto& slot : slots_) {
    if (slot->number == number) return Opened(*slot);
  }
  return Unexpected{BookError::Of(Kind::kNotFound,
                                  "no account number " + std::to_string(number) + " in the book")};
}

BookResult<std::shared_ptr<ZELMAccount>> Book::AccountToChange(std::string_view name) {
  auto account = FindAccount(name);
  if (!account) return account;
  if (auto refused = Changed(**account)) return Unexpected{*refused};
  return account;
}

std::vector<std::shared_ptr<ZELMAccount>> Book::LoadAllAccounts() {
  std::vector<std::shared_ptr<ZELMAccount>> all;
  for (const auto& slot : slots_) {
    if (auto account = Load(*slot)) all.push_back(*account);
  }
  return all;
}

std::optional<BookError> Book::Changed(const ZELMAccount& account) {
  Slot* slot = SlotOf(account);
  if (slot == nullptr) {
    return BookError::Of(Kind::kNotFound, "the account is not one of this book's");
  }
  if (auto refused = RefuseChange(*slot)) return refused;
  slot->changed = true;
  return std::nullopt;
}

std::optional<BookError> Book::RemoveAccount(const ZELMAccount& account) {
  if (auto refused = Changed(account)) return refused;
  auto at = std::find_if(slots_.begin(), slots_.end(),
                         [&account](const auto& slot) { return slot->account.get() == &account; });
  if (!(*at)->isNew) removed_.push_back(std::move(*at));
  slots_.erase(at);
  bookChanged_ = true;
  return std::nullopt;
}

std::string Book::AccountNotes(const ZELMAccount& account) const {
  const Slot* slot = SlotOf(account);
  return slot != nullptr ? slot->notes : std::string();
}

std::optional<BookError> Book::SetAccountNotes(const ZELMAccount& account, std::string notes) {
  if (auto refused = Changed(account)) return refused;
  SlotOf(account)->notes = std::move(notes);
  bookChanged_ = true;
  return std::nullopt;
}

std::string Book::Damage(const ZELMAccount& account) const {
  const Slot* slot = SlotOf(account);
  return slot != nullptr && slot->health == AccountHealth::kDamaged ? slot->problem
                                                                     : std::string();
}

std::vector<std::string> Book::DamageDetails(const ZELMAccount& account) const {
  const Slot* slot = SlotOf(account);
  return slot != nullptr ? slot->messages : std::vector<std::string>();
}

std::vector<std::string> Book::TakeWarnings() { return std::exchange(warnings_, {}); }

std::vector<AccountListing> Book::ListAccounts() {
  std::vector<AccountListing> list;
  for (const auto& slot : slots_) {
    AccountListing line;
    line.number = slot->number;
    line.name = slot->name;
    const auto identity = platform::IdentityOf(AccountPath(slot->number));
    const bool current = !slot->changed && slot->records && identity &&
                         slot->records->identity == *identity &&
                         !(slot->records->hasPassword && password_);
    if (!current) Load(*slot);
    if (slot->loaded && slot->health != AccountHealth::kHealthy) {
      line.health = slot->health;
      line.problem = slot->problem;
    }
    if (slot->account != nullptr) {
      // Loaded: the account itself is the truth (it may have changed since it was read).
      const ZELMAccount& a = *slot->account;
      line.name = a.GetName();
      line.currency = a.currency() ? a.currency()->code() : std::string();
      line.locked = a.HasPassword() && !a.IsAuthenticated();
      if (!line.locked) line.balance = a.GetBalance();
      line.entries = static_cast<std::int64_t>(a.GetAllEntries().size());
    } else if (slot->records && line.health == AccountHealth::kHealthy) {
      line.currency = slot->records->currency;
      line.locked = slot->records->hasPassword;
      if (!line.locked) line.balance = slot->records->balance;
      line.entries = slot->records->entries;
    }
    list.push_back(std::move(line));
  }
  return list;
}

BookResult<std::shared_ptr<ZELMAccount>> Book::AddAccount(std::string_view name,
                                                          std::shared_ptr<LVCurrency> currency,
                                                          double startingBalance) {
  if (access_ != Access::kWrite) {
    return Unexpected{BookError::Of(Kind::kReadOnly, "the book was opened for reading only")};
  }
  if (name.empty()) return Unexpected{BookError::Of(Kind::kInvalid, "an account needs a name")};
  if (FindSlot(name) != nullptr) {
    return Unexpected{
        BookError::Of(Kind::kExists, "an account named " + Quote(name) + " already exists")};
  }
  if (!std::isfinite(startingBalance) || std::fabs(startingBalance) > kLargestAmount) {
    return Unexpected{BookError::Of(
        Kind::kInvalid, "a starting balance must be a number no larger than 1e15 either way")};
  }
  auto account = std::make_shared<ZELMAccount>();
  account->setAccountsController(this);
  account->Authenticate(std::nullopt);
  account->SetName(std::string(name));
  account->SetNumber(nextAccountNumber_++);
  account->setCurrency(currency ? std::move(currency) : this->currency());
  account->SetStartingBalance(startingBalance);
  auto slot = std::make_unique<Slot>();
  slot->number = account->GetNumber();
  slot->name = std::string(name);
  slot->loaded = true;
  slot->isNew = true;
  slot->changed = true;
  slot->account = account;
  slots_.push_back(std::move(slot));
  bookChanged_ = true;
  return account;
}

BookResult<std::shared_ptr<LVCurrency>> Book::RegisterCurrency(std::string_view code) {
  for (const auto& c : currencies_) {
    if (platform::CaseInsensitiveEqual(c->code(), code)) return c;
  }
  std::string upper(code);
  bool letters = upper.size() == 3;
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    letters = letters && c >= 'A' && c <= 'Z';
  }
  auto currency = letters ? MakeCurrency(upper) : nullptr;
  if (!currency) {
    return Unexpected{BookError::Of(Kind::kInvalid, Quote(code) + " is not a currency code")};
  }
  if (access_ != Access::kWrite) {
    return Unexpected{BookError::Of(Kind::kReadOnly, "the book was opened for reading only")};
  }
  currencies_.push_back(currency);
  bookChanged_ = true;
  return currency;
}

BookResult<std::optional<std::string>> Book::ReadOwnFile(
    const std::filesystem::path& name) const {
  if (auto staged = ownFiles_.find(name); staged != ownFiles_.end()) {
    return std::optional<std::string>(staged->second);
  }
  const std::filesystem::path path = directory_ / name;
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    std::error_code ec;
    if (!std::filesystem::exists(path, ec) && !ec) return std::optional<std::string>();
    return Unexpected{
        BookError::Of(Kind::kFailed, path.string() + ": " + std::strerror(errno))};
  }
  std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (in.bad()) {
    return Unexpected{BookError::Of(Kind::kFailed, path.string() + ": the file cannot be read")};
  }
  return std::optional<std::string>(std::move(bytes));
}

std::optional<BookError> Book::StageOwnFile(const std::filesystem::path& name, std::string bytes) {
  if (access_ != Access::kWrite) {
    return BookError::Of(Kind::kReadOnly, "the book was opened for reading only");
  }
  ownFiles_[name] = std::move(bytes);
  return std::nullopt;
}

std::optional<BookError> Book::Save() {
  bool any = bookChanged_ || !ownFiles_.empty();
  for (const auto& slot : slots_) any = any || slot->changed;
  if (!any) return std::nullopt;
  if (access_ != Access::kWrite) {
    return BookError::Of(Kind::kReadOnly, "the book was opened for reading only");
  }
  std::error_code ec;
  std::filesystem::create_directories(directory_ / "accounts", ec);
  // New accounts are written before the book file lists them, the book file before the
  // accounts it already listed: a save cut short leaves no listed account without its file,
  // and no account whose categories the book file lacks.
  // Staged first, committed last, so that the book file can record their identities.
  platform::SafeFileBatch listed;
  // New account files, then the book file.
  platform::SafeFileBatch first;
  std::string error;
  auto stage = [&](Slot& slot, platform::SafeFileBatch& batch) {
    const ZELMAccount& a = *slot.account;
    Slot::Records records{{},
                          a.currency() ? a.currency()->code() : std::string(),
                          a.HasPassword(),
                          a.HasPassword() ? 0.0 : a.GetBalance(),
                          a.HasPassword() ? 0.0 : a.GetResolvedBalance(),
                          static_cast<std::int64_t>(a.GetAllEntries().size())};
    if (!batch.Stage(AccountPath(slot.number), AccountFileBytes(a, format_), error,
                     &records.identity)) {
      return false;
    }
    slot.records = records;
    slot.name = a.GetName();
    return true;
  };
  for (const auto& slot : slots_) {
    if (slot->changed && !stage(*slot, slot->isNew ? first : listed)) {
      return BookError::Of(Kind::kFailed, error);
    }
  }
  // The operations' own files follow the accounts they describe.
  for (const auto& [name, bytes] : ownFiles_) {
    const std::filesystem::path path = directory_ / name;
    std::filesystem::create_directories(path.parent_path(), ec);
    if (!listed.Stage(path, bytes, error)) return BookError::Of(Kind::kFailed, error);
  }
  if (!first.Stage(directory_ / kBookFileName, BookFileBytes(), error) || !first.Commit(error) ||
      !listed.Commit(error)) {
    return BookError::Of(Kind::kFailed, error);
  }
  for (const auto& slot : slots_) slot->changed = slot->isNew = false;
  bookChanged_ = false;
  ownFiles_.clear();
  // The book no longer lists them: their files are kept aside, never deleted.
  std::optional<BookError> failed;
  for (const auto& slot : removed_) {
    const std::filesystem::path path = AccountPath(slot->number);
    std::error_code renamed, ignored;
    std::filesystem::rename(path, path.string() + ".removed", renamed);
    if (renamed && std::filesystem::exists(path, ignored) && !failed) {
      failed = BookError::Of(Kind::kFailed, path.string() + ": the account is out of the book "
                                                            "but its file could not be renamed (" +
                                                            renamed.message() + ")");
    }
  }
  removed_.clear();
  return failed;
}

BookResult<RepairReport> Book::Repair(std::string_view name, bool fromBackup) {
  Slot* slot = FindSlot(name);
  if (slot == nullptr) {
    return Unexpected{
        BookError::Of(Kind::kNotFound, "no account named " + Quote(name) + " in the book")};
  }
  if (access_ != Access::kWrite) {
    return Unexpected{BookError::Of(Kind::kReadOnly, "the book was opened for reading only")};
  }
  (void)Load(*slot);
  const std::filesystem::path path = AccountPath(slot->number);
  const std::filesystem::path backup = path.string() + ".bak";
  RepairReport report{slot->name, path, {}, fromBackup, slot->problem};
  std::string bytes;
  if (fromBackup) {
    // The backup must exist and read cleanly before it replaces anything.
    std::error_code missing;
    if (!std::filesystem::exists(backup, missing)) {
      return Unexpected{BookError::Of(
          Kind::kNotFound, "account \"" + slot->name + "\" has no backup (" + backup.string() +
                               " is missing), so there is nothing to put back")};
    }
    LogCollector messages;
    auto file = ReadAccountFile(backup);
    if (!file) {
      return Unexpected{BookError::Of(
          Kind::kDamaged, backup.string() + ": the backup cannot be read either (" +
                              file.error().what + " at byte " +
                              std::to_string(file.error().offset) + ")")};
    }
    auto account = AccountFromFile(std::move(*file), this);
    if (account == nullptr || !messages.messages().empty()) {
      return Unexpected{BookError::Of(
          Kind::kDamaged,
          backup.string() + ": the backup is damaged too" +
              (account ? " (" + Summarize(messages.messages()) + ")" : std::string()))};
    }
    bytes = AccountFileBytes(*account, format_);
    slot->account = std::move(account);
  } else {
    if (slot->health == AccountHealth::kHealthy) {
      return Unexpected{BookError::Of(Kind::kInvalid, "account " + Quote(slot->name) +
                                                          " reads cleanly: there is nothing "
                                                          "to repair")};
    }
    if (slot->health != AccountHealth::kDamaged) return Unexpected{*Unavailable(*slot)};
    bytes = AccountFileBytes(*slot->account, format_);
  }
  std::error_code ec;
  if (std::filesystem::exists(path, ec)) {
    report.damagedCopy = path.string() + ".damaged-" +
                         platform::FormatLocalTime(platform::Now(), "%Y%m%d-%H%M%S");
    if (::link(path.c_str(), report.damagedCopy.c_str()) != 0) {
      return Unexpected{BookError::Of(
          Kind::kFailed, report.damagedCopy.string() + ": " + std::strerror(errno))};
    }
  }
  // The repaired file replaces the damaged one without becoming the backup's replacement: the
  // backup keeps the last good version.
  platform::SafeFileBatch batch;
  std::string error;
  Slot::Records records;
  if (!batch.Stage(path, bytes, error, &records.identity, /*backup=*/false) ||
      !batch.Commit(error)) {
    return Unexpected{BookError::Of(Kind::kFailed, error)};
  }
  const ZELMAccount& a = *slot->account;
  records.currency = a.currency() ? a.currency()->code() : std::string();
  records.hasPassword = a.HasPassword();
  records.balance = a.HasPassword() ? 0.0 : a.GetBalance();
  records.resolvedBalance = a.HasPassword() ? 0.0 : a.GetResolvedBalance();
  records.entries = static_cast<std::int64_t>(a.GetAllEntries().size());
  slot->records = records;
  slot->health = AccountHealth::kHealthy;
  slot->problem.clear();
  slot->messages.clear();
  bookChanged_ = true;
  if (auto failed = Save()) return Unexpected{*failed};
  return report;
}

std::shared_ptr<LVCurrency> Book::currency() const { return currencies_.front(); }

std::shared_ptr<LVCurrency> Book::currencyWithCode(std::string_view code) const {
  for (const auto& c : currencies_) {
    if (c->code() == code) return c;
  }
  return nullptr;
}

std::shared_ptr<ZELMAccountEntryCategory> Book::categoryWithNumber(std::int32_t number) const {
  for (const auto& top : categories_) {
    if (top->number() == number) return top;
    for (const auto& child : top->allChildren()) {
      if (child->number() == number) return child;
    }
  }
  return nullptr;
}

std::vector<std::shared_ptr<ZELMAccountEntryCategory>> Book::allCategories() const {
  std::vector<std::shared_ptr<ZELMAccountEntryCategory>> all;
  for (const auto& top : categories_) {
    all.push_back(top);
    for (auto& child : top->allChildren()) all.push_back(std::move(child));
  }
  return all;
}

std::shared_ptr<ZELMAccountEntryType> Book::accountEntryTypeForNumber(std::int32_t number) const {
  for (const auto& slot : slots_) {
    if (slot->account == nullptr) continue;
    if (auto type = slot->account->accountEntryTypeForNumber(number)) return type;
  }
  return nullptr;
}

std::shared_ptr<ZELMAccountEntryCategory> Book::AddCategory(std::string_view name,
                                                            ZELMAccountEntryCategory* parent) {
  auto category = std::make_shared<ZELMAccountEntryCategory>();
  category->setName(std::string(name));
  category->setNumber(nextCategoryNumber_++);
  if (parent != nullptr) {
    parent->addChild(category);
  } else {
    categories_.push_back(category);
    std::stable_sort(categories_.begin(), categories_.end(),
                     [](const auto& a, const auto& b) { return a->nameIsGreaterThan(*b) < 0; });
  }
  bookChanged_ = true;
  return category;
}

}  // namespace folvant
