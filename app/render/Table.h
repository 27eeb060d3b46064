#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace folvant::render {

enum class Align { kLeft, kRight };

// Columns a UTF-8 text takes on a terminal: East Asian wide and fullwidth characters take
// two, combining marks and format characters (zero-width space, joiners) none, every other
// character one. A byte that is not part of a valid UTF-8 sequence takes one.
std::size_t DisplayWidth(std::string_view text);

// Appends the text padded with spaces to exactly `width` columns. A text that is wider is cut
// at a character boundary, with "…" at the cut; combining marks stay with their character,
// and a wide character that does not fit leaves a space instead.
void AppendPadded(std::string& out, std::string_view text, std::size_t width, Align align);

// A text table: one line of headers (left out when every header is empty), then one line per
// row, cells padded to their column's width and two spaces between columns. Lines have no
// trailing spaces.
class Table {
 public:
  // A column exactly `width` columns wide.
  void AddColumn(std::string header, Align align, std::size_t width);
  // A column as wide as its widest cell or header, but no wider than `maxWidth`.
  void AddFitColumn(std::string header, Align align,
                    std::size_t maxWidth = std::numeric_limits<std::size_t>::max());
  // A row of cells, one per column in order; missing cells are empty, extra ones ignored.
  void AddRow(std::vector<std::string> cells);

  std::size_t rowCount() const;
  void Write(std::string& out) const;

 private:
  struct Column {
    std::string header;
    Align align;
    std::size_t width;
    bool fit;
  };

  std::vector<Column> columns_;
  std::vector<std::string> cells_;  // row after row, one cell per column
};

}  // namespace folvant::render
