// Owns the clipboard and never answers anybody who asks for its content, as a program does that
// hangs. Prints "ready" when it owns it; ends when it is killed or another program copies.
#include "tests/desktop/x_client.h"

int main() {
  using namespace marbelot::desktop_test;
  const XClient client;
  const xcb_atom_t clipboard = client.atom("CLIPBOARD");
  xcb_set_selection_owner(client.connection(), client.window(), clipboard, XCB_CURRENT_TIME);
  client.atom("CLIPBOARD");  // a reply proves that the server has seen the request before it
  std::puts("ready");
  std::fflush(stdout);
  while (const auto event = client.nextEvent())
    if (eventType(*event) == XCB_SELECTION_CLEAR) break;
}
