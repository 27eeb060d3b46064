#include <charconv>
#include <map>
#include <optional>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "app/cli/BookAccess.h"
#include "app/cli/Commands.h"
#include "app/cli/FieldOptions.h"
#include "app/cli/Options.h"
#include "app/render/AmountText.h"
#include "app/render/EntryOutput.h"
#include "app/render/Json.h"
#include "app/render/ScheduleOutput.h"
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
  for (const ScheduleRow& row : listing.rows) schedules.push_back(render::ScheduleRowJson(row));
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
  for (const DueOccurrence& d : due) rows.push_back(render::DueOccurrenceJson(d));
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
  bool json = false;
};

int Enter(Context& context, const EnterOptions& options) {
  std::optional<std::int32_t> date;
  if (std::int32_t day = 0; ParseDateNumber(options.date, day)) date = day;
  return ChangeBook(
      context,
      [&](Book& book) { return EnterOccurrence(book, options.account, options.number, date); },
      [&](const EnteredOccurrence& e) {
        if (options.json) {
          render::WriteJson(context.out, render::EnteredOccurrenceJson(e));
          return;
        }
        std::ostringstream out;
        out << "Entered schedule " << e.schedule << " of \"" << e.account->GetName() << "\" on "
            << FormatIsoDate(e.date) << " as entry " << e.entry;
        if (e.checkNumber) out << " (check " << *e.checkNumber << ")";
        out << ": " << render::AmountWriter(*e.account->currency()).Text(e.amount);
        if (!e.toFrom.empty()) out << " " << e.toFrom;
        out << "\n";
        if (e.linked) {
          out << "Entry " << e.linked->number << " of \"" << e.linked->account << "\" "
              << e.linked->what << ".\n";
        }
        out << "Next: " << (e.next ? FormatIsoDate(*e.next) : "none") << '\n';
        Write(context, out.str());
      });
}

// ---- schedule add, edit and remove ----

void PrintScheduleChange(Context& context, const ScheduleChange& change, const char* verb,
                         bool json) {
  if (json) {
    render::WriteJson(context.out, render::ScheduleChangeJson(change));
    return;
  }
  context.out << verb << " schedule " << change.number << " of \"" << change.account->GetName()
              << "\": " << change.rule;
  if (std::string_view(verb) != "Removed") context.out << "; next " << DateOrDash(change.next);
  context.out << '\n';
}

struct RemoveOptions {
  std::string account;
  std::int32_t number = 0;
  bool json = false;
};

int Remove(Context& context, const RemoveOptions& o) {
  return ChangeBook(
      context, [&](Book& book) { return RemoveSchedule(book, o.account, o.number); },
      [&](const ScheduleChange& change) {
        PrintScheduleChange(context, change, "Removed", o.json);
      });
}

// The options of `schedule add` and `schedule edit`; a field is given when its option was.
struct ScheduleOptions {
  std::string account;
  std::int32_t number = 0;
  std::vector<std::string> every;
  bool once = false;
  std::string on, start, until;
  std::int32_t times = 0;
  bool forever = false;
  std::string weekendShift = "none";
  EntryFieldOptions fields;
  double toAmount = 0.0;
  bool check = false, noCheck = false;
  std::string toFrom, transferTo;
  bool noTransfer = false, newCategory = false;
  bool json = false;
  CLI::Option *everyOption = nullptr, *onOption = nullptr, *startOption = nullptr,
              *untilOption = nullptr, *timesOption = nullptr, *shiftOption = nullptr,
              *toFromOption = nullptr, *transferOption = nullptr, *toAmountOption = nullptr;
};

