// The accounts: their list with balances, a new account, an account's name and starting balance.

#include "app/web/ApiSupport.h"
#include "folvant/book/Accounts.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/values/LVCurrency.h"

namespace folvant::app::web {

void Api::RegisterAccounts(httplib::Server& server) {
  server.Get(
      "/api/accounts", Read([](Book& book, const Request&, Refusal&) -> std::optional<Json> {
        Json accounts = Json::array();
        for (const AccountListing& line : book.ListAccounts()) {
          Json account{{"number", line.number},
                       {"name", JsonText(line.name)},
                       {"currency", JsonText(line.currency)},
                       {"balance", line.balance ? JsonAmount(*line.balance) : Json(nullptr)},
                       {"todaysBalance", nullptr},
                       {"resolvedBalance", nullptr},
                       {"entries", line.entries},
                       {"locked", line.locked},
                       {"problem", line.problem.empty() ? Json(nullptr) : JsonText(line.problem)}};
          // A locked account opens only with the password its session gave.
          if (line.balance || line.locked) {
            if (auto loaded = book.FindAccount(line.name)) {
              account["balance"] = JsonAmount((*loaded)->GetBalance());
              account["todaysBalance"] = JsonAmount((*loaded)->GetTodaysBalance());
              account["resolvedBalance"] = JsonAmount((*loaded)->GetResolvedBalance());
              account["locked"] = false;
              account["problem"] = nullptr;
            }
          }
          accounts.push_back(std::move(account));
        }
        return Json{{"baseCurrency", JsonText(book.currency() ? book.currency()->code() : "")},
                    {"accounts", std::move(accounts)}};
      }));

  // A new account: {name, currency, startingBalance}.
  server.Post("/api/accounts",
              Change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                const std::optional<std::string> name = fields.Text("name", true);
                const std::optional<std::string> currency = fields.Text("currency");
                const double starting = fields.Amount("startingBalance").value_or(0.0);
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                std::shared_ptr<LVCurrency> chosen;
                if (currency && !currency->empty()) {
                  auto found = book.RegisterCurrency(*currency);
                  if (!found) return refusal = RefusalOf(found.error()), std::nullopt;
                  chosen = *found;
                }
                auto added = book.AddAccount(*name, chosen, starting);
                if (!added) return refusal = RefusalOf(added.error()), std::nullopt;
                return Json{{"number", (*added)->GetNumber()},
                            {"name", JsonText((*added)->GetName())},
                            {"currency", JsonText((*added)->currency()->code())},
                            {"balance", JsonAmount((*added)->GetBalance())}};
              }));

  // Changes an account: {account, name, startingBalance, startingCheck, notes}.
  server.Post("/api/accounts/edit",
              Change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                const std::optional<std::string> account = fields.Text("account", true);
                AccountEdit edit;
                edit.name = fields.Text("name");
                edit.startingBalance = fields.Amount("startingBalance");
                edit.startingCheck = fields.Integer("startingCheck");
                edit.notes = fields.Text("notes");
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                auto edited = EditAccount(book, *account, edit);
                if (!edited) return refusal = RefusalOf(edited.error()), std::nullopt;
                return Json{{"number", edited->number},
                            {"name", JsonText(edited->name)},
                            {"currency", JsonText(edited->currency)},
                            {"startingBalance", JsonAmount(edited->startingBalance)},
                            {"startingCheck", edited->startingCheck},
                            {"notes", JsonText(edited->notes)}};
              }));

  // Takes an account out of the book: {account, unlink}. Its file is kept beside the book under
  // another name; with unlink, transfers in other accounts that name it stay as plain entries.
  server.Post("/api/accounts/remove",
              Change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                const std::optional<std::string> account = fields.Text("account", true);
                const bool unlink = fields.Flag("unlink").value_or(false);
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                auto removed = RemoveAccount(book, *account, unlink);
                if (!removed) return refusal = RefusalOf(removed.error()), std::nullopt;
                Json in = Json::array();
                for (const std::string& name : removed->in) in.push_back(JsonText(name));
                return Json{{"name", JsonText(removed->name)},
                            {"keptAs", JsonText(removed->keptAs)},
                            {"unlinked", removed->unlinked},
                            {"in", std::move(in)}};
              }));

  // Gives an account a password, or with an empty one takes it away: {account, password}. Taking
  // it away needs the account opened with it in this session; the session that gives one keeps
  // the account open.
  server.Post("/api/accounts/password", [this](const Request& request, Response& response) {
    Refusal refusal;
    const std::optional<Json> body = BodyOf(request, refusal);
    if (!body) return Send(response, refusal);
    Fields fields(*body);
    const std::optional<std::string> account = fields.Text("account", true);
    const std::string password = fields.Text("password").value_or("");
    if (fields.problem()) return Send(response, *fields.problem());
    const std::string session = request.get_header_value(kSessionHeader);
    std::lock_guard lock(changes_);
    auto book = OpenForChange(session);
    if (!book) return Send(response, RefusalOf(book.error()));
    auto done = password.empty() ? UnlockAccount(**book, *account)
                                 : LockAccount(**book, *account, password);
    if (!done) return Send(response, RefusalOf(done.error()));
    if (std::optional<BookError> failed = (*book)->Save()) {
      return Send(response, RefusalOf(*failed));
    }
    {
      std::lock_guard kept(passwordsMutex_);
      if (password.empty()) {
        passwords_[session].erase(*done);
      } else {
        passwords_[session][*done] = password;
      }
    }
    Send(response, Json{{"account", JsonText(*done)}, {"locked", !password.empty()}});
  });
}

}  // namespace folvant::app::web
