#include "platform/linux/x11_windows.h"

#include <xcb/res.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <unordered_map>

namespace marbelot {
namespace {

constexpr std::uint32_t mostWindows = 4096;
// Of all sizes that a window offers; those of 256 × 256 alone are 65 536 each.
constexpr std::uint32_t mostIconWords = 1 << 18;
constexpr std::uint32_t bestIconSide = 32;      // pixels: twice a menu's points
constexpr std::uint32_t largestIconSide = 512;  // pixels
constexpr std::uint32_t fromPager = 2;  // a request that comes from the user, not from a program

std::span<const std::uint32_t> words(const xcb_get_property_reply_t* reply) {
  if (!reply || reply->format != 32) return {};
  return {static_cast<const std::uint32_t*>(xcb_get_property_value(reply)),
          static_cast<std::size_t>(xcb_get_property_value_length(reply)) / 4};
}

std::string_view bytes(const xcb_get_property_reply_t* reply) {
  if (!reply || reply->format != 8) return {};
  return {static_cast<const char*>(xcb_get_property_value(reply)),
          static_cast<std::size_t>(xcb_get_property_value_length(reply))};
}

bool contains(std::span<const std::uint32_t> atoms, xcb_atom_t atom) {
  return std::find(atoms.begin(), atoms.end(), atom) != atoms.end();
}

// Behind the instance's name and a zero.
std::string classPart(std::string_view wmClass) {
  const std::size_t end = wmClass.find('\0');
  if (end == wmClass.npos) return std::string(wmClass);
  const std::string_view rest = wmClass.substr(end + 1);
  return std::string(rest.substr(0, rest.find('\0')));
}

// The pixels, which are neither premultiplied nor in our order.
std::optional<Image> image(std::span<const std::uint32_t> argb, std::uint32_t width,
                           std::uint32_t height) {
  auto bitmap = Bitmap::make(width, height);
  if (!bitmap) return std::nullopt;
  for (std::uint32_t y = 0; y < height; ++y) {
    std::uint8_t* to = bitmap->row(static_cast<int>(y));
    for (std::uint32_t x = 0; x < width; ++x) {
      const std::uint32_t pixel = argb[y * width + x];
      const std::uint32_t alpha = pixel >> 24;
      for (const int shift : {16, 8, 0})
        *to++ = static_cast<std::uint8_t>(((pixel >> shift & 255) * alpha + 127) / 255);
      *to++ = static_cast<std::uint8_t>(alpha);
    }
  }
  return Image::fromPixels(std::make_shared<const Bitmap>(*std::move(bitmap)));
}

}  // namespace

xcb_get_property_cookie_t X11Windows::ask(xcb_window_t window, std::string_view property,
                                          std::uint32_t words) {
  return xcb_get_property(x11_.get(), 0, window, x11_.atom(property), XCB_GET_PROPERTY_TYPE_ANY, 0,
                          words);
}

X11Windows::PropertyReply X11Windows::answer(xcb_get_property_cookie_t cookie) {
  return PropertyReply(xcb_get_property_reply(x11_.get(), cookie, nullptr));
}

xcb_window_t X11Windows::root() const {
  return xcb_setup_roots_iterator(xcb_get_setup(x11_.get())).data->root;
}

std::vector<X11Window> X11Windows::stacked() {
  if (!x11_.alive()) return {};
  const PropertyReply list = answer(ask(root(), "_NET_CLIENT_LIST_STACKING", mostWindows));
  struct Asked {
    xcb_window_t id;
    xcb_get_property_cookie_t wmClass, type, state, pid;
    xcb_get_window_attributes_cookie_t attributes;
  };
  std::vector<Asked> asked;
  for (const xcb_window_t id : words(list.get())) {
    asked.push_back({id, ask(id, "WM_CLASS", 256), ask(id, "_NET_WM_WINDOW_TYPE", 16),
                     ask(id, "_NET_WM_STATE", 32), ask(id, "_NET_WM_PID", 1),
                     xcb_get_window_attributes(x11_.get(), id)});
  }
  const std::array<xcb_atom_t, 3> ordinary{x11_.atom("_NET_WM_WINDOW_TYPE_NORMAL"),
                                           x11_.atom("_NET_WM_WINDOW_TYPE_DIALOG"),
                                           x11_.atom("_NET_WM_WINDOW_TYPE_UTILITY")};
  const xcb_atom_t hidden = x11_.atom("_NET_WM_STATE_HIDDEN");
  const xcb_atom_t unlisted = x11_.atom("_NET_WM_STATE_SKIP_TASKBAR");
  std::vector<X11Window> windows;
  for (const Asked& one : asked) {
    const PropertyReply wmClass = answer(one.wmClass), type = answer(one.type),
                        state = answer(one.state), pid = answer(one.pid);
    const X11Reply<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(x11_.get(), one.attributes, nullptr));
    // It may have gone meanwhile. The first type that is known to the window manager counts.
    const auto types = words(type.get());
    if (!attributes || (!types.empty() && !contains(ordinary, types.front()))) continue;
    X11Window window;
    window.id = one.id;
    window.className = classPart(bytes(wmClass.get()));
    if (const auto number = words(pid.get()); !number.empty()) window.pid = number.front();
    window.isShown =
        attributes->map_state == XCB_MAP_STATE_VIEWABLE && !contains(words(state.get()), hidden);
    window.isListed = !contains(words(state.get()), unlisted);
    windows.push_back(std::move(window));
  }
  askForProcesses(windows);
  return windows;
}

