#include "platform/linux/desktop_pasteboard.h"

#include <utility>

namespace marbelot {

DesktopPasteboard::DesktopPasteboard(MainQueue& queue,
                                     std::unique_ptr<ClipboardConnection> connection)
    : queue_(queue) {
  changes_.push_back({{1, {}}, 1});
  thread_ = std::make_unique<ClipboardThread>(std::move(connection), [this] { announceSoon(); });
}

DesktopPasteboard::~DesktopPasteboard() = default;

void DesktopPasteboard::takeNews() {
  for (ClipboardNews& news : thread_->takeNews()) {
    if (news.announcement.initial) {
      Change& present = changes_.back();
      if (present.count > 1) continue;
      present.contents = std::move(news.contents);
    } else if (news.announcement.ownWrites < writes_) {
      if (!news.contents.text && !news.contents.image) continue;
      recordOvertaken(std::move(news.contents));
    } else {
      record(std::move(news.contents));
    }
    unannounced_ = true;
  }
}

// On the main thread, once the present event is done.
void DesktopPasteboard::announceSoon() {
  queue_.post([this, alive = std::weak_ptr<char>(alive_)] {
    if (alive.lock()) announce();
  });
}

void DesktopPasteboard::announce() {
  takeNews();
  const auto handler = handler_;  // it may be replaced while it runs
  if (std::exchange(unannounced_, false) && handler) handler();
}

std::int64_t DesktopPasteboard::record(PasteboardContents contents) {
  const std::int64_t count = changes_.back().count + 1;
  changes_.push_back({{count, std::move(contents)}, count});
  if (changes_.size() > rememberedChanges) changes_.pop_front();
  return count;
}

// Our write stays the present. It gets a new count, so that the change before it is noticed, but is
// told again to nobody who knows it.
void DesktopPasteboard::recordOvertaken(PasteboardContents contents) {
  Change own = std::move(changes_.back());
  changes_.pop_back();
  const std::int64_t count = own.count + 1;
  changes_.push_back({{count, std::move(contents)}, count});
  own.count = count + 1;
  changes_.push_back(std::move(own));
}

std::int64_t DesktopPasteboard::changeCount() {
  takeNews();
  return changes_.back().count;
}

PasteboardContents DesktopPasteboard::contents() {
  takeNews();
  return changes_.back().contents;
}

std::vector<PasteboardChange> DesktopPasteboard::changesSince(std::int64_t count) {
  takeNews();
  std::vector<PasteboardChange> told;
  for (const Change& change : changes_)
    if (change.firstCount > count && change.firstCount > 1) told.push_back(change);
  changes_.erase(changes_.begin(), changes_.end() - 1);
  return told;
}

std::optional<std::int64_t> DesktopPasteboard::write(SharedText text, bool concealed) {
  return write(ClipboardOffer{text ? std::move(text) : share({}), std::nullopt, concealed});
}

std::optional<std::int64_t> DesktopPasteboard::write(const Image& image, bool concealed) {
  if (!image.isReadable()) return std::nullopt;
  return write(ClipboardOffer{nullptr, image, concealed});
}

// What has not been told yet gets a higher count, so that whoever knows of this write is told of
// it.
std::optional<std::int64_t> DesktopPasteboard::write(ClipboardOffer offer) {
  PasteboardContents contents{offer.text, offer.image, offeredTypes(offer), offer.concealed};
  if (!thread_->write(std::move(offer), writes_ + 1)) return std::nullopt;
  ++writes_;
  unannounced_ = true;
  announceSoon();
  return record(std::move(contents));
}

void DesktopPasteboard::setChangeHandler(std::function<void()> handler) {
  handler_ = std::move(handler);
}

}  // namespace marbelot
