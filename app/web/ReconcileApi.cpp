// Reconciling an account with a bank statement.

#include "app/render/ReconcileOutput.h"
#include "app/web/ApiSupport.h"
#include "folvant/book/Reconcile.h"

namespace folvant::app::web {

void Api::RegisterReconcile(httplib::Server& server) {
  // Reconciling against a statement: {account, statementDate, statementBalance, resolve: [n],
  // unresolve: [n], finish}; answers with the listing after the change.
  server.Post("/api/reconcile",
              Change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                const std::optional<std::string> account = fields.Text("account", true);
                ReconcileRequest reconcile;
                const std::optional<std::int32_t> date = fields.Date("statementDate");
                const std::optional<double> balance = fields.Amount("statementBalance", true);
                if (!date && !fields.problem()) {
                  return refusal = Bad("\"statementDate\" is missing"), std::nullopt;
                }
                for (const auto& [key, list] : {std::pair{"resolve", &reconcile.resolve},
                                                {"unresolve", &reconcile.unresolve}}) {
                  if (body.contains(key)) *list = fields.Integers(key);
                }
                reconcile.finish = fields.Flag("finish").value_or(false);
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                reconcile.statement.date = *date;
                reconcile.statement.balance = *balance;
                auto outcome = Reconcile(book, *account, reconcile);
                if (!outcome) return refusal = RefusalOf(outcome.error()), std::nullopt;
                return render::ReconcileOutcomeJson(*outcome);
              }));
}

}  // namespace folvant::app::web
