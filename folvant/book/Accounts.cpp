#include "folvant/book/Accounts.h"

#include <cmath>
#include <memory>

#include "folvant/book/Book.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/platform/Text.h"
#include "folvant/values/AmountInput.h"
#include "folvant/values/LVCurrency.h"

namespace folvant {
namespace {

using Kind = BookError::Kind;

std::string Quote(std::string_view text) { return "\"" + std::string(text) + "\""; }

}  // namespace

BookResult<AccountSummary> EditAccount(Book& book, std::string_view name, const AccountEdit& edit) {
  auto found = book.AccountToChange(name);
  if (!found) return Unexpected{found.error()};
  ZELMAccount& account = **found;
  if (edit.name) {
    if (edit.name->empty()) {
      return Unexpected{BookError::Of(Kind::kInvalid, "an account needs a name")};
    }
    // Taking another account's name, or its number, would leave one of the two hard to name.
    for (const AccountListing& line : book.ListAccounts()) {
      if (line.number != account.GetNumber() &&
          (platform::CaseInsensitiveEqual(line.name, *edit.name) ||
           std::to_string(line.number) == *edit.name)) {
        return Unexpected{BookError::Of(
            Kind::kExists, "an account named " + Quote(*edit.name) + " already exists")};
      }
    }
  }
  if (edit.startingBalance &&
      (!std::isfinite(*edit.startingBalance) || std::fabs(*edit.startingBalance) > kLargestAmount)) {
    return Unexpected{BookError::Of(
        Kind::kInvalid, "a starting balance must be a number no larger than 1e15 either way")};
  }
  if (edit.startingCheck && *edit.startingCheck < 0) {
    return Unexpected{BookError::Of(Kind::kInvalid, "a starting check number is 0 or more")};
  }
  std::shared_ptr<LVCurrency> currency;
  if (edit.currency) {
    auto registered = book.RegisterCurrency(*edit.currency);
    if (!registered) return Unexpected{registered.error()};
    currency = *registered;
  }
  if (edit.notes) {
    if (auto refused = book.SetAccountNotes(account, *edit.notes)) return Unexpected{*refused};
  }
  if (edit.name) {
    account.SetName(*edit.name);
    book.BookChanged();  // the book file lists accounts by name
  }
  if (edit.startingBalance) account.SetStartingBalance(*edit.startingBalance);
  if (edit.startingCheck) account.SetStartingCheckNumber(*edit.startingCheck);
  if (currency) account.setCurrency(currency);
  return AccountSummary{account.GetName(),
                        account.GetNumber(),
                        account.currency() ? account.currency()->code() : std::string(),
                        account.GetStartingBalance(),
                        account.GetStartingCheckNumber(),
                        book.AccountNotes(account)};
}

BookResult<AccountRemoval> RemoveAccount(Book& book, std::string_view name, bool unlink) {
  auto found = book.AccountToChange(name);
  if (!found) return Unexpected{found.error()};
  const std::shared_ptr<ZELMAccount> account = *found;
  const std::int32_t number = account->GetNumber();
  AccountRemoval removal{account->GetName(), std::to_string(number) + ".plist.removed", 0, {}};
  std::vector<std::shared_ptr<ZELMAccountEntry>> linked;
  for (const auto& other : book.LoadAllAccounts()) {
    if (other == account) continue;
    std::int64_t here = 0;
    for (const auto& entry : other->GetAllEntries()) {
      if (entry->IsLinked() && entry->GetLinkedAccount() == number) {
        linked.push_back(entry);
        ++here;
      }
    }
    if (here == 0) continue;
    removal.in.push_back(other->GetName());
    if (!unlink) {
      return Unexpected{BookError::Of(
          Kind::kInvalid, Quote(other->GetName()) + " holds " + std::to_string(here) +
                              (here == 1 ? " transfer" : " transfers") + " linked to " +
                              Quote(account->GetName()) +
                              "; unlink them to remove the account, and they stay there as "
                              "plain entries")};
    }
    if (auto refused = book.Changed(*other)) return Unexpected{*refused};
  }
  if (auto refused = book.RemoveAccount(*account)) return Unexpected{*refused};
  for (const auto& entry : linked) entry->SetIsLinked(false);
  removal.unlinked = static_cast<std::int64_t>(linked.size());
  return removal;
}

BookResult<std::string> LockAccount(Book& book, std::string_view name, std::string_view password) {
  auto found = book.AccountToChange(name);
  if (!found) return Unexpected{found.error()};
  ZELMAccount& account = **found;
  if (account.HasPassword()) {
    return Unexpected{BookError::Of(Kind::kExists, Quote(account.GetName()) +
                                                       " already has a password; unlock it first "
                                                       "to give it another")};
  }
  if (password.empty()) {
    return Unexpected{BookError::Of(Kind::kInvalid, "a password cannot be empty")};
  }
  account.SetPassword(password);
  return account.GetName();
}

BookResult<std::string> UnlockAccount(Book& book, std::string_view name) {
  auto found = book.AccountToChange(name);
  if (!found) return Unexpected{found.error()};
  ZELMAccount& account = **found;
  if (!account.HasPassword()) {
    return Unexpected{
        BookError::Of(Kind::kInvalid, Quote(account.GetName()) + " has no password")};
  }
  account.SetPassword("");
  return account.GetName();
}

}  // namespace folvant
