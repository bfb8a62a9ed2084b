// Where panels stand: one of nine places of the screen that the user works on. Pure geometry.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/geometry.h"
#include "platform/keyboard.h"
#include "platform/screens.h"

namespace marbelot {

// A cell of a grid of 3 × 3, row by row from the top left: 0 to 8.
inline constexpr int placementCount = 9;
inline constexpr int topRightPlacement = 2;

// The placement that a setting's value stands for: top right unless it is one.
int placementOf(std::int64_t stored);

// The visible part of the screen with the pointer, else of the main screen.
Rect screenArea(const std::vector<Screen>& screens, Point pointer);

// The visible part of the screen that shows most of the frame, else of the main screen.
Rect screenAreaOf(const std::vector<Screen>& screens, const Rect& frame);

// The lower left corner of a panel. It keeps a margin to the area's edges; of one that is larger
// than the area, the lower left part shows.
Point originForPlacement(Size panel, int placement, const Rect& area);

// The nearest place to that one where the panel covers nothing of what is taken: beside it, a gap
// away. The place itself where there is no room beside.
Point originBeside(Size panel, int placement, const Rect& area, const std::vector<Rect>& taken);

// Where the origin of a panel may be that is to stay within the area: the nearest such point.
Point originWithin(const Rect& area, Size panel, Point origin);

// The corner that follows clockwise; the first one after a placement that is none.
int nextCorner(int placement);

// The place next to this one in the direction of an arrow key, itself at the edge. None for any
// other key.
std::optional<int> placementAfterKey(int placement, KeyCode key);

}  // namespace marbelot
