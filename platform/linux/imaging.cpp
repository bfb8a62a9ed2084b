#include "platform/linux/imaging.h"

#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <string>

#include "platform/linux/descriptor.h"

namespace marbelot {
namespace {

using Clock = std::chrono::steady_clock;
constexpr auto timeLimit = std::chrono::seconds(30);
constexpr std::size_t outputLimit = std::size_t{2} << 30;  // bytes

// Beside this program, in the libexec folder of its installation, or wherever PATH finds it.
std::string helperPath() {
  std::array<char, PATH_MAX> self{};
  const ssize_t length = ::readlink("/proc/self/exe", self.data(), self.size());
  std::string folder(self.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
  folder.resize(std::min(folder.size(), folder.rfind('/')));
  for (const char* place : {"/", "/../libexec/", "/../libexec/marbelot/"}) {
    const std::string path = folder + place + "marbelot-imaging";
    if (::access(path.c_str(), X_OK) == 0) return path;
  }
  return "marbelot-imaging";
}

pid_t startHelper(int socket, const std::string& format) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, socket, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, socket, STDOUT_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t signals;
  sigemptyset(&signals);
  posix_spawnattr_setsigmask(&attributes, &signals);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);

  std::string path = helperPath();
  std::string argument = format;
  std::array<char*, 3> arguments{path.data(), argument.data(), nullptr};
  pid_t child = -1;
  if (::posix_spawnp(&child, path.c_str(), &actions, &attributes, arguments.data(), environ) != 0)
    child = -1;
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return child;
}

// Feeds `input` and collects the answer at the same time; false when it was cut short.
bool exchange(int socket, const std::string& input, std::string& output, int cancel) {
  const auto deadline = Clock::now() + timeLimit;
  std::size_t sent = 0;
  std::vector<char> buffer(std::size_t{1} << 18);
  for (;;) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) return false;
    const auto wanted = static_cast<short>(sent < input.size() ? POLLIN | POLLOUT : POLLIN);
    std::array<pollfd, 2> watched{{{socket, wanted, 0}, {cancel, POLLIN, 0}}};
    if (::poll(watched.data(), watched.size(), static_cast<int>(left)) < 0 && errno != EINTR)
      return false;
    if (watched[1].revents != 0) return false;
    if (watched[0].revents & POLLOUT) {
      // No signal when the helper has died: this thread belongs to the clipboard.
      const ssize_t put =
          ::send(socket, input.data() + sent, input.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
      if (put > 0) sent += static_cast<std::size_t>(put);
      if (put < 0 && errno != EAGAIN && errno != EINTR) return false;
      if (sent == input.size()) ::shutdown(socket, SHUT_WR);
    }
    if (watched[0].revents & (POLLIN | POLLHUP | POLLERR)) {
      const ssize_t got = ::recv(socket, buffer.data(), buffer.size(), MSG_DONTWAIT);
      if (got == 0) return true;
      if (got > 0) output.append(buffer.data(), static_cast<std::size_t>(got));
      if (got < 0 && errno != EAGAIN && errno != EINTR) return false;
      if (output.size() > outputLimit) return false;
    }
  }
}

}  // namespace

SharedBytes convertedBytes(const Image& image, std::string_view encoding, int cancel) {
  SharedBytes input = image.bytes();
  if (!input || mimeType(image.format()).substr(6) == encoding) return input;

  std::array<int, 2> sockets{};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets.data()) != 0) return nullptr;
  const Descriptor ours(sockets[0]);
  pid_t helper = -1;
  {
    const Descriptor theirs(sockets[1]);
    helper = startHelper(theirs.get(), std::string(encoding));
  }
  if (helper < 0) return nullptr;

  std::string output;
  const bool complete = exchange(ours.get(), *input, output, cancel);
  if (!complete) ::kill(helper, SIGKILL);
  int status = 0;
  while (::waitpid(helper, &status, 0) < 0 && errno == EINTR) {
  }
  const bool good = complete && WIFEXITED(status) && WEXITSTATUS(status) == 0 && !output.empty();
  return good ? share(std::move(output)) : nullptr;
}

SharedBytes pngBytes(const Image& image) { return convertedBytes(image, "png"); }

}  // namespace marbelot
