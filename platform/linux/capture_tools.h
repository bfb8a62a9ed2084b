// The programs that take pictures of the screen, and how they are asked.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/linux/x11_windows.h"

namespace marbelot {

struct CaptureRequest {
  enum class Subject {
    area,          // that the user drags
    pickedWindow,  // that the user clicks
    screen,
    window,
  };
  Subject subject = Subject::area;
  std::int64_t window = 0;
  X11Margins margins;  // to be cut off its picture
};

// What the arguments of ScreenCapture::capture ask for.
CaptureRequest captureRequest(const std::vector<std::string>& arguments);

// A program that is part of taking a picture. Several are run one after the other, each given what
// the one before wrote to its standard output; the last one writes the picture there.
struct CaptureStep {
  const char* program;
  const char* package;  // that has it, on Debian and its relatives
  std::vector<std::string> (*arguments)(const CaptureRequest& request, const std::string& before);
  std::string (*input)() = nullptr;  // what it reads on its standard input, where that is something
};

// How it is done on X11, and on Wayland where programs may see the screen.
const std::vector<CaptureStep>& captureSteps(const CaptureRequest& request);

}  // namespace marbelot
