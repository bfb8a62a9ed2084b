// Puts together what another program has on the clipboard, without ever waiting for one. How an
// owner is asked is the protocol's matter, and thus that of the classes derived from this.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/background_worker.h"
#include "platform/pasteboard.h"

namespace marbelot {

using ClipboardClock = std::chrono::steady_clock;

// That somebody has taken the clipboard.
struct ClipboardAnnouncement {
  std::uint64_t ownWrites = 0;  // how many of our own writes it came after
  bool initial = false;         // found at the start: not a change
};

// Every announced owner is read; several are read at once when they follow each other closely, and
// told in their order. An owner that has been replaced is given up after a quarter of a second
// without progress; then what did arrive is told. Of the present one that is told after two
// seconds, and told again with the rest, should that still come before another owner does.
class ClipboardReader {
 public:
  using Deliver = std::function<void(PasteboardContents, const ClipboardAnnouncement&)>;

  virtual ~ClipboardReader();

  // Takes the images that files and documents have turned out to hold.
  void collect();
  // When expire() must be called; time_point::max() while nothing is being read.
  ClipboardClock::time_point deadline() const;
  void expire(ClipboardClock::time_point now);

 protected:
  // What the protocol needs for one answer, or to ask one owner.
  struct Channel {
    virtual ~Channel() = default;
  };

  // One thing that an owner is asked for.
  struct Conversion {
    enum class State { idle, asked, arriving, loading, done, failed };
    State state = State::idle;
    std::string type;  // that was asked for
    std::string bytes;
    std::unique_ptr<Channel> channel;
    std::uint64_t ticket = 0;  // while loading
    ClipboardClock::time_point deadline;
    bool late = false;  // open for so long without progress that nobody waits for it any more

    bool open() const {
      return state == State::asked || state == State::arriving || state == State::loading;
    }
    bool free() const { return state == State::idle || state == State::failed; }
  };

  // What one owner gives.
  struct Read {
    ClipboardAnnouncement announcement;
    std::unique_ptr<Channel> owner;
    bool replaced = false;  // another owner has come: no more can be asked
    std::array<Conversion, 4> conversions;
    Conversion& targets = conversions[0];
    Conversion& text = conversions[1];
    Conversion& image = conversions[2];
    Conversion& hint = conversions[3];
    std::vector<std::string> listed;      // the types that the owner says it has
    std::deque<std::string> textTargets;  // still to be tried
    std::deque<std::string> imageTargets;
    PasteboardContents contents;
    std::optional<PasteboardContents> told;

    bool finished() const;
    bool stalled() const;
    bool offers(const Conversion& conversion) const;
    bool due() const;
    bool tellable() const;
    PasteboardContents known() const;
    void revive();
  };

  // How much of one type is read, and of how many types a list, in bytes and entries.
  static constexpr std::size_t sizeLimit = std::size_t{1} << 30;
  static constexpr std::size_t typeLimit = 512;

  // `wake` is called on another thread when collect() has to be called on this one.
  // `oneAtATime`: owners may drop a request that comes while they answer another.
  ClipboardReader(Deliver deliver, std::function<void()> wake, bool oneAtATime);

  // The protocol's part: to ask for a type, for which `conversion` is all set, and to throw away
  // what still comes of one that is open.
  virtual void request(Read& read, Conversion& conversion) = 0;
  virtual void discard(Conversion& conversion) = 0;

  // A new owner; what it has is then told by asking it, or by listTypes().
  Read& add(const ClipboardAnnouncement& announcement);
  // The owners before are no longer to be asked; what they still answer counts, but where it went
  // to another one.
  void replaceAll(const std::function<bool(const Conversion&)>& misdirected);
  void ask(Read& read, Conversion& conversion, const std::string& type);
  void listTypes(Read& read, std::vector<std::string> names);
  // Something of it has come: time starts anew.
  void progress(Read& read, Conversion& conversion);
  // All of it has come. `answered` is the type that the owner says it is.
  void finish(Read& read, Conversion& conversion, const std::string& answered);
  // The next best type where the one before was refused.
  void advance(Read& read);
  void abandon(Read& read, Conversion& conversion);
  void deliverFinished();

  std::deque<std::unique_ptr<Read>> reads_;  // oldest first

 private:
  void finishImage(Read& read, Conversion& conversion, std::string bytes);
  void tell(Read& read);

  const Deliver deliver_;
  const bool oneAtATime_;
  std::uint64_t lastTicket_ = 0;
  BackgroundWorker<std::optional<Image>> loader_;
};

}  // namespace marbelot
