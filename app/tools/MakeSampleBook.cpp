// Writes the sample book of data/sample-book: three accounts, a category tree and a year of
// realistic entries (paychecks, rent checks, groceries, a split, transfers between checking
// and savings, a voided check, and entries resolved against past statements). Rent, salary,
// the quarterly water bill and the yearly life-insurance premium are schedules of the checking
// account whose occurrences were entered up to mid-June 2026, so on 2026-06-30 the latest
// paycheck and water bill are due. The output is the same on every run, so the committed book
// can be regenerated and compared.
//
//   folvant_make_sample DIR
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <map>
#include <string>

#include "folvant/book/Book.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountEntryType.h"
#include "folvant/model/ZELMAccountSchedule.h"
#include "folvant/model/ZELMAccountScheduleCalendar.h"
#include "folvant/platform/Clock.h"
#include "folvant/values/LVCurrency.h"

namespace folvant::app {
namespace {

using namespace std::chrono;

// A small deterministic generator, so the book is the same on every run.
class Random {
 public:
  std::uint32_t Next() {
    state_ = state_ * 1664525u + 1013904223u;
    return state_ >> 8;
  }
  double Amount(double low, double high) {
    return low + (high - low) * static_cast<double>(Next() % 10000) / 10000.0;
  }
  template <typename T, std::size_t N>
  const T& Pick(const T (&items)[N]) {
    return items[Next() % N];
  }

 private:
  std::uint32_t state_ = 20260630u;
};

std::int32_t ToNumber(sys_days day) {
  const year_month_day ymd{day};
  return static_cast<int>(ymd.year()) * 10000 + static_cast<int>(unsigned(ymd.month())) * 100 +
         static_cast<int>(unsigned(ymd.day()));
}

class SampleWriter {
 public:
  SampleWriter(Book& book) : book_(book) {}

  void Categories() {
    const std::map<std::string, std::vector<std::string>> tree = {
        {"Auto", {"Fuel", "Insurance", "Repairs"}},  {"Food", {"Dining", "Groceries"}},
        {"Health", {"Doctor", "Pharmacy"}},          {"Housing", {"Rent", "Utilities"}},
        {"Income", {"Gifts", "Interest", "Salary"}}, {"Insurance", {"Life"}},
        {"Leisure", {"Books", "Movies", "Travel"}},  {"Savings", {}},
    };
    for (const auto& [name, children] : tree) {
      auto parent = book_.AddCategory(name, nullptr);
      categories_[name] = parent->number();
      for (const auto& child : children) {
        categories_[name + ":" + child] = book_.AddCategory(child, parent.get())->number();
      }
    }
    auto utilities = book_.categoryWithNumber(categories_["Housing:Utilities"]);
    for (const char* leaf : {"Electric", "Internet", "Water"}) {
      categories_[std::string("Housing:Utilities:") + leaf] =
          book_.AddCategory(leaf, utilities.get())->number();
    }
  }

  std::shared_ptr<ZELMAccountEntry> Add(ZELMAccount& account, sys_days day, double amount,
                                        const std::string& type, const std::string& category,
                                        const std::string& to_from,
                                        const std::string& description) {
    auto entry = std::make_shared<ZELMAccountEntry>();
    entry->SetNumber(account.NextAvailableNumber());
    entry->SetDate(ToNumber(day));
    if (amount < 0) {
      entry->SetIsDebit(true);
      if (auto t = account.debitEntryTypeForName(type)) entry->SetType(t->GetNumber());
    } else {
      entry->SetIsDeposit(true);
      if (auto t = account.depositEntryTypeForName(type)) entry->SetType(t->GetNumber());
    }
    if (type == "Check") {
      entry->SetIsCheck(true);
      entry->SetCheckNumber(account.NextAvailableCheckNumber());
    }
    if (!category.empty()) entry->SetCategory(categories_.at(category));
    entry->SetAmount(amount);
    entry->SetToFrom(to_from);
    entry->SetDescription(description);
    // Everything up to the last statement (the end of April) is resolved.
    entry->SetCleared(day <= sys_days{2026y / April / 30} ? 1 : 0);
    account.AddEntry(entry);
    return entry;
  }

