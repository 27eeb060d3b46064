// Summaries: an account's saved summaries and their reports, with the chart the summary command
// draws.

#include <algorithm>
#include <iterator>
#include <utility>

#include "app/render/SummaryChart.h"
#include "app/web/ApiSupport.h"
#include "folvant/book/Summaries.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/platform/CivilDate.h"
#include "folvant/values/LVCurrency.h"
#include "folvant/values/ZELMUtilities.h"

namespace folvant::app::web {
namespace {

// The three-way choices of a summary: "only" entries that are so, "not" those that are not,
// "all".
constexpr const char* kChoices[] = {"only", "not", "all"};

Json DefinitionJson(const SummaryDefinition& d) {
  return Json{{"name", JsonText(d.name)},
              {"range", JsonText(d.range)},
              {"period", JsonText(d.period)},
              {"debits", d.debits},
              {"deposits", d.deposits},
              {"resolved", kChoices[d.resolved]},
              {"taxDeductible", kChoices[d.taxDeductible]},
              {"checks", kChoices[d.checks]},
              {"filterField", d.filter ? JsonText(d.filterField) : Json(nullptr)},
              {"filterText", d.filter ? JsonText(d.filterText) : Json(nullptr)},
              {"subcategoriesInParents", d.subcategoriesInParents},
              {"selected", d.selected}};
}

// The options a body sets: {newName, range, period, debits, deposits, resolved, taxDeductible,
// checks (only, not or all), filterField, filterText ("" turns the filter off),
// subcategoriesInParents}.
std::optional<SummaryOptions> OptionsOf(Fields& fields, Refusal& refusal) {
  SummaryOptions options;
  options.name = fields.Text("newName");
  if (const auto range = fields.Text("range")) {
    if (!(options.range = ReadSummaryRange(*range))) {
      return refusal = Bad("\"range\" is not a range"), std::nullopt;
    }
  }
  if (const auto period = fields.Text("period")) {
    if ((options.period = ReadSummaryPeriod(*period)) < 0) {
      return refusal = Bad("\"period\" is not a period"), std::nullopt;
    }
  }
  options.debits = fields.Flag("debits");
  options.deposits = fields.Flag("deposits");
  for (const auto& [key, target] : {std::pair{"resolved", &options.resolved},
                                    {"taxDeductible", &options.taxDeductible},
                                    {"checks", &options.checks}}) {
    const std::optional<std::string> word = fields.Text(key);
    if (!word) continue;
    const auto it = std::find(std::begin(kChoices), std::end(kChoices), *word);
    if (it == std::end(kChoices)) {
      return refusal = Bad(std::string("\"") + key + "\" is only, not or all"), std::nullopt;
    }
    *target = static_cast<std::int32_t>(it - std::begin(kChoices));
  }
  if (const auto text = fields.Text("filterText")) {
    const std::int32_t field = ReadSummaryFilterField(fields.Text("filterField").value_or("any"));
    if (field < 0) return refusal = Bad("\"filterField\" is not a field"), std::nullopt;
    options.filter = std::pair{field, *text};
  }
  options.subcategoriesInParents = fields.Flag("subcategoriesInParents");
  if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
  return options;
}

}  // namespace

void Api::RegisterSummaries(httplib::Server& server) {
  server.Get("/api/summaries",
             Read([](Book& book, const Request& request, Refusal& refusal) -> std::optional<Json> {
               auto listing = ListSummaries(book, request.get_param_value("account"));
               if (!listing) return refusal = RefusalOf(listing.error()), std::nullopt;
               Json summaries = Json::array();
               for (const SummaryDefinition& d : listing->summaries) {
                 summaries.push_back(DefinitionJson(d));
               }
               return Json{{"account", JsonText(listing->account->GetName())},
                           {"summaries", std::move(summaries)}};
             }));

  // A summary added, changed, removed or made the one shown first: {account, name} and, to add
  // or change, the options to set (as OptionsOf reads them).
  using SummaryOperation = BookResult<SummaryChange> (*)(Book&, std::string_view,
                                                         const std::string&, const SummaryOptions&);
  for (const auto& [path, operation] :
       {std::pair<const char*, SummaryOperation>{"/api/summaries/add", &AddSummary},
        {"/api/summaries/edit", &EditSummary},
        {"/api/summaries/remove",
         [](Book& book, std::string_view account, const std::string& name,
            const SummaryOptions&) { return RemoveSummary(book, account, name); }},
        {"/api/summaries/select",
         [](Book& book, std::string_view account, const std::string& name,
            const SummaryOptions&) { return SelectSummary(book, account, name); }}}) {
    server.Post(path, Change([operation = operation](Book& book, const Json& body,
                                                     Refusal& refusal) -> std::optional<Json> {
                  Fields fields(body);
                  const std::optional<std::string> account = fields.Text("account", true);
                  const std::optional<std::string> name = fields.Text("name", true);
                  std::optional<SummaryOptions> options = OptionsOf(fields, refusal);
                  if (!options) return std::nullopt;
                  auto done = operation(book, *account, *name, *options);
                  if (!done) return refusal = RefusalOf(done.error()), std::nullopt;
                  return Json{{"account", JsonText(done->account->GetName())},
                              {"summary", DefinitionJson(done->summary)}};
                }));
  }

  // A report: ?account=NAME[&name=SUMMARY][&range=WORDS][&period=month]; with the same
  // pictures as `summary show --svg`.
  server.Get("/api/summary",
             Read([](Book& book, const Request& request, Refusal& refusal) -> std::optional<Json> {
               SummaryOptions overrides;
               if (request.has_param("range")) {
                 overrides.range = ReadSummaryRange(request.get_param_value("range"));
                 if (!overrides.range)
                   return refusal = Bad("\"range\" is not a range"), std::nullopt;
               }
               if (request.has_param("period")) {
                 const std::int32_t period = ReadSummaryPeriod(request.get_param_value("period"));
                 if (period < 0) return refusal = Bad("\"period\" is not a period"), std::nullopt;
                 overrides.period = period;
               }
               std::optional<std::string> name;
               if (request.has_param("name")) name = request.get_param_value("name");
               auto result =
                   ShowSummary(book, request.get_param_value("account"), name, overrides, false);
               if (!result) return refusal = RefusalOf(result.error()), std::nullopt;
               const ZELMSummaryReport& r = result->report;
               Json periods = Json::array();
               for (const render::PeriodValues& p : render::PeriodValuesOf(*result)) {
                 periods.push_back(Json{{"label", p.label},
                                        {"deposits", JsonAmount(p.deposits)},
                                        {"debits", JsonAmount(p.debits)},
                                        {"net", JsonAmount(p.net)}});
               }
               Json categories = Json::array();
               std::vector<std::pair<const ZELMCategorySubtotal*, int>> nodes;
               render::FlattenCategories(r.categoriesSubtotals, 0, nodes);
               for (const auto& [node, depth] : nodes) {
                 categories.push_back(Json{{"name", JsonText(node->subtotalName)},
                                           {"amount", JsonAmount(node->amount)},
                                           {"depth", depth}});
               }
               auto day = [](const platform::LocalTime& t) {
                 return platform::FormatIsoDate(NSCalendarDateToDateNumber(t));
               };
               return Json{{"title", JsonText(result->title)},
                           {"summary", JsonText(result->definition.name)},
                           {"currency", JsonText(result->currency->code())},
                           {"startDate", day(r.startDate)},
                           {"endDate", day(r.endDate)},
                           {"startBalance", JsonAmount(r.startBalance)},
                           {"endBalance", JsonAmount(r.endBalance)},
                           {"depositsTotal", JsonAmount(r.depositsTotal)},
                           {"debitsTotal", JsonAmount(r.debitsTotal)},
                           {"total", JsonAmount(r.total)},
                           {"periods", std::move(periods)},
                           {"categories", std::move(categories)},
                           {"svg", render::SummaryResultSvg(*result)}};
             }));
}

}  // namespace folvant::app::web
