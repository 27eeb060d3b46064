// `folvant serve` over real HTTP on 127.0.0.1: the token and the session cookie, the Host and
// Origin checks, the size limit, bad input, the calls the pages make, and several clients at once.
#include <algorithm>
#include <gtest/gtest.h>
#include <httplib.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "app/web/WebServer.h"
#include "folvant/book/Accounts.h"
#include "folvant/book/Book.h"
#include "folvant/model/ZELMAccount.h"
#include "tests/support/TestSupport.h"

namespace folvant::app::web {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

class WebServerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    base_ = testing::ScratchDir("folvant-web");
    fs::create_directories(base_);
    fs::copy(FOLVANT_SOURCE_DIR "/data/sample-book", base_ / "book", fs::copy_options::recursive);
    ServeOptions options;
    options.book = base_ / "book";
    options.port = 0;
    options.maxBody = 64 * 1024;
    server_ = std::make_unique<WebServer>(options);
    std::string error;
    ASSERT_TRUE(server_->Bind(error)) << error;
    thread_ = std::thread([this] { server_->Run(); });
    host_ = "127.0.0.1:" + std::to_string(server_->port());
  }
  void TearDown() override {
    if (server_) server_->Stop();
    if (thread_.joinable()) thread_.join();
    server_.reset();
    fs::remove_all(base_);
  }

  httplib::Client Client() const {
    httplib::Client client("127.0.0.1", server_->port());
    client.set_connection_timeout(5);
    client.set_read_timeout(10);
    return client;
  }
  // The session cookie, from a first visit with the token.
  std::string Session() {
    httplib::Client client = Client();
    const auto response = client.Get("/?token=" + server_->token());
    EXPECT_TRUE(response);
    if (!response) return {};
    EXPECT_EQ(response->status, 303);
    const std::string cookie = response->get_header_value("Set-Cookie");
    EXPECT_NE(cookie.find("HttpOnly"), std::string::npos);
    EXPECT_NE(cookie.find("SameSite=Strict"), std::string::npos);
    return cookie.substr(0, cookie.find(';'));
  }
  httplib::Headers Signed() {
    if (cookie_.empty()) cookie_ = Session();
    return {{"Cookie", cookie_}};
  }
  // The status and body of a call made with the session.
  std::pair<int, Json> Get(const std::string& path) {
    httplib::Client client = Client();
    const auto response = client.Get(path, Signed());
    if (!response) return {0, Json()};
    return {response->status, Json::parse(response->body, nullptr, false)};
  }
  std::pair<int, Json> Post(const std::string& path, const std::string& body) {
    httplib::Client client = Client();
    const auto response = client.Post(path, Signed(), body, "application/json");
    if (!response) return {0, Json()};
    return {response->status, Json::parse(response->body, nullptr, false)};
  }
  double Balance(const std::string& account) {
    const auto [status, document] = Get("/api/accounts");
    EXPECT_EQ(status, 200);
    for (const Json& a : document["accounts"]) {
      if (a["name"] == account) return a["balance"].get<double>();
    }
    ADD_FAILURE() << "no account " << account;
    return 0.0;
  }

  fs::path base_;
  std::unique_ptr<WebServer> server_;
  std::thread thread_;
  std::string host_;
  std::string cookie_;
};

TEST_F(WebServerTest, OnlyTheTokenOpensASession) {
  httplib::Client client = Client();
  auto response = client.Get("/api/status");
  ASSERT_TRUE(response);
  EXPECT_EQ(response->status, 401);
  response = client.Get("/");
  ASSERT_TRUE(response);
  EXPECT_EQ(response->status, 401);
  response = client.Get("/?token=" + std::string(server_->token().size(), '0'));
  ASSERT_TRUE(response);
  EXPECT_EQ(response->status, 401);
  EXPECT_TRUE(response->get_header_value("Set-Cookie").empty());
  response = client.Get("/api/status", {{"Cookie", "folvant_session=guess"}});
  ASSERT_TRUE(response);
  EXPECT_EQ(response->status, 401);

  const auto [status, document] = Get("/api/status");
  EXPECT_EQ(status, 200);
  EXPECT_TRUE(document["version"].is_string());
  response = client.Get("/", Signed());
  ASSERT_TRUE(response);
  EXPECT_EQ(response->status, 200);
  EXPECT_NE(response->body.find("<title>Folvant</title>"), std::string::npos);
  response = client.Get("/app.js", Signed());
  ASSERT_TRUE(response);
  EXPECT_EQ(response->get_header_value("Content-Type"), "text/javascript; charset=utf-8");
}

