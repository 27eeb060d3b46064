#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/book/BookError.h"

namespace folvant {

class Book;

// An account's entry types. A type is named ignoring case; a name that both a debit and a
// deposit type carry ("Transfer") needs its side.
enum class TypeSide { kEither, kDebit, kDeposit };

struct TypeLine {
  std::string name;
  std::int32_t number = 0;
  bool isCheck = false;
  bool isDeposit = false;
  bool isDefault = false;  // the account's default debit or deposit type
  std::int64_t uses = 0;   // entries of the type
};

struct TypeListing {
  std::string account;
  std::vector<TypeLine> types;  // the active types, in the account's (name) order
};

struct TypeChange {
  std::string account;
  std::string type;      // its name after the change
  std::string previous;  // rename: the name before
  bool isDeposit = false;
  std::int64_t uses = 0;  // entries of the type (remove: that keep the now inactive type)
};

BookResult<TypeListing> ListTypes(Book& book, std::string_view account);
// A new type with the next free number; its name must be new on its side.
BookResult<TypeChange> NewType(Book& book, std::string_view account, std::string_view name,
                               bool deposit, bool check);
BookResult<TypeChange> RenameType(Book& book, std::string_view account, std::string_view name,
                                  TypeSide side, std::string_view newName);
// Makes the type inactive: entries keep it, new entries cannot take it; a default naming it is
// cleared.
BookResult<TypeChange> RemoveType(Book& book, std::string_view account, std::string_view name,
                                  TypeSide side);

struct TypeDefaults {
  std::string account;
  std::string debit;    // empty: none
  std::string deposit;  // empty: none
};
// Sets the default debit and/or deposit type (a debit type and a deposit type); nullopt keeps
// the one there is.
BookResult<TypeDefaults> SetDefaultTypes(Book& book, std::string_view account,
                                         const std::optional<std::string>& debit,
                                         const std::optional<std::string>& deposit);

struct TypeImport {
  std::string account;
  std::string from;
  std::vector<std::string> added;  // names of the types copied, debit ones first
};
// Copies the other account's types whose names this account lacks on their side.
BookResult<TypeImport> ImportTypes(Book& book, std::string_view account, std::string_view from);

}  // namespace folvant
