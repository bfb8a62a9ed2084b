// Screens with text whose wording is known, drawn as desktops draw them.
#pragma once

#include <QImage>
#include <string>
#include <vector>

namespace marbelot::bench {

struct Screen {
  std::string kind;  // e.g. "light 13 px"
  std::string font;
  QImage picture;
  QString text;  // in reading order, lines separated by line feeds; empty for a photo
};

std::vector<Screen> renderedScreens();

}  // namespace marbelot::bench