TEST_F(WebServerTest, OtherHostsAndOriginsAreRefused) {
  httplib::Client client = Client();
  httplib::Headers headers = Signed();
  headers.emplace("Host", "attacker.example:80");
  auto response = client.Get("/api/status", headers);
  ASSERT_TRUE(response);
  EXPECT_EQ(response->status, 403);
  // Not even the token is honoured under another host name (DNS rebinding).
  response = client.Get("/?token=" + server_->token(), {{"Host", "attacker.example"}});
  ASSERT_TRUE(response);
  EXPECT_EQ(response->status, 403);

  headers = Signed();
  headers.emplace("Origin", "http://attacker.example");
  response = client.Post("/api/entries", headers, R"({"account":"Checking","amount":-1})",
                         "application/json");
  ASSERT_TRUE(response);
  EXPECT_EQ(response->status, 403);
  headers = Signed();
  headers.emplace("Origin", "http://" + host_);
  response = client.Get("/api/status", headers);
  ASSERT_TRUE(response);
  EXPECT_EQ(response->status, 200);
}

TEST_F(WebServerTest, BadInputIsRefusedAndChangesNothing) {
  const std::string before = Get("/api/status").second["version"];
  const double balance = Balance("Checking");
  const std::pair<std::string, std::string> cases[] = {
      {"/api/entries", "{not json"},
      {"/api/entries", "[1, 2]"},
      {"/api/entries", R"({"amount": -5})"},
      {"/api/entries", R"({"account": "Checking"})"},
      {"/api/entries", R"({"account": "Checking", "amount": "lots"})"},
      {"/api/entries", R"({"account": "Checking", "amount": 1e300})"},
      {"/api/entries", R"({"account": "Checking", "amount": -5, "date": "2026-02-30"})"},
      {"/api/entries", R"({"account": "Checking", "amount": -5, "checkNumber": -3})"},
      {"/api/entries/void", R"({"account": "Checking", "number": "7"})"},
      {"/api/entries/resolve", R"({"account": "Checking", "numbers": []})"},
      {"/api/transfer", R"({"from": "Checking", "to": "Savings", "amount": null})"},
      {"/api/entries", R"({"account": "Checking", "splits": [{"amount": -5}]})"},
      {"/api/entries", R"({"account": "Checking", "splits": [{"amount": -5}, {"category": "x"}]})"},
  };
  for (const auto& [path, body] : cases) {
    const auto [status, document] = Post(path, body);
    EXPECT_EQ(status, 400) << path << " " << body;
    EXPECT_TRUE(document["error"].is_string()) << path << " " << body;
  }
  const auto [nowhere, missing] = Post("/api/entries", R"({"account": "Nowhere", "amount": -5})");
  EXPECT_EQ(nowhere, 404);
  EXPECT_EQ(missing["kind"], "notFound") << missing.dump();
  EXPECT_EQ(Post("/api/entries/void", R"({"account": "Checking", "number": 99999})").first, 404);
  EXPECT_EQ(Get("/api/register?account=Checking&offset=x").first, 400);
  EXPECT_EQ(Get("/api/nothing").first, 404);
  // A body over the limit.
  EXPECT_EQ(Post("/api/entries", std::string(100 * 1024, ' ')).first, 413);
  EXPECT_EQ(Get("/api/status").second["version"], before);
  EXPECT_DOUBLE_EQ(Balance("Checking"), balance);
}

