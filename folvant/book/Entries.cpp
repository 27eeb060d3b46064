#include "folvant/book/Entries.h"

#include <algorithm>
#include <cmath>

#include "folvant/book/Book.h"
#include "folvant/book/Names.h"
#include "folvant/book/Reconcile.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountEntryType.h"
#include "folvant/model/ZELMAccountFolder.h"
#include "folvant/platform/Clock.h"
#include "folvant/platform/Text.h"
#include "folvant/values/LVCurrency.h"
#include "folvant/values/ZELMUtilities.h"

namespace folvant {
namespace {

using Kind = BookError::Kind;
using EntryPtr = std::shared_ptr<ZELMAccountEntry>;

std::string Quote(std::string_view text) { return "\"" + std::string(text) + "\""; }

Unexpected<BookError> Invalid(std::string message) {
  return Unexpected{BookError::Of(Kind::kInvalid, std::move(message))};
}

std::string EntryName(const ZELMAccount& account, std::int32_t number) {
  return "entry " + std::to_string(number) + " of " + Quote(account.GetName());
}

// Every entry of the account, the register's and each folder's, without copying the lists.
template <typename Visit>
void ForEachEntry(const ZELMAccount& account, Visit visit) {
  for (const auto& e : account.GetEntries()) visit(e);
  for (const auto& folder : account.folders()) {
    for (const auto& e : folder->entries()) visit(e);
  }
}

BookResult<EntryPtr> EntryOf(const ZELMAccount& account, std::int32_t number) {
  if (auto e = account.GetEntryWithNumber(number)) return e;
  return Unexpected{BookError::Of(Kind::kNotFound, "no entry number " + std::to_string(number) +
                                                       " in " + Quote(account.GetName()))};
}

// ---- categories ----

std::shared_ptr<ZELMAccountEntryCategory> FindCategory(const Book& book, std::string_view name) {
  for (const auto& top : book.categories()) {
    if (auto found = top->childWithFullName(name)) return found;
  }
  return nullptr;
}

std::size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t above = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
      diagonal = above;
    }
  }
  return row[b.size()];
}

