// Reading the text in a picture.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/bitmap.h"
#include "platform/main_queue.h"

namespace marbelot {

struct Recognition {
  enum class Outcome {
    read,             // `lines` may still be empty
    failed,           // the recogniser broke off or took too long
    missingTool,      // there is none
    missingLanguage,  // there is none that knows a language
  };
  Outcome outcome = Outcome::failed;
  std::vector<std::string> lines;  // UTF-8, in the order in which the recogniser reads them
  // One line for the user when something can be done about it, such as what to install; else empty.
  std::string advice;
};

class TextRecognizer {
 public:
  virtual ~TextRecognizer() = default;
  // Reads in the background, in the languages that the system's recogniser is set up for, and tells
  // what it found on the main thread. Dropping the handle ends the work, and `then` is never
  // called. `picture` is not null.
  [[nodiscard]] virtual Task recognize(SharedBitmap picture,
                                       std::function<void(Recognition)> then) = 0;
};

// The same, at once: takes seconds, so it is not for the main thread.
Recognition recognizedText(const Bitmap& picture);

}  // namespace marbelot
