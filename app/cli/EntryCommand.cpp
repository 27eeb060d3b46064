#include <charconv>
#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "app/cli/BookAccess.h"
#include "app/cli/Commands.h"
#include "app/cli/FieldOptions.h"
#include "app/cli/Options.h"
#include "app/render/AmountText.h"
#include "app/render/EntryOutput.h"
#include "app/render/Json.h"
#include "folvant/book/Book.h"
#include "folvant/book/Entries.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/values/AmountInput.h"
#include "folvant/values/LVCurrency.h"

namespace folvant::app {
namespace {

// The options of `entry add` and `entry edit`; a field is given when its option was.
struct FieldOptions {
  std::string account;
  std::int32_t number = 0;
  std::string date;
  EntryFieldOptions fields;
  std::vector<std::string> check;
  std::string toFrom;
  bool resolved = false, unresolved = false, noCheck = false;
  EntryOptions entry;
  bool json = false;
  CLI::Option *dateOption = nullptr, *checkOption = nullptr, *toOption = nullptr,
              *fromOption = nullptr;
};

void AddFieldOptions(CLI::App* command, FieldOptions& o, bool edit) {
  o.dateOption = command
                     ->add_option("--date", o.date,
                                  edit ? "Date (YYYY-MM-DD)" : "Date (YYYY-MM-DD; default: today)")
                     ->check(IsoDate());
  AddEntryFieldOptions(command, o.fields, edit, "the entry's amount");
  o.checkOption = command
                      ->add_option("--check", o.check,
                                   "A check; with a number, that check number (default: the next)")
                      ->expected(0, 1)
                      ->check(ZeroOrMore());
  o.toOption = command->add_option("--to", o.toFrom, "Payee");
  o.fromOption = command->add_option("--from", o.toFrom, "Payer");
  o.toOption->excludes(o.fromOption);
  command->add_flag("--resolved", o.resolved, "Resolved against a statement");
  command->add_flag("--new-category", o.entry.newCategory, "Create the category if it is new");
  command->add_flag("--allow-duplicate-check", o.entry.allowDuplicateCheck,
                    "Take a check number that is already in use");
  if (edit) {
    command->add_flag("--unresolved", o.unresolved, "Not resolved")->excludes("--resolved");
    command->add_flag("--no-check", o.noCheck, "Not a check")->excludes(o.checkOption);
  } else {
    command->add_flag("--no-memory", o.entry.noMemory,
                      "Fill in nothing from earlier entries with the same payee or payer");
  }
  command->add_flag("--json", o.json, "Print JSON");
}

EntryFields ReadFields(const FieldOptions& o) {
  EntryFields f;
  if (o.dateOption->count() > 0) {
    std::int32_t date = 0;
    ParseDateNumber(o.date, date);  // checked when read
    f.date = date;
  }
  ReadEntryFields(o.fields, f);
  if (o.checkOption->count() > 0) {
    f.check = true;
    // Given alone, the option holds no value or an empty one.
    std::int32_t number = 0;
    const std::string text = o.check.empty() ? std::string() : o.check.front();
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    if (!text.empty() && read.ec == std::errc()) f.checkNumber = number;
  }
  if (o.noCheck) f.check = false;
  if (o.toOption->count() > 0 || o.fromOption->count() > 0) f.toFrom = o.toFrom;
  if (o.resolved) f.resolved = true;
  if (o.unresolved) f.resolved = false;
  return f;
}

void PrintChangeJson(Context& context, const EntryChange& change) {
  render::Json document = render::Json::object();
  document["account"] = render::JsonText(change.account->GetName());
  document["entry"] = render::EntryJson(change.entry);
  render::Json remembered = render::Json::array();
  for (const auto& field : change.remembered) remembered.push_back(field);
  document["remembered"] = std::move(remembered);
  document["linked"] = render::LinkedJson(change.linked);
  document["balance"] = render::JsonAmount(change.balance);
  render::WriteJson(context.out, document);
}

// "<headline>", the entry, what happened to a transfer's other side, the balance.
void PrintChange(Context& context, const EntryChange& change, const std::string& headline,
                 bool json) {
  if (json) {
    PrintChangeJson(context, change);
    return;
  }
  const LVCurrency& currency = *change.account->currency();
  std::string out = headline + "\n";
  render::AppendEntryText(out, change.entry, currency);
  if (!change.remembered.empty()) {
    out += "Filled in from the last entry for \"" + change.entry.toFrom + "\": ";
    for (std::size_t i = 0; i < change.remembered.size(); ++i) {
      out += (i ? ", " : "") + change.remembered[i];
    }
    out += "\n";
  }
  if (change.linked) out += render::LinkedLine(*change.linked);
  out += "Balance of \"" + change.account->GetName() +
         "\": " + render::AmountWriter(currency).Text(change.balance) + "\n";
  context.out << out;
}

std::string Which(const EntryChange& change) {
  return "entry " + std::to_string(change.entry.number) + " of \"" + change.account->GetName() +
         "\"";
}

int UsageError(Context& context, const std::string& message) {
  Fail(context, message);
  return 2;
}

int Add(Context& context, const FieldOptions& o) {
  if (auto bad = BadAmounts(o.fields)) return UsageError(context, *bad);
  return ChangeBook(
      context, [&](Book& book) { return AddEntry(book, o.account, ReadFields(o), o.entry); },
      [&](const EntryChange& added) {
        PrintChange(context, added, "Added " + Which(added) + ".", o.json);
      });
}

int Edit(Context& context, const FieldOptions& o) {
  if (auto bad = BadAmounts(o.fields)) return UsageError(context, *bad);
  return ChangeBook(
      context,
      [&](Book& book) { return EditEntry(book, o.account, o.number, ReadFields(o), o.entry); },
      [&](const EntryChange& edited) {
        PrintChange(context, edited, "Changed " + Which(edited) + ".", o.json);
      });
}

struct OneEntry {
  std::string account;
  std::int32_t number = 0;
  bool json = false;
};

int Show(Context& context, const OneEntry& o) {
  auto book = OpenBook(context);
  if (!book) return 1;
  auto account = FindAccount(context, *book, o.account);
  if (!account) return 1;
  auto shown = ShowEntry(*book, o.account, o.number);
  PrintWarnings(context, *book);
  if (!shown) return Fail(context, shown.error());
  if (o.json) {
    render::Json document = render::Json::object();
    document["account"] = render::JsonText(account->GetName());
    document["entry"] = render::EntryJson(*shown);
    render::WriteJson(context.out, document);
    return 0;
  }
  std::string out;
  render::AppendEntryText(out, *shown, *account->currency());
  context.out << out;
  return 0;
}

using ChangeOne = BookResult<EntryChange> (*)(Book&, std::string_view, std::int32_t);

int ChangeEntry(Context& context, const OneEntry& o, ChangeOne operation, const char* verb) {
  return ChangeBook(
      context, [&](Book& book) { return operation(book, o.account, o.number); },
      [&](const EntryChange& changed) {
        PrintChange(context, changed, std::string(verb) + " " + Which(changed) + ".", o.json);
      });
}

struct ManyEntries {
  std::string account;
  std::vector<std::int32_t> numbers;
  bool json = false;
};

using ChangeMany = BookResult<ResolveChange> (*)(Book&, std::string_view,
                                                 const std::vector<std::int32_t>&);

std::string NumberList(const std::vector<std::int32_t>& numbers) {
  std::string text;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    text += (i ? ", " : "") + std::to_string(numbers[i]);
  }
  return text;
}

// "Entries 3, 4 of "Checking" marked resolved.", what was so already, the other sides of
// transfers, the resolved balance.
void PrintResolve(Context& context, const ResolveChange& c, const char* state, bool json) {
  if (json) {
    render::Json document = render::Json::object();
    document["account"] = render::JsonText(c.account->GetName());
    document["changed"] = c.changed;
    document["already"] = c.already;
    render::Json linked = render::Json::array();
    for (const auto& l : c.linked) linked.push_back(render::LinkedJson(l));
    document["linked"] = std::move(linked);
    document["resolvedBalance"] = render::JsonAmount(c.resolvedBalance);
    render::WriteJson(context.out, document);
    return;
  }
  std::string out;
  const std::string name = "\"" + c.account->GetName() + "\"";
  if (!c.changed.empty()) {
    out += std::string(c.changed.size() == 1 ? "Entry " : "Entries ") + NumberList(c.changed) +
           " of " + name + " marked " + state + ".\n";
  }
  if (!c.already.empty()) {
    out += std::string(c.already.size() == 1 ? "Entry " : "Entries ") + NumberList(c.already) +
           (c.already.size() == 1 ? " was" : " were") + " already " + state + ".\n";
  }
  for (const auto& l : c.linked) out += render::LinkedLine(l);
  out += "Resolved balance of " + name + ": " +
         render::AmountWriter(*c.account->currency()).Text(c.resolvedBalance) + "\n";
  context.out << out;
}

int Resolve(Context& context, const ManyEntries& o, ChangeMany operation, const char* state) {
  return ChangeBook(
      context, [&](Book& book) { return operation(book, o.account, o.numbers); },
      [&](const ResolveChange& c) { PrintResolve(context, c, state, o.json); });
}

}  // namespace