// Up to three full names of the book's categories closest to `name`, nearest first: by edit
// distance ignoring case, to the full name or to its last part ("Grocery" finds Food:Groceries).
std::vector<std::string> ClosestCategories(const Book& book, std::string_view name) {
  const std::string wanted = platform::AsciiLower(name);
  std::vector<std::pair<std::size_t, std::string>> scored;
  for (const auto& category : book.allCategories()) {
    const std::string full = category->fullName();
    const std::string lower = platform::AsciiLower(full);
    const std::string last = platform::AsciiLower(category->name());
    const std::size_t distance = std::min(EditDistance(wanted, lower), EditDistance(wanted, last));
    if (distance <= std::max<std::size_t>(3, wanted.size() / 2))
      scored.emplace_back(distance, full);
  }
  std::stable_sort(scored.begin(), scored.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<std::string> names;
  for (std::size_t i = 0; i < scored.size() && i < 3; ++i) names.push_back(scored[i].second);
  return names;
}

// A category named by a person: one that exists, or one to create when the entry is made.
struct CategoryRef {
  std::int32_t number = -1;  // -1: none (or not made yet)
  std::string create;        // the full name to create
};

BookResult<CategoryRef> ReadCategory(const Book& book, const std::string& name, bool create) {
  if (name.empty()) return CategoryRef{};
  if (auto found = FindCategory(book, name)) return CategoryRef{found->number(), {}};
  const bool wellFormed =
      name.front() != ':' && name.back() != ':' && name.find("::") == std::string::npos;
  if (create && wellFormed) return CategoryRef{-1, name};
  if (create) return Invalid(Quote(name) + " is not a category name (Parent:Child)");
  std::string message = "no category named " + Quote(name) + " in the book";
  const auto closest = ClosestCategories(book, name);
  if (!closest.empty()) {
    message += "; the closest: ";
    for (std::size_t i = 0; i < closest.size(); ++i) {
      message += (i ? ", " : "") + Quote(closest[i]);
    }
  }
  return Unexpected{
      BookError::Of(Kind::kNotFound, std::move(message), "--new-category creates it")};
}

// The category's number, made (with any missing parents) when it is to be created.
std::int32_t MakeCategory(Book& book, const CategoryRef& ref) {
  if (ref.create.empty()) return ref.number;
  ZELMAccountEntryCategory* parent = nullptr;
  std::shared_ptr<ZELMAccountEntryCategory> node;
  std::size_t start = 0;
  while (start <= ref.create.size()) {
    std::size_t end = ref.create.find(':', start);
    if (end == std::string::npos) end = ref.create.size();
    const std::string part = ref.create.substr(start, end - start);
    node = nullptr;
    if (parent == nullptr) {
      for (const auto& top : book.categories()) {
        if (platform::CaseInsensitiveEqual(top->name(), part)) node = top;
      }
    } else {
      node = parent->childWithName(part);
    }
    if (!node) node = book.AddCategory(part, parent);
    parent = node.get();
    start = end + 1;
  }
  return node->number();
}

// ---- types ----

std::shared_ptr<ZELMAccountEntryType> TypeNamed(const ZELMAccount& account, std::string_view name,
                                                bool debit) {
  for (const auto* list : {&account.types(), &account.inactiveTypes()}) {
    for (const auto& t : *list) {
      if (t->GetIsDeposit() != debit && platform::CaseInsensitiveEqual(t->GetName(), name))
        return t;
    }
  }
  return nullptr;
}

std::shared_ptr<ZELMAccountEntryType> FirstCheckType(const ZELMAccount& account) {
  for (const auto& t : account.types()) {
    if (!t->GetIsDeposit() && t->GetIsCheck()) return t;
  }
  return nullptr;
}

// ---- check numbers ----

bool CheckNumberInUse(const ZELMAccount& account, std::int32_t number,
                      const ZELMAccountEntry* except) {
  bool used = false;
  ForEachEntry(account, [&](const EntryPtr& e) {
    if (e.get() != except && e->IsCheck() && !(e->IsLinked() && e->IsDeposit()) &&
        e->GetCheckNumber() == number) {
      used = true;
    }
  });
  return used;
}

// ---- the other side of a transfer ----

struct OtherSide {
  std::shared_ptr<ZELMAccount> account;
  EntryPtr entry;  // nullptr when the linked entry is gone
  std::string name;
};

// The other side of a linked entry, ready to change; none for an entry that is not linked.
// An account that cannot be changed refuses the whole change.
BookResult<std::optional<OtherSide>> OtherSideToChange(Book& book, const ZELMAccountEntry& e) {
  if (!e.IsLinked()) return std::optional<OtherSide>();
  OtherSide side;
  side.name = "account " + std::to_string(e.GetLinkedAccount());
  auto account = book.AccountWithNumber(e.GetLinkedAccount());
  if (!account) {
    if (account.error().kind != Kind::kNotFound) return Unexpected{account.error()};
    return std::optional<OtherSide>(side);
  }
  side.account = *account;
  side.name = (*account)->GetName();
  side.entry = (*account)->GetEntryWithNumber(e.GetLinkedEntry());
  if (side.entry) {
    if (auto refused = book.Changed(**account)) {
      return Unexpected{BookError::Of(
          refused->kind, "entry " + std::to_string(e.GetNumber()) + " is a transfer with " +
                             Quote(side.name) + ", which cannot be changed: " + refused->message)};
    }
  }
  return std::optional<OtherSide>(side);
}

LinkedChange Missing(const ZELMAccountEntry& e, const OtherSide& side) {
  return {side.name, e.GetLinkedEntry(), "is missing, so nothing else changed"};
}

// Brings the exchanged amounts of a transfer between currencies up to date with the entry's own.
void Exchange(ZELMAccountEntry& e, const ZELMAccount& account, const ZELMAccount& other) {
  const LVCurrency* mine = account.currency().get();
  const LVCurrency* theirs = other.currency().get();
  if (mine == theirs || mine == nullptr) return;
  for (const auto& item : e.splitLineItems()) {
    item->setExchangedAmount(RoundAmount(mine->convertAmount(item->amount(), theirs)));
  }
  e.SetLinkedExchangedAmount(RoundAmount(mine->convertAmount(e.GetAmount(), theirs)));
}

// Writes the entry onto the other side and says so.
std::optional<LinkedChange> Sync(ZELMAccountEntry& e, const std::optional<OtherSide>& side,
                                 const std::string& what) {
  if (!side) return std::nullopt;
  if (!side->entry) return Missing(e, *side);
  e.syncToEntry(*side->entry);
  return LinkedChange{side->name, side->entry->GetNumber(), what};
}

// ---- reading an entry ----

EntryDetails Describe(Book& book, const ZELMAccount& account, const ZELMAccountEntry& e) {
  EntryDetails d;
  d.number = e.GetNumber();
  d.date = e.GetDate();
  if (e.IsCheck()) d.checkNumber = e.GetCheckNumber();
  d.kind = e.IsDebit() ? "debit" : e.IsDeposit() ? "deposit" : "";
  d.type = EntryTypeName(account, e);
  d.category = EntryCategoryName(account, e);
  d.toFrom = e.GetToFrom();
  d.description = e.GetDescription();
  d.notes = e.GetNotes();
  d.amount = e.GetAmount();
  d.resolved = e.GetCleared() != 0;
  d.taxDeductible = e.GetTaxDeductible();
  d.isVoid = e.GetVoid();
  for (const auto& item : e.splitLineItems()) {
    std::string category;
    if (auto c = account.accountEntryCategoryForNumber(item->category())) category = c->fullName();
    d.splits.push_back({category, item->description(), item->toFrom(), item->amount()});
  }
  if (e.IsLinked()) {
    EntryDetails::Link link{"account " + std::to_string(e.GetLinkedAccount()), e.GetLinkedEntry(),
                            false};
    if (auto other = book.AccountWithNumber(e.GetLinkedAccount())) {
      link.account = (*other)->GetName();
      link.found = (*other)->GetEntryWithNumber(e.GetLinkedEntry()) != nullptr;
      if ((*other)->currency() != account.currency()) {
        d.exchangedAmount = e.GetLinkedExchangedAmount();
        if ((*other)->currency()) d.exchangedCurrency = (*other)->currency()->code();
      }
    }
    d.linked = link;
  }
  d.runningBalance = account.GetRunningBalanceAtEntry(&e);
  return d;
}

// ---- preparing a change ----

// What a change will do, worked out in full before anything is touched.
struct Plan {
  std::optional<std::int32_t> date;
  std::optional<double> amount;  // the entry's amount (the line items' total for a split)
  bool debit = false;            // the direction after the change
  bool check = false;
  std::int32_t checkNumber = -1;
  std::optional<std::int32_t> type;  // -1 clears
  std::optional<CategoryRef> category;
  std::optional<std::vector<std::pair<CategoryRef, SplitFields>>> splits;
  std::vector<std::string> remembered;
};

// The latest entry (by entry number) with this to/from, ignoring case, in this direction.
const ZELMAccountEntry* Remembered(const ZELMAccount& account, std::string_view toFrom,
                                   bool debit) {
  const ZELMAccountEntry* latest = nullptr;
  ForEachEntry(account, [&](const EntryPtr& e) {
    if (e->IsDebit() == debit && (latest == nullptr || e->GetNumber() > latest->GetNumber()) &&
        platform::CaseInsensitiveEqual(e->GetToFrom(), toFrom)) {
      latest = e.get();
    }
  });
  return latest;
}

// `existing` is the entry (or schedule) being edited, nullptr when adding; `name` names it.
BookResult<Plan> Prepare(const Book& book, const ZELMAccount& account,
                         const ZELMAccountEntry* existing, const EntryFields& f,
                         const EntryOptions& options, const std::string& name = {}) {
  Plan plan;
  plan.date = f.date;
  if (f.date && *f.date <= 0) return Invalid("the date must be a day");

  // The amount: given, or the total of the line items.
  if (f.splits) {
    if (f.splits->empty() && !f.amount) {
      return Invalid("a split needs at least one line item");
    }
    std::vector<std::pair<CategoryRef, SplitFields>> items;
    double total = 0.0;
    for (const SplitFields& s : *f.splits) {
      if (!std::isfinite(s.amount) || std::fabs(s.amount) > kLargestAmount) {
        return Invalid("a line item's amount is beyond what a register holds");
      }
      auto ref = ReadCategory(book, s.category, options.newCategory);
      if (!ref) return Unexpected{ref.error()};
      SplitFields rounded = s;
      rounded.amount = RoundAmount(s.amount);
      total += rounded.amount;
      items.emplace_back(*ref, rounded);
    }
    total = RoundAmount(total);
    if (!f.splits->empty()) {
      if (f.amount && RoundAmount(*f.amount) != total) {
        return Invalid("the line items add up to " + FormatFixed2(total) + ", not " +
                       FormatFixed2(RoundAmount(*f.amount)));
      }
      plan.amount = total;
    } else {
      plan.amount = f.amount;
    }
    plan.splits = std::move(items);
  } else if (f.amount) {
    if (existing != nullptr && !existing->splitLineItems().empty()) {
      return Invalid((name.empty() ? EntryName(account, existing->GetNumber()) : name) +
                     " is split: its amount is the total of its line items; give them anew");
    }
    plan.amount = f.amount;
  } else if (existing == nullptr) {
    return Invalid("an entry needs an amount (or split line items)");
  }
  if (plan.amount && (!std::isfinite(*plan.amount) || std::fabs(*plan.amount) > kLargestAmount)) {
    return Invalid("the amount is beyond what a register holds");
  }
  plan.debit = plan.amount ? *plan.amount < 0 : existing->IsDebit();

  // The type, and with it whether the entry is a check.
  std::shared_ptr<ZELMAccountEntryType> type;
  if (f.type && !f.type->empty()) {
    type = TypeNamed(account, *f.type, plan.debit);
    if (!type) {
      std::string names;
      for (const auto& t : plan.debit ? account.GetDebitTypes() : account.GetDepositTypes()) {
        names += (names.empty() ? "" : ", ") + t->GetName();
      }
      return Unexpected{BookError::Of(
          Kind::kNotFound, Quote(account.GetName()) + " has no " +
                               (plan.debit ? "debit" : "deposit") + " type named " +
                               Quote(*f.type) + (names.empty() ? "" : "; its types: " + names))};
    }
    plan.type = type->GetNumber();
  } else if (f.type) {
    plan.type = -1;
  } else if (existing != nullptr && plan.amount && existing->IsDebit() != plan.debit) {
    // A debit type does not describe a deposit: the entry turned around takes the default.
    const auto& fallback =
        plan.debit ? account.GetDefaultDebitType() : account.GetDefaultDepositType();
    plan.type = fallback ? fallback->GetNumber() : -1;
  }
  plan.check = f.check               ? *f.check
               : type                ? type->GetIsCheck()
               : existing != nullptr ? existing->IsCheck()
                                     : false;
  if (plan.check && !plan.debit) {
    return Invalid("a check takes money out of the account: give a negative amount");
  }
  if (existing == nullptr && !plan.type && plan.check) {
    if (auto t = FirstCheckType(account)) {
      type = t;
      plan.type = t->GetNumber();
    }
  }

  // The category.
  if (f.category) {
    auto ref = ReadCategory(book, *f.category, options.newCategory);
    if (!ref) return Unexpected{ref.error()};
    plan.category = *ref;
  }

  // What an earlier entry with the same to/from remembers.
  if (existing == nullptr && !options.noMemory && f.toFrom && !f.toFrom->empty()) {
    if (const ZELMAccountEntry* earlier = Remembered(account, *f.toFrom, plan.debit)) {
      if (!plan.type) {
        auto t = account.accountEntryTypeForNumber(earlier->GetType());
        if (t && t->GetIsCheck() == plan.check) {
          plan.type = t->GetNumber();
          plan.remembered.push_back("type");
        }
      }
      if (!plan.category && !plan.splits && earlier->GetCategory() >= 0 &&
          account.accountEntryCategoryForNumber(earlier->GetCategory())) {
        plan.category = CategoryRef{earlier->GetCategory(), {}};
        plan.remembered.push_back("category");
      }
      if (!f.description && !earlier->GetDescription().empty()) {
        plan.remembered.push_back("description");
      }
    }
  }
  if (existing == nullptr && !plan.type) {
    const auto& fallback =
        plan.debit ? account.GetDefaultDebitType() : account.GetDefaultDepositType();
    if (fallback && fallback->GetIsCheck() == plan.check) plan.type = fallback->GetNumber();
  }

  // The check number.
  if (plan.check) {
    if (f.checkNumber) {
      if (*f.checkNumber < 0) return Invalid("a check number is 0 or more");
      if (!options.allowDuplicateCheck && CheckNumberInUse(account, *f.checkNumber, existing)) {
        return Unexpected{BookError::Of(Kind::kExists,
                                        "check " + std::to_string(*f.checkNumber) +
                                            " is already in " + Quote(account.GetName()),
                                        "--allow-duplicate-check enters it again")};
      }
      plan.checkNumber = *f.checkNumber;
    } else if (existing != nullptr && existing->IsCheck()) {
      plan.checkNumber = existing->GetCheckNumber();
    } else {
      plan.checkNumber = account.NextAvailableCheckNumber();
    }
  } else if (f.checkNumber) {
    return Invalid("a check number needs a check");
  }
  return plan;
}

// Applies a prepared change; creates the categories it names.
void Apply(Book& book, const Plan& plan, const EntryFields& f, const ZELMAccountEntry* remembered,
           ZELMAccountEntry& e) {
  if (plan.date) e.SetDate(*plan.date);
  if (f.toFrom) e.SetToFrom(*f.toFrom);
  if (f.description) {
    e.SetDescription(*f.description);
  } else if (remembered != nullptr && std::find(plan.remembered.begin(), plan.remembered.end(),
                                                "description") != plan.remembered.end()) {
    e.SetDescription(remembered->GetDescription());
  }
  if (f.notes) e.SetNotes(*f.notes);
  if (plan.splits) {
    e.removeAllSplitLineItems();
    for (const auto& [ref, s] : *plan.splits) {
      e.addSplitLineItemWithCategory(MakeCategory(book, ref), s.description, std::string(),
                                     s.amount);
    }
  }
  if (plan.amount) e.SetAmount(*plan.amount);
  if (plan.debit) {
    e.SetIsDebit(true);
  } else {
    e.SetIsDeposit(true);
  }
  if (plan.type) e.SetType(*plan.type);
  e.SetIsCheck(plan.check);
  e.SetCheckNumber(plan.check ? plan.checkNumber : -1);
  if (plan.category) e.SetCategory(MakeCategory(book, *plan.category));
  if (f.resolved) e.SetCleared(*f.resolved ? 1 : 0);
  if (f.taxDeductible) e.SetTaxDeductible(*f.taxDeductible);
}

BookResult<EntryChange> SetVoid(Book& book, std::string_view name, std::int32_t number,
                                bool isVoid) {
  auto account = book.AccountToChange(name);
  if (!account) return Unexpected{account.error()};
  ZELMAccount& a = **account;
  auto e = EntryOf(a, number);
  if (!e) return Unexpected{e.error()};
  if ((*e)->GetVoid() == isVoid) {
    return Invalid(EntryName(a, number) + (isVoid ? " is already void" : " is not void"));
  }
  auto side = OtherSideToChange(book, **e);
  if (!side) return Unexpected{side.error()};
  (*e)->SetVoid(isVoid);
  EntryChange change{
      *account, {}, {}, Sync(**e, *side, isVoid ? "was voided too" : "was unvoided too"), 0.0};
  change.entry = Describe(book, a, **e);
  change.balance = a.GetBalance();
  return change;
}

BookResult<ResolveChange> SetResolved(Book& book, std::string_view name,
                                      const std::vector<std::int32_t>& numbers, bool resolved) {
  auto account = book.AccountToChange(name);
  if (!account) return Unexpected{account.error()};
  ZELMAccount& a = **account;
  if (numbers.empty()) return Invalid("name at least one entry");
  std::vector<EntryPtr> entries;
  for (std::int32_t number : numbers) {
    auto e = EntryOf(a, number);
    if (!e) return Unexpected{e.error()};
    entries.push_back(*e);
  }
  ResolveChange change{*account, {}, {}, {}, 0.0};
  for (const auto& e : entries) {
    ((e->GetCleared() != 0) == resolved ? change.already : change.changed).push_back(e->GetNumber());
  }
  const std::vector<std::int32_t> none;
  if (auto failed = NoteResolvedMarks(book, a, resolved ? change.changed : none,
                                      resolved ? none : change.changed)) {
    return Unexpected{*failed};
  }
  for (const auto& e : entries) {
    if ((e->GetCleared() != 0) == resolved) continue;
    e->SetCleared(resolved ? 1 : 0);
    if (e->IsLinked()) {
      std::string other = "account " + std::to_string(e->GetLinkedAccount());
      if (auto linked = book.AccountWithNumber(e->GetLinkedAccount())) other = (*linked)->GetName();
      change.linked.push_back({other, e->GetLinkedEntry(), "keeps its own resolved mark"});
    }
  }
  change.resolvedBalance = a.GetResolvedBalance();
  return change;
}

}  // namespace

