#include "app/render/ReconcileOutput.h"

#include "folvant/model/ZELMAccount.h"
#include "folvant/platform/CivilDate.h"
#include "folvant/platform/LocalCalendar.h"

namespace folvant::render {
namespace {

using platform::FormatIsoDate;

const char* KindWord(ReconcileSuggestion::Kind kind) {
  switch (kind) {
    case ReconcileSuggestion::Kind::kOneEntry:
      return "oneEntry";
    case ReconcileSuggestion::Kind::kTwoEntries:
      return "twoEntries";
    case ReconcileSuggestion::Kind::kSignFlipped:
      return "signFlipped";
    case ReconcileSuggestion::Kind::kTransposedDigits:
      return "transposedDigits";
  }
  return "";
}

}  // namespace

Json ReconciliationRecordJson(const ReconciliationRecord& r) {
  Json record = Json::object();
  record["statementDate"] = FormatIsoDate(r.statement.date);
  record["statementBalance"] = JsonAmount(r.statement.balance);
  record["resolved"] = r.resolved;
  record["finished"] = platform::FormatLocalTime(r.finished, "%Y-%m-%dT%H:%M:%S");
  return record;
}

Json ReconcileOutcomeJson(const ReconcileOutcome& outcome) {
  const ReconcileListing& l = outcome.listing;
  Json entries = Json::array();
  for (const UnresolvedEntry& e : l.unresolved) {
    Json row = Json::object();
    row["number"] = e.number;
    row["date"] = FormatIsoDate(e.date);
    row["checkNumber"] = e.checkNumber ? Json(*e.checkNumber) : Json(nullptr);
    row["toFrom"] = JsonText(e.toFrom);
    row["description"] = JsonText(e.description);
    row["amount"] = JsonAmount(e.amount);
    entries.push_back(std::move(row));
  }
  Json suggestions = Json::array();
  for (const ReconcileSuggestion& s : l.suggestions) {
    Json amounts = Json::array();
    for (double amount : s.amounts) amounts.push_back(JsonAmount(amount));
    Json suggestion = Json::object();
    suggestion["kind"] = KindWord(s.kind);
    suggestion["entries"] = s.entries;
    suggestion["amounts"] = std::move(amounts);
    suggestion["resolved"] = s.resolved;
    suggestions.push_back(std::move(suggestion));
  }
  Json document = Json::object();
  document["account"] = JsonText(l.account->GetName());
  document["statementDate"] = FormatIsoDate(l.statement.date);
  document["statementBalance"] = JsonAmount(l.statement.balance);
  document["resolvedBalance"] = JsonAmount(l.resolvedBalance);
  document["difference"] = JsonAmount(l.difference);
  document["unresolved"] = std::move(entries);
  document["suggestions"] = std::move(suggestions);
  document["resolvedSinceLast"] = l.resolvedSinceLast;
  document["finished"] =
      outcome.finished ? ReconciliationRecordJson(*outcome.finished) : Json(nullptr);
  return document;
}

}  // namespace folvant::render
