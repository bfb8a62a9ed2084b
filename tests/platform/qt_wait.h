// Waiting for a condition while Qt's event loop runs.
#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <functional>

namespace marbelot {

inline bool waitWithQt(const std::function<bool()>& done) {
  QElapsedTimer clock;
  clock.start();
  while (!done() && clock.elapsed() < 20000) {
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  return done();
}

}  // namespace marbelot