BookResult<EntryChange> AddEntry(Book& book, std::string_view name, const EntryFields& fields,
                                 const EntryOptions& options) {
  auto account = book.AccountToChange(name);
  if (!account) return Unexpected{account.error()};
  ZELMAccount& a = **account;
  EntryFields f = fields;
  if (!f.date) f.date = platform::Today();
  auto plan = Prepare(book, a, nullptr, f, options);
  if (!plan) return Unexpected{plan.error()};
  const ZELMAccountEntry* remembered =
      plan->remembered.empty() ? nullptr : Remembered(a, *f.toFrom, plan->debit);

  auto e = std::make_shared<ZELMAccountEntry>();
  e->SetNumber(a.NextAvailableNumber());
  if (f.resolved && *f.resolved) {
    if (auto failed = NoteResolvedMarks(book, a, {e->GetNumber()}, {})) return Unexpected{*failed};
  }
  Apply(book, *plan, f, remembered, *e);
  a.AddEntry(e);
  EntryChange change{*account, Describe(book, a, *e), plan->remembered, std::nullopt,
                     a.GetBalance()};
  return change;
}

BookResult<EntryChange> EditEntry(Book& book, std::string_view name, std::int32_t number,
                                  const EntryFields& fields, const EntryOptions& options) {
  auto account = book.AccountToChange(name);
  if (!account) return Unexpected{account.error()};
  ZELMAccount& a = **account;
  auto e = EntryOf(a, number);
  if (!e) return Unexpected{e.error()};
  EntryOptions no_memory = options;
  no_memory.noMemory = true;
  auto plan = Prepare(book, a, e->get(), fields, no_memory);
  if (!plan) return Unexpected{plan.error()};
  auto side = OtherSideToChange(book, **e);
  if (!side) return Unexpected{side.error()};
  if (fields.resolved && *fields.resolved != ((*e)->GetCleared() != 0)) {
    std::vector<std::int32_t> one{number}, none;
    if (auto failed = NoteResolvedMarks(book, a, *fields.resolved ? one : none,
                                        *fields.resolved ? none : one)) {
      return Unexpected{*failed};
    }
  }

  Apply(book, *plan, fields, nullptr, **e);
  if (*side && (*side)->account && (plan->amount || plan->splits)) {
    Exchange(**e, a, *(*side)->account);
  }
  EntryChange change{*account, {}, {}, Sync(**e, *side, "was updated to match"), a.GetBalance()};
  change.entry = Describe(book, a, **e);
  return change;
}

