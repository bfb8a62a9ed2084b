// The clipboard.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/image.h"
#include "platform/value.h"

namespace marbelot {

// What the clipboard holds. A value: it does not change when the clipboard does.
struct PasteboardContents {
  SharedText text;                 // null when there is none
  std::optional<Image> image;      // none when there is none that can be read
  std::vector<std::string> types;  // the type names that the owner offers
  bool concealed = false;          // its owner marks it as secret, passing or machine-made

  // Whether this is the image, and marked so.
  bool conceals(const Image& other) const { return concealed && image && image->isSame(other); }
};

struct PasteboardChange {
  std::int64_t count = 0;
  PasteboardContents contents;
};

// Main thread only. Nothing here waits for the clipboard's owner: contents are what has been read
// of it, and a change counts from the moment when its contents are known.
class Pasteboard {
 public:
  virtual ~Pasteboard() = default;

  // Grows with every change, own writes included. No round trip.
  virtual std::int64_t changeCount() = 0;

  // What the clipboard holds now.
  virtual PasteboardContents contents() = 0;

  // The changes after `count` that can still be told, oldest first, the present one last. The
  // backend may forget what it has told.
  virtual std::vector<PasteboardChange> changesSince(std::int64_t count) = 0;

  // Replaces the contents; they stay pasteable as long as the program runs. Returns the change
  // count that this write made; none when it failed: the system takes nothing, or the image can no
  // longer be read. What is `concealed` is marked so for other programs, too.
  [[nodiscard]] virtual std::optional<std::int64_t> write(SharedText text, bool concealed) = 0;
  [[nodiscard]] std::optional<std::int64_t> write(SharedText text) {
    return write(std::move(text), false);
  }
  [[nodiscard]] virtual std::optional<std::int64_t> write(const Image& image, bool concealed) = 0;
  [[nodiscard]] std::optional<std::int64_t> write(const Image& image) {
    return write(image, false);
  }

  // Whether the handler below is called. Elsewhere the change count has to be asked for.
  virtual bool announcesChanges() const = 0;
  // Called right after each change, own writes included, but never during one.
  virtual void setChangeHandler(std::function<void()> handler) = 0;
};

}  // namespace marbelot
