#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/model/ZELMAccountsController.h"
#include "folvant/platform/plist/PropertyList.h"

namespace folvant {
class ZELMAccount;
}

namespace folvant {

// A book is a folder: the book file "book.plist" holds the shared category tree, the
// registered currencies (the base currency first) and the list of accounts; each account is
// one file "accounts/<number>.plist" in the account's stored form. The book is the program's
// accounts controller. Files are read whole when the book opens and written back by Save(),
// all or nothing.
class Book final : public ZELMAccountsController {
 public:
  static constexpr const char* kBookFileName = "book.plist";

  // Creates a new, empty book in `directory` (made if missing; refused when it already holds a
  // book). On failure returns nullptr and sets `error`.
  static std::unique_ptr<Book> Create(const std::filesystem::path& directory, std::string& error);
  // Opens the book in `directory`; on failure returns nullptr and sets `error` to one line
  // naming the file and the problem.
  static std::unique_ptr<Book> Open(const std::filesystem::path& directory, std::string& error,
                                    std::optional<std::string> password = std::nullopt);

  ~Book() override;

  // ZELMAccountsController
  std::shared_ptr<LVCurrency> currency() const override;
  std::shared_ptr<LVCurrency> currencyWithCode(std::string_view code) const override;
  std::vector<std::shared_ptr<LVCurrency>>& currencies() override { return currencies_; }
  std::shared_ptr<ZELMAccountEntryCategory> categoryWithNumber(std::int32_t number) const override;
  std::vector<std::shared_ptr<ZELMAccountEntryCategory>> allCategories() const override;
  std::shared_ptr<ZELMAccountEntryType> accountEntryTypeForNumber(
      std::int32_t number) const override;

  const std::filesystem::path& directory() const { return directory_; }
  const std::vector<std::shared_ptr<ZELMAccount>>& accounts() const { return accounts_; }
  // The account whose name equals `name` ignoring case, or else whose number is `name`.
  std::shared_ptr<ZELMAccount> FindAccount(std::string_view name) const;
  // A new account with a fresh number, saved with the book.
  std::shared_ptr<ZELMAccount> AddAccount(std::string_view name);

  // Top-level categories of the shared tree.
  const std::vector<std::shared_ptr<ZELMAccountEntryCategory>>& categories() const {
    return categories_;
  }
  // Adds a category under `parent` (nullptr: top level) with a fresh number; numbers are
  // unique in the book and never reused.
  std::shared_ptr<ZELMAccountEntryCategory> AddCategory(std::string_view name,
                                                        ZELMAccountEntryCategory* parent);

  // Writes the book file and every account file; on failure no file is changed.
  bool Save(std::string& error, plist::Format format = plist::Format::kBinary) const;

 private:
  explicit Book(std::filesystem::path directory);
  std::filesystem::path AccountPath(std::int32_t number) const;
  bool Load(std::string& error, const std::optional<std::string>& password);

  std::filesystem::path directory_;
  std::vector<std::shared_ptr<LVCurrency>> currencies_;
  std::vector<std::shared_ptr<ZELMAccountEntryCategory>> categories_;
  std::vector<std::shared_ptr<ZELMAccount>> accounts_;
  std::int32_t nextCategoryNumber_ = 0;
  std::int32_t nextAccountNumber_ = 0;
};

}  // namespace folvant
