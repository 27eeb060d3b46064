// A bank's file reviewed and imported, the last import taken back, and an account downloaded as a
// file.

#include "app/render/ImportOutput.h"
#include "app/web/ApiSupport.h"
#include "folvant/book/Export.h"
#include "folvant/book/Import.h"
#include "folvant/model/ZELMAccount.h"

namespace folvant::app::web {

void Api::RegisterImport(httplib::Server& server) {
  // A bank's file as the request's body: ?account=NAME&name=FILE.ofx[&apply=1]
  // [&includePossible=1]. Without apply the review, changing nothing; with it the import.
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
      if (!out) return Send(response, Refusal{500, "the file could not be kept for reading"});
    }
    ImportRequest import;
    import.account = request.get_param_value("account");
    import.file = folder / safe;
    import.includePossible = request.get_param_value("includePossible") == "1";
    if (request.has_param("lines")) {
      // The rows chosen in the review: "1,3,7" (none: "").
      import.lines.emplace();
      const std::string list = request.get_param_value("lines");
      for (std::size_t at = 0; at < list.size();) {
        const std::size_t comma = std::min(list.find(',', at), list.size());
        std::size_t line = 0;
        const auto [end, error] = std::from_chars(list.data() + at, list.data() + comma, line);
        if (error != std::errc() || end != list.data() + comma || line == 0) {
          return Send(response, Bad("\"lines\" is a list of row numbers: 1,3,7"));
        }
        import.lines->insert(line);
        at = comma + 1;
      }
    }
    if (request.get_param_value("apply") != "1") {
      auto reading = ReadBook(request.get_header_value(kSessionHeader));
      if (!reading) return Send(response, RefusalOf(reading.error()));
      auto review = ReviewImport(*reading->book, import);
      if (!review) return Send(response, RefusalOf(review.error()));
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
