#include "capture/screenshot_watcher.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "image/image_file.h"
#include "platform/files.h"

namespace marbelot {
namespace {

// The tool creates the file, writes it and marks it as a screenshot only then; 31 looks, 0.05 s
// apart, cover the interval.
constexpr int lastAttempt = 30;
constexpr double attemptInterval = 0.05;
// While a file is being written, looks at it become rarer: seconds between them.
constexpr double shortestWritingWait = 0.005;
constexpr double longestWritingWait = 3;
// In which a file that the desktop has made for us is taken away, once it is finished.
constexpr double holdSeconds = 1;

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

// File times come in ticks of some milliseconds, and may seem to lie before what preceded them.
constexpr auto fileTimeTick = 20ms;
// A folder that comes to be at the path is noticed within this time, even on a busy machine.
constexpr auto noticingTime = 3s;

// Which of the folder's files were not saved since that moment. What is dated later than now comes
// from a clock that is ahead of ours, another machine's or our own before it was put back: nobody
// knows when that was, and an old screenshot must not replace what is on the clipboard. A copy on
// another file system may keep only one of its two times.
std::vector<std::string> oldPaths(Clock::time_point since, const std::function<double()>& clock,
                                  const std::string& folder,
                                  const std::vector<std::string>& names) {
  std::vector<std::string> paths;
  for (const std::string& name : names) {
    std::string fullPath = files::join(folder, name);
    const auto info = files::isImageName(name) ? files::info(fullPath) : std::nullopt;
    // Asked each time, because a file may still be growing; and the only reading of this clock,
    // which may be set at any moment.
    const double now = clock();
    const std::chrono::duration<double> passed = Clock::now() - since + fileTimeTick;
    if (!info || std::min(info->created, info->modified) <= now - passed.count() ||
        std::max(info->created, info->modified) > now)
      paths.push_back(std::move(fullPath));
  }
  return paths;
}

}  // namespace

ScreenshotWatcher::ScreenshotWatcher(Platform& platform, std::string folder,
                                     std::function<void(const std::string&)> copied,
                                     std::function<double()> clock)
    : platform_(platform),
      path(std::move(folder)),
      onCopy(std::move(copied)),
      clock_(std::move(clock)) {
  seeding_ = platform_.queue.inBackground(
      [folder = path, began = Clock::now(), clock = clock_] {
        const auto names = files::list(folder);
        if (!names) return Seed{began, std::nullopt, {}};
        Seed seed{began, files::folderIdentity(folder), oldPaths(began, clock, folder, *names)};
        seed.holdsNew = seed.paths.size() < names->size();
        return seed;
      },
      [this](const Seed& seed) {
        seen.insert(seed.paths.begin(), seed.paths.end());
        folder_ = seed.folder;
        if (!folder_) unlisted_ = seed.time;
        seeded_ = true;
        tellChange();
        if (changedBeforeSeeding_ || (stream && seed.holdsNew)) rescan();
      });
}

void ScreenshotWatcher::start() {
  stream = platform_.folderEvents.watch(path, [this] { folderChanged(); });
  tellChange();
}

void ScreenshotWatcher::ignore(const std::string& fullPath) {
  const std::string name = files::lastComponent(fullPath);
  const std::string folder = fullPath.substr(0, fullPath.size() - name.size());
  // The same folder may go by several names.
  const auto identity = files::folderIdentity(folder);
  if (identity && identity == files::folderIdentity(path)) seen.insert(files::join(path, name));
}

void ScreenshotWatcher::check() {
  if (stream) stream->check();
}

void ScreenshotWatcher::tellChange() {
  const std::pair now(isThere(), isLookedAt());
  if (std::exchange(told_, now) != now && onChange) onChange();
}

void ScreenshotWatcher::folderChanged() {
  tellChange();
  if (!seeded_) {
    changedBeforeSeeding_ = true;
    return;
  }
  // The event may be the very one that a pending file waited for: closed by its writer, or marked.
  std::vector<std::string> waiting;
  for (const auto& [fullPath, attempt] : pending_) waiting.push_back(fullPath);
  for (const std::string& fullPath : waiting) {
    Attempt& pending = pending_[fullPath];
    if (pending.isOnHold) {
      hold(fullPath);
      continue;
    }
    if (pending.number == 0) {
      pending.writingWait = 0;
      attempt(fullPath);
    } else if (copyIfFinished(fullPath) == files::ScreenshotState::finished) {
      pending_.erase(fullPath);
    }
  }
  rescan();
}

void ScreenshotWatcher::rescan() {
  const auto names = files::list(path);
  const auto folder = names ? files::folderIdentity(path) : std::nullopt;
  if (!folder) {
    folder_.reset();
    unlisted_ = Clock::now();
    return tellChange();
  }
  if (folder != folder_) {
    // It was mounted, moved here or made: what it brings along is old, what it was made for is new.
    folder_ = folder;
    const auto came = std::max(unlisted_, Clock::now() - noticingTime);
    for (std::string& fullPath : oldPaths(came, clock_, path, *names))
      seen.insert(std::move(fullPath));
    tellChange();
  }
  std::vector<std::pair<double, std::string>> fresh;  // by modification time
  for (const std::string& name : *names) {
    // Names of other kinds are not remembered: there may be any number of them.
    if (!files::isImageName(name)) continue;
    std::string fullPath = files::join(path, name);
    if (!seen.insert(fullPath).second) continue;
    const auto info = files::info(fullPath);
    fresh.emplace_back(info ? info->modified : 0, std::move(fullPath));
  }
  // Of several that came at once, the newest is the one to stay on the clipboard.
  std::sort(fresh.begin(), fresh.end());
  for (const auto& [modified, fullPath] : fresh) isCapturing() ? hold(fullPath) : attempt(fullPath);
}

void ScreenshotWatcher::hold(const std::string& fullPath) {
  Attempt& pending = pending_[fullPath];
  pending.isOnHold = true;
  pending.next = platform_.queue.after(holdSeconds, [this, fullPath] {
    if (files::screenshotState(fullPath) == files::ScreenshotState::beingWritten)
      return hold(fullPath);
    pending_[fullPath].isOnHold = false;
    attempt(fullPath);
  });
}

void ScreenshotWatcher::attempt(const std::string& fullPath) {
  const files::ScreenshotState state = copyIfFinished(fullPath);
  if (state == files::ScreenshotState::finished) {
    pending_.erase(fullPath);
    return;
  }
  Attempt& pending = pending_[fullPath];
  const auto again = [this, fullPath] { attempt(fullPath); };
  // However long its writer takes: a large screen's picture can take seconds to compress. Its
  // closing is announced, but a moment before the kernel counts the writer out, so that the look
  // which the announcement brings can come too early.
  if (state == files::ScreenshotState::beingWritten) {
    pending.number = 0;
    pending.writingWait =
        std::clamp(2 * pending.writingWait, shortestWritingWait, longestWritingWait);
    pending.next = platform_.queue.after(pending.writingWait, again);
    return;
  }
  if (pending.number == lastAttempt) {
    pending_.erase(fullPath);
    return;
  }
  ++pending.number;
  pending.next = platform_.queue.after(attemptInterval, again);
}

// Finished also when the file turns out not to be readable: it is dealt with.
files::ScreenshotState ScreenshotWatcher::copyIfFinished(const std::string& fullPath) {
  const files::ScreenshotState state = files::screenshotState(fullPath);
  if (state != files::ScreenshotState::finished) return state;
  const auto image = imageInMemory(fullPath);
  if (!image) return state;
  if (platform_.pasteboard.write(*image)) onCopy(files::lastComponent(fullPath));
  return state;
}

}  // namespace marbelot
