// marbelotctl: Marbelot's decisions in a shell, and a running Marbelot on a lead.

#include <cstdio>
#include <string_view>

#include "tools/command.h"

namespace marbelot::ctl {
namespace {

constexpr int helpColumn = 41;

// A command's syntax, and beside it what it does.
void print(std::FILE* out, const Command& command) {
  const std::string left = std::string("  ") + command.name +
                           (*command.syntax ? std::string(" ") + command.syntax : std::string());
  std::string_view help = command.help;
  std::fputs(left.c_str(), out);
  int column = static_cast<int>(left.size());
  if (column >= helpColumn) {
    std::fputs("\n", out);
    column = 0;
  }
  while (!help.empty()) {
    const std::string_view line = help.substr(0, help.find('\n'));
    std::fprintf(out, "%*s%.*s\n", helpColumn - column, "", static_cast<int>(line.size()),
                 line.data());
    help.remove_prefix(std::min(line.size() + 1, help.size()));
    column = 0;
  }
}

void printUsage(std::FILE* out) {
  std::fputs("usage: marbelotctl COMMAND …\n", out);
  for (const CommandGroup& group : {textCommands(), imageCommands(), remoteCommands()}) {
    if (group.commands.empty()) continue;
    std::fprintf(out, "\n%s\n", group.heading);
    for (const Command& command : group.commands) print(out, command);
  }
  std::fputs("\nExit status: 0 done, 1 it could not be done, 2 wrong usage.\n", out);
}

int run(int argc, char** argv) {
  const std::string_view name = argc > 1 ? argv[1] : "";
  if (name == "--help" || name == "help") {
    printUsage(stdout);
    return done;
  }
  for (const CommandGroup& group : {textCommands(), imageCommands(), remoteCommands()}) {
    for (const Command& command : group.commands) {
      if (name != command.name) continue;
      const auto arguments = Arguments::read(command, argc, argv);
      const int status = arguments ? command.run(*arguments) : wrongUsage;
      if (status == wrongUsage) {
        std::fprintf(stderr, "marbelotctl: this is how to use %s:\n", command.name);
        print(stderr, command);
      }
      return status;
    }
  }
  if (argc < 2) {
    printUsage(stderr);
  } else {
    fail("there is no command \"" + std::string(name) + "\"; see marbelotctl help");
  }
  return wrongUsage;
}

}  // namespace
}  // namespace marbelot::ctl

int main(int argc, char** argv) { return marbelot::ctl::run(argc, argv); }
