// Pictures of the screen, and the programs whose windows are on it. Main thread only.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/image.h"
#include "platform/main_queue.h"

namespace marbelot {

// A program that the user sees as one.
struct RunningApplication {
  std::int64_t pid = 0;
  std::string name;           // in the user's language; empty when it has none
  std::optional<Image> icon;  // made of pixels, of any size
};

class ScreenCapture {
 public:
  virtual ~ScreenCapture() = default;

  // Has the system's tool take a picture and save it as the PNG file `path`. The arguments are:
  //   -i     the user drags a rectangle, and gives up with Escape
  //   -w     with -i: the user clicks a window instead
  //   -x     without a sound, of the whole screen
  //   -o     a window without its shadow
  //   -l N   of the window of that number
  // Calls `taken`, where that is known, as soon as the picture has only to be saved: the user has
  // chosen, and whoever drops the handle now loses it. Calls `finished` once; whether there is a
  // picture, the file tells. `problem` is one line for the user when there is something to do about
  // it, such as a tool to install. Dropping the handle takes the selection off the screen, and
  // nothing is called; a capture that is asked for then starts when the one before it has gone.
  [[nodiscard]] virtual Task capture(const std::vector<std::string>& arguments,
                                     const std::string& path, std::function<void()> taken,
                                     std::function<void(const std::string& problem)> finished) = 0;

  // Those with windows of their own, without this program, in no particular order.
  virtual std::vector<RunningApplication> runningApplications() = 0;
  // Brings all windows of the program forward and gives it the focus.
  virtual void activate(std::int64_t pid) = 0;
  // The number of its ordinary window that is in front of its others on the screen; none when it
  // has none there.
  virtual std::optional<std::int64_t> frontWindow(std::int64_t pid) = 0;
};

}  // namespace marbelot
