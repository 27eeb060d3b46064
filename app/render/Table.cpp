#include "app/render/Table.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace folvant::render {
namespace {

constexpr std::string_view kEllipsis = "…";  // one column wide

bool IsAscii(std::string_view text) {
  unsigned char any = 0;
  for (char c : text) any |= static_cast<unsigned char>(c);
  return any < 0x80;
}

// One character of a text: its bytes and its columns.
struct Unit {
  std::size_t size;
  std::size_t width;
};

std::size_t CodePointWidth(UChar32 c) {
  // The soft hyphen is a format character that terminals still show.
  if (c == 0xAD) return 1;
  // Hangul medial vowels and final consonants join the syllable before them.
  if (c >= 0x1160 && c <= 0x11FF) return 0;
  const std::int8_t type = u_charType(c);
  if (type == U_NON_SPACING_MARK || type == U_ENCLOSING_MARK || type == U_FORMAT_CHAR) return 0;
  const int east_asian = u_getIntPropertyValue(c, UCHAR_EAST_ASIAN_WIDTH);
  return east_asian == U_EA_WIDE || east_asian == U_EA_FULLWIDTH ? 2 : 1;
}

// The character that starts at `at`; a byte that starts no valid sequence is a unit alone.
Unit NextUnit(std::string_view text, std::size_t at) {
  const auto byte = static_cast<unsigned char>(text[at]);
  if (byte < 0x80) return {1, 1};
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  auto i = static_cast<std::int32_t>(at);
  // Texts longer than 2 GiB are not table cells; the cast keeps ICU's offsets in range.
  const auto length = static_cast<std::int32_t>(std::min<std::size_t>(text.size(), INT32_MAX));
  UChar32 c = 0;
  U8_NEXT(bytes, i, length, c);
  if (c < 0) return {1, 1};
  return {static_cast<std::size_t>(i) - at, CodePointWidth(c)};
}

void AppendSpaces(std::string& out, std::size_t count) { out.append(count, ' '); }

void AppendAligned(std::string& out, std::string_view text, std::size_t text_width,
                   std::size_t width, Align align) {
  if (align == Align::kRight) AppendSpaces(out, width - text_width);
  out.append(text);
  if (align == Align::kLeft) AppendSpaces(out, width - text_width);
}

}  // namespace

std::size_t DisplayWidth(std::string_view text) {
  if (IsAscii(text)) return text.size();
  std::size_t width = 0;
  for (std::size_t at = 0; at < text.size();) {
    const Unit unit = NextUnit(text, at);
    width += unit.width;
    at += unit.size;
  }
  return width;
}

void AppendPadded(std::string& out, std::string_view text, std::size_t width, Align align) {
  if (width == 0) return;
  if (IsAscii(text)) {
    if (text.size() <= width) {
      AppendAligned(out, text, text.size(), width, align);
    } else {
      out.append(text.substr(0, width - 1));
      out.append(kEllipsis);
    }
    return;
  }
  const std::size_t full = DisplayWidth(text);
  if (full <= width) {
    AppendAligned(out, text, full, width, align);
    return;
  }
  // Keep whole characters within width - 1 columns, with the marks that follow them.
  const std::size_t budget = width - 1;
  std::size_t kept = 0, used = 0;
  for (std::size_t at = 0; at < text.size();) {
    const Unit unit = NextUnit(text, at);
    if (unit.width > 0 && used + unit.width > budget) break;
    used += unit.width;
    at += unit.size;
    kept = at;
  }
  if (align == Align::kRight) AppendSpaces(out, budget - used);
  out.append(text.substr(0, kept));
  out.append(kEllipsis);
  if (align == Align::kLeft) AppendSpaces(out, budget - used);
}

void Table::AddColumn(std::string header, Align align, std::size_t width) {
  columns_.push_back({std::move(header), align, width, false});
}

void Table::AddFitColumn(std::string header, Align align, std::size_t maxWidth) {
  columns_.push_back({std::move(header), align, maxWidth, true});
}

void Table::AddRow(std::vector<std::string> cells) {
  cells.resize(columns_.size());
  std::move(cells.begin(), cells.end(), std::back_inserter(cells_));
}

std::size_t Table::rowCount() const {
  return columns_.empty() ? 0 : cells_.size() / columns_.size();
}

void Table::Write(std::string& out) const {
  const std::size_t count = columns_.size();
  if (count == 0) return;
  std::vector<std::size_t> widths(count);
  bool any_header = false;
  for (std::size_t c = 0; c < count; ++c) {
    const Column& column = columns_[c];
    any_header = any_header || !column.header.empty();
    if (!column.fit) {
      widths[c] = column.width;
      continue;
    }
    std::size_t widest = DisplayWidth(column.header);
    for (std::size_t i = c; i < cells_.size(); i += count) {
      widest = std::max(widest, DisplayWidth(cells_[i]));
    }
    widths[c] = std::min(widest, column.width);
  }

  const auto write_line = [&](auto&& cell) {
    const std::size_t start = out.size();
    for (std::size_t c = 0; c < count; ++c) {
      if (c > 0) out.append("  ");
      AppendPadded(out, cell(c), widths[c], columns_[c].align);
    }
    while (out.size() > start && out.back() == ' ') out.pop_back();
    out.push_back('\n');
  };
  if (any_header) write_line([&](std::size_t c) -> std::string_view { return columns_[c].header; });
  for (std::size_t row = 0; row < cells_.size(); row += count) {
    write_line([&](std::size_t c) -> std::string_view { return cells_[row + c]; });
  }
}

}  // namespace folvant::render
