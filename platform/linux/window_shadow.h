// The soft shadow under windows without a title bar.
#pragma once

#include <QImage>

namespace marbelot {

inline constexpr int shadowMargin = 24;  // points, on every side

// The shadow of `shape`, whose alpha counts, larger by the margin on every side; none below it,
// because it may be translucent. Both have the shape's pixels a point.
QImage shadowOf(const QImage& shape);

}  // namespace marbelot
