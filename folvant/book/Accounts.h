#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/book/BookError.h"

namespace folvant {

class Book;

// Changing and removing accounts, and locking them with a password.

// What to change; nullopt keeps what there is.
struct AccountEdit {
  std::optional<std::string> name;
  std::optional<double> startingBalance;
  std::optional<std::int32_t> startingCheck;
  std::optional<std::string> currency;  // a code: the book's, or a known one it then takes
  std::optional<std::string> notes;
};

struct AccountSummary {
  std::string name;
  std::int32_t number = 0;
  std::string currency;
  double startingBalance = 0.0;
  std::int32_t startingCheck = 1;
  std::string notes;
};

// Every change is checked before any is made.
BookResult<AccountSummary> EditAccount(Book& book, std::string_view account,
                                       const AccountEdit& edit);

struct AccountRemoval {
  std::string name;
  std::string keptAs;          // the account file's new name, beside where it was
  std::int64_t unlinked = 0;   // transfers in other accounts that no longer name it
  std::vector<std::string> in; // the accounts that held them
};

// Takes the account out of the book. Refused while other accounts hold transfers linked to it,
// unless `unlink`: those entries then stay, as plain entries.
BookResult<AccountRemoval> RemoveAccount(Book& book, std::string_view account, bool unlink);

// Gives the account a password (it must have none yet); the account is then shown and changed
// only when the password is given.
BookResult<std::string> LockAccount(Book& book, std::string_view account,
                                    std::string_view password);
// Takes the password away; the account must have been opened with it.
BookResult<std::string> UnlockAccount(Book& book, std::string_view account);

}  // namespace folvant
