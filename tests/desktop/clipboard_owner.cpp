// Owns the clipboard as other programs do, with several types at once or one text after another.
//
//   clipboard_owner TYPE=FILE...              offers the files' bytes; TYPE= is offered but refused
//   clipboard_owner --series PREFIX N MS      copies PREFIX1 to PREFIXN, one each MS milliseconds;
//                                             of 0, as soon as the one before has been asked for
//   clipboard_owner --silent                  answers nobody, as a program that hangs
//
// Prints "ready" when it owns the clipboard, then the number of each text of a series as it is
// copied, and "asked" when the first contents have been asked for. Ends when another program
// copies, or a second after the last text of a series. Contents must fit into one request to the X
// server.
#include <poll.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "tests/desktop/x_client.h"

namespace marbelot::desktop_test {
namespace {

using Clock = std::chrono::steady_clock;

class Owner {
 public:
  void offer(const std::string& type, std::string bytes, bool refused = false) {
    offered_[client_.atom(type.c_str())] = {std::move(bytes), refused};
  }

  void claim() {
    xcb_set_selection_owner(client_.connection(), client_.window(), clipboard_, XCB_CURRENT_TIME);
    // Our own earlier claim is not lost to somebody else by this one, so no event comes of it.
    xcb_flush(client_.connection());
  }

  // Answers requests until then, or until the contents have been asked for as well if that is all
  // that is wanted; false when somebody else has taken the clipboard.
  bool serveUntil(Clock::time_point end, bool onlyUntilAsked = false) {
    asked_ = false;
    for (;;) {
      // Writing may read, and what is in the library's queue no longer wakes poll().
      xcb_flush(client_.connection());
      bool any = false;
      while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(client_.connection())}) {
        any = true;
        if (eventType(*event) == XCB_SELECTION_CLEAR) return false;
        if (eventType(*event) == XCB_SELECTION_REQUEST)
          answer(*reinterpret_cast<const xcb_selection_request_event_t*>(event.get()));
      }
      if (any) continue;
      if (asked_ && onlyUntilAsked) return true;
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
      if (left <= 0 || xcb_connection_has_error(client_.connection())) return true;
      pollfd watched{xcb_get_file_descriptor(client_.connection()), POLLIN, 0};
      ::poll(&watched, 1, static_cast<int>(left));
    }
  }

  void tell(const std::string& line) {
    client_.atom("CLIPBOARD");  // a reply proves that the server has seen the request before it
    std::puts(line.c_str());
    std::fflush(stdout);
  }

 private:
  struct Content {
    std::string bytes;
    bool refused = false;
  };

  void answer(const xcb_selection_request_event_t& request) {
    if (offered_.empty()) return;
    xcb_selection_notify_event_t notify{};
    notify.response_type = XCB_SELECTION_NOTIFY;
    notify.time = request.time;
    notify.requestor = request.requestor;
    notify.selection = request.selection;
    notify.target = request.target;
    notify.property = request.property;
    const auto content = offered_.find(request.target);
    if (request.target == targets_) {
      std::vector<xcb_atom_t> atoms{targets_};
      for (const auto& [type, _] : offered_) atoms.push_back(type);
      put(request, XCB_ATOM_ATOM, 32, atoms.size(), atoms.data());
    } else if (content != offered_.end() && !content->second.refused) {
      put(request, request.target, 8, content->second.bytes.size(), content->second.bytes.data());
      asked_ = true;
    } else {
      notify.property = XCB_ATOM_NONE;
    }
    char wire[32] = {};  // the size of every event
    std::memcpy(wire, &notify, sizeof notify);
    xcb_send_event(client_.connection(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, wire);
  }

  void put(const xcb_selection_request_event_t& request, xcb_atom_t type, std::uint8_t bits,
           std::size_t count, const void* data) {
    xcb_change_property(client_.connection(), XCB_PROP_MODE_REPLACE, request.requestor,
                        request.property, type, bits, static_cast<std::uint32_t>(count), data);
  }

  XClient client_;
  xcb_atom_t clipboard_ = client_.atom("CLIPBOARD");
  xcb_atom_t targets_ = client_.atom("TARGETS");
  std::map<xcb_atom_t, Content> offered_;
  bool asked_ = false;  // and answered
};

constexpr auto forGood = std::chrono::hours(1);

void copySeries(const std::string& prefix, int count, std::chrono::milliseconds pace) {
  Owner owner;
  const auto began = Clock::now();
  for (int number = 1; number <= count; ++number) {
    owner.offer("UTF8_STRING", prefix + std::to_string(number));
    owner.claim();
    owner.tell(number == 1 ? "ready\n1" : std::to_string(number));
    const bool mine = pace.count() > 0 ? owner.serveUntil(began + number * pace)
                                       : owner.serveUntil(Clock::now() + forGood, true);
    if (!mine) return;
  }
  owner.serveUntil(Clock::now() + std::chrono::seconds(1));
}

void copyFiles(int count, char** arguments) {
  Owner owner;
  for (int i = 0; i < count; ++i) {
    const std::string argument = arguments[i];
    const std::size_t equals = argument.find('=');
    const std::string path = equals == argument.npos ? "" : argument.substr(equals + 1);
    std::ifstream file(path, std::ios::binary);
    owner.offer(argument.substr(0, equals), {std::istreambuf_iterator<char>(file), {}},
                path.empty());
  }
  owner.claim();
  owner.tell("ready");
  const auto end = Clock::now() + forGood;
  if (!owner.serveUntil(end, true)) return;
  owner.tell("asked");
  owner.serveUntil(end);
}

}  // namespace
}  // namespace marbelot::desktop_test

int main(int argc, char** argv) {
  using namespace marbelot::desktop_test;
  if (argc == 5 && std::string(argv[1]) == "--series") {
    copySeries(argv[2], std::atoi(argv[3]), std::chrono::milliseconds(std::atoi(argv[4])));
  } else {
    copyFiles(argc == 2 && std::string(argv[1]) == "--silent" ? 0 : argc - 1, argv + 1);
  }
}
