#include "capture/capture_commands.h"

#include <algorithm>
#include <utility>

#include "capture/capture_history.h"
#include "image/image_file.h"
#include "platform/files.h"
#include "platform/text.h"

namespace marbelot {
namespace {

constexpr int countdownStart = 3;
// In which a program's windows come to the front.
constexpr double activationSeconds = 0.45;

struct Taken {
  bool there = false;
  std::optional<Image> image;
};

}  // namespace

CaptureCommands::CaptureCommands(Platform& platform, Shell& shell, ActionTable& actions)
    : platform_(platform), shell_(shell), countdown_(platform) {
  const auto on = [&](const char* selector, Mode mode) {
    actions.add(selector, [this, mode = std::move(mode)](const MenuItem&) { start(mode); });
  };
  on("captureArea", {{"-i"}, "Area selection"});
  on("captureWindowInteractive", {{"-i", "-w"}, "Window"});
  on("captureFullScreen", {{"-x"}, "Full screen"});
  actions.addOn<std::int64_t>("captureApp:", [this](std::int64_t pid) { captureApp(pid); });
  countdownEnabled.offerToggle(actions, shell);
}

std::shared_ptr<Menu> CaptureCommands::menu() const {
  const std::string suffix = countdownEnabled ? " — after 3-2-1" : "";
  auto menu = std::make_shared<Menu>();
  menu->add("Area (drag a rectangle)" + suffix, "captureArea");
  menu->addSubmenu("Window", windowMenu());
  menu->add("Full screen" + suffix, "captureFullScreen");
  menu->addSeparator();
  countdownEnabled.addToggle(*menu);
  return menu;
}

std::shared_ptr<Menu> CaptureCommands::windowMenu() const {
  auto menu = std::make_shared<Menu>();
  menu->add("Click a window…", "captureWindowInteractive");
  menu->addSeparator();
  std::vector<const RunningApplication*> sorted;
  for (const RunningApplication& application : applications_) sorted.push_back(&application);
  std::sort(sorted.begin(), sorted.end(), [](const auto* a, const auto* b) {
    const auto order = text::localizedCompare(a->name, b->name);
    return order != 0 ? order < 0 : a->pid < b->pid;
  });
  for (const RunningApplication* application : sorted) {
    const std::string name = text::sanitized(application->name);
    menu->add(name.empty() ? "Unknown" : name, "captureApp:", application->pid)->image =
        application->icon;
  }
  if (sorted.empty()) menu->addDisabled("No other apps running");
  return menu;
}

void CaptureCommands::start(const Mode& mode) {
  abandonPending();
  countDown([this, mode] { capture(mode); });
}

void CaptureCommands::countDown(std::function<void()> action) {
  if (!countdownEnabled) return action();
  countdown_.run(countdownStart, std::move(action));
}

void CaptureCommands::captureApp(std::int64_t pid) {
  const auto running = platform_.screenCapture.runningApplications();
  if (std::none_of(running.begin(), running.end(),
                   [&](const RunningApplication& other) { return other.pid == pid; }))
    return;
  abandonPending();
  platform_.screenCapture.activate(pid);
  activation_ = platform_.queue.after(
      activationSeconds, [this, pid] { countDown([this, pid] { captureFrontWindow(pid); }); });
}

void CaptureCommands::captureFrontWindow(std::int64_t pid) {
  const auto window = platform_.screenCapture.frontWindow(pid);
  if (window) {
    capture({{"-x", "-o", "-l", std::to_string(*window)}, "App window"});
  } else {
    capture({{"-i", "-w"}, "App window"});
  }
}

void CaptureCommands::abandonPending() {
  activation_.cancel();
  countdown_.cancel();
  std::erase_if(captures_, [](const auto& capture) { return capture.second.choosing; });
}

std::string CaptureCommands::freePath() const {
  const std::string folder = madeCapturesFolder();
  const std::string base = "Capture " + text::fileTimestamp(platform_.queue.now());
  for (int attempt = 1;; ++attempt) {
    std::string path = files::join(folder, numberedPngName(base, attempt));
    // A file that another capture is about to make is taken as well.
    const bool awaited = std::any_of(captures_.begin(), captures_.end(),
                                     [&](const auto& other) { return other.second.path == path; });
    if (!awaited && !files::isTaken(path)) return path;
  }
}

void CaptureCommands::capture(const Mode& mode) {
  const std::uint64_t id = ++lastId_;
  const std::string path = freePath();
  Capture& started = captures_[id];
  started.path = path;
  started.choosing = mode.arguments.front() == "-i";
  if (onStart) onStart(path);
  started.task = platform_.screenCapture.capture(
      mode.arguments, path, [this, id] { captures_.at(id).choosing = false; },
      [this, id, label = mode.label](const std::string& problem) { finished(id, label, problem); });
}

void CaptureCommands::finished(std::uint64_t id, const char* label, const std::string& problem) {
  if (!problem.empty()) shell_.notify(problem);
  Capture& done = captures_.at(id);
  done.choosing = false;  // where the system has not told sooner
  done.task = platform_.queue.inBackground(
      [path = done.path] {
        const auto image = imageInMemory(path);
        return Taken{image || files::exists(path), image};
      },
      [this, id, label](const Taken& taken) {
        const Capture capture = std::move(captures_.extract(id).mapped());
        if (!taken.there) return;
        // What cannot be put on the clipboard was taken and saved all the same.
        if (taken.image) static_cast<void>(platform_.pasteboard.write(*taken.image));
        if (onCaptured)
          onCaptured(files::lastComponent(capture.path), std::string("Captured: ") + label);
      });
}

}  // namespace marbelot
