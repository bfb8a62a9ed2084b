#include "tools/command.h"

#include <getopt.h>

#include <cstdio>

#include "platform/text.h"

namespace marbelot::ctl {

std::optional<Arguments> Arguments::read(const Command& command, int argc, char** argv) {
  std::vector<::option> known;
  for (const char* name : command.options) known.push_back({name, required_argument, nullptr, 0});
  for (const char* name : command.flags) known.push_back({name, no_argument, nullptr, 0});
  known.push_back({});
  // It names the program in its messages, which it takes from the first word.
  std::string program = "marbelotctl";
  std::vector<char*> words(argv + 1, argv + argc);
  words[0] = program.data();

  Arguments arguments;
  int at = 0;
  for (int found = 0; (found = getopt_long(argc - 1, words.data(), "", known.data(), &at)) != -1;) {
    if (found != 0) return std::nullopt;
    arguments.options_[known[static_cast<std::size_t>(at)].name] = optarg ? optarg : "";
  }
  arguments.words_.assign(words.begin() + optind, words.end());
  return arguments;
}

std::optional<std::string> Arguments::option(const std::string& name) const {
  const auto found = options_.find(name);
  return found == options_.end() ? std::nullopt : std::optional(found->second);
}

int fail(const std::string& message) {
  // What was copied may stand in it and must not drive the terminal.
  std::fprintf(stderr, "marbelotctl: %s\n", text::shownTitle(message).c_str());
  return failed;
}

}  // namespace marbelot::ctl
