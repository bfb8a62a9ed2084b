#include "platform/linux/capture_tools.h"

#include <algorithm>
#include <charconv>

namespace marbelot {
namespace {

using Words = std::vector<std::string>;

// Without the pointer. BMP takes no time to write, and windows keep their transparency as PNG.
Words maimArguments(const CaptureRequest& request, const std::string&) {
  switch (request.subject) {
    case CaptureRequest::Subject::area:
      // No tolerance: a click without dragging selects nothing rather than some window.
      return {"-u", "-f", "bmp", "-s", "-t", "0"};
    case CaptureRequest::Subject::pickedWindow:
      return {"-u", "-f", "png", "-m", "1", "-s", "-t", "9999999"};
    case CaptureRequest::Subject::screen:
      return {"-u", "-f", "bmp"};
    case CaptureRequest::Subject::window:
      return {"-u", "-f", "png", "-m", "1", "-i", std::to_string(request.window)};
  }
  return {};
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

const std::vector<CaptureStep>& captureSteps(const CaptureRequest&) {
  static const std::vector<CaptureStep> x11{{"maim", "maim", maimArguments}};
  return x11;
}

}  // namespace marbelot
