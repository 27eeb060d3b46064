#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "folvant/platform/plist/Value.h"

namespace folvant {

// One line item of an imported record, as the file gives it.
struct ImportSplit {
  double amount = 0.0;
  std::string category;
  std::string description;
};

// One transaction read from a foreign file, before it belongs to any account. Every field is
// present only when the file gave it; "amount" and "isDeposit" are set from the moment a QIF
// or delimited-text record is made, and by an OFX record only when it has an amount.
struct ImportRecord {
  std::optional<std::int32_t> date;  // YYYYMMDD
  std::optional<double> amount;      // signed as found in the file
  std::optional<bool> isDeposit;
  std::optional<std::string> toFrom;
  std::optional<std::string> description;
  std::optional<std::string> category;  // a name as written in the file
  std::optional<bool> cleared;
  std::optional<std::int32_t> number;
  std::optional<std::string> type;
  std::optional<std::string> notes;
  std::optional<std::string> fitID;
  std::optional<std::vector<ImportSplit>> splits;
  // The date as the file writes it, kept by the readers whose date order depends on a format,
  // so that the order can be chosen after reading. Not part of the dictionary.
  std::optional<std::string> dateText;

  // The record as a dictionary with the keys "date", "amount", "isDeposit", "toFrom",
  // "description", "category", "cleared", "number", "type", "notes", "fitID" and "splits"
  // (each split with "amount", "category" and "description"), the absent ones left out.
  plist::Dictionary asDictionary() const;
};

using ImportRecords = std::vector<ImportRecord>;

// An entry type named by a file: the name and whether it is a deposit type.
struct ImportType {
  std::string name;
  bool isDeposit = false;
  friend bool operator==(const ImportType&, const ImportType&) = default;
};

// Adds to `types` every (type name, deposit) pair of the records that is not there yet, in the
// order met; one name can so appear once as a deposit type and once as a debit type.
void AddImportTypes(const ImportRecords& records, std::vector<ImportType>& types);

}  // namespace folvant
