// What the commands of marbelotctl are made of.
#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace marbelot::ctl {

enum ExitStatus { done = 0, failed = 1, wrongUsage = 2 };

class Arguments;

struct Command {
  const char* name;
  // What can stand behind it, and what it does; lines are broken as they are shown.
  const char* syntax;
  const char* help;
  int (*run)(const Arguments&);
  std::vector<const char*> options{};  // with a value: "separator" for --separator S
  std::vector<const char*> flags{};    // without one
};

struct CommandGroup {
  const char* heading;
  std::span<const Command> commands;
};

// Of a text, of an image, and of the running program, which may be none.
CommandGroup textCommands();
CommandGroup imageCommands();
CommandGroup remoteCommands();

// What stands behind the command's name. `--` ends the options.
class Arguments {
 public:
  // `argv[1]` is the command. None, with the reason told, for an option that it does not have.
  static std::optional<Arguments> read(const Command& command, int argc, char** argv);

  std::optional<std::string> option(const std::string& name) const;
  bool has(const std::string& flag) const { return options_.contains(flag); }
  // The words that are no options.
  const std::vector<std::string>& words() const { return words_; }

 private:
  std::map<std::string, std::string> options_;
  std::vector<std::string> words_;
};

// Tells what went wrong, and is the status for it.
int fail(const std::string& message);

// Standard input for "-", or the file. None when it cannot be read.
std::optional<std::string> readBytes(const std::string& file);

}  // namespace marbelot::ctl
