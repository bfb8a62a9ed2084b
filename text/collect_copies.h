// "Collect copies": successive clipboard texts gathered into one.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/platform.h"
#include "shell/setting.h"
#include "shell/shell.h"
#include "text/collection.h"

namespace marbelot {

template <>
struct SettingForm<Collection> {
  static std::optional<Collection> from(const Value& value) {
    auto texts = value.asTexts();
    return texts ? std::optional(Collection(*std::move(texts))) : std::nullopt;
  }
  static Value to(const Collection& collection) {
    return SettingForm<std::vector<SharedText>>::to(collection.pieces());
  }
};

// Main thread only; the platform and the shell outlive it.
class CollectCopies {
  Platform& platform_;

 public:
  // Shows a text of several pieces to the user.
  using View = std::function<void(const SharedText& text)>;

  CollectCopies(Platform& platform, Shell& shell, ActionTable& actions, View view);

  // The application's state, open to its menus and its tests.
  Setting<bool> concatEnabled{platform_.defaults, "concatEnabled"};
  Setting<Collection> concatBuffer{platform_.defaults, "concatBuffer"};
  Setting<std::string> concatSeparator{platform_.defaults, "concatSeparator", "newline"};
  MenuItemRef concatItem;  // the status menu's; empty until it is built

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
  void setConcatSeparator(const std::string& key);
  void viewConcat();
  void dropLastConcat();

  Shell& shell_;
  const View view_;
  Task copying_, viewing_;
  bool resetAfterCopy_ = false;
  Task counting_;
  bool busyCounting_ = false;
};

}  // namespace marbelot