void AddScheduleOptions(CLI::App* command, ScheduleOptions& o, bool edit) {
  command->add_option("ACCOUNT", o.account, "Name or number of the account")->required();
  if (edit) command->add_option("NUMBER", o.number, "Number of the schedule")->required();
  o.everyOption =
      command->add_option("--every", o.every, "[N] day|week|month|quarter|year")->expected(1, 2);
  auto* once = command->add_flag("--once", o.once, "A single occurrence on the start day");
  once->excludes(o.everyOption);
  o.onOption = command->add_option("--on", o.on,
                                   "Weekday (week), day of the month or \"last\" (month, "
                                   "quarter), MM-DD (year); the start moves to the first such day");
  o.startOption =
      command->add_option("--start", o.start, "First possible day (YYYY-MM-DD)")->check(IsoDate());
  o.untilOption =
      command->add_option("--until", o.until, "Last possible day (YYYY-MM-DD)")->check(IsoDate());
  o.timesOption = command->add_option("--times", o.times, "Number of occurrences in all")
                      ->check(CLI::PositiveNumber);
  o.untilOption->excludes(o.timesOption);
  if (edit) {
    command->add_flag("--forever", o.forever, "No end")
        ->excludes(o.untilOption)
        ->excludes(o.timesOption);
  }
  o.shiftOption = command
                      ->add_option("--weekend-shift", o.weekendShift,
                                   "before: move a weekend occurrence to the Friday before; none")
                      ->check(CLI::IsMember({"before", "none"}));
  AddEntryFieldOptions(command, o.fields, edit, "the amount");
  auto* check = command->add_flag("--check", o.check, "Each occurrence is a check");
  if (edit) command->add_flag("--no-check", o.noCheck, "Not a check")->excludes(check);
  o.toFromOption = command->add_option("--to,--from,--to-from", o.toFrom, "Payee or payer");
  command->add_flag("--new-category", o.newCategory, "Create the category if it is new");
  o.transferOption = command->add_option(
      "--transfer-to", o.transferTo,
      "A transfer to this account: each occurrence makes the linked pair, the amount leaving");
  o.toAmountOption = command
                         ->add_option("--to-amount", o.toAmount,
                                      "What the other account receives, between currencies")
                         ->transform(AmountValue());
  if (edit) {
    command->add_flag("--no-transfer", o.noTransfer, "No longer a transfer")
        ->excludes(o.transferOption)
        ->excludes(o.toAmountOption);
  }
  command->add_flag("--json", o.json, "Print JSON");
}

// Whether any option of the recurrence was given.
bool RecurrenceGiven(const ScheduleOptions& o) {
  for (const CLI::Option* option :
       {o.everyOption, o.onOption, o.startOption, o.untilOption, o.timesOption, o.shiftOption}) {
    if (option->count() > 0) return true;
  }
  return o.once || o.forever;
}

// The recurrence the options give over `r`; a message when --every does not read.
std::optional<std::string> ReadRecurrence(const ScheduleOptions& o, Recurrence& r) {
  if (o.everyOption->count() > 0) {
    // --every [N] UNIT, as two words or one ("2 weeks")
    std::vector<std::string> words = o.every;
    if (words.size() == 1) {
      std::istringstream split(words[0]);
      words.clear();
      for (std::string word; split >> word;) words.push_back(word);
    }
    r.every = 1;
    if (words.size() == 2) {
      const std::string& count = words[0];
      const auto read = std::from_chars(count.data(), count.data() + count.size(), r.every);
      if (read.ec != std::errc() || read.ptr != count.data() + count.size() || r.every < 1) {
        return "--every: \"" + count + "\" is not a count of 1 or more";
      }
    }
    if (words.size() == 1 || words.size() == 2) r.unit = words.back();
    if (r.unit == "once") r.unit.clear();  // --once says it
  }
  if (o.once) {
    r = Recurrence{1, "once", {}, r.start, std::nullopt, 0, false};
  } else if (r.unit == "once") {
    if (o.everyOption->count() == 0) {
      return "a one-time schedule repeats only with --every [N] UNIT";
    }
  }
  if (o.onOption->count() > 0) r.on = o.on;
  ParseDateNumber(o.start, r.start);  // checked when read; unchanged when not given
  if (o.untilOption->count() > 0) {
    std::int32_t until = 0;
    ParseDateNumber(o.until, until);
    r.until = until;
    r.times = 0;
  }
  if (o.timesOption->count() > 0) {
    r.times = o.times;
    r.until.reset();
  }
  if (o.forever) {
    r.until.reset();
    r.times = 0;
  }
  if (o.shiftOption->count() > 0) r.weekendsBefore = o.weekendShift == "before";
  return std::nullopt;
}

