#include "platform/linux/x11_connection.h"

#include <xcb/xfixes.h>

#include <mutex>

namespace marbelot {

X11Connection::X11Connection(const std::string& display) {
  // libXau keeps the name of the authority file in a static buffer.
  static std::mutex connecting;
  const std::lock_guard lock(connecting);
  xcb_ = xcb_connect(display.empty() ? nullptr : display.c_str(), &screen_);
}

X11Connection::~X11Connection() { xcb_disconnect(xcb_); }

xcb_atom_t X11Connection::atom(std::string_view name) {
  const auto known = atoms_.find(std::string(name));
  if (known != atoms_.end()) return known->second;
  const auto cookie =
      xcb_intern_atom(xcb_, 0, static_cast<std::uint16_t>(name.size()), name.data());
  const X11Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(xcb_, cookie, nullptr));
  const xcb_atom_t atom = reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
  if (atom != XCB_ATOM_NONE) atoms_.emplace(name, atom);
  return atom;
}

std::vector<std::string> X11Connection::names(std::span<const xcb_atom_t> atoms) {
  std::vector<std::pair<xcb_atom_t, xcb_get_atom_name_cookie_t>> asked;
  for (const xcb_atom_t atom : atoms)
    if (!names_.contains(atom)) asked.emplace_back(atom, xcb_get_atom_name(xcb_, atom));
  for (const auto& [atom, cookie] : asked) {
    const X11Reply<xcb_get_atom_name_reply_t> reply(xcb_get_atom_name_reply(xcb_, cookie, nullptr));
    if (!reply) continue;
    names_.emplace(atom, std::string(xcb_get_atom_name_name(reply.get()),
                                     std::size_t(xcb_get_atom_name_name_length(reply.get()))));
  }
  std::vector<std::string> result;
  for (const xcb_atom_t atom : atoms)
    if (const auto name = names_.find(atom); name != names_.end()) result.push_back(name->second);
  return result;
}

xcb_window_t X11Connection::createWindow() {
  auto screens = xcb_setup_roots_iterator(xcb_get_setup(xcb_));
  for (int i = 0; i < screen_ && screens.rem > 1; ++i) xcb_screen_next(&screens);
  const xcb_window_t window = xcb_generate_id(xcb_);
  const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_create_window(xcb_, 0, window, screens.data->root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                    XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
  return window;
}

bool X11Connection::watchClipboard() {
  const auto* extension = xcb_get_extension_data(xcb_, &xcb_xfixes_id);
  if (!extension || !extension->present) return false;
  const auto cookie = xcb_xfixes_query_version(xcb_, 1, 0);
  const X11Reply<xcb_xfixes_query_version_reply_t> version(
      xcb_xfixes_query_version_reply(xcb_, cookie, nullptr));
  if (!version) return false;
  ownerEvent_ = extension->first_event + XCB_XFIXES_SELECTION_NOTIFY;
  xcb_xfixes_select_selection_input(xcb_, createWindow(), atom("CLIPBOARD"),
                                    XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                        XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                        XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
  return true;
}

}  // namespace marbelot
