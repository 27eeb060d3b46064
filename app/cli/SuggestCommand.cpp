#include <memory>
#include <ostream>
#include <string>

#include "app/cli/BookAccess.h"
#include "app/cli/Commands.h"
#include "app/render/Json.h"
#include "folvant/book/Book.h"
#include "folvant/book/Entries.h"
#include "folvant/model/ZELMAccount.h"

namespace folvant::app {
namespace {

struct SuggestOptions {
  std::string account;
  std::string prefix;
  bool to = false, from = false, description = false;
  bool json = false;
};

int Run(Context& context, const SuggestOptions& o) {
  if (!o.to && !o.from && !o.description) {
    Fail(context, "say which suggestions: --to, --from or --description");
    return 2;
  }
  const char* which = o.to ? "to" : o.from ? "from" : "description";
  auto book = OpenBook(context);
  if (!book) return 1;
  auto list = Suggestions(*book, o.account, which, o.prefix);
  PrintWarnings(context, *book);
  if (!list) return Fail(context, list.error());
  if (o.json) {
    render::Json texts = render::Json::array();
    for (const auto& text : list->texts) texts.push_back(render::JsonText(text));
    render::Json document = render::Json::object();
    document["account"] = render::JsonText(list->account->GetName());
    document["which"] = list->which;
    document["suggestions"] = std::move(texts);
    render::WriteJson(context.out, document);
    return 0;
  }
  std::string out;
  for (const auto& text : list->texts) out += text + "\n";
  context.out << out;
  return 0;
}

}  // namespace

void RegisterSuggestCommand(CLI::App& app, Context& context, CommandList& actions) {
  auto o = std::make_shared<SuggestOptions>();
  CLI::App* suggest =
      app.add_subcommand("suggest", "The account's suggestions for payees, payers or descriptions");
  suggest->add_option("ACCOUNT", o->account, "Name or number of the account")->required();
  suggest->add_option("PREFIX", o->prefix, "Only those starting with this (any case)");
  auto* to = suggest->add_flag("--to", o->to, "Payees of debits");
  auto* from = suggest->add_flag("--from", o->from, "Payers of deposits");
  auto* description = suggest->add_flag("--description", o->description, "Descriptions");
  to->excludes(from)->excludes(description);
  from->excludes(description);
  suggest->add_flag("--json", o->json, "Print JSON");
  actions.emplace_back(suggest, [&context, o]() { return Run(context, *o); });
}

}  // namespace folvant::app
