#include "folvant/exchange/ImportRecord.h"

#include <set>
#include <utility>

namespace folvant {

plist::Dictionary ImportRecord::asDictionary() const {
  plist::Dictionary dict;
  if (date) dict.set("date", *date);
  if (amount) dict.set("amount", *amount);
  if (isDeposit) dict.set("isDeposit", *isDeposit);
  if (toFrom) dict.set("toFrom", *toFrom);
  if (description) dict.set("description", *description);
  if (category) dict.set("category", *category);
  if (cleared) dict.set("cleared", *cleared);
  if (number) dict.set("number", *number);
  if (type) dict.set("type", *type);
  if (notes) dict.set("notes", *notes);
  if (fitID) dict.set("fitID", *fitID);
  if (splits) {
    plist::Array array;
    array.reserve(splits->size());
    for (const ImportSplit& split : *splits) {
      plist::Dictionary item;
      item.set("amount", split.amount);
      item.set("category", split.category);
      item.set("description", split.description);
      array.emplace_back(std::move(item));
    }
    dict.set("splits", std::move(array));
  }
  return dict;
}

void AddImportTypes(const ImportRecords& records, std::vector<ImportType>& types) {
  std::set<std::pair<std::string, bool>> seen;
  for (const ImportType& type : types) seen.emplace(type.name, type.isDeposit);
  for (const ImportRecord& record : records) {
    if (!record.type) continue;
    const bool isDeposit = record.isDeposit.value_or(false);
    if (seen.emplace(*record.type, isDeposit).second) types.push_back({*record.type, isDeposit});
  }
}

}  // namespace folvant
