// What every feature may ask of the application as a whole.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>

#include "platform/image.h"
#include "platform/menu.h"
#include "platform/value.h"

namespace marbelot {

class Shell {
 public:
  virtual ~Shell() = default;

  // Tells the user, in one short message.
  virtual void notify(const std::string& message) = 0;
  // Shows a check mark in place of the status icon for a moment: the clipboard was written.
  virtual void flashStatusIcon() = 0;
  // State that the menu shows has changed. Ask freely: it is built when it is looked at, and once
  // for several requests in a row while it is open.
  virtual void rebuildMenu() = 0;

  // Puts something on the clipboard that the program already holds: it is neither recorded in the
  // history nor collected. What was made of a concealed copy stays concealed. False when the
  // clipboard could not be written.
  [[nodiscard]] virtual bool copyWithoutRecording(SharedText text, bool concealed) = 0;
  [[nodiscard]] bool copyWithoutRecording(SharedText text) {
    return copyWithoutRecording(std::move(text), false);
  }
  [[nodiscard]] virtual bool copyWithoutRecording(const Image& image, bool concealed) = 0;
  [[nodiscard]] bool copyWithoutRecording(const Image& image) {
    return copyWithoutRecording(image, false);
  }

  // Ends a user's copy: flashes and says `message` when the clipboard was written, else that it
  // was not. Returns `written`.
  bool confirmCopy(bool written, const std::string& message) {
    if (written) flashStatusIcon();
    notify(written ? message : "Couldn't write to the clipboard");
    return written;
  }
};

// The actions that menu items name, by selector.
class ActionTable {
 public:
  using Action = std::function<void(const MenuItem& sender)>;

  // Nobody else may offer the action: the program ends otherwise.
  void add(std::string selector, Action action) {
    if (actions_.contains(selector)) {
      std::fprintf(stderr, "the action %s is offered twice\n", selector.c_str());
      std::abort();
    }
    actions_[std::move(selector)] = std::move(action);
  }
  // The same for one that takes what the sender carries, and does nothing when that is no T.
  template <class T, class Take>
  void addOn(std::string selector, Take take) {
    add(std::move(selector), [take = std::move(take)](const MenuItem& sender) {
      if (const T* carried = std::get_if<T>(&sender.represented)) take(*carried);
    });
  }
  // False when nobody offers the sender's action.
  bool perform(const MenuItem& sender) const {
    const auto found = actions_.find(sender.action);
    if (found == actions_.end()) return false;
    found->second(sender);
    return true;
  }

 private:
  std::map<std::string, Action> actions_;
};

}  // namespace marbelot
