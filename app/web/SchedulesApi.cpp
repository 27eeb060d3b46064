// Scheduled entries: the account's schedules, what is due, and schedules added, entered and
// removed.

#include <algorithm>
#include <iterator>

#include "app/render/ScheduleOutput.h"
#include "app/web/ApiSupport.h"
#include "folvant/book/Schedules.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/platform/CivilDate.h"
#include "folvant/platform/Clock.h"

namespace folvant::app::web {
namespace {

const char* const kRecurrenceKeys[] = {"every", "unit",          "on", "start", "until",
                                       "times", "weekendsBefore"};

// Sets the parts of a recurrence the body gives: {every, unit, on, start, until, times,
// weekendsBefore}; a null or empty "until" takes the last day away.
void ReadRecurrence(Fields& fields, const Json& body, Recurrence& r) {
  if (const auto every = fields.Integer("every")) r.every = *every;
  if (const auto unit = fields.Text("unit")) r.unit = *unit;
  if (const auto on = fields.Text("on")) r.on = *on;
  if (const auto start = fields.Date("start")) r.start = *start;
  if (body.contains("until")) r.until = fields.Date("until");
  if (const auto times = fields.Integer("times")) r.times = *times;
  if (const auto weekends = fields.Flag("weekendsBefore")) r.weekendsBefore = *weekends;
}

// The entry fields a schedule copies, as entries take them (a schedule has no date of its own),
// with "newCategory" and "transferTo".
ScheduledEntry ScheduledEntryOf(Fields& fields) {
  ScheduledEntry entry;
  entry.fields = EntryFieldsOf(fields);
  entry.fields.date.reset();
  entry.newCategory = fields.Flag("newCategory").value_or(false);
  entry.transferTo = fields.Text("transferTo");
  return entry;
}

}  // namespace

void Api::RegisterSchedules(httplib::Server& server) {
  // The account's schedules and what of them is due by today.
  server.Get("/api/schedules",
             Read([](Book& book, const Request& request, Refusal& refusal) -> std::optional<Json> {
               const std::string account = request.get_param_value("account");
               auto listing = ListSchedules(book, account);
               if (!listing) return refusal = RefusalOf(listing.error()), std::nullopt;
               auto due = DueOccurrences(book, account, platform::Today());
               if (!due) return refusal = RefusalOf(due.error()), std::nullopt;
               Json schedules = Json::array();
               for (const ScheduleRow& row : listing->rows)
                 schedules.push_back(render::ScheduleRowJson(row));
               Json occurrences = Json::array();
               for (const DueOccurrence& o : *due)
                 occurrences.push_back(render::DueOccurrenceJson(o));
               return Json{{"account", JsonText(listing->account->GetName())},
                           {"schedules", std::move(schedules)},
                           {"due", std::move(occurrences)}};
             }));

  server.Post("/api/schedules/enter",
              Change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                const std::optional<std::string> account = fields.Text("account", true);
                const std::optional<std::int32_t> number = fields.Integer("number", true);
                const std::optional<std::int32_t> date = fields.Date("date");
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                auto entered = EnterOccurrence(book, *account, *number, date);
                if (!entered) return refusal = RefusalOf(entered.error()), std::nullopt;
                return render::EnteredOccurrenceJson(*entered);
              }));

  // A schedule in words: {account, every, unit, on, start, until, times, weekendsBefore,
  // amount, toFrom, description, category, type, check, transferTo}.
  server.Post("/api/schedules/add",
              Change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                const std::optional<std::string> account = fields.Text("account", true);
                Recurrence recurrence;
                recurrence.start = platform::Today();
                ReadRecurrence(fields, body, recurrence);
                fields.Text("unit", true);
                fields.Amount("amount", true);
                ScheduledEntry entry = ScheduledEntryOf(fields);
                if (entry.transferTo && entry.transferTo->empty()) entry.transferTo.reset();
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                auto added = AddSchedule(book, *account, recurrence, entry);
                if (!added) return refusal = RefusalOf(added.error()), std::nullopt;
                return render::ScheduleChangeJson(*added);
              }));

  // Changes a schedule: {account, number} and what changes, as adding takes it; the recurrence
  // keeps the parts not given, and "transferTo": "" makes it no longer a transfer.
  server.Post("/api/schedules/edit",
              Change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                const std::optional<std::string> account = fields.Text("account", true);
                const std::optional<std::int32_t> number = fields.Integer("number", true);
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                std::optional<Recurrence> recurrence;
                if (std::any_of(std::begin(kRecurrenceKeys), std::end(kRecurrenceKeys),
                                [&body](const char* key) { return body.contains(key); })) {
                  auto stored = ScheduleRecurrence(book, *account, *number);
                  if (!stored) return refusal = RefusalOf(stored.error()), std::nullopt;
                  recurrence = *stored;
                  ReadRecurrence(fields, body, *recurrence);
                }
                const ScheduledEntry entry = ScheduledEntryOf(fields);
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                auto edited = EditSchedule(book, *account, *number, recurrence, entry);
                if (!edited) return refusal = RefusalOf(edited.error()), std::nullopt;
                return render::ScheduleChangeJson(*edited);
              }));

  server.Post("/api/schedules/remove",
              Change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                const std::optional<std::string> account = fields.Text("account", true);
                const std::optional<std::int32_t> number = fields.Integer("number", true);
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                auto removed = RemoveSchedule(book, *account, *number);
                if (!removed) return refusal = RefusalOf(removed.error()), std::nullopt;
                return Json{{"account", JsonText(removed->account->GetName())},
                            {"number", removed->number}};
              }));
}

}  // namespace folvant::app::web