// Old programs do not say which process they are, and sandboxed ones know only a number of their
// own. The server knows whose connection it is.
void X11Windows::askForProcesses(std::vector<X11Window>& windows) {
  const auto* extension = xcb_get_extension_data(x11_.get(), &xcb_res_id);
  if (!extension || !extension->present || windows.empty()) return;
  std::vector<xcb_res_client_id_spec_t> specs;
  for (const X11Window& window : windows)
    specs.push_back({window.id, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID});
  const auto cookie =
      xcb_res_query_client_ids(x11_.get(), static_cast<std::uint32_t>(specs.size()), specs.data());
  const X11Reply<xcb_res_query_client_ids_reply_t> reply(
      xcb_res_query_client_ids_reply(x11_.get(), cookie, nullptr));
  if (!reply) return;
  const std::uint32_t ofClient = ~xcb_get_setup(x11_.get())->resource_id_mask;
  std::unordered_map<std::uint32_t, std::int64_t> processes;
  for (auto id = xcb_res_query_client_ids_ids_iterator(reply.get()); id.rem;
       xcb_res_client_id_value_next(&id)) {
    if (xcb_res_client_id_value_value_length(id.data) > 0)
      processes[id.data->spec.client & ofClient] = *xcb_res_client_id_value_value(id.data);
  }
  for (X11Window& window : windows) {
    if (const auto found = processes.find(window.id & ofClient); found != processes.end())
      window.pid = found->second;
  }
}

std::optional<Image> X11Windows::icon(xcb_window_t window) {
  const PropertyReply reply = answer(ask(window, "_NET_WM_ICON", mostIconWords));
  auto rest = words(reply.get());
  std::span<const std::uint32_t> best;
  std::uint32_t bestWidth = 0, bestHeight = 0;
  while (rest.size() > 2) {
    const std::uint32_t width = rest[0], height = rest[1];
    if (width == 0 || height == 0 || width > largestIconSide || height > largestIconSide ||
        width * height > rest.size() - 2)
      break;
    // The smallest that is large enough, else the largest.
    const bool better =
        bestWidth < bestIconSide ? width > bestWidth : width >= bestIconSide && width < bestWidth;
    if (better) {
      best = rest.subspan(2, width * height);
      bestWidth = width;
      bestHeight = height;
    }
    rest = rest.subspan(2 + width * height);
  }
  return best.empty() ? std::nullopt : image(best, bestWidth, bestHeight);
}

xcb_window_t X11Windows::framed(xcb_window_t window) {
  for (;;) {
    const X11Reply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(x11_.get(), xcb_query_tree(x11_.get(), window), nullptr));
    if (!tree || tree->parent == tree->root || tree->parent == XCB_WINDOW_NONE) return window;
    window = tree->parent;
  }
}

X11Margins X11Windows::margins(xcb_window_t window) {
  const PropertyReply reply = answer(ask(window, "_GTK_FRAME_EXTENTS", 4));
  const auto sides = words(reply.get());
  constexpr std::uint32_t most = 1024;
  if (sides.size() < 4 ||
      std::any_of(sides.begin(), sides.end(), [](std::uint32_t side) { return side > most; }))
    return {};
  return {static_cast<int>(sides[0]), static_cast<int>(sides[1]), static_cast<int>(sides[2]),
          static_cast<int>(sides[3])};
}

void X11Windows::send(xcb_window_t window, std::string_view message, std::uint32_t first,
                      std::uint32_t second, std::uint32_t third) {
  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = window;
  event.type = x11_.atom(message);
  event.data.data32[0] = first;
  event.data.data32[1] = second;
  event.data.data32[2] = third;
  xcb_send_event(x11_.get(), 0, root(),
                 XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                 reinterpret_cast<const char*>(&event));
  xcb_flush(x11_.get());
}

void X11Windows::activate(xcb_window_t window) {
  send(window, "_NET_ACTIVE_WINDOW", fromPager, XCB_CURRENT_TIME, XCB_WINDOW_NONE);
}

void X11Windows::raise(xcb_window_t window) {
  send(window, "_NET_RESTACK_WINDOW", fromPager, XCB_WINDOW_NONE, XCB_STACK_MODE_ABOVE);
}

}  // namespace marbelot