void RegisterEntryCommand(CLI::App& app, Context& context, CommandList& actions) {
  CLI::App* entry = app.add_subcommand("entry", "Add, show, change and remove register entries");
  entry->require_subcommand(1);

  {
    auto o = std::make_shared<FieldOptions>();
    CLI::App* add = entry->add_subcommand("add", "Add an entry to an account's register");
    add->add_option("ACCOUNT", o->account, "Name or number of the account")->required();
    AddFieldOptions(add, *o, false);
    actions.emplace_back(add, [&context, o]() { return Add(context, *o); });
  }
  {
    auto o = std::make_shared<FieldOptions>();
    CLI::App* edit = entry->add_subcommand("edit", "Change the fields of an entry");
    edit->add_option("ACCOUNT", o->account, "Name or number of the account")->required();
    edit->add_option("NUMBER", o->number, "Number of the entry")->required();
    AddFieldOptions(edit, *o, true);
    actions.emplace_back(edit, [&context, o]() { return Edit(context, *o); });
  }
  const auto one = [&](const char* name, const char* help, ChangeOne operation, const char* verb) {
    auto o = std::make_shared<OneEntry>();
    CLI::App* command = entry->add_subcommand(name, help);
    command->add_option("ACCOUNT", o->account, "Name or number of the account")->required();
    command->add_option("NUMBER", o->number, "Number of the entry")->required();
    command->add_flag("--json", o->json, "Print JSON");
    if (operation == nullptr) {
      actions.emplace_back(command, [&context, o]() { return Show(context, *o); });
    } else {
      actions.emplace_back(command, [&context, o, operation, verb]() {
        return ChangeEntry(context, *o, operation, verb);
      });
    }
  };
  one("show", "Show every field of an entry", nullptr, "");
  one("void", "Void an entry (and a transfer's other side)", &VoidEntry, "Voided");
  one("unvoid", "Take back the voiding of an entry", &UnvoidEntry, "Unvoided");
  one("delete", "Delete an entry (and a transfer's other side)", &DeleteEntry, "Deleted");
  const auto many = [&](const char* name, const char* help, ChangeMany operation,
                        const char* state) {
    auto o = std::make_shared<ManyEntries>();
    CLI::App* command = entry->add_subcommand(name, help);
    command->add_option("ACCOUNT", o->account, "Name or number of the account")->required();
    command->add_option("NUMBER", o->numbers, "Numbers of the entries")->required();
    command->add_flag("--json", o->json, "Print JSON");
    actions.emplace_back(command, [&context, o, operation, state]() {
      return Resolve(context, *o, operation, state);
    });
  };
  many("resolve", "Mark entries resolved against a statement", &ResolveEntries, "resolved");
  many("unresolve", "Take back the resolved mark of entries", &UnresolveEntries, "unresolved");
}

}  // namespace folvant::app
