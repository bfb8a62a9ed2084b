// A menu as it is on the screen: what was shown last, until the program says that it was edited.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/menu.h"

namespace marbelot::memory {

class ShownMenu {
 public:
  using Path = std::vector<std::string>;  // titles from the top

  void open(const Menu& tree);
  void close() { levels_.clear(); }
  bool isOpen() const { return !levels_.empty(); }
  // Brings what is open in step with the tree, which may be another one.
  void sync(std::shared_ptr<const Menu> tree);

  // The items under the item of that path, whose submenu is opened for it. Empty when there is
  // none.
  const std::vector<MenuItem>& level(const Path& path);

 private:
  struct Level {
    MenuItem opener;  // unused at the top
    std::vector<MenuItem> items;
  };
  std::vector<Level> levels_;
};

}  // namespace marbelot::memory