TEST_F(WebServerTest, TheCallsOfTheRegisterPage) {
  auto [status, page] = Get("/api/register?account=Checking&offset=195&limit=3");
  ASSERT_EQ(status, 200);
  const std::size_t total = page["total"];
  EXPECT_EQ(page["rows"].size(), 3u);
  EXPECT_EQ(page["offset"], 195);
  const double balance = page["balances"]["current"];
  // The newest rows in one call: from a multiple of the limit, at least a limit's worth.
  auto [tailStatus, tail] = Get("/api/register?account=Checking&limit=50&tail=1");
  ASSERT_EQ(tailStatus, 200);
  const std::size_t tailOffset = tail["offset"];
  EXPECT_EQ(tailOffset % 50, 0u);
  EXPECT_EQ(tailOffset + tail["rows"].size(), total);
  EXPECT_GE(tail["rows"].size(), 50u);
  EXPECT_LT(tail["rows"].size(), 100u);

  // A check with the keyboard's fields; its payee fills in the rest from an earlier entry.
  auto [added, entry] = Post("/api/entries", R"({"account": "Checking", "date": "2026-07-14",
      "checkNumber": 5001, "toFrom": "Safeway", "amount": "-20.00"})");
  ASSERT_EQ(added, 200) << entry.dump();
  EXPECT_EQ(entry["entry"]["checkNumber"], 5001);
  EXPECT_EQ(entry["entry"]["category"], "Food:Groceries");
  EXPECT_DOUBLE_EQ(entry["balance"].get<double>(), balance - 20.0);
  const int number = entry["entry"]["number"];
  std::tie(status, page) = Get("/api/register?account=Checking&offset=0&limit=0");
  EXPECT_EQ(page["total"], total + 1);
  EXPECT_TRUE(page["rows"].empty());

  EXPECT_EQ(Post("/api/entries/edit", R"({"account": "Checking", "number": )" +
                                          std::to_string(number) + R"(, "amount": -25})")
                .first,
            200);
  auto [resolvedStatus, resolved] =
      Post("/api/entries/resolve",
           R"({"account": "Checking", "numbers": [)" + std::to_string(number) + "]}");
  EXPECT_EQ(resolvedStatus, 200);
  EXPECT_EQ(resolved["changed"], Json::array({number}));
  EXPECT_EQ(Post("/api/entries/void", R"({"account": "Checking", "number": )" +
                                          std::to_string(number) + "}")
                .first,
            200);
  EXPECT_DOUBLE_EQ(Balance("Checking"), balance);
  EXPECT_EQ(Post("/api/entries/delete", R"({"account": "Checking", "number": )" +
                                            std::to_string(number) + "}")
                .first,
            200);

  // A transfer changes both accounts.
  const double savings = Balance("Savings");
  auto [moved, transfer] = Post(
      "/api/transfer", R"({"from": "Checking", "to": "Savings", "amount": 100, "date": "2026-07-14"})");
  ASSERT_EQ(moved, 200) << transfer.dump();
  EXPECT_DOUBLE_EQ(Balance("Checking"), balance - 100);
  EXPECT_DOUBLE_EQ(Balance("Savings"), savings + 100);

  // An entry of line items, read back whole and its lines changed.
  auto [split, splitEntry] = Post("/api/entries", R"({"account": "Checking", "toFrom": "Hardware",
      "splits": [{"category": "Food:Groceries", "amount": -30},
                 {"category": "Auto:Fuel", "amount": -12.5}]})");
  ASSERT_EQ(split, 200) << splitEntry.dump();
  const std::string splitNumber = splitEntry["entry"]["number"].dump();
  auto [read, readEntry] = Get("/api/entry?account=Checking&number=" + splitNumber);
  ASSERT_EQ(read, 200);
  EXPECT_EQ(readEntry["entry"]["splits"].size(), 2u);
  EXPECT_EQ(readEntry["entry"]["amount"], -42.5);
  auto [resplit, resplitEntry] = Post("/api/entries/edit", R"({"account": "Checking", "number": )" +
                                                               splitNumber + R"(, "splits": [
      {"category": "Food:Groceries", "amount": -30}, {"category": "Auto:Fuel", "amount": -20}]})");
  ASSERT_EQ(resplit, 200) << resplitEntry.dump();
  EXPECT_EQ(resplitEntry["entry"]["amount"], -50.0);
  EXPECT_EQ(resplitEntry["entry"]["splits"][1]["amount"], -20.0);
  EXPECT_EQ(Get("/api/entry?account=Checking&number=0").first, 400);
  EXPECT_EQ(Get("/api/entry?account=Checking&number=99999").first, 404);

  auto [suggested, suggestions] = Get("/api/suggest?account=Checking&which=to&prefix=Saf");
  EXPECT_EQ(suggested, 200);
  EXPECT_EQ(suggestions["suggestions"], Json::array({"Safeway"}));
  // A category the book does not have is made only when asked for.
  const std::string vitamins = R"({"account": "Checking", "amount": -9, "category": "Health:Vitamins")";
  EXPECT_EQ(Post("/api/entries", vitamins + "}").first, 404);
  EXPECT_EQ(Post("/api/entries", vitamins + R"(, "newCategory": true})").second["entry"]["category"],
            "Health:Vitamins");

  auto [typed, types] = Get("/api/types?account=Checking");
  ASSERT_EQ(typed, 200);
  EXPECT_TRUE(std::any_of(types["types"].begin(), types["types"].end(), [](const Json& t) {
    return t["check"] == true && t["deposit"] == false;
  })) << types.dump();
  EXPECT_EQ(Get("/api/types?account=Nowhere").first, 404);
  auto [listed, categories] = Get("/api/categories");
  EXPECT_EQ(listed, 200);
  EXPECT_GT(categories["categories"].size(), 5u);

  // A check number in use: refused with the book's kind and no command-line hint, then entered
  // again when asked for.
  const std::string again = R"({"account": "Checking", "checkNumber": 1016, "amount": -1)";
  auto [usedStatus, used] = Post("/api/entries", again + "}");
  EXPECT_EQ(usedStatus, 409);
  EXPECT_EQ(used["kind"], "exists");
  EXPECT_EQ(used["error"].get<std::string>().find("--"), std::string::npos) << used.dump();
  EXPECT_EQ(Post("/api/entries", again + R"(, "allowDuplicateCheck": true})").first, 200);
}

