// The clipboard of a desktop, X11's or Wayland's, as the main thread sees it.
#pragma once

#include <deque>
#include <memory>

#include "platform/linux/clipboard_thread.h"
#include "platform/main_queue.h"
#include "platform/pasteboard.h"

namespace marbelot {

// The count starts at 1, which stands for whatever the clipboard held at the start; that becomes
// the contents as soon as it has been read, which calls the handler but is not told as a change.
// What another program has copied just before an own write, but is only read after it, is told
// then; the own write stays the present contents and is not told again. A copy whose owner pauses
// for long while it is being read is told without what is missing, and once more when that comes.
// Without a display, or when the connection has broken, no write succeeds and nothing changes.
class DesktopPasteboard final : public Pasteboard {
 public:
  // `queue` must live longer.
  DesktopPasteboard(MainQueue& queue, std::unique_ptr<ClipboardConnection> connection);
  // An own write is first left to whoever keeps it on this desktop, which may take a third of a
  // second, and up to five. Else takes no time, whatever other programs do.
  ~DesktopPasteboard() override;

  std::int64_t changeCount() override;
  PasteboardContents contents() override;
  std::vector<PasteboardChange> changesSince(std::int64_t count) override;
  using Pasteboard::write;
  std::optional<std::int64_t> write(SharedText text, bool concealed) override;
  std::optional<std::int64_t> write(const Image& image, bool concealed) override;
  bool announcesChanges() const override { return true; }
  void setChangeHandler(std::function<void()> handler) override;

 private:
  struct Change : PasteboardChange {
    std::int64_t firstCount = 0;  // before other changes turned out to come before it
  };

  void takeNews();
  void announce();
  std::optional<std::int64_t> write(ClipboardOffer offer);
  void announceSoon();
  std::int64_t record(PasteboardContents contents);
  void recordOvertaken(PasteboardContents contents);

  MainQueue& queue_;
  std::deque<Change> changes_;  // never empty; the last one is the present
  std::uint64_t writes_ = 0;
  bool unannounced_ = false;
  std::function<void()> handler_;
  std::shared_ptr<char> alive_ = std::make_shared<char>();
  std::unique_ptr<ClipboardThread> thread_;
};

}  // namespace marbelot
