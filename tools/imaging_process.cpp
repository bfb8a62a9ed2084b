#include "tools/imaging_process.h"

#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "platform/linux/shared_pixels.h"

namespace marbelot {

void limitResources() {
  const auto limit = [](auto resource, rlim_t most) {
    const rlimit both{most, most};
    ::setrlimit(resource, &both);
  };
  limit(RLIMIT_CORE, 0);  // a core dump would leave clipboard contents on the disk
  limit(RLIMIT_CPU, 60);  // seconds
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  limit(RLIMIT_AS, rlim_t{4} << 30);  // bytes; the sanitizers' shadow memory would not fit
#endif
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
}

std::string_view standardInput() {
  struct stat status {};
  if (::fstat(STDIN_FILENO, &status) != 0 || status.st_size <= 0) return {};
  const auto size = static_cast<std::size_t>(status.st_size);
  void* const mapped = ::mmap(nullptr, size, PROT_READ, MAP_SHARED, STDIN_FILENO, 0);
  if (mapped == MAP_FAILED) return {};
  return {static_cast<const char*>(mapped), size};
}

std::optional<Bitmap> outputBitmap(int width, int height) {
  if (!Bitmap::fits(width, height)) return std::nullopt;
  const SharedPixels shape{static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height),
                           static_cast<std::uint64_t>(width) * Bitmap::pixelBytes};
  const std::size_t size = sharedPixelsOffset + shape.bytesPerRow * shape.height;
  if (::ftruncate(STDOUT_FILENO, static_cast<off_t>(size)) != 0) return std::nullopt;
  void* const mapped =
      ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_POPULATE, STDOUT_FILENO, 0);
  if (mapped == MAP_FAILED) return std::nullopt;
  std::memcpy(mapped, &shape, sizeof shape);
  // Unmapped by the end of the process.
  auto* const rows = static_cast<std::uint8_t*>(mapped) + sharedPixelsOffset;
  return Bitmap::adopt(width, height, shape.bytesPerRow,
                       std::shared_ptr<std::uint8_t>(rows, [](std::uint8_t*) {}));
}

}  // namespace marbelot
