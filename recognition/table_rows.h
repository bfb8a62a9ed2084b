// Where lines stand in rows of cells. A recogniser that looks for columns of prose reads a table
// column by column, and loses cells that stand alone.
#pragma once

#include <vector>

namespace marbelot {

// As it was read: a line of one column.
struct FoundLine {
  int left = 0, top = 0, right = 0, bottom = 0;  // pixels, y down
  int words = 0;
};

// From one row of pixels to another, over the whole width.
struct Band {
  int top = 0, bottom = 0;
  bool holds(const FoundLine& line) const {
    const int middle = (line.top + line.bottom) / 2;
    return middle >= top && middle < bottom;
  }
};

// The tables, from the top down.
std::vector<Band> tablesAmong(std::vector<FoundLine> lines);

}  // namespace marbelot
