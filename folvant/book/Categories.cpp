#include "folvant/book/Categories.h"

#include <algorithm>
#include <map>
#include <memory>

#include "folvant/book/Book.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountEntrySplitLineItem.h"
#include "folvant/model/ZELMAccountSchedule.h"
#include "folvant/platform/Text.h"

namespace folvant {
namespace {

using Kind = BookError::Kind;
using CategoryPtr = std::shared_ptr<ZELMAccountEntryCategory>;

std::string Quote(std::string_view text) { return "\"" + std::string(text) + "\""; }

CategoryPtr Find(Book& book, std::string_view fullName) {
  for (const auto& top : book.categories()) {
    if (auto found = top->childWithFullName(fullName)) return found;
  }
  return nullptr;
}

BookResult<CategoryPtr> Named(Book& book, std::string_view fullName) {
  if (auto found = Find(book, fullName)) return found;
  return Unexpected{BookError::Of(Kind::kNotFound, "no category " + Quote(fullName) +
                                                       " in the book ('folvant category list' "
                                                       "shows them)")};
}

// A name of one level: not empty, without the ":" that joins levels.
std::optional<BookError> RefuseName(std::string_view name) {
  if (name.empty()) return BookError::Of(Kind::kInvalid, "a category needs a name");
  if (name.find(':') != std::string_view::npos) {
    return BookError::Of(Kind::kInvalid, "a category's own name cannot hold \":\" (" +
                                             Quote(name) + "): it joins the levels of a path");
  }
  return std::nullopt;
}

// Refused when a category other than `self` under `parent` (nullptr: the top level) already
// has the name, ignoring case.
std::optional<BookError> RefuseSibling(Book& book, const ZELMAccountEntryCategory* parent,
                                       std::string_view name,
                                       const ZELMAccountEntryCategory* self) {
  const auto& siblings = parent ? parent->children() : book.categories();
  for (const auto& sibling : siblings) {
    if (sibling.get() != self && platform::CaseInsensitiveEqual(sibling->name(), name)) {
      return BookError::Of(Kind::kExists, "a category " + Quote(sibling->fullName()) +
                                              " already exists");
    }
  }
  return std::nullopt;
}

// Calls visit(number&) for every category number an account's entries, line items and
// schedules hold.
template <typename Visit>
void ForEachCategoryUse(const ZELMAccount& account, Visit&& visit) {
  auto entry = [&visit](ZELMAccountEntry& e) {
    std::int32_t number = e.GetCategory();
    if (visit(number)) e.SetCategory(number);
    for (const auto& item : e.splitLineItems()) {
      number = item->category();
      if (visit(number)) item->setCategory(number);
    }
  };
  for (const auto& e : account.GetAllEntries()) entry(*e);
  for (const auto& s : account.GetSchedules()) entry(*s);
}

}  // namespace

BookResult<std::vector<CategoryLine>> ListCategories(Book& book) {
  std::map<std::int32_t, std::int64_t> uses;
  for (const auto& account : book.LoadAllAccounts()) {
    ForEachCategoryUse(*account, [&uses](std::int32_t& number) {
      ++uses[number];
      return false;
    });
  }
  std::vector<CategoryLine> lines;
  for (const auto& category : book.allCategories()) {
    const auto found = uses.find(category->number());
    lines.push_back({category->name(), category->fullName(), category->number(),
                     category->parents().size(), found == uses.end() ? 0 : found->second});
  }
  return lines;
}

BookResult<CategoryChange> NewCategory(Book& book, std::string_view fullName) {
  if (!book.writable()) {
    return Unexpected{BookError::Of(Kind::kReadOnly, "the book was opened for reading only")};
  }
  const auto colon = fullName.rfind(':');
  const std::string_view name =
      colon == std::string_view::npos ? fullName : fullName.substr(colon + 1);
  if (auto refused = RefuseName(name)) return Unexpected{*refused};
  CategoryPtr parent;
  if (colon != std::string_view::npos) {
    auto found = Named(book, fullName.substr(0, colon));
    if (!found) return Unexpected{found.error()};
    parent = *found;
  }
  if (auto refused = RefuseSibling(book, parent.get(), name, nullptr)) return Unexpected{*refused};
  auto added = book.AddCategory(name, parent.get());
  return CategoryChange{added->fullName(), {}, {}, 0};
}

BookResult<CategoryChange> RenameCategory(Book& book, std::string_view fullName,
                                          std::string_view newName) {
  if (!book.writable()) {
    return Unexpected{BookError::Of(Kind::kReadOnly, "the book was opened for reading only")};
  }
  auto found = Named(book, fullName);
  if (!found) return Unexpected{found.error()};
  ZELMAccountEntryCategory& category = **found;
  if (auto refused = RefuseName(newName)) return Unexpected{*refused};
  if (auto refused = RefuseSibling(book, category.parent(), newName, &category)) {
    return Unexpected{*refused};
  }
  CategoryChange change{{}, category.fullName(), {}, 0};
  category.setName(newName);
  if (category.parent() != nullptr) {
    category.parent()->sortChildren();
  } else {
    auto& top = book.categories();
    std::stable_sort(top.begin(), top.end(),
                     [](const auto& a, const auto& b) { return a->nameIsGreaterThan(*b) < 0; });
  }
  change.category = category.fullName();
  book.BookChanged();
  return change;
}

BookResult<CategoryChange> MoveCategory(Book& book, std::string_view fullName,
                                        std::string_view parentName) {
  if (!book.writable()) {
    return Unexpected{BookError::Of(Kind::kReadOnly, "the book was opened for reading only")};
  }
  auto found = Named(book, fullName);
  if (!found) return Unexpected{found.error()};
  const CategoryPtr category = *found;
  CategoryPtr parent;
  if (!parentName.empty()) {
    auto named = Named(book, parentName);
    if (!named) return Unexpected{named.error()};
    parent = *named;
    for (const ZELMAccountEntryCategory* at = parent.get(); at != nullptr; at = at->parent()) {
      if (at == category.get()) {
        return Unexpected{BookError::Of(Kind::kInvalid, "cannot move " +
                                                            Quote(category->fullName()) +
                                                            " under itself")};
      }
    }
  }
  if (auto refused = RefuseSibling(book, parent.get(), category->name(), category.get())) {
    return Unexpected{*refused};
  }
  CategoryChange change{{}, category->fullName(), {}, 0};
  auto& top = book.categories();
  if (category->parent() == nullptr) {
    std::erase(top, category);
  } else {
    category->parent()->removeChild(category.get());
  }
  if (parent) {
    parent->addChild(category);
  } else {
    category->setParent(nullptr);
    top.push_back(category);
    std::stable_sort(top.begin(), top.end(),
                     [](const auto& a, const auto& b) { return a->nameIsGreaterThan(*b) < 0; });
  }
  change.category = category->fullName();
  book.BookChanged();
  return change;
}

BookResult<CategoryChange> RemoveCategory(Book& book, std::string_view fullName,
                                          const std::optional<std::string>& reassign) {
  if (!book.writable()) {
    return Unexpected{BookError::Of(Kind::kReadOnly, "the book was opened for reading only")};
  }
  auto found = Named(book, fullName);
  if (!found) return Unexpected{found.error()};
  const CategoryPtr category = *found;
  if (!category->children().empty()) {
    return Unexpected{BookError::Of(
        Kind::kInvalid, Quote(category->fullName()) + " has categories below it (" +
                            Quote(category->children().front()->fullName()) +
                            "); remove or move them first")};
  }
  CategoryPtr target;
  if (reassign) {
    auto named = Named(book, *reassign);
    if (!named) return Unexpected{named.error()};
    target = *named;
    if (target == category) {
      return Unexpected{BookError::Of(Kind::kInvalid,
                                      "cannot move the uses of a category to itself")};
    }
  }
  const std::int32_t number = category->number();
  // Every account that uses it is checked before anything changes.
  std::vector<std::shared_ptr<ZELMAccount>> users;
  std::int64_t uses = 0;
  std::string where;
  for (const auto& account : book.LoadAllAccounts()) {
    std::int64_t here = 0;
    ForEachCategoryUse(*account, [&here, number](std::int32_t& n) {
      here += n == number;
      return false;
    });
    if (here == 0) continue;
    uses += here;
    where += (where.empty() ? "" : ", ") + std::to_string(here) + " in " + Quote(account->GetName());
    if (target) {
      if (auto refused = book.Changed(*account)) return Unexpected{*refused};
    }
    users.push_back(account);
  }
  if (uses > 0 && !target) {
    return Unexpected{BookError::Of(Kind::kInvalid, Quote(category->fullName()) + " is in use (" +
                                                        where +
                                                        "); name the category its uses move to")};
  }
  for (const auto& account : users) {
    ForEachCategoryUse(*account, [number, &target](std::int32_t& n) {
      if (n != number) return false;
      n = target->number();
      return true;
    });
  }
  CategoryChange change{{}, category->fullName(), target ? target->fullName() : std::string(),
                        uses};
  if (category->parent() == nullptr) {
    std::erase(book.categories(), category);
  } else {
    category->parent()->removeChild(category.get());
  }
  book.BookChanged();
  return change;
}

}  // namespace folvant
