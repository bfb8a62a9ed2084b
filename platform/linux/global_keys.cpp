#include "platform/linux/global_keys.h"

#include <xcb/xinput.h>

namespace marbelot {
namespace {

// Of X11/keysymdef.h.
enum KeySymbol : xcb_keysym_t {
  symbolTab = 0xff09,
  symbolReturn = 0xff0d,
  symbolEscape = 0xff1b,
  symbolLeft = 0xff51,
  symbolUp = 0xff52,
  symbolRight = 0xff53,
  symbolDown = 0xff54,
  symbolEnter = 0xff8d,
  symbolPadLeft = 0xff96,
  symbolPadUp = 0xff97,
  symbolPadRight = 0xff98,
  symbolPadDown = 0xff99,
  symbolSpace = 0x20,
};

// Shift and its like, which only change what others mean.
bool isModifier(xcb_keysym_t symbol) {
  return (symbol >= 0xffe1 && symbol <= 0xffee) || (symbol & 0xfff0) == 0xfe00 ||
         symbol == 0xff7e || symbol == 0xff7f;
}

KeyCode keyCode(xcb_keysym_t symbol) {
  switch (symbol) {
    case symbolReturn:
    case symbolEnter:
      return KeyCode::returnKey;
    case symbolTab:
      return KeyCode::tab;
    case symbolSpace:
      return KeyCode::space;
    case symbolEscape:
      return KeyCode::escape;
    case symbolLeft:
    case symbolPadLeft:
      return KeyCode::leftArrow;
    case symbolRight:
    case symbolPadRight:
      return KeyCode::rightArrow;
    case symbolUp:
    case symbolPadUp:
      return KeyCode::upArrow;
    case symbolDown:
    case symbolPadDown:
      return KeyCode::downArrow;
    default:
      return KeyCode::other;
  }
}

}  // namespace

GlobalKeys::GlobalKeys(std::function<void(const KeyEvent&)> pressed)
    : pressed_(std::move(pressed)) {
  if (!connection_.alive() || !listen()) return;
  readable_.emplace(connection_.descriptor(), QSocketNotifier::Read);
  QObject::connect(&*readable_, &QSocketNotifier::activated, &*readable_, [this] { read(); });
  read();
}

bool GlobalKeys::listen() {
  xcb_connection_t* const xcb = connection_.get();
  const auto* const extension = xcb_get_extension_data(xcb, &xcb_input_id);
  if (!extension || !extension->present) return false;
  opcode_ = extension->major_opcode;
  const X11Reply<xcb_input_xi_query_version_reply_t> version(
      xcb_input_xi_query_version_reply(xcb, xcb_input_xi_query_version(xcb, 2, 2), nullptr));
  if (!version || version->major_version < 2) return false;
  struct {
    xcb_input_event_mask_t head;
    std::uint32_t mask;
  } wanted{{XCB_INPUT_DEVICE_ALL_MASTER, 1}, XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS};
  auto screens = xcb_setup_roots_iterator(xcb_get_setup(xcb));
  xcb_input_xi_select_events(xcb, screens.data->root, 1, &wanted.head);
  xcb_flush(xcb);
  return true;
}

void GlobalKeys::read() {
  while (const X11Reply<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
    if (eventType(*event) != XCB_GE_GENERIC) continue;
    const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(*event);
    if (generic.extension != opcode_ || generic.event_type != XCB_INPUT_RAW_KEY_PRESS) continue;
    const auto& key = reinterpret_cast<const xcb_input_raw_key_press_event_t&>(*event);
    const auto pressed = eventOf(static_cast<std::uint8_t>(key.detail),
                                 key.flags & XCB_INPUT_KEY_EVENT_FLAGS_KEY_REPEAT);
    if (pressed) pressed_(*pressed);
  }
  if (!connection_.alive()) readable_->setEnabled(false);
}

std::optional<KeyEvent> GlobalKeys::eventOf(std::uint8_t keycode, bool isRepeat) {
  xcb_connection_t* const xcb = connection_.get();
  const auto mappingCookie = xcb_get_keyboard_mapping(xcb, keycode, 1);
  const auto pointerCookie =
      xcb_query_pointer(xcb, xcb_setup_roots_iterator(xcb_get_setup(xcb)).data->root);
  const X11Reply<xcb_get_keyboard_mapping_reply_t> mapping(
      xcb_get_keyboard_mapping_reply(xcb, mappingCookie, nullptr));
  const X11Reply<xcb_query_pointer_reply_t> pointer(
      xcb_query_pointer_reply(xcb, pointerCookie, nullptr));
  KeyEvent event;
  event.isRepeat = isRepeat;
  if (mapping && xcb_get_keyboard_mapping_keysyms_length(mapping.get()) > 0) {
    const xcb_keysym_t symbol = *xcb_get_keyboard_mapping_keysyms(mapping.get());
    if (isModifier(symbol)) return std::nullopt;
    event.code = keyCode(symbol);
  }
  const unsigned state = pointer ? pointer->mask : 0;
  event.command = state & XCB_KEY_BUT_MASK_CONTROL;
  event.shift = state & XCB_KEY_BUT_MASK_SHIFT;
  event.option = state & XCB_KEY_BUT_MASK_MOD_1;
  event.control = state & XCB_KEY_BUT_MASK_MOD_4;
  return event;
}

}  // namespace marbelot
