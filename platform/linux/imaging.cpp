#include "platform/linux/imaging.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <string>

#include "platform/descriptor.h"
#include "platform/image_codec.h"
#include "platform/linux/helper_program.h"
#include "platform/linux/shared_pixels.h"

namespace marbelot {
namespace {

using Clock = std::chrono::steady_clock;
constexpr auto timeLimit = std::chrono::seconds(30);
constexpr std::size_t outputLimit = std::size_t{2} << 30;  // bytes

// Whether the process ends before `cancel` becomes readable and the time is over.
bool endsInTime(pid_t child, int cancel) {
  const Descriptor process(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
  if (!process) return false;
  const auto deadline = Clock::now() + timeLimit;
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    std::array<pollfd, 2> watched{{{process.get(), POLLIN, 0}, {cancel, POLLIN, 0}}};
    const int ready = ::poll(watched.data(), watched.size(), static_cast<int>(std::max(left, 0L)));
    if (ready < 0 && errno == EINTR) continue;
    return ready > 0 && watched[0].revents != 0;
  }
}

Descriptor memoryFile() {
  return Descriptor(::memfd_create("marbelot-image", MFD_CLOEXEC | MFD_ALLOW_SEALING));
}

// What the helper makes of the bytes, in a memory file that no longer changes; none when it fails.
// Through memory files because pipes are slow, and because a helper that was taken over must not be
// able to do more than write what it likes into one.
Descriptor helped(const std::string& task, const std::string& bytes, int cancel) {
  const Descriptor input = memoryFile();
  Descriptor output = memoryFile();
  if (!input || !output || !writeFully(input.get(), bytes)) return {};
  const pid_t helper =
      startProgram({{helperPath("marbelot-imaging"), task}, {input.get(), output.get(), 2}});
  if (helper < 0) return {};
  const bool ended = endsInTime(helper, cancel);
  if (!ended) ::kill(helper, SIGKILL);
  int status = 0;
  while (::waitpid(helper, &status, 0) < 0 && errno == EINTR) {
  }
  const bool good = ended && WIFEXITED(status) && WEXITSTATUS(status) == 0;
  if (!good || ::fcntl(output.get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW) != 0) return {};
  return output;
}

std::size_t sizeOf(const Descriptor& file) {
  struct stat status {};
  return ::fstat(file.get(), &status) == 0 ? static_cast<std::size_t>(status.st_size) : 0;
}

}  // namespace

SharedBytes convertedBytes(const Image& image, std::string_view encoding, int cancel) {
  SharedBytes input = image.bytes();
  if (!input || mimeType(image.format()).substr(6) == encoding) return input;
  const Descriptor output = helped(std::string(encoding), *input, cancel);
  const std::size_t size = output ? sizeOf(output) : 0;
  if (size == 0 || size > outputLimit || ::lseek(output.get(), 0, SEEK_SET) != 0) return nullptr;
  std::string bytes(size, '\0');
  return readFully(output.get(), bytes.data(), size) ? share(std::move(bytes)) : nullptr;
}

std::optional<Image> pdfImage(const std::string& pdf, int cancel) {
  const Descriptor output = helped(std::string(pdfTask), pdf, cancel);
  std::optional<Bitmap> bitmap = output ? mappedPixels(output.get()) : std::nullopt;
  if (!bitmap) return std::nullopt;
  return Image::fromPixels(std::make_shared<const Bitmap>(*std::move(bitmap)));
}

SharedBitmap decode(const Image& image) {
  if (SharedBitmap pixels = image.pixels()) return pixels;
  const SharedBytes input = image.bytes();
  if (!input || !Bitmap::fits(image.width(), image.height())) return nullptr;
  const Descriptor output = helped(std::string(pixelsTask), *input, -1);
  std::optional<Bitmap> bitmap = output ? mappedPixels(output.get()) : std::nullopt;
  return bitmap ? std::make_shared<const Bitmap>(*std::move(bitmap)) : nullptr;
}

SharedBytes pngBytes(const Image& image) { return convertedBytes(image, "png"); }

}  // namespace marbelot
