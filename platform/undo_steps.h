// Which of a text's edits undoing takes back together.
#pragma once

#include <cstdint>

namespace marbelot {

// A word with the blanks behind it is one step, as long as there is no pause.
class UndoSteps {
 public:
  enum class Edit { insert, eraseBackward, eraseForward };

  // Whether the edit begins a step; else it goes on with that of the edit before. `blank` is what
  // comes or goes, the milliseconds are those of any steady clock.
  bool begins(Edit edit, bool blank, std::uint64_t milliseconds) {
    constexpr std::uint64_t pause = 1000;
    const bool goesOn =
        open_ && edit == edit_ && (blank || !blank_) && milliseconds - last_ < pause;
    open_ = true;
    edit_ = edit;
    blank_ = blank;
    last_ = milliseconds;
    return !goesOn;
  }
  // The next edit begins a step, whatever it is.
  void end() { open_ = false; }

 private:
  bool open_ = false;
  Edit edit_ = Edit::insert;
  bool blank_ = false;
  std::uint64_t last_ = 0;
};

}  // namespace marbelot
