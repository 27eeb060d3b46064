#pragma once

#include <string>

#include "app/render/Json.h"
#include "folvant/book/Entries.h"

namespace folvant {
class LVCurrency;
}  // namespace folvant

namespace folvant::render {

// How the entry and transfer commands show an entry: one "Field: value" line per field that
// has a value, then the split line items as a table.
void AppendEntryText(std::string& out, const EntryDetails& entry, const LVCurrency& currency);
// {number, date, checkNumber, kind, type, category, toFrom, description, notes, amount, resolved,
// taxDeductible, void, splits: [{category, description, toFrom, amount}], linked: {account,
// number, found}, exchangedAmount, runningBalance}
render::Json EntryJson(const EntryDetails& entry);
// [{category, description, toFrom, amount}]
render::Json SplitsJson(const std::vector<EntryDetails::Line>& splits);
// {account, number, what}, or null.
render::Json LinkedJson(const std::optional<LinkedChange>& linked);
// "The transfer's other side, entry 12 of "Savings", was voided too."
std::string LinkedLine(const LinkedChange& linked);

}  // namespace folvant::render
