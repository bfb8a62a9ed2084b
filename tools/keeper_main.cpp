// marbelot-keeper: keeps on a Wayland desktop's clipboard what Marbelot left there at its end,
// until something else is copied. Started by it as  marbelot-keeper MARK DISPLAY  with a memory
// file as its standard input; closes standard output once the clipboard is its own.
#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/clipboard_keeper.h"
#include "platform/linux/clipboard_thread.h"
#include "platform/linux/clipboard_types.h"
#include "platform/linux/wayland_data_control.h"
#include "platform/linux/wayland_selection_owner.h"

namespace marbelot {
namespace {

class Keeper {
 public:
  Keeper(WaylandDataControl& control, std::string mark)
      : control_(control), mark_(std::move(mark)) {
    control_.watch(
        {[this](const std::unique_ptr<WaylandOffer>& offer, bool) { announced(offer); },
         [this](const std::string& type, Descriptor to) { owner_.answer(type, std::move(to)); },
         [this] { replaced_ = true; }});
  }

  void keep(ClipboardOffer offer) {
    // What was copied by somebody else in the meantime stays.
    while (!control_.presentIsKnown() && step()) {
    }
    if (!isTheirs_) return;
    owner_.claim(std::move(offer), 1);
    while ((!replaced_ || owner_.isServing()) && step()) {
    }
  }

 private:
  void announced(const std::unique_ptr<WaylandOffer>& offer) {
    isTheirs_ = offer && contains(offer->types(), mark_);
    if (offer && owner_.ownerChanged(offer->types()) && !std::exchange(isOurs_, true))
      ::close(STDOUT_FILENO);
  }

  // False when the connection has ended.
  bool step() {
    control_.prepare();
    std::vector<pollfd> watched{{control_.descriptor(), control_.events(), 0},
                                {wake_.get(), POLLIN, 0}};
    owner_.watch(watched);
    ::poll(watched.data(), watched.size(), pollTimeout(owner_.deadline()));
    if (!control_.dispatch(watched.front().revents)) return false;
    eventfd_t ignored = 0;
    ::eventfd_read(wake_.get(), &ignored);
    owner_.collect();
    owner_.send();
    owner_.expire(ClipboardClock::now());
    return true;
  }

  WaylandDataControl& control_;
  const std::string mark_;
  const Descriptor wake_{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
  WaylandSelectionOwner owner_{control_, [this] { ::eventfd_write(wake_.get(), 1); }};
  bool isTheirs_ = false;
  bool isOurs_ = false;
  bool replaced_ = false;
};

}  // namespace
}  // namespace marbelot

int main(int argc, char** argv) {
  using namespace marbelot;
  if (argc != 3) return 2;
  ::signal(SIGPIPE, SIG_IGN);
  std::optional<ClipboardOffer> offer = keptOffer(STDIN_FILENO);
  ::close(STDIN_FILENO);
  const auto control = WaylandDataControl::connect(argv[2]);
  if (!offer || !control) return 1;
  if (::chdir("/") != 0) return 1;
  Keeper(*control, argv[1]).keep(*std::move(offer));
}