  // A schedule of the account, numbered and added to it.
  std::shared_ptr<ZELMAccountSchedule> Schedule(ZELMAccount& account, sys_days start,
                                                std::int32_t kind, double amount,
                                                const std::string& type,
                                                const std::string& category,
                                                const std::string& to_from,
                                                const std::string& description) {
    auto schedule = std::make_shared<ZELMAccountSchedule>();
    schedule->SetNumber(account.NextAvailableScheduleNumber());
    schedule->SetDate(ToNumber(start));
    schedule->SetRepeatIntervalType(kind);
    std::shared_ptr<ZELMAccountEntryType> t;
    if (amount < 0) {
      schedule->SetIsDebit(true);
      t = account.debitEntryTypeForName(type);
    } else {
      schedule->SetIsDeposit(true);
      t = account.depositEntryTypeForName(type);
    }
    if (t) {
      schedule->SetType(t->GetNumber());
      schedule->SetIsCheck(t->GetIsCheck());
    }
    schedule->SetCategory(categories_.at(category));
    schedule->SetAmount(amount);
    schedule->SetToFrom(to_from);
    schedule->SetDescription(description);
    account.AddSchedule(schedule);
    return schedule;
  }

  // Enters what the schedule has due by `day`, as the user does when the program reminds them.
  void EnterDue(ZELMAccount& account, ZELMAccountSchedule& schedule, sys_days day) {
    for (const auto& entry : schedule.EvaluateForDate(local_days{day.time_since_epoch()})) {
      entry->SetNumber(account.NextAvailableNumber());
      if (entry->IsCheck()) entry->SetCheckNumber(account.NextAvailableCheckNumber());
      entry->SetCleared(entry->GetDate() <= 20260430 ? 1 : 0);
      account.AddEntry(entry);
      schedule.CommitEntry(entry.get());
    }
  }

  void Transfer(ZELMAccount& from, ZELMAccount& to, sys_days day, double amount,
                const std::string& description) {
    auto sent = Add(from, day, -amount, "Transfer", "Savings", to.GetName(), description);
    auto received = std::make_shared<ZELMAccountEntry>();
    received->SetNumber(to.NextAvailableNumber());
    if (auto t = to.depositEntryTypeForName("Transfer")) received->SetType(t->GetNumber());
    received->SetCleared(sent->GetCleared());
    to.AddEntry(received);
    sent->SetIsLinked(true);
    sent->SetLinkedAccount(to.GetNumber());
    sent->SetLinkedEntry(received->GetNumber());
    sent->syncToEntry(*received);
  }