BookResult<EntryDetails> ShowEntry(Book& book, std::string_view name, std::int32_t number) {
  auto account = book.FindAccount(name);
  if (!account) return Unexpected{account.error()};
  auto e = EntryOf(**account, number);
  if (!e) return Unexpected{e.error()};
  return Describe(book, **account, **e);
}

BookResult<EntryChange> VoidEntry(Book& book, std::string_view name, std::int32_t number) {
  return SetVoid(book, name, number, true);
}

BookResult<EntryChange> UnvoidEntry(Book& book, std::string_view name, std::int32_t number) {
  return SetVoid(book, name, number, false);
}

BookResult<EntryChange> DeleteEntry(Book& book, std::string_view name, std::int32_t number) {
  auto account = book.AccountToChange(name);
  if (!account) return Unexpected{account.error()};
  ZELMAccount& a = **account;
  auto e = EntryOf(a, number);
  if (!e) return Unexpected{e.error()};
  auto side = OtherSideToChange(book, **e);
  if (!side) return Unexpected{side.error()};
  EntryChange change{*account, Describe(book, a, **e), {}, std::nullopt, 0.0};
  if (*side) {
    if ((*side)->entry) {
      (*side)->account->RemoveEntry((*side)->entry.get());
      change.linked = LinkedChange{(*side)->name, (*side)->entry->GetNumber(), "was deleted too"};
    } else {
      change.linked = Missing(**e, **side);
    }
  }
  a.RemoveEntry(e->get());
  change.balance = a.GetBalance();
  return change;
}

