#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/book/BookError.h"

namespace folvant {

class Book;

// Folders hold entries beside the register: an entry lives either in the account's main list
// (the register proper) or in exactly one folder, and every balance counts it either way.
// Smart folders are saved filters. The operations that change an account refuse one that
// loaded with damage; they leave saving to the caller (Book::Save).

struct FolderLine {
  std::string name;
  std::size_t entries = 0;
  double total = 0.0;
};

struct FolderList {
  std::string account;              // its name as the book has it
  std::string currency;             // code
  std::size_t registerEntries = 0;  // entries in no folder
  std::vector<FolderLine> folders;  // in the account's order
};

// What a change did, for telling the user.
struct FolderChange {
  std::string account;      // its name as the book has it
  std::string folder;       // the folder's name as stored; empty for the register
  std::size_t entries = 0;  // entries moved (for a removed folder: back to the register)
};

BookResult<FolderList> ListFolders(Book& book, std::string_view account);
// A new, empty folder; names are unique in the account, ignoring case.
BookResult<FolderChange> NewFolder(Book& book, std::string_view account, std::string_view name);
// Files the entries (by entry number) in the folder, or with an empty `folder` back in the
// register. Every number is checked first: an unknown one moves nothing.
BookResult<FolderChange> MoveEntries(Book& book, std::string_view account,
                                     const std::vector<std::int32_t>& entries,
                                     std::string_view folder);
// Removes the folder; its entries go back to the register, so that none is lost.
BookResult<FolderChange> RemoveFolder(Book& book, std::string_view account, std::string_view name);

// How the groups of a smart folder join: each group "and" (narrows) or "or" (adds) to the ones
// before it, and matches when "all" or "any" of its conditions pass. A stored code that has no
// word is given as its number.
struct SmartFolderGroup {
  std::string join;
  std::string match;
  std::vector<std::string> conditions;  // as written on the command line: "amount > 100"
};

struct SmartFolderLine {
  std::string name;
  std::vector<SmartFolderGroup> groups;
};

struct SmartFolderList {
  std::string account;
  std::vector<SmartFolderLine> smartFolders;
};

BookResult<SmartFolderList> ListSmartFolders(Book& book, std::string_view account);
// A smart folder from conditions written as words ("description contains rent"): all of them
// must pass, or with `any` one is enough. A condition that does not read is refused with the
// reason, before anything changes.
BookResult<FolderChange> NewSmartFolder(Book& book, std::string_view account, std::string_view name,
                                        const std::vector<std::string>& conditions, bool any);
BookResult<FolderChange> RemoveSmartFolder(Book& book, std::string_view account,
                                           std::string_view name);

}  // namespace folvant
