#include <ostream>

#include "app/cli/BookAccess.h"
#include "app/cli/Options.h"
#include "app/cli/Commands.h"
#include "app/render/Json.h"
#include "folvant/book/Book.h"

namespace folvant::app {
namespace {

struct RepairOptions {
  std::string account;
  bool fromBackup = false;
  bool json = false;
};

void PrintJson(Context& context, const RepairReport& report) {
  using render::Json;
  Json document = Json::object();
  document["account"] = render::JsonText(report.account);
  document["file"] = render::JsonText(report.file.string());
  document["fromBackup"] = report.fromBackup;
  document["damage"] = report.damage.empty() ? Json(nullptr) : render::JsonText(report.damage);
  document["damagedCopy"] =
      report.damagedCopy.empty() ? Json(nullptr) : render::JsonText(report.damagedCopy.string());
  render::WriteJson(context.out, document);
}

// Not ChangeBook: a repair writes the account's file itself.
int Repair(Context& context, const RepairOptions& options) {
  auto book = OpenBook(context, Book::Access::kWrite);
  if (!book) return 1;
  auto report = book->Repair(options.account, options.fromBackup);
  PrintWarnings(context, *book);
  if (!report) return Fail(context, report.error());
  if (options.json) {
    PrintJson(context, *report);
    return 0;
  }
  auto& out = context.out;
  if (report->fromBackup) {
    out << "Put back the backup of \"" << report->account << "\" as " << report->file.string()
        << '\n';
  } else {
    out << "Repaired \"" << report->account << "\": " << report->damage << "; "
        << report->file.string() << " now holds the account as it was read\n";
  }
  if (!report->damagedCopy.empty()) {
    out << "The damaged file is kept as " << report->damagedCopy.string() << '\n';
  }
  return 0;
}

}  // namespace

void RegisterRepairCommand(CLI::App& app, Context& context, CommandList& actions) {
  auto options = std::make_shared<RepairOptions>();
  CLI::App* repair = app.add_subcommand(
      "repair", "Repair an account whose file is damaged, keeping the damaged file beside it");
  repair->add_option("ACCOUNT", options->account, "Name or number of the account")->required();
  repair->add_flag("--from-backup", options->fromBackup,
                   "Put back the previous version of the file (its .bak) instead");
  repair->add_flag("--json", options->json, "Print JSON");
  actions.emplace_back(repair, [&context, options]() { return Repair(context, *options); });
}

}  // namespace folvant::app
