#include "folvant/book/Types.h"

#include <algorithm>
#include <map>
#include <memory>

#include "folvant/book/Book.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountEntryType.h"
#include "folvant/platform/Text.h"

namespace folvant {
namespace {

using Kind = BookError::Kind;
using TypePtr = std::shared_ptr<ZELMAccountEntryType>;

std::string Quote(std::string_view text) { return "\"" + std::string(text) + "\""; }

bool OnSide(const ZELMAccountEntryType& type, TypeSide side) {
  return side == TypeSide::kEither || type.GetIsDeposit() == (side == TypeSide::kDeposit);
}

// The active type of that name (ignoring case) on the side.
BookResult<TypePtr> Named(const ZELMAccount& account, std::string_view name, TypeSide side) {
  std::vector<TypePtr> found;
  for (const auto& type : account.types()) {
    if (OnSide(*type, side) && platform::CaseInsensitiveEqual(type->GetName(), name)) {
      found.push_back(type);
    }
  }
  if (found.empty()) {
    const char* what = side == TypeSide::kDebit     ? "debit type"
                       : side == TypeSide::kDeposit ? "deposit type"
                                                    : "type";
    return Unexpected{BookError::Of(Kind::kNotFound, std::string("no ") + what + " named " +
                                                         Quote(name) + " in " +
                                                         Quote(account.GetName()))};
  }
  if (found.size() > 1 && found[0]->GetIsDeposit() != found[1]->GetIsDeposit()) {
    return Unexpected{BookError::Of(Kind::kInvalid, "both a debit and a deposit type are named " +
                                                        Quote(name) + ": say which side")};
  }
  return found.front();
}

std::optional<BookError> RefuseName(const ZELMAccount& account, std::string_view name,
                                    bool deposit, const ZELMAccountEntryType* self) {
  if (name.empty()) return BookError::Of(Kind::kInvalid, "a type needs a name");
  for (const auto& type : account.types()) {
    if (type.get() != self && type->GetIsDeposit() == deposit &&
        platform::CaseInsensitiveEqual(type->GetName(), name)) {
      return BookError::Of(Kind::kExists, std::string("a ") + (deposit ? "deposit" : "debit") +
                                              " type named " + Quote(type->GetName()) +
                                              " already exists in " + Quote(account.GetName()));
    }
  }
  return std::nullopt;
}

void SortTypes(ZELMAccount& account) {
  ZELMAccount::TypeList types = account.types();
  std::stable_sort(types.begin(), types.end(),
                   [](const auto& a, const auto& b) { return a->NameIsGreaterThan(*b) < 0; });
  account.setTypes(std::move(types));
}

std::int64_t Uses(const ZELMAccount& account, std::int32_t number) {
  std::int64_t uses = 0;
  for (const auto& entry : account.GetAllEntries()) uses += entry->GetType() == number;
  return uses;
}

}  // namespace

BookResult<TypeListing> ListTypes(Book& book, std::string_view name) {
  auto found = book.FindAccount(name);
  if (!found) return Unexpected{found.error()};
  const ZELMAccount& account = **found;
  std::map<std::int32_t, std::int64_t> uses;
  for (const auto& entry : account.GetAllEntries()) ++uses[entry->GetType()];
  TypeListing listing{account.GetName(), {}};
  for (const auto& type : account.types()) {
    const bool isDefault = type == account.GetDefaultDebitType() ||
                           type == account.GetDefaultDepositType();
    listing.types.push_back({type->GetName(), type->GetNumber(), type->GetIsCheck(),
                             type->GetIsDeposit(), isDefault, uses[type->GetNumber()]});
  }
  return listing;
}

BookResult<TypeChange> NewType(Book& book, std::string_view name, std::string_view typeName,
                               bool deposit, bool check) {
  auto found = book.AccountToChange(name);
  if (!found) return Unexpected{found.error()};
  ZELMAccount& account = **found;
  if (auto refused = RefuseName(account, typeName, deposit, nullptr)) return Unexpected{*refused};
  auto type = std::make_shared<ZELMAccountEntryType>();
  type->SetName(typeName);
  type->SetNumber(account.nextAvailableTypeNumber());
  type->SetIsDeposit(deposit);
  type->SetIsCheck(check);
  ZELMAccount::TypeList types = account.types();
  types.push_back(type);
  account.setTypes(std::move(types));
  SortTypes(account);
  return TypeChange{account.GetName(), type->GetName(), {}, deposit, 0};
}

BookResult<TypeChange> RenameType(Book& book, std::string_view name, std::string_view typeName,
                                  TypeSide side, std::string_view newName) {
  auto found = book.AccountToChange(name);
  if (!found) return Unexpected{found.error()};
  ZELMAccount& account = **found;
  auto type = Named(account, typeName, side);
  if (!type) return Unexpected{type.error()};
  ZELMAccountEntryType& renamed = **type;
  if (auto refused = RefuseName(account, newName, renamed.GetIsDeposit(), &renamed)) {
    return Unexpected{*refused};
  }
  TypeChange change{account.GetName(), std::string(newName), renamed.GetName(),
                    renamed.GetIsDeposit(), Uses(account, renamed.GetNumber())};
  renamed.SetName(newName);
  SortTypes(account);
  return change;
}

BookResult<TypeChange> RemoveType(Book& book, std::string_view name, std::string_view typeName,
                                  TypeSide side) {
  auto found = book.AccountToChange(name);
  if (!found) return Unexpected{found.error()};
  ZELMAccount& account = **found;
  auto type = Named(account, typeName, side);
  if (!type) return Unexpected{type.error()};
  const TypePtr removed = *type;
  account.deactivateType(removed);
  return TypeChange{account.GetName(), removed->GetName(), {}, removed->GetIsDeposit(),
                    Uses(account, removed->GetNumber())};
}

BookResult<TypeDefaults> SetDefaultTypes(Book& book, std::string_view name,
                                         const std::optional<std::string>& debit,
                                         const std::optional<std::string>& deposit) {
  auto found = book.AccountToChange(name);
  if (!found) return Unexpected{found.error()};
  ZELMAccount& account = **found;
  TypePtr debitType = account.GetDefaultDebitType();
  TypePtr depositType = account.GetDefaultDepositType();
  if (debit) {
    auto type = Named(account, *debit, TypeSide::kDebit);
    if (!type) return Unexpected{type.error()};
    debitType = *type;
  }
  if (deposit) {
    auto type = Named(account, *deposit, TypeSide::kDeposit);
    if (!type) return Unexpected{type.error()};
    depositType = *type;
  }
  account.SetDefaultDebitType(debitType);
  account.SetDefaultDepositType(depositType);
  return TypeDefaults{account.GetName(), debitType ? debitType->GetName() : std::string(),
                      depositType ? depositType->GetName() : std::string()};
}

BookResult<TypeImport> ImportTypes(Book& book, std::string_view name, std::string_view from) {
  auto source = book.FindAccount(from);
  if (!source) return Unexpected{source.error()};
  auto found = book.AccountToChange(name);
  if (!found) return Unexpected{found.error()};
  ZELMAccount& account = **found;
  if (&account == source->get()) {
    return Unexpected{BookError::Of(Kind::kInvalid, "an account cannot take types from itself")};
  }
  const std::int32_t first = account.nextAvailableTypeNumber();
  account.importTypesFromAccount(source->get());
  TypeImport report{account.GetName(), (*source)->GetName(), {}};
  // The copies are numbered from `first` on, in the order they were taken: debit ones first.
  std::vector<TypePtr> added;
  for (const auto& type : account.types()) {
    if (type->GetNumber() >= first) added.push_back(type);
  }
  std::sort(added.begin(), added.end(),
            [](const auto& a, const auto& b) { return a->GetNumber() < b->GetNumber(); });
  for (const auto& type : added) report.added.push_back(type->GetName());
  return report;
}

}  // namespace folvant
