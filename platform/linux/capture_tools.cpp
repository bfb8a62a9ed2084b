#include "platform/linux/capture_tools.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <charconv>

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

Words treeArguments(const CaptureRequest&, const std::string&) { return {"-t", "get_tree"}; }

// The windows that are to be seen, one a line, as slurp takes them.
void listWindows(const QJsonObject& node, std::string& lines) {
  bool isLeaf = true;
  for (const char* kind : {"nodes", "floating_nodes"}) {
    for (const auto& child : node[kind].toArray()) {
      isLeaf = false;
      listWindows(child.toObject(), lines);
    }
  }
  if (!isLeaf || !node["visible"].toBool()) return;
  const QJsonObject place = node["rect"].toObject();
  const auto number = [&](const char* name) { return std::to_string(place[name].toInt()); };
  lines += number("x") + "," + number("y") + " " + number("width") + "x" + number("height") + "\n";
}

// A child is given nothing on its standard input, but slurp wants the windows there.
Words pickArguments(const CaptureRequest&, const std::string& before) {
  std::string lines;
  listWindows(QJsonDocument::fromJson(QByteArray::fromStdString(before)).object(), lines);
  return {"-c", "printf %s \"$0\" | slurp -r", lines};
}

const CaptureStep slurpStep{"slurp", "slurp", slurpArguments};
const CaptureStep grimStep{"grim", "grim", grimArguments};

const std::vector<CaptureStep>& waylandSteps(CaptureRequest::Subject subject) {
  static const std::vector<CaptureStep> screen{grimStep}, area{slurpStep, grimStep},
      window{{"swaymsg", "sway", treeArguments}, {"sh", "dash", pickArguments}, grimStep};
  if (subject == CaptureRequest::Subject::screen) return screen;
  const bool canPick =
      subject == CaptureRequest::Subject::pickedWindow && qEnvironmentVariableIsSet("SWAYSOCK");
  return canPick ? window : area;
}

}  // namespace

bool isWayland() { return qEnvironmentVariableIsSet("WAYLAND_DISPLAY"); }

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
  // The windows that have numbers are X11's there, too.
  if (isWayland() && request.subject != CaptureRequest::Subject::window)
    return waylandSteps(request.subject);
  static const std::vector<CaptureStep> x11{{"maim", "maim", maimArguments}};
  return x11;
}

}  // namespace marbelot
