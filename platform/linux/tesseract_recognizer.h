// The text recogniser: pictures go to marbelot-recognizer, which is there while it is used.
#pragma once

#include <memory>

#include "platform/linux/recognizer_process.h"
#include "platform/text_recognizer.h"

namespace marbelot {

// The queue outlives it.
class TesseractRecognizer : public TextRecognizer {
 public:
  explicit TesseractRecognizer(MainQueue& queue) : queue_(queue) {}
  ~TesseractRecognizer() override { letGo(); }
  Task recognize(SharedBitmap picture, std::function<void(Recognition)> then) override;

 private:
  void keep(std::shared_ptr<RecognizerProcess> process);
  void letGo();

  MainQueue& queue_;
  std::shared_ptr<RecognizerProcess> idle_;  // while nothing is being read
  Task ending_;
};

}  // namespace marbelot
