// Writes a book for timing the command-line program, and the same register as a ledger journal
// for timing `ledger` beside it. The book holds a "Checking" account of N generated entries
// (ten years of dates in order, about fifty payees, a small category tree, mostly debits with a
// check now and then, paychecks and other deposits, everything but the latest months resolved)
// an empty "Savings" account and a "Visa Card" account of 100 entries. The journal has one transaction per entry: the amount on
// Assets:Checking, balanced by Expenses:<category> or Income:<category>, the check number as
// the transaction code, a resolved entry marked cleared, and an opening-balance transaction
// for the account's starting balance. The output is the same on every run.
//
//   make_cli_book DIR N JOURNAL      DIR must not hold a book yet
#include <chrono>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "bench/BenchRandom.h"
#include "folvant/book/Book.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountEntryType.h"

namespace {

using bench::Random;
using folvant::Book;
using folvant::ZELMAccount;
using folvant::ZELMAccountEntry;
using namespace std::chrono;

constexpr std::int64_t kStartingBalanceCents = 250000;
constexpr sys_days kFirstDay{2016y / January / 1};
constexpr sys_days kLastDay{2025y / December / 31};

// What a debit may be: its payees, descriptions, category and amount range in dollars.
struct Spending {
  const char* category;  // full name in the book's tree
  std::vector<const char*> payees;
  std::vector<const char*> descriptions;
  std::int64_t low, high;
  std::uint32_t weight;
  bool byCheck;  // usually paid by check
};

const std::vector<Spending>& Spendings() {
  static const std::vector<Spending> kSpendings = {
      {"Food:Groceries",
       {"Green Valley Market", "Trader Joe's", "Safeway", "Farmers Market", "Whole Foods", "Aldi",
        "Kroger", "Corner Grocery"},
       {"Groceries", "Weekly shopping", "Produce", "Snacks for the party"},
       12,
       220,
       30,
       false},
      {"Food:Dining",
       {"Luigi's Trattoria", "Pho Saigon", "The Corner Diner", "Blue Bottle Coffee",
        "Taqueria El Sol", "Sushi Kaito", "Burger Barn", "Café Müller"},
       {"Dinner out", "Lunch", "Coffee", "Takeout"},
       4,
       90,
       22,
       false},
      {"Auto:Fuel",
       {"Shell", "Chevron", "Costco Gas", "Exxon", "BP"},
       {"Fuel", "Gas fill-up"},
       25,
       70,
       12,
       false},
      {"Auto:Repairs",
       {"Midas", "Jiffy Lube", "Tire Kingdom", "Dealer Service Center"},
       {"Oil change", "Brake pads", "New tires", "Inspection"},
       40,
       900,
       2,
       true},
      {"Housing:Rent", {"Oakwood Properties"}, {"Monthly rent"}, 1400, 1900, 3, true},
      {"Housing:Utilities",
       {"City Power & Light", "County Water District", "FiberNet", "Metro Gas Co.",
        "Mobile Phone Co."},
       {"Electric bill", "Water bill", "Internet", "Gas bill", "Phone bill"},
       30,
       180,
       8,
       true},
      {"Health",
       {"CVS Pharmacy", "Dr. Patel", "City Dental", "Vision Center"},
       {"Prescription", "Office visit", "Cleaning", "Glasses"},
       10,
       400,
       5,
       true},
      {"Leisure:Books",
       {"Bookshop on Main", "Half Price Books", "Comic Vault"},
       {"Books", "Magazine subscription", "Gift book"},
       8,
       80,
       4,
       false},
      {"Leisure:Travel",
       {"Delta Air Lines", "Amtrak", "Hilton Garden Inn", "Hertz", "Deutsche Bahn"},
       {"Flights", "Train tickets", "Hotel", "Rental car"},
       60,
       1200,
       2,
       false},
      {"Gifts",
       {"Target", "Etsy", "Flower Shop", "Toy Emporium"},
       {"Birthday present", "Holiday gifts", "Flowers"},
       15,
       200,
       4,
       false},
      {"Insurance",
       {"Evergreen Life", "State Farm", "Allstate"},
       {"Life premium", "Auto insurance", "Renters insurance"},
       40,
       700,
       2,
       true},
  };
  return kSpendings;
}

struct Earning {
  const char* category;
  std::vector<const char*> payers;
  std::vector<const char*> descriptions;
  std::int64_t low, high;
  std::uint32_t weight;
};

const std::vector<Earning>& Earnings() {
  static const std::vector<Earning> kEarnings = {
      {"Income:Salary", {"Acme Widgets Inc.", "Globex Corp."}, {"Paycheck"}, 2100, 2900, 10},
      {"Income:Interest", {"Harbor Savings Bank"}, {"Interest"}, 1, 30, 2},
      {"Income:Gifts",
       {"Grandma Rose", "Uncle Ted", "Tante Ilse"},
       {"Gift", "Birthday gift"},
       20,
       300,
       1},
      {"Income:Refunds",
       {"Amazon", "Best Buy", "IRS"},
       {"Refund", "Tax refund", "Return"},
       5,
       600,
       1},
  };
  return kEarnings;
}

template <typename T>
const T& PickWeighted(const std::vector<T>& items, Random& random) {
  std::uint32_t total = 0;
  for (const T& item : items) total += item.weight;
  std::uint32_t at = random.Below(total);
  for (const T& item : items) {
    if (at < item.weight) return item;
    at -= item.weight;
  }
  return items.back();
}

template <typename T>
T Pick(const std::vector<T>& items, Random& random) {
  return items[random.Below(static_cast<std::uint32_t>(items.size()))];
}

// Adds a category by its full name, parents first, and returns its number.
std::int32_t AddCategory(Book& book, std::string_view fullName) {
  folvant::ZELMAccountEntryCategory* parent = nullptr;
  std::shared_ptr<folvant::ZELMAccountEntryCategory> category;
  std::size_t start = 0;
  while (start <= fullName.size()) {
    std::size_t colon = fullName.find(':', start);
    if (colon == std::string_view::npos) colon = fullName.size();
    const std::string name(fullName.substr(start, colon - start));
    const auto& siblings = parent != nullptr ? parent->children() : book.categories();
    category = nullptr;
    for (const auto& sibling : siblings) {
      if (sibling->name() == name) category = sibling;
    }
    if (category == nullptr) category = book.AddCategory(name, parent);
    parent = category.get();
    start = colon + 1;
  }
  return category->number();
}

// "$-12.34" for -1234.
void AppendDollars(std::string& out, std::int64_t cents) {
  char text[32];
  const std::int64_t magnitude = cents < 0 ? -cents : cents;
  std::snprintf(text, sizeof text, "$%s%" PRId64 ".%02" PRId64, cents < 0 ? "-" : "",
                magnitude / 100, magnitude % 100);
  out += text;
}

std::int32_t DateNumber(sys_days day) {
  const year_month_day ymd{day};
  return static_cast<int>(ymd.year()) * 10000 + static_cast<int>(unsigned(ymd.month())) * 100 +
         static_cast<int>(unsigned(ymd.day()));
}

int Fail(const std::string& message) {
  std::cerr << "make_cli_book: " << message << '\n';
  return 1;
}

int Main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: make_cli_book DIR N JOURNAL\n";
    return 2;
  }
  char* end = nullptr;
  const long long parsed = std::strtoll(argv[2], &end, 10);
  if (*argv[2] == '\0' || *end != '\0' || parsed < 0 || parsed > 100'000'000) {
    std::cerr << "make_cli_book: N must be a number of entries from 0 to 100000000\n";
    return 2;
  }
  const auto count = static_cast<std::size_t>(parsed);

  auto created = Book::Create(argv[1]);
  if (!created) return Fail(created.error().message);
  Book& book = **created;

  std::vector<std::int32_t> spendingCategory, earningCategory;
  for (const Spending& spending : Spendings()) {
    spendingCategory.push_back(AddCategory(book, spending.category));
  }
  for (const Earning& earning : Earnings()) {
    earningCategory.push_back(AddCategory(book, earning.category));
  }
  book.BookChanged();

  auto checking = book.AddAccount("Checking");
  if (!checking) return Fail(checking.error().message);
  ZELMAccount& account = **checking;
  account.SetStartingBalance(static_cast<double>(kStartingBalanceCents) / 100.0);
  account.SetStartingCheckNumber(1001);
  auto savings = book.AddAccount("Savings");
  if (!savings) return Fail(savings.error().message);
  // A small credit card account: the big register's commands must not pay for it, nor it for them.
  auto card = book.AddAccount("Visa Card");
  if (!card) return Fail(card.error().message);
  for (int i = 0; i < 100; ++i) {
    auto charge = std::make_shared<ZELMAccountEntry>();
    charge->SetNumber((*card)->NextAvailableNumber());
    charge->SetDate(DateNumber(kLastDay - days{100 - i}));
    charge->SetIsDebit(true);
    charge->SetAmount(-12.5 - i);
    charge->SetToFrom("Card Shop");
    charge->SetCleared(i < 80 ? 1 : 0);
    (*card)->AddEntry(charge);
  }

  auto typeNumber = [&](bool deposit, std::string_view name) {
    auto type =
        deposit ? account.depositEntryTypeForName(name) : account.debitEntryTypeForName(name);
    return type != nullptr ? type->GetNumber() : 0;
  };
  const std::int32_t debitTypes[] = {
      typeNumber(false, "Debit Card"), typeNumber(false, "Online Payment"),
      typeNumber(false, "Automatic Draft"), typeNumber(false, "ATM")};
  const std::int32_t checkType = typeNumber(false, "Check");
  const std::int32_t depositType = typeNumber(true, "Deposit");
  const std::int32_t directDepositType = typeNumber(true, "Direct Deposit");

  std::FILE* journal = std::fopen(argv[3], "wb");
  if (journal == nullptr) return Fail(std::string("cannot write ") + argv[3]);
  std::string out;
  out.reserve(1 << 20);
  auto flush = [&] {
    std::fwrite(out.data(), 1, out.size(), journal);
    out.clear();
  };
  out += "; The register of the generated book's Checking account.\n\n";
  out += "2015/12/31 * Opening Balance\n    Assets:Checking  ";
  AppendDollars(out, kStartingBalanceCents);
  out += "\n    Equity:Opening Balances\n\n";

  Random random(20160101u);
  const auto spanDays = static_cast<std::size_t>((kLastDay - kFirstDay).count() + 1);
  // Entries of the last 60 days are not yet on a statement.
  const sys_days resolvedUntil = kLastDay - days{60};
  std::int32_t checkNumber = 1001;
  sys_days day = kFirstDay;
  std::int32_t dateNumber = DateNumber(day);
  char dateText[16];
  std::snprintf(dateText, sizeof dateText, "%04d/%02d/%02d", dateNumber / 10000,
                dateNumber / 100 % 100, dateNumber % 100);
  for (std::size_t i = 0; i < count; ++i) {
    const sys_days entryDay =
        kFirstDay + days{static_cast<std::int64_t>(i * spanDays / (count == 0 ? 1 : count))};
    if (entryDay != day) {
      day = entryDay;
      dateNumber = DateNumber(day);
      std::snprintf(dateText, sizeof dateText, "%04d/%02d/%02d", dateNumber / 10000,
                    dateNumber / 100 % 100, dateNumber % 100);
    }
    auto entry = std::make_shared<ZELMAccountEntry>();
    entry->SetNumber(account.NextAvailableNumber());
    entry->SetDate(dateNumber);
    const bool deposit = random.Below(8) == 0;
    std::int64_t cents = 0;
    const char* payee = nullptr;
    const char* description = nullptr;
    const char* category = nullptr;
    std::int32_t check = 0;
    if (deposit) {
      const Earning& earning = PickWeighted(Earnings(), random);
      cents = random.Cents(earning.low, earning.high);
      payee = Pick(earning.payers, random);
      description = Pick(earning.descriptions, random);
      category = earning.category;
      entry->SetIsDeposit(true);
      entry->SetType(earning.category == std::string_view("Income:Salary") ? directDepositType
                                                                           : depositType);
      entry->SetCategory(earningCategory[static_cast<std::size_t>(&earning - Earnings().data())]);
    } else {
      const Spending& spending = PickWeighted(Spendings(), random);
      cents = -random.Cents(spending.low, spending.high);
      payee = Pick(spending.payees, random);
      description = Pick(spending.descriptions, random);
      category = spending.category;
      entry->SetIsDebit(true);
      if (random.Below(spending.byCheck ? 4 : 40) < (spending.byCheck ? 3u : 1u)) {
        check = checkNumber++;
        entry->SetIsCheck(true);
        entry->SetCheckNumber(check);
        entry->SetType(checkType);
      } else {
        entry->SetType(debitTypes[random.Below(4)]);
      }
      entry->SetCategory(
          spendingCategory[static_cast<std::size_t>(&spending - Spendings().data())]);
    }
    entry->SetAmount(static_cast<double>(cents) / 100.0);
    entry->SetToFrom(payee);
    entry->SetDescription(description);
    const bool resolved = day <= resolvedUntil || random.Below(4) == 0;
    entry->SetCleared(resolved ? 1 : 0);
    account.AddEntry(entry);

    out += dateText;
    out += resolved ? " * " : " ";
    if (check != 0) {
      out += '(';
      out += std::to_string(check);
      out += ") ";
    }
    out += payee;
    out += "\n    ; ";
    out += description;
    out += "\n    Assets:Checking  ";
    AppendDollars(out, cents);
    out += deposit ? "\n    " : "\n    Expenses:";
    out += category;
    out += "\n\n";
    if (out.size() > (1 << 20) - 4096) flush();
  }
  flush();
  const bool unwritten = std::ferror(journal) != 0;
  if (std::fclose(journal) != 0 || unwritten) return Fail(std::string("cannot write ") + argv[3]);

  if (auto failed = book.Save()) return Fail(failed->message);
  return 0;
}

}  // namespace

int main(int argc, char** argv) { return Main(argc, argv); }
