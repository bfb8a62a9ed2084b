// The clipboard history: sees every change of the clipboard, records it, keeps it across runs.
#pragma once

#include <cstdint>
#include <functional>
#include <future>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "classification/classifier.h"
#include "clipboard/clip_item.h"
#include "image/image_file.h"
#include "platform/platform.h"
#include "shell/setting.h"
#include "shell/shell.h"

namespace marbelot {

// Main thread only; the platform and the shell outlive it.
class ClipboardHistory {
  Platform& platform_;

 public:
  ClipboardHistory(Platform& platform, Shell& shell, ActionTable& actions);
  ~ClipboardHistory();
  ClipboardHistory(const ClipboardHistory&) = delete;
  ClipboardHistory& operator=(const ClipboardHistory&) = delete;

  // The application's state, open to its menus and its tests.
  std::vector<ClipItem> clipHistory;  // newest first
  const std::size_t clipHistoryLimit = 40;
  const std::string clipHistoryKey = "clipTextHistory";
  std::optional<Task> clipPoller;
  std::int64_t lastChangeCount = -1;  // of the change that was handled last
  std::optional<ClipCategory> clipTypeFilter;
  Setting<bool> archiveToPictures{platform_.defaults, "archiveClipImagesToPictures"};
  Setting<bool> autoSaveClipImages{
      platform_.defaults,
      "autoSaveClipImages",
      true,
      {.registered = true,
       .toggle = {"Auto-save copied images to a file", "toggleAutoSaveClipImages"}}};
  // Looked at with every copy that its owner wants kept out.
  Setting<bool> recordConcealedCopies{platform_.defaults, "recordConcealedCopies"};

  // A new text was recorded; called before it is stored.
  std::function<void(const SharedText&)> onTextRecorded;
  // The same for an image that came onto the clipboard.
  std::function<void(const Image&, bool concealed)> onImageRecorded;
  // Once for all that has been recorded at a time.
  std::function<void()> onRecorded;
  // The clipboard is looked at; called before anything is done about a change.
  std::function<void()> onTick;

  // Records from now on; what is on the clipboard already is not recorded.
  void startClipPoller();
  // Handles the changes that are still to be handled, oldest first.
  void tick();

  void saveClipHistory();
  void loadClipHistory();

  // Puts on the clipboard what the program already holds. A copy by another program that has not
  // been handled yet is recorded first. False when the clipboard could not be written.
  [[nodiscard]] bool copyWithoutRecording(SharedText text, bool concealed = false);
  [[nodiscard]] bool copyWithoutRecording(const Image& image, bool concealed = false);

  // Records what was made while a newer copy came onto the clipboard: behind that one.
  void recordOvertaken(Kind kind);

  // The owner asked that the contents be neither kept nor shown, and the user has not overruled it.
  bool withheld(const PasteboardContents& contents) const;

  // The folder of copied images, made if it can be.
  std::string clipImagesFolder() const;

  using Saved = std::function<void(const std::optional<std::string>& path)>;
  // Writes the image as a PNG file into the folder of copied images and tells its path, none when
  // that failed: at once when it is small and came as PNG, else when the background is done.
  void saveClipImage(std::uint64_t id, const Image& image, Saved saved);
  // At the program's end: waits a moment for the images that are being saved, and stores where.
  void finishSaving(std::chrono::steady_clock::time_point deadline);
  // The same as saveClipImage for an entry of the history; its file if it has one already.
  void withFile(std::uint64_t id, Saved saved);

  // The position of the item, none when it has gone.
  std::optional<std::size_t> indexOf(std::uint64_t id) const;
  // Makes it the newest, also when it has been pushed out meanwhile.
  void moveToFront(ClipItem item);
  void remove(std::size_t index);
  void clearClipHistory();

 private:
  struct PendingSave {
    std::future<std::optional<ImageFile>> file;
    Task task;
    std::vector<Saved> waiting;
  };

  bool written(std::optional<std::int64_t> count);
  // Records the contents, unless they are to be ignored; then false.
  bool onClipboardChange(const PasteboardContents& contents);
  void recordImage(const Image& image, std::size_t place = 0);
  bool recordText(const SharedText& text);
  void insert(Kind kind, std::size_t place = 0);
  void fileArrived(std::uint64_t id, const std::string& path, Image image);
  std::optional<ClipItem> loadedItem(const Value& entry);

  Shell& shell_;
  // From the time on, in milliseconds, so that no id means another entry after a restart.
  std::uint64_t lastId_ = static_cast<std::uint64_t>(platform_.queue.now() * 1000);
  std::map<std::uint64_t, PendingSave> saves_;  // by the item's id
};

}  // namespace marbelot
