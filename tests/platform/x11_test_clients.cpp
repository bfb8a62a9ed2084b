#include "tests/platform/x11_test_clients.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstring>
#include <initializer_list>
#include <utility>
#include <vector>

#include "platform/linux/x11_connection.h"

namespace marbelot {

PrivateServer::PrivateServer(const std::string& screen) {
  const std::string number = process_.start(
      {"Xvfb", "-displayfd", "1", "-screen", "0", screen, "-nolisten", "tcp", "-noreset"});
  if (!number.empty()) display_ = ":" + number;
}

namespace {

// Flushes first: writing may read, and what is in the library's queue no longer wakes poll().
X11Reply<xcb_generic_event_t> nextEvent(X11Connection& x) {
  xcb_flush(x.get());
  return X11Reply<xcb_generic_event_t>(xcb_poll_for_event(x.get()));
}

void waitFor(X11Connection& x, std::initializer_list<int> others, int milliseconds) {
  std::vector<pollfd> watched{{x.descriptor(), POLLIN, 0}};
  for (const int other : others) watched.push_back({other, POLLIN, 0});
  ::poll(watched.data(), watched.size(), milliseconds);
}

void putBytes(X11Connection& x, xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
              const std::string& bytes) {
  xcb_change_property(x.get(), XCB_PROP_MODE_REPLACE, window, property, type, 8,
                      static_cast<std::uint32_t>(bytes.size()), bytes.data());
}

void putWords(X11Connection& x, xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
              const std::vector<std::uint32_t>& words) {
  xcb_change_property(x.get(), XCB_PROP_MODE_REPLACE, window, property, type, 32,
                      static_cast<std::uint32_t>(words.size()), words.data());
}

void notify(X11Connection& x, const xcb_selection_request_event_t& request, xcb_atom_t property) {
  xcb_selection_notify_event_t answer{};
  answer.response_type = XCB_SELECTION_NOTIFY;
  answer.time = request.time;
  answer.requestor = request.requestor;
  answer.selection = request.selection;
  answer.target = request.target;
  answer.property = property;
  std::array<char, 32> wire{};
  std::memcpy(wire.data(), &answer, sizeof answer);
  xcb_send_event(x.get(), 0, request.requestor, 0, wire.data());
}

// What the owner's thread does.
class Service {
 public:
  Service(TestOwner::State& owner, X11Connection& x)
      : owner_(owner), x_(x), manners_(owner.manners) {}

  void handle(X11Reply<xcb_generic_event_t> event) {
    if (eventType(*event) == XCB_SELECTION_CLEAR) {
      owner_.replaced = true;
    } else if (eventType(*event) == XCB_SELECTION_REQUEST) {
      const auto& request = reinterpret_cast<const xcb_selection_request_event_t&>(*event);
      const std::array<xcb_atom_t, 1> asked{request.target};
      const auto names = x_.names(asked);
      const std::string name = names.empty() ? "" : names.front();
      if (manners_.ignored.contains(name)) {
        ignored_.push_back(std::move(event));
      } else {
        answer(request, name);
      }
      xcb_flush(x_.get());
      if (name != "TARGETS") owner_.asked = true;
    } else if (eventType(*event) == XCB_PROPERTY_NOTIFY) {
      const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(*event);
      const auto transfer = sending_.find({change.window, change.atom});
      if (change.state != XCB_PROPERTY_DELETE || transfer == sending_.end()) return;
      if (transfer->second.sent >= manners_.stallAfter) {
        stalled_.insert(transfer->first);
      } else {
        sendPart(transfer->first);
      }
    }
  }

  void resume() {
    manners_ = {.refused = manners_.refused, .partSize = manners_.partSize};
    for (auto& request : std::exchange(ignored_, {})) handle(std::move(request));
    for (const Place& place : std::exchange(stalled_, {})) sendPart(place);
  }

 private:
  using Place = std::pair<xcb_window_t, xcb_atom_t>;
  struct Sending {
    xcb_atom_t type;
    const std::string* bytes;
    std::size_t sent;
  };

  void answer(const xcb_selection_request_event_t& request, const std::string& name) {
    auto found = owner_.data.find(name);
    if (manners_.anything && found == owner_.data.end()) found = owner_.data.begin();
    if (name == "TARGETS") {
      std::vector<std::uint32_t> atoms{x_.atom("TARGETS"), x_.atom("MULTIPLE")};
      for (const auto& [type, bytes] : owner_.data) atoms.push_back(x_.atom(type));
      putWords(x_, request.requestor, request.property, XCB_ATOM_ATOM, atoms);
      notify(x_, request, request.property);
    } else if (found == owner_.data.end() || manners_.refused.contains(name)) {
      notify(x_, request, XCB_ATOM_NONE);
    } else if (found->second.size() <= manners_.partSize) {
      putBytes(x_, request.requestor, request.property, request.target, found->second);
      notify(x_, request, request.property);
    } else {
      const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
      xcb_change_window_attributes(x_.get(), request.requestor, XCB_CW_EVENT_MASK, &events);
      putWords(x_, request.requestor, request.property, x_.atom("INCR"),
               {static_cast<std::uint32_t>(found->second.size())});
      sending_[{request.requestor, request.property}] = {request.target, &found->second, 0};
      notify(x_, request, request.property);
    }
  }

