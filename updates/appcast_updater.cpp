#include "updates/appcast_updater.h"

#include <algorithm>
#include <utility>

#include "platform/text.h"
#include "shell/shell.h"
#include "updates/page_text.h"
#include "updates/web_address.h"

namespace marbelot {
namespace {

constexpr std::string_view feedKey = "SUFeedURL";
constexpr std::string_view lastCheckKey = "lastUpdateCheck";
constexpr std::string_view skippedKey = "skippedUpdate";
// After which somebody who waits for an answer is told that it takes a while.
constexpr double patienceSeconds = 2;
// Timers stand still while a computer sleeps, so the clock is looked at now and then.
constexpr double longestWait = 6 * 3600;
// The start of the program is no time for it.
constexpr double shortestWait = 3;

std::string shownVersion(const AppcastItem& item) {
  return text::sanitized(item.shownVersion.substr(0, 60));
}

}  // namespace

AppcastUpdater::AppcastUpdater(UpdateServices services, UpdateSource source, Fetch fetch)
    : services_(services), source_(std::move(source)), fetch_(std::move(fetch)) {}

void AppcastUpdater::setAutomaticallyChecksForUpdates(bool checks) {
  automatic_ = checks;
  schedule();
}

void AppcastUpdater::setUpdateCheckInterval(double seconds) {
  interval_ = seconds;
  schedule();
}

std::string AppcastUpdater::feed() const {
  const SharedText set = services_.defaults.textFor(feedKey);
  return set ? *set : source_.feed;
}

void AppcastUpdater::schedule() {
  next_.cancel();
  // Without a feed no check would ever be done, and the next one be due at once for ever.
  if (!automatic_ || !isSecureAddress(feed())) return;
  const auto stored = services_.defaults.value(lastCheckKey);
  const double last = stored ? stored->asDouble().value_or(0) : 0;
  const double now = services_.queue.now();
  // A last check in the future comes from a clock that was wrong.
  const double left = last > now ? 0 : last + interval_ - now;
  next_ = services_.queue.after(std::clamp(left, shortestWait, longestWait), [this, left] {
    if (left <= longestWait) check(false);
    schedule();
  });
}

void AppcastUpdater::check(bool inForeground) {
  inForeground_ = inForeground_ || inForeground;
  if (inForeground) {
    patience_ = services_.queue.after(
        patienceSeconds, [this] { services_.notices.post(noticeTitle, "Checking for updates…"); });
  }
  if (checking_) return;
  const std::string address = feed();
  if (address.empty()) {
    return failed(
        "This Marbelot was built without an address to ask for newer versions. It is "
        "kept up to date by whatever installed it.");
  }
  if (!isSecureAddress(address))
    return failed("The address of the update feed is not a secure one (https).");
  services_.defaults.set(lastCheckKey, services_.queue.now());
  checking_.emplace();
  checking_ = fetch_(address, [this](const Fetched& fetched) { feedArrived(fetched); });
}

void AppcastUpdater::feedArrived(const Fetched& fetched) {
  if (!fetched.bytes) return failed("The update feed cannot be reached: " + fetched.problem);
  checking_ = services_.queue.inBackground(
      [feed = fetched.bytes, source = source_] {
        const auto items = appcastItems(*feed, source.system);
        return Answer{
            items.has_value(),
            items ? newerItem(*items, source.version, source.systemVersion) : std::nullopt};
      },
      [this](const Answer& answer) { answered(answer); });
}

void AppcastUpdater::answered(const Answer& answer) {
  if (!answer.isFeed) return failed("What the update feed sends cannot be read.");
  patience_.cancel();
  if (answer.newer && inForeground_) return offer(*answer.newer);
  checking_.reset();
  if (answer.newer) {
    const SharedText skipped = services_.defaults.textFor(skippedKey);
    if (!skipped || *skipped != answer.newer->version) {
      services_.notices.post(noticeTitle, "Marbelot " + shownVersion(*answer.newer) +
                                              " is available: see “Check for Updates…”");
    }
  } else if (std::exchange(inForeground_, false)) {
    tell("You’re up to date!",
         "Marbelot " + source_.version + " is currently the newest version available.");
  }
}

void AppcastUpdater::failed(const std::string& why) {
  patience_.cancel();
  checking_.reset();
  if (std::exchange(inForeground_, false)) tell("Couldn’t check for updates", why);
}

// Notes that stand on a page of their own are fetched first.
void AppcastUpdater::offer(const AppcastItem& item) {
  if (!item.notes.empty() || item.notesAddress.empty()) return showNotes(item, item.notes);
  checking_ = fetch_(item.notesAddress, [this, item](const Fetched& fetched) {
    if (!fetched.bytes) return showNotes(item, "");
    checking_ = services_.queue.inBackground(
        [page = fetched.bytes] { return pageText(*page); },
        [this, item](const std::string& notes) { showNotes(item, notes); });
  });
}

void AppcastUpdater::showNotes(const AppcastItem& item, const std::string& notes) {
  patience_.cancel();  // somebody may have asked again while the notes were fetched
  checking_.reset();
  inForeground_ = false;
  Alert alert;
  alert.id = "update";
  alert.message = "A new version of Marbelot is available!";
  alert.informative = "Marbelot " + shownVersion(item) + " is now available; you have " +
                      source_.version + ". The download opens in your browser.";
  alert.buttons = {"Download", "Skip This Version", "Remind Me Later"};
  alert.toolTip = text::sanitized(item.downloadAddress);
  if (!notes.empty()) {
    View view;
    view.id = "releaseNotes";
    view.frame = {0, 0, 460, 200};
    view.content = TextArea{.text = notes, .bordered = true, .inset = {6, 6}};
    alert.accessory.push_back(std::move(view));
  }
  services_.dialogs.present(std::move(alert), [this, item](const AlertAnswer& answer) {
    if (answer.button == 0) services_.workspace.openUrl(item.downloadAddress);
    if (answer.button == 1) services_.defaults.set(skippedKey, item.version);
  });
}

void AppcastUpdater::tell(const std::string& message, const std::string& informative) {
  Alert alert;
  alert.id = message;  // an older outcome may still be open
  alert.message = message;
  alert.informative = informative;
  alert.buttons = {"OK"};
  services_.dialogs.present(std::move(alert), [](const AlertAnswer&) {});
}

}  // namespace marbelot
