// Summaries: an account's saved summaries and their reports, with the chart the summary command
// draws.

#include "app/render/SummaryChart.h"
#include "app/web/ApiSupport.h"
#include "folvant/book/Summaries.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/platform/CivilDate.h"
#include "folvant/values/LVCurrency.h"
#include "folvant/values/ZELMUtilities.h"

namespace folvant::app::web {

void Api::RegisterSummaries(httplib::Server& server) {
  server.Get("/api/summaries",
             Read([](Book& book, const Request& request, Refusal& refusal) -> std::optional<Json> {
               auto listing = ListSummaries(book, request.get_param_value("account"));
               if (!listing) return refusal = RefusalOf(listing.error()), std::nullopt;
               Json summaries = Json::array();
               for (const SummaryDefinition& d : listing->summaries) {
                 summaries.push_back(Json{{"name", JsonText(d.name)},
                                          {"range", JsonText(d.range)},
                                          {"period", JsonText(d.period)},
                                          {"selected", d.selected}});
               }
               return Json{{"account", JsonText(listing->account->GetName())},
                           {"summaries", std::move(summaries)}};
             }));

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
