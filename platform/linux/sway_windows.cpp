#include "platform/linux/sway_windows.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "platform/descriptor.h"
#include "platform/json.h"

namespace marbelot {
namespace {

enum Message : std::uint32_t { runCommand = 0, getTree = 4 };

constexpr std::string_view magic = "i3-ipc";
constexpr timeval patience{0, 200000};
constexpr std::uint32_t largestAnswer = 16U << 20;  // bytes

Descriptor connected() {
  const char* path = std::getenv("SWAYSOCK");
  sockaddr_un address{};
  if (!path || std::strlen(path) >= sizeof address.sun_path) return {};
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path, path);
  Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  for (const int direction : {SO_RCVTIMEO, SO_SNDTIMEO})
    setsockopt(socket.get(), SOL_SOCKET, direction, &patience, sizeof patience);
  if (connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    return {};
  return socket;
}

// The answer, in JSON; empty when there is none.
std::string ask(Message type, std::string_view payload) {
  const Descriptor socket = connected();
  // The magic word, the payload's length and the type, in this machine's order of bytes.
  std::array<std::uint32_t, 2> numbers{static_cast<std::uint32_t>(payload.size()), type};
  std::string message(magic);
  message.append(reinterpret_cast<const char*>(numbers.data()), sizeof numbers).append(payload);
  std::string header(magic.size() + sizeof numbers, '\0');
  if (!socket || !writeFully(socket.get(), message) ||
      !readFully(socket.get(), header.data(), header.size()) || !header.starts_with(magic))
    return {};
  std::memcpy(numbers.data(), &header[magic.size()], sizeof numbers);
  if (numbers[0] > largestAnswer) return {};
  std::string answer(numbers[0], '\0');
  if (!readFully(socket.get(), answer.data(), numbers[0])) return {};
  return answer;
}

void appendWindows(const Value& node, std::vector<SwayWindow>& windows) {
  std::vector<const Value*> children;
  for (const char* kind : {"nodes", "floating_nodes"})
    for (const Value& child : listIn(node, kind)) children.push_back(&child);
  // "focus" has the children's numbers, the one that had the focus last first.
  for (const Value& next : listIn(node, "focus")) {
    for (const Value* child : children)
      if (integerIn(*child, "id") == next.asInteger()) appendWindows(*child, windows);
  }
  if (!children.empty() || !field(node, "pid")) return;
  SwayWindow& window = windows.emplace_back();
  window.id = integerIn(node, "id");
  window.pid = integerIn(node, "pid");
  // Those of X11 have a class instead.
  SharedText application = textIn(node, "app_id");
  const Value* const properties = field(node, "window_properties");
  if ((!application || application->empty()) && properties)
    application = textIn(*properties, "class");
  if (application) window.application = *application;
  window.isShown = isSet(node, "visible");
  const Value* const rect = field(node, "rect");
  const auto number = [&](const char* name) {
    return std::to_string(rect ? integerIn(*rect, name) : 0);
  };
  window.place = number("x") + "," + number("y") + " " + number("width") + "x" + number("height");
}

}  // namespace

bool isSway() { return std::getenv("SWAYSOCK") != nullptr; }

std::vector<SwayWindow> swayWindows() {
  std::vector<SwayWindow> windows;
  if (const auto tree = valueFromJson(ask(getTree, ""))) appendWindows(*tree, windows);
  return windows;
}

void focusSwayWindows(std::int64_t pid) {
  ask(runCommand, "[pid=" + std::to_string(pid) + "] focus");
}

}  // namespace marbelot