BookResult<ResolveChange> ResolveEntries(Book& book, std::string_view account,
                                         const std::vector<std::int32_t>& numbers) {
  return SetResolved(book, account, numbers, true);
}

BookResult<ResolveChange> UnresolveEntries(Book& book, std::string_view account,
                                           const std::vector<std::int32_t>& numbers) {
  return SetResolved(book, account, numbers, false);
}

std::shared_ptr<ZELMAccountEntryType> TransferType(const ZELMAccount& account, bool debit) {
  return TypeNamed(account, "Transfer", debit);
}

BookResult<double> AmountReceived(const ZELMAccount& a, const ZELMAccount& b, double amount,
                                  std::optional<double> toAmount) {
  const auto positive = [](double x) { return std::isfinite(x) && x > 0 && x <= kLargestAmount; };
  if (!positive(amount) || RoundAmount(amount) == 0.0) {
    return Invalid("a transfer's amount must be more than 0");
  }
  const bool exchange = a.currency() != b.currency();
  if (toAmount) {
    if (!exchange) {
      return Invalid(Quote(a.GetName()) + " and " + Quote(b.GetName()) +
                     " use the same currency: the amount received is the amount sent");
    }
    if (!positive(*toAmount) || RoundAmount(*toAmount) == 0.0) {
      return Invalid("the amount received must be more than 0");
    }
    return RoundAmount(*toAmount);
  }
  if (!exchange) return RoundAmount(amount);
  const double received = RoundAmount(a.currency()->convertAmount(amount, b.currency().get()));
  if (!std::isfinite(received) || received <= 0 || received > kLargestAmount) {
    return Invalid("the currencies' rates give no amount to receive; give it");
  }
  return received;
}

