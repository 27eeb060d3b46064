#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/book/BookError.h"

namespace folvant {

class Book;

// The book's shared category tree. A category is named by its full name ("Food:Groceries"),
// ignoring case. Its uses are the entries, split line items and schedules of every account that
// can be read (locked ones too: a category they use must not go from under them).

struct CategoryLine {
  std::string name;      // its own name
  std::string fullName;  // Food:Groceries
  std::int32_t number = 0;
  std::size_t depth = 0;  // 0 at the top level
  std::int64_t uses = 0;  // of this category itself, not of those below it
};

// Depth first, each category followed by those below it, in the tree's (name) order.
BookResult<std::vector<CategoryLine>> ListCategories(Book& book);

// What a change did, for telling the user.
struct CategoryChange {
  std::string category;      // full name after the change
  std::string previous;      // full name before it (rename, move, remove)
  std::string reassignedTo;  // remove: where the uses went
  std::int64_t moved = 0;    // remove: uses moved there
};

// A new category; "Food:Snacks" makes Snacks under Food, which must exist.
BookResult<CategoryChange> NewCategory(Book& book, std::string_view fullName);
// Gives the category a new name of one level, kept by the category's number (entries keep it).
BookResult<CategoryChange> RenameCategory(Book& book, std::string_view fullName,
                                          std::string_view newName);
// Puts the category (and what is below it) under `parent`; an empty parent: the top level.
BookResult<CategoryChange> MoveCategory(Book& book, std::string_view fullName,
                                        std::string_view parent);
// Removes a category that has none below it. One in use is refused, unless `reassign` names the
// category its entries, line items and schedules move to.
BookResult<CategoryChange> RemoveCategory(Book& book, std::string_view fullName,
                                          const std::optional<std::string>& reassign);

}  // namespace folvant
