#include "app/render/ScheduleOutput.h"

#include "app/render/EntryOutput.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/platform/CivilDate.h"

namespace folvant::render {

using platform::FormatIsoDate;

Json JsonDateOrNull(const std::optional<std::int32_t>& date) {
  return date ? Json(FormatIsoDate(*date)) : Json(nullptr);
}

Json ScheduleRowJson(const ScheduleRow& row) {
  const Recurrence& r = row.recurrence;
  Json s = Json::object();
  s["number"] = row.number;
  s["start"] = FormatIsoDate(row.start);
  s["next"] = JsonDateOrNull(row.next);
  s["rule"] = JsonText(row.rule);
  s["recurrence"] = Json{{"every", r.every},
                         {"unit", JsonText(r.unit)},
                         {"on", JsonText(r.on)},
                         {"start", FormatIsoDate(r.start)},
                         {"until", JsonDateOrNull(r.until)},
                         {"times", r.times},
                         {"weekendsBefore", r.weekendsBefore}};
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
  s["notes"] = JsonText(row.notes);
  s["amount"] = JsonAmount(row.amount);
  s["taxDeductible"] = row.taxDeductible;
  s["splits"] = SplitsJson(row.splits);
  s["transferTo"] = row.transferTo.empty() ? Json(nullptr) : JsonText(row.transferTo);
  return s;
}

Json DueOccurrenceJson(const DueOccurrence& d) {
  Json row = Json::object();
  row["account"] = JsonText(d.account->GetName());
  row["schedule"] = d.schedule;
  row["date"] = FormatIsoDate(d.date);
  row["check"] = d.check;
  row["type"] = JsonText(d.type);
  row["category"] = JsonText(d.category);
  row["toFrom"] = JsonText(d.toFrom);
  row["description"] = JsonText(d.description);
  row["amount"] = JsonAmount(d.amount);
  row["transferTo"] = d.transferTo.empty() ? Json(nullptr) : JsonText(d.transferTo);
  return row;
}

Json EnteredOccurrenceJson(const EnteredOccurrence& e) {
  Json document = Json::object();
  document["account"] = JsonText(e.account->GetName());
  document["schedule"] = e.schedule;
  document["entry"] = e.entry;
  document["checkNumber"] = e.checkNumber ? Json(*e.checkNumber) : Json(nullptr);
  document["date"] = FormatIsoDate(e.date);
  document["amount"] = JsonAmount(e.amount);
  document["toFrom"] = JsonText(e.toFrom);
  document["next"] = JsonDateOrNull(e.next);
  document["linked"] = LinkedJson(e.linked);
  return document;
}

Json ScheduleChangeJson(const ScheduleChange& change) {
  Json document = Json::object();
  document["account"] = JsonText(change.account->GetName());
  document["number"] = change.number;
  document["rule"] = JsonText(change.rule);
  document["next"] = JsonDateOrNull(change.next);
  return document;
}

}  // namespace folvant::render
