#include "platform/menu.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace marbelot {

MenuItemRef Menu::add(MenuItem item) {
  items.push_back(std::make_shared<MenuItem>(std::move(item)));
  return items.back();
}

MenuItemRef Menu::add(std::string title, std::string action, Represented represented) {
  MenuItem item;
  item.title = std::move(title);
  item.action = std::move(action);
  item.represented = std::move(represented);
  return add(std::move(item));
}

MenuItemRef Menu::addDisabled(std::string title) {
  MenuItem item;
  item.title = std::move(title);
  item.enabled = false;
  return add(std::move(item));
}

MenuItemRef Menu::addSubmenu(std::string title, std::shared_ptr<Menu> submenu) {
  MenuItem item;
  item.title = std::move(title);
  item.submenu = std::move(submenu);
  return add(std::move(item));
}

void Menu::addSeparator() {
  MenuItem item;
  item.separator = true;
  add(std::move(item));
}

bool sameItem(const MenuItem* a, const MenuItem* b) {
  if (a == b || !a || !b) return a == b;
  const auto textOf = [](const MenuItem& item) {
    const auto* text = item.payload ? std::get_if<SharedText>(&item.payload->content) : nullptr;
    return text ? *text : nullptr;
  };
  return a->title == b->title && a->action == b->action && a->represented == b->represented &&
         textOf(*a) == textOf(*b);
}

std::optional<std::size_t> indexOfOpen(const Menu& level, const MenuItem& open) {
  if (open.payload) return std::nullopt;
  for (std::size_t i = 0; i < level.items.size(); ++i)
    if (level.items[i]->submenu && level.items[i]->title == open.title) return i;
  return std::nullopt;
}

std::string representedText(const Represented& represented) {
  if (const auto* number = std::get_if<std::int64_t>(&represented)) return std::to_string(*number);
  if (const auto* flag = std::get_if<bool>(&represented)) return *flag ? "true" : "false";
  if (const auto* text = std::get_if<std::string>(&represented)) return *text;
  if (const auto* object = std::get_if<std::shared_ptr<const RepresentedObject>>(&represented))
    return *object ? (*object)->text() : std::string();
  return {};
}

namespace {

using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;

void writeText(JsonWriter& out, std::string_view text) {
  out.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

// The depth is that of the menu's design, three or four levels.
void writeMenu(JsonWriter& out, const Menu& menu) {
  out.StartArray();
  for (const MenuItemRef& item : menu.items) {
    out.StartObject();
    if (item->separator) {
      out.Key("separator");
      out.Bool(true);
    } else {
      out.Key("title");
      writeText(out, item->title);
      out.Key("action");
      writeText(out, item->action);
      if (item->represented.index() != 0) {
        out.Key("represented");
        writeText(out, representedText(item->represented));
      }
      out.Key("enabled");
      out.Bool(item->enabled);
      out.Key("hidden");
      out.Bool(item->hidden);
      out.Key("checked");
      out.Bool(item->checked);
      if (item->image) {
        out.Key("image");
        out.Bool(true);
      }
      if (!item->toolTip.empty()) {
        out.Key("toolTip");
        writeText(out, item->toolTip);
      }
      out.Key("key");
      writeText(out, item->key);
      if (item->submenu) {
        out.Key("submenu");
        writeMenu(out, *item->submenu);
      }
    }
    out.EndObject();
  }
  out.EndArray();
}

}  // namespace

std::string menuJson(const Menu& menu) {
  rapidjson::StringBuffer buffer;
  JsonWriter out(buffer);
  writeMenu(out, menu);
  return buffer.GetString();
}

}  // namespace marbelot
