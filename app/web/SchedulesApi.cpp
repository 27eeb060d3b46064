// Scheduled entries: the account's schedules, what is due, and schedules added, entered and
// removed.

#include "app/render/EntryOutput.h"
#include "app/web/ApiSupport.h"
#include "folvant/book/Schedules.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/platform/CivilDate.h"
#include "folvant/platform/Clock.h"

namespace folvant::app::web {

void Api::RegisterSchedules(httplib::Server& server) {
  // The account's schedules and what of them is due by today.
  server.Get(
      "/api/schedules",
      Read([](Book& book, const Request& request, Refusal& refusal) -> std::optional<Json> {
        const std::string account = request.get_param_value("account");
        auto listing = ListSchedules(book, account);
        if (!listing) return refusal = RefusalOf(listing.error()), std::nullopt;
        auto due = DueOccurrences(book, account, platform::Today());
        if (!due) return refusal = RefusalOf(due.error()), std::nullopt;
        auto date = [](const std::optional<std::int32_t>& d) {
          return d ? Json(platform::FormatIsoDate(*d)) : Json(nullptr);
        };
        Json schedules = Json::array();
        for (const ScheduleRow& row : listing->rows) {
          schedules.push_back(Json{
              {"number", row.number},
              {"rule", JsonText(row.rule)},
              {"next", date(row.next)},
              {"toFrom", JsonText(row.toFrom)},
              {"description", JsonText(row.description)},
              {"category", JsonText(row.category)},
              {"amount", JsonAmount(row.amount)},
              {"transferTo", row.transferTo.empty() ? Json(nullptr) : JsonText(row.transferTo)}});
        }
        Json occurrences = Json::array();
        for (const DueOccurrence& o : *due) {
          occurrences.push_back(
              Json{{"schedule", o.schedule},
                   {"date", platform::FormatIsoDate(o.date)},
                   {"toFrom", JsonText(o.toFrom)},
                   {"description", JsonText(o.description)},
                   {"amount", JsonAmount(o.amount)},
                   {"transferTo", o.transferTo.empty() ? Json(nullptr) : JsonText(o.transferTo)}});
        }
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
                return Json{{"account", JsonText(entered->account->GetName())},
                            {"schedule", entered->schedule},
                            {"entry", entered->entry},
                            {"date", platform::FormatIsoDate(entered->date)},
                            {"amount", JsonAmount(entered->amount)},
                            {"linked", render::LinkedJson(entered->linked)}};
              }));

  // A schedule in words: {account, every, unit, on, start, until, times, weekendsBefore,
  // amount, toFrom, description, category, type, check, transferTo}.
  server.Post("/api/schedules/add",
              Change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                const std::optional<std::string> account = fields.Text("account", true);
                Recurrence recurrence;
                recurrence.every = fields.Integer("every").value_or(1);
                recurrence.unit = fields.Text("unit", true).value_or("");
                recurrence.on = fields.Text("on").value_or("");
                const std::optional<std::int32_t> start = fields.Date("start");
                recurrence.until = fields.Date("until");
                recurrence.times = fields.Integer("times").value_or(0);
                recurrence.weekendsBefore = fields.Flag("weekendsBefore").value_or(false);
                ScheduledEntry entry;
                fields.Amount("amount", true);
                entry.fields = EntryFieldsOf(fields);
                entry.fields.date.reset();
                if (const auto other = fields.Text("transferTo"); other && !other->empty()) {
                  entry.transferTo = other;
                }
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                recurrence.start = start.value_or(platform::Today());
                auto added = AddSchedule(book, *account, recurrence, entry);
                if (!added) return refusal = RefusalOf(added.error()), std::nullopt;
                return Json{{"account", JsonText(added->account->GetName())},
                            {"number", added->number},
                            {"rule", JsonText(added->rule)},
                            {"next", added->next ? Json(platform::FormatIsoDate(*added->next))
                                                 : Json(nullptr)}};
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