TEST_F(WebServerTest, SummariesAndImports) {
  auto [listed, summaries] = Get("/api/summaries?account=Checking");
  ASSERT_EQ(listed, 200);
  EXPECT_GE(summaries["summaries"].size(), 12u);
  auto [shown, report] = Get("/api/summary?account=Checking&range=all&period=month");
  ASSERT_EQ(shown, 200) << report.dump();
  EXPECT_GT(report["periods"].size(), 6u);
  EXPECT_FALSE(report["categories"].empty());
  EXPECT_NE(report["svg"].get<std::string>().find("<svg"), std::string::npos);
  EXPECT_EQ(Get("/api/summary?account=Checking&period=fortnight").first, 400);
  EXPECT_EQ(Get("/api/summary?account=Checking&name=Nothing").first, 404);

  // A summary of its own: added, changed, shown first, removed.
  auto [made, made_summary] = Post("/api/summaries/add", R"({"account": "Checking",
      "name": "Fuel", "range": "this year", "period": "quarter", "debits": true,
      "deposits": false, "filterField": "category", "filterText": "Fuel"})");
  ASSERT_EQ(made, 200) << made_summary.dump();
  EXPECT_EQ(made_summary["summary"]["period"], "quarter");
  EXPECT_EQ(made_summary["summary"]["deposits"], false);
  EXPECT_EQ(made_summary["summary"]["filterText"], "Fuel");
  EXPECT_EQ(Post("/api/summaries/add", R"({"account": "Checking", "name": "fuel"})").first, 409);
  auto [renamed, renamed_summary] = Post("/api/summaries/edit", R"({"account": "Checking",
      "name": "Fuel", "newName": "Car fuel", "resolved": "only", "filterText": ""})");
  ASSERT_EQ(renamed, 200) << renamed_summary.dump();
  EXPECT_EQ(renamed_summary["summary"]["name"], "Car fuel");
  EXPECT_EQ(renamed_summary["summary"]["resolved"], "only");
  EXPECT_TRUE(renamed_summary["summary"]["filterText"].is_null());
  EXPECT_EQ(renamed_summary["summary"]["period"], "quarter");
  EXPECT_EQ(Post("/api/summaries/edit", R"({"account": "Checking", "name": "Car fuel",
      "checks": "some"})").first, 400);
  EXPECT_EQ(Post("/api/summaries/select", R"({"account": "Checking", "name": "Car fuel"})").first,
            200);
  EXPECT_EQ(Get("/api/summary?account=Checking").second["summary"], "Car fuel");
  EXPECT_EQ(Post("/api/summaries/remove", R"({"account": "Checking", "name": "Car fuel"})").first,
            200);
  EXPECT_EQ(Get("/api/summaries?account=Checking").second["summaries"].size(),
            summaries["summaries"].size());

  const std::string qif = "!Type:Bank\nD07/10/2026\nT-12.00\nPCorner Books\n^\n";
  httplib::Client client = Client();
  auto review = client.Post("/api/import?account=Checking&name=../../a.qif", Signed(), qif,
                            "application/octet-stream");
  ASSERT_TRUE(review);
  ASSERT_EQ(review->status, 200) << review->body;
  Json reviewed = Json::parse(review->body);
  EXPECT_EQ(reviewed["applied"], false);
  EXPECT_EQ(reviewed["rows"][0]["status"], "new");
  const double balance = Balance("Checking");
  auto applied = client.Post("/api/import?account=Checking&name=a.qif&apply=1", Signed(), qif,
                             "application/octet-stream");
  ASSERT_TRUE(applied);
  ASSERT_EQ(applied->status, 200) << applied->body;
  EXPECT_EQ(Json::parse(applied->body)["added"], 1);
  EXPECT_DOUBLE_EQ(Balance("Checking"), balance - 12.0);
  auto [undone, taken] = Post("/api/import/undo", R"({"account": "Checking"})");
  EXPECT_EQ(undone, 200) << taken.dump();
  EXPECT_DOUBLE_EQ(Balance("Checking"), balance);
  // A file of two accounts: the refusal lists them, and `from` chooses one.
  const std::string two =
      "!Account\nNJoint Checking\nTBank\n^\n!Type:Bank\nD07/01/2026\nT-10.00\nPCafe\n^\n"
      "!Account\nNHoliday Fund\nTBank\n^\n!Type:Bank\nD07/02/2026\nT50.00\nPGift\n^\n";
  auto several = client.Post("/api/import?account=Checking&name=two.qif", Signed(), two,
                             "application/octet-stream");
  ASSERT_TRUE(several);
  EXPECT_EQ(several->status, 400);
  EXPECT_EQ(Json::parse(several->body)["fileAccounts"],
            Json::array({"Joint Checking", "Holiday Fund"}));
  auto chosen = client.Post("/api/import?account=Checking&name=two.qif&from=holiday", Signed(),
                            two, "application/octet-stream");
  ASSERT_TRUE(chosen);
  ASSERT_EQ(chosen->status, 200) << chosen->body;
  EXPECT_EQ(Json::parse(chosen->body)["fileAccount"], "Holiday Fund");
  // A CSV without a header row, read by the columns given; a word that is no column is refused.
  const std::string csv = "15/07/2026,Corner Shop,-3.50\n";
  auto columns = client.Post(
      "/api/import?account=Checking&name=b.csv&columns=date,payee,amount&dateFormat=dmy",
      Signed(), csv, "text/csv");
  ASSERT_TRUE(columns);
  ASSERT_EQ(columns->status, 200) << columns->body;
  const Json row = Json::parse(columns->body)["rows"][0];
  EXPECT_EQ(row["date"], "2026-07-15");
  EXPECT_EQ(row["toFrom"], "Corner Shop");
  EXPECT_EQ(row["amount"], -3.5);
  auto wrong = client.Post("/api/import?account=Checking&name=b.csv&columns=date,cost", Signed(),
                           csv, "text/csv");
  ASSERT_TRUE(wrong);
  EXPECT_EQ(wrong->status, 400);
  auto empty = client.Post("/api/import?account=Checking&name=a.qif", Signed(), "", "text/plain");
  ASSERT_TRUE(empty);
  EXPECT_EQ(empty->status, 400);
}

