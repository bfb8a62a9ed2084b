// The recogniser in a process of its own: it wants an environment of its own to be quick, takes
// memory that goes back with it, and when it crashes nothing else does.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

#include "platform/bitmap.h"
#include "platform/descriptor.h"
#include "platform/text_recognizer.h"

namespace marbelot {

// What passes over the socket that is the helper's standard input: a byte that carries a memory
// file with the picture, laid out as shared_pixels.h has it; back comes this, and then as many
// bytes: the lines, each ended by a line feed, or the advice.
struct RecognizerAnswer {
  std::uint32_t outcome = 0;  // Recognition::Outcome
  std::uint32_t bytes = 0;
};
inline constexpr std::uint32_t recognizerAnswerLimit = std::uint32_t{16} << 20;  // bytes

// One picture after the other; any one thread at a time. The helper is started by the first picture
// and ended with this object.
class RecognizerProcess {
 public:
  RecognizerProcess() = default;
  ~RecognizerProcess() { end(); }
  RecognizerProcess(const RecognizerProcess&) = delete;
  RecognizerProcess& operator=(const RecognizerProcess&) = delete;

  // Ends the helper, and fails, when `cancel` (a descriptor, or -1) becomes readable.
  Recognition read(const Bitmap& picture, int cancel);

 private:
  bool start();
  bool send(const Bitmap& picture);
  bool receive(char* to, std::size_t bytes, int cancel);
  void end();

  pid_t process_ = -1;
  Descriptor socket_;
};

}  // namespace marbelot
