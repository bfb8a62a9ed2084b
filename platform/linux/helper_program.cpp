#include "platform/linux/helper_program.h"

#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <spawn.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>

namespace marbelot {

std::string helperPath(const std::string& name) {
  std::array<char, PATH_MAX> self{};
  const ssize_t length = ::readlink("/proc/self/exe", self.data(), self.size());
  std::string folder(self.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
  folder.resize(std::min(folder.size(), folder.rfind('/')));
  for (const char* place : {"/", "/../libexec/", "/../libexec/marbelot/"}) {
    const std::string path = folder + place + name;
    if (::access(path.c_str(), X_OK) == 0) return path;
  }
  return name;
}

pid_t startProgram(ProgramStart start) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  for (int i = 0; i < 3; ++i) {
    const int given = start.standard.at(static_cast<std::size_t>(i));
    if (given == ProgramStart::nowhere) {
      posix_spawn_file_actions_addopen(&actions, i, "/dev/null", O_RDWR, 0);
    } else if (given != i) {
      posix_spawn_file_actions_adddup2(&actions, given, i);
    }
  }
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t blocked, usual;
  sigemptyset(&blocked);
  sigemptyset(&usual);
  sigaddset(&usual, SIGPIPE);
  posix_spawnattr_setsigmask(&attributes, &blocked);
  posix_spawnattr_setsigdefault(&attributes, &usual);
  constexpr int always = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
  posix_spawnattr_setflags(
      &attributes,
      static_cast<short>(start.outlivesTerminal ? always | POSIX_SPAWN_SETSID : always));

  std::vector<char*> words, environment;
  for (std::string& argument : start.arguments) words.push_back(argument.data());
  words.push_back(nullptr);
  const std::string_view name =
      std::string_view(start.variable).substr(0, start.variable.find('=') + 1);
  for (char** entry = environ; *entry != nullptr; ++entry)
    if (name.empty() || !std::string_view(*entry).starts_with(name)) environment.push_back(*entry);
  if (!name.empty()) environment.push_back(start.variable.data());
  environment.push_back(nullptr);

  pid_t process = -1;
  if (::posix_spawnp(&process, words[0], &actions, &attributes, words.data(), environment.data()) !=
      0)
    process = -1;
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return process;
}

}  // namespace marbelot
