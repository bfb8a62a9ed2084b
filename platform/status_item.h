// The icon in the menu bar or tray, and the program's menu.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/geometry.h"
#include "platform/menu.h"

namespace marbelot {

class StatusItem {
 public:
  virtual ~StatusItem() = default;

  // Shows a system symbol (drawn in the bar's own colour). False when the system has none of that
  // name. The description is for screen readers; it may be empty.
  virtual bool setSymbol(const std::string& name, const std::string& description) = 0;
  // Shown instead of a symbol.
  virtual void setTitle(const std::string& title) = 0;

  // Sets or replaces the menu. The delegate outlives the item.
  virtual void setMenu(std::shared_ptr<Menu> menu, MenuDelegate* delegate) = 0;
  // The tree was edited while the menu may be open: shows it as it is now.
  virtual void menuChanged() = 0;
  // Opens the menu at the pointer.
  virtual void popUpMenu() = 0;

  // The frame, in screen coordinates, of the part of the open menu that was opened last: the menu,
  // or the submenu in which an item is highlighted. None while it is closed, or where another
  // program draws it.
  virtual std::optional<Rect> openMenuFrame() const = 0;

  // Asked as the menu closes: whether a key that key monitors have not seen closed it.
  virtual bool wasClosedByKey() const { return false; }

  // Called once when it is clear that nothing on this desktop shows status items.
  virtual void setNoHostHandler(std::function<void()> handler) = 0;
};

}  // namespace marbelot
