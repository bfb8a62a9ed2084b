// The main queue on Qt's event loop, background work on its thread pool.
#pragma once

#include <QObject>
#include <QThreadPool>

#include "platform/main_queue.h"

namespace marbelot {

class QtMainQueue : public MainQueue {
 public:
  QtMainQueue();
  // Waits a second for background work that has begun; if it hangs, ends the process then and
  // there.
  ~QtMainQueue() override;
  Task after(double seconds, std::function<void()> work) override;
  Task every(double seconds, std::function<void()> work) override;
  void post(std::function<void()> work) override;
  void background(std::function<void()> work) override;

 private:
  QObject context_;
  QThreadPool pool_;
};

}  // namespace marbelot
