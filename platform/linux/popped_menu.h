// A menu that a view opens.
#pragma once

#include <functional>
#include <memory>

#include "platform/linux/menu_view.h"

namespace marbelot {

class PoppedMenu : private MenuDelegate {
 public:
  // Opens with its upper left corner there, in Qt's coordinates. `chosen` gets the item, unless the
  // menu is dismissed; the menu goes with this object.
  PoppedMenu(std::shared_ptr<Menu> menu, QPoint corner,
             std::function<void(const MenuItem&)> chosen);
  bool isOpen() const { return view_.isOpen(); }

 private:
  void menuWillOpen() override {}
  void menuWillHighlightItem(const MenuItem*) override {}
  void menuDidClose() override {}
  void menuItemChosen(const MenuItem& item) override;

  std::function<void(const MenuItem&)> chosen_;
  MenuView view_;
};

}  // namespace marbelot
