// The register: its rows by ranges, its filter, suggestions, and the entries added, changed,
// voided, deleted, resolved and transferred.

#include "app/render/EntryOutput.h"
#include "app/web/ApiSupport.h"
#include "folvant/book/Entries.h"
#include "folvant/book/RegisterView.h"
#include "folvant/book/Types.h"
#include "folvant/filters/FilterCodes.h"
#include "folvant/filters/ZELMFilter.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountFolder.h"
#include "folvant/platform/CivilDate.h"

namespace folvant::app::web {
namespace {

Json FilterJson(const RegisterFilterWords& f) {
  return Json{{"active", f.active},
              {"field", f.field},
              {"search", JsonText(f.search)},
              {"dates", f.dates},
              {"from", f.from ? Json(platform::FormatIsoDate(*f.from)) : Json(nullptr)},
              {"to", f.to ? Json(platform::FormatIsoDate(*f.to)) : Json(nullptr)},
              {"resolved", f.resolved},
              {"taxDeductible", f.taxDeductible},
              {"line", JsonText(f.line)}};
}

Json RowJson(const RegisterRow& row) {
  return Json{{"number", row.entry != nullptr ? Json(row.entry->GetNumber()) : Json(nullptr)},
              {"date", platform::FormatIsoDate(row.date)},
              {"checkNumber", row.checkNumber ? Json(*row.checkNumber) : Json(nullptr)},
              {"type", JsonText(row.type)},
              {"toFrom", JsonText(row.toFrom)},
              {"description", JsonText(row.description)},
              {"category", JsonText(row.category)},
              {"resolved", row.resolved},
              {"void", row.isVoid},
              {"amount", JsonAmount(row.amount)},
              {"balance", JsonAmount(row.balance)}};
}

}  // namespace

void Api::RegisterEntries(httplib::Server& server) {
  // A range of the register's rows: ?account=NAME&offset=N&limit=M (at most 1,000 rows); with
  // &tail=1 the rows from the last offset that is a multiple of the limit and leaves at least
  // the limit's rows to the end, through the end (up to twice the limit), so that the page that
  // opens on the newest entries needs one call even when the last range holds a few rows.
  server.Get("/api/register",
             Read([](Book& book, const Request& request, Refusal& refusal) -> std::optional<Json> {
               if (!request.has_param("account"))
                 return refusal = Bad("\"account\" is missing"), std::nullopt;
               const auto offset = Count(request, "offset", 0, refusal);
               const auto limit = Count(request, "limit", 200, refusal);
               if (!offset || !limit) return std::nullopt;
               RegisterQuery query;
               query.account = request.get_param_value("account");
               if (request.has_param("sort")) {
                 const auto sort = WordCode(RegisterSortWords(), request.get_param_value("sort"));
                 if (!sort) return refusal = Bad("\"sort\" is not an order"), std::nullopt;
                 query.sort = static_cast<RegisterSort>(*sort);
               }
               query.descending = request.get_param_value("descending") == "1";
               query.folder = request.get_param_value("folder");
               query.smartFolder = request.get_param_value("smartFolder");
               auto view = ShowRegister(book, query);
               if (!view) return refusal = RefusalOf(view.error()), std::nullopt;
               Json rows = Json::array();
               std::size_t first = std::min(*offset, view->size());
               std::size_t count = std::min<std::size_t>(*limit, 1000);
               if (request.get_param_value("tail") == "1" && count > 0) {
                 first = view->size() > count ? (view->size() - count) / count * count : 0;
                 count *= 2;
               }
               const std::size_t last = std::min(view->size(), first + count);
               for (std::size_t i = first; i < last; ++i) rows.push_back(RowJson(view->row(i)));
               Json folders = Json::array(), smartFolders = Json::array();
               for (const auto& folder : view->account->folders()) {
                 folders.push_back(JsonText(folder->name()));
               }
               for (const auto& folder : view->account->smartFolders()) {
                 smartFolders.push_back(JsonText(folder->name()));
               }
               return Json{{"account", JsonText(view->account->GetName())},
                           {"currency", JsonText(view->currency)},
                           {"filter", FilterJson(view->filter)},
                           {"folders", std::move(folders)},
                           {"smartFolders", std::move(smartFolders)},
                           {"total", view->size()},
                           {"offset", first},
                           {"rows", std::move(rows)},
                           {"balances", Json{{"current", JsonAmount(view->balance)},
                                             {"today", JsonAmount(view->todaysBalance)},
                                             {"resolved", JsonAmount(view->resolvedBalance)}}}};
             }));

  // The register's filter, kept in the account as the command line keeps it: {account, reset,
  // search, field, dates (a range's words, or FROM..TO), resolved and taxDeductible ("all",
  // "only", "not")}.
  server.Post(
      "/api/register/filter",
      Change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
        Fields fields(body);
        RegisterQuery query;
        query.account = fields.Text("account", true).value_or("");
        query.filter.reset = fields.Flag("reset").value_or(false);
        query.filter.search = fields.Text("search");
        if (const auto field = fields.Text("field")) {
          query.filter.field = WordCode(RegisterSearchFields(), *field);
          if (!query.filter.field) return refusal = Bad("\"field\" is not a field"), std::nullopt;
        }
        if (const auto dates = fields.Text("dates")) {
          const std::size_t dots = dates->find("..");
          std::int32_t from = 0, to = 0;
          if (dots != std::string::npos && platform::ParseIsoDate(dates->substr(0, dots), from) &&
              platform::ParseIsoDate(dates->substr(dots + 2), to) && from <= to) {
            query.filter.dates = kShowCustomDates;
            query.filter.from = from;
            query.filter.to = to;
          } else if (!(query.filter.dates = WordCode(RegisterDateRanges(), *dates))) {
            return refusal = Bad("\"dates\" is not a date range"), std::nullopt;
          }
        }
        const std::pair<const char*, std::array<std::int32_t, 3>> flags[] = {
            {"resolved", {kShowResolvedAndUnresolved, kShowResolvedOnly, kShowUnresolvedOnly}},
            {"taxDeductible",
             {kShowTaxDeductibleAndNot, kShowTaxDeductibleOnly, kShowNotTaxDeductibleOnly}}};
        for (const auto& [key, codes] : flags) {
          const std::optional<std::string> word = fields.Text(key);
          if (!word) continue;
          std::optional<std::int32_t>& target = std::string_view(key) == "resolved"
                                                    ? query.filter.resolved
                                                    : query.filter.taxDeductible;
          if (*word == "all")
            target = codes[0];
          else if (*word == "only")
            target = codes[1];
          else if (*word == "not")
            target = codes[2];
          else
            return refusal = Bad(std::string("\"") + key + "\" is all, only or not"), std::nullopt;
        }
        if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
        auto view = ShowRegister(book, query);
        if (!view) return refusal = RefusalOf(view.error()), std::nullopt;
        return Json{{"account", JsonText(view->account->GetName())},
                    {"filter", FilterJson(view->filter)},
                    {"total", view->size()}};
      }));

  server.Get("/api/suggest",
             Read([](Book& book, const Request& request, Refusal& refusal) -> std::optional<Json> {
               const std::string which = request.get_param_value("which");
               if (which != "to" && which != "from" && which != "description") {
                 return refusal = Bad("\"which\" must be to, from or description"), std::nullopt;
               }
               auto list = Suggestions(book, request.get_param_value("account"), which,
                                       request.get_param_value("prefix"));
               if (!list) return refusal = RefusalOf(list.error()), std::nullopt;
               Json texts = Json::array();
               for (const std::string& text : list->texts) texts.push_back(JsonText(text));
               return Json{{"suggestions", std::move(texts)}};
             }));

  server.Get("/api/categories",
             Read([](Book& book, const Request&, Refusal&) -> std::optional<Json> {
               std::vector<std::string> names;
               for (const auto& category : book.allCategories())
                 names.push_back(category->fullName());
               std::sort(names.begin(), names.end());
               Json list = Json::array();
               for (const std::string& name : names) list.push_back(JsonText(name));
               return Json{{"categories", std::move(list)}};
             }));

  // The account's entry types: ?account=NAME.
  server.Get("/api/types",
             Read([](Book& book, const Request& request, Refusal& refusal) -> std::optional<Json> {
               auto listing = ListTypes(book, request.get_param_value("account"));
               if (!listing) return refusal = RefusalOf(listing.error()), std::nullopt;
               Json types = Json::array();
               for (const TypeLine& t : listing->types) {
                 types.push_back(Json{{"name", JsonText(t.name)},
                                      {"check", t.isCheck},
                                      {"deposit", t.isDeposit},
                                      {"default", t.isDefault}});
               }
               return Json{{"account", JsonText(listing->account)}, {"types", std::move(types)}};
             }));

  // One entry with all its fields and line items: ?account=NAME&number=N.
  server.Get("/api/entry",
             Read([](Book& book, const Request& request, Refusal& refusal) -> std::optional<Json> {
               const auto number = Count(request, "number", 0, refusal);
               if (!number) return std::nullopt;
               if (*number < 1 || *number > 2'000'000'000) {
                 return refusal = Bad("\"number\" is an entry's number"), std::nullopt;
               }
               auto entry = ShowEntry(book, request.get_param_value("account"),
                                      static_cast<std::int32_t>(*number));
               if (!entry) return refusal = RefusalOf(entry.error()), std::nullopt;
               return Json{{"entry", render::EntryJson(*entry)}};
             }));

  // A new entry: the entry fields (EntryFieldsOf) with "account", "newCategory": true to make a
  // category the book does not have, and "allowDuplicateCheck": true to enter a check number the
  // account has already.
  server.Post("/api/entries",
              Change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                const std::optional<std::string> account = fields.Text("account", true);
                if (!body.contains("splits")) fields.Amount("amount", true);
                EntryFields entry = EntryFieldsOf(fields);
                if (entry.splits) entry.amount.reset();  // the line items' total
                EntryOptions options;
                options.newCategory = fields.Flag("newCategory").value_or(false);
                options.allowDuplicateCheck = fields.Flag("allowDuplicateCheck").value_or(false);
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                auto added = AddEntry(book, *account, entry, options);
                if (!added) return refusal = RefusalOf(added.error()), std::nullopt;
                return ChangeJson(*added);
              }));

  server.Post("/api/entries/edit",
              Change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                const std::optional<std::string> account = fields.Text("account", true);
                const std::optional<std::int32_t> number = fields.Integer("number", true);
                EntryFields entry = EntryFieldsOf(fields);
                EntryOptions options;
                options.newCategory = fields.Flag("newCategory").value_or(false);
                options.allowDuplicateCheck = fields.Flag("allowDuplicateCheck").value_or(false);
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                auto edited = EditEntry(book, *account, *number, entry, options);
                if (!edited) return refusal = RefusalOf(edited.error()), std::nullopt;
                return ChangeJson(*edited);
              }));

  using EntryOperation = BookResult<EntryChange> (*)(Book&, std::string_view, std::int32_t);
  for (const auto& [path, operation] :
       {std::pair<const char*, EntryOperation>{"/api/entries/void", &VoidEntry},
        {"/api/entries/unvoid", &UnvoidEntry},
        {"/api/entries/delete", &DeleteEntry}}) {
    server.Post(path, Change([operation = operation](Book& book, const Json& body,
                                                     Refusal& refusal) -> std::optional<Json> {
                  Fields fields(body);
                  const std::optional<std::string> account = fields.Text("account", true);
                  const std::optional<std::int32_t> number = fields.Integer("number", true);
                  if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                  auto done = operation(book, *account, *number);
                  if (!done) return refusal = RefusalOf(done.error()), std::nullopt;
                  return ChangeJson(*done);
                }));
  }

  server.Post("/api/entries/resolve",
              Change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                const std::optional<std::string> account = fields.Text("account", true);
                const std::vector<std::int32_t> numbers = fields.Integers("numbers");
                const bool resolved = fields.Flag("resolved").value_or(true);
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                auto done = resolved ? ResolveEntries(book, *account, numbers)
                                     : UnresolveEntries(book, *account, numbers);
                if (!done) return refusal = RefusalOf(done.error()), std::nullopt;
                Json changed = Json::array();
                for (std::int32_t n : done->changed) changed.push_back(n);
                return Json{{"account", JsonText(done->account->GetName())},
                            {"changed", std::move(changed)},
                            {"resolvedBalance", JsonAmount(done->resolvedBalance)}};
              }));

  server.Post("/api/transfer",
              Change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                TransferRequest transfer;
                transfer.from = fields.Text("from", true).value_or("");
                transfer.to = fields.Text("to", true).value_or("");
                transfer.amount = fields.Amount("amount", true).value_or(0.0);
                transfer.date = fields.Date("date");
                transfer.description = fields.Text("description").value_or("");
                transfer.toAmount = fields.Amount("toAmount");
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                auto done = Transfer(book, transfer);
                if (!done) return refusal = RefusalOf(done.error()), std::nullopt;
                return Json{{"from", Json{{"account", JsonText(done->from->GetName())},
                                          {"entry", render::EntryJson(done->debit)},
                                          {"balance", JsonAmount(done->fromBalance)}}},
                            {"to", Json{{"account", JsonText(done->to->GetName())},
                                        {"entry", render::EntryJson(done->deposit)},
                                        {"balance", JsonAmount(done->toBalance)}}}};
              }));
}

}  // namespace folvant::app::web
