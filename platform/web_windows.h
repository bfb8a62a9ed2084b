// Windows that show what is on the web: a page, or a place on a map.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/window.h"

namespace marbelot {

struct WebWindowDescription {
  enum class Kind { page, map };
  Kind kind = Kind::page;
  std::string subject;  // the page's URL, or the address of the place
  std::string title;
  std::string notFoundTitle;  // once the place turns out not to be found
  Size contentSize;
  // The window is gone: the user has closed it, or it could not be opened, which `problem` tells
  // the user then; empty otherwise. Called once, never before the window's maker has returned.
  std::function<void(const std::string& problem)> closed;
};

// Goes with its handle.
class WebWindow {
 public:
  virtual ~WebWindow() = default;
};

class WebWindows {
 public:
  virtual ~WebWindows() = default;
  // Activates the application and shows the window, centred and resizable, in front. What it shows
  // leaves no traces, asks for no permissions and has no way to the clipboard of its own.
  virtual std::unique_ptr<WebWindow> open(WebWindowDescription description) = 0;
};

}  // namespace marbelot
