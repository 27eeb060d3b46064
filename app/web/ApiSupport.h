#pragma once

// What the API's handlers share: a request's JSON read field by field, and an answer sent as
// JSON or as a refusal with its status. Included by the handlers' files only.

#include <httplib.h>

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "app/render/Json.h"
#include "app/web/Api.h"
#include "folvant/book/Book.h"
#include "folvant/book/BookError.h"
#include "folvant/book/Entries.h"
#include "folvant/book/RegisterView.h"
#include "folvant/platform/CivilDate.h"

namespace folvant::app::web {

using Request = httplib::Request;
using Response = httplib::Response;
using render::Json;
using render::JsonAmount;
using render::JsonText;

// A request that cannot be answered as asked: the status and one line saying why.
struct Refusal {
  int status = 400;
  std::string message;
  // The book's kind of refusal, for a page to act on: notFound, exists, invalid, busy, damaged,
  // locked, failed; empty for a request that does not read.
  std::string kind;
};

Refusal Bad(std::string message);
// The status that says what kind of refusal the book gave.
Refusal RefusalOf(const BookError& error);
void Send(Response& response, const Json& document);
void Send(Response& response, const Refusal& refusal);

// The body as a JSON object.
std::optional<Json> BodyOf(const Request& request, Refusal& refusal);

// The fields of a JSON object, each checked for its type; the first wrong one is kept.
class Fields {
 public:
  explicit Fields(const Json& object) : object_(object) {}

  std::optional<std::string> Text(const char* key, bool required = false) {
    const auto it = object_.find(key);
    if (it == object_.end() || it->is_null()) return Missing(key, required), std::nullopt;
    if (!it->is_string()) return Wrong(key, "a text"), std::nullopt;
    return it->get<std::string>();
  }
  std::optional<double> Amount(const char* key, bool required = false) {
    const auto it = object_.find(key);
    if (it == object_.end() || it->is_null()) return Missing(key, required), std::nullopt;
    std::optional<double> value;
    if (it->is_number()) value = it->get<double>();
    if (it->is_string()) value = ParseNumber(it->get<std::string>());
    if (!value || !std::isfinite(*value) || std::fabs(*value) > 1e12) {
      return Wrong(key, "an amount"), std::nullopt;
    }
    return value;
  }
  std::optional<std::int32_t> Integer(const char* key, bool required = false) {
    const auto it = object_.find(key);
    if (it == object_.end() || it->is_null()) return Missing(key, required), std::nullopt;
    if (!it->is_number_integer() || it->get<std::int64_t>() < 0 ||
        it->get<std::int64_t>() > 2'000'000'000) {
      return Wrong(key, "a whole number"), std::nullopt;
    }
    return static_cast<std::int32_t>(it->get<std::int64_t>());
  }
  std::optional<bool> Flag(const char* key) {
    const auto it = object_.find(key);
    if (it == object_.end() || it->is_null()) return std::nullopt;
    if (!it->is_boolean()) return Wrong(key, "true or false"), std::nullopt;
    return it->get<bool>();
  }
  std::optional<std::int32_t> Date(const char* key) {
    const std::optional<std::string> text = Text(key);
    if (!text || text->empty()) return std::nullopt;
    std::int32_t date = 0;
    if (!platform::ParseIsoDate(*text, date)) return Wrong(key, "a date, YYYY-MM-DD"), std::nullopt;
    return date;
  }
  std::vector<std::int32_t> Integers(const char* key) {
    std::vector<std::int32_t> numbers;
    const auto it = object_.find(key);
    if (it == object_.end() || !it->is_array() || it->empty()) {
      Wrong(key, "a list of entry numbers");
      return numbers;
    }
    for (const Json& value : *it) {
      if (!value.is_number_integer() || value.get<std::int64_t>() < 1 ||
          value.get<std::int64_t>() > 2'000'000'000) {
        Wrong(key, "a list of entry numbers");
        return {};
      }
      numbers.push_back(static_cast<std::int32_t>(value.get<std::int64_t>()));
    }
    return numbers;
  }

  // Line items: [{category, amount, description}], at least two.
  std::optional<std::vector<SplitFields>> Splits(const char* key) {
    const auto it = object_.find(key);
    if (it == object_.end() || it->is_null()) return std::nullopt;
    if (!it->is_array() || it->size() < 2 || it->size() > 1000) {
      return Wrong(key, "a list of at least two line items"), std::nullopt;
    }
    std::vector<SplitFields> splits;
    for (const Json& item : *it) {
      if (!item.is_object()) return Wrong(key, "a list of line items"), std::nullopt;
      Fields line(item);
      SplitFields split;
      split.category = line.Text("category").value_or("");
      split.description = line.Text("description").value_or("");
      split.amount = line.Amount("amount", true).value_or(0.0);
      if (line.problem()) {
        if (!problem_) problem_ = Bad("a line item: " + line.problem()->message);
        return std::nullopt;
      }
      splits.push_back(std::move(split));
    }
    return splits;
  }

  const std::optional<Refusal>& problem() const { return problem_; }

 private:
  static std::optional<double> ParseNumber(const std::string& text) {
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
  }
  void Missing(const char* key, bool required) {
    if (required && !problem_) problem_ = Bad(std::string("\"") + key + "\" is missing");
  }
  void Wrong(const char* key, const char* what) {
    if (!problem_) problem_ = Bad(std::string("\"") + key + "\" must be " + what);
  }

  const Json& object_;
  std::optional<Refusal> problem_;
};

// A whole number from the query: ?offset=200; `fallback` when it is not given.
std::optional<std::size_t> Count(const Request& request, const char* key, std::size_t fallback,
                                 Refusal& refusal);
// The code of one of the register's words (a sort order, a search field, a date range).
std::optional<std::int32_t> WordCode(const std::vector<RegisterWord>& words, std::string_view word);

// Entry fields from a JSON object: {date, amount, check, checkNumber, toFrom, description,
// type, category, notes, resolved, taxDeductible, splits}.
EntryFields EntryFieldsOf(Fields& fields);
// {account, entry, remembered, linked, balance}
Json ChangeJson(const EntryChange& change);

// Reading: the book opened for reading, the answer made from it.
template <class Answer>
auto Api::Read(Answer answer) {
  return [this, answer](const Request& request, Response& response) {
    auto reading = ReadBook(request.get_header_value(kSessionHeader));
    if (!reading) return Send(response, RefusalOf(reading.error()));
    Refusal refusal;
    std::optional<Json> document = answer(*reading->book, request, refusal);
    document ? Send(response, *document) : Send(response, refusal);
  };
}

// Changing: the JSON body read, the book opened for changing under its lock, changed, saved.
template <class Answer>
auto Api::Change(Answer answer) {
  return [this, answer](const Request& request, Response& response) {
    Refusal refusal;
    const std::optional<Json> body = BodyOf(request, refusal);
    if (!body) return Send(response, refusal);
    std::lock_guard lock(changes_);
    auto book = OpenForChange(request.get_header_value(kSessionHeader));
    if (!book) return Send(response, RefusalOf(book.error()));
    std::optional<Json> document = answer(**book, *body, refusal);
    if (!document) return Send(response, refusal);
    // The saved files have a new version, so the next reading reads them again.
    if (std::optional<BookError> failed = (*book)->Save()) {
      return Send(response, RefusalOf(*failed));
    }
    Send(response, *document);
  };
}

}  // namespace folvant::app::web
