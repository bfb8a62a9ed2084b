// JPEGs of four inks, as programs for print write them.
#pragma once

#include <QImage>
#include <string_view>

// The picture in sRGB, as stored, not turned upright: by its own profile, or as inks that absorb
// all of their colour where it has none. Null when `bytes` are no such JPEG. Ends the process, as a
// failure, when the file is damaged before its first row.
QImage decodedCmykJpeg(std::string_view bytes);
