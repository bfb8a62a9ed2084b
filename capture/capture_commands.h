// Pictures of the screen on command: of an area, a window, the screen or a program's front window.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "capture/countdown.h"
#include "platform/menu.h"
#include "platform/platform.h"
#include "shell/setting.h"
#include "shell/shell.h"

namespace marbelot {

// Main thread only; everything it is given outlives it. While the user is still choosing what to
// take, or the countdown runs, another command takes the place of the one before.
class CaptureCommands {
  Platform& platform_;  // before the settings, which are made with it

 public:
  CaptureCommands(Platform& platform, Shell& shell, ActionTable& actions);

  Setting<bool> countdownEnabled{platform_.defaults,
                                 "countdownEnabled",
                                 false,
                                 {.toggle = {"3-2-1 countdown", "toggleCountdown"}}};

  // A capture is about to make this file, which is nobody else's find.
  std::function<void(const std::string& path)> onStart;
  // A picture was taken, and is on the clipboard unless it cannot be read.
  std::function<void(const std::string& fileName, const std::string& message)> onCaptured;

  // Whether one is under way.
  bool isCapturing() const { return !captures_.empty(); }

  // Looks which programs are running.
  void refresh() { applications_ = platform_.screenCapture.runningApplications(); }
  std::shared_ptr<Menu> menu() const;

 private:
  struct Mode {
    std::vector<std::string> arguments;
    const char* label;
  };
  struct Capture {
    std::string path;
    Task task;
    bool choosing = false;  // the user has a selection to make first
  };

  std::shared_ptr<Menu> windowMenu() const;
  // After the countdown where there is one.
  void start(const Mode& mode);
  void countDown(std::function<void()> action);
  void captureApp(std::int64_t pid);
  void captureFrontWindow(std::int64_t pid);
  void capture(const Mode& mode);
  void finished(std::uint64_t id, const char* label, const std::string& problem);
  // Takes back what has not come to taking the picture yet.
  void abandonPending();
  std::string freePath() const;

  Shell& shell_;
  Countdown countdown_;
  std::vector<RunningApplication> applications_;
  Task activation_;
  std::uint64_t lastId_ = 0;
  std::map<std::uint64_t, Capture> captures_;  // those under way
};

}  // namespace marbelot
