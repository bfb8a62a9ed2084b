#include "platform/linux/popped_menu.h"

namespace marbelot {

PoppedMenu::PoppedMenu(std::shared_ptr<Menu> menu, QPoint corner,
                       std::function<void(const MenuItem&)> chosen)
    : chosen_(std::move(chosen)) {
  view_.setMenu(std::move(menu), this);
  view_.popUpAt(corner);
}

void PoppedMenu::menuItemChosen(const MenuItem& item) {
  // A copy: the callee may close the window that this belongs to.
  if (const auto chosen = chosen_) chosen(item);
}

}  // namespace marbelot