  void sendPart(const Place& place) {
    Sending& state = sending_[place];
    if (manners_.slow) std::this_thread::sleep_for(std::chrono::milliseconds(2));
    const std::string part = state.bytes->substr(state.sent, manners_.slow ? 1 : manners_.partSize);
    putBytes(x_, place.first, place.second, state.type, part);
    state.sent += part.size();
    owner_.given += part.size();
    if (part.empty()) sending_.erase(Place(place));
  }

  TestOwner::State& owner_;
  X11Connection& x_;
  TestOwner::Manners manners_;
  std::map<Place, Sending> sending_;
  std::set<Place> stalled_;
  std::vector<X11Reply<xcb_generic_event_t>> ignored_;
};

void own(const std::string& display, TestOwner::State& owner) {
  X11Connection x(display);
  const xcb_window_t window = x.createWindow();
  xcb_set_selection_owner(x.get(), window, x.atom("CLIPBOARD"), XCB_CURRENT_TIME);
  x.atom("UTF8_STRING");
  xcb_flush(x.get());
  owner.tellReady();

  Service service(owner, x);
  while (x.alive() && !owner.isQuit()) {
    if (owner.takeResume()) service.resume();
    auto event = nextEvent(x);
    if (event) {
      service.handle(std::move(event));
    } else {
      waitFor(x, {owner.quit, owner.resume}, -1);
    }
  }
}

}  // namespace

X11Owner::X11Owner(const std::string& display, Data data, Manners manners)
    : TestOwner(std::move(data), std::move(manners),
                [display](State& owner) { own(display, owner); }) {}

TestManager::TestManager(std::string display, bool deaf)
    : display_(std::move(display)), quit_(::eventfd(0, EFD_CLOEXEC)) {
  thread_ = std::thread([this, deaf] { run(deaf); });
  ready_.wait(false);
}

TestManager::~TestManager() {
  ::eventfd_write(quit_, 1);
  thread_.join();
  ::close(quit_);
}

std::map<std::string, std::string> TestManager::kept() {
  const std::lock_guard lock(mutex_);
  return kept_;
}

void TestManager::run(bool deaf) {
  X11Connection x(display_);
  const xcb_window_t window = x.createWindow();
  xcb_set_selection_owner(x.get(), window, x.atom("CLIPBOARD_MANAGER"), XCB_CURRENT_TIME);
  x.atom("ATOM");
  xcb_flush(x.get());
  ready_ = true;
  ready_.notify_one();
  std::array<pollfd, 1> quit{{{quit_, POLLIN, 0}}};
  while (x.alive() && ::poll(quit.data(), 1, 0) == 0) {
    const auto event = nextEvent(x);
    if (!event) {
      waitFor(x, {quit_}, -1);
      continue;
    }
    if (eventType(*event) != XCB_SELECTION_REQUEST || deaf) continue;
    const auto& request = reinterpret_cast<const xcb_selection_request_event_t&>(*event);
    if (request.target != x.atom("SAVE_TARGETS")) {
      notify(x, request, XCB_ATOM_NONE);
      continue;
    }
    const X11Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        x.get(),
        xcb_get_property(x.get(), 0, request.requestor, request.property, XCB_ATOM_ATOM, 0, 99),
        nullptr));
    const auto* atoms = static_cast<const xcb_atom_t*>(xcb_get_property_value(reply.get()));
    for (const std::string& type : x.names({atoms, reply->value_len})) {
      auto bytes = paste(display_, type);
      const std::lock_guard lock(mutex_);
      kept_[type] = bytes.value_or("(refused)");
    }
    notify(x, request, request.property);
  }
}

std::optional<std::string> paste(const std::string& display, const std::string& type, bool vanish) {
  X11Connection x(display);
  const xcb_window_t window = x.createWindow();
  const xcb_atom_t property = x.atom("PASTED");
  xcb_convert_selection(x.get(), window, x.atom("CLIPBOARD"), x.atom(type), property,
                        XCB_CURRENT_TIME);
  std::string pasted;
  bool inParts = false;
  const auto deadline = X11Clock::now() + std::chrono::seconds(20);
  while (X11Clock::now() < deadline) {
    const auto event = nextEvent(x);
    if (!event) {
      waitFor(x, {}, 1000);
      continue;
    }
    if (eventType(*event) == XCB_SELECTION_NOTIFY) {
      const auto& answer = reinterpret_cast<const xcb_selection_notify_event_t&>(*event);
      if (answer.property == XCB_ATOM_NONE) return std::nullopt;
    } else if (eventType(*event) == XCB_PROPERTY_NOTIFY) {
      const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(*event);
      if (!inParts || change.state != XCB_PROPERTY_NEW_VALUE) continue;
    } else {
      continue;
    }
    const X11Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        x.get(), xcb_get_property(x.get(), 1, window, property, 0, 0, 0x1FFFFFFF), nullptr));
    if (!reply) return std::nullopt;
    if (reply->type == x.atom("INCR")) {
      inParts = true;
      continue;
    }
    const int length = xcb_get_property_value_length(reply.get());
    pasted.append(static_cast<const char*>(xcb_get_property_value(reply.get())),
                  static_cast<std::size_t>(length));
    if (!inParts || length == 0 || vanish) return pasted;
  }
  return std::nullopt;
}

}  // namespace marbelot
