// A bank's file reviewed and imported, the last import taken back, and an account downloaded as a
// file.

#include "app/render/ImportOutput.h"
#include "app/web/ApiSupport.h"
#include "folvant/book/Export.h"
#include "folvant/book/Import.h"
#include "folvant/model/ZELMAccount.h"

namespace folvant::app::web {
namespace {

// "a, b,c" as its items, each trimmed of blanks; none for an empty text.
std::vector<std::string> CommaList(const std::string& text) {
  std::vector<std::string> items;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t comma = std::min(text.find(',', at), text.size());
    std::string item = text.substr(at, comma - at);
    item.erase(0, item.find_first_not_of(' '));
    item.erase(item.find_last_not_of(' ') + 1);
    items.push_back(std::move(item));
    at = comma + 1;
  }
  return items;
}

}  // namespace

void Api::RegisterImport(httplib::Server& server) {
  // A bank's file as the request's body: ?account=NAME&name=FILE.ofx[&apply=1]
  // [&includePossible=1][&lines=1,3,7] and the import's settings: [&dateFormat=dmy]
  // [&from=FILE'S ACCOUNT][&columns=date,payee,amount][&saveSettings=1 (with apply)]. Without
  // apply the review, changing nothing; with it the import.
  server.Post("/api/import", [this](const Request& request, Response& response) {
    const std::string name = request.get_param_value("name");
    if (!request.has_param("account")) return Send(response, Bad("\"account\" is missing"));
    if (request.body.empty()) return Send(response, Bad("the file is empty"));
    // The file's own name, for its format; kept in a folder of its own while it is read.
    std::string safe;
    for (char c : name.substr(name.find_last_of("/\\") + 1)) {
      safe.push_back(std::isalnum(static_cast<unsigned char>(c)) || c == '.' || c == '-' ? c : '_');
    }
    if (safe.empty() || safe.front() == '.') safe = "statement" + safe;
    std::error_code error;
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path(error) /
        ("folvant-upload-" + std::to_string(::getpid()) + "-" +
         std::to_string(reinterpret_cast<std::uintptr_t>(&request)));
    std::filesystem::create_directories(folder, error);
    struct Cleanup {
      std::filesystem::path folder;
      ~Cleanup() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
      }
    } cleanup{folder};
    {
      std::ofstream out(folder / safe, std::ios::binary);
      out << request.body;
      if (!out)
        return Send(response, Refusal{500, "the file could not be kept for reading", "failed"});
    }
    ImportRequest import;
    import.account = request.get_param_value("account");
    import.file = folder / safe;
    import.includePossible = request.get_param_value("includePossible") == "1";
    if (request.has_param("lines")) {
      // The rows chosen in the review: "1,3,7" (none: "").
      import.lines.emplace();
      for (const std::string& item : CommaList(request.get_param_value("lines"))) {
        std::size_t line = 0;
        const auto [end, error] = std::from_chars(item.data(), item.data() + item.size(), line);
        if (error != std::errc() || end != item.data() + item.size() || line == 0) {
          return Send(response, Bad("\"lines\" is a list of row numbers: 1,3,7"));
        }
        import.lines->insert(line);
      }
    }
    if (const std::string format = request.get_param_value("dateFormat"); !format.empty()) {
      import.dateFormat = format;
    }
    if (const std::string from = request.get_param_value("from"); !from.empty()) import.from = from;
    if (const std::string columns = request.get_param_value("columns"); !columns.empty()) {
      import.columns.emplace();
      for (const std::string& word : CommaList(columns)) {
        const std::optional<std::int32_t> code = ImportColumnCode(word);
        if (!code) {
          std::string words;
          for (const auto& [name, c] : ImportColumnWords())
            words += (words.empty() ? "" : ", ") + name;
          return Send(response, Bad("\"" + word + "\" is not a column; use " + words));
        }
        import.columns->push_back(*code);
      }
    }
    const bool apply = request.get_param_value("apply") == "1";
    import.saveSettings = apply && request.get_param_value("saveSettings") == "1";
    if (!apply) {
      auto reading = ReadBook(request.get_header_value(kSessionHeader));
      if (!reading) return Send(response, RefusalOf(reading.error()));
      auto review = ReviewImport(*reading->book, import);
      if (!review) {
        // A file of several accounts needs one chosen: the refusal says which it holds.
        const Refusal refusal = RefusalOf(review.error());
        if (import.from) return Send(response, refusal);
        auto names = ImportFileAccounts(*reading->book, import);
        if (!names || names->size() < 2) return Send(response, refusal);
        Json fileAccounts = Json::array();
        for (const std::string& name : *names) fileAccounts.push_back(JsonText(name));
        response.status = refusal.status;
        return Send(response, Json{{"error", JsonText(refusal.message)},
                                   {"fileAccounts", std::move(fileAccounts)}});
      }
      return Send(response, render::ImportReviewJson(*review));
    }
    std::lock_guard lock(changes_);
    auto book = OpenForChange(request.get_header_value(kSessionHeader));
    if (!book) return Send(response, RefusalOf(book.error()));
    auto applied = ApplyImport(**book, import);
    if (!applied) return Send(response, RefusalOf(applied.error()));
    if (std::optional<BookError> failed = (*book)->Save()) {
      return Send(response, RefusalOf(*failed));
    }
    Send(response, render::ImportReviewJson(*applied));
  });

  server.Post("/api/import/undo",
              Change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                const std::optional<std::string> account = fields.Text("account", true);
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                auto undone = UndoImport(book, *account);
                if (!undone) return refusal = RefusalOf(undone.error()), std::nullopt;
                return Json{{"account", JsonText(undone->account->GetName())},
                            {"removed", undone->removed},
                            {"balance", JsonAmount(undone->balance)}};
              }));

  // The account written as a file to download: ?account=NAME&format=qif|csv|tsv.
  server.Get("/api/export", [this](const Request& request, Response& response) {
    ExportRequest exportRequest;
    exportRequest.account = request.get_param_value("account");
    const std::string format = request.get_param_value("format");
    const std::map<std::string, std::pair<ExportFormat, const char*>> formats = {
        {"qif", {ExportFormat::kQIF, "application/qif"}},
        {"csv", {ExportFormat::kCSV, "text/csv; charset=utf-8"}},
        {"tsv", {ExportFormat::kTSV, "text/tab-separated-values; charset=utf-8"}}};
    const auto it = formats.find(format);
    if (it == formats.end()) return Send(response, Bad("\"format\" is qif, csv or tsv"));
    exportRequest.format = it->second.first;
    auto reading = ReadBook(request.get_header_value(kSessionHeader));
    if (!reading) return Send(response, RefusalOf(reading.error()));
    auto exported = ExportAccount(*reading->book, exportRequest);
    if (!exported) return Send(response, RefusalOf(exported.error()));
    std::string file;
    for (char c : exported->account->GetName()) {
      file.push_back(std::isalnum(static_cast<unsigned char>(c)) ? c : '-');
    }
    response.set_header("Content-Disposition",
                        "attachment; filename=\"" + file + "." + format + "\"");
    response.set_header("Cache-Control", "no-store");
    response.set_content(exported->bytes, it->second.second);
  });
}

}  // namespace folvant::app::web
