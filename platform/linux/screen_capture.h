// Pictures of the screen, taken by the desktop's tools; programs and windows by what sway, or the
// window manager on the X display, says of them.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <list>
#include <map>
#include <memory>

#include "platform/linux/capture_tools.h"
#include "platform/linux/child_process.h"
#include "platform/linux/portal_screenshot.h"
#include "platform/linux/session_bus.h"
#include "platform/linux/x11_windows.h"
#include "platform/screen_capture.h"

namespace marbelot {

class DesktopScreenCapture : public QObject, public ScreenCapture {
 public:
  DesktopScreenCapture(MainQueue& queue, SessionBus& bus);
  ~DesktopScreenCapture() override;

  [[nodiscard]] Task capture(const std::vector<std::string>& arguments, const std::string& path,
                             std::function<void()> taken,
                             std::function<void(const std::string& problem)> finished) override;
  std::vector<RunningApplication> runningApplications() override;
  void activate(std::int64_t pid) override;
  std::optional<std::int64_t> frontWindow(std::int64_t pid) override;

 private:
  struct Job;

  bool eventFilter(QObject* watched, QEvent* event) override;
  X11Windows& windows();
  struct Program {
    std::string name;
    std::optional<Image> icon;
  };
  // By what its windows call it.
  const Program& program(const std::string& application);
  void askCompositor();
  void startWaiting();
  void begin(Job& job);
  void run(Job& job, const std::string& before);
  void askPortal(Job& job);
  void stepEnded(Job& job, ChildProcess::Result result);
  void save(Job& job, Descriptor output);
  void takeOver(Job& job, const PortalScreenshot::Answer& answer);
  void finish(Job& job, const std::string& problem);
  void cancel(const Job* job);

  MainQueue& queue_;
  SessionBus& bus_;
  // Whether programs may see the screen of a Wayland desktop; none until the compositor has told.
  std::optional<bool> waylandShowsScreen_;
  Task asking_;
  std::unique_ptr<X11Windows> windows_;
  std::list<std::shared_ptr<Job>> jobs_;
  Task starting_;
  QElapsedTimer sincePopup_;  // since a menu of ours has gone from the screen
  // By window; they do not change while a menu is looked at, and can be large.
  std::map<xcb_window_t, std::optional<Image>> icons_;
  std::map<std::string, Program> programs_;  // by what their windows call them
};

}  // namespace marbelot
