// marbelot-recognizer: reads the text in pictures that come over the socket that is its standard
// input, until that is closed. The protocol is that of recognizer_process.h.
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <string>

#include "platform/linux/recognizer_process.h"
#include "platform/linux/shared_pixels.h"
#include "tools/recognizer_languages.h"
#include "tools/tesseract_reader.h"

namespace {

using namespace marbelot;

void limitResources() {
  const rlimit none{0, 0};
  ::setrlimit(RLIMIT_CORE, &none);  // a core dump would leave clipboard contents on the disk
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  const rlimit memory{rlim_t{4} << 30, rlim_t{4} << 30};
  ::setrlimit(RLIMIT_AS, &memory);
#endif
  // What the user does meanwhile goes first.
  [[maybe_unused]] const int priority = ::nice(4);
}

// The descriptor that comes with the next request; none when the other side has closed.
Descriptor nextPicture() {
  char byte = 0;
  iovec data{&byte, 1};
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
  msghdr message{};
  message.msg_iov = &data;
  message.msg_iovlen = 1;
  message.msg_control = control.data();
  message.msg_controllen = control.size();
  ssize_t got = 0;
  do got = ::recvmsg(STDIN_FILENO, &message, MSG_CMSG_CLOEXEC);
  while (got < 0 && errno == EINTR);
  const cmsghdr* const header = got == 1 ? CMSG_FIRSTHDR(&message) : nullptr;
  if (header == nullptr || header->cmsg_type != SCM_RIGHTS) return {};
  int descriptor = -1;
  std::memcpy(&descriptor, CMSG_DATA(header), sizeof descriptor);
  return Descriptor(descriptor);
}

bool answer(Recognition::Outcome outcome, std::string text) {
  if (text.size() > recognizerAnswerLimit) text.clear();
  const RecognizerAnswer head{static_cast<std::uint32_t>(outcome),
                              static_cast<std::uint32_t>(text.size())};
  return writeFully(STDIN_FILENO, {reinterpret_cast<const char*>(&head), sizeof head}) &&
         writeFully(STDIN_FILENO, text);
}

}  // namespace

int main() {
  limitResources();
  TesseractReader reader(recognizerLanguages());
  while (const Descriptor file = nextPicture()) {
    const auto picture = mappedPixels(file.get());
    const Recognition result = picture ? reader.read(*picture) : Recognition{};
    std::string text = result.advice;
    for (const std::string& line : result.lines) text += line + '\n';
    if (!answer(result.outcome, std::move(text))) return 1;
  }
  return 0;
}
