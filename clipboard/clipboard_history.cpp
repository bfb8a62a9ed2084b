#include "clipboard/clipboard_history.h"

#include <algorithm>
#include <chrono>

#include "clipboard/stored_date.h"
#include "platform/files.h"
#include "platform/text.h"

namespace marbelot {

namespace {

constexpr double pollInterval = 0.6;  // seconds
// Where each change is announced, looking is only the safety net.
constexpr double announcedPollInterval = 10;

// Writing this much takes a third of a frame; more is left to the background.
constexpr std::size_t immediateImageBytes = std::size_t{8} << 20;

// Entries that are looked at when loading. The history holds 40; a file that something else filled
// must not hold up the launch.
constexpr std::size_t examinedEntries = 1000;

}  // namespace

ClipboardHistory::ClipboardHistory(Platform& platform, Shell& shell, ActionTable& actions)
    : platform_(platform), shell_(shell) {
  actions.add("clearClipHistory", [this](const MenuItem&) { clearClipHistory(); });
  autoSaveClipImages.offerToggle(actions, shell);
  actions.addOn<bool>("setArchiveLocation:", [this](bool pictures) {
    archiveToPictures = pictures;
    shell_.rebuildMenu();
  });
  actions.add("openClipImagesFolder",
              [this](const MenuItem&) { platform_.workspace.openPath(clipImagesFolder()); });
}

ClipboardHistory::~ClipboardHistory() { platform_.pasteboard.setChangeHandler({}); }

void ClipboardHistory::startClipPoller() {
  lastChangeCount = platform_.pasteboard.changeCount();
  const bool announced = platform_.pasteboard.announcesChanges();
  clipPoller =
      platform_.queue.every(announced ? announcedPollInterval : pollInterval, [this] { tick(); });
  platform_.pasteboard.setChangeHandler([this] { tick(); });
}

void ClipboardHistory::tick() {
  if (onTick) onTick();
  const std::int64_t count = platform_.pasteboard.changeCount();
  if (count == lastChangeCount) return;
  const auto changes = platform_.pasteboard.changesSince(lastChangeCount);
  // Another change may have come between the two questions.
  lastChangeCount = changes.empty() ? count : std::max(count, changes.back().count);
  bool recorded = false;
  for (const PasteboardChange& change : changes) recorded |= onClipboardChange(change.contents);
  if (recorded && onRecorded) onRecorded();
  if (recorded) saveClipHistory();
  // The menu also shows a copy that is not recorded.
  shell_.rebuildMenu();
}

bool ClipboardHistory::withheld(const PasteboardContents& contents) const {
  return contents.concealed && !recordConcealedCopies.stored().value_or(false);
}

bool ClipboardHistory::onClipboardChange(const PasteboardContents& contents) {
  if (withheld(contents)) return false;
  if (contents.image) {
    recordImage(*contents.image);
    if (onImageRecorded) onImageRecorded(*contents.image, contents.concealed);
    return true;
  }
  return contents.text && recordText(contents.text);
}

void ClipboardHistory::insert(Kind kind, std::size_t place) {
  clipHistory.insert(clipHistory.begin() + static_cast<std::ptrdiff_t>(place),
                     ClipItem{std::move(kind), platform_.queue.now(), {}, ++lastId_});
  if (clipHistory.size() > clipHistoryLimit) {
    clipHistory.erase(clipHistory.begin() + static_cast<std::ptrdiff_t>(clipHistoryLimit),
                      clipHistory.end());
  }
}

void ClipboardHistory::recordOvertaken(Kind kind) {
  if (clipPoller) tick();
  const std::size_t place = std::min<std::size_t>(clipHistory.size(), 1);
  if (const Image* image = kind.image()) {
    recordImage(Image(*image), place);
  } else {
    insert(std::move(kind), place);
  }
  saveClipHistory();
  shell_.rebuildMenu();
}

void ClipboardHistory::recordImage(const Image& image, std::size_t place) {
  insert(image, place);
  if (autoSaveClipImages) {
    saveClipImage(lastId_, image, {});
  } else if (!image.isEncoded()) {  // forty bitmaps would fill the memory
    platform_.queue.background([image] { image.bytes(); });
  }
}

bool ClipboardHistory::recordText(const SharedText& text) {
  if (text::isAllBlank(*text)) return false;
  const SharedText newest = clipHistory.empty() ? nullptr : clipHistory.front().kind.text();
  if (newest && (newest == text || *newest == *text)) return false;
  insert(text);
  if (onTextRecorded) onTextRecorded(text);
  return true;
}

void ClipboardHistory::saveClipHistory() {
  Value::List stored;
  for (const ClipItem& item : clipHistory) {
    if (stored.size() == clipHistoryLimit) break;
    if (const SharedText text = item.kind.text()) {
      stored.push_back(
          Value::Dictionary{{"type", "text"}, {"text", text}, {"date", storedDate(item.date)}});
    } else if (item.savedPath && files::exists(*item.savedPath)) {
      stored.push_back(Value::Dictionary{
          {"type", "image"}, {"path", *item.savedPath}, {"date", storedDate(item.date)}});
    }
  }
  platform_.defaults.set(clipHistoryKey, std::move(stored));
}

std::optional<ClipItem> ClipboardHistory::loadedItem(const Value& entry) {
  // The older form: texts alone.
  if (const SharedText text = entry.asText())
    return ClipItem{text, platform_.queue.now(), {}, ++lastId_};
  const Value::Dictionary* fields = entry.asDictionary();
  if (!fields) return std::nullopt;
  const auto field = [&](std::string_view key) {
    const Value* value = find(*fields, key);
    return value ? value->asText() : nullptr;
  };
  const SharedText dateText = field("date");
  const double date =
      (dateText ? parsedDate(*dateText) : std::nullopt).value_or(platform_.queue.now());
  const SharedText type = field("type");
  if (type && *type == "image") {
    const SharedText path = field("path");
    const auto image = path && files::exists(*path) ? Image::fromFile(*path) : std::nullopt;
    if (!image) return std::nullopt;
    return ClipItem{*image, date, *path, ++lastId_};
  }
  const SharedText text = field("text");
  if (!text) return std::nullopt;
  return ClipItem{text, date, {}, ++lastId_};
}

void ClipboardHistory::loadClipHistory() {
  clipHistory.clear();
  const auto stored = platform_.defaults.value(clipHistoryKey);
  const Value::List* entries = stored ? stored->asList() : nullptr;
  if (!entries) return;
  const std::size_t count = std::min(entries->size(), examinedEntries);
  for (std::size_t i = 0; i < count && clipHistory.size() < clipHistoryLimit; ++i)
    if (auto item = loadedItem((*entries)[i])) clipHistory.push_back(std::move(*item));
}

bool ClipboardHistory::copyWithoutRecording(SharedText text, bool concealed) {
  if (clipPoller) tick();
  return written(platform_.pasteboard.write(std::move(text), concealed));
}

bool ClipboardHistory::copyWithoutRecording(const Image& image, bool concealed) {
  if (clipPoller) tick();
  return written(platform_.pasteboard.write(image, concealed));
}

bool ClipboardHistory::written(std::optional<std::int64_t> count) {
  if (!count) return false;
  lastChangeCount = *count;
  shell_.rebuildMenu();
  return true;
}

std::string ClipboardHistory::clipImagesFolder() const {
  std::string folder = files::join(
      archiveToPictures ? files::picturesFolder() : files::temporaryFolder(), "Marbelot");
  if (archiveToPictures) folder = files::join(folder, "Clipboard");
  files::makeFolder(folder);
  return folder;
}

void ClipboardHistory::saveClipImage(std::uint64_t id, const Image& image, Saved saved) {
  const std::string folder = clipImagesFolder();
  const std::string base = "Clip " + text::fileTimestamp(platform_.queue.now());
  const auto done = [this, id](const std::optional<ImageFile>& file) {
    if (file) fileArrived(id, file->path, file->image);
    return file ? std::optional(file->path) : std::nullopt;
  };

  const bool ready = image.format() == ImageFormat::png && image.isEncoded();
  const SharedBytes bytes = ready ? image.bytes() : nullptr;
  if (bytes && bytes->size() <= immediateImageBytes) {
    const auto path = done(writeImageFile(folder, base, image));
    if (saved) saved(path);
    return;
  }

  PendingSave& pending = saves_[id];
  if (saved) pending.waiting.push_back(std::move(saved));
  const auto written = std::make_shared<std::promise<std::optional<ImageFile>>>();
  pending.file = written->get_future();
  pending.task = platform_.queue.inBackground(
      [folder, base, image, written] {
        const auto file = writeImageFile(folder, base, image);
        written->set_value(file);
        return file;
      },
      [this, id, done](const std::optional<ImageFile>& file) {
        const auto finished = saves_.extract(id);
        const auto path = done(file);
        if (path) {
          saveClipHistory();
          // Also lets the menu go of the bytes that the file holds now.
          shell_.rebuildMenu();
        }
        for (const Saved& tell : finished.mapped().waiting) tell(path);
      });
}

void ClipboardHistory::finishSaving(std::chrono::steady_clock::time_point deadline) {
  bool stored = false;
  for (auto& [id, pending] : saves_) {
    if (pending.file.wait_until(deadline) != std::future_status::ready) continue;
    const auto file = pending.file.get();
    if (!file) continue;
    fileArrived(id, file->path, file->image);
    stored = true;
  }
  saves_.clear();
  if (stored) saveClipHistory();
}

void ClipboardHistory::fileArrived(std::uint64_t id, const std::string& path, Image image) {
  const auto index = indexOf(id);
  if (!index) return;
  clipHistory[*index].savedPath = path;
  clipHistory[*index].kind = std::move(image);
}

void ClipboardHistory::withFile(std::uint64_t id, Saved saved) {
  const auto index = indexOf(id);
  const Image* image = index ? clipHistory[*index].kind.image() : nullptr;
  if (!image) return;
  const auto& path = clipHistory[*index].savedPath;
  if (path && files::exists(*path)) return saved(std::string(*path));
  if (const auto pending = saves_.find(id); pending != saves_.end()) {
    pending->second.waiting.push_back(std::move(saved));
    return;
  }
  saveClipImage(id, Image(*image), [this, saved = std::move(saved)](const auto& written) {
    if (written) saveClipHistory();
    saved(written);
  });
}

std::optional<std::size_t> ClipboardHistory::indexOf(std::uint64_t id) const {
  const auto found = std::find_if(clipHistory.begin(), clipHistory.end(),
                                  [&](const ClipItem& item) { return item.id == id; });
  if (found == clipHistory.end()) return std::nullopt;
  return static_cast<std::size_t>(found - clipHistory.begin());
}

void ClipboardHistory::moveToFront(ClipItem item) {
  if (const auto index = indexOf(item.id))
    clipHistory.erase(clipHistory.begin() + static_cast<std::ptrdiff_t>(*index));
  clipHistory.insert(clipHistory.begin(), std::move(item));
  if (clipHistory.size() > clipHistoryLimit) clipHistory.pop_back();
  saveClipHistory();
  shell_.rebuildMenu();
}

void ClipboardHistory::remove(std::size_t index) {
  if (index >= clipHistory.size()) return;
  clipHistory.erase(clipHistory.begin() + static_cast<std::ptrdiff_t>(index));
  saveClipHistory();
  shell_.rebuildMenu();
}

void ClipboardHistory::clearClipHistory() {
  clipHistory.clear();
  saveClipHistory();
  shell_.rebuildMenu();
}

}  // namespace marbelot
