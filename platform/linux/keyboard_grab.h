// Every key comes to one window.
#pragma once

#include <QPointer>
#include <QSocketNotifier>
#include <QTimer>
#include <QWidget>
#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace marbelot {

class KeyHolder;
class WaylandKeys;

class KeyboardGrab {
 public:
  KeyboardGrab();
  ~KeyboardGrab();
  KeyboardGrab(const KeyboardGrab&) = delete;
  KeyboardGrab& operator=(const KeyboardGrab&) = delete;

  // False when another program holds the keyboard, or the window is not on the screen. Where
  // neither a Wayland compositor nor an X server hands over the keys, the window covers the screen
  // and has those that come to it. Both end the grab by themselves when the program ends. `lost` is
  // called, later, when the keys go elsewhere all the same.
  bool take(QWidget& window, std::string& leftOut, std::function<void()> lost);
  void release();

  // Does the work now, or as soon as nobody holds the keys: what came on the screen before would
  // take them, and be answered by whoever wipes the keyboard.
  static void whenFree(std::function<void()> work);

 private:
  bool takeFromCompositor(QWidget& window, std::chrono::milliseconds limit);

  bool hold(QWidget& window, std::string& leftOut, std::function<void()> lost);

  bool taken_ = false;
  bool held_ = false;  // by the X server
  std::unique_ptr<WaylandKeys> keys_;
  std::unique_ptr<QSocketNotifier> arriving_;
  std::unique_ptr<KeyHolder> holder_;
  std::unique_ptr<QTimer> watching_;
};

}  // namespace marbelot