TEST_F(WebServerTest, ReconcilingToAStatement) {
  auto [listed, listing] = Post("/api/reconcile", R"({"account": "Checking",
      "statementDate": "2026-07-15", "statementBalance": 26248.87})");
  ASSERT_EQ(listed, 200) << listing.dump();
  EXPECT_EQ(listing["difference"], 0.0);
  EXPECT_FALSE(listing["unresolved"].empty());
  EXPECT_EQ(Post("/api/reconcile", R"({"account": "Checking", "statementBalance": 1})").first, 400);
  auto [finished, done] = Post("/api/reconcile", R"({"account": "Checking",
      "statementDate": "2026-07-15", "statementBalance": 26248.87, "finish": true})");
  ASSERT_EQ(finished, 200) << done.dump();
  EXPECT_TRUE(done["finished"].is_object());
}

TEST_F(WebServerTest, ScheduledEntries) {
  auto [listed, schedules] = Get("/api/schedules?account=Checking");
  ASSERT_EQ(listed, 200) << schedules.dump();
  ASSERT_FALSE(schedules["due"].empty());
  const Json due = schedules["due"][0];
  auto [entered, entry] = Post("/api/schedules/enter",
                               R"({"account": "Checking", "number": )" + due["schedule"].dump() +
                                   R"(, "date": )" + due["date"].dump() + "}");
  ASSERT_EQ(entered, 200) << entry.dump();
  EXPECT_EQ(entry["date"], due["date"]);
  EXPECT_EQ(Get("/api/schedules?account=Checking").second["due"].size(),
            schedules["due"].size() - 1);

  auto [added, schedule] = Post("/api/schedules/add", R"({"account": "Checking", "every": 2,
      "unit": "weeks", "on": "friday", "start": "2026-07-01", "amount": -20, "toFrom": "Gym"})");
  ASSERT_EQ(added, 200) << schedule.dump();
  EXPECT_EQ(schedule["rule"], "every 2 weeks on Friday, forever");
  EXPECT_EQ(schedule["next"], "2026-07-03");
  EXPECT_EQ(Post("/api/schedules/add", R"({"account": "Checking", "unit": "fortnight",
      "amount": -1})").first, 400);

  // Changed in words: what is not given stays; an empty "until" takes the end away.
  const std::string number = schedule["number"].dump();
  auto [edited, changed] = Post("/api/schedules/edit", R"({"account": "Checking", "number": )" +
                                                           number + R"(, "unit": "month", "on": "last",
      "every": 1, "until": "2027-06-30", "amount": -25})");
  ASSERT_EQ(edited, 200) << changed.dump();
  EXPECT_EQ(changed["rule"], "every month on its last day, until 2027-06-30");
  EXPECT_EQ(changed["next"], "2026-07-31");
  auto listedAgain = Get("/api/schedules?account=Checking").second["schedules"];
  const auto it = std::find_if(listedAgain.begin(), listedAgain.end(),
                               [&](const Json& s) { return s["number"].dump() == number; });
  ASSERT_NE(it, listedAgain.end());
  EXPECT_EQ((*it)["amount"], -25.0);
  EXPECT_EQ((*it)["toFrom"], "Gym");
  EXPECT_EQ((*it)["recurrence"]["until"], "2027-06-30");
  EXPECT_EQ(Post("/api/schedules/edit", R"({"account": "Checking", "number": )" + number +
                                            R"(, "until": null})")
                .second["rule"],
            "every month on its last day, forever");
  EXPECT_EQ(Post("/api/schedules/edit", R"({"account": "Checking", "number": )" + number +
                                            R"(, "unit": "week", "weekendsBefore": true})")
                .first,
            400);
  EXPECT_EQ(Post("/api/schedules/edit", R"({"account": "Checking", "number": 999, "amount": 1})").first,
            404);
  EXPECT_EQ(Post("/api/schedules/remove", R"({"account": "Checking", "number": )" +
                                              schedule["number"].dump() + "}")
                .first,
            200);
}

