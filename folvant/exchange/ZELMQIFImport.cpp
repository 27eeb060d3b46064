#include "folvant/exchange/ZELMQIFImport.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <unordered_set>

#include "folvant/platform/Log.h"
#include "folvant/platform/Text.h"

namespace folvant {
namespace {

constexpr std::string_view kAccountHeader = "!Account\r";
constexpr std::string_view kTypeHeader = "!Type:";
constexpr std::string_view kSectionStart = "\r!";


// The text of the first line with this code in a record ("\r" + code), nullopt when there is
// none or it is empty.
std::optional<std::string_view> Field(std::string_view record, char code) {
  const char key[2] = {'\r', code};
  const std::size_t at = record.find(std::string_view(key, 2));
  if (at == std::string_view::npos) return std::nullopt;
  const std::size_t start = at + 2;
  const std::size_t end = std::min(record.find('\r', start), record.size());
  if (end == start) return std::nullopt;
  return record.substr(start, end - start);
}

// Every line with this code, in order; an empty line gives "".
std::vector<std::string_view> Fields(std::string_view record, char code) {
  const char key[2] = {'\r', code};
  std::vector<std::string_view> lines;
  for (std::size_t at = record.find(std::string_view(key, 2)); at != std::string_view::npos;
       at = record.find(std::string_view(key, 2), at + 1)) {
    const std::size_t start = at + 2;
    const std::size_t end = std::min(record.find('\r', start), record.size());
    lines.push_back(record.substr(start, end - start));
  }
  return lines;
}

// The text from `from` to the next "\r!" (or the end).
std::string_view SectionFrom(std::string_view text, std::size_t from) {
  const std::size_t end = std::min(text.find(kSectionStart, from), text.size());
  return text.substr(from, end - from);
}

}  // namespace

const std::array<std::string_view, 5>& ZELMQIFImport::validListTypes() {
  static constexpr std::array<std::string_view, 5> kTypes = {"Bank", "CCard", "Cash", "Oth L",
                                                              "Oth A"};
  return kTypes;
}

ZELMQIFImport ZELMQIFImport::initWithContentsOfFile(const std::string& path,
                                                    platform::StringEncoding encoding) {
  std::optional<FileText> file = ReadFileText(path, encoding);
  if (!file) return ZELMQIFImport(std::nullopt);
  return ZELMQIFImport(file->text);
}

void ZELMQIFImport::SetDataString(std::optional<std::string_view> text) {
  dataString_.clear();
  entryCategoriesListString_.clear();
  if (!text) {
    SetError(kNoText);
    return;
  }
  std::string prepared;
  prepared.reserve(text->size() + 1);
  prepared += '\r';
  prepared += *text;
  // Every "\n" becomes "\r" except a last character of the text.
  for (std::size_t i = 0; i < text->size(); ++i) {
    if (prepared[i] == '\n') prepared[i] = '\r';
  }
  SaveEntryCategoriesListString(prepared);

  const std::size_t option = prepared.find("!Option:AutoSwitch");
  if (option != std::string::npos) {
    constexpr std::string_view kClear = "!Clear:AutoSwitch\r";
    const std::size_t clear = prepared.find(kClear, option);
    if (clear == std::string::npos) {
      ZELMLog("No end to !Option:AutoSwitch tag in [ZELMQIFImport SetDataString:].");
      SetError(kUnclosedAutoSwitch);
      RemoveInvalidAccounts();
      return;
    }
    prepared.erase(option, clear + kClear.size() - option);
  }
  dataString_ = std::move(prepared);
  RemoveInvalidAccounts();
}

void ZELMQIFImport::SaveEntryCategoriesListString(std::string_view text) {
  constexpr std::string_view kHeader = "!Type:Cat";
  const std::size_t at = text.find("!Type:Cat\r");
  if (at == std::string_view::npos) return;
  entryCategoriesListString_ = SectionFrom(text, at + kHeader.size());
}

void ZELMQIFImport::RemoveInvalidAccounts() {
  std::vector<std::pair<std::size_t, std::size_t>> sections;
  for (std::size_t at = dataString_.find(kAccountHeader); at != std::string::npos;) {
    const std::size_t next = dataString_.find(kAccountHeader, at + kAccountHeader.size());
    const std::size_t end = next == std::string::npos ? dataString_.size() : next;
    sections.emplace_back(at, end);
    at = next;
  }
  std::string_view text = dataString_;
  std::vector<std::pair<std::size_t, std::size_t>> invalid;
  for (const auto& [start, end] : sections) {
    const std::string_view section = text.substr(start, end - start);
    bool valid = false;
    for (std::size_t at = section.find(kTypeHeader); at != std::string_view::npos && !valid;
         at = section.find(kTypeHeader, at + 1)) {
      const std::string_view rest = section.substr(at + kTypeHeader.size());
      for (std::string_view type : validListTypes()) valid = valid || rest.starts_with(type);
    }
    if (!valid) invalid.emplace_back(start, end);
  }
  for (auto it = invalid.rbegin(); it != invalid.rend(); ++it) {
    dataString_.erase(it->first, it->second - it->first);
  }
}

ZELMQIFImport::Result ZELMQIFImport::parse() const {
  Result result;
  result.entries = Entries();
  for (const std::string& name : AccountNames()) {
    result.accounts.push_back({name, EntriesForAccountWithName(name)});
  }
  result.categories = CategoriesWith(result.entries);
  return result;
}

std::vector<std::string> ZELMQIFImport::AccountNames() const {
  std::vector<std::string> names;
  const std::string_view text = dataString_;
  for (std::size_t at = text.find(kAccountHeader); at != std::string_view::npos;
       at = text.find(kAccountHeader, at + 1)) {
    const std::size_t caret = std::min(text.find('^', at), text.size());
    const std::string_view header = text.substr(at, caret - at);
    const std::size_t n = header.find("\rN");
    if (n == std::string_view::npos) continue;
    const std::size_t end = header.find('\r', n + 2);
    if (end == std::string_view::npos) continue;
    names.emplace_back(header.substr(n + 2, end - n - 2));
  }
  return names;
}

std::string_view ZELMQIFImport::AccountWithName(std::string_view name) const {
  const std::string_view text = dataString_;
  const std::string key = "\rN" + std::string(name);
  for (std::size_t at = text.find(kAccountHeader); at != std::string_view::npos;
       at = text.find(kAccountHeader, at + 1)) {
    const std::size_t caret = std::min(text.find('^', at), text.size());
    if (text.substr(at, caret - at).find(key) == std::string_view::npos) continue;
    const std::size_t start = at + 1;
    const std::size_t end = std::min(text.find("!Account", start), text.size());
    return text.substr(start, end - start);
  }
  return {};
}

ImportRecords ZELMQIFImport::EntriesForAccountWithName(std::string_view name) const {
  ImportRecords records;
  AppendRegisterRecords(AccountWithName(name), records, true);
  return records;
}

ImportRecords ZELMQIFImport::Entries() const {
  ImportRecords records;
  AppendRegisterRecords(dataString_, records, false);
  if (records.empty() && !dataString_.empty() &&
      dataString_.find(kTypeHeader) == std::string::npos) {
    records = EntryListStringToEntries(dataString_);
  }
  return records;
}

void ZELMQIFImport::AppendRegisterRecords(std::string_view text, ImportRecords& into,
                                          bool exactType) const {
  auto appendFrom = [&](std::size_t bodyStart) {
    ImportRecords list = EntryListStringToEntries(SectionFrom(text, bodyStart));
    // The usual file has one register: its records are taken whole, not moved one by one.
    if (into.empty()) {
      into = std::move(list);
      return;
    }
    into.insert(into.end(), std::make_move_iterator(list.begin()),
                std::make_move_iterator(list.end()));
  };
  if (exactType) {
    // An account's registers, type by type.
    for (std::string_view type : validListTypes()) {
      const std::string header = std::string(kTypeHeader) + std::string(type);
      for (std::size_t at = text.find(header); at != std::string_view::npos;
           at = text.find(header, at + 1)) {
        appendFrom(std::min(text.find('\r', at), text.size()));
      }
    }
    return;
  }
  for (std::size_t at = text.find(kTypeHeader); at != std::string_view::npos;
       at = text.find(kTypeHeader, at + 1)) {
    const std::size_t lineEnd = std::min(text.find('\r', at), text.size());
    const std::string_view type =
        TrimmedBlanks(text.substr(at + kTypeHeader.size(), lineEnd - at - kTypeHeader.size()));
    for (std::string_view valid : validListTypes()) {
      if (platform::AsciiEqualIgnoringCase(type, valid)) {
        appendFrom(lineEnd);
        break;
      }
    }
  }
}

ImportRecords ZELMQIFImport::EntryListStringToEntries(std::string_view list) const {
  ImportRecords records;
  records.reserve(static_cast<std::size_t>(std::count(list.begin(), list.end(), '^')));
  for (std::size_t start = 0, caret = list.find('^'); caret != std::string_view::npos;
       start = caret + 1, caret = list.find('^', start)) {
    records.push_back(EntryStringToEntry(list.substr(start, caret - start)));
  }
  return records;
}

void ZELMQIFImport::Route(ImportRecord& record, std::int32_t code, std::string_view text) const {
  switch (code) {
    case kToCategory:
      record.category = std::string(text);
      break;
    case kToToFrom:
      record.toFrom = std::string(text);
      break;
    case kToDescription:
      record.description = std::string(text);
      break;
    default:
      break;
  }
}

ImportRecord ZELMQIFImport::EntryStringToEntry(std::string_view text) const {
  ImportRecord record = NewRecord();
  if (auto date = Field(text, 'D')) {
    record.date = DateOfDateString(*date);
    record.dateText = std::string(*date);
  }
  if (auto amount = Field(text, 'T')) SetRecordAmount(record, AmountOfAmountString(*amount));
  if (auto payee = Field(text, 'P')) Route(record, swapOptions_ToFrom_, *payee);
  if (auto memo = Field(text, 'M')) Route(record, swapOptions_Description_, *memo);
  record.cleared = Field(text, 'C').has_value();
  if (auto category = Field(text, 'L')) Route(record, swapOptions_Category_, *category);
  if (auto number = Field(text, 'N')) {
    const std::int32_t value = LeadingInteger(*number);
    if (value != std::numeric_limits<std::int32_t>::max()) record.number = value;
  }
  if (!importSplitLineItems_) return record;

  const std::vector<std::string_view> categories = Fields(text, 'S');
  const std::vector<std::string_view> memos = Fields(text, 'E');
  const std::vector<std::string_view> amountLines = Fields(text, '$');
  if (amountLines.empty()) return record;
  std::vector<double> amounts;
  amounts.reserve(amountLines.size());
  double sum = 0.0;
  for (std::string_view line : amountLines) {
    amounts.push_back(AmountOfAmountString(line));
    sum += amounts.back();
  }
  // Line items written with the opposite sign convention to the total are accepted.
  const double total = record.amount.value_or(0.0);
  if (std::fabs(sum - total) > 0.01) {
    if (std::fabs(-sum - total) > 0.01) return record;
    for (double& amount : amounts) amount = -amount;
  }
  std::vector<std::string_view> categoryList = categories;
  std::vector<std::string_view> memoList = memos;
  if (categoryList.empty() && memoList.size() == amounts.size()) {
    categoryList.assign(amounts.size(), std::string_view());
  } else if (memoList.empty() && categoryList.size() == amounts.size()) {
    memoList.assign(amounts.size(), std::string_view());
  }
  if (categoryList.size() != amounts.size() || memoList.size() != amounts.size()) return record;
  std::vector<ImportSplit> splits;
  splits.reserve(amounts.size());
  for (std::size_t i = 0; i < amounts.size(); ++i) {
    splits.push_back({amounts[i], std::string(categoryList[i]), std::string(memoList[i])});
  }
  record.splits = std::move(splits);
  return record;
}

std::vector<std::string> ZELMQIFImport::EntryCategories() const {
  return CategoriesWith(Entries());
}

std::vector<std::string> ZELMQIFImport::CategoriesWith(const ImportRecords& records) const {
  std::vector<std::string> names;
  // Folded names seen, and the exact texts already checked (most records repeat a few names).
  std::unordered_set<std::string> folded;
  std::unordered_set<std::string_view> checked;
  for (const ImportType& category :
       EntryCategoryListStringToEntryCategories(entryCategoriesListString_)) {
    names.push_back(category.name);
    folded.insert(platform::CaseFold(category.name));
  }
  for (const ImportRecord& record : records) {
    if (!record.category || !checked.insert(*record.category).second) continue;
    if (folded.insert(platform::CaseFold(*record.category)).second) {
      names.push_back(*record.category);
    }
  }
  return names;
}

std::vector<ImportType> ZELMQIFImport::EntryCategoryListStringToEntryCategories(
    std::string_view list) const {
  std::vector<ImportType> categories;
  for (std::size_t start = 0, caret = list.find('^'); caret != std::string_view::npos;
       start = caret + 1, caret = list.find('^', start)) {
    if (auto category = EntryCategoryStringToEntryCategory(list.substr(start, caret - start))) {
      categories.push_back(std::move(*category));
    }
  }
  return categories;
}

std::optional<ImportType> ZELMQIFImport::EntryCategoryStringToEntryCategory(
    std::string_view text) const {
  const std::optional<std::string_view> name = Field(text, 'N');
  if (!name) return std::nullopt;
  return ImportType{std::string(*name), text.find("\rI") != std::string_view::npos};
}

}  // namespace folvant
