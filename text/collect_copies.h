// "Collect copies": successive clipboard texts gathered into one.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/platform.h"
#include "shell/shell.h"
#include "text/collection.h"

namespace marbelot {

// Main thread only; the platform and the shell outlive it.
class CollectCopies {
 public:
  // Shows a text of several pieces to the user.
  using View = std::function<void(const SharedText& text)>;

  CollectCopies(Platform& platform, Shell& shell, ActionTable& actions, View view);

  bool concatEnabled = false;
  const std::string concatEnabledKey = "concatEnabled";
  Collection concatBuffer;
  const std::string concatBufferKey = "concatBuffer";
  std::string concatSeparator = "newline";
  const std::string concatSeparatorKey = "concatSeparator";
  MenuItemRef concatItem;  // the status menu's; empty until it is built

  void readSettings();
  // Adds the item with its submenu to the status menu.
  void addStatusItem(Menu& menu);
  // Sets the item's title and submenu, also while the menu is open.
  void refreshMenu();

  // A new copy. `quiet`: without telling the user.
  void append(const SharedText& text, bool quiet);

 private:
  void persist();
  void changed();
  void dressItem();
  std::optional<std::size_t> characters();
  std::shared_ptr<Menu> submenu();
  bool tellWhenEmpty();
  // Hands the joined pieces to `then`: at once, or from the background when they are large. What
  // `task` stood for is superseded.
  void withJoined(Task& task, std::function<void(const SharedText&)> then);
  void toggleConcat();
  void copy(bool reset);
  void resetConcat();
  void setConcatSeparator(const MenuItem& sender);
  void viewConcat();
  void dropLastConcat();

  Platform& platform_;
  Shell& shell_;
  const View view_;
  Task copying_, viewing_;
  bool resetAfterCopy_ = false;
  Task counting_;
  bool busyCounting_ = false;
};

}  // namespace marbelot