TEST_F(WebServerTest, FilterSortExportAndNewAccounts) {
  auto [filtered, filter] = Post("/api/register/filter",
                                 R"({"account": "Checking", "search": "Safeway", "dates": "all"})");
  ASSERT_EQ(filtered, 200) << filter.dump();
  EXPECT_EQ(filter["filter"]["search"], "Safeway");
  const std::size_t shown = filter["total"];
  EXPECT_GT(shown, 0u);
  auto [status, page] = Get("/api/register?account=Checking&sort=amount&limit=1000");
  ASSERT_EQ(status, 200);
  EXPECT_EQ(page["rows"].size(), shown);  // the stored filter applies to every later view
  for (const Json& row : page["rows"]) EXPECT_EQ(row["toFrom"], "Safeway");
  EXPECT_LE(page["rows"].front()["amount"].get<double>(), page["rows"].back()["amount"].get<double>());
  EXPECT_EQ(Get("/api/register?account=Checking&sort=size").first, 400);
  EXPECT_EQ(Post("/api/register/filter", R"({"account": "Checking", "dates": "soon"})").first, 400);
  EXPECT_EQ(Post("/api/register/filter", R"({"account": "Checking", "reset": true})").first, 200);

  httplib::Client client = Client();
  auto csv = client.Get("/api/export?account=Euro%20Travel&format=csv", Signed());
  ASSERT_TRUE(csv);
  EXPECT_EQ(csv->status, 200);
  EXPECT_EQ(csv->get_header_value("Content-Disposition"), "attachment; filename=\"Euro-Travel.csv\"");
  EXPECT_TRUE(csv->body.starts_with("Date,Type,Description"));
  EXPECT_EQ(Get("/api/export?account=Checking&format=pdf").first, 400);

  auto [added, account] =
      Post("/api/accounts", R"({"name": "Cash", "currency": "CAD", "startingBalance": "40"})");
  ASSERT_EQ(added, 200) << account.dump();
  EXPECT_EQ(account["currency"], "CAD");
  EXPECT_DOUBLE_EQ(Balance("Cash"), 40.0);
  EXPECT_EQ(Post("/api/accounts", R"({"name": "Cash"})").first, 409);
  auto [edited, changed] =
      Post("/api/accounts/edit", R"({"account": "Cash", "name": "Wallet", "startingBalance": 50})");
  ASSERT_EQ(edited, 200) << changed.dump();
  EXPECT_DOUBLE_EQ(Balance("Wallet"), 50.0);
  EXPECT_EQ(Post("/api/accounts/edit", R"({"account": "Wallet", "name": "Checking"})").first, 409);

  // Removed: refused while other accounts hold transfers to it, unless they are unlinked.
  const std::size_t accounts = Get("/api/accounts").second["accounts"].size();
  const auto [refused, why] = Post("/api/accounts/remove", R"({"account": "Savings"})");
  EXPECT_GE(refused, 400) << why.dump();
  auto [removed, removal] = Post("/api/accounts/remove", R"({"account": "Savings", "unlink": true})");
  ASSERT_EQ(removed, 200) << removal.dump();
  EXPECT_GT(removal["unlinked"], 0);
  EXPECT_EQ(removal["in"], Json::array({"Checking"}));
  EXPECT_EQ(Get("/api/accounts").second["accounts"].size(), accounts - 1);
  EXPECT_EQ(Post("/api/accounts/remove", R"({"account": "Savings"})").first, 404);
}