std::shared_ptr<ZELMAccountEntry> LinkTransfer(ZELMAccount& b, ZELMAccountEntry& debit,
                                               double received) {
  auto deposit = std::make_shared<ZELMAccountEntry>();
  if (auto t = TransferType(b, false)) deposit->SetType(t->GetNumber());
  deposit->SetNumber(b.NextAvailableNumber());
  b.AddEntry(deposit);
  const ZELMAccount* a = debit.GetAccount();
  const bool exchange = a == nullptr || a->currency() != b.currency();
  debit.SetIsLinked(true);
  debit.SetLinkedEntry(deposit->GetNumber());
  debit.SetLinkedAccount(b.GetNumber());
  debit.SetLinkedExchangedAmount(exchange ? -received : 0.0);
  debit.syncToEntry(*deposit);
  return deposit;
}

BookResult<TransferChange> Transfer(Book& book, const TransferRequest& r) {
  auto from = book.AccountToChange(r.from);
  if (!from) return Unexpected{from.error()};
  auto to = book.AccountToChange(r.to);
  if (!to) return Unexpected{to.error()};
  ZELMAccount& a = **from;
  ZELMAccount& b = **to;
  if (&a == &b) return Invalid("a transfer needs two different accounts");
  auto received = AmountReceived(a, b, r.amount, r.toAmount);
  if (!received) return Unexpected{received.error()};
  const std::int32_t date = r.date.value_or(platform::Today());
  if (date <= 0) return Invalid("the date must be a day");

  auto debit = std::make_shared<ZELMAccountEntry>();
  debit->SetDate(date);
  debit->SetAmount(-r.amount);
  debit->SetIsDebit(true);
  debit->SetDescription(r.description);
  debit->SetToFrom(b.GetName());
  if (auto t = TransferType(a, true)) debit->SetType(t->GetNumber());
  debit->SetNumber(a.NextAvailableNumber());
  a.AddEntry(debit);
  auto deposit = LinkTransfer(b, *debit, *received);
  return TransferChange{
      *from,          *to,           Describe(book, a, *debit), Describe(book, b, *deposit),
      a.GetBalance(), b.GetBalance()};
}

