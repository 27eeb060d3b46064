#pragma once

#include <CLI/CLI.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/book/RegisterView.h"

namespace folvant::app {

// The register's filter options (--search, --field, --dates, --resolved, --unresolved,
// --tax-deductible, --not-tax-deductible), shared by the commands that pick entries as the
// register does.
struct FilterOptions {
  std::string search, field, dates;
  bool resolved = false, unresolved = false, taxDeductible = false, notTaxDeductible = false;
  CLI::Option* searchOption = nullptr;
  CLI::Option* fieldOption = nullptr;
  CLI::Option* datesOption = nullptr;
};

// Adds the options to the command; `what` ends the help of --search ("(remembered)").
void AddFilterOptions(CLI::App& command, FilterOptions& options, const std::string& searchHelp);

// What the options given ask for; each applies only when given.
RegisterFilterChange FilterChangeOf(const FilterOptions& options);

// The code of a word in `words`, or nullopt.
std::optional<std::int32_t> CodeOf(const std::vector<RegisterWord>& words, std::string_view word);
// A check that the value is one of the words.
CLI::Validator OneOf(const std::vector<RegisterWord>& words, const char* what);
// Words of a list, comma-separated, for help texts.
std::string WordList(const std::vector<RegisterWord>& words);

}  // namespace folvant::app
