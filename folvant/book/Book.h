#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/book/BookError.h"
#include "folvant/values/AmountInput.h"
#include "folvant/model/ZELMAccountsController.h"
#include "folvant/platform/FileLock.h"
#include "folvant/platform/SafeFileBatch.h"
#include "folvant/platform/plist/PropertyList.h"

namespace folvant {

class ZELMAccount;

// How an account file stands.
enum class AccountHealth {
  kHealthy,
  kDamaged,     // read, but with values missing or of the wrong kind (they took defaults)
  kUnreadable,  // not a property list, or not an account
  kMissing,     // listed in the book, no file
};

// One line of the book's account list.
struct AccountListing {
  std::int32_t number = 0;
  std::string name;
  std::string currency;  // code
  bool locked = false;   // has a password that was not given
  std::optional<double> balance;  // none when locked or unreadable
  std::int64_t entries = 0;
  AccountHealth health = AccountHealth::kHealthy;
  std::string problem;  // one line when not healthy
};

// What a repair did.
struct RepairReport {
  std::string account;
  std::filesystem::path file;
  std::filesystem::path damagedCopy;  // where the damaged file was kept; empty when there was none
  bool fromBackup = false;
  std::string damage;  // the damage summary of the file repaired
};

// A book is a folder: the book file "book.plist" holds the shared category tree, the
// registered currencies (the base currency first), the list of accounts and, for each account,
// its balances together with the identity of the account file they were computed from; each
// account is one file "accounts/<number>.plist" in the account's stored form.
//
// A book opens lazily: only the book file is read, and an account file when an operation asks
// for that account. A book opened for writing holds an exclusive lock on the folder (the file
// "book.lock") from the moment it opens until it goes, so that two programs changing one book
// never lose each other's changes; readers hold a shared lock, so they never see half a save.
// A save writes only the files that changed, each by one rename. An account whose file loaded
// with damage is never written: changes to it are refused until it is repaired.
class Book final : public ZELMAccountsController {
 public:
  static constexpr const char* kBookFileName = "book.plist";
  static constexpr const char* kLockFileName = "book.lock";

  enum class Access { kRead, kWrite };
  struct OpenOptions {
    Access access = Access::kRead;
    // How long to wait for another program that holds the book.
    std::chrono::milliseconds lockWait{5000};
    // Opens the accounts that have a password, when it is theirs.
    std::optional<std::string> password;
  };

  // Creates a new, empty book in `directory` (made if missing; refused when it already holds a
  // book), open for writing.
  static BookResult<std::unique_ptr<Book>> Create(const std::filesystem::path& directory);
  static BookResult<std::unique_ptr<Book>> Open(const std::filesystem::path& directory,
                                                const OpenOptions& options);

  ~Book() override;
  Book(const Book&) = delete;
  Book& operator=(const Book&) = delete;

  // ZELMAccountsController
  std::shared_ptr<LVCurrency> currency() const override;
  std::shared_ptr<LVCurrency> currencyWithCode(std::string_view code) const override;
  std::vector<std::shared_ptr<LVCurrency>>& currencies() override { return currencies_; }
  std::shared_ptr<ZELMAccountEntryCategory> categoryWithNumber(std::int32_t number) const override;
  std::vector<std::shared_ptr<ZELMAccountEntryCategory>> allCategories() const override;
  // Looked up in the accounts loaded so far.
  std::shared_ptr<ZELMAccountEntryType> accountEntryTypeForNumber(
      std::int32_t number) const override;

  // Asked for the password of a locked account that an operation names (by its name), when the
  // password of the OpenOptions did not open it; it gives nullopt when there is none to give.
  // Asked once per account.
  using PasswordAsker = std::function<std::optional<std::string>(std::string_view account)>;
  void setPasswordAsker(PasswordAsker asker) { askPassword_ = std::move(asker); }

  const std::filesystem::path& directory() const { return directory_; }
  // The file whose lock the book holds while it is open.
  static std::filesystem::path LockFile(const std::filesystem::path& directory);
  // Gives up the lock of a book opened for reading while the object lives on: for a reader
  // that keeps the book between calls, takes the lock itself for each of them and reads the
  // book again when its files changed (the web server).
  void ReleaseLock();
  bool writable() const { return access_ == Access::kWrite; }

  // Every account in book order, with its balance from the book's records when the account
  // file is the one they were computed from; other accounts are read to compute it.
  std::vector<AccountListing> ListAccounts();

  // The account whose name equals `name` ignoring case, or else whose number is `name`,
  // loaded. An account that loaded with damage is given for reading (see Damage()); one that
  // cannot be read is an error naming the file, the problem and the backup; one that has a
  // password is given only once the password was given (OpenOptions), else it is kLocked.
  BookResult<std::shared_ptr<ZELMAccount>> FindAccount(std::string_view name);
  BookResult<std::shared_ptr<ZELMAccount>> AccountWithNumber(std::int32_t number);
  // The same, for an operation that will change the account: refused when the book is open for
  // reading or the account loaded with damage. The account is saved by the next Save().
  BookResult<std::shared_ptr<ZELMAccount>> AccountToChange(std::string_view name);
  // Every account that can be read, loaded (for operations over the whole book), locked ones
  // included: they show nothing and refuse changes until their password is given.
  std::vector<std::shared_ptr<ZELMAccount>> LoadAllAccounts();

