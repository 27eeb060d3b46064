#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace folvant {
class ZELMFilterCondition;
}

namespace folvant {

// The command line's words for one filter condition:
//
//   FIELD [not] QUALIFIER [VALUE...]
//
//   description contains rent          payee does-not-start-with "Acme "
//   amount > 100                       amount not < 20.5
//   date in-last 3 months              date between 2026-01-01 2026-03-31
//   date this-year                     date not is-today
//   resolved yes                       tax-deductible is-not-set
//
// Fields: description, date, amount, type, check, payee, resolved, tax-deductible, category,
// void, check-number, amount-text, split-category, split-description, notes, general. Text
// fields take contains, starts-with, ends-with and is (negated: does-not-contain,
// does-not-start-with, does-not-end-with, is-not) followed by the rest of the line as the text;
// a text wrapped in double quotes keeps its outer spaces ("" is the empty text). `amount`
// compares numbers with =, > and <. The yes/no fields take yes, no, is-set and is-not-set.
// `date` takes before, on, after (a YYYY-MM-DD day), between (two days), is-today,
// is-yesterday, in-last and in-next (a count and a unit: days, weeks, months, quarters or
// years), between-ago (two counts and a unit), and the periods this-week … this-year,
// last-week … last-year and week-to-date … year-to-date. "not" before any qualifier keeps the
// entries that do not match. Words are matched ignoring case.

// The condition the words describe, or nullptr with `error` set to one line that names the
// word at fault and lists the words allowed in its place.
std::shared_ptr<ZELMFilterCondition> ParseCondition(std::string_view text, std::string& error);

// The condition written in the words above, so that ParseCondition gives it back. A condition
// that the words cannot express (a code the program does not know, no data, data of a kind the
// field does not use) is written as "[category C qualifier Q logic L data D]", which
// ParseCondition refuses.
std::string FormatCondition(const ZELMFilterCondition& condition);

}  // namespace folvant
