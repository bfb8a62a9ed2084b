#include "platform/linux/tesseract_recognizer.h"

#include <sys/eventfd.h>

#include <utility>

namespace marbelot {
namespace {

// Loading the languages anew takes a tenth of a second; keeping them takes a hundred megabytes.
constexpr double idleSeconds = 60;

// Dropped, it ends the helper that is reading, so that the thread waiting for it is free again.
struct Reading {
  std::shared_ptr<Descriptor> cancel =
      std::make_shared<Descriptor>(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  Task work;
  ~Reading() { ::eventfd_write(cancel->get(), 1); }
};

struct Finished {
  Recognition recognition;
  std::shared_ptr<RecognizerProcess> process;
};

}  // namespace

Task TesseractRecognizer::recognize(SharedBitmap picture, std::function<void(Recognition)> then) {
  ending_.cancel();
  auto process = std::exchange(idle_, nullptr);
  if (!process) process = std::make_shared<RecognizerProcess>();
  const auto reading = std::make_shared<Reading>();
  reading->work = queue_.inBackground(
      [picture = std::move(picture), process = std::move(process),
       cancel = reading->cancel]() mutable {
        Recognition result = process->read(*picture, cancel->get());
        picture.reset();
        return Finished{std::move(result), std::move(process)};
      },
      [this, then = std::move(then)](Finished finished) {
        keep(std::move(finished.process));
        then(std::move(finished.recognition));
      });
  return Task(reading);
}

void TesseractRecognizer::keep(std::shared_ptr<RecognizerProcess> process) {
  letGo();
  idle_ = std::move(process);
  ending_ = queue_.after(idleSeconds, [this] { letGo(); });
}

// In the background, as the system takes a moment to take the helper's memory back.
void TesseractRecognizer::letGo() {
  if (auto process = std::exchange(idle_, nullptr))
    queue_.background([process = std::move(process)]() mutable { process.reset(); });
}

}  // namespace marbelot
