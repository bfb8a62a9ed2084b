#include "recognition/table_rows.h"

#include <algorithm>

namespace marbelot {
namespace {

// Fewer rows may be any two things side by side.
constexpr int fewestRows = 3;
// On average in a row; columns of prose have more.
constexpr int mostWordsInTwoCells = 7;

struct Row {
  Band band;
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
      rows.push_back({{line.top, line.bottom}});
    Row& row = rows.back();
    row.band.top = std::min(row.band.top, line.top);
    row.band.bottom = std::max(row.band.bottom, line.bottom);
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
    // A row of which only one cell was found does not end a table.
    std::size_t last = i;
    int ofCells = 1;
    for (std::size_t k = i + 1; k < rows.size() && k <= last + 2 && rows[k].isShort(); ++k) {
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
