// The terminal test: sessions, command lines and what tools print when they fail.
#pragma once

#include <cstddef>
#include <string_view>

namespace marbelot {

// "# ", "% " and "> " begin comments, headings and quotations, too: what stands behind one of them.
struct MarkCounts {
  std::size_t commands = 0;
  std::size_t words = 0;    // that name a command and might be a heading
  std::size_t remarks = 0;  // comments, headings, quotations and sentences
  bool beginsWithCommand = false;
  bool beginsWithWord = false;
  bool showsFile = false;  // the command that it begins with
};

struct TerminalCounts {
  std::size_t prompts = 0;    // a command behind "$ ", "ann@host:~$ " or "PS C:\\>"
  std::size_t failures = 0;   // what tools say when something went wrong
  std::size_t mentions = 0;   // the same where sources hold it, too
  std::size_t commands = 0;   // command lines without a prompt
  std::size_t toolLines = 0;  // what compilers show of a source
  MarkCounts hash, percent, angle;
};

enum class TerminalLine { none, session, comment, quotation };

// Reads the lines of a text, one after another.
class TerminalReader {
 public:
  const TerminalCounts& counts() const { return counts_; }

  void readBlank();
  // `line` as it stands; `trimmed` without blanks at its ends (not empty).
  TerminalLine read(std::string_view line, std::string_view trimmed, bool isCode);

 private:
  TerminalLine readMark(MarkCounts& mark, char c, std::string_view rest);

  TerminalCounts counts_;
  bool isFirst_ = true;
  MarkCounts* word_ = nullptr;  // of the line before, if that was one
};

struct LineCounts;

bool looksLikeTerminal(const LineCounts& lines);

// Whether the text is a session whatever else it shows, source for example.
bool showsSession(const LineCounts& lines);

}  // namespace marbelot
