#include "folvant/book/Book.h"

#include <cstdlib>
#include <system_error>

#include "folvant/platform/SafeFileBatch.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountEntryType.h"
#include "folvant/model/ZELMAccountFile.h"
#include "folvant/platform/Log.h"
#include "folvant/platform/Text.h"
#include "folvant/values/LVCurrency.h"

namespace folvant {
namespace {

constexpr std::int64_t kBookVersion = 1;

// Prefixes what the model logs while a file loads with that file's name, on stderr.
class FileLogSink final : public LogSink {
 public:
  explicit FileLogSink(std::string file) : file_(std::move(file)), previous_(SetLogSink(this)) {}
  ~FileLogSink() override { SetLogSink(previous_); }
  void Write(std::string_view message) override {
    std::fprintf(stderr, "folvant: warning: %s: %.*s\n", file_.c_str(),
                 static_cast<int>(message.size()), message.data());
  }

 private:
  std::string file_;
  LogSink* previous_;
};

std::string DescribeReadError(const std::filesystem::path& path, const plist::ReadError& error) {
  return path.string() + ": " + error.what + " (at byte " + std::to_string(error.offset) + ")";
}

}  // namespace

Book::Book(std::filesystem::path directory) : directory_(std::move(directory)) {}
Book::~Book() = default;

std::unique_ptr<Book> Book::Create(const std::filesystem::path& directory, std::string& error) {
  std::error_code ec;
  if (std::filesystem::exists(directory / kBookFileName, ec)) {
    error = (directory / kBookFileName).string() + ": a book already exists here";
    return nullptr;
  }
  std::filesystem::create_directories(directory / "accounts", ec);
  if (ec) {
    error = directory.string() + ": " + ec.message();
    return nullptr;
  }
  std::unique_ptr<Book> book(new Book(directory));
  book->currencies_.push_back(std::make_shared<LVCurrency>("USD", "US Dollar", "$", true, ",", ".",
                                                           1.0, platform::Today()));
  if (!book->Save(error)) return nullptr;
  return book;
}

std::unique_ptr<Book> Book::Open(const std::filesystem::path& directory, std::string& error,
                                 std::optional<std::string> password) {
  std::unique_ptr<Book> book(new Book(directory));
  if (!book->Load(error, password)) return nullptr;
  return book;
}

bool Book::Load(std::string& error, const std::optional<std::string>& password) {
  const std::filesystem::path path = directory_ / kBookFileName;
  std::error_code ec;
  if (!std::filesystem::exists(path, ec)) {
    error = path.string() + ": no book here (create one with 'folvant init " + directory_.string() +
            "')";
    return false;
  }
  auto read = plist::ReadFile(path);
  if (!read) {
    error = DescribeReadError(path, read.error());
    return false;
  }
  const plist::Dictionary* book = read->asDictionary();
  if (book == nullptr) {
    error = path.string() + ": not a book file (the top level is not a dictionary)";
    return false;
  }
  if (const plist::Value* currencies = book->find("currencies")) {
    if (const plist::Array* list = currencies->asArray()) {
      for (const plist::Value& item : *list) {
        if (const plist::Dictionary* d = item.asDictionary()) {
          currencies_.push_back(std::make_shared<LVCurrency>(d));
        }
      }
    }
  }
  if (currencies_.empty()) {
    error = path.string() + ": the book has no currencies";
    return false;
  }
  if (const plist::Value* categories = book->find("categories")) {
    if (const plist::Array* list = categories->asArray()) {
      for (const plist::Value& item : *list) {
        if (const plist::Dictionary* d = item.asDictionary()) {
          categories_.push_back(std::make_shared<ZELMAccountEntryCategory>(d));
        }
      }
    }
  }
  if (const plist::Value* n = book->find("nextCategoryNumber")) nextCategoryNumber_ = n->intValue();
  if (const plist::Value* n = book->find("nextAccountNumber")) nextAccountNumber_ = n->intValue();
  // Numbers stay unique even when the counters were edited by hand.
  for (const auto& category : allCategories()) {
    if (category->number() >= nextCategoryNumber_) nextCategoryNumber_ = category->number() + 1;
  }

  const plist::Value* accounts = book->find("accounts");
  const plist::Array* list = accounts ? accounts->asArray() : nullptr;
  if (list == nullptr) return true;
  for (const plist::Value& item : *list) {
    const plist::Dictionary* entry = item.asDictionary();
    const plist::Value* number = entry ? entry->find("number") : nullptr;
    if (number == nullptr || !number->isInteger()) {
      error = path.string() + ": an account in the list has no number";
      return false;
    }
    const std::filesystem::path account_path = AccountPath(number->intValue());
    auto account_file = ReadAccountFile(account_path);
    if (!account_file) {
      error = DescribeReadError(account_path, account_file.error());
      return false;
    }
    FileLogSink log(account_path.string());
    auto account = AccountFromFile(std::move(*account_file), this);
    if (account == nullptr) {
      error = account_path.string() + ": not an account file (the top level is not a dictionary)";
      return false;
    }
    // An account without a password opens whatever is given; one with a password opens with
    // $FOLVANT_PASSWORD, and otherwise stays locked (its balance shows as zero).
    account->Authenticate(password ? std::optional<std::string_view>(*password) : std::nullopt);
    if (account->GetNumber() >= nextAccountNumber_) nextAccountNumber_ = account->GetNumber() + 1;
    accounts_.push_back(std::move(account));
  }
  return true;
}

std::filesystem::path Book::AccountPath(std::int32_t number) const {
  return directory_ / "accounts" / (std::to_string(number) + ".plist");
}

bool Book::Save(std::string& error, plist::Format format) const {
  plist::Array currencies;
  for (const auto& c : currencies_) currencies.emplace_back(c->asDictionary());
  plist::Array categories;
  for (const auto& c : categories_) categories.emplace_back(c->asDictionary());
  plist::Array accounts;
  for (const auto& a : accounts_) {
    accounts.emplace_back(plist::Dictionary{{"number", a->GetNumber()}, {"name", a->GetName()}});
  }
  plist::Dictionary book{{"version", kBookVersion},
                         {"currencies", std::move(currencies)},
                         {"categories", std::move(categories)},
                         {"nextCategoryNumber", nextCategoryNumber_},
                         {"nextAccountNumber", nextAccountNumber_},
                         {"accounts", std::move(accounts)}};

  std::error_code ec;
  std::filesystem::create_directories(directory_ / "accounts", ec);
  platform::SafeFileBatch batch;
  for (const auto& account : accounts_) {
    if (!batch.Stage(AccountPath(account->GetNumber()), AccountFileBytes(*account, format),
                     error)) {
      return false;
    }
  }
  if (!batch.Stage(directory_ / kBookFileName, plist::Write(plist::Value(std::move(book)), format),
                   error)) {
    return false;
  }
  return batch.Commit(error);
}

std::shared_ptr<LVCurrency> Book::currency() const { return currencies_.front(); }

std::shared_ptr<LVCurrency> Book::currencyWithCode(std::string_view code) const {
  for (const auto& c : currencies_) {
    if (c->code() == code) return c;
  }
  return nullptr;
}

std::shared_ptr<ZELMAccountEntryCategory> Book::categoryWithNumber(std::int32_t number) const {
  for (const auto& top : categories_) {
    if (top->number() == number) return top;
    for (const auto& child : top->allChildren()) {
      if (child->number() == number) return child;
    }
  }
  return nullptr;
}

std::vector<std::shared_ptr<ZELMAccountEntryCategory>> Book::allCategories() const {
  std::vector<std::shared_ptr<ZELMAccountEntryCategory>> all;
  for (const auto& top : categories_) {
    all.push_back(top);
    for (auto& child : top->allChildren()) all.push_back(std::move(child));
  }
  return all;
}

std::shared_ptr<ZELMAccountEntryType> Book::accountEntryTypeForNumber(std::int32_t number) const {
  for (const auto& account : accounts_) {
    if (auto type = account->accountEntryTypeForNumber(number)) return type;
  }
  return nullptr;
}

std::shared_ptr<ZELMAccount> Book::FindAccount(std::string_view name) const {
  for (const auto& account : accounts_) {
    if (platform::CaseInsensitiveEqual(account->GetName(), name)) return account;
  }
  for (const auto& account : accounts_) {
    if (std::to_string(account->GetNumber()) == name) return account;
  }
  return nullptr;
}

std::shared_ptr<ZELMAccount> Book::AddAccount(std::string_view name) {
  auto account = std::make_shared<ZELMAccount>();
  account->setAccountsController(this);
  account->Authenticate(std::nullopt);
  account->SetName(std::string(name));
  account->SetNumber(nextAccountNumber_++);
  account->setCurrency(currency());
  accounts_.push_back(account);
  return account;
}

std::shared_ptr<ZELMAccountEntryCategory> Book::AddCategory(std::string_view name,
                                                            ZELMAccountEntryCategory* parent) {
  auto category = std::make_shared<ZELMAccountEntryCategory>();
  category->setName(std::string(name));
  category->setNumber(nextCategoryNumber_++);
  if (parent != nullptr) {
    parent->addChild(category);
  } else {
    categories_.push_back(category);
  }
  return category;
}

}  // namespace folvant