ScheduledEntry ReadScheduledEntry(const ScheduleOptions& o) {
  ScheduledEntry entry;
  EntryFields& f = entry.fields;
  ReadEntryFields(o.fields, f);
  if (o.check) f.check = true;
  if (o.noCheck) f.check = false;
  if (o.toFromOption->count() > 0) f.toFrom = o.toFrom;
  entry.newCategory = o.newCategory;
  if (o.transferOption->count() > 0) entry.transferTo = o.transferTo;
  if (o.noTransfer) entry.transferTo = std::string();
  if (o.toAmountOption->count() > 0) entry.toAmount = o.toAmount;
  return entry;
}

int Add(Context& context, const ScheduleOptions& o) {
  if (auto bad = BadAmounts(o.fields)) return UsageError(context, *bad);
  if (o.everyOption->count() == 0 && !o.once) {
    return UsageError(context, "schedule add needs --every [N] UNIT or --once");
  }
  if (o.startOption->count() == 0) return UsageError(context, "schedule add needs --start DATE");
  if (o.fields.amountOption->count() + o.fields.debitOption->count() +
          o.fields.depositOption->count() + o.fields.splitOption->count() ==
      0) {
    return UsageError(context, "schedule add needs --amount, --debit, --deposit or --split");
  }
  Recurrence recurrence;
  if (auto bad = ReadRecurrence(o, recurrence)) return UsageError(context, *bad);
  if (auto built = BuildSchedule(recurrence); !built) {
    return UsageError(context, built.error().message);
  }
  return ChangeBook(
      context,
      [&](Book& book) { return AddSchedule(book, o.account, recurrence, ReadScheduledEntry(o)); },
      [&](const ScheduleChange& change) { PrintScheduleChange(context, change, "Added", o.json); });
}

int Edit(Context& context, const ScheduleOptions& o) {
  if (auto bad = BadAmounts(o.fields)) return UsageError(context, *bad);
  return ChangeBook(
      context,
      [&](Book& book) -> BookResult<ScheduleChange> {
        std::optional<Recurrence> recurrence;
        if (RecurrenceGiven(o)) {
          auto stored = ScheduleRecurrence(book, o.account, o.number);
          if (!stored) return Unexpected{stored.error()};
          recurrence = *stored;
          if (auto bad = ReadRecurrence(o, *recurrence)) {
            return Unexpected{BookError::Of(BookError::Kind::kInvalid, *bad)};
          }
        }
        return EditSchedule(book, o.account, o.number, recurrence, ReadScheduledEntry(o));
      },
      [&](const ScheduleChange& change) {
        PrintScheduleChange(context, change, "Changed", o.json);
      });
}

}  // namespace

void RegisterScheduleCommand(CLI::App& app, Context& context, CommandList& actions) {
  CLI::App* schedule =
      app.add_subcommand("schedule", "List, add, edit, enter and remove recurring entries");
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
    enter->add_flag("--json", options->json, "Print JSON");
    actions.emplace_back(enter, [&context, options]() { return Enter(context, *options); });
  }
  {
    auto o = std::make_shared<RemoveOptions>();
    CLI::App* remove = schedule->add_subcommand(
        "remove", "Remove a schedule (occurrences already entered stay in the register)");
    remove->add_option("ACCOUNT", o->account, "Name or number of the account")->required();
    remove->add_option("NUMBER", o->number, "Number of the schedule")->required();
    remove->add_flag("--json", o->json, "Print JSON");
    actions.emplace_back(remove, [&context, o]() { return Remove(context, *o); });
  }
  {
    auto o = std::make_shared<ScheduleOptions>();
    CLI::App* add = schedule->add_subcommand("add", "Add a recurring or one-time entry");
    AddScheduleOptions(add, *o, false);
    actions.emplace_back(add, [&context, o]() { return Add(context, *o); });
  }
  {
    auto o = std::make_shared<ScheduleOptions>();
    CLI::App* edit = schedule->add_subcommand(
        "edit", "Change a schedule's recurrence or entry fields (entered occurrences stay)");
    AddScheduleOptions(edit, *o, true);
    actions.emplace_back(edit, [&context, o]() { return Edit(context, *o); });
  }
}

}  // namespace folvant::app