std::optional<BookError> ApplyToTemplate(Book& book, const ZELMAccount& account,
                                         ZELMAccountEntry& target, bool adding,
                                         const EntryFields& fields, const std::string& name,
                                         bool newCategory) {
  EntryOptions options;
  options.newCategory = newCategory;
  options.noMemory = true;
  options.allowDuplicateCheck = true;
  auto plan = Prepare(book, account, adding ? nullptr : &target, fields, options, name);
  if (!plan) return plan.error();
  Apply(book, *plan, fields, nullptr, target);
  target.SetCheckNumber(-1);
  return std::nullopt;
}

BookResult<SuggestionList> Suggestions(Book& book, std::string_view name, std::string_view which,
                                       std::string_view prefix) {
  auto account = book.FindAccount(name);
  if (!account) return Unexpected{account.error()};
  const ZELMAccount& a = **account;
  std::vector<std::optional<ZELMAccount::StringList>> lists;
  if (which == "to") {
    lists.push_back(a.GetPreferredTos());
  } else if (which == "from") {
    lists.push_back(a.GetPreferredFroms());
  } else if (which == "description") {
    lists.push_back(a.GetPreferredDebitDescriptions());
    lists.push_back(a.GetPreferredDepositDescriptions());
  } else {
    return Invalid("suggestions are for to, from or description, not " + Quote(which));
  }
  SuggestionList result{*account, std::string(which), {}};
  for (const auto& list : lists) {
    if (!list) continue;
    for (const auto& text : *list) {
      if (!platform::CaseInsensitiveHasPrefix(text, prefix)) continue;
      const bool seen = std::any_of(result.texts.begin(), result.texts.end(), [&](const auto& t) {
        return platform::CaseInsensitiveEqual(t, text);
      });
      if (!seen) result.texts.push_back(text);
    }
  }
  return result;
}

}  // namespace folvant

namespace folvant {

std::shared_ptr<ZELMAccountEntryCategory> CategoryNamed(const Book& book,
                                                        std::string_view fullName) {
  return FindCategory(book, fullName);
}

std::int32_t MakeCategoryNamed(Book& book, const std::string& fullName) {
  return MakeCategory(book, CategoryRef{-1, fullName});
}

std::shared_ptr<ZELMAccountEntryType> AccountTypeNamed(const ZELMAccount& account,
                                                       std::string_view name, bool debit) {
  return TypeNamed(account, name, debit);
}

}  // namespace folvant
