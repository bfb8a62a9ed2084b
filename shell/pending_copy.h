// Something that is being made for the clipboard, mostly in the background: what anybody copies
// meanwhile is newer, and stays.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/pasteboard.h"
#include "shell/shell.h"

namespace marbelot {

inline constexpr const char* overtakenMessage = "The clipboard has changed meanwhile";

// A value, made when the work begins. Main thread only; everything it is given outlives it.
class PendingCopy {
 public:
  PendingCopy(Pasteboard& pasteboard, Shell& shell)
      : pasteboard_(&pasteboard), shell_(&shell), replaced_(pasteboard.changeCount()) {}

  // The change count of the contents that it is to replace.
  std::int64_t replaced() const { return replaced_; }
  // They were replaced by what this very work has written.
  void follow(std::int64_t written) { replaced_ = written; }

  bool isOvertaken() const { return pasteboard_->changeCount() != replaced_; }
  // The same, and tells the user, who waits for a copy that does not come.
  bool tellIfOvertaken() const {
    const bool overtaken = isOvertaken();
    if (overtaken) shell_->notify(overtakenMessage);
    return overtaken;
  }
  // The same, but what was made is handed to `keep`, unless it is `concealed`: made of a copy that
  // its owner marks so.
  template <class Content>
  bool keepIfOvertaken(const Content& made, bool concealed, const std::string& message,
                       const std::function<void(const Content&)>& keep) const {
    if (concealed || !isOvertaken()) return tellIfOvertaken();
    keep(made);
    shell_->notify(message + " — kept in the clipboard history");
    return true;
  }

  // Puts it on the clipboard, recorded and collected like a copy by any other program, and says
  // `message`. Returns the change count; none when the clipboard could not be written.
  template <class Content>
  std::optional<std::int64_t> write(const Content& made, bool concealed,
                                    const std::string& message) const {
    const auto written = pasteboard_->write(made, concealed);
    shell_->confirmCopy(written.has_value(), message);
    return written;
  }

 private:
  Pasteboard* pasteboard_;
  Shell* shell_;
  std::int64_t replaced_;
};

}  // namespace marbelot
