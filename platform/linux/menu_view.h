// Shows a menu tree as a QMenu.
#pragma once

#include <QMenu>
#include <QTimer>

#include "platform/linux/pointer_catcher.h"
#include "platform/menu.h"

namespace marbelot {

// The tree stays the truth: submenus are filled when they open, and `sync` brings what is open up
// to date in place, so that an edit neither closes a submenu nor moves the highlight.
class MenuView : public QObject {
 public:
  MenuView();
  ~MenuView() override;

  void setMenu(std::shared_ptr<Menu> menu, MenuDelegate* delegate);
  void sync();
  void popUpAtPointer();
  // Opens with its upper left corner there, and leaves the focus where it is.
  // `usable`: what is to show it all, where that is known.
  void popUpAt(QPoint corner, const QRect& usable = {});
  // The frame, in Qt's coordinates, of the submenu opened last in which an item is highlighted,
  // else of the menu. Null while it is closed.
  QRect openFrame() const;
  bool isOpen() const { return view_ && view_->isVisible(); }
  // The same tree for a host that draws menus itself; filled anew when the host opens it. Made by
  // the first call.
  QMenu* exported();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void endCatching();
  void setExportedOpen(bool open);
  static bool alignOpen(QMenu& view, const Menu& menu);
  static void drop(QMenu& view, QAction* action);
  void fill(QMenu& view, const Menu& menu);
  void prepareSubmenu(QMenu& view);
  // `withKey`: shows its key equivalent, which a host would show as part of the title.
  void dress(QAction& action, const MenuItemRef& item, bool withKey);
  void tell(const MenuItemRef& item);
  void choose(const MenuItemRef& item);
  bool chooseByKey(const QString& key);

  std::shared_ptr<Menu> menu_;
  MenuDelegate* delegate_ = nullptr;
  MenuItemRef told_;  // what is highlighted, as the delegate knows it
  QTimer look_;
  std::unique_ptr<QMenu> view_;
  std::unique_ptr<QMenu> exported_;
  bool exportedOpen_ = false;
  std::unique_ptr<PointerCatcher> catcher_;  // while the menu is open, where one is needed
};

}  // namespace marbelot
