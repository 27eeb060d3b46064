#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/exchange/ZELMImporter.h"

namespace folvant {

// Reads Quicken Interchange Format text: whole multi-account files, single registers and files
// of bare records. Each line starts with a one-letter field code, "^" ends a record and a line
// starting with "!" starts a section. Bank, credit-card, cash and other asset and liability
// registers are read; investment registers and accounts holding only them are dropped.
//
//   ZELMQIFImport reader(text);
//   reader.SetDateFormat("%d/%m/%Y");
//   ZELMQIFImport::Result result = reader.parse();
class ZELMQIFImport : public ZELMImporter {
 public:
  // Where a payee, memo or category field goes: 0 category, 1 to/from, 2 description; any
  // other code drops the field.
  static constexpr std::int32_t kToCategory = 0;
  static constexpr std::int32_t kToToFrom = 1;
  static constexpr std::int32_t kToDescription = 2;

  struct Account {
    std::string name;
    ImportRecords entries;
  };
  struct Result {
    ImportRecords entries;          // every register record of the file
    std::vector<Account> accounts;  // only when the file names accounts
    std::vector<std::string> categories;
  };

  // The register types read: "Bank", "CCard", "Cash", "Oth L", "Oth A".
  static const std::array<std::string_view, 5>& validListTypes();

  ZELMQIFImport() = default;
  // The text, prepared as SetDataString does; nullopt sets error 1.
  explicit ZELMQIFImport(std::optional<std::string_view> text) { SetDataString(text); }
  // A file read in `encoding`, or in the encoding its bytes suggest when they are not valid in
  // it. A file that cannot be read gives error 1 and no records.
  static ZELMQIFImport initWithContentsOfFile(const std::string& path,
                                              platform::StringEncoding encoding);

  // Prepares the text for reading: every line end becomes "\r" and a "\r" goes in front, so a
  // field is found as "\r" followed by its code. The very last character of the text is left
  // as it is, so a file ending in "\n" keeps that "\n". Keeps the category list section, drops
  // an "!Option:AutoSwitch" block (error 10 and no text when it has no "!Clear:AutoSwitch"
  // line) and drops the account sections that hold no register of a readable type.
  void SetDataString(std::optional<std::string_view> text);
  const std::string& dataString() const { return dataString_; }

  void SetSwapOptions_ToFrom(std::int32_t code) { swapOptions_ToFrom_ = code; }
  std::int32_t GetSwapOptions_ToFrom() const { return swapOptions_ToFrom_; }
  void SetSwapOptions_Category(std::int32_t code) { swapOptions_Category_ = code; }
  std::int32_t GetSwapOptions_Category() const { return swapOptions_Category_; }
  void SetSwapOptions_Description(std::int32_t code) { swapOptions_Description_ = code; }
  std::int32_t GetSwapOptions_Description() const { return swapOptions_Description_; }
  // Kept for the caller, who decides whether every listed category or only the used ones are
  // made; reading does not consult it.
  void SetImportAllCategories(bool on) { importAllCategories_ = on; }
  bool GetImportAllCategories() const { return importAllCategories_; }
  void SetImportSplitLineItems(bool on) { importSplitLineItems_ = on; }
  bool GetImportSplitLineItems() const { return importSplitLineItems_; }

  Result parse() const;

  // The names of the file's accounts, in file order.
  std::vector<std::string> AccountNames() const;
  // The text of the first account section whose name starts with `name` (so "Check" also
  // finds "Checking"), up to the next account; "" when there is none.
  std::string_view AccountWithName(std::string_view name) const;
  ImportRecords EntriesForAccountWithName(std::string_view name) const;
  // Every register record of the file; a file without any "!Type:" header is read as one
  // register.
  ImportRecords Entries() const;
  // The records of a list: each piece ending in "^" is one record; text after the last "^" is
  // dropped.
  ImportRecords EntryListStringToEntries(std::string_view list) const;
  ImportRecord EntryStringToEntry(std::string_view text) const;
  // The category list's names, then every record's category not yet named (ignoring case).
  std::vector<std::string> EntryCategories() const;
  // Name and income flag of each record of a category list ("N" and "I" lines).
  std::vector<ImportType> EntryCategoryListStringToEntryCategories(std::string_view list) const;
  std::optional<ImportType> EntryCategoryStringToEntryCategory(std::string_view text) const;

 private:
  void SaveEntryCategoriesListString(std::string_view text);
  void RemoveInvalidAccounts();
  std::vector<std::string> CategoriesWith(const ImportRecords& records) const;
  // Reads the records of every "!Type:<type>" section of `text` whose type is readable.
  void AppendRegisterRecords(std::string_view text, ImportRecords& into, bool exactType) const;
  void Route(ImportRecord& record, std::int32_t code, std::string_view text) const;

  std::string dataString_;
  std::string entryCategoriesListString_;
  bool importAllCategories_ = false;
  bool importSplitLineItems_ = true;
  std::int32_t swapOptions_Category_ = kToCategory;
  std::int32_t swapOptions_ToFrom_ = kToToFrom;
  std::int32_t swapOptions_Description_ = kToDescription;
};

}  // namespace folvant
