// A desktop's clipboard on a thread of its own, without a toolkit, so that neither a program that
// does not answer nor a busy main thread holds up the other side.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "platform/descriptor.h"
#include "platform/linux/clipboard_offer.h"
#include "platform/linux/clipboard_reader.h"

namespace marbelot {

class ClipboardThread;

// The connection to whatever has the clipboard: an X server, or a Wayland compositor. Belongs to
// the clipboard's thread, but for its making and for interrupt().
class ClipboardConnection {
 public:
  virtual ~ClipboardConnection() = default;
  // Returns when the connection has ended, or when the thread has to, after what takes a moment at
  // the end.
  virtual void serve(ClipboardThread& thread) = 0;
  // Any thread: even what waits for an answer comes back at once.
  virtual void interrupt() = 0;
};

// What another program has copied.
struct ClipboardNews {
  PasteboardContents contents;
  ClipboardAnnouncement announcement;
};

// The time-out for poll() that ends at `deadline`; none for time_point::max().
int pollTimeout(ClipboardClock::time_point deadline);

// More than anybody copies while the main thread is busy; beyond, the oldest are forgotten.
inline constexpr std::size_t rememberedChanges = 1024;

// The thread, and the only two things that cross it: news to the main thread, and the last own
// write to the clipboard.
class ClipboardThread {
 public:
  struct Commands {
    bool quit = false;
    // With its number. May come with the end: a write that was still under way.
    std::optional<std::pair<ClipboardOffer, std::uint64_t>> offer;
  };

  // `wakeMain` is called on the thread when takeNews() has something.
  ClipboardThread(std::unique_ptr<ClipboardConnection> connection, std::function<void()> wakeMain);
  // Waits for the connection to bring to an end what it serves: up to five seconds.
  ~ClipboardThread();
  ClipboardThread(const ClipboardThread&) = delete;
  ClipboardThread& operator=(const ClipboardThread&) = delete;

  // For the main thread. write() returns when the clipboard is ours, or a moment later when the
  // server is busy and it will be; false when the connection has ended.
  bool write(ClipboardOffer offer, std::uint64_t number);
  std::vector<ClipboardNews> takeNews();

  // For the connection. The descriptor is readable when commands() has to be called.
  int wakeDescriptor() const { return wake_.get(); }
  void wake();  // any thread
  Commands commands();
  // Whether the thread has to end and has nothing to write before. The descriptor is readable again
  // when something comes.
  bool isEnding();
  void claimed(std::uint64_t number);  // the last write that is in effect
  void tell(PasteboardContents contents, const ClipboardAnnouncement& announcement);

 private:
  void run();

  const std::unique_ptr<ClipboardConnection> connection_;
  const std::function<void()> wakeMain_;
  const Descriptor wake_;
  std::mutex mutex_;
  bool quit_ = false;
  bool ended_ = false;
  std::uint64_t claimed_ = 0;
  std::condition_variable claim_;
  std::optional<std::pair<ClipboardOffer, std::uint64_t>> offer_;  // only the last one matters
  std::vector<ClipboardNews> news_;
  std::thread thread_;
};

}  // namespace marbelot