  // Marks a loaded account as changed, so that the next Save() writes it; refused as
  // AccountToChange() refuses, and for a locked account.
  std::optional<BookError> Changed(const ZELMAccount& account);
  // What is wrong with the account's file, as a summary; empty when it loaded cleanly.
  std::string Damage(const ZELMAccount& account) const;
  // The messages behind the summary, one per problem found.
  std::vector<std::string> DamageDetails(const ZELMAccount& account) const;

  // Warnings gathered since the last call (accounts read with damage), one line each.
  std::vector<std::string> TakeWarnings();

  // A new account with a fresh number, in `currency` (nullptr: the base currency) and with the
  // starting balance, saved with the book. A starting balance that is not a number or beyond
  // kLargestAmount is refused: it would spoil every balance after it.
  BookResult<std::shared_ptr<ZELMAccount>> AddAccount(
      std::string_view name, std::shared_ptr<LVCurrency> currency = nullptr,
      double startingBalance = 0.0);

  // Takes the account out of the book. The next Save() writes the book file without it and
  // then keeps its file as "<file>.removed" rather than deleting it. Refused as Changed() is.
  std::optional<BookError> RemoveAccount(const ZELMAccount& account);

  // The user's notes on an account, kept in the book file (the account file has no place for
  // them); empty when there are none.
  std::string AccountNotes(const ZELMAccount& account) const;
  std::optional<BookError> SetAccountNotes(const ZELMAccount& account, std::string notes);

  // The book's currency of that code (ignoring case), added to the book when it has none yet,
  // with the written form of the currency where it is known and a rate of 1 until the user sets
  // one. A code that is not a currency (ISO 4217, as ICU knows them) is refused.
  BookResult<std::shared_ptr<LVCurrency>> RegisterCurrency(std::string_view code);

  // Top-level categories of the shared tree.
  const std::vector<std::shared_ptr<ZELMAccountEntryCategory>>& categories() const {
    return categories_;
  }
  // The same, for operations that rearrange the tree; the top level is kept in name order, as
  // every category keeps its children. They call BookChanged().
  std::vector<std::shared_ptr<ZELMAccountEntryCategory>>& categories() { return categories_; }
  // Adds a category under `parent` (nullptr: top level) with a fresh number; numbers are
  // unique in the book and never reused.
  std::shared_ptr<ZELMAccountEntryCategory> AddCategory(std::string_view name,
                                                        ZELMAccountEntryCategory* parent);
  // Marks the book file (categories, currencies, account list) as changed.
  void BookChanged() { bookChanged_ = true; }

  // How files are written: binary property lists with the balance records by default. A book
  // meant to be read and compared by people (the sample book) is written as XML without the
  // records, which name this machine's files.
  void setWriteStyle(plist::Format format, bool records) {
    format_ = format;
    records_ = records;
  }

  // Files that operations keep in the book beside the accounts, named by a path inside the
  // book folder ("reconciliations/3.plist"). ReadOwnFile gives the bytes the next Save() will
  // write when some are staged, else the file's; nullopt when there is no such file.
  BookResult<std::optional<std::string>> ReadOwnFile(const std::filesystem::path& name) const;
  // Stages the bytes as that file: the next Save() writes it together with the changed accounts.
  // Refused when the book is open for reading.
  std::optional<BookError> StageOwnFile(const std::filesystem::path& name, std::string bytes);

  // Writes the files that changed: the changed accounts, the staged files of StageOwnFile and
  // the book file. On failure no file is changed. Saving nothing writes nothing.
  std::optional<BookError> Save();

  // Repairs an account whose file loaded with damage: the damaged file is kept beside it under
  // a dated name and the account is written as it was read. With `fromBackup`, the file is
  // replaced by its backup ("<file>.bak") instead, which must read cleanly; for a file that
  // cannot be read at all, that is the only repair. The backup itself is left as it was.
  BookResult<RepairReport> Repair(std::string_view name, bool fromBackup);

 private:
  struct Slot;
  Book(std::filesystem::path directory, Access access);
  std::filesystem::path AccountPath(std::int32_t number) const;
  std::optional<BookError> ReadBookFile();
  Slot* FindSlot(std::string_view name);
  Slot* SlotOf(const ZELMAccount& account);
  const Slot* SlotOf(const ZELMAccount& account) const;
  BookResult<std::shared_ptr<ZELMAccount>> Load(Slot& slot);
  std::optional<BookError> Unavailable(const Slot& slot) const;
  std::optional<BookError> RefuseChange(const Slot& slot) const;
  // The loaded account of the slot once its password, if any, was given; asks for it once.
  BookResult<std::shared_ptr<ZELMAccount>> Opened(Slot& slot);
  std::string BookFileBytes() const;

  std::filesystem::path directory_;
  Access access_;
  std::optional<std::string> password_;
  PasswordAsker askPassword_;
  std::vector<std::unique_ptr<Slot>> removed_;  // taken out since the last save
  platform::FileLock lock_;
  std::vector<std::shared_ptr<LVCurrency>> currencies_;
  std::vector<std::shared_ptr<ZELMAccountEntryCategory>> categories_;
  std::vector<std::unique_ptr<Slot>> slots_;
  std::vector<std::string> warnings_;
  std::map<std::filesystem::path, std::string> ownFiles_;  // staged by StageOwnFile
  std::int32_t nextCategoryNumber_ = 0;
  std::int32_t nextAccountNumber_ = 0;
  bool bookChanged_ = false;
  plist::Format format_ = plist::Format::kBinary;
  bool records_ = true;
};

}  // namespace folvant
