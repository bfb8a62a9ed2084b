// Menus as data: features build a tree, a backend shows it and reports back.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/image.h"
#include "platform/value.h"

namespace marbelot {

// What a panel or a menu item shows of the clipboard.
using Content = std::variant<SharedText, Image>;
struct HUDPayload {
  Content content;
  std::uint64_t clipId = 0;  // of the history entry that it shows (ClipItem::id); 0: of none
};

// What an action takes that is more than a number or a text.
class RepresentedObject {
 public:
  virtual ~RepresentedObject() = default;
  // As the command line shows it.
  virtual std::string text() const = 0;
};

// The argument of an item's action.
using Represented = std::variant<std::monostate, std::int64_t, bool, std::string,
                                 std::shared_ptr<const RepresentedObject>>;

struct Menu;

struct MenuItem {
  std::string title;
  std::string action;  // the selector's name, e.g. "copyClipHistory:"; empty: none
  Represented represented;
  bool separator = false;
  bool enabled = true;
  bool hidden = false;
  bool checked = false;
  std::string toolTip;
  std::string key;  // key equivalent: one character with Command (Control on Linux), or empty
  // Shown before the title at 16 × 16 points, whatever its size. Only an image that has its pixels
  // at hand (Image::fromPixels) is shown: menus wait for no codec.
  std::optional<Image> image;
  std::shared_ptr<Menu> submenu;
  std::shared_ptr<const HUDPayload> payload;  // content to preview while the item is highlighted

  bool choosable() const { return enabled && !hidden && !action.empty() && !submenu; }
};

using MenuItemRef = std::shared_ptr<MenuItem>;

struct Menu {
  std::vector<MenuItemRef> items;

  MenuItemRef add(MenuItem item);
  MenuItemRef add(std::string title, std::string action, Represented represented = {});
  MenuItemRef addDisabled(std::string title);  // no action, shown disabled
  MenuItemRef addSubmenu(std::string title, std::shared_ptr<Menu> submenu);
  void addSeparator();
};

// Who is told what happens in a menu.
class MenuDelegate {
 public:
  virtual ~MenuDelegate() = default;
  // About to open: the tree may be edited here.
  virtual void menuWillOpen() = 0;
  // Another item is highlighted than before. None: no item that can be chosen is.
  virtual void menuWillHighlightItem(const MenuItem* item) = 0;
  virtual void menuDidClose() = 0;
  virtual void menuItemChosen(const MenuItem& item) = 0;
};

// Whether the two read and mean the same, also when the tree was built anew in between. Null is the
// same as null only.
bool sameItem(const MenuItem* a, const MenuItem* b);

// The text of a represented object, as the command line shows and takes it; empty for none.
std::string representedText(const Represented& represented);

// Where an item whose submenu the user has open stands after its level was edited: the one of the
// same title. None when there is none, or when the submenu acts on a piece of content: what the
// user is about to choose there must go on meaning this piece, so the level is left as it is.
std::optional<std::size_t> indexOfOpen(const Menu& level, const MenuItem& open);

// The tree as a JSON array, hidden items included.
std::string menuJson(const Menu& menu);

}  // namespace marbelot
