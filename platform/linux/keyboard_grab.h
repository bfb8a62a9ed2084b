// Every key comes to one window.
#pragma once

#include <QPointer>
#include <QWidget>
#include <string>

namespace marbelot {

class KeyboardGrab {
 public:
  KeyboardGrab() = default;
  ~KeyboardGrab() { release(); }
  KeyboardGrab(const KeyboardGrab&) = delete;
  KeyboardGrab& operator=(const KeyboardGrab&) = delete;

  // False when another program holds the keyboard, or the window is not on the screen. The server
  // ends the grab by itself when the window goes or the program ends.
  bool take(QWidget& window, std::string& leftOut);
  void release();

 private:
  bool held_ = false;
};

}  // namespace marbelot
