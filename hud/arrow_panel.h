// The windows of panels that show something of the clipboard.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "platform/window.h"

namespace marbelot {

// After this time a panel that fades out is gone, in seconds; what it showed is let go of then.
inline constexpr double fadedSeconds = 1;

// Can have the keys, but is never what the user works in; above full-screen windows, on every
// desktop.
struct HUDArrowPanel : WindowDescription {
  // Gets the code of a key that is pressed in the panel, and tells whether it has taken it.
  using OnArrow = std::function<bool(KeyCode code)>;

  HUDArrowPanel(std::string kind, std::string heading, OnArrow onArrow) {
    id = std::move(kind);
    title = std::move(heading);
    titled = false;
    panel = true;
    level = WindowLevel::raised;
    everySpace = true;
    if (onArrow)
      keyDown = [onArrow = std::move(onArrow)](const KeyEvent& key) { return onArrow(key.code); };
  }
};

}  // namespace marbelot
