#include "recognition/rules.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace marbelot {
namespace {

constexpr int thickest = 3;           // pixels
constexpr int shortestUpright = 24;   // pixels; of a row's separator
constexpr int shortestLevel = 60;     // pixels; longer than a dash or underscores in code
constexpr int slimness = 14;          // its length over its thickness; more than that of an "l"
constexpr std::uint8_t visible = 24;  // of ink

// The plane as it is, or with rows and columns exchanged.
class View {
 public:
  View(Plane<std::uint8_t>& plane, bool turned) : plane_(plane), turned_(turned) {}
  int length() const { return turned_ ? plane_.height : plane_.width; }
  int lines() const { return turned_ ? plane_.width : plane_.height; }
  std::uint8_t& at(int along, int line) {
    return plane_.values[turned_ ? plane_.at(line, along) : plane_.at(along, line)];
  }
  bool isInk(int along, int line) {
    return line >= 0 && line < lines() && at(along, line) >= visible;
  }

 private:
  Plane<std::uint8_t>& plane_;
  const bool turned_;
};

// How far ink goes on across the line from there, up to one more than the thickest.
int thicknessAt(View& view, int along, int line) {
  int thickness = 1;
  for (const int step : {-1, 1})
    for (int k = 1; k <= thickest && view.isInk(along, line + step * k); ++k) ++thickness;
  return thickness;
}

// A rule crosses others and is touched by letters, but most of it stands alone.
bool isRule(View& view, int start, int end, int line) {
  int thin = 0, thickness = 1;
  for (int along = start; along < end; ++along) {
    const int here = thicknessAt(view, along, line);
    if (here > thickest) continue;
    ++thin;
    thickness = std::max(thickness, here);
  }
  const int length = end - start;
  return thin * 4 >= length * 3 && length >= slimness * thickness;
}

void eraseLines(Plane<std::uint8_t>& ink, bool turned, int shortest) {
  View view(ink, turned);
  struct Found {
    int start, end, line;
  };
  std::vector<Found> found;
  for (int line = 0; line < view.lines(); ++line) {
    for (int along = 0; along < view.length();) {
      int end = along;
      while (end < view.length() && view.isInk(end, line)) ++end;
      if (end - along >= shortest && isRule(view, along, end, line))
        found.push_back({along, end, line});
      along = end + 1;
    }
  }
  for (const Found& rule : found) {
    for (int along = rule.start; along < rule.end; ++along) {
      // What is thicker there is a letter that touches the line, or a crossing.
      if (thicknessAt(view, along, rule.line) <= thickest) view.at(along, rule.line) = 0;
    }
  }
}

}  // namespace

void eraseRules(Plane<std::uint8_t>& ink) {
  eraseLines(ink, true, shortestUpright);
  eraseLines(ink, false, shortestLevel);
}

}  // namespace marbelot