// A locked account shows nothing until its password is given, and only to the session that
// gave it.
TEST_F(WebServerTest, ALockedAccountOpensForTheSessionThatGaveItsPassword) {
  {
    Book::OpenOptions options;
    options.access = Book::Access::kWrite;
    auto book = Book::Open(base_ / "book", options);
    ASSERT_TRUE(book) << book.error().message;
    ASSERT_TRUE(LockAccount(**book, "Savings", "secret"));
    ASSERT_FALSE((*book)->Save());
  }
  auto accounts = Get("/api/accounts").second["accounts"];
  EXPECT_TRUE(accounts[1]["locked"].get<bool>());
  EXPECT_TRUE(accounts[1]["balance"].is_null());
  EXPECT_EQ(Get("/api/register?account=Savings").first, 403);
  EXPECT_EQ(Post("/api/unlock", R"({"account": "Savings", "password": "guess"})").first, 403);
  EXPECT_EQ(Get("/api/register?account=Savings").first, 403);

  auto [unlocked, answer] = Post("/api/unlock", R"({"account": "Savings", "password": "secret"})");
  ASSERT_EQ(unlocked, 200) << answer.dump();
  auto [shown, page] = Get("/api/register?account=Savings&limit=5");
  EXPECT_EQ(shown, 200) << page.dump();
  EXPECT_EQ(Post("/api/entries", R"({"account": "Savings", "amount": 5})").first, 200);
  EXPECT_FALSE(Get("/api/accounts").second["accounts"][1]["balance"].is_null());

  // Another session has not given it.
  const std::string other = Session();
  httplib::Client client = Client();
  auto response = client.Get("/api/register?account=Savings", {{"Cookie", other}});
  ASSERT_TRUE(response);
  EXPECT_EQ(response->status, 403);
  // Nor can a client claim a session by the server's own header.
  response = client.Get("/api/register?account=Savings",
                        {{"Cookie", other}, {"X-Folvant-Session", cookie_.substr(cookie_.find('=') + 1)}});
  ASSERT_TRUE(response);
  EXPECT_EQ(response->status, 403);

  // The session that opened it takes the password away; then every session sees it. A password
  // is given back from the page the same way, and that session keeps the account open.
  EXPECT_EQ(Post("/api/accounts/password", R"({"account": "Savings", "password": ""})").first, 200);
  response = client.Get("/api/register?account=Savings", {{"Cookie", other}});
  ASSERT_TRUE(response);
  EXPECT_EQ(response->status, 200);
  EXPECT_EQ(Post("/api/accounts/password", R"({"account": "Savings", "password": "new"})").first,
            200);
  EXPECT_EQ(Get("/api/register?account=Savings").first, 200);
  response = client.Get("/api/register?account=Savings", {{"Cookie", other}});
  ASSERT_TRUE(response);
  EXPECT_EQ(response->status, 403);
  EXPECT_EQ(Post("/api/accounts/password", R"({"account": "Savings", "password": "again"})").first,
            409);
}