  void Year(ZELMAccount& checking, ZELMAccount& savings, ZELMAccount& euro) {
    Random random;
    const sys_days first{2025y / July / 1}, last{2026y / June / 30};
    const char* grocers[] = {"Green Valley Market", "Trader Joe's", "Safeway", "Farmers Market"};
    const char* restaurants[] = {"Luigi's Trattoria", "Pho Saigon", "The Corner Diner",
                                 "Blue Bottle Coffee"};
    const char* stations[] = {"Shell", "Chevron", "Costco Gas"};
    auto rent = Schedule(checking, first, schedule::kRepeatMonthly, -1650.00, "Check",
                         "Housing:Rent", "Oakwood Properties", "Monthly rent");
    auto salary =
        Schedule(checking, sys_days{2025y / July / 4}, schedule::kRepeatEveryTwoWeeks, 2480.16,
                 "Direct Deposit", "Income:Salary", "Acme Widgets Inc.", "Paycheck");
    // The 28th falls on a weekend now and then; the bill is then paid on the Friday before.
    auto water = Schedule(checking, sys_days{2025y / September / 28}, schedule::kRepeatQuarterly,
                          -38.40, "Check", "Housing:Utilities:Water", "County Water District",
                          "Quarterly water bill");
    water->SetUsePrecedingFriday(true);
    water->SetRepeatUntilType(schedule::kUntilDate);
    water->SetRepeatUntil(20271231);
    auto premium = Schedule(checking, sys_days{2026y / February / 15}, schedule::kRepeatYearly,
                            -612.00, "Check", "Insurance:Life", "Evergreen Life", "Annual premium");
    premium->SetRepeatUntilType(schedule::kUntilCount);
    premium->SetRepeatUntil(10);
    // The scheduled occurrences were last entered on this day.
    const sys_days entered_until{2026y / June / 15};
    for (sys_days day = first; day <= last; day += days{1}) {
      const year_month_day ymd{day};
      const weekday wd{day};
      const unsigned dom = unsigned(ymd.day());
      if (day <= entered_until) {
        for (const auto& schedule : {salary, rent, water, premium}) {
          EnterDue(checking, *schedule, day);
        }
      }
      if (dom == 12) {
        Add(checking, day, -std::round(random.Amount(45, 140) * 100) / 100, "Online Payment",
            "Housing:Utilities:Electric", "City Power & Light", "Electric bill");
        Add(checking, day, -69.99, "Automatic Draft", "Housing:Utilities:Internet", "FiberNet",
            "Internet");
      }
      if (dom == 20) Transfer(checking, savings, day, 400.00, "Monthly savings");
      if (wd == Saturday) {
        Add(checking, day, -random.Amount(60, 180), "Debit Card", "Food:Groceries",
            random.Pick(grocers), "Groceries");
      }
      if (wd == Friday && random.Next() % 3 != 0) {
        Add(checking, day, -random.Amount(18, 75), "Debit Card", "Food:Dining",
            random.Pick(restaurants), "Dinner out");
      }
      if (wd == Tuesday && random.Next() % 2 == 0) {
        Add(checking, day, -random.Amount(35, 62), "Debit Card", "Auto:Fuel", random.Pick(stations),
            "Fuel");
      }
      if (dom == 28)
        Add(savings, day, random.Amount(8, 12), "Deposit", "Income:Interest", "Harbor Savings Bank",
            "Interest");
      if (dom == 5 && unsigned(ymd.month()) % 2 == 1) {
        Add(euro, day, -random.Amount(40, 120), "Debit Card", "Leisure:Travel", "Deutsche Bahn",
            "Train tickets");
      }
    }
    // A warehouse-store trip split among three categories.
    auto split = Add(checking, sys_days{2026y / March / 14}, 0.0, "Debit Card", "", "Costco",
                     "Warehouse run");
    split->addSplitLineItemWithCategory(categories_["Food:Groceries"], "Food", "", -182.45);
    split->addSplitLineItemWithCategory(categories_["Health:Pharmacy"], "Vitamins", "", -24.99);
    split->addSplitLineItemWithCategory(categories_["Leisure:Books"], "Cookbook", "", -19.99);
    // A check written by mistake and voided.
    auto voided = Add(checking, sys_days{2026y / May / 2}, -250.00, "Check", "Auto:Repairs",
                      "Midas", "Brake pads (voided: paid by card)");
    voided->SetVoid(true);
    Add(checking, sys_days{2026y / May / 2}, -250.00, "Debit Card", "Auto:Repairs", "Midas",
        "Brake pads");
    Add(checking, sys_days{2025y / December / 20}, 150.00, "Deposit", "Income:Gifts",
        "Grandma Rose", "Holiday gift");
    Add(euro, sys_days{2025y / August / 10}, 500.00, "Deposit", "Income:Gifts", "Tante Ilse",
        "Birthday gift");
  }

 private:
  Book& book_;
  std::map<std::string, std::int32_t> categories_;
};

int Main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: folvant_make_sample DIR\n";
    return 2;
  }
  platform::PinClock(local_days{2026y / June / 30} + hours{12});
  auto created = Book::Create(argv[1]);
  if (!created) {
    std::cerr << "folvant_make_sample: " << created.error().message << '\n';
    return 1;
  }
  Book* book = created->get();
  book->setWriteStyle(plist::Format::kXml, /*records=*/false);
  book->currencies().push_back(
      std::make_shared<LVCurrency>("EUR", "Euro", "€", false, ".", ",", 1.08, 20260630));
  SampleWriter writer(*book);
  writer.Categories();
  auto checking = *book->AddAccount("Checking");
  checking->SetStartingBalance(2450.00);
  checking->SetStartingCheckNumber(1001);
  auto savings = *book->AddAccount("Savings");
  savings->SetStartingBalance(10000.00);
  auto euro = *book->AddAccount("Euro Travel");
  euro->setCurrency(book->currencyWithCode("EUR"));
  euro->SetStartingBalance(1200.00);
  writer.Year(*checking, *savings, *euro);
  book->BookChanged();
  if (auto failed = book->Save()) {
    std::cerr << "folvant_make_sample: " << failed->message << '\n';
    return 1;
  }
  // The sample ships without the backups that saving keeps.
  for (const auto& file : std::filesystem::recursive_directory_iterator(argv[1])) {
    if (file.path().extension() == ".bak" || file.path().filename() == Book::kLockFileName) {
      std::filesystem::remove(file.path());
    }
  }
  return 0;
}

}  // namespace
}  // namespace folvant::app

int main(int argc, char** argv) { return folvant::app::Main(argc, argv); }
