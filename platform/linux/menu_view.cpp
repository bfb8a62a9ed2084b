#include "platform/linux/menu_view.h"

#include <linux/input-event-codes.h>
#include <xcb/xcb.h>

#include <QApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QTimer>
#include <algorithm>
#include <utility>

#include "platform/linux/tool_tip.h"
#include "platform/linux/x11_connection.h"
#include "platform/linux/x11_desktop.h"
#include "platform/text.h"

Q_DECLARE_METATYPE(marbelot::MenuItemRef)

namespace marbelot {
namespace {

MenuItemRef itemOf(const QAction* action) {
  return action ? action->data().value<MenuItemRef>() : nullptr;
}

// The item that the pointer or the keys are at, null when that is none that can be chosen. A
// submenu that has only been opened beside its item takes nothing away from that.
MenuItemRef highlighted(const QMenu& view) {
  const QAction* active = view.activeAction();
  if (!active || !active->isEnabled() || active->isSeparator()) return nullptr;
  const QMenu* submenu = active->menu();
  const bool inSubmenu = submenu && submenu->isVisible() &&
                         (submenu->activeAction() || submenu->geometry().contains(QCursor::pos()));
  return inSubmenu ? highlighted(*submenu) : itemOf(active);
}

// The enabled item of that key equivalent, wherever in the tree.
MenuItemRef itemWithKey(const Menu& menu, const std::string& key) {
  for (const MenuItemRef& item : menu.items) {
    if (item->hidden || !item->enabled) continue;
    if (item->choosable() && item->key == key) return item;
    if (item->submenu)
      if (MenuItemRef found = itemWithKey(*item->submenu, key)) return found;
  }
  return nullptr;
}

// One "&" alone would mark a mnemonic.
QString menuTitle(const std::string& title) {
  return QString::fromStdString(text::shownTitle(title)).replace('&', "&&");
}

SharedBitmap pixelsOf(const MenuItem& item) { return item.image ? item.image->pixels() : nullptr; }

QIcon iconOf(const Bitmap& pixels) {
  return QPixmap::fromImage(QImage(pixels.data(), pixels.width(), pixels.height(),
                                   static_cast<qsizetype>(pixels.bytesPerRow()),
                                   QImage::Format_RGBA8888_Premultiplied)
                                .copy());
}

// What the key would type on the Latin layout that the user has beside a Cyrillic, Greek or other
// one, or else on the American one. 0 when that is no letter.
char latinLetter(const QKeyEvent& event) {
  const int key = event.key();
  if (key >= Qt::Key_A && key <= Qt::Key_Z) return static_cast<char>('a' + (key - Qt::Key_A));
  constexpr int lastLatin1 = 0xFF, firstNoCharacter = 0x01000000;  // of Qt::Key
  if (key <= lastLatin1 || key >= firstNoCharacter) return 0;
  const auto code = static_cast<xcb_keycode_t>(event.nativeScanCode());
  if (xcb_connection_t* const x11 = toolkitConnection()) {
    const X11Reply<xcb_get_keyboard_mapping_reply_t> mapping(
        xcb_get_keyboard_mapping_reply(x11, xcb_get_keyboard_mapping(x11, code, 1), nullptr));
    const int count = mapping ? xcb_get_keyboard_mapping_keysyms_length(mapping.get()) : 0;
    // Latin letters are their own ISO 8859-1 codes among the X11 key symbols.
    const xcb_keysym_t* const symbols =
        count > 0 ? xcb_get_keyboard_mapping_keysyms(mapping.get()) : nullptr;
    for (int i = 0; i < count; ++i)
      if (symbols[i] >= 'a' && symbols[i] <= 'z') return static_cast<char>(symbols[i]);
  }
  // The key codes of linux/input-event-codes.h, 8 higher in X11.
  constexpr std::pair<int, std::string_view> rows[] = {
      {KEY_Q + 8, "qwertyuiop"}, {KEY_A + 8, "asdfghjkl"}, {KEY_Z + 8, "zxcvbnm"}};
  for (const auto& [first, letters] : rows) {
    if (code >= first && code < first + static_cast<int>(letters.size()))
      return letters[static_cast<std::size_t>(code - first)];
  }
  return 0;
}

}  // namespace

MenuView::MenuView() : view_(std::make_unique<QMenu>()) {
  view_->setAttribute(Qt::WA_X11NetWmWindowTypePopupMenu);
  view_->setToolTipsVisible(true);
  view_->installEventFilter(this);
  connect(view_.get(), &QMenu::triggered, this,
          [this](QAction* action) { choose(itemOf(action)); });
  connect(view_.get(), &QMenu::aboutToHide, this, [this] {
    look_.stop();
    endCatching();
    tell(nullptr);
    if (delegate_) delegate_->menuDidClose();
  });
  connect(view_.get(), &QMenu::hovered, this, [this] { look_.start(0); });
  look_.setSingleShot(true);
  connect(&look_, &QTimer::timeout, this, [this] { tell(highlighted(*view_)); });
}

MenuView::~MenuView() = default;

void MenuView::setMenu(std::shared_ptr<Menu> menu, MenuDelegate* delegate) {
  menu_ = std::move(menu);
  delegate_ = delegate;
  sync();
}

void MenuView::popUpAtPointer() {
  if (!menu_ || isOpen() || catcher_) return;
  if (!isWayland() || !toolkitConnection()) {
    popUpAt(QCursor::pos());
    return view_->activateWindow();
  }
  catcher_ = std::make_unique<PointerCatcher>();
  catcher_->catchAll([this](QPoint place, const QRect& usable) { popUpAt(place, usable); },
                     [this] {
                       view_->close();
                       endCatching();
                     });
}

void MenuView::endCatching() {
  if (catcher_) catcher_.release()->deleteLater();
}

void MenuView::popUpAt(QPoint corner, const QRect& usable) {
  if (!menu_ || isOpen()) return;
  if (delegate_) delegate_->menuWillOpen();
  fill(*view_, *menu_);
  // A Wayland desktop takes a menu that belongs to no window for a window: at least for one that is
  // not to be stretched.
  if (isWayland() && !toolkitConnection()) view_->setFixedSize(view_->sizeHint());
  if (!usable.isEmpty()) {
    const QSize size = view_->sizeHint();
    corner.rx() = std::max(usable.left(), std::min(corner.x(), usable.right() + 1 - size.width()));
    corner.ry() = std::max(usable.top(), std::min(corner.y(), usable.bottom() + 1 - size.height()));
  }
  view_->popup(corner);
}

QRect MenuView::openFrame() const {
  if (!isOpen()) return {};
  const QMenu* menu = view_.get();
  while (const QAction* const active = menu->activeAction()) {
    const QMenu* const submenu = active->menu();
    if (!submenu || !submenu->isVisible() || !submenu->activeAction()) break;
    menu = submenu;
  }
  return menu->geometry();
}

QMenu* MenuView::exported() {
  if (exported_) return exported_.get();
  exported_ = std::make_unique<QMenu>();
  connect(exported_.get(), &QMenu::aboutToShow, this, [this] { setExportedOpen(true); });
  connect(exported_.get(), &QMenu::aboutToHide, this, [this] { setExportedOpen(false); });
  connect(exported_.get(), &QMenu::hovered, this,
          [this](QAction* action) { tell(itemOf(action)); });
  connect(exported_.get(), &QMenu::triggered, this, [this](QAction* action) {
    const MenuItemRef item = itemOf(action);
    setExportedOpen(false);
    choose(item);
  });
  // Some hosts open no menu that is empty.
  if (menu_) fill(*exported_, *menu_);
  return exported_.get();
}

// Some hosts tell of no closing: the menu is closed at the latest when it opens again.
void MenuView::setExportedOpen(bool open) {
  if (!menu_) return;
  const bool wasOpen = std::exchange(exportedOpen_, open && !isOpen());
  if (isOpen()) return;
  if (wasOpen) {
    tell(nullptr);
    if (delegate_) delegate_->menuDidClose();
  }
  if (!open) return;
  if (delegate_) delegate_->menuWillOpen();
  fill(*exported_, *menu_);
}

void MenuView::sync() {
  if (menu_ && exportedOpen_) fill(*exported_, *menu_);
  if (!isOpen() || !menu_) return;
  fill(*view_, *menu_);
  look_.start(0);
}

void MenuView::tell(const MenuItemRef& item) {
  if (sameItem(told_.get(), item.get())) return;
  told_ = item;
  if (delegate_) delegate_->menuWillHighlightItem(item.get());
}

// Brings the action whose submenu is open to the place of its item, so that it stays in use for it.
// False when the level must stay as it is.
bool MenuView::alignOpen(QMenu& view, const Menu& menu) {
  const QList<QAction*> actions = view.actions();
  const auto open = std::find_if(actions.begin(), actions.end(), [](const QAction* action) {
    return action->menu() && action->menu()->isVisible() && itemOf(action);
  });
  if (open == actions.end()) return true;
  const auto wanted = indexOfOpen(menu, *itemOf(*open));
  if (!wanted) return false;
  auto at = static_cast<std::size_t>(open - actions.begin());
  for (; at < *wanted; ++at) view.insertAction(actions.front(), new QAction(&view));
  for (qsizetype first = 0; at > *wanted; --at, ++first) drop(view, actions[first]);
  return true;
}

void MenuView::drop(QMenu& view, QAction* action) {
  view.removeAction(action);
  action->menu() ? action->menu()->deleteLater() : action->deleteLater();
}

void MenuView::fill(QMenu& view, const Menu& menu) {
  if (!alignOpen(view, menu)) return;
  const QList<QAction*> actions = view.actions();
  bool isExported = false;
  for (const QObject* ancestor = &view; ancestor; ancestor = ancestor->parent())
    isExported = isExported || ancestor == exported_.get();
  qsizetype at = 0;
  for (const MenuItemRef& item : menu.items) {
    // An action is used again for an item of its kind, so that what is open stays open.
    QAction* action = at < actions.size() ? actions[at] : nullptr;
    const bool fits = action && action->isSeparator() == item->separator &&
                      (action->menu() != nullptr) == (item->submenu != nullptr);
    if (!fits) {
      QAction* made = item->submenu ? (new QMenu(&view))->menuAction() : new QAction(&view);
      made->setSeparator(item->separator);
      if (made->menu()) prepareSubmenu(*made->menu());
      view.insertAction(action, made);
      if (action) drop(view, action);
      action = made;
    }
    dress(*action, item, !isExported);
    ++at;
  }
  for (; at < actions.size(); ++at) drop(view, actions[at]);
}

void MenuView::prepareSubmenu(QMenu& view) {
  view.setAttribute(Qt::WA_X11NetWmWindowTypePopupMenu);
  view.installEventFilter(this);
  connect(&view, &QMenu::aboutToShow, this, [this, &view] {
    const MenuItemRef parent = itemOf(view.menuAction());
    if (parent && parent->submenu) fill(view, *parent->submenu);
  });
}

void MenuView::dress(QAction& action, const MenuItemRef& item, bool withKey) {
  const MenuItemRef before = itemOf(&action);
  action.setData(QVariant::fromValue(item));
  action.setVisible(!item->hidden);
  if (item->separator) return;
  QString title = menuTitle(item->title);
  if (withKey && !item->key.empty()) {
    // Shown like a shortcut; carried out by our own key handling, because a popup of a program that
    // is not active gets no shortcuts from Qt.
    title += "\tCtrl+" + QString::fromStdString(item->key).toUpper();
  }
  if (action.text() != title) action.setText(title);
  if (const SharedBitmap pixels = pixelsOf(*item); !before || pixelsOf(*before) != pixels) {
    action.setIcon(pixels ? iconOf(*pixels) : QIcon());
    action.setIconVisibleInMenu(true);  // also on desktops whose menus have none as a rule
  }
  action.setToolTip(plainToolTip(item->toolTip));
  action.setEnabled(item->enabled && (item->submenu || !item->action.empty()));
  action.setCheckable(item->checked);
  action.setChecked(item->checked);
  if (QMenu* submenu = action.menu(); submenu && item->submenu) {
    if (submenu->isVisible()) {
      fill(*submenu, *item->submenu);
    } else if (submenu->isEmpty()) {
      // Qt does not open a menu that is empty.
      submenu->addAction(QString());
    }
  }
}

void MenuView::choose(const MenuItemRef& item) {
  // The tree may be rebuilt by what the item does.
  if (item && item->choosable() && delegate_) delegate_->menuItemChosen(*item);
}

bool MenuView::chooseByKey(const QString& key) {
  const MenuItemRef item = menu_ ? itemWithKey(*menu_, key.toStdString()) : nullptr;
  if (!item) return false;
  view_->close();
  while (QWidget* popup = QApplication::activePopupWidget()) popup->close();
  QTimer::singleShot(0, this, [this, item] { choose(item); });
  return true;
}

bool MenuView::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress) {
    const auto* key = static_cast<QKeyEvent*>(event);
    const char letter = latinLetter(*key);
    if ((key->modifiers() & ~Qt::KeypadModifier) == Qt::ControlModifier && letter)
      return chooseByKey(QString(QChar(letter)));
  }
  // Whatever may move the highlight has done so once this event has been dealt with.
  switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::MouseMove:
    case QEvent::Enter:
    case QEvent::Leave:
    case QEvent::Show:
    case QEvent::Hide:
      look_.start(0);
      break;
    default:
      break;
  }
  return QObject::eventFilter(watched, event);
}

}  // namespace marbelot
