// What the words of a shell's command line look like.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace marbelot {

// The first words of a line, as far as it is looked at.
class Words {
 public:
  explicit Words(std::string_view line);

  std::size_t size() const { return count_; }
  std::string_view operator[](std::size_t i) const { return i < count_ ? words_[i] : ""; }
  template <typename Test>
  bool anyBehindFirst(Test test) const {
    for (std::size_t i = 1; i < count_; ++i) {
      if (test(words_[i])) return true;
    }
    return false;
  }

 private:
  std::array<std::string_view, 24> words_;
  std::size_t count_ = 0;
};

enum class FirstWord {
  unlikely,
  possible,  // might be the name of a program
  everyday,  // a command named by a word of everyday English
  command,
};

FirstWord judgeFirstWord(std::string_view word);

// "./", "/usr/" and the like.
bool startsAsPath(std::string_view word);

// Commands that are no words, and that take any: "rm", "chown" …
bool isTerse(std::string_view command);
// Commands that run another: "sudo", "time" …
bool isWrapper(std::string_view command);
// Commands that print what is in files: "cat", "git" …
bool showsFile(std::string_view command);
// What commands are told to do: "install", "status" …
bool isSubcommand(std::string_view word);
// Words that hold sentences together.
bool isFunctionWord(std::string_view word);

// "|", "&&", "> file" … between the words.
bool holdsOperator(const Words& words);
bool holdsOption(const Words& words);
bool holdsFileName(const Words& words);
// "eth0", "if=/dev/zero", "ann@host" …
bool holdsTechnicalWord(const Words& words);
// Whether the words hold what sentences do not: an operator, or an option or a path close behind
// the first.
bool holdsShellWords(const Words& words);

}  // namespace marbelot
