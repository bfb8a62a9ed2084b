#include "platform/linux/qt_main_queue.h"

#include <unistd.h>

#include <QThread>
#include <QTimer>
#include <algorithm>
#include <cmath>

namespace marbelot {
namespace {

Task schedule(double seconds, bool once, std::function<void()> work) {
  auto timer = std::shared_ptr<QTimer>(new QTimer, [](QTimer* done) {
    // The handle may be dropped by the very work that the timer is running.
    done->stop();
    done->deleteLater();
  });
  timer->setSingleShot(once);
  timer->setTimerType(seconds < 1 && once ? Qt::PreciseTimer : Qt::CoarseTimer);
  timer->setInterval(static_cast<int>(std::lround(seconds * 1000)));
  QObject::connect(timer.get(), &QTimer::timeout, timer.get(), [work = std::move(work)] {
    const auto running = work;
    running();
  });
  timer->start();
  return Task(timer);
}

}  // namespace

QtMainQueue::QtMainQueue() {
  pool_.setExpiryTimeout(5000);
  // Much of the work waits for files rather than computes.
  pool_.setMaxThreadCount(std::max(4, QThread::idealThreadCount()));
}

QtMainQueue::~QtMainQueue() {
  pool_.clear();
  // Work that hangs, such as the listing of a folder whose server is gone, must not keep a program
  // alive that has ended in all other respects.
  if (!pool_.waitForDone(1000)) _exit(0);
}

Task QtMainQueue::after(double seconds, std::function<void()> work) {
  return schedule(seconds, true, std::move(work));
}

Task QtMainQueue::every(double seconds, std::function<void()> work) {
  return schedule(seconds, false, std::move(work));
}

void QtMainQueue::post(std::function<void()> work) {
  QMetaObject::invokeMethod(&context_, std::move(work), Qt::QueuedConnection);
}

void QtMainQueue::background(std::function<void()> work) { pool_.start(std::move(work)); }

}  // namespace marbelot
