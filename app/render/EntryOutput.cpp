#include "app/render/EntryOutput.h"

#include <vector>

#include "app/render/AmountText.h"
#include "app/render/Table.h"
#include "folvant/platform/CivilDate.h"

namespace folvant::render {

using platform::FormatIsoDate;
using render::Align;

void AppendEntryText(std::string& out, const EntryDetails& e, const LVCurrency& currency) {
  const render::AmountWriter amounts(currency);
  render::Table fields;
  fields.AddFitColumn("", Align::kLeft);
  fields.AddFitColumn("", Align::kLeft);
  auto add = [&fields](const char* name, const std::string& value) {
    if (!value.empty()) fields.AddRow({name, value});
  };
  add("Entry:", std::to_string(e.number));
  add("Date:", FormatIsoDate(e.date));
  if (e.checkNumber) add("Check:", std::to_string(*e.checkNumber));
  add("Amount:", amounts.Text(e.amount) + (e.kind.empty() ? "" : " (" + e.kind + ")"));
  if (e.exchangedAmount)
    add("Other currency:", render::PlainAmount(*e.exchangedAmount) + " " + e.exchangedCurrency);
  add("To/From:", e.toFrom);
  add("Description:", e.description);
  add("Type:", e.type);
  add("Category:", e.category);
  add("Resolved:", e.resolved ? "yes" : "no");
  if (e.taxDeductible) add("Tax-deductible:", "yes");
  if (e.isVoid) add("Void:", "yes");
  add("Notes:", e.notes);
  if (e.linked) {
    add("Transfer:", "entry " + std::to_string(e.linked->number) + " of \"" + e.linked->account +
                         "\"" + (e.linked->found ? "" : " (missing)"));
  }
  add("Running balance:", amounts.Text(e.runningBalance));
  fields.Write(out);
  if (e.splits.empty()) return;
  out += "Split:\n";
  render::Table items;
  items.AddFitColumn("  Category", Align::kLeft);
  items.AddFitColumn("Description", Align::kLeft);
  items.AddFitColumn("Amount", Align::kRight);
  for (const auto& line : e.splits) {
    items.AddRow({"  " + line.category, line.description, amounts.Text(line.amount)});
  }
  items.Write(out);
}

render::Json SplitsJson(const std::vector<EntryDetails::Line>& lines) {
  using render::Json;
  using render::JsonText;
  Json splits = Json::array();
  for (const auto& line : lines) {
    Json item = Json::object();
    item["category"] = JsonText(line.category);
    item["description"] = JsonText(line.description);
    item["toFrom"] = JsonText(line.toFrom);
    item["amount"] = render::JsonAmount(line.amount);
    splits.push_back(std::move(item));
  }
  return splits;
}

render::Json EntryJson(const EntryDetails& e) {
  using render::Json;
  using render::JsonText;
  Json j = Json::object();
  j["number"] = e.number;
  j["date"] = FormatIsoDate(e.date);
  j["checkNumber"] = e.checkNumber ? Json(*e.checkNumber) : Json(nullptr);
  j["kind"] = e.kind;
  j["type"] = JsonText(e.type);
  j["category"] = JsonText(e.category);
  j["toFrom"] = JsonText(e.toFrom);
  j["description"] = JsonText(e.description);
  j["notes"] = JsonText(e.notes);
  j["amount"] = render::JsonAmount(e.amount);
  j["resolved"] = e.resolved;
  j["taxDeductible"] = e.taxDeductible;
  j["void"] = e.isVoid;
  j["splits"] = SplitsJson(e.splits);
  if (e.linked) {
    Json link = Json::object();
    link["account"] = JsonText(e.linked->account);
    link["number"] = e.linked->number;
    link["found"] = e.linked->found;
    j["linked"] = std::move(link);
  } else {
    j["linked"] = nullptr;
  }
  j["exchangedAmount"] = e.exchangedAmount ? render::JsonAmount(*e.exchangedAmount) : Json(nullptr);
  j["exchangedCurrency"] = e.exchangedAmount ? Json(e.exchangedCurrency) : Json(nullptr);
  j["runningBalance"] = render::JsonAmount(e.runningBalance);
  return j;
}

render::Json LinkedJson(const std::optional<LinkedChange>& linked) {
  if (!linked) return nullptr;
  render::Json j = render::Json::object();
  j["account"] = render::JsonText(linked->account);
  j["number"] = linked->number;
  j["what"] = linked->what;
  return j;
}

std::string LinkedLine(const LinkedChange& linked) {
  return "The transfer's other side, entry " + std::to_string(linked.number) + " of \"" +
         linked.account + "\", " + linked.what + ".\n";
}

}  // namespace folvant::render
