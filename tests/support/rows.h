// Tables of cases in tests/data: a row on each line, its cells between tabs. A line "== NAME"
// begins a table, and one that begins with "# " says what comes. In a cell \n, \r, \t and \\ mean
// what they mean in C, \xHH is a byte, \uHHHH and \UHHHHHHHH a character.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <ostream>
#include <string>
#include <vector>

#include "platform/text.h"

namespace marbelot {

struct Row {
  std::string where;  // file and line
  std::vector<std::string> cells;

  // Empty for a cell that is left out at the end.
  std::string operator[](std::size_t cell) const {
    return cell < cells.size() ? cells[cell] : std::string();
  }
  friend std::ostream& operator<<(std::ostream& out, const Row& row) { return out << row.where; }
};

inline std::string unescapedCell(std::string_view written) {
  std::string cell;
  for (std::size_t at = 0; at < written.size(); ++at) {
    const char kind = written[at] == '\\' ? written[++at] : '\0';
    const std::size_t digits = kind == 'x' ? 2 : kind == 'u' ? 4 : kind == 'U' ? 8 : 0;
    if (digits > 0) {
      const auto value = std::strtoul(std::string(written, at + 1, digits).c_str(), nullptr, 16);
      at += digits;
      if (kind == 'x') {
        cell += static_cast<char>(value);
      } else {
        text::appendScalar(cell, static_cast<char32_t>(value));
      }
    } else {
      cell += kind == 'n' ? '\n' : kind == 'r' ? '\r' : kind == 't' ? '\t' : written[at];
    }
  }
  return cell;
}

// The rows of the file's table of that name; of all, in a file without tables.
inline std::vector<Row> rowsOf(const std::string& name, const std::string& table = {}) {
  std::ifstream file(MARBELOT_TEST_DATA "/" + name);
  std::vector<Row> rows;
  std::string at;
  int number = 0;
  for (std::string line; std::getline(file, line);) {
    ++number;
    if (line.starts_with("== ")) at = line.substr(3);
    if (at != table || line.starts_with("== ") || line.starts_with("# ")) continue;
    Row row{name + ":" + std::to_string(number), {}};
    for (std::size_t start = 0; start <= line.size();) {
      const std::size_t end = std::min(line.find('\t', start), line.size());
      row.cells.push_back(unescapedCell(std::string_view(line).substr(start, end - start)));
      start = end + 1;
    }
    rows.push_back(std::move(row));
  }
  EXPECT_FALSE(rows.empty()) << name << " has no " << table;
  return rows;
}

}  // namespace marbelot
