// What the commands of marbelotctl share.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace marbelot::ctl {

enum ExitStatus { done = 0, failed = 1, wrongUsage = 2 };

// The words after the command: options with a value ("--separator X", "--separator=X"), flags
// ("--json") and the rest.
class Arguments {
 public:
  Arguments(int argc, char** argv);

  const std::string& command() const { return command_; }
  bool takeFlag(std::string_view name);
  // None when the option is absent. `--` ends the options.
  std::optional<std::string> takeOption(std::string_view name);
  // True when an option that nobody took is left, or one lacks its value.
  bool hasUnknownOptions() const;
  const std::vector<std::string>& rest() const { return words_; }

 private:
  std::string command_;
  std::vector<std::string> words_;
  std::size_t optionsEnd_ = 0;  // words from here on are not options
  bool lacksValue_ = false;
};

// Standard input for "-", or the file. None when it cannot be read.
std::optional<std::string> readBytes(const std::string& file);

int runImageCommand(Arguments& arguments, bool& known);
int runTextCommand(Arguments& arguments, bool& known);
int runRemoteCommand(Arguments& arguments, bool& known);

}  // namespace marbelot::ctl
