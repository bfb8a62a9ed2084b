// Every key comes to one window.
#pragma once

#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <memory>
#include <string>

namespace marbelot {

class KeyHolder;

class KeyboardGrab {
 public:
  KeyboardGrab();
  ~KeyboardGrab();
  KeyboardGrab(const KeyboardGrab&) = delete;
  KeyboardGrab& operator=(const KeyboardGrab&) = delete;

  // False when another program holds the keyboard, or the window is not on the screen. Without an X
  // server the window covers the screen and has the keys that come to it. The server ends the grab
  // by itself when the window goes or the program ends. `lost` is called, later, when the keys go
  // elsewhere all the same.
  bool take(QWidget& window, std::string& leftOut, std::function<void()> lost);
  void release();

 private:
  bool held_ = false;
  std::unique_ptr<KeyHolder> holder_;
  std::unique_ptr<QTimer> watching_;
};

}  // namespace marbelot
