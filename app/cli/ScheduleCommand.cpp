#include <charconv>
#include <map>
#include <optional>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "app/cli/BookAccess.h"
#include "app/cli/Commands.h"
#include "app/cli/Options.h"
#include "app/render/AmountText.h"
#include "app/render/Json.h"
#include "app/render/Table.h"
#include "folvant/book/Book.h"
#include "folvant/book/Schedules.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/platform/CivilDate.h"
#include "folvant/platform/Clock.h"
#include "folvant/values/LVCurrency.h"

namespace folvant::app {
namespace {

using platform::FormatIsoDate;
using render::Align;

std::string DateOrDash(const std::optional<std::int32_t>& date) {
  return date ? FormatIsoDate(*date) : "-";
}

render::Json DateOrNull(const std::optional<std::int32_t>& date) {
  return date ? render::Json(FormatIsoDate(*date)) : render::Json(nullptr);
}

void Write(Context& context, const std::string& text) {
  context.out.write(text.data(), static_cast<std::streamsize>(text.size()));
}

// A value that does not read, found once the options are read together: a usage error.
int UsageError(Context& context, const std::string& message) {
  Fail(context, message);
  return 2;
}

// ---- schedule list ----

void PrintListJson(Context& context, const ScheduleListing& listing) {
  using render::Json;
  using render::JsonText;
  Json schedules = Json::array();
  for (const ScheduleRow& row : listing.rows) {
    Json s = Json::object();
    s["number"] = row.number;
    s["start"] = FormatIsoDate(row.start);
    s["next"] = DateOrNull(row.next);
    s["rule"] = row.rule;
    s["repeatIntervalType"] = row.kind;
    s["repeatInterval"] = row.interval;
    s["repeatUntilType"] = row.untilType;
    s["repeatUntil"] = row.until;
    s["usePrecedingFriday"] = row.weekendsBefore;
    s["committed"] = row.committed;
    s["check"] = row.check;
    s["type"] = JsonText(row.type);
    s["category"] = JsonText(row.category);
    s["toFrom"] = JsonText(row.toFrom);
    s["description"] = JsonText(row.description);
    s["amount"] = render::JsonAmount(row.amount);
    schedules.push_back(std::move(s));
  }
  Json document = Json::object();
  document["account"] = JsonText(listing.account->GetName());
  document["schedules"] = std::move(schedules);
  render::WriteJson(context.out, document);
}

int List(Context& context, const std::string& account, bool json) {
  auto book = OpenBook(context);
  if (!book) return 1;
  auto listing = ListSchedules(*book, account);
  PrintWarnings(context, *book);
  if (!listing) return Fail(context, listing.error());
  if (json) {
    PrintListJson(context, *listing);
    return 0;
  }
  if (listing->rows.empty()) {
    context.out << "\"" << listing->account->GetName() << "\" has no schedules.\n";
    return 0;
  }
  const render::AmountWriter amounts(*listing->account->currency());
  render::Table table;
  table.AddFitColumn("No.", Align::kRight);
  table.AddColumn("Next", Align::kLeft, 10);
  table.AddFitColumn("Rule", Align::kLeft);
  table.AddFitColumn("To/From", Align::kLeft, 24);
  table.AddFitColumn("Description", Align::kLeft, 24);
  table.AddFitColumn("Amount", Align::kRight);
  for (const ScheduleRow& row : listing->rows) {
    table.AddRow({std::to_string(row.number), DateOrDash(row.next), row.rule, row.toFrom,
                  row.description, amounts.Text(row.amount)});
  }
  std::string out;
  table.Write(out);
  Write(context, out);
  return 0;
}

// ---- schedule due ----

struct DueOptions {
  std::string account;  // empty: every account
  std::string date;
  bool json = false;
};

void PrintDueJson(Context& context, std::int32_t date, const std::vector<DueOccurrence>& due) {
  using render::Json;
  using render::JsonText;
  Json rows = Json::array();
  for (const DueOccurrence& d : due) {
    Json row = Json::object();
    row["account"] = JsonText(d.account->GetName());
    row["schedule"] = d.schedule;
    row["date"] = FormatIsoDate(d.date);
    row["check"] = d.check;
    row["type"] = JsonText(d.type);
    row["category"] = JsonText(d.category);
    row["toFrom"] = JsonText(d.toFrom);
    row["description"] = JsonText(d.description);
    row["amount"] = render::JsonAmount(d.amount);
    rows.push_back(std::move(row));
  }
  Json document = Json::object();
  document["date"] = FormatIsoDate(date);
  document["due"] = std::move(rows);
  render::WriteJson(context.out, document);
}

int Due(Context& context, const DueOptions& options) {
  auto book = OpenBook(context);
  if (!book) return 1;
  std::int32_t date = platform::Today();
  if (!options.date.empty()) ParseDateNumber(options.date, date);  // checked when read
  auto due = DueOccurrences(
      *book, options.account.empty() ? std::nullopt : std::optional(options.account), date);
  PrintWarnings(context, *book);
  if (!due) return Fail(context, due.error());
  if (options.json) {
    PrintDueJson(context, date, *due);
    return 0;
  }
  if (due->empty()) {
    context.out << "Nothing is due by " << FormatIsoDate(date) << ".\n";
    return 0;
  }
  std::map<const LVCurrency*, render::AmountWriter> amounts;
  render::Table table;
  table.AddColumn("Date", Align::kLeft, 10);
  table.AddFitColumn("Account", Align::kLeft);
  table.AddFitColumn("Schedule", Align::kRight);
  table.AddFitColumn("To/From", Align::kLeft, 24);
  table.AddFitColumn("Description", Align::kLeft, 24);
  table.AddFitColumn("Amount", Align::kRight);
  for (const DueOccurrence& d : *due) {
    const LVCurrency& currency = *d.account->currency();
    const render::AmountWriter& writer = amounts.try_emplace(&currency, currency).first->second;
    table.AddRow({FormatIsoDate(d.date), d.account->GetName(), std::to_string(d.schedule), d.toFrom,
                  d.description, writer.Text(d.amount)});
  }
  std::string out;
  table.Write(out);
  out += "\n" + std::to_string(due->size()) + (due->size() == 1 ? " occurrence" : " occurrences") +
         " due by " + FormatIsoDate(date) + ".\n";
  Write(context, out);
  return 0;
}

// ---- schedule enter ----

struct EnterOptions {
  std::string account;
  std::int32_t number = 0;
  std::string date;
};

int Enter(Context& context, const EnterOptions& options) {
  std::optional<std::int32_t> date;
  if (std::int32_t day = 0; ParseDateNumber(options.date, day)) date = day;
  auto book = OpenBook(context, Book::Access::kWrite);
  if (!book) return 1;
  auto entered = EnterOccurrence(*book, options.account, options.number, date);
  PrintWarnings(context, *book);
  if (!entered) return Fail(context, entered.error());
  if (!SaveBook(context, *book)) return 1;
  const EnteredOccurrence& e = *entered;
  std::ostringstream out;
  out << "Entered schedule " << e.schedule << " of \"" << e.account->GetName() << "\" on "
      << FormatIsoDate(e.date) << " as entry " << e.entry;
  if (e.checkNumber) out << " (check " << *e.checkNumber << ")";
  out << ": " << render::AmountWriter(*e.account->currency()).Text(e.amount);
  if (!e.toFrom.empty()) out << " " << e.toFrom;
  out << "\nNext: " << (e.next ? FormatIsoDate(*e.next) : "none") << '\n';
  Write(context, out.str());
  return 0;
}

// ---- schedule remove ----

int Remove(Context& context, const std::string& account, std::int32_t number) {
  auto book = OpenBook(context, Book::Access::kWrite);
  if (!book) return 1;
  auto removed = RemoveSchedule(*book, account, number);
  PrintWarnings(context, *book);
  if (!removed) return Fail(context, removed.error());
  if (!SaveBook(context, *book)) return 1;
  context.out << "Removed schedule " << number << " from \"" << removed->account->GetName()
              << "\": " << removed->rule << '\n';
  return 0;
}

// ---- schedule add ----

struct AddOptions {
  std::string account;
  std::vector<std::string> every;
  std::string on;
  std::string start;
  std::string until;
  std::int32_t times = 0;
  std::string weekendShift = "none";
  ScheduledEntry entry;
};

// The recurrence the options give; a message when --every does not read.
std::optional<std::string> ReadRecurrence(const AddOptions& o, Recurrence& r) {
  // --every [N] UNIT, as two words or one ("2 weeks")
  std::vector<std::string> words = o.every;
  if (words.size() == 1) {
    std::istringstream split(words[0]);
    words.clear();
    for (std::string word; split >> word;) words.push_back(word);
  }
  if (words.size() == 2) {
    const std::string& count = words[0];
    const auto read = std::from_chars(count.data(), count.data() + count.size(), r.every);
    if (read.ec != std::errc() || read.ptr != count.data() + count.size() || r.every < 1) {
      return "--every: \"" + count + "\" is not a count of 1 or more";
    }
  }
  if (words.size() == 1 || words.size() == 2) r.unit = words.back();
  r.on = o.on;
  ParseDateNumber(o.start, r.start);  // checked when read
  if (std::int32_t until = 0; ParseDateNumber(o.until, until)) r.until = until;
  r.times = o.times;
  r.weekendsBefore = o.weekendShift == "before";
  return std::nullopt;
}

int Add(Context& context, const AddOptions& o) {
  Recurrence recurrence;
  if (auto bad = ReadRecurrence(o, recurrence)) return UsageError(context, *bad);
  if (auto built = BuildSchedule(recurrence); !built) {
    return UsageError(context, built.error().message);
  }
  auto book = OpenBook(context, Book::Access::kWrite);
  if (!book) return 1;
  auto added = AddSchedule(*book, o.account, recurrence, o.entry);
  PrintWarnings(context, *book);
  if (!added) return Fail(context, added.error());
  if (!SaveBook(context, *book)) return 1;
  context.out << "Added schedule " << added->number << " to \"" << added->account->GetName()
              << "\": " << added->rule << "; next " << DateOrDash(added->next) << '\n';
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
    actions.emplace_back(list,
                         [&context, account, json]() { return List(context, *account, *json); });
  }
  {
    auto options = std::make_shared<DueOptions>();
    CLI::App* due = schedule->add_subcommand("due", "Show the occurrences due by a day");
    due->add_option("ACCOUNT", options->account, "Name or number of the account (default: all)");
    due->add_option("--date", options->date, "The day (YYYY-MM-DD; default: today)")
        ->check(IsoDate());
    due->add_flag("--json", options->json, "Print JSON");
    actions.emplace_back(due, [&context, options]() { return Due(context, *options); });
  }
  {
    auto options = std::make_shared<EnterOptions>();
    CLI::App* enter = schedule->add_subcommand("enter", "Enter a due occurrence into the register");
    enter->add_option("ACCOUNT", options->account, "Name or number of the account")->required();
    enter->add_option("NUMBER", options->number, "Number of the schedule")->required();
    enter
        ->add_option("--date", options->date,
                     "The occurrence on this day (default: the earliest one due today)")
        ->check(IsoDate());
    actions.emplace_back(enter, [&context, options]() { return Enter(context, *options); });
  }
  {
    auto account = std::make_shared<std::string>();
    auto number = std::make_shared<std::int32_t>(0);
    CLI::App* remove = schedule->add_subcommand(
        "remove", "Remove a schedule (occurrences already entered stay in the register)");
    remove->add_option("ACCOUNT", *account, "Name or number of the account")->required();
    remove->add_option("NUMBER", *number, "Number of the schedule")->required();
    actions.emplace_back(
        remove, [&context, account, number]() { return Remove(context, *account, *number); });
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
    add->add_option("--amount", o->entry.amount, "Amount, negative for money leaving the account")
        ->transform(AmountValue())
        ->required();
    add->add_option("--to-from", o->entry.toFrom, "Payee or payer");
    add->add_option("--description", o->entry.description, "Description");
    add->add_option("--type", o->entry.type, "Entry type name (a check type makes checks)");
    add->add_option("--category", o->entry.category, "Full category name (Parent:Child)");
    auto* until =
        add->add_option("--until", o->until, "Last possible day (YYYY-MM-DD)")->check(IsoDate());
    auto* times = add->add_option("--times", o->times, "Number of occurrences in all")
                      ->check(CLI::PositiveNumber);
    until->excludes(times);
    add->add_option("--weekend-shift", o->weekendShift,
                    "before: move a weekend occurrence to the Friday before; none (default)")
        ->check(CLI::IsMember({"before", "none"}));
    actions.emplace_back(add, [&context, o]() { return Add(context, *o); });
  }
}

}  // namespace folvant::app