// Several clients adding and reading at once for a few seconds: every entry that was answered
// as added is in the book afterwards, and nothing failed.
TEST_F(WebServerTest, SeveralClientsAtOnceLoseNothing) {
  const std::string cookie = Signed().begin()->second;
  const std::size_t before = Get("/api/register?account=Savings&limit=0").second["total"];
  std::atomic<int> added{0}, failed{0}, reads{0};
  const auto stop = std::chrono::steady_clock::now() + std::chrono::seconds(3);
  std::vector<std::thread> clients;
  for (int c = 0; c < 4; ++c) {
    clients.emplace_back([&, c] {
      httplib::Client client = Client();
      const httplib::Headers headers = {{"Cookie", cookie}};
      for (int i = 0; std::chrono::steady_clock::now() < stop; ++i) {
        if (c % 2 == 0) {
          const auto response = client.Post(
              "/api/entries", headers,
              R"({"account": "Savings", "amount": 1, "description": "load )" +
                  std::to_string(c) + "-" + std::to_string(i) + R"("})",
              "application/json");
          (response && response->status == 200 ? added : failed)++;
        } else {
          const auto response = client.Get("/api/register?account=Savings&offset=0&limit=50",
                                            headers);
          (response && response->status == 200 ? reads : failed)++;
        }
      }
    });
  }
  for (std::thread& t : clients) t.join();
  EXPECT_EQ(failed.load(), 0);
  EXPECT_GT(added.load(), 0);
  EXPECT_GT(reads.load(), 0);
  const std::size_t after = Get("/api/register?account=Savings&limit=0").second["total"];
  EXPECT_EQ(after, before + static_cast<std::size_t>(added.load()));
  auto book = Book::Open(base_ / "book", {});
  ASSERT_TRUE(book) << book.error().message;
  std::printf("load: %d entries added and %d registers read by 4 clients in 3 s\n", added.load(),
              reads.load());
}

}  // namespace
}  // namespace folvant::app::web
