#include "app/menu_requests.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>

#include "platform/ascii.h"
#include "platform/text.h"

namespace marbelot {
namespace {

constexpr char titleSeparator = '\x1f';

// The item of that action, and of that represented object when one is asked for.
MenuItemRef itemWithAction(const Menu& menu, const std::string& action,
                           const std::optional<std::string>& object) {
  for (const MenuItemRef& item : menu.items) {
    if (item->action == action && (!object || representedText(item->represented) == *object))
      return item;
    if (!item->submenu) continue;
    if (MenuItemRef found = itemWithAction(*item->submenu, action, object)) return found;
  }
  return nullptr;
}

// The item that is shown with this title, else all whose titles go on after it: with a preview of
// what they would do, or a count.
std::vector<MenuItemRef> itemsTitled(const Menu& menu, const std::string& title) {
  std::vector<MenuItemRef> beginning;
  for (const MenuItemRef& item : menu.items) {
    if (item->separator || item->hidden) continue;
    const std::string shown = text::shownTitle(item->title);
    if (shown == title) return {item};
    if (!title.empty() && shown.starts_with(title + " ")) beginning.push_back(item);
  }
  return beginning;
}

// A represented object from the command line, for an item that the menu does not show right now.
Represented representedFrom(const std::optional<std::string>& object) {
  if (!object) return {};
  if (*object == "true" || *object == "false") return *object == "true";
  if (const auto number = wholeNumber<std::int64_t>(*object)) return *number;
  return *object;
}

// The number of the screen that most of the frame is on, the main one being 0; -1 when it is on
// none.
int screenOf(const Rect& frame, const std::vector<Screen>& screens) {
  int best = -1;
  double most = 0;
  for (std::size_t at = 0; at < screens.size(); ++at) {
    const Size common = screens[at].frame.intersection(frame).size();
    if (common.width * common.height <= most) continue;
    most = common.width * common.height;
    best = static_cast<int>(at);
  }
  return best;
}

}  // namespace

MenuRequests::MenuRequests(Platform& platform, const ActionTable& actions,
                           std::shared_ptr<Menu> menu, HistoryRequests& history,
                           std::function<void()> open)
    : platform_(platform),
      actions_(actions),
      menu_(std::move(menu)),
      history_(history),
      open_(std::move(open)) {}

void MenuRequests::serve() {
  using Texts = std::vector<std::string>;
  platform_.application.serve({
      {"Menu", {}, [this](const Texts&) { return menu(); }},
      // By the titles from the top, joined by U+001F; the beginning of one is enough where it ends
      // with a word and no other begins so.
      {"InvokeTitles", {"titles"}, [this](const Texts& text) { return invokeTitles(text[0]); }},
      {"InvokeAction",
       {"action"},
       [this](const Texts& text) { return invokeAction(text[0], std::nullopt); }},
      {"InvokeActionOn",
       {"action", "object"},
       [this](const Texts& text) { return invokeAction(text[0], text[1]); }},
      {"Windows", {}, [this](const Texts&) { return windowsJson(); }},
      {"Press", {"window", "spec"}, [this](const Texts& text) { return press(text[0], text[1]); }},
      {"History",
       {"search", "category"},
       [this](const Texts& text) { return history_.list(text[0], text[1]); }},
      {"CopyEntry", {"id"}, [this](const Texts& text) { return history_.copy(text[0]); }},
      {"DeleteEntry", {"id"}, [this](const Texts& text) { return history_.remove(text[0]); }},
      {"PopUpMenu",
       {},
       [this](const Texts&) {
         platform_.statusItem.popUpMenu();
         return std::string();
       },
       true},
      {"Quit",
       {},
       [this](const Texts&) {
         platform_.application.terminate();
         return std::string();
       },
       true},
  });
}

std::string MenuRequests::menu() {
  open_();
  return menuJson(*menu_);
}

std::string MenuRequests::invokeTitles(const std::string& titles) {
  open_();
  const Menu* level = menu_.get();
  MenuItemRef found;
  for (std::size_t at = 0; at <= titles.size();) {
    const std::size_t end = std::min(titles.find(titleSeparator, at), titles.size());
    const std::string title = titles.substr(at, end - at);
    at = end + 1;
    if (!level) return "\"" + found->title + "\" has no submenu";
    const auto items = itemsTitled(*level, text::shownTitle(title));
    if (items.empty()) return "the menu has no item \"" + title + "\"";
    if (items.size() > 1) return "several items begin with \"" + title + "\"";
    found = items.front();
    if (!found->enabled) return "\"" + found->title + "\" is disabled";
    level = found->submenu.get();
  }
  if (found->submenu) return "\"" + found->title + "\" is a submenu";
  if (!actions_.perform(*found)) return "\"" + found->title + "\" does nothing";
  return {};
}

std::string MenuRequests::invokeAction(const std::string& action,
                                       const std::optional<std::string>& object) {
  open_();
  MenuItem sender;
  sender.action = action;
  const MenuItemRef shown = itemWithAction(*menu_, action, object);
  const bool isAsked = shown && (object || shown->represented == Represented());
  if (isAsked && !shown->hidden && !shown->enabled) return "\"" + shown->title + "\" is disabled";
  if (shown && object) {
    sender = *shown;
  } else {
    sender.represented = representedFrom(object);
  }
  if (!actions_.perform(sender)) return "there is no action \"" + action + "\"";
  return {};
}

std::string MenuRequests::press(const std::string& kind, const std::string& spec) {
  bool found = false;
  for (const WindowInfo& info : platform_.windows.visible()) {
    if (info.id != kind || !info.window) continue;
    found = true;
    // What the press does may close the window.
    if (info.window->press(spec)) return {};
    for (const ButtonInfo& button : info.buttons)
      if (button.id == spec) return "\"" + spec + "\" is disabled";
  }
  return found ? "the window \"" + kind + "\" has no button \"" + spec + "\""
               : "there is no window \"" + kind + "\"";
}

std::string MenuRequests::windowsJson() const {
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> out(buffer);
  out.StartArray();
  for (const WindowInfo& window : platform_.windows.visible()) {
    out.StartObject();
    out.Key("kind");
    out.String(window.id.c_str());
    out.Key("title");
    out.String(window.title.c_str());
    out.Key("frame");
    out.StartObject();
    const std::pair<const char*, double> numbers[] = {{"x", window.frame.x},
                                                      {"y", window.frame.y},
                                                      {"width", window.frame.width},
                                                      {"height", window.frame.height}};
    for (const auto& [key, number] : numbers) {
      out.Key(key);
      out.Double(number);
    }
    out.EndObject();
    out.Key("screen");
    out.Int(screenOf(window.frame, platform_.screens.all()));
    out.Key("focused");
    out.Bool(window.focused);
    out.Key("buttons");
    out.StartArray();
    for (const ButtonInfo& button : window.buttons) {
      out.StartObject();
      out.Key("title");
      out.String(button.title.c_str());
      out.Key("spec");
      out.String(button.id.c_str());
      out.Key("enabled");
      out.Bool(button.enabled);
      out.EndObject();
    }
    out.EndArray();
    out.EndObject();
  }
  out.EndArray();
  return buffer.GetString();
}

}  // namespace marbelot
