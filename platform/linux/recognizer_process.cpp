#include "platform/linux/recognizer_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>

#include "platform/linux/helper_program.h"
#include "platform/linux/shared_pixels.h"

namespace marbelot {
namespace {

// A page dense with text on a large screen takes ten seconds, and a long one many minutes while the
// machine is busy.
constexpr auto timeLimit = std::chrono::minutes(20);

Descriptor sharedPicture(const Bitmap& picture) {
  Descriptor file(::memfd_create("marbelot-picture", MFD_CLOEXEC));
  const std::size_t rowBytes = static_cast<std::size_t>(picture.width()) * Bitmap::pixelBytes;
  const SharedPixels shape{static_cast<std::uint32_t>(picture.width()),
                           static_cast<std::uint32_t>(picture.height()), rowBytes};
  std::array<char, sharedPixelsOffset> head{};
  std::memcpy(head.data(), &shape, sizeof shape);
  if (!file || !writeFully(file.get(), {head.data(), head.size()})) return {};
  for (int y = 0; y < picture.height(); ++y) {
    if (!writeFully(file.get(), {reinterpret_cast<const char*>(picture.row(y)), rowBytes}))
      return {};
  }
  return file;
}

Recognition failure(Recognition::Outcome outcome, std::string advice = {}) {
  return {outcome, {}, std::move(advice)};
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return lines;
}

}  // namespace

bool RecognizerProcess::start() {
  std::array<int, 2> ends{-1, -1};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) return false;
  Descriptor ours(ends[0]);
  const Descriptor theirs(ends[1]);
  // With several threads Tesseract takes ten times as long, and the setting counts only from the
  // start of a process.
  process_ = startProgram({.arguments = {helperPath("marbelot-recognizer")},
                           .standard = {theirs.get(), 1, 2},
                           .variable = "OMP_THREAD_LIMIT=1"});
  if (process_ >= 0) socket_ = std::move(ours);
  return process_ >= 0;
}

bool RecognizerProcess::send(const Bitmap& picture) {
  const Descriptor file = sharedPicture(picture);
  if (!file) return false;
  char byte = 0;
  iovec data{&byte, 1};
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
  msghdr message{};
  message.msg_iov = &data;
  message.msg_iovlen = 1;
  message.msg_control = control.data();
  message.msg_controllen = control.size();
  cmsghdr* const header = CMSG_FIRSTHDR(&message);
  header->cmsg_level = SOL_SOCKET;
  header->cmsg_type = SCM_RIGHTS;
  header->cmsg_len = CMSG_LEN(sizeof(int));
  const int descriptor = file.get();
  std::memcpy(CMSG_DATA(header), &descriptor, sizeof descriptor);
  return ::sendmsg(socket_.get(), &message, MSG_NOSIGNAL) == 1;
}

bool RecognizerProcess::receive(char* to, std::size_t bytes, int cancel) {
  const auto deadline = std::chrono::steady_clock::now() + timeLimit;
  while (bytes > 0) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now())
            .count();
    std::array<pollfd, 2> watched{{{socket_.get(), POLLIN, 0}, {cancel, POLLIN, 0}}};
    const int ready =
        ::poll(watched.data(), watched.size(), static_cast<int>(std::max<long>(left, 0)));
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0 || watched[1].revents != 0) return false;
    const ssize_t got = ::read(socket_.get(), to, bytes);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    to += got;
    bytes -= static_cast<std::size_t>(got);
  }
  return true;
}

void RecognizerProcess::end() {
  socket_ = {};
  if (process_ < 0) return;
  ::kill(process_, SIGKILL);  // it has nothing to put in order
  while (::waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
  }
  process_ = -1;
}

Recognition RecognizerProcess::read(const Bitmap& picture, int cancel) {
  // Nothing comes from a helper that waits, except its end.
  pollfd waiting{socket_.get(), POLLIN, 0};
  if (process_ >= 0 && ::poll(&waiting, 1, 0) != 0) end();
  if (process_ < 0 && !start())
    return failure(Recognition::Outcome::missingTool, "the program marbelot-recognizer is missing");
  RecognizerAnswer answer;
  std::string text;
  const auto received = [&] {
    if (!send(picture)) return false;
    if (!receive(reinterpret_cast<char*>(&answer), sizeof answer, cancel)) return false;
    if (answer.bytes > recognizerAnswerLimit) return false;
    text.resize(answer.bytes);
    return receive(text.data(), text.size(), cancel);
  };
  if (!received()) {
    end();
    return failure(Recognition::Outcome::failed);
  }
  if (answer.outcome == static_cast<std::uint32_t>(Recognition::Outcome::read))
    return {Recognition::Outcome::read, linesOf(text), {}};
  // It finds what was installed meanwhile when it is started anew.
  end();
  const bool language =
      answer.outcome == static_cast<std::uint32_t>(Recognition::Outcome::missingLanguage);
  return failure(language ? Recognition::Outcome::missingLanguage : Recognition::Outcome::failed,
                 text);
}

Recognition recognizedText(const Bitmap& picture) { return RecognizerProcess().read(picture, -1); }

}  // namespace marbelot
