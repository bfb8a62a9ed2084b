#include "platform/memory/shown_menu.h"

#include <algorithm>

namespace marbelot::memory {
namespace {

std::vector<MenuItem> copied(const Menu& menu) {
  std::vector<MenuItem> items;
  items.reserve(menu.items.size());
  for (const MenuItemRef& item : menu.items) items.push_back(*item);
  return items;
}

}  // namespace

void ShownMenu::open(const Menu& tree) { levels_ = {{{}, copied(tree)}}; }

void ShownMenu::sync(std::shared_ptr<const Menu> tree) {
  for (std::size_t i = 0; i < levels_.size() && tree; ++i) {
    if (i + 1 == levels_.size()) {
      levels_[i].items = copied(*tree);
      return;
    }
    const auto open = indexOfOpen(*tree, levels_[i + 1].opener);
    if (!open) return;
    levels_[i].items = copied(*tree);
    tree = tree->items[*open]->submenu;
  }
}

const std::vector<MenuItem>& ShownMenu::level(const Path& path) {
  static const std::vector<MenuItem> none;
  if (!isOpen()) return none;
  for (std::size_t i = 0; i < path.size(); ++i) {
    if (i + 1 < levels_.size() && levels_[i + 1].opener.title == path[i]) continue;
    levels_.resize(i + 1);
    const auto& items = levels_[i].items;
    const auto found = std::find_if(items.begin(), items.end(), [&](const MenuItem& item) {
      return item.submenu && item.title == path[i];
    });
    if (found == items.end()) return none;
    levels_.push_back({*found, copied(*found->submenu)});
  }
  return levels_[path.size()].items;
}

}  // namespace marbelot::memory
