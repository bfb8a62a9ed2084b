// What a panel shows of a text: what it is, and as much of its beginning as there is room for, with
// every secret in it masked.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/canvas.h"
#include "platform/value.h"
#include "text/text_analysis.h"

namespace marbelot {

// The width of a text on one line, in points.
using Measure = std::function<double(const std::string& text, const Font& font)>;

struct TextFace {
  std::string heading;             // "Python code — 12 lines"
  std::vector<std::string> lines;  // each fits the width; the last one ends in "…" if more follows
  Font font;                       // of the lines
};

struct FaceRoom {
  double width = 0;  // points
  std::size_t lines = 0;
};

TextFace textFace(const SharedText& text, const TextAnalysis& analysis, FaceRoom room,
                  const Measure& measure);

// The text on lines that fit: broken at blanks, and within a word where it is wider than a line.
// What there is no room for is left out, which "…" at the end of the last line tells.
std::vector<std::string> wrapped(std::string_view text, const Font& font, FaceRoom room,
                                 const Measure& measure);

// Whether the line begins with a script that is written from right to left.
bool startsRightToLeft(std::string_view line);

}  // namespace marbelot
