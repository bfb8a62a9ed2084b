#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "tools/command.h"

namespace marbelot::ctl {

std::optional<std::string> readBytes(const std::string& file) {
  const int input = file == "-" ? STDIN_FILENO : open(file.c_str(), O_RDONLY | O_CLOEXEC);
  if (input < 0) return std::nullopt;
  std::string bytes;
  struct stat status {};
  if (fstat(input, &status) == 0 && S_ISREG(status.st_mode))
    bytes.reserve(static_cast<std::size_t>(status.st_size) + 1);
  std::array<char, std::size_t{1} << 16> buffer{};
  ssize_t got = 0;
  while ((got = read(input, buffer.data(), buffer.size())) != 0) {
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) break;
    bytes.append(buffer.data(), static_cast<std::size_t>(got));
  }
  if (input != STDIN_FILENO) close(input);
  return got == 0 ? std::optional(std::move(bytes)) : std::nullopt;
}

}  // namespace marbelot::ctl
