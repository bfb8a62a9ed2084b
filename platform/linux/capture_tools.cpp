#include "platform/linux/capture_tools.h"

#include <algorithm>
#include <charconv>

#include "platform/linux/sway_windows.h"
#include "platform/linux/x11_desktop.h"

namespace marbelot {
namespace {

using Words = std::vector<std::string>;

// A selection by a blue frame, two pixels wide; a click that moves no further than that is meant
// for a window.
Words selecting(Words words, const char* tolerance) {
  for (const char* word : {"-s", "-b", "2", "-c", "0.15,0.55,1,1", "-t", tolerance})
    words.emplace_back(word);
  return words;
}

// Without the pointer. BMP takes no time to write, and windows keep their transparency as PNG.
Words maimArguments(const CaptureRequest& request, const std::string&) {
  switch (request.subject) {
    case CaptureRequest::Subject::area:
      // A click without dragging selects nothing rather than some window.
      return selecting({"-u", "-f", "bmp"}, "0");
    case CaptureRequest::Subject::pickedWindow:
      return selecting({"-u", "-f", "png", "-m", "1"}, "9999999");
    case CaptureRequest::Subject::screen:
      return {"-u", "-f", "bmp"};
    case CaptureRequest::Subject::window:
      return {"-u", "-f", "png", "-m", "1", "-i", std::to_string(request.window)};
  }
  return {};
}

// On Wayland, where slurp finds out what to take and grim takes it. PPM takes no time to write.
Words slurpArguments(const CaptureRequest&, const std::string&) { return {}; }

Words grimArguments(const CaptureRequest&, const std::string& before) {
  if (before.empty()) return {"-t", "ppm", "-"};
  return {"-t", "ppm", "-g", before.substr(0, before.find('\n')), "-"};
}

// Only one of the places that it is given.
Words pickArguments(const CaptureRequest&, const std::string&) { return {"-r"}; }

std::string shownWindows() {
  std::string lines;
  for (const SwayWindow& window : swayWindows())
    if (window.isShown) lines += window.place + "\n";
  return lines;
}

// Of no place, which grim refuses, when the window is gone.
Words windowArguments(const CaptureRequest& request, const std::string& before) {
  for (const SwayWindow& window : swayWindows())
    if (window.id == request.window) return grimArguments(request, window.place);
  return {"-g", before, "-"};
}

const CaptureStep slurpStep{"slurp", "slurp", slurpArguments};
const CaptureStep grimStep{"grim", "grim", grimArguments};

const std::vector<CaptureStep>& waylandSteps(CaptureRequest::Subject subject) {
  static const std::vector<CaptureStep> screen{grimStep}, area{slurpStep, grimStep},
      window{{"grim", "grim", windowArguments}},
      pickedWindow{{"slurp", "slurp", pickArguments, shownWindows}, grimStep};
  if (subject == CaptureRequest::Subject::screen) return screen;
  if (subject == CaptureRequest::Subject::window) return window;
  return subject == CaptureRequest::Subject::pickedWindow && isSway() ? pickedWindow : area;
}

}  // namespace

CaptureRequest captureRequest(const std::vector<std::string>& arguments) {
  const auto has = [&](const char* word) {
    return std::find(arguments.begin(), arguments.end(), word) != arguments.end();
  };
  CaptureRequest request;
  if (has("-l")) {
    request.subject = CaptureRequest::Subject::window;
    const std::string& number = arguments.back();
    std::from_chars(number.data(), number.data() + number.size(), request.window);
  } else if (!has("-i")) {
    request.subject = CaptureRequest::Subject::screen;
  } else if (has("-w")) {
    request.subject = CaptureRequest::Subject::pickedWindow;
  }
  return request;
}

const std::vector<CaptureStep>& captureSteps(const CaptureRequest& request) {
  // Where only X11's windows have numbers, it is X11's tool that takes them.
  if (isWayland() && (isSway() || request.subject != CaptureRequest::Subject::window))
    return waylandSteps(request.subject);
  static const std::vector<CaptureStep> x11{{"maim", "maim", maimArguments}};
  return x11;
}

}  // namespace marbelot
