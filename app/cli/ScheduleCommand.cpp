#include <algorithm>
#include <cctype>
#include <charconv>
#include <functional>
#include <iomanip>
#include <ostream>
#include <sstream>

#include "folvant/book/Book.h"
#include "folvant/book/Names.h"
#include "app/cli/BookAccess.h"
#include "app/cli/Options.h"
#include "app/cli/TextOutput.h"
#include "app/cli/Commands.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountEntryType.h"
#include "folvant/model/ZELMAccountSchedule.h"
#include "folvant/model/ZELMAccountScheduleCalendar.h"
#include "folvant/platform/Clock.h"
#include "folvant/platform/Text.h"
#include "folvant/values/LVCurrency.h"

namespace folvant::app {
namespace {

namespace sc = schedule;

constexpr const char* kWeekdays[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                     "Thursday", "Friday", "Saturday"};
constexpr const char* kMonths[] = {"January",   "February", "March",    "April",
                                   "May",       "June",     "July",     "August",
                                   "September", "October",  "November", "December"};

sc::CivilDate Civil(std::int32_t date) { return sc::CivilFromDay(sc::DayFromDateNumber(date)); }

// "every 2 weeks", "every month": the step, with the count only when it is not 1.
std::string Every(std::int32_t n, const char* unit) {
  if (n == 1) return std::string("every ") + unit;
  return "every " + std::to_string(n) + " " + unit + "s";
}

// The recurrence of a schedule in words, e.g. "every 2 weeks on Friday".
std::string RecurrenceInWords(const ZELMAccountSchedule& s) {
  const std::int32_t start = s.GetDate();
  const sc::CivilDate civil = Civil(start);
  const std::string weekday = kWeekdays[sc::Weekday(sc::DayFromDateNumber(start))];
  const std::string day_of_month = "on day " + std::to_string(civil.day);
  const std::string day_of_year =
      "on " + std::to_string(civil.day) + " " + kMonths[(civil.month - 1) % 12];
  const std::int32_t n = s.GetRepeatInterval();
  switch (s.GetRepeatIntervalType()) {
    case sc::kRepeatOnce:
      return "once on " + FormatDateNumber(start);
    case sc::kRepeatDaily:
      return "every day";
    case sc::kRepeatWeekly:
      return "every week on " + weekday;
    case sc::kRepeatEveryTwoWeeks:
      return "every 2 weeks on " + weekday;
    case sc::kRepeatMonthly:
      return "every month " + day_of_month;
    case sc::kRepeatYearly:
      return "every year " + day_of_year;
    case sc::kRepeatLastDayOfMonth:
      return "every month on its last day";
    case sc::kRepeatQuarterly:
      return "every 3 months " + day_of_month;
    case sc::kRepeatLastDayOfQuarter:
      return "every quarter on its last day";
    case sc::kRepeatEveryNDays:
      return Every(n, "day");
    case sc::kRepeatEveryNWeeks:
      return Every(n, "week") + " on " + weekday;
    case sc::kRepeatEveryNMonths:
      return Every(n, "month") + " " + day_of_month;
    case sc::kRepeatEveryNYears:
      return Every(n, "year") + " " + day_of_year;
    case sc::kRepeatEveryNQuarters:
      return Every(n, "quarter") + " " + day_of_month;
    default:
      return "never (unknown recurrence " + std::to_string(s.GetRepeatIntervalType()) + ")";
  }
}

std::string EndInWords(const ZELMAccountSchedule& s) {
  switch (s.GetRepeatUntilType()) {
    case sc::kUntilForever:
      return "forever";
    case sc::kUntilCount:
      return std::to_string(s.GetRepeatUntil()) + (s.GetRepeatUntil() == 1 ? " time" : " times");
    case sc::kUntilDate:
      return "until " + FormatDateNumber(s.GetRepeatUntil());
    default:
      return "never (unknown end rule " + std::to_string(s.GetRepeatUntilType()) + ")";
  }
}

// The whole rule: "every month on day 1, forever, weekends to the Friday before".
std::string RuleInWords(const ZELMAccountSchedule& s) {
  std::string words = RecurrenceInWords(s);
  if (s.GetRepeatIntervalType() != sc::kRepeatOnce) words += ", " + EndInWords(s);
  if (s.GetUsePrecedingFriday()) words += ", weekends to the Friday before";
  return words;
}

std::string NextInWords(std::int32_t next) { return next < 0 ? "-" : FormatDateNumber(next); }

platform::LocalTime LocalDay(std::int32_t date) {
  return sc::LocalTimeFromDay(sc::DayFromDateNumber(date));
}

// --date, else today.
bool DateOption(Context& context, const std::string& text, std::int32_t& date) {
  if (text.empty()) {
    date = platform::Today();
    return true;
  }
  if (ParseDateNumber(text, date)) return true;
  Fail(context, "--date: \"" + text + "\" is not a date (YYYY-MM-DD)");
  return false;
}

// ---- schedule list ----

int ListSchedules(Context& context, const std::string& account_name, bool json) {
  std::unique_ptr<Book> book;
  auto account = OpenAccount(context, book, account_name);
  if (!account) return 1;
  std::vector<std::shared_ptr<ZELMAccountSchedule>> schedules = account->GetSchedules();
  std::stable_sort(schedules.begin(), schedules.end(), [](const auto& a, const auto& b) {
    return a->NextEntryDateIsGreaterThan(*b) < 0;
  });
  auto& out = context.out;
  if (json) {
    out << "{\n  \"account\": " << JsonString(account->GetName()) << ",\n  \"schedules\": [";
    bool first = true;
    for (const auto& s : schedules) {
      const std::int32_t next = s->NextEntryDate();
      out << (first ? "\n" : ",\n") << "    {\"number\": " << s->GetNumber()
          << ", \"start\": " << JsonString(FormatDateNumber(s->GetDate()))
          << ", \"next\": " << (next < 0 ? "null" : JsonString(FormatDateNumber(next)))
          << ", \"rule\": " << JsonString(RuleInWords(*s))
          << ", \"repeatIntervalType\": " << s->GetRepeatIntervalType()
          << ", \"repeatInterval\": " << s->GetRepeatInterval()
          << ", \"repeatUntilType\": " << s->GetRepeatUntilType()
          << ", \"repeatUntil\": " << s->GetRepeatUntil()
          << ", \"usePrecedingFriday\": " << (s->GetUsePrecedingFriday() ? "true" : "false")
          << ", \"committed\": " << s->GetCommittedDates().size()
          << ", \"check\": " << (s->IsCheck() ? "true" : "false")
          << ", \"type\": " << JsonString(EntryTypeName(*account, *s))
          << ", \"category\": " << JsonString(EntryCategoryName(*account, *s))
          << ", \"toFrom\": " << JsonString(s->GetToFrom())
          << ", \"description\": " << JsonString(s->GetDescription())
          << ", \"amount\": " << PlainAmount(s->GetAmount()) << "}";
      first = false;
    }
    out << (first ? "]\n}\n" : "\n  ]\n}\n");
    return 0;
  }
  if (schedules.empty()) {
    out << "\"" << account->GetName() << "\" has no schedules.\n";
    return 0;
  }
  std::size_t rule_width = 4, to_width = 7, description_width = 11;
  std::vector<std::string> rules;
  for (const auto& s : schedules) {
    rules.push_back(RuleInWords(*s));
    rule_width = std::max(rule_width, DisplayWidth(rules.back()));
    to_width = std::max(to_width, std::min<std::size_t>(DisplayWidth(s->GetToFrom()), 24));
    description_width =
        std::max(description_width, std::min<std::size_t>(DisplayWidth(s->GetDescription()), 24));
  }
  const LVCurrency& currency = *account->currency();
  out << std::setw(4) << "No."
      << "  " << Pad("Next", 10) << "  " << Pad("Rule", rule_width) << "  "
      << Pad("To/From", to_width) << "  " << Pad("Description", description_width) << std::setw(14)
      << "Amount" << '\n';
  for (std::size_t i = 0; i < schedules.size(); ++i) {
    const ZELMAccountSchedule& s = *schedules[i];
    out << std::setw(4) << s.GetNumber() << "  " << Pad(NextInWords(s.NextEntryDate()), 10) << "  "
        << Pad(rules[i], rule_width) << "  " << Pad(s.GetToFrom(), to_width) << "  "
        << Pad(s.GetDescription(), description_width)
        << PadLeft(FormatAmount(currency, s.GetAmount()), 14) << '\n';
  }
  return 0;
}

// ---- schedule due ----

struct DueOptions {
  std::string account;
  std::string date;
  bool json = false;
};

struct DueRow {
  const ZELMAccount* account;
  const ZELMAccountSchedule* schedule;
  std::shared_ptr<ZELMAccountEntry> entry;
};

int ShowDue(Context& context, const DueOptions& options) {
  auto book = OpenBook(context);
  if (!book) return 1;
  std::int32_t date = 0;
  if (!DateOption(context, options.date, date)) return 1;
  std::vector<std::shared_ptr<ZELMAccount>> accounts;
  if (options.account.empty()) {
    accounts = book->LoadAllAccounts();
    PrintWarnings(context, *book);
  } else {
    auto account = FindAccount(context, *book, options.account);
    if (!account) return 1;
    accounts.push_back(account);
  }
  std::vector<DueRow> rows;
  for (const auto& account : accounts) {
    for (const auto& s : account->GetSchedules()) {
      for (auto& entry : s->EvaluateForDate(LocalDay(date))) {
        rows.push_back({account.get(), s.get(), std::move(entry)});
      }
    }
  }
  std::stable_sort(rows.begin(), rows.end(), [](const DueRow& a, const DueRow& b) {
    return a.entry->GetDate() < b.entry->GetDate();
  });
  auto& out = context.out;
  if (options.json) {
    out << "{\n  \"date\": " << JsonString(FormatDateNumber(date)) << ",\n  \"due\": [";
    bool first = true;
    for (const DueRow& row : rows) {
      const ZELMAccountEntry& e = *row.entry;
      out << (first ? "\n" : ",\n") << "    {\"account\": " << JsonString(row.account->GetName())
          << ", \"schedule\": " << row.schedule->GetNumber()
          << ", \"date\": " << JsonString(FormatDateNumber(e.GetDate()))
          << ", \"check\": " << (e.IsCheck() ? "true" : "false")
          << ", \"type\": " << JsonString(EntryTypeName(*row.account, e))
          << ", \"category\": " << JsonString(EntryCategoryName(*row.account, e))
          << ", \"toFrom\": " << JsonString(e.GetToFrom())
          << ", \"description\": " << JsonString(e.GetDescription())
          << ", \"amount\": " << PlainAmount(e.GetAmount()) << "}";
      first = false;
    }
    out << (first ? "]\n}\n" : "\n  ]\n}\n");
    return 0;
  }
  if (rows.empty()) {
    out << "Nothing is due by " << FormatDateNumber(date) << ".\n";
    return 0;
  }
  std::size_t account_width = 7, to_width = 7, description_width = 11;
  for (const DueRow& row : rows) {
    account_width = std::max(account_width, DisplayWidth(row.account->GetName()));
    to_width = std::max(to_width, std::min<std::size_t>(DisplayWidth(row.entry->GetToFrom()), 24));
    description_width = std::max(
        description_width, std::min<std::size_t>(DisplayWidth(row.entry->GetDescription()), 24));
  }
  out << Pad("Date", 10) << "  " << Pad("Account", account_width) << "  " << std::setw(8)
      << "Schedule"
      << "  " << Pad("To/From", to_width) << "  " << Pad("Description", description_width)
      << std::setw(14) << "Amount" << '\n';
  for (const DueRow& row : rows) {
    const ZELMAccountEntry& e = *row.entry;
    out << FormatDateNumber(e.GetDate()) << "  " << Pad(row.account->GetName(), account_width)
        << "  " << std::setw(8) << row.schedule->GetNumber() << "  " << Pad(e.GetToFrom(), to_width)
        << "  " << Pad(e.GetDescription(), description_width)
        << PadLeft(FormatAmount(*row.account->currency(), e.GetAmount()), 14) << '\n';
  }
  out << '\n'
      << rows.size() << (rows.size() == 1 ? " occurrence" : " occurrences") << " due by "
      << FormatDateNumber(date) << ".\n";
  return 0;
}

// ---- schedule enter ----

struct EnterOptions {
  std::string account;
  std::int32_t number = 0;
  std::string date;
};

int EnterOccurrence(Context& context, const EnterOptions& options) {
  std::unique_ptr<Book> book;
  auto account = OpenAccount(context, book, options.account, Book::Access::kWrite);
  if (!account) return 1;
  auto s = account->ScheduleForNumber(options.number);
  if (!s) {
    return Fail(context,
                "\"" + account->GetName() + "\" has no schedule " + std::to_string(options.number));
  }
  const std::string which =
      "schedule " + std::to_string(s->GetNumber()) + " of \"" + account->GetName() + "\"";
  std::shared_ptr<ZELMAccountEntry> entry;
  if (options.date.empty()) {
    const std::int32_t today = platform::Today();
    auto due = s->EvaluateForDate(LocalDay(today));
    if (due.empty()) return Fail(context, which + " has nothing due by " + FormatDateNumber(today));
    entry = due.front();
  } else {
    std::int32_t date = 0;
    if (!ParseDateNumber(options.date, date)) {
      return Fail(context, "--date: \"" + options.date + "\" is not a date (YYYY-MM-DD)");
    }
    if (s->DateIsCommitted(date)) {
      return Fail(context, "the occurrence of " + which + " on " + FormatDateNumber(date) +
                               " is already entered");
    }
    // An occurrence moves back at most two days off a weekend, so everything due two days
    // later holds the occurrence dated `date` if there is one; the end rule applies too.
    const std::int32_t later = sc::DateNumberFromDay(sc::DayFromDateNumber(date) + 2);
    for (auto& candidate : s->EvaluateForDate(LocalDay(later))) {
      if (candidate->GetDate() == date) {
        entry = std::move(candidate);
        break;
      }
    }
    if (!entry) {
      return Fail(context, FormatDateNumber(date) + " is not a date of " + which + " (" +
                               RuleInWords(*s) + ")");
    }
  }
  entry->SetNumber(account->NextAvailableNumber());
  if (entry->IsCheck()) entry->SetCheckNumber(account->NextAvailableCheckNumber());
  account->AddEntry(entry);
  s->CommitEntry(entry.get());
  if (!SaveBook(context, *book)) return 1;
  context.out << "Entered " << which << " on " << FormatDateNumber(entry->GetDate()) << " as entry "
              << entry->GetNumber();
  if (entry->IsCheck()) context.out << " (check " << entry->GetCheckNumber() << ")";
  context.out << ": " << FormatAmount(*account->currency(), entry->GetAmount());
  if (!entry->GetToFrom().empty()) context.out << " " << entry->GetToFrom();
  context.out << '\n';
  const std::int32_t next = s->NextEntryDate();
  context.out << "Next: " << (next < 0 ? std::string("none") : FormatDateNumber(next)) << '\n';
  return 0;
}

// ---- schedule remove ----

int RemoveSchedule(Context& context, const std::string& account_name, std::int32_t number) {
  std::unique_ptr<Book> book;
  auto account = OpenAccount(context, book, account_name, Book::Access::kWrite);
  if (!account) return 1;
  auto s = account->ScheduleForNumber(number);
  if (!s) {
    return Fail(context,
                "\"" + account->GetName() + "\" has no schedule " + std::to_string(number));
  }
  account->RemoveSchedule(s.get());
  if (!SaveBook(context, *book)) return 1;
  // Occurrences already entered stay in the register as ordinary entries.
  context.out << "Removed schedule " << number << " from \"" << account->GetName()
              << "\": " << RuleInWords(*s) << '\n';
  return 0;
}

// ---- schedule add ----

struct AddOptions {
  std::string account;
  std::vector<std::string> every;
  std::string on;
  std::string start;
  double amount = 0.0;
  std::string toFrom;
  std::string description;
  std::string type;
  std::string category;
  std::string until;
  std::int32_t times = 0;
  std::string weekendShift = "none";
};

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

bool ParseInt(const std::string& text, std::int32_t& value) {
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

// The unit of --every, singular; empty when unknown.
std::string Unit(std::string text) {
  text = Lower(std::move(text));
  if (text.size() > 1 && text.back() == 's') text.pop_back();
  for (const char* unit : {"day", "week", "month", "quarter", "year"}) {
    if (text == unit) return unit;
  }
  return {};
}

// The first day on or after `from` that `matches`, looking no further than `limit` days.
bool FirstDayFrom(sc::Day from, int limit, const std::function<bool(sc::Day)>& matches,
                  sc::Day& found) {
  for (int i = 0; i <= limit; ++i) {
    if (matches(from + i)) {
      found = from + i;
      return true;
    }
  }
  return false;
}

int AddSchedule(Context& context, const AddOptions& o) {
  std::unique_ptr<Book> book;
  auto account = OpenAccount(context, book, o.account, Book::Access::kWrite);
  if (!account) return 1;

  // --every [N] UNIT, as two words or one ("2 weeks")
  std::vector<std::string> every = o.every;
  if (every.size() == 1) {
    std::istringstream words(every[0]);
    every.clear();
    for (std::string word; words >> word;) every.push_back(word);
  }
  std::int32_t n = 1;
  std::string unit;
  if (every.size() == 2) {
    if (!ParseInt(every[0], n) || n < 1) {
      return Fail(context, "--every: \"" + every[0] + "\" is not a count of 1 or more");
    }
    unit = Unit(every[1]);
  } else if (every.size() == 1) {
    unit = Unit(every[0]);
  }
  if (unit.empty()) {
    return Fail(context, "--every: the unit must be day, week, month, quarter or year");
  }

  std::int32_t start_number = 0;
  if (!ParseDateNumber(o.start, start_number)) {
    return Fail(context, "--start: \"" + o.start + "\" is not a date (YYYY-MM-DD)");
  }
  const bool shift = o.weekendShift == "before";
  sc::Day start = sc::DayFromDateNumber(start_number);
  const std::string on = Lower(o.on);
  std::int32_t kind = sc::kRepeatOnce;

  if (unit == "day") {
    if (!on.empty()) return Fail(context, "--on does not apply to a daily schedule");
    // The daily kind never moves off a weekend; every N days does.
    kind = (n == 1 && !shift) ? sc::kRepeatDaily : sc::kRepeatEveryNDays;
  } else if (unit == "week") {
    if (shift) {
      return Fail(context, "a weekly schedule keeps its weekday: --weekend-shift does not apply");
    }
    if (!on.empty()) {
      int wanted = -1;
      for (int d = 0; d < 7; ++d) {
        const std::string name = Lower(kWeekdays[d]);
        if (on.size() >= 3 && name.compare(0, on.size(), on) == 0) wanted = d;
      }
      if (wanted < 0) return Fail(context, "--on: \"" + o.on + "\" is not a weekday");
      FirstDayFrom(
          start, 6, [wanted](sc::Day d) { return sc::Weekday(d) == wanted; }, start);
    }
    kind = n == 1 ? sc::kRepeatWeekly : n == 2 ? sc::kRepeatEveryTwoWeeks : sc::kRepeatEveryNWeeks;
  } else if (unit == "month" || unit == "quarter") {
    const bool month = unit == "month";
    if (on == "last") {
      if (n != 1) return Fail(context, "--on last needs --every 1 " + unit);
      kind = month ? sc::kRepeatLastDayOfMonth : sc::kRepeatLastDayOfQuarter;
    } else {
      if (!on.empty()) {
        std::int32_t day = 0;
        if (!ParseInt(on, day) || day < 1 || day > 31) {
          return Fail(context, "--on: \"" + o.on + "\" is not a day of the month (1-31 or last)");
        }
        FirstDayFrom(
            start, 366, [day](sc::Day d) { return sc::CivilFromDay(d).day == day; }, start);
      }
      if (month) {
        kind = n == 1 ? sc::kRepeatMonthly : sc::kRepeatEveryNMonths;
      } else {
        kind = n == 1 ? sc::kRepeatQuarterly : sc::kRepeatEveryNQuarters;
      }
    }
  } else {  // year
    if (!on.empty()) {
      std::int32_t month = 0, day = 0;
      const auto dash = on.find('-');
      if (dash == std::string::npos || !ParseInt(on.substr(0, dash), month) ||
          !ParseInt(on.substr(dash + 1), day) || month < 1 || month > 12 || day < 1 || day > 31) {
        return Fail(context, "--on: \"" + o.on + "\" is not a day of the year (MM-DD)");
      }
      if (!FirstDayFrom(
              start, 366 * 4,
              [month, day](sc::Day d) {
                const sc::CivilDate c = sc::CivilFromDay(d);
                return c.month == month && c.day == day;
              },
              start)) {
        return Fail(context, "--on: \"" + o.on + "\" is not a day of the year (MM-DD)");
      }
    }
    kind = n == 1 ? sc::kRepeatYearly : sc::kRepeatEveryNYears;
  }
  start_number = sc::DateNumberFromDay(start);

  std::int32_t until_type = sc::kUntilForever, until = 0;
  if (!o.until.empty()) {
    if (!ParseDateNumber(o.until, until)) {
      return Fail(context, "--until: \"" + o.until + "\" is not a date (YYYY-MM-DD)");
    }
    if (until < start_number) {
      return Fail(context, "--until " + FormatDateNumber(until) + " is before the start " +
                               FormatDateNumber(start_number));
    }
    until_type = sc::kUntilDate;
  } else if (o.times > 0) {
    until_type = sc::kUntilCount;
    until = o.times;
  }

  auto s = std::make_shared<ZELMAccountSchedule>();
  s->SetNumber(account->NextAvailableScheduleNumber());
  s->SetDate(start_number);
  s->SetRepeatIntervalType(kind);
  s->SetRepeatInterval(kind >= sc::kRepeatEveryNDays ? n : 1);
  s->SetRepeatUntilType(until_type);
  s->SetRepeatUntil(until);
  s->SetUsePrecedingFriday(shift);
  const bool debit = o.amount < 0;
  s->SetIsDebit(debit);
  s->SetIsDeposit(!debit);
  if (!o.type.empty()) {
    // Type names are matched ignoring case, as account names are.
    std::shared_ptr<ZELMAccountEntryType> type;
    for (const auto* list : {&account->types(), &account->inactiveTypes()}) {
      for (const auto& t : *list) {
        if (!type && t->GetIsDeposit() != debit &&
            platform::CaseInsensitiveEqual(t->GetName(), o.type)) {
          type = t;
        }
      }
    }
    if (!type) {
      return Fail(context, "\"" + account->GetName() + "\" has no " +
                               (debit ? "debit" : "deposit") + " type named \"" + o.type + "\"");
    }
    s->SetType(type->GetNumber());
    s->SetIsCheck(type->GetIsCheck());
  } else if (const auto& fallback =
                 debit ? account->GetDefaultDebitType() : account->GetDefaultDepositType()) {
    s->SetType(fallback->GetNumber());
    s->SetIsCheck(fallback->GetIsCheck());
  }
  if (!o.category.empty()) {
    std::shared_ptr<ZELMAccountEntryCategory> found;
    for (const auto& top : book->categories()) {
      if ((found = top->childWithFullName(o.category))) break;
    }
    if (!found) return Fail(context, "no category named \"" + o.category + "\" in the book");
    s->SetCategory(found->number());
  }
  s->SetAmount(o.amount);
  s->SetToFrom(o.toFrom);
  s->SetDescription(o.description);
  account->AddSchedule(s);
  if (!SaveBook(context, *book)) return 1;
  context.out << "Added schedule " << s->GetNumber() << " to \"" << account->GetName()
              << "\": " << RuleInWords(*s) << "; next " << NextInWords(s->NextEntryDate()) << '\n';
  return 0;
}

}  // namespace

void RegisterScheduleCommand(CLI::App& app, Context& context, CommandList& actions) {
  CLI::App* schedule =
      app.add_subcommand("schedule", "List, add, enter and remove recurring entries");
  schedule->require_subcommand(1);

  {
    auto account = std::make_shared<std::string>();
    auto json = std::make_shared<bool>(false);
    CLI::App* list = schedule->add_subcommand("list", "List an account's schedules");
    list->add_option("ACCOUNT", *account, "Name or number of the account")->required();
    list->add_flag("--json", *json, "Print JSON");
    actions.emplace_back(
        list, [&context, account, json]() { return ListSchedules(context, *account, *json); });
  }
  {
    auto options = std::make_shared<DueOptions>();
    CLI::App* due = schedule->add_subcommand("due", "Show the occurrences due by a day");
    due->add_option("ACCOUNT", options->account, "Name or number of the account (default: all)");
    due->add_option("--date", options->date, "The day (YYYY-MM-DD; default: today)")
        ->check(IsoDate());
    due->add_flag("--json", options->json, "Print JSON");
    actions.emplace_back(due, [&context, options]() { return ShowDue(context, *options); });
  }
  {
    auto options = std::make_shared<EnterOptions>();
    CLI::App* enter = schedule->add_subcommand("enter", "Enter a due occurrence into the register");
    enter->add_option("ACCOUNT", options->account, "Name or number of the account")->required();
    enter->add_option("NUMBER", options->number, "Number of the schedule")->required();
    enter->add_option("--date", options->date,
                      "The occurrence on this day (default: the earliest one due today)")
        ->check(IsoDate());
    actions.emplace_back(enter,
                         [&context, options]() { return EnterOccurrence(context, *options); });
  }
  {
    auto account = std::make_shared<std::string>();
    auto number = std::make_shared<std::int32_t>(0);
    CLI::App* remove = schedule->add_subcommand(
        "remove", "Remove a schedule (occurrences already entered stay in the register)");
    remove->add_option("ACCOUNT", *account, "Name or number of the account")->required();
    remove->add_option("NUMBER", *number, "Number of the schedule")->required();
    actions.emplace_back(remove, [&context, account, number]() {
      return RemoveSchedule(context, *account, *number);
    });
  }
  {
    auto o = std::make_shared<AddOptions>();
    CLI::App* add = schedule->add_subcommand("add", "Add a recurring entry");
    add->add_option("ACCOUNT", o->account, "Name or number of the account")->required();
    add->add_option("--every", o->every, "[N] day|week|month|quarter|year")
        ->required()
        ->expected(1, 2);
    add->add_option("--on", o->on,
                    "Weekday (week), day of the month or \"last\" (month, quarter), MM-DD "
                    "(year); the start moves to the first such day");
    add->add_option("--start", o->start, "First possible day (YYYY-MM-DD)")
        ->required()
        ->check(IsoDate());
    add->add_option("--amount", o->amount, "Amount, negative for money leaving the account")
        ->required();
    add->add_option("--to-from", o->toFrom, "Payee or payer");
    add->add_option("--description", o->description, "Description");
    add->add_option("--type", o->type, "Entry type name (a check type makes checks)");
    add->add_option("--category", o->category, "Full category name (Parent:Child)");
    auto* until = add->add_option("--until", o->until, "Last possible day (YYYY-MM-DD)")
                      ->check(IsoDate());
    auto* times = add->add_option("--times", o->times, "Number of occurrences in all")
                      ->check(CLI::PositiveNumber);
    until->excludes(times);
    add->add_option("--weekend-shift", o->weekendShift,
                    "before: move a weekend occurrence to the Friday before; none (default)")
        ->check(CLI::IsMember({"before", "none"}));
    actions.emplace_back(add, [&context, o]() { return AddSchedule(context, *o); });
  }
}

}  // namespace folvant::app
