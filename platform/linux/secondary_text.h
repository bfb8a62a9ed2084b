// The colour of text that only helps.
#pragma once

#include <QPalette>

namespace marbelot {

// From 1, no difference, to 21, black on white; as WCAG 2.1 defines it.
double contrast(const QColor& one, const QColor& other);

// Paler than the theme's text on its windows, and still readable: themes' own colours for it often
// are not.
QColor secondaryText(const QPalette& palette);

}  // namespace marbelot
