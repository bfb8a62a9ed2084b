#include "tests/platform/wayland_test_clients.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <utility>

#include "platform/linux/helper_program.h"
#include "platform/linux/wayland_data_control.h"

namespace marbelot {
namespace {

using Clock = std::chrono::steady_clock;
constexpr auto limit = std::chrono::seconds(20);

// Handles what comes until `done`; false when that takes too long, or the connection has ended.
bool serve(WaylandDataControl& control, const std::vector<int>& others,
           const std::function<bool()>& done) {
  const auto end = Clock::now() + limit;
  while (!done()) {
    if (others.empty() && Clock::now() > end) return false;
    control.prepare();
    std::vector<pollfd> watched{{control.descriptor(), control.events(), 0}};
    for (const int other : others) watched.push_back({other, POLLIN, 0});
    ::poll(watched.data(), watched.size(), 20);
    if (!control.dispatch(watched.front().revents)) return false;
  }
  return true;
}

}  // namespace

std::vector<std::string> waylandDesktops() {
  if (std::getenv("MARBELOT_TEST_DESKTOP")) return {"present"};
  return {"ext", "wlr"};
}

PrivateCompositor::PrivateCompositor(const std::string& desktop) {
  if (desktop == "present") return;
  display_ = home_ / "socket";
  std::array<int, 2> pipe{};
  if (::pipe2(pipe.data(), O_CLOEXEC) != 0) return;
  const std::string program = helperPath("fake_wayland_desktop");
  process_ = ::fork();
  if (process_ == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);  // also when the test is killed
    ::dup2(pipe[1], STDOUT_FILENO);
    ::execl(program.c_str(), program.c_str(), desktop.c_str(), display_.c_str(), nullptr);
    ::_exit(127);
  }
  ::close(pipe[1]);
  char said = 0;
  [[maybe_unused]] const ssize_t got = ::read(pipe[0], &said, 1);
  ::close(pipe[0]);
}

PrivateCompositor::~PrivateCompositor() { kill(); }

void PrivateCompositor::kill() {
  if (process_ <= 0) return;
  ::kill(process_, SIGTERM);
  ::waitpid(process_, nullptr, 0);
  process_ = -1;
}

WaylandTestOwner::WaylandTestOwner(std::string display, Data data, Manners manners)
    : data_(std::move(data)),
      manners_(std::move(manners)),
      resume_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      quit_(::eventfd(0, EFD_CLOEXEC)) {
  thread_ = std::thread([this, display = std::move(display)] { run(display); });
  ready_.wait(false);
}

WaylandTestOwner::~WaylandTestOwner() {
  ::eventfd_write(quit_, 1);
  thread_.join();
  ::close(quit_);
  ::close(resume_);
}

void WaylandTestOwner::resume() { ::eventfd_write(resume_, 1); }

bool WaylandTestOwner::await(const std::atomic<bool>& flag) {
  const auto end = Clock::now() + limit;
  while (!flag && Clock::now() < end) std::this_thread::sleep_for(std::chrono::microseconds(100));
  return flag;
}

void WaylandTestOwner::run(const std::string& display) {
  const auto control = WaylandDataControl::connect(display);
  struct Held {
    std::string rest;
    Descriptor to;
  };
  std::vector<Held> held;
  bool resumed = false;
  const auto put = [&](const Descriptor& to, const std::string& bytes) {
    if (writeFully(to.get(), bytes)) written_ += bytes.size();
  };
  std::vector<std::string> types;
  for (const auto& [type, bytes] : data_) types.push_back(type);
  control->watch({[&](const std::unique_ptr<WaylandOffer>& offer, bool) {
                    if (!offer || offer->types() != types) return;
                    ready_ = true;
                    ready_.notify_one();
                  },
                  [&](const std::string& type, Descriptor to) {
                    const std::string& bytes = data_.at(type);
                    const std::size_t now = resumed ? bytes.size()
                                            : manners_.ignored.contains(type)
                                                ? 0
                                                : std::min(bytes.size(), manners_.stallAfter);
                    put(to, bytes.substr(0, now));
                    if (now < bytes.size()) held.push_back({bytes.substr(now), std::move(to)});
                    asked_ = true;
                  },
                  [&] { replaced_ = true; }});
  control->offer(types);
  pollfd quit{quit_, POLLIN, 0};
  serve(*control, {quit_, resume_}, [&] {
    eventfd_t ignored = 0;
    if (::eventfd_read(resume_, &ignored) == 0) {
      resumed = true;
      for (const Held& each : held) put(each.to, each.rest);
      held.clear();
    }
    return ::poll(&quit, 1, 0) > 0;
  });
}

std::optional<std::string> pasteFromWayland(const std::string& display, const std::string& type) {
  const auto control = WaylandDataControl::connect(display);
  if (!control) return std::nullopt;
  std::unique_ptr<WaylandOffer> present;
  control->watch({[&](std::unique_ptr<WaylandOffer> offer, bool) { present = std::move(offer); },
                  [](const std::string&, const Descriptor&) {}, [] {}});
  if (!serve(*control, {}, [&] { return control->presentIsKnown(); })) return std::nullopt;
  const auto offered = [&] {
    const auto& types = present->types();
    return std::find(types.begin(), types.end(), type) != types.end();
  };
  if (!present || !offered()) return std::nullopt;
  const Descriptor from = present->receive(type);
  control->flush();
  std::string bytes;
  std::vector<char> part(1 << 20);
  const auto end = Clock::now() + limit;
  while (Clock::now() < end) {
    pollfd readable{from.get(), POLLIN, 0};
    ::poll(&readable, 1, 100);
    const ssize_t got = ::read(from.get(), part.data(), part.size());
    if (got == 0) return bytes;
    if (got > 0) bytes.append(part.data(), static_cast<std::size_t>(got));
  }
  return std::nullopt;
}

}  // namespace marbelot
