#include "app/web/ApiSupport.h"

#include <charconv>
#include <system_error>

#include "app/render/EntryOutput.h"
#include "folvant/model/ZELMAccount.h"

namespace folvant::app::web {

using Kind = BookError::Kind;

std::string ErrorJson(std::string_view message) {
  return render::JsonDump(Json{{"error", JsonText(message)}});
}

Refusal Bad(std::string message) { return {400, std::move(message), {}}; }

Refusal RefusalOf(const BookError& error) {
  switch (error.kind) {
    case Kind::kNotFound:
      return {404, error.message, "notFound"};
    case Kind::kExists:
      return {409, error.message, "exists"};
    case Kind::kInvalid:
      return {400, error.message, "invalid"};
    case Kind::kBusy:
      return {503, error.message, "busy"};
    case Kind::kDamaged:
      return {409, error.message, "damaged"};
    case Kind::kLocked:
      return {403, error.message, "locked"};
    case Kind::kReadOnly:
    case Kind::kFailed:
      break;
  }
  return {500, error.message, "failed"};
}

void Send(Response& response, const Json& document) {
  response.set_header("Cache-Control", "no-store");
  response.set_content(render::JsonDump(document), "application/json");
}

void Send(Response& response, const Refusal& refusal) {
  response.status = refusal.status;
  response.set_header("Cache-Control", "no-store");
  Json document{{"error", JsonText(refusal.message)}};
  if (!refusal.kind.empty()) document["kind"] = refusal.kind;
  response.set_content(render::JsonDump(document), "application/json");
}

std::optional<Json> BodyOf(const Request& request, Refusal& refusal) {
  Json body = Json::parse(request.body, nullptr, false);
  if (body.is_discarded() || !body.is_object()) {
    refusal = Bad("the request's body is not a JSON object");
    return std::nullopt;
  }
  return body;
}

std::optional<std::size_t> Count(const Request& request, const char* key, std::size_t fallback,
                                 Refusal& refusal) {
  if (!request.has_param(key)) return fallback;
  const std::string text = request.get_param_value(key);
  std::size_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) {
    refusal = Bad(std::string("\"") + key + "\" must be a whole number");
    return std::nullopt;
  }
  return value;
}

std::optional<std::int32_t> WordCode(const std::vector<RegisterWord>& words,
                                     std::string_view word) {
  for (const RegisterWord& w : words) {
    if (word == w.word) return w.code;
  }
  return std::nullopt;
}

Json ChangeJson(const EntryChange& change) {
  Json remembered = Json::array();
  for (const std::string& field : change.remembered) remembered.push_back(JsonText(field));
  return Json{{"account", JsonText(change.account->GetName())},
              {"entry", render::EntryJson(change.entry)},
              {"remembered", std::move(remembered)},
              {"linked", render::LinkedJson(change.linked)},
              {"balance", JsonAmount(change.balance)}};
}

EntryFields EntryFieldsOf(Fields& fields) {
  EntryFields entry;
  entry.date = fields.Date("date");
  entry.amount = fields.Amount("amount");
  entry.check = fields.Flag("check");
  entry.checkNumber = fields.Integer("checkNumber");
  if (entry.checkNumber) entry.check = true;
  entry.toFrom = fields.Text("toFrom");
  entry.description = fields.Text("description");
  entry.type = fields.Text("type");
  entry.category = fields.Text("category");
  entry.notes = fields.Text("notes");
  entry.resolved = fields.Flag("resolved");
  entry.taxDeductible = fields.Flag("taxDeductible");
  entry.splits = fields.Splits("splits");
  return entry;
}

}  // namespace folvant::app::web
