#include "folvant/exchange/ZELMImporter.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <iterator>
#include <limits>

#include "folvant/platform/Clock.h"
#include "folvant/platform/LocalCalendar.h"
#include "folvant/values/ZELMUtilities.h"

namespace folvant {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Characters that separate the numbers of a date. A blank separates them too: "1 2 2005" reads
// as three numbers, not as one text of an unknown length.
bool IsDateSeparator(char c) {
  static constexpr std::string_view kSeparators = "/\\-.,*+^!@#$%&()_=[]{}|;:'\"<>`~ ";
  return kSeparators.find(c) != std::string_view::npos;
}

// The digits at the start of `text` as a number, clamped to 32 bits; 0 when there are none.
std::int32_t DigitsValue(std::string_view text) {
  std::int64_t value = 0;
  for (char c : text) {
    if (!IsDigit(c)) break;
    value = std::min<std::int64_t>(value * 10 + (c - '0'), std::numeric_limits<std::int32_t>::max());
  }
  return static_cast<std::int32_t>(value);
}

std::int32_t IntegerOf(std::string_view text, std::size_t from, std::size_t count) {
  if (from >= text.size()) return 0;
  return DigitsValue(text.substr(from, count));
}

std::string TodayInFormat(std::string_view format) {
  return platform::FormatLocalTime(DateNumberToNSCalendarDate(platform::Today()), format);
}

}  // namespace

std::string_view TrimmedBlanks(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

std::int32_t LeadingInteger(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) negative = text[i++] == '-';
  const std::int32_t value = DigitsValue(text.substr(i));
  return negative ? -value : value;
}

std::array<std::int32_t, 3> ZELMImporter::DateStringComponents(std::string_view text) const {
  std::string replaced;
  if (std::find_if(text.begin(), text.end(), IsDateSeparator) == text.end()) {
    if (text.size() == 6) {
      return {IntegerOf(text, 0, 2), IntegerOf(text, 2, 2), IntegerOf(text, 4, 2)};
    }
    if (text.size() == 8) {
      const std::size_t year = dateFormat_.find_first_of("yY");
      if (year == std::string::npos) {
        const std::string today = TodayInFormat(dateFormat_);
        return {IntegerOf(today, 0, 2), IntegerOf(today, 2, 2), IntegerOf(today, 4, 2)};
      }
      int before = 0;
      for (std::size_t i = 0; i < year; ++i) {
        const char c = dateFormat_[i];
        if (c == 'm' || c == 'M' || c == 'd' || c == 'D') ++before;
      }
      if (before == 0) return {IntegerOf(text, 0, 4), IntegerOf(text, 4, 2), IntegerOf(text, 6, 2)};
      if (before == 1) return {IntegerOf(text, 0, 2), IntegerOf(text, 2, 4), IntegerOf(text, 6, 2)};
      return {IntegerOf(text, 0, 2), IntegerOf(text, 2, 2), IntegerOf(text, 4, 4)};
    }
    replaced = TodayInFormat(dateFormat_);
    text = replaced;
  }
  std::array<std::int32_t, 3> components{0, 0, 0};
  std::size_t i = 0;
  for (std::int32_t& component : components) {
    while (i < text.size() && !IsDigit(text[i])) ++i;
    if (i == text.size()) break;
    component = DigitsValue(text.substr(i));
    while (i < text.size() && IsDigit(text[i])) ++i;
  }
  return components;
}

std::string ZELMImporter::TweakDateString(std::string_view text) const {
  const auto [a, b, c] = DateStringComponents(text);
  return std::to_string(a) + "/" + std::to_string(b) + "/" + std::to_string(c);
}

std::optional<std::int32_t> ZELMImporter::DateOfDateString(std::string_view text) const {
  std::string joined;
  if (dateFormat_.find("%y") != std::string::npos) {
    const auto [a, b, c] = DateStringComponents(text);
    joined = std::to_string(a % 100) + "/" + std::to_string(b % 100) + "/" + std::to_string(c % 100);
  } else {
    joined = TweakDateString(text);
  }
  const std::optional<platform::LocalTime> date = platform::ParseLocalTime(joined, dateFormat_);
  if (!date) return std::nullopt;
  const std::int32_t number = dateNumber(*date);
  if (number < 1'00'00 || number > 9999'12'31) return std::nullopt;
  return number;
}

std::string ZELMImporter::TweakAmountString(std::string_view text) const {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  std::string work(text);
  if (work.size() >= 2 && work.front() == '(' && work.back() == ')') {
    work.front() = '-';
    work.pop_back();
  }
  auto replaceAll = [&work](std::string_view from, std::string_view to) {
    if (from.empty()) return;
    std::string out;
    out.reserve(work.size());
    for (std::size_t i = 0; i < work.size();) {
      if (work.compare(i, from.size(), from) == 0) {
        out += to;
        i += from.size();
      } else {
        out += work[i++];
      }
    }
    work = std::move(out);
  };
  replaceAll(thousandsSeparator_, "");
  replaceAll(decimalSeparator_, ".");
  std::string kept;
  kept.reserve(work.size());
  for (char c : work) {
    if (IsDigit(c) || c == '.' || c == '-') kept += c;
  }
  return kept;
}

double ZELMImporter::AmountOfAmountString(std::string_view text) const {
  const std::string tweaked = TweakAmountString(text);
  double value = 0.0;
  const auto [end, error] =
      std::from_chars(tweaked.data(), tweaked.data() + tweaked.size(), value);
  (void)end;
  if (error != std::errc() || !std::isfinite(value) || std::fabs(value) > 1e15) return 0.0;
  return value;
}

void ZELMImporter::SetRecordAmount(ImportRecord& record, double amount) const {
  record.amount = amount;
  record.isDeposit = amount > 0.0 ? true : amount < 0.0 ? false : importZeroAmountsAsDeposits_;
}

ImportRecord ZELMImporter::NewRecord() const {
  ImportRecord record;
  record.amount = 0.0;
  record.isDeposit = importZeroAmountsAsDeposits_;
  return record;
}

std::optional<ZELMImporter::FileText> ZELMImporter::ReadFileText(
    const std::string& path, platform::StringEncoding encoding) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (file.bad()) return std::nullopt;
  if (encoding != platform::kNoEncoding) {
    if (std::optional<std::string> text = platform::DecodeBytes(bytes, encoding)) {
      return FileText{std::move(*text), encoding};
    }
  }
  platform::GuessedText guessed = platform::DecodeBytesGuessingEncoding(bytes);
  return FileText{std::move(guessed.text), guessed.encoding};
}

}  // namespace folvant
