#include "recognition/table_rows.h"

#include <algorithm>
#include <cstdlib>

namespace marbelot {
namespace {

// Fewer rows may be any two things side by side.
constexpr int fewestRows = 3;
// On average in a row; columns of prose have more.
constexpr int mostWordsInTwoCells = 7;
// Between two whole ones; more of them when they begin where the table does.
constexpr std::size_t mostTornRows = 1, mostAlignedTornRows = 5;

struct Row {
  Band band;
  int left = 0;
  int cells = 0, words = 0;

  bool isShort() const { return 2 * words <= mostWordsInTwoCells * cells; }
  bool isOfCells() const { return cells > 1 && isShort(); }
};

std::vector<Row> rowsOf(std::vector<FoundLine> lines) {
  std::sort(lines.begin(), lines.end(), [](const FoundLine& a, const FoundLine& b) {
    return a.top + a.bottom < b.top + b.bottom;
  });
  std::vector<Row> rows;
  for (const FoundLine& line : lines) {
    const int middle = (line.top + line.bottom) / 2;
    if (rows.empty() || middle >= rows.back().band.bottom)
      rows.push_back({{line.top, line.bottom}, line.left});
    Row& row = rows.back();
    row.band.top = std::min(row.band.top, line.top);
    row.band.bottom = std::max(row.band.bottom, line.bottom);
    row.left = std::min(row.left, line.left);
    ++row.cells;
    row.words += line.words;
  }
  return rows;
}

}  // namespace

std::vector<Band> tablesAmong(std::vector<FoundLine> lines) {
  const std::vector<Row> rows = rowsOf(std::move(lines));
  std::vector<Band> tables;
  for (std::size_t i = 0; i < rows.size();) {
    if (!rows[i].isOfCells()) {
      ++i;
      continue;
    }
    // Rows of which only one cell was found do not end a table.
    std::size_t last = i;
    int ofCells = 1;
    const auto mayGoOn = [&](const Row& row, std::size_t torn) {
      const bool isAligned = std::abs(row.left - rows[i].left) <= row.band.bottom - row.band.top;
      return row.isShort() && torn <= (isAligned ? mostAlignedTornRows : mostTornRows);
    };
    for (std::size_t k = i + 1; k < rows.size() && mayGoOn(rows[k], k - last - 1); ++k) {
      if (!rows[k].isOfCells()) continue;
      last = k;
      ++ofCells;
    }
    if (ofCells >= fewestRows) tables.push_back({rows[i].band.top, rows[last].band.bottom});
    i = last + 1;
  }
  return tables;
}

}  // namespace marbelot
