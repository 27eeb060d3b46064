#include "app/render/ImportOutput.h"

#include <string>

#include "folvant/model/ZELMAccount.h"
#include "folvant/platform/CivilDate.h"

namespace folvant::render {

using platform::FormatIsoDate;

Json ImportReviewJson(const ImportReview& r) {
  Json rows = Json::array();
  for (const ImportRow& row : r.rows) {
    Json j = Json::object();
    j["line"] = row.line;
    j["date"] = row.date != 0 ? Json(FormatIsoDate(row.date)) : Json(nullptr);
    j["amount"] = JsonAmount(row.amount);
    j["toFrom"] = JsonText(row.record.toFrom.value_or(""));
    j["description"] = JsonText(row.record.description.value_or(""));
    j["type"] = JsonText(row.type);
    j["newType"] = row.newType;
    j["category"] = JsonText(row.category);
    j["newCategory"] = row.newCategory;
    j["status"] = std::string(ImportStatusName(row.status));
    j["match"] = row.match ? Json(*row.match) : Json(nullptr);
    j["matchAccount"] = row.matchAccount.empty() ? Json(nullptr) : JsonText(row.matchAccount);
    j["problem"] = row.problem.empty() ? Json(nullptr) : JsonText(row.problem);
    j["bankID"] = row.record.fitID ? JsonText(*row.record.fitID) : Json(nullptr);
    j["added"] = row.added ? Json(*row.added) : Json(nullptr);
    rows.push_back(std::move(j));
  }
  Json counts = Json::object();
  for (ImportStatus s :
       {ImportStatus::kNew, ImportStatus::kDuplicate, ImportStatus::kPossibleDuplicate,
        ImportStatus::kTransfer, ImportStatus::kUnreadable}) {
    const auto it = r.counts.find(s);
    counts[std::string(ImportStatusName(s))] = it == r.counts.end() ? 0 : it->second;
  }
  Json newTypes = Json::array(), newCategories = Json::array(), fileAccounts = Json::array();
  for (const std::string& t : r.newTypes) newTypes.push_back(JsonText(t));
  for (const std::string& c : r.newCategories) newCategories.push_back(JsonText(c));
  for (const std::string& a : r.fileAccounts) fileAccounts.push_back(JsonText(a));
  Json document = Json::object();
  document["account"] = JsonText(r.account->GetName());
  document["file"] = JsonText(r.file);
  document["format"] = std::string(ImportFormatName(r.format));
  document["encoding"] = r.encoding.empty() ? Json(nullptr) : JsonText(r.encoding);
  document["dateFormat"] = r.dateFormat.empty() ? Json(nullptr) : JsonText(r.dateFormat);
  document["dateNote"] = r.dateNote.empty() ? Json(nullptr) : JsonText(r.dateNote);
  document["dateFormatGuessed"] = r.dateFormatGuessed;
  document["readNote"] = r.readNote.empty() ? Json(nullptr) : JsonText(r.readNote);
  document["fileAccounts"] = std::move(fileAccounts);
  document["fileAccount"] = r.fileAccount.empty() ? Json(nullptr) : JsonText(r.fileAccount);
  document["rows"] = std::move(rows);
  document["counts"] = std::move(counts);
  document["newTypes"] = std::move(newTypes);
  document["newCategories"] = std::move(newCategories);
  document["applied"] = r.applied;
  document["batch"] = r.applied && r.added > 0 ? Json(r.batch) : Json(nullptr);
  document["added"] = r.added;
  document["linked"] = r.linked;
  document["balance"] = JsonAmount(r.balance);
  return document;
}

}  // namespace folvant::render
